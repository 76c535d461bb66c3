#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/core/format/Theme.h>
#include <tessarine/io/xlsx/detail/XlsxStylesReader.h>
#include <tessarine/io/xlsx/detail/XlsxStylesWriter.h>
#include <tessarine/io/xlsx/detail/XlsxThemeWriter.h>
#include <tessarine/platform/Unicode.h>

#include "detail/StoredZip.h"
#include "detail/XlsxCheck.h"

using namespace tessarine;

namespace {

constexpr int kStyles = 12;

/// A package whose cells have each of the first styles, with a number, a negative one, a text and a Boolean, and rich
/// text on top of one. The input is a styles part and, behind a line "====", a theme.
std::vector<std::byte> PackageAround(std::string_view AInput) {
  constexpr std::string_view kMark = "\n====\n";
  const size_t end = AInput.find(kMark);
  fuzz::TStoredZip zip;
  zip.Add("xl/styles.xml", AInput.substr(0, end));
  if (end != std::string_view::npos) zip.Add("xl/theme/theme1.xml", AInput.substr(end + kMark.size()));
  zip.Add("xl/workbook.xml", "<workbook><sheets><sheet name='S' r:id='r'/></sheets></workbook>");
  zip.Add("xl/_rels/workbook.xml.rels", "<r><Relationship Id='r' Target='s.xml'/></r>");
  constexpr const char* kCells[] = {" t='n'><v>44197.123456</v>", " t='n'><v>-0.0125</v>",
                                    " t='str'><f>A1</f><v>text</v>", " t='b'><v>1</v>",
                                    " t='inlineStr'><is><r><t>a</t></r><r><rPr><b/></rPr><t>b</t></r></is>"};
  std::string sheet = "<worksheet><cols><col min='1' max='3' width='9' style='1'/></cols><sheetData>";
  for (int style = 0; style < kStyles; ++style) {
    sheet += "<row>";
    char column = 'A';
    for (const char* cell : kCells) {
      ((sheet += "<c r='") += column++) += std::to_string(style + 1) + "' s='" + std::to_string(style) + "'";
      (sheet += cell) += "</c>";
    }
    sheet += "</row>";
  }
  zip.Add("xl/s.xml", sheet + "</sheetData></worksheet>");
  return zip.Finish();
}

std::string StylesPart(const TTessarineStyleSheet& ASheet, bool AHasSpare, bool AIsLiteral) {
  return detail::TXlsxStylesWriter(ASheet, AHasSpare, AIsLiteral).Part();
}

TTessarineStyleSheet Read(const std::string& APart) {
  TTessarineStyleSheet sheet;
  detail::TXlsxStylesReader(sheet).Load(APart, "styles", {});
  return sheet;
}

/// Codes that every file knows are found whatever their case; an empty one is the general one.
bool AreSameCodes(const TText& AWritten, const TText& ACode) {
  return EqualAsciiNoCase(AWritten, ACode.IsEmpty() ? detail::GeneralFormatCode() : ACode);
}

}  // namespace

/// Formats that load paint cells, and are written and read again: as many, in their order, and from then on without a
/// change. A part that does not load leaves the formats of a new document.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  TWorkbook book;
  const TTessarineStyleSheet& styles = book.StyleSheet();
  if (!fuzz::LoadXlsx(book, PackageAround({reinterpret_cast<const char*>(AData), ASize}))) {
    fuzz::Require(styles.Count() == 1 && styles.GetCellXf(0) == TCellFormat::Default() && styles.NumFmts().empty());
    return 0;
  }
  fuzz::Require(styles.Count() >= 1 && book.SheetCount() == 1);
  fuzz::CheckSheet(book, *book.GetSheet(0));
  fuzz::Require(book.GetSheet(0)->Store().CellCount() == size_t{5} * kStyles);
  static_cast<void>(StylesPart(styles, true, true));
  const TTessarineStyleSheet back = Read(StylesPart(styles, false, false));
  fuzz::Require(back.Count() == styles.Count());
  const std::string second = StylesPart(back, false, false);
  const TTessarineStyleSheet again = Read(second);
  fuzz::Require(std::ranges::equal(again.CellXfs(), back.CellXfs()));
  fuzz::Require(StylesPart(again, false, false) == second);
  for (int32_t i = 0; i < styles.Count(); ++i)
    fuzz::Require(AreSameCodes(back.GetCellXf(i).NumberFormat, styles.GetCellXf(i).NumberFormat));
  static_cast<void>(detail::XlsxThemePart(book.Theme()));
  return 0;
}
