#include <cstddef>
#include <cstdint>
#include <string_view>

#include "detail/StoredZip.h"
#include "detail/XlsxCheck.h"

using namespace tessarine;

namespace {

/// A package around one sheet part: texts, formats, links and a table that the part can use.
std::vector<std::byte> PackageAround(std::string_view ASheet) {
  fuzz::TStoredZip zip;
  zip.Add("xl/styles.xml",
          "<styleSheet><fonts><font/><font><b/></font></fonts><cellXfs><xf/><xf fontId='1' numFmtId='14'/></cellXfs>"
          "</styleSheet>");
  zip.Add("xl/sharedStrings.xml", "<sst><si><t>a</t></si><si><r><t>b</t></r><r><rPr><i/></rPr><t>c</t></r></si></sst>");
  zip.Add("xl/workbook.xml", "<workbook><sheets><sheet name='S' r:id='r'/></sheets></workbook>");
  zip.Add("xl/_rels/workbook.xml.rels", "<r><Relationship Id='r' Target='s.xml'/></r>");
  zip.Add("xl/_rels/s.xml.rels",
          "<r><Relationship Id='l' Target='http://x/'/><Relationship Type='x/table' Target='t.xml'/></r>");
  zip.Add("xl/t.xml", "<table name='T' ref='A1:C4'/>");
  zip.Add("xl/s.xml", ASheet);
  return zip.Finish();
}

}  // namespace

/// A part counts whole or not at all: when it cannot be read, the sheet is as it was added.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  TWorkbook book;
  const bool isLoaded = fuzz::LoadXlsx(book, PackageAround({reinterpret_cast<const char*>(AData), ASize}));
  fuzz::Require(book.SheetCount() == 1);
  const TWorksheet& sheet = *book.GetSheet(0);
  fuzz::CheckSheet(book, sheet);
  fuzz::Require(sheet.Name() == u"S" && (!isLoaded || !book.IsModified()));
  if (!isLoaded) {
    fuzz::Require(sheet.Store().CellCount() == 0 && sheet.UsedMaxCol() == 1 && sheet.UsedMaxRow() == 1);
    fuzz::Require(sheet.View() == TSheetViewOptions() && sheet.Spills().IsEmpty());
  }
  return 0;
}
