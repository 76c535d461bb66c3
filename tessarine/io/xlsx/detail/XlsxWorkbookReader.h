#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <tessarine/io/xlsx/SharedStrings.h>
#include <tessarine/io/xlsx/XlsxReader.h>
#include <tessarine/io/xlsx/detail/XlsxBudget.h>
#include <tessarine/io/xlsx/detail/XlsxPackage.h>
#include <tessarine/io/xlsx/detail/XlsxPrefetch.h>
#include <tessarine/io/xlsx/detail/XlsxReport.h>

namespace tessarine {
class TWorkbook;
class TWorksheet;
struct TXmlNode;
}  // namespace tessarine

namespace tessarine::detail {

/// Walks the parts of a package in a fixed order and fills a new workbook. The first error of that order is the one
/// that the caller sees; parts that the walk does not come to are never looked at.
class TXlsxWorkbookReader {
 public:
  /// All arguments outlive the reader; the workbook is a new one.
  TXlsxWorkbookReader(TWorkbook& AWorkbook, const TXlsxPackage& APackage, const TXlsxReadOptions& AOptions)
      : FWorkbook(AWorkbook), FPackage(APackage), FOptions(AOptions), FPrefetch(APackage) {}

  void Read();

 private:
  void ReadTheme();
  void ReadStyles();
  void ReadStrings();
  void ReadWorkbookPart(std::string_view ABytes);
  void ReadSheets(const TXmlNode* AWorkbook);
  std::string FirstSheetPart() const;
  void LoadSheet(TWorksheet& ASheet, const std::string& APartName, std::string_view ANextPartName);
  void ReadSheetPart(TWorksheet& ASheet, std::string_view ABytes, const std::string& APartName,
                     TXlsxRelationships& ARelationships, const TXlsxReport& AReport);
  void ReportSheet(double AFraction, std::string_view APartName) const;
  void ChooseActiveSheet(const TXmlNode* AWorkbook);
  void ReadNames(const TXmlNode* AWorkbook);
  TXlsxReport ReportFor(std::string_view AWhere) const { return {FOptions.Report, std::string(AWhere)}; }

  TWorkbook& FWorkbook;
  const TXlsxPackage& FPackage;
  const TXlsxReadOptions& FOptions;
  TXlsxBudget FBudget;
  TSharedStringTable FStrings;
  double FDigitWidth = 0;  // pixels, of the document's first font
  size_t FSheetTotal = 0;
  TXlsxPrefetch FPrefetch;
};

}  // namespace tessarine::detail
