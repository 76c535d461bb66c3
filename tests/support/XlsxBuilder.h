#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/xlsx/XlsxReader.h>

namespace tessarine::test {

/// Builds workbook packages from the pieces that a test is about:
///
///   TXlsxBuilder xlsx;
///   xlsx.Sheet(Row("<c r='A1'><v>1</v></c>"));
///   xlsx.Part("xl/styles.xml", "<styleSheet/>");
///   xlsx.Load(book);
///
/// The parts of the workbook are made from the sheets unless a test gives its own.
class TXlsxBuilder {
 public:
  /// Adds a part, or replaces the one of that name.
  TXlsxBuilder& Part(std::string AName, std::string AContent);

  /// Adds a sheet "S1", "S2", ... whose part holds AContent inside the root element. AAttributes stand in its
  /// element of the workbook part.
  TXlsxBuilder& Sheet(std::string_view AContent, std::string_view AAttributes = {});

  /// The content of the workbook part behind the sheets: names, views.
  TXlsxBuilder& Workbook(std::string_view AContent);

  /// The entries of a string table.
  TXlsxBuilder& Strings(std::string_view AItems);

  std::vector<std::byte> Bytes() const;
  void Load(TWorkbook& ABook, const TXlsxReadOptions& AOptions = {}) const;

 private:
  bool HasPart(std::string_view AName) const;

  std::vector<std::pair<std::string, std::string>> FParts;
  std::string FSheets;
  std::string FRelationships;
  std::string FWorkbookTail;
  int FSheetCount = 0;
};

/// "<sheetData><row>" AContent "</row></sheetData>".
std::string Row(std::string_view AContent);

/// The stored cells in row order, one text each, joined by blanks: "A1=1 B1='text C1=TRUE D1=#N/A E1==B1+1{2} F1=_",
/// with "{...}" for a cached result, "~3" behind it for style 3, and "/" between the runs of a formatted text.
std::string DumpCells(const TWorksheet& ASheet);

/// DumpCells of the first sheet of a workbook with this sheet content and these string table entries.
std::string LoadedCells(std::string_view ASheetContent, std::string_view AStrings = {});

}  // namespace tessarine::test
