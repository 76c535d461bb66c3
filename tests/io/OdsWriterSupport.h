#pragma once

#include <string>
#include <string_view>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/ods/OdsWriter.h>
#include <tessarine/platform/Files.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/Zip.h>

namespace tessarine::test {

inline std::vector<std::byte> OdsBytes(TWorkbook& ABook, const TOdsWriteOptions& AOptions = {}) {
  TMemoryWriteStream stream;
  TOdsWriter::SaveToStream(ABook, stream, AOptions);
  return stream.ToVector();
}

/// One part of the package that a workbook is saved as; "(missing)" without it.
inline std::string OdsPart(TWorkbook& ABook, std::string_view AName, const TOdsWriteOptions& AOptions = {}) {
  const auto part = TZipReader(OdsBytes(ABook, AOptions)).Read(AName);
  return part ? std::string(part->Text()) : "(missing)";
}

/// What stands between two pieces of a text, the first one included; empty when they are not there.
inline std::string Cut(const std::string& AText, std::string_view AFrom, std::string_view ATo) {
  const size_t from = AText.find(AFrom);
  const size_t to = from == AText.npos ? from : AText.find(ATo, from + AFrom.size());
  return to == AText.npos ? std::string() : AText.substr(from, to - from);
}

/// The rows of the first sheet, without the prefixes of tables, office and text.
inline std::string OdsRows(TWorkbook& ABook, const TOdsWriteOptions& AOptions = {}) {
  std::string rows = Cut(OdsPart(ABook, "content.xml", AOptions), "<table:table-row", "</table:table>");
  for (const std::string_view prefix : {"table:", "office:", "text:"})
    for (size_t at = rows.find(prefix); at != rows.npos; at = rows.find(prefix, at)) rows.erase(at, prefix.size());
  return rows;
}

inline void SetText(TWorksheet& ASheet, const char* AAddress, std::u16string_view AText) {
  ASheet.SetValue(TCellAddress::FromA1(Utf8ToUtf16(AAddress)), TCellValue::FromText(AText));
}
inline void SetNumber(TWorksheet& ASheet, const char* AAddress, double ANumber) {
  ASheet.SetValue(TCellAddress::FromA1(Utf8ToUtf16(AAddress)), TCellValue::FromNumber(ANumber));
}

}  // namespace tessarine::test
