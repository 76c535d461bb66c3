#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {
class TSheetAutoFilter;
class TXmlReader;
}  // namespace tessarine

namespace tessarine::detail {

struct TXlsxReport;

/// A filter as a sheet or table part has it (ECMA-376-1 §18.3.1.2).
struct TXlsxAutoFilter {
  struct TColumn {
    int32_t Index = 0;          // 0-based, from the filter's first column
    std::vector<TText> Values;  // texts kept
    TText Contains;             // a piece of text; when set it counts instead of the values
  };

  TCellRange Range;  // (0, 0, 0, 0) when the file gives none that can be read
  std::vector<TColumn> Columns;

  /// Starts the sheet's filter anew over ARange, without hiding anything: the file says itself which rows are hidden.
  /// An unreadable range leaves the sheet's filter alone.
  void ApplyTo(const TCellRange& ARange, TSheetAutoFilter& AFilter) const;
};

/// Called at the start event of a filter: reads it and goes on to its end event. Criteria that the model lacks leave
/// their columns unfiltered. Throws ELimit for more than AMaxRecords criteria.
TXlsxAutoFilter ReadXlsxAutoFilter(TXmlReader& AReader, size_t AMaxRecords, const TXlsxReport& AReport);

}  // namespace tessarine::detail
