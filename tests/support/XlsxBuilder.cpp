#include "XlsxBuilder.h"

#include <algorithm>

#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/platform/Files.h>

#include "ZipBuilder.h"

namespace tessarine::test {

namespace {

std::string ValueText(const TCellValue& AValue) {
  switch (AValue.Kind) {
    case cvkEmpty: return "_";
    case cvkText: return "'" + AValue.Text.ToUtf8();
    default: return AValue.ToDisplayString().ToUtf8();
  }
}

std::string CellText(const TCell& ACell) {
  std::string text = ValueText(ACell.Value);
  if (!ACell.RichText.empty()) {
    text = "'";
    for (const TRichTextRun& run : ACell.RichText) text += (text.size() > 1 ? "/" : "") + run.Text.ToUtf8();
  }
  if (ACell.HasCachedValue) text += "{" + ValueText(ACell.CachedValue) + "}";
  if (ACell.StyleIndex != 0) text += "~" + std::to_string(ACell.StyleIndex);
  return text;
}

}  // namespace

bool TXlsxBuilder::HasPart(std::string_view AName) const {
  return std::any_of(FParts.begin(), FParts.end(), [AName](const auto& APart) { return APart.first == AName; });
}

TXlsxBuilder& TXlsxBuilder::Part(std::string AName, std::string AContent) {
  std::erase_if(FParts, [&AName](const auto& APart) { return APart.first == AName; });
  FParts.emplace_back(std::move(AName), std::move(AContent));
  return *this;
}

TXlsxBuilder& TXlsxBuilder::Sheet(std::string_view AContent, std::string_view AAttributes) {
  const std::string number = std::to_string(++FSheetCount);
  ((((FSheets += "<sheet name='S" + number) += "' sheetId='1' r:id='rId") += number) += "' ") += AAttributes;
  FSheets += "/>";
  FRelationships += "<Relationship Id='rId" + number + "' Type='sheet' Target='worksheets/sheet" + number + ".xml'/>";
  std::string content = "<worksheet>";
  (content += AContent) += "</worksheet>";
  return Part("xl/worksheets/sheet" + number + ".xml", std::move(content));
}

TXlsxBuilder& TXlsxBuilder::Workbook(std::string_view AContent) {
  FWorkbookTail = AContent;
  return *this;
}

TXlsxBuilder& TXlsxBuilder::Strings(std::string_view AItems) {
  std::string content = "<sst>";
  (content += AItems) += "</sst>";
  return Part("xl/sharedStrings.xml", std::move(content));
}

std::vector<std::byte> TXlsxBuilder::Bytes() const {
  TZipBuilder zip;
  if (!HasPart("xl/workbook.xml"))
    zip.Add("xl/workbook.xml", "<workbook><sheets>" + FSheets + "</sheets>" + FWorkbookTail + "</workbook>");
  if (!HasPart("xl/_rels/workbook.xml.rels"))
    zip.Add("xl/_rels/workbook.xml.rels", "<Relationships>" + FRelationships + "</Relationships>");
  for (const auto& [name, content] : FParts) zip.Add(name, content);
  return zip.Finish();
}

void TXlsxBuilder::Load(TWorkbook& ABook, const TXlsxReadOptions& AOptions) const {
  const std::vector<std::byte> bytes = Bytes();
  TMemoryReadStream stream(bytes);
  TXlsxReader::LoadFromStream(ABook, stream, AOptions);
}

std::string Row(std::string_view AContent) { return "<sheetData><row>" + std::string(AContent) + "</row></sheetData>"; }

std::string DumpCells(const TWorksheet& ASheet) {
  std::string text;
  ASheet.Store().ForEachByRow({1, 1, kMaxCol, kMaxRow}, [&](int32_t ACol, int32_t ARow, const detail::TCellSlot&) {
    if (!text.empty()) text += ' ';
    text += TText(TCellAddress{ACol, ARow}.ToA1()).ToUtf8() + "=" + CellText(ASheet.GetCellAt(ACol, ARow));
  });
  return text;
}

std::string LoadedCells(std::string_view ASheetContent, std::string_view AStrings) {
  TWorkbook book;
  TXlsxBuilder().Sheet(ASheetContent).Strings(AStrings).Load(book);
  return DumpCells(*book.GetSheet(0));
}

}  // namespace tessarine::test
