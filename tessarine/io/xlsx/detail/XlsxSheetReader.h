#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/Text.h>
#include <tessarine/io/xlsx/detail/XlsxAutoFilter.h>
#include <tessarine/io/xlsx/detail/XlsxCellReader.h>
#include <tessarine/io/xlsx/detail/XlsxCommon.h>
#include <tessarine/io/xlsx/detail/XlsxPageSettings.h>
#include <tessarine/platform/Progress.h>
#include <tessarine/platform/Xml.h>

namespace tessarine {
class TWorksheet;
}

namespace tessarine::detail {

class TXlsxRelationships;
struct TXlsxReport;

/// Reads a sheet part (ECMA-376-1 §18.3.1.99) into a sheet that was just added: its view, sizes, cells, merges,
/// validations, page setup, links and filter. The part is read as a stream, once and to its end; of each section the
/// first one counts, but for those about printing.
class TXlsxSheetReader {
 public:
  /// AReader stands before the document's first event. All arguments outlive the reader.
  TXlsxSheetReader(TXmlReader& AReader, TWorksheet& ASheet, const TXlsxCellContext& AContext,
                   const TReadLimits& ALimits, const TXlsxReport& AReport);

  /// Called now and then while cells are read, with the part's fraction that is done; may throw.
  std::function<void(double AFraction)> OnProgress;

  /// Throws as TXmlReader does, and ELimit. The sheet then holds whatever came before the failure: the caller undoes
  /// it.
  void Read();

  /// Gives the links to the sheet, some of which go through a relationship, and the filter, which comes last.
  void ApplyLinksAndFilter(const TXlsxRelationships& ARelationships);

  /// Whether the part has cells at valid places.
  bool HasCells() const { return FCells.CellCount() > 0; }

 private:
  struct TColumns {
    int32_t First = 1;
    int32_t Last = 1;
    double Width = 0;
    int32_t Level = 0;
    bool IsHidden = false;
    bool IsCollapsed = false;
  };
  struct TLink {
    TCellRange Range;
    std::string Location;  // trimmed
    std::string RelationshipId;
  };
  enum TSection : size_t {
    stViews,
    stProperties,
    stFormat,
    stColumns,
    stData,
    stMerges,
    stValidations,
    stHyperlinks,
    stFilter,
    stCount,
  };

  void ReadSection(TSection ASection);
  void ApplyRecords();
  void ReportCells() const;
  template <class TChild>
  void ForEachChild(std::string_view ALocalName, TChild&& AChild) {
    ForEachXlsxChild(FReader, ALocalName, std::forward<TChild>(AChild));
  }

  void ReadView();
  void ReadPane(int32_t& ATopLeftCol, int32_t& ATopLeftRow);
  void ReadProperties();
  void ReadFormat();
  void ReadColumns();
  void ApplyColumns();
  void ReadRow();
  void ReadRowGeometry(int32_t ARow);
  void Poll();
  void ReadMerge();
  void ReadHyperlink();
  void CountRecord(size_t ACount);

  TXmlReader& FReader;
  TWorksheet& FSheet;
  TXlsxCellReader FCells;
  const TXlsxReport& FReport;
  const size_t FMaxRecords;
  TXlsxPageSettings FPageSettings;
  bool FIsRead[stCount] = {};
  std::vector<TColumns> FColumns;
  std::vector<TDataValidationRule> FValidations;
  TXlsxAutoFilter FFilter;
  std::vector<TLink> FLinks;
  size_t FWideLinks = 0;
  uint64_t FLineFormats = 0;  // of whole rows and columns, counted for the report
  int32_t FRowPosition = 0;
  size_t FSteps = 0;
};

}  // namespace tessarine::detail
