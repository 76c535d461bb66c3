#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/io/xlsx/SharedStrings.h>
#include <tessarine/io/xlsx/XlsxWriter.h>
#include <tessarine/io/xlsx/detail/XlsxLinksWriter.h>
#include <tessarine/io/xlsx/detail/XlsxPackageWriter.h>
#include <tessarine/io/xlsx/detail/XlsxPlanWriter.h>
#include <tessarine/io/xlsx/detail/XlsxRelationshipsWriter.h>
#include <tessarine/io/xlsx/detail/XlsxTablesWriter.h>

namespace tessarine {
class IWriteStream;
class TWorkbook;
class TWorksheet;
class TZipWriter;
}  // namespace tessarine

namespace tessarine::detail {

/// Writes the parts of a package in a fixed order. All numbers and names are decided before the first part is built.
class TXlsxWorkbookWriter {
 public:
  /// All arguments outlive the writer.
  TXlsxWorkbookWriter(TWorkbook& AWorkbook, IWriteStream& AStream, const TXlsxWriteOptions& AOptions);
  ~TXlsxWorkbookWriter();

  /// To be called once. Leaves the workbook unmodified when the package is complete.
  void Write();

 private:
  /// What is decided about a sheet.
  struct TSheetPlan {
    TXlsxSheetPlan Cells;
    std::vector<TXlsxLink> Links;
    std::vector<TXlsxTable> Tables;
    TXlsxBagParts Bag;
    std::unique_ptr<TXlsxSheetRelationships> Relationships;
  };
  /// Ids of the workbook's relationships beside those of its sheets.
  struct TWorkbookIds {
    std::string Theme;
    std::string Strings;
    std::string Styles;
  };

  void PlanCells();
  void PlanParts();
  void ReserveNames(TXlsxBagPlan& ABags) const;
  TWorkbookIds WorkbookIds() const;
  void WriteFront(TZipWriter& AZip);
  void WriteSheets(TZipWriter& AZip);
  std::string SheetPart(int32_t AIndex, double ADoneCells, double AAllCells);
  std::string ContentTypesPart() const;
  std::string RootRelationshipsPart() const;
  std::string WorkbookPart() const;
  std::string WorkbookRelationshipsPart() const;

  TWorkbook& FWorkbook;
  IWriteStream& FStream;
  const TXlsxWriteOptions& FOptions;
  double FTime = 0;
  TSharedStringTable FStrings;
  bool FHasSpareStyle = false;
  std::vector<TSheetPlan> FSheets;
  std::string FPivots;  // content of the own part, empty without one
};

}  // namespace tessarine::detail
