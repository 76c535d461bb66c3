#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <tessarine/io/xlsx/detail/XlsxLinksWriter.h>
#include <tessarine/io/xlsx/detail/XlsxListsWriter.h>

namespace tessarine {
class TWorkbook;
class TWorksheet;
}  // namespace tessarine

namespace tessarine::detail {

class TXlsxSheetRelationships;
struct TXlsxSheetPlan;

/// What the part of a sheet needs beside the sheet.
struct TXlsxSheetOptions {
  const TXlsxSheetRelationships& Relationships;
  const std::vector<TXlsxLink>& Links;
  const TXlsxSheetPlan& Cells;
  int32_t StyleCount = 0;
  bool IsActive = false;
  bool IsLiteral = false;
};

/// Builds the part of a sheet (ECMA-376-1 §18.3.1.99), one element after the other in the order of the schema.
class TXlsxSheetWriter {
 public:
  /// All arguments outlive the writer.
  TXlsxSheetWriter(const TWorkbook& AWorkbook, const TWorksheet& ASheet, const TXlsxSheetOptions& AOptions)
      : FWorkbook(AWorkbook), FSheet(ASheet), FOptions(AOptions) {}

  /// To be called once. AProgress is called every few thousand cells with the share that is done.
  std::string Part(const std::function<void(double AFraction)>& AProgress);

  /// What the part does not hold.
  const TXlsxListLosses& Losses() const { return FLosses; }

 private:
  void AppendProperties();
  void AppendViews();
  void AppendPane();
  void AppendSelection();
  void AppendFormat();
  void AppendColumns();
  void AppendRows(const std::function<void(double AFraction)>& AProgress);
  void AppendTableParts();

  const TWorkbook& FWorkbook;
  const TWorksheet& FSheet;
  TXlsxSheetOptions FOptions;
  TXlsxListLosses FLosses;
  std::string FOut;
};

}  // namespace tessarine::detail
