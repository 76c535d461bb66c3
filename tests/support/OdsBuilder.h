#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/ods/OdsReader.h>
#include <tessarine/platform/Files.h>

#include "XlsxBuilder.h"
#include "ZipBuilder.h"

namespace tessarine::test {

/// Builds spreadsheet packages from the pieces that a test is about:
///
///   TOdsBuilder ods;
///   ods.Table("<table:table-row><table:table-cell/></table:table-row>");
///   ods.Load(book);
class TOdsBuilder {
 public:
  TOdsBuilder& Part(std::string AName, std::string AContent) {
    FParts.emplace_back(std::move(AName), std::move(AContent));
    return *this;
  }
  /// Adds a table "S1", "S2", ... with this content.
  TOdsBuilder& Table(std::string_view AContent, std::string_view AAttributes = {}) {
    ((FTables += "<table:table table:name=\"S") += std::to_string(++FCount)) += "\" ";
    (((FTables += AAttributes) += ">") += AContent) += "</table:table>";
    return *this;
  }
  TOdsBuilder& Styles(std::string_view AContent) {
    FStyles += AContent;
    return *this;
  }
  /// What stands in front of the tables, and behind them.
  TOdsBuilder& Front(std::string_view AContent) {
    FFront += AContent;
    return *this;
  }
  TOdsBuilder& Tail(std::string_view AContent) {
    FTail += AContent;
    return *this;
  }

  std::string Content() const {
    return "<office:document-content><office:automatic-styles>" + FStyles +
           "</office:automatic-styles><office:body><office:spreadsheet>" + FFront + FTables + FTail +
           "</office:spreadsheet></office:body></office:document-content>";
  }
  std::vector<std::byte> Bytes() const {
    TZipBuilder zip;
    bool hasContent = false;
    for (const auto& [name, content] : FParts) {
      hasContent = hasContent || name == "content.xml";
      zip.Add(name, content);
    }
    if (!hasContent) zip.Add("content.xml", Content());
    return zip.Finish();
  }
  void Load(TWorkbook& ABook, const TOdsReadOptions& AOptions = {}) const {
    const std::vector<std::byte> bytes = Bytes();
    TMemoryReadStream stream(bytes);
    TOdsReader::LoadFromStream(ABook, stream, AOptions);
  }

 private:
  std::vector<std::pair<std::string, std::string>> FParts;
  std::string FStyles;
  std::string FFront;
  std::string FTables;
  std::string FTail;
  int FCount = 0;
};

}  // namespace tessarine::test
