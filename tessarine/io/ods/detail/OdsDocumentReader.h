#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/Text.h>
#include <tessarine/io/ods/detail/OdsDrawingReader.h>
#include <tessarine/io/ods/detail/OdsFormatTable.h>
#include <tessarine/io/ods/detail/OdsReadContext.h>
#include <tessarine/io/ods/detail/OdsStyleReader.h>
#include <tessarine/io/ods/detail/OdsValidationReader.h>

namespace tessarine {
class TWorkbook;
class TWorksheet;
class TXmlReader;
struct TXmlNode;
}  // namespace tessarine

namespace tessarine::detail {

class TXlsxPackage;

/// Reads the parts of a package into a new workbook: the styles, the content as a stream, then what the content names.
class TOdsDocumentReader {
 public:
  /// All arguments outlive the reader; the limits of the options are clamped.
  TOdsDocumentReader(TWorkbook& AWorkbook, const TXlsxPackage& APackage, const TOdsReadOptions& AOptions);

  /// On failure the workbook is a new one, or has all cells when it was a picture or chart that failed.
  void Read();

 private:
  struct TName {
    TText Name;
    TText Formula;
  };
  struct TDatabaseRange {
    std::u16string Name;
    std::u16string Sheet;
    TCellRange Range;
    bool HasHeader = true;
    bool HasButtons = false;
    bool IsTable = true;  // false for the filter of a sheet alone
  };

  bool ReadContent();
  void ReadSpreadsheet(TXmlReader& AReader);
  void ReadElement(TXmlReader& AReader);
  void ReadSheet(TXmlReader& AReader);
  void ReadNames(const TXmlNode* ANode, std::vector<TName>& ANames);
  void ReadDatabaseRanges(const TXmlNode* ANode);
  void Apply();
  void ApplyDatabaseRanges();
  void ReportRest(TXmlReader& AReader, std::string_view AFeature);

  TWorkbook& FWorkbook;
  const TXlsxPackage& FPackage;
  const TOdsReadOptions& FOptions;
  TOdsReadBudget FBudget;
  TOdsStyleReader FStyles;
  TOdsFormatTable FFormats;
  TOdsReadContext FContext;
  TOdsValidationReader FValidations;
  TOdsDrawingReader FDrawings;
  std::vector<TWorksheet*> FFilledSheets;
  std::vector<TName> FSheetNames;  // of single sheets; the document's own win over them
  std::vector<TName> FNames;
  std::vector<TDatabaseRange> FDatabaseRanges;
};

}  // namespace tessarine::detail
