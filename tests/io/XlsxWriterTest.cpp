#include <tessarine/io/xlsx/XlsxWriter.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <set>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/CellComments.h>
#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/lists/Hyperlinks.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/PageSetup.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SavedView.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/FileReport.h>
#include <tessarine/io/xlsx/XlsxReader.h>
#include <tessarine/io/xlsx/detail/XlsxFormulaWriter.h>
#include <tessarine/io/xlsx/detail/XlsxFormulas.h>
#include <tessarine/io/xlsx/detail/XlsxMarkupWriter.h>
#include <tessarine/io/xlsx/detail/XlsxPackage.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Files.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/XmlText.h>
#include <tessarine/platform/XmlTree.h>
#include <tessarine/platform/Zip.h>

#include "../support/TemporaryFolder.h"

namespace tessarine {
namespace {

TXlsxWriteOptions Fixed(bool AIsLiteral = false) { return {.Time = 45000.5, .Literal = AIsLiteral}; }

std::vector<std::byte> Saved(TWorkbook& ABook, const TXlsxWriteOptions& AOptions = Fixed()) {
  TMemoryWriteStream stream;
  TXlsxWriter::SaveToStream(ABook, stream, AOptions);
  return stream.ToVector();
}

void Reload(TWorkbook& ABook, const std::vector<std::byte>& ABytes) {
  TMemoryReadStream stream(ABytes);
  TXlsxReader::LoadFromStream(ABook, stream);
}

std::string Part(const std::vector<std::byte>& ABytes, std::string_view AName) {
  const detail::TXlsxPackage package(ABytes, {});
  return std::string(package.ReadPart(AName).Text());
}

std::string SavedPart(TWorkbook& ABook, std::string_view AName, const TXlsxWriteOptions& AOptions = Fixed()) {
  return Part(Saved(ABook, AOptions), AName);
}

constexpr std::string_view kSheet1 = "xl/worksheets/sheet1.xml";

/// The element of that name, the first one, with all that is in it; empty when there is none.
std::string Element(const std::string& AXml, const std::string& AName) {
  const size_t start = AXml.find("<" + AName);
  if (start == AXml.npos) return {};
  const std::string name = AName.substr(0, AName.find(' '));
  const size_t tagEnd = AXml.find('>', start);
  if (AXml[tagEnd - 1] == '/') return AXml.substr(start, tagEnd + 1 - start);
  const std::string close = "</" + name + ">";
  return AXml.substr(start, AXml.find(close, start) + close.size() - start);
}

TWorksheet& First(TWorkbook& ABook) { return *ABook.GetSheet(0); }

void SetFormula(TWorksheet& ASheet, TCellAddress AAddress, std::u16string_view AFormula, TCellValue AResult = {}) {
  TCell cell;
  cell.Value = TCellValue::FromFormula(AFormula);
  if (!AResult.IsEmpty()) cell.SetCachedResult(AResult);
  ASheet.SetCell(AAddress, cell);
}

TCellFormat BoldFormat() {
  TCellFormat format;
  format.Font.Bold = true;
  return format;
}

std::vector<std::string> EntryNames(const std::vector<std::byte>& ABytes) {
  const TZipReader zip(ABytes);
  std::vector<std::string> names;
  for (size_t i = 0; i < zip.EntryCount(); ++i) names.emplace_back(zip.Name(i));
  return names;
}

// ---- the package

TEST(XlsxWriting, PartsComeInTheirOrderWithTheirIds) {
  TWorkbook book;
  First(book).SetValue({1, 1}, TCellValue::FromText(u"name"));
  First(book).Tables().Add(u"T1", {1, 1, 2, 3});
  First(book).SetHyperlink(1, 5, u"HTTP://a.example/");
  First(book).SetHyperlink(1, 6, u"http://A.example/");
  First(book).SetHyperlink(1, 7, u"\\\\server\\file");
  First(book).SetHyperlink(1, 8, u"Sheet1!A1");
  book.AddSheet(u"Two");
  const auto bytes = Saved(book);
  EXPECT_EQ(
      EntryNames(bytes),
      (std::vector<std::string>{"[Content_Types].xml", "_rels/.rels", "xl/workbook.xml", "xl/_rels/workbook.xml.rels",
                                "xl/theme/theme1.xml", "docProps/core.xml", "docProps/app.xml", "xl/styles.xml",
                                "xl/sharedStrings.xml", "xl/worksheets/sheet1.xml", "xl/tables/table1.xml",
                                "xl/worksheets/_rels/sheet1.xml.rels", "xl/worksheets/sheet2.xml"}));
  const auto idTargets = [&](std::string_view APart) {
    std::string text;
    const std::string xml = Part(bytes, APart);
    const TXmlTree tree(xml, APart);
    for (const TXmlNode* node : TXmlElements(tree.Root())) {
      text += std::string(XmlAttr(node, "Id")) + "=" + std::string(XmlAttr(node, "Target"));
      text += XmlHasAttr(node, "TargetMode") ? "! " : " ";
    }
    return text;
  };
  EXPECT_EQ(idTargets("_rels/.rels"), "rId1=docProps/core.xml rId2=docProps/app.xml rId3=xl/workbook.xml ");
  EXPECT_EQ(idTargets("xl/_rels/workbook.xml.rels"),
            "rId1=worksheets/sheet1.xml rId2=worksheets/sheet2.xml rId999=styles.xml rId998=sharedStrings.xml "
            "rId997=theme/theme1.xml ");
  EXPECT_EQ(idTargets("xl/worksheets/_rels/sheet1.xml.rels"),
            "rId1=HTTP://a.example/! rId2=\\\\server\\file! rId3=../tables/table1.xml ");
  EXPECT_EQ(Element(Part(bytes, kSheet1), "hyperlinks"),
            "<hyperlinks><hyperlink ref=\"A5\" r:id=\"rId1\"/><hyperlink ref=\"A6\" r:id=\"rId1\"/><hyperlink "
            "ref=\"A7\" r:id=\"rId2\"/><hyperlink ref=\"A8\" location=\"Sheet1!A1\"/></hyperlinks>");
  EXPECT_NE(Part(bytes, "docProps/core.xml").find(">2023-03-15T12:00:00Z</dcterms:created>"), std::string::npos);
  for (const std::string& name : EntryNames(bytes)) {
    if (!name.ends_with(".xml")) continue;
    EXPECT_NO_THROW(TXmlTree(Part(bytes, name), name)) << name;
  }
}

TEST(XlsxWriting, NoStringsNoPartButItsId) {
  TWorkbook book;
  const auto bytes = Saved(book);
  for (const std::string& name : EntryNames(bytes)) EXPECT_NE(name, "xl/sharedStrings.xml");
  EXPECT_EQ(Part(bytes, "[Content_Types].xml").find("sharedStrings"), std::string::npos);
  EXPECT_NE(Part(bytes, "xl/_rels/workbook.xml.rels").find("\"rId998\""), std::string::npos);
}

TEST(XlsxWriting, AKeptDrawingHasItsIdAndNoNameTwice) {
  const std::vector<std::byte> content(3, std::byte{'x'});
  TWorkbook book;
  const auto fill = [&](TWorksheet& ASheet) {
    TSheetDrawingBag& bag = ASheet.Drawings().Bag();
    bag.SetSheetRelId(u"rId7");
    bag.SetDrawingPart(u"/xl/drawings/drawing1.xml", content);
    bag.SetDrawingRels(u"xl/drawings/_rels/drawing1.xml.rels", content);
    for (const char16_t* path : {u"xl/charts/chart1.xml", u"xl/charts/style1.xml", u"xl/charts/colors1.xml",
                                 u"xl/charts/_rels/chart1.xml.rels", u"xl/media/image1.WMF", u"xl/media/a.png",
                                 u"xl/workbook.xml", u"xl/worksheets/sheet2.xml", u"../x.xml", u"XL/Charts/Chart1.xml"})
      bag.AddPart(path, content);
  };
  fill(First(book));
  fill(book.AddSheet(u"Two"));
  First(book).SetHyperlink(1, 1, u"http://a.example/");
  TFileReport report;
  TXlsxWriteOptions options = Fixed();
  options.Report = &report;
  const auto bytes = Saved(book, options);
  std::set<std::string> names;
  for (const std::string& name : EntryNames(bytes)) EXPECT_TRUE(names.insert(name).second) << name;
  EXPECT_TRUE(names.contains("xl/media/a.png") && !names.contains("../x.xml"));
  const std::string relationships = Part(bytes, "xl/worksheets/_rels/sheet1.xml.rels");
  EXPECT_NE(relationships.find("Id=\"rId7\""), std::string::npos);
  EXPECT_NE(relationships.find("Target=\"../drawings/drawing1.xml\""), std::string::npos);
  EXPECT_NE(relationships.find("Id=\"rId8\""), std::string::npos);
  EXPECT_EQ(Element(Part(bytes, kSheet1), "drawing"), "<drawing r:id=\"rId7\"/>");
  const std::string types = Part(bytes, "[Content_Types].xml");
  for (const char* piece :
       {"drawingml.chart+xml", "chartstyle+xml", "chartcolorstyle+xml", "Extension=\"wmf\"", "Extension=\"png\""})
    EXPECT_NE(types.find(piece), std::string::npos) << piece;
  EXPECT_EQ(types.find("Extension=\"gif\""), std::string::npos);
  EXPECT_EQ(report.CountOf(ffDropped), 4u);
}

TEST(XlsxWriting, ManySheetsMoveTheFixedIds) {
  TWorkbook book;
  while (book.SheetCount() < 998)
    book.AddSheet(u"S" + std::u16string(1, static_cast<char16_t>(0x4E00 + book.SheetCount())));
  const std::string xml = SavedPart(book, "xl/_rels/workbook.xml.rels");
  const TXmlTree tree(xml, "rels");
  std::set<std::string> ids;
  for (const TXmlNode* node : TXmlElements(tree.Root()))
    EXPECT_TRUE(ids.insert(std::string(XmlAttr(node, "Id"))).second);
  EXPECT_EQ(ids.size(), 1001u);
}

TEST(XlsxWriting, SameBytesForTheSameTime) {
  TWorkbook book;
  for (int32_t row = 1; row <= 20000; ++row) First(book).SetValue({1, row}, TCellValue::FromNumber(row / 7.0));
  const auto bytes = Saved(book);
  EXPECT_EQ(bytes, Saved(book));
  EXPECT_NE(bytes, Saved(book, {.Time = 45001}));
  EXPECT_LT(Saved(book, {.DeflateLevel = 9, .Time = 45000.5}).size(), bytes.size());
}

TEST(XlsxWriting, StopLeavesTheTargetAndTheModifiedFlag) {
  test::TTemporaryFolder folder;
  const std::string file = folder.Path("a.xlsx");
  TWorkbook book;
  First(book).SetValue({1, 1}, TCellValue::FromNumber(1));
  TXlsxWriter::SaveToFile(book, file);
  EXPECT_FALSE(book.IsModified());
  for (int32_t row = 1; row <= 40000; ++row) First(book).SetValue({1, row}, TCellValue::FromNumber(2));
  std::stop_source source;
  TXlsxWriteOptions options;
  options.Control.Stop = source.get_token();
  double last = 0;
  options.Control.Progress = [&](const TTessarineProgressEvent& AEvent) {
    EXPECT_GE(AEvent.Fraction, last);
    last = AEvent.Fraction;
    if (AEvent.Fraction > 0.5) source.request_stop();
  };
  EXPECT_THROW(TXlsxWriter::SaveToFile(book, file, options), ECancelled);
  EXPECT_TRUE(book.IsModified());
  TWorkbook back;
  TXlsxReader::LoadFromFile(back, file);
  EXPECT_EQ(First(back).GetCellAt(1, 1).Value.Number, 1);
}

// ---- cells

TEST(XlsxWriting, CellsByKind) {
  TWorkbook book;
  TWorksheet& sheet = First(book);
  const int32_t bold = book.StyleSheet().AddCellXf(BoldFormat());
  const auto put = [&](int32_t ACol, TCellValue AValue, int32_t AStyle = 0) {
    TCell cell;
    cell.Value = std::move(AValue);
    cell.StyleIndex = AStyle;
    sheet.SetCell({ACol, 1}, cell);
  };
  put(1, TCellValue::FromNumber(-0.1), bold);
  put(2, TCellValue::FromBoolean(true));
  put(3, TCellValue::FromText(u"a"));
  put(4, TCellValue::FromError(ceNA), bold);
  put(5, {}, bold);
  put(6, TCellValue::FromText(u"a"), 99);
  put(7, TCellValue::FromNumber(std::numeric_limits<double>::infinity()), -4);
  SetFormula(sheet, {8, 1}, u"1/0", TCellValue::FromError(ceDiv0));
  SetFormula(sheet, {9, 1}, u"\"<\"&A1&\" \"", TCellValue::FromText(u"<-0.1 "));
  SetFormula(sheet, {10, 1}, u"A1>0", TCellValue::FromBoolean(false));
  SetFormula(sheet, {11, 1}, u"", TCellValue::FromNumber(5));
  SetFormula(sheet, {16384, 1}, u"A1*2", TCellValue::FromNumber(-0.2));
  const auto bytes = Saved(book);
  EXPECT_EQ(Element(Part(bytes, kSheet1), "sheetData"),
            "<sheetData><row r=\"1\"><c r=\"A1\" s=\"1\"><v>-0.1</v></c><c r=\"B1\" t=\"b\"><v>1</v></c><c r=\"C1\" "
            "t=\"s\"><v>0</v></c><c r=\"D1\" s=\"1\"/><c r=\"E1\" s=\"1\"/><c r=\"F1\" s=\"2\" t=\"s\"><v>0</v></c><c "
            "r=\"G1\" s=\"2\"/><c r=\"H1\"><f>1/0</f></c><c r=\"I1\" t=\"str\"><f>&quot;&lt;&quot;&amp;A1&amp;&quot; "
            "&quot;</f><v "
            "xml:space=\"preserve\">&lt;-0.1 </v></c><c r=\"J1\" t=\"b\"><f>A1&gt;0</f><v>0</v></c><c "
            "r=\"K1\"><v>5</v></c><c r=\"XFD1\"><f>A1*2</f><v>-0.2</v></c></row>"
            "</sheetData>");
  EXPECT_NE(Part(bytes, "xl/styles.xml").find("<cellXfs count=\"3\">"), std::string::npos);
  EXPECT_NE(SavedPart(book, kSheet1, Fixed(true)).find("<c r=\"F1\" s=\"99\""), std::string::npos);
}

TEST(XlsxWriting, FormulasReadBackAsTheyWere) {
  const struct {
    const char16_t* Formula;
    const char* Written;
    const char* Literal;
  } cases[] = {
      {u"=A1+1", "<f>A1+1</f>", "<f>A1+1</f>"},
      {u"=SEQUENCE(3)", "<f t=\"array\" ref=\"B2\">SEQUENCE(3)</f>", "<f>SEQUENCE(3)</f>"},
      {u"=@SEQUENCE(3)", "<f>SEQUENCE(3)</f>", "<f>@SEQUENCE(3)</f>"},
      {u"=@SEQUENCE(@A1)", "<f>@SEQUENCE(@A1)</f>", "<f>@SEQUENCE(@A1)</f>"},
      {u"=_xlfn.LET(x,A1,y , x+1,x*Y+$X$1+x!A1)",
       "<f>_xlfn.LET(_xlpm.x,A1,_xlpm.y , _xlpm.x+1,_xlpm.x*_xlpm.Y+$X$1+x!A1)</f>",
       "<f>_xlfn.LET(x,A1,y , x+1,x*Y+$X$1+x!A1)</f>"},
      {u"=1+MAP(A1:A3,LAMBDA(a,a&\"a\"))+a", "<f>1+MAP(A1:A3,LAMBDA(_xlpm.a,_xlpm.a&amp;&quot;a&quot;))+a</f>",
       "<f>1+MAP(A1:A3,LAMBDA(a,a&amp;&quot;a&quot;))+a</f>"},
      {u"=LET(f,LAMBDA(x,x+1),f(2))", "<f>LET(_xlpm.f,LAMBDA(_xlpm.x,_xlpm.x+1),_xlpm.f(2))</f>",
       "<f>LET(f,LAMBDA(x,x+1),f(2))</f>"},
      {u"=\"_x0041_\"&\"\x01\"", "<f>&quot;_x005F_x0041_&quot;&amp;&quot;_x0001_&quot;</f>",
       "<f>&quot;_x005F_x0041_&quot;&amp;&quot;_x0001_&quot;</f>"},
  };
  for (const auto& row : cases) {
    TWorkbook book;
    SetFormula(First(book), {2, 2}, row.Formula);
    const auto bytes = Saved(book);
    EXPECT_EQ(Element(Part(bytes, kSheet1), "f"), row.Written);
    EXPECT_EQ(Element(SavedPart(book, kSheet1, Fixed(true)), "f"), row.Literal);
    TWorkbook back;
    Reload(back, bytes);
    EXPECT_EQ(First(back).GetCellAt(2, 2).Value.Formula().ToUtf8(), TText(row.Formula).ToUtf8());
  }
}

TEST(XlsxWriting, SpilledBlocksStandInTheirFormula) {
  TWorkbook book;
  SetFormula(First(book), {1, 1}, u"=@+SEQUENCE(3)", TCellValue::FromNumber(1));
  First(book).Spills().SetSpill(1, 1, 3, 1, std::vector<TCellValue>(3, TCellValue::FromNumber(1)));
  SetFormula(First(book), {16384, 1048575}, u"=C1:D2");
  First(book).Spills().SetSpill(16384, 1048575, 3, 2, std::vector<TCellValue>(6));
  const std::string xml = SavedPart(book, kSheet1);
  EXPECT_NE(xml.find("<f t=\"array\" ref=\"A1:A3\">SEQUENCE(3)</f><v>1</v>"), std::string::npos) << xml;
  EXPECT_NE(xml.find("<f t=\"array\" ref=\"XFD1048575:XFD1048576\">C1:D2</f>"), std::string::npos);
  EXPECT_EQ(xml.find("r=\"A2\""), std::string::npos);
}

TEST(XlsxWriting, ParameterPrefixesNeverChangeAText) {
  std::mt19937 random(7);
  const char16_t* const pieces[] = {u"LET(", u"_xlfn.LAMBDA(",
                                    u"x",    u"X",
                                    u"yy",   u",",
                                    u")",    u"(",
                                    u"'",    u"\"",
                                    u"[",    u"]",
                                    u"#",    u" ",
                                    u"$",    u"!",
                                    u":",    u"1",
                                    u"A1",   u"{",
                                    u"}",    u"_xlpm.",
                                    u"."};
  for (int round = 0; round < 3000; ++round) {
    std::u16string text;
    for (int i = 0; i < 14; ++i) text += pieces[random() % std::size(pieces)];
    std::u16string back = detail::MarkXlsxParameters(text);
    if (back == text) continue;
    detail::StripXlsxParameterPrefixes(back);
    EXPECT_EQ(TText(back).ToUtf8(), TText(text).ToUtf8());
  }
}

TEST(XlsxWriting, PrefixesOfFunctionsStandInSmallLetters) {
  const struct {
    const char16_t* Formula;
    const char* Written;
  } cases[] = {
      {u"_XLFN.CONCAT(A1)", "_xlfn.CONCAT(A1)"},
      {u"1+_XLFN._XLWS.FILTER(A1:A3,_Xludf.F(1))", "1+_xlfn._xlws.FILTER(A1:A3,_xludf.F(1))"},
      {u"_XLFN.LET(x,1,x)", "_xlfn.LET(_xlpm.x,1,_xlpm.x)"},
      {u"MAP(A1,_XLETA.ABS)", "MAP(A1,_xleta.ABS)"},
      {u"A_XLFN.B+_XLFNX(1)+_XLFN", "A_XLFN.B+_XLFNX(1)+_XLFN"},
      {u"\"_XLFN.A\"&'_XLFN.B''_XLFN.C'!A1&T[_XLFN.D]", "\"_XLFN.A\"&'_XLFN.B''_XLFN.C'!A1&T[_XLFN.D]"},
      {u"\"_XLFN.", "\"_XLFN."},
      {u"T[_XLFN.", "T[_XLFN."},
  };
  for (const auto& row : cases) EXPECT_EQ(Utf16ToUtf8(detail::XlsxFormulaText(row.Formula)), row.Written);

  TWorkbook book;
  SetFormula(First(book), {1, 1}, u"=_XLFN.CONCAT(B1)");
  SetFormula(First(book), {1, 2}, u"=_XLFN.CONCAT(B2)");
  book.SetNamedFormula(u"N", u"=_XLFN.CONCAT(B1)");
  for (const bool isLiteral : {false, true}) {
    const auto bytes = Saved(book, Fixed(isLiteral));
    const std::string prefix = isLiteral ? "_XLFN" : "_xlfn";
    EXPECT_NE(Part(bytes, kSheet1).find("<f>" + prefix + ".CONCAT(B2)</f>"), std::string::npos);
    EXPECT_NE(Part(bytes, "xl/workbook.xml").find(">" + prefix + ".CONCAT(B1)<"), std::string::npos);
  }
}

TEST(XlsxWriting, PlainTextsAreWhatTheEscapedFormGives) {
  std::mt19937 random(3);
  for (int round = 0; round < 3000; ++round) {
    std::u16string text;
    for (uint32_t i = random() % 12; i > 0; --i) text += static_cast<char16_t>(random() % 140);
    std::string plain = "head";
    std::string escaped = "head";
    AppendXlsxText(text, escaped);
    if (!detail::TryAppendPlain(text, plain))
      EXPECT_EQ(plain, "head");
    else
      EXPECT_EQ(plain, escaped);
  }
}

// ---- texts

TEST(XlsxWriting, TextsAreSharedOnceAndRichOnesNever) {
  TWorkbook book;
  TWorksheet& sheet = First(book);
  const int32_t bold = book.StyleSheet().AddCellXf(BoldFormat());
  const char16_t* const texts[] = {u"a", u" b", u"a", u"c\td", u"\x0Bé_x0041_", u""};
  for (int32_t i = 0; i < 6; ++i) sheet.SetValue({1, i + 1}, TCellValue::FromText(texts[i]));
  TCell rich;
  rich.Value = TCellValue::FromText(u"on off");
  TCellFontInfo themed;
  themed.Bold = true;
  themed.Script = spSubscript;
  themed.Size = 10.5;
  themed.Color = TColorRef::FromTheme(4, 0);
  TCellFontInfo sizeless;
  sizeless.Size = std::numeric_limits<float>::quiet_NaN();
  rich.RichText = {{u"on ", themed}, {u"", {}}, {u"off", sizeless}};
  rich.StyleIndex = bold;
  sheet.SetCell({2, 1}, rich);
  sheet.SetCell({2, 2}, rich);
  const auto bytes = Saved(book);
  const std::string xml = Part(bytes, "xl/sharedStrings.xml");
  const std::string item =
      "<si><r><rPr><b/><sz val=\"10.5\"/><color rgb=\"FF4472C4\"/><rFont val=\"Calibri\"/><vertAlign "
      "val=\"subscript\"/></rPr><t xml:space=\"preserve\">on </t></r><r><rPr><b val=\"0\"/><color "
      "rgb=\"FF000000\"/><rFont val=\"Calibri\"/></rPr><t>off</t></r></si>";
  EXPECT_EQ(
      xml.substr(xml.find("count")),
      "count=\"7\" uniqueCount=\"7\"><si><t>a</t></si>" + item + "<si><t xml:space=\"preserve\"> b</t></si>" + item +
          "<si><t xml:space=\"preserve\">c\td</t></si><si><t>_x000B_é_x005F_x0041_</t></si><si><t></t></si></sst>");
  TWorkbook back;
  Reload(back, bytes);
  const TCell cell = First(back).GetCellAt(2, 2);
  ASSERT_EQ(cell.RichText.size(), 2u);
  EXPECT_TRUE(cell.RichText[0].Font.Bold && !cell.RichText[1].Font.Bold);
  for (int32_t i = 0; i < 6; ++i) EXPECT_EQ(First(back).GetCellAt(1, i + 1).Value.Text.View(), texts[i]);
  EXPECT_EQ(SavedPart(book, "xl/sharedStrings.xml", Fixed(true)).find("val=\"0\""), std::string::npos);
}

// ---- formats

TEST(XlsxWriting, OverridesBecomeFormatsThatEqualOnesShare) {
  TWorkbook book;
  book.AddSheet(u"Two");
  const int32_t old = book.StyleSheet().AddCellXf(BoldFormat());
  for (int32_t sheet = 0; sheet < 2; ++sheet) {
    for (int32_t row = 1; row <= 3; ++row) {
      TCell cell;
      cell.Value = TCellValue::FromFormula(u"=1");
      cell.SetCachedResult(TCellValue::FromNumber(1));
      cell.HasFormatOverride = true;
      cell.FormatOverride = BoldFormat();
      if (row == 3) cell.FormatOverride.NumberFormat = u"0.000";
      book.GetSheet(sheet)->SetCell({1, row}, cell);
    }
  }
  const auto bytes = Saved(book);
  EXPECT_EQ(book.StyleSheet().Count(), old + 3);
  for (int32_t sheet = 0; sheet < 2; ++sheet) {
    for (int32_t row = 1; row <= 3; ++row) {
      const TCell cell = book.GetSheet(sheet)->GetCellAt(1, row);
      EXPECT_EQ(cell.StyleIndex, row == 3 ? old + 2 : old + 1);
      EXPECT_TRUE(!cell.HasFormatOverride && cell.FormatOverride == TCellFormat::Default());
      EXPECT_TRUE(cell.HasCachedValue);
    }
  }
  EXPECT_EQ(bytes, Saved(book));
  TWorkbook empty;
  empty.StyleSheet().ClearCellXfs();
  TCell cell;
  cell.HasFormatOverride = true;
  cell.FormatOverride = BoldFormat();
  First(empty).SetCell({1, 1}, cell);
  Saved(empty);
  EXPECT_EQ(First(empty).GetCellAt(1, 1).StyleIndex, 1);
}

TEST(XlsxWriting, FormatsFallIntoTables) {
  TWorkbook book;
  TTessarineStyleSheet& styles = book.StyleSheet();
  const auto add = [&](const std::function<void(TCellFormat&)>& AChange) {
    TCellFormat format;
    AChange(format);
    styles.AddCellXf(format);
  };
  const TBorderSide red{blsThin, TColorRef::FromARGB(0xFFFF0000)};
  const TBorderSide blue{blsThin, TColorRef::FromARGB(0xFF0000FF)};
  add([&](TCellFormat& AFormat) { AFormat.Border.Left = red; });
  add([&](TCellFormat& AFormat) { AFormat.Border.Left = blue; });
  add([](TCellFormat& AFormat) { AFormat.Font.Script = spSuperscript; });
  add([](TCellFormat& AFormat) { AFormat.Font.Size = 10.126f; });
  add([](TCellFormat& AFormat) { AFormat.Font.Color = TColorRef::FromTheme(3, -0.24999); });
  add([](TCellFormat& AFormat) { AFormat.Font.Size = 0; });
  add([](TCellFormat& AFormat) {
    AFormat.Font.Size = std::numeric_limits<float>::quiet_NaN();
    AFormat.Font.Color = TColorRef::FromTheme(3, std::numeric_limits<double>::quiet_NaN());
    AFormat.Font.Name = u"_x0041_";
  });
  add([](TCellFormat& AFormat) { AFormat.NumberFormat = u"M/D/YYYY"; });
  add([](TCellFormat& AFormat) { AFormat.NumberFormat = u"0.0\"_x0041_\""; });
  add([](TCellFormat& AFormat) { AFormat.NumberFormat = u"GENERAL"; });
  add([](TCellFormat& AFormat) { AFormat.Fill = TCellFillInfo::Solid(TColorRef::FromARGB(0x00123456)); });
  add([](TCellFormat& AFormat) { AFormat.Fill.PatternType = 2; });
  add([](TCellFormat& AFormat) {
    AFormat.Fill = TCellFillInfo::Gradient(TColorRef::FromTheme(4, 0), TColorRef::FromARGB(kOpaqueWhite), 45);
  });
  add([](TCellFormat& AFormat) {
    AFormat.Alignment.Horizontal = haFill;
    AFormat.Alignment.Indent = -2;
    AFormat.Alignment.TextRotation = 315;
  });
  const std::string xml = SavedPart(book, "xl/styles.xml");
  EXPECT_EQ(Element(xml, "numFmts"),
            "<numFmts count=\"1\"><numFmt numFmtId=\"164\" formatCode=\"0.0&quot;_x005F_x0041_&quot;\"/></numFmts>");
  EXPECT_EQ(
      Element(xml, "fonts"),
      "<fonts count=\"5\"><font><sz val=\"11\"/><color rgb=\"FF000000\"/><name val=\"Calibri\"/></font><font><sz "
      "val=\"10.13\"/><color rgb=\"FF000000\"/><name val=\"Calibri\"/></font><font><sz val=\"11\"/><color theme=\"3\" "
      "tint=\"-0.25\"/><name val=\"Calibri\"/></font><font><color rgb=\"FF000000\"/><name val=\"Calibri\"/></font>"
      "<font><color theme=\"3\"/><name val=\"_x005F_x0041_\"/></font></fonts>");
  EXPECT_EQ(
      Element(xml, "fills"),
      "<fills count=\"4\"><fill><patternFill patternType=\"none\"/></fill><fill><patternFill patternType=\"gray125\"/>"
      "</fill><fill><patternFill patternType=\"solid\"><fgColor rgb=\"FF123456\"/><bgColor rgb=\"FFFFFFFF\"/>"
      "</patternFill></fill><fill><gradientFill degree=\"45\"><stop position=\"0\"><color theme=\"4\"/></stop><stop "
      "position=\"1\"><color rgb=\"FFFFFFFF\"/></stop></gradientFill></fill></fills>");
  EXPECT_EQ(
      Element(xml, "borders"),
      "<borders count=\"2\"><border><left/><right/><top/><bottom/><diagonal/></border><border><left style=\"thin\">"
      "<color rgb=\"FFFF0000\"/></left><right/><top/><bottom/><diagonal/></border></borders>");
  EXPECT_NE(
      xml.find("<xf numFmtId=\"14\" fontId=\"0\" fillId=\"0\" borderId=\"0\" xfId=\"0\" applyNumberFormat=\"1\"/>"),
      std::string::npos);
  EXPECT_NE(
      xml.find("applyAlignment=\"1\"><alignment horizontal=\"fill\" vertical=\"bottom\" textRotation=\"135\"/></xf>"),
      std::string::npos);
  EXPECT_NE(SavedPart(book, "xl/styles.xml", Fixed(true)).find("indent=\"-2\" textRotation=\"315\""),
            std::string::npos);
  const std::string plain = SavedPart(book, "xl/styles.xml");
  const TXmlTree tree(plain, "styles");
  std::vector<std::string> order;
  for (const TXmlNode* node : TXmlElements(tree.Root())) order.emplace_back(XmlLocalName(node));
  EXPECT_EQ(order, (std::vector<std::string>{"numFmts", "fonts", "fills", "borders", "cellStyleXfs", "cellXfs"}));
}

// ---- sheets

TEST(XlsxWriting, ElementsOfASheetComeInOrder) {
  TWorkbook book;
  TWorksheet& sheet = First(book);
  sheet.SetFrozenRows(2);
  sheet.Sizing().SetColHidden(3, true);
  sheet.Sizing().SetColWidthChars(2, 20.5);
  sheet.Sizing().SetRowHeightPt(4, 30);
  sheet.Sizing().SetRowOutlineLevel(9, 2);
  sheet.Sizing().SetRowCollapsed(10, true);
  sheet.Sizing().SetAutoRowHeightPt(7, 99);
  sheet.SetValue({1, 4}, TCellValue::FromNumber(1));
  sheet.AutoFilter().Enable({1, 1, 3, 9});
  sheet.AutoFilter().SetColumnContains(2, u"a?*", false);
  sheet.AutoFilter().SetColumnValues(3, {u"x", u""}, false);
  for (const TCellRange& range : {TCellRange{5, 5, 6, 6}, {6, 6, 7, 7}, {9, 9, 9, 9}, {5, 7, 5, 8}})
    sheet.MergeRange(range);
  TDataValidationRule rule;
  rule.ValidationType = dvtList;
  rule.Formula1 = u"a,b";
  rule.Ranges = {{1, 1, 1, 5}, {3, 3, 3, 3}};
  rule.Prompt = u"line\n_x0041_\x01";
  sheet.Validations().AddRule(rule);
  rule.ValidationType = dvtNone;
  sheet.Validations().AddRule(rule);
  TDataValidationRule custom;
  custom.ValidationType = dvtCustom;
  custom.Formula1 = u"=LET(x,A1,x)";
  custom.Ranges = {{2, 2, 2, 2}};
  sheet.Validations().AddRule(custom);
  sheet.SetHyperlink(1, 1, u"mailto:a@b.example");
  sheet.PageSetup().FitToPage = true;
  sheet.PageSetup().PrintGridlines = true;
  sheet.PageSetup().Header.Center = u"&P";
  sheet.PageSetup().AddRowBreak(5);
  sheet.PageSetup().AddColBreak(2);
  sheet.Tables().Add(u"T", {10, 1, 11, 3});
  sheet.SavedView().AssignFrom({{1, 1, 1, 1}, {2, 2, 3, 3}}, 2, 3, 1, 7, false);
  const std::string xml = SavedPart(book, kSheet1);
  const TXmlTree tree(xml, "sheet");
  std::string order;
  for (const TXmlNode* node : TXmlElements(tree.Root())) (order += XmlLocalName(node)) += ' ';
  EXPECT_EQ(order,
            "sheetPr sheetViews sheetFormatPr cols sheetData autoFilter mergeCells dataValidations hyperlinks "
            "printOptions pageMargins pageSetup headerFooter rowBreaks colBreaks tableParts ");
  const std::pair<const char*, const char*> elements[] = {
      {"sheetPr",
       "<sheetPr><outlinePr summaryBelow=\"1\" summaryRight=\"1\"/><pageSetUpPr fitToPage=\"1\"/></sheetPr>"},
      {"sheetView",
       "<sheetViews><sheetView tabSelected=\"1\" workbookViewId=\"0\"><pane xSplit=\"0\" ySplit=\"2\" "
       "topLeftCell=\"A7\" "
       "activePane=\"bottomRight\" state=\"frozen\"/><selection activeCell=\"B3\" activeCellId=\"1\" sqref=\"A1 "
       "B2:C3\"/>"
       "</sheetView></sheetViews>"},
      {"sheetFormatPr", "<sheetFormatPr defaultColWidth=\"8.43\" defaultRowHeight=\"15\" outlineLevelRow=\"2\"/>"},
      {"cols",
       "<cols><col min=\"2\" max=\"2\" width=\"20.5\" customWidth=\"1\"/><col min=\"3\" max=\"3\" width=\"8.43\" "
       "hidden=\"1\" customWidth=\"1\"/></cols>"},
      {"sheetData",
       "<sheetData><row r=\"4\" ht=\"30\" customHeight=\"1\"><c r=\"A4\"><v>1</v></c></row><row r=\"9\" "
       "outlineLevel=\"2\"/><row r=\"10\" collapsed=\"1\"/></sheetData>"},
      {"autoFilter",
       "<autoFilter ref=\"A1:C9\"><filterColumn colId=\"1\"><customFilters><customFilter operator=\"equal\" "
       "val=\"*a~?~**\"/></customFilters></filterColumn><filterColumn colId=\"2\"><filters blank=\"1\"><filter "
       "val=\"x\"/></filters></filterColumn></autoFilter>"},
      {"mergeCells", "<mergeCells count=\"2\"><mergeCell ref=\"E5:F6\"/><mergeCell ref=\"E7:E8\"/></mergeCells>"},
      {"dataValidations",
       "<dataValidations count=\"2\"><dataValidation type=\"list\" errorStyle=\"stop\" operator=\"between\" "
       "allowBlank=\"0\" showInputMessage=\"0\" showErrorMessage=\"0\" prompt=\"line&#10;_x005F_x0041__x0001_\" "
       "sqref=\"A1:A5 C3\">"
       "<formula1>&quot;a,b&quot;</formula1></dataValidation><dataValidation type=\"custom\" errorStyle=\"stop\" "
       "operator=\"between\" allowBlank=\"0\" showInputMessage=\"0\" showErrorMessage=\"0\" sqref=\"B2\">"
       "<formula1>LET(_xlpm.x,A1,_xlpm.x)</formula1></dataValidation></dataValidations>"},
      {"pageSetup ", "<pageSetup paperSize=\"1\" fitToWidth=\"1\" fitToHeight=\"1\" orientation=\"portrait\"/>"},
      {"headerFooter", "<headerFooter><oddHeader>&amp;C&amp;P</oddHeader></headerFooter>"},
      {"rowBreaks",
       "<rowBreaks count=\"1\" manualBreakCount=\"1\"><brk id=\"4\" max=\"16383\" man=\"1\"/></rowBreaks>"},
      {"colBreaks",
       "<colBreaks count=\"1\" manualBreakCount=\"1\"><brk id=\"1\" max=\"1048575\" man=\"1\"/></colBreaks>"},
      {"tableParts", "<tableParts count=\"1\"><tablePart r:id=\"rId2\"/></tableParts>"},
  };
  for (const auto& [name, expected] : elements)
    EXPECT_EQ(Element(xml, std::string_view(name) == "sheetView" ? "sheetViews" : name), expected);
  const std::string literal = SavedPart(book, kSheet1, Fixed(true));
  EXPECT_NE(literal.find("operator=\"contains\" val=\"a?*\""), std::string::npos);
  EXPECT_NE(literal.find("<filters><filter val=\"x\"/><filter val=\"\"/></filters>"), std::string::npos);
  EXPECT_NE(literal.find("<mergeCells count=\"4\">"), std::string::npos);
  EXPECT_NE(literal.find("<formula1>a,b</formula1>"), std::string::npos);
}

TEST(XlsxWriting, SourcesOfListsAreFormulasOrQuoted) {
  const std::pair<const char16_t*, const char*> cases[] = {
      {u"a,b", "&quot;a,b&quot;"},
      {u"=A1:A3", "A1:A3"},
      {u"\"x,y\"", "&quot;x,y&quot;"},
      {u"Items", "Items"},
      {u"Yes", "&quot;Yes&quot;"},
      {u"$B$1:$B$2", "$B$1:$B$2"},
      {u"INDIRECT(A1)", "INDIRECT(A1)"},
      {u"S!A1:A2", "S!A1:A2"},
      {u"5\",6", "&quot;5&quot;&quot;,6&quot;"},
      {u"\"5\",6\"\"", "&quot;5&quot;&quot;,6&quot;&quot;&quot;"},
  };
  for (const auto& [source, written] : cases) {
    TWorkbook book;
    book.SetNamedFormula(u"Items", u"=Sheet1!$A$1:$A$3");
    TDataValidationRule rule;
    rule.ValidationType = dvtList;
    rule.Formula1 = source;
    rule.Ranges = {{1, 1, 1, 1}};
    First(book).Validations().AddRule(rule);
    const auto bytes = Saved(book);
    EXPECT_EQ(Element(Part(bytes, kSheet1), "formula1"), "<formula1>" + std::string(written) + "</formula1>");
    TWorkbook back;
    Reload(back, bytes);
    EXPECT_EQ(TDataValidationList::ParseListItems(First(back).Validations().GetRule(0).Formula1),
              TDataValidationList::ParseListItems(source));
  }
}

TEST(XlsxWriting, PrintSettingsBecomeNames) {
  TWorkbook book;
  First(book).SetName(u"Q1-24");
  First(book).PageSetup().SetPrintArea({1, 1, 3, 9});
  First(book).PageSetup().SetTitleCols(1, 2);
  TWorksheet& two = book.AddSheet(u"It's");
  two.PageSetup().SetPrintArea({2, 2, 2, 2});
  two.PageSetup().SetTitleRows(3, 4);
  two.PageSetup().SetTitleCols(1, 1);
  book.SetNamedFormula(u"Print_Titles", u"=old");
  book.SetNamedFormula(u"Rate", u"=0.5");
  book.SetNamedFormula(u"Blank", u"");
  const auto bytes = Saved(book);
  EXPECT_EQ(Element(Part(bytes, "xl/workbook.xml"), "definedNames"),
            "<definedNames><definedName name=\"RATE\">0.5</definedName><definedName name=\"_xlnm.Print_Area\">"
            "'Q1-24'!$A$1:$C$9,'It''s'!$B$2:$B$2</definedName><definedName name=\"_xlnm.Print_Titles\">"
            "'Q1-24'!$A:$B,'It''s'!$A:$A,'It''s'!$3:$4</definedName></definedNames>");
  EXPECT_EQ(book.FindNamedFormula(u"_xlnm.Print_Area")->ToUtf8(), "=Q1-24!$A$1:$C$9,'It''s'!$B$2:$B$2");
  EXPECT_FALSE(book.FindNamedFormula(u"Print_Titles").has_value());
  TWorkbook back;
  Reload(back, bytes);
  for (int32_t sheet = 0; sheet < 2; ++sheet)
    EXPECT_EQ(back.GetSheet(sheet)->PageSetup(), book.GetSheet(sheet)->PageSetup()) << sheet;
}

TEST(XlsxWriting, TablesGetLegalNames) {
  TWorkbook book;
  book.SetNamedFormula(u"Taken", u"=1");
  TSheetTable& first = First(book).Tables().Add(u"My data", {1, 1, 4, 5});
  first.SetColumnNames({u"a", u"A", u"a2"});
  first.SetHasTotalsRow(true);
  first.SetShowColumnStripes(true);
  First(book).Tables().Add(u"taken", {6, 1, 7, 5});
  TSheetTable& headless = book.AddSheet(u"Two").Tables().Add(u"TAKEN", {1, 1, 2, 2});
  headless.SetHasHeaderRow(false);
  headless.SetColumnNames({u"_x0041_", u"\n"});
  First(book).AutoFilter().Enable({1, 1, 4, 4});
  First(book).AutoFilter().SetColumnContains(1, u"x", false);
  TFileReport report;
  TXlsxWriteOptions options = Fixed();
  options.Report = &report;
  const auto bytes = Saved(book, options);
  const std::string head = "<table xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\" ";
  EXPECT_EQ(Element(Part(bytes, "xl/tables/table1.xml"), "table "),
            head +
                "id=\"1\" name=\"My_data\" displayName=\"My_data\" ref=\"A1:D5\" headerRowCount=\"1\" "
                "totalsRowCount=\"1\"><autoFilter ref=\"A1:D4\"/><tableColumns count=\"4\"><tableColumn id=\"1\" "
                "name=\"a\"/><tableColumn id=\"2\" name=\"A2\"/><tableColumn id=\"3\" name=\"a22\"/><tableColumn "
                "id=\"4\" name=\"Column4\"/></tableColumns><tableStyleInfo name=\"TableStyleMedium2\" "
                "showFirstColumn=\"0\" showLastColumn=\"0\" showRowStripes=\"1\" showColumnStripes=\"1\"/></table>");
  EXPECT_NE(Part(bytes, "xl/tables/table2.xml").find("displayName=\"taken2\""), std::string::npos);
  EXPECT_NE(Part(bytes, "xl/tables/table3.xml").find("id=\"3\" name=\"TAKEN3\""), std::string::npos);
  EXPECT_EQ(Part(bytes, "xl/tables/table3.xml").find("autoFilter"), std::string::npos);
  TWorkbook back;
  Reload(back, bytes);
  EXPECT_EQ((*back.GetSheet(1)->Tables().begin())->ColumnNames(), headless.ColumnNames());
  EXPECT_EQ(Part(bytes, kSheet1).find("autoFilter"), std::string::npos);
  EXPECT_EQ(report.CountOf(ffRewritten), 3u);
  EXPECT_EQ(report.CountOf(ffDropped), 1u);
  EXPECT_NE(SavedPart(book, "xl/tables/table2.xml", Fixed(true)).find("name=\"taken\""), std::string::npos);

  // Headers that changed without the table.
  First(book).SetValue({1, 1}, TCellValue::FromText(u"new"));
  First(book).SetValue({2, 1}, TCellValue::FromNumber(7));
  const std::string renamed = "<tableColumn id=\"1\" name=\"new\"/><tableColumn id=\"2\" name=\"7\"/>";
  EXPECT_NE(SavedPart(book, "xl/tables/table1.xml").find(renamed), std::string::npos);
  EXPECT_EQ(first.ColumnNames()[0], u"a");
  First(book).Tables().Add(u"q1", {9, 1, 9, 3});
  EXPECT_NE(SavedPart(book, "xl/tables/table3.xml").find("name=\"_q1\" displayName=\"_q1\""), std::string::npos);
}

TEST(XlsxWriting, ReportTellsWhatIsLost) {
  TWorkbook book;
  First(book).SetValue({1, 1}, TCellValue::FromError(ceNA));
  First(book).Comments().SetComment(1, 1, u"me", u"text");
  First(book).SetProtected(true);
  First(book).PageSetup().SetPaperSize(psCustom);
  TFileReport report;
  TXlsxWriteOptions options = Fixed();
  options.Report = &report;
  Saved(book, options);
  std::string lines;
  for (const TFileReportItem& item : report.Items()) lines += item.Where + ":" + item.Feature + " ";
  EXPECT_EQ(lines, "Sheet1:comment Sheet1:error value Sheet1:sheet protection Sheet1:custom paper size ");
}

}  // namespace
}  // namespace tessarine
