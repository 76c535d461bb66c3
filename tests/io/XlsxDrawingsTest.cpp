#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tessarine/core/format/Theme.h>
#include <tessarine/io/xlsx/detail/XlsxDrawingMl.h>
#include <tessarine/io/xlsx/detail/XlsxDrawingPresets.h>

#include "../support/Thrown.h"
#include "XlsxDrawingSupport.h"

namespace tessarine {
namespace {

using namespace test;

/// "kind name place" of each drawing, joined by " | ".
std::string Dump(const TWorkbook& ABook) {
  std::string text;
  for (int32_t i = 0; i < ABook.GetSheet(0)->Drawings().Count(); ++i) {
    const TSheetDrawing& drawing = DrawingAt(ABook, i);
    const TDrawingAnchor& at = drawing.Anchor;
    if (i > 0) text += " | ";
    text += std::string(1, "pcsu"[static_cast<int>(drawing.Kind)]) + (drawing.Hidden ? "h " : " ") +
            drawing.Name.ToUtf8() + " ";
    const auto add = [&text](auto... ANumbers) { ((text += std::to_string(ANumbers) + ","), ...); };
    if (at.Kind != dakAbsolute) add(at.FromCol, at.FromRow, at.FromColOffEmu, at.FromRowOffEmu);
    if (at.Kind == dakTwoCell) add(at.ToCol, at.ToRow, at.ToColOffEmu, at.ToRowOffEmu);
    if (at.Kind == dakAbsolute) add(at.PosXEmu, at.PosYEmu);
    if (at.Kind != dakTwoCell) add(at.ExtCxEmu, at.ExtCyEmu);
  }
  return text;
}

std::string Shape(std::string_view AName, std::string_view AProperties = {}) {
  std::string text = "<xdr:sp><xdr:nvSpPr><xdr:cNvPr id='2' name='" + std::string(AName) + "'/></xdr:nvSpPr><xdr:spPr>";
  return (text += AProperties) += "</xdr:spPr></xdr:sp>";
}

std::string Pic(std::string_view AId, std::string_view ANames = "name='P'") {
  std::string text = "<xdr:pic><xdr:nvPicPr><xdr:cNvPr " + std::string(ANames) + "/></xdr:nvPicPr><xdr:blipFill>";
  ((text += "<a:blip r:embed='") += AId) += "'/></xdr:blipFill></xdr:pic>";
  return text;
}

// ---- colours

struct TColorCase {
  const char* Xml;
  int64_t Bgr;  // -1: none
};

TEST(DrawingColors, FollowTheirTransforms) {
  TTessarineTheme theme;
  theme.ClearColors();
  for (const uint32_t color : {0xFF102030u, 0xFFFAFAFAu, 0xFF44546Au}) theme.AddColor(color);
  const TColorCase cases[] = {
      {"<srgbClr val='FF8000'/>", 0x0080FF},
      {"<srgbClr val='FF80'/><g><a:srgbClr val='0000ff'/></g>", 0xFF0000},
      {"<schemeClr val='lt1'/><x><srgbClr val='010203'/></x>", 0x030201},
      {"<schemeClr val=' DK1 '/>", 0x302010},
      {"<schemeClr val='bg2'/>", 0},
      {"<schemeClr val='phClr'/>", 0},
      {"<schemeClr val='tx2'><lumMod val='50000'/></schemeClr>", 0x352A22},
      {"<srgbClr val='804020'><shade val='50%'/></srgbClr>", 0x102040},
      {"<srgbClr val='804020'><tint val='50000'/></srgbClr>", 0x90A0C0},
      {"<srgbClr val='804020'><lumMod val='50000'/><lumOff val='50000'/><alpha val='1'/></srgbClr>", 0x90A0C0},
      {"<srgbClr val='804020'><lumMod val='1e999%'/></srgbClr>", 0},
      {"<srgbClr val='804020'><lumMod val='1e300%'/><lumMod val='1e300%'/><tint val='2000000000'/></srgbClr>",
       0xFFFFFF},
      {"<sysClr lastClr='FFFFFF'/>", -1},
      {"", -1},
  };
  for (const TColorCase& row : cases) {
    const TXmlTree tree("<x>" + std::string(row.Xml) + "</x>", "colour");
    const auto color = detail::XlsxParseDrawingMlColorEx(tree.Root(), &theme);
    EXPECT_EQ(color ? static_cast<int64_t>(*color) : -1, row.Bgr) << row.Xml;
  }
  const TXmlTree white("<x><schemeClr val='bg1'/><schemeClr val='tx1'/></x>", "colour");
  EXPECT_EQ(detail::XlsxParseDrawingMlColorEx(white.Root(), nullptr), 0xFFFFFFu);
  const TXmlTree system("<x><sysClr lastClr='FF0000'/></x>", "colour");
  EXPECT_EQ(detail::XlsxDrawingColor(system.Root(), nullptr, 7), 0x0000FFu);
}

// ---- reading

TEST(DrawingPart, PlacesDrawingsByTheirAnchors) {
  const std::string extent = "<a:xfrm><a:ext cx='100' cy='200'/></a:xfrm>";
  const std::string cases[][2] = {
      {Anchored(Shape("A")), "s A 2,3,10,20,4,6,30,40,"},
      {Anchored(Shape("B", extent), "editAs='oneCell'"), "s B 2,3,10,20,100,200,"},
      {Anchored(Shape("C"), "editAs='oneCell'"), "s C 2,3,10,20,4,6,30,40,"},
      {Anchored(Shape("D", extent), "editAs='absolute'"), "s D 2,3,10,20,4,6,30,40,"},
      {"<oneCellAnchor><from><row>4</row></from><ext cx='7' cy='8'/>" + Shape("E") + "</oneCellAnchor>",
       "s E 1,5,0,0,7,8,"},
      {"<ABSOLUTEANCHOR><pos x='-5' y='6'/><ext cx='7' cy='8'/>" + Shape("F") + "</ABSOLUTEANCHOR>", "s F -5,6,7,8,"},
      {"<oneCellAnchor><from><col>99999999</col><row>-3</row><colOff>1e300</colOff><rowOff>x</rowOff></from>"
       "<ext cx='-1e300' cy='1'/>" +
           Shape("G") + "</oneCellAnchor>",
       "s G 16384,1,27273042316900,0,-27273042316900,1,"},
      {"<twoCellAnchor>" + Shape("H") + "</twoCellAnchor>", "s H 1,1,0,0,2,2,0,0,"},
      {"<relSizeAnchor>" + Shape("I") + "</relSizeAnchor><twoCellAnchor/>", ""},
  };
  for (const auto& row : cases) EXPECT_EQ(Dump(*LoadDrawings(DrawingOf(row[0]))), row[1]) << row[0];
}

TEST(DrawingPart, TakesTheFirstKnownObject) {
  const std::string group =
      "<xdr:grpSp><xdr:nvGrpSpPr><xdr:cNvPr name='G'/></xdr:nvGrpSpPr>" + Shape("in") + "</xdr:grpSp>";
  const auto alternatives = [](const std::string& AChoice, const std::string& AFallback) {
    return "<mc:AlternateContent><mc:Choice>" + AChoice + "</mc:Choice><mc:Fallback>" + AFallback +
           "</mc:Fallback></mc:AlternateContent>";
  };
  const std::string ink = "<xdr:contentPart r:id='i'/>";
  const std::string cases[][2] = {
      {Anchored("<x/>" + Shape("A") + Pic("p")), "s A "},
      {Anchored(Pic("p", "name='B' hidden='1'")), "ph B "},
      {Anchored(group), "u G "},
      {Anchored(alternatives(Shape("C"), Pic("p"))), "s C "},
      {Anchored(alternatives("<other/>", Shape("D"))), "s D "},
      {Anchored(alternatives(ink, Pic("p", "name='E'"))), "p E "},
      {Anchored("<xdr:graphicFrame><xdr:nvGraphicFramePr><xdr:cNvPr "
                "name='F'/></xdr:nvGraphicFramePr><sle:slicer/></xdr:graphicFrame>"),
       "u F "},
      {Anchored("<xdr:graphicFrame><c:chart r:id='none'/></xdr:graphicFrame>"), "c  "},
      {"<mc:AlternateContent><mc:Choice>" + Anchored(Shape("G")) + "</mc:Choice></mc:AlternateContent>", ""},
  };
  for (const auto& row : cases) {
    const std::string want = row[1].empty() ? "" : row[1] + "2,3,10,20,4,6,30,40,";
    EXPECT_EQ(Dump(*LoadDrawings(DrawingOf(row[0]))), want) << row[0];
  }
}

TEST(DrawingPart, KeepsPartsAndRelationships) {
  TParts parts = DrawingOf(
      Anchored(Pic("a")) + Anchored(Pic("a")) + Anchored(Pic("b")) + Anchored(Pic("c")),
      Relation("a", "../media/one.JPG") + Relation("b", "/xl/media/two.emf") + Relation("c", "../../../../three.png"));
  parts["xl/media/one.JPG"] = "1";
  parts["xl/media/two.emf"] = "22";
  const auto book = LoadDrawings(parts);
  const TSheetDrawingBag& bag = book->GetSheet(0)->Drawings().Bag();
  EXPECT_EQ(bag.SheetRelId(), u"rId7");
  TParts want = parts;
  want.erase(kSheetRels);
  EXPECT_EQ(PartsOf(bag), want);
  std::string images;
  for (int32_t i = 0; i < 4; ++i)
    images += TextOf(DrawingAt(*book, i).ImageBytes) + " " + DrawingAt(*book, i).ContentType.ToUtf8() + ";";
  EXPECT_EQ(images, "1 image/jpeg;1 image/jpeg;22 image/x-emf; ;");
}

TEST(DrawingPart, FindsTheRelationshipOfTheSheet) {
  const auto load = [](const std::string& ARelations, TFileReport* AReport = nullptr) {
    TParts parts = DrawingOf(Anchored(Shape("A")));
    parts[kSheetRels] = Relations(ARelations);
    return LoadDrawings(parts, AReport)->GetSheet(0)->Drawings().Count();
  };
  TFileReport report;
  EXPECT_EQ(load(Relation("v", "../drawings/drawing1.xml", "http://x/vmlDrawing"), &report), 0);
  ASSERT_EQ(report.Items().size(), 1u);
  EXPECT_EQ(report.Items()[0].Feature, "VML drawing");
  EXPECT_EQ(load(Relation("a", "../drawings/none.xml", "http://x/drawing")), 0);
  EXPECT_EQ(load(Relation("a", "../drawings/none.xml", "http://x/drawing") +
                 Relation("b", "../drawings/drawing1.xml", "http://x/drawing")),
            0);
  EXPECT_EQ(load(Relation("t", "x.xml", "http://x/table") + Relation("b", "..\\drawings\\drawing1.xml", "x/DRAWING")),
            1);
}

TEST(DrawingPart, ReadsShapesWithStyleAndText) {
  const auto book = LoadDrawings(DrawingOf(
      Anchored("<xdr:sp><xdr:nvSpPr><xdr:cNvPr name='T'/><xdr:cNvSpPr txBox='1'/></xdr:nvSpPr>"
               "<xdr:spPr><a:xfrm rot='5400000' flipH='1' flipV='true'/><a:prstGeom prst='roundRect'><a:avLst>"
               "<a:gd name='hf' fmla='val 1'/><a:gd name='adj' fmla='val 16667'/></a:avLst></a:prstGeom>"
               "<a:solidFill><a:srgbClr val='112233'/></a:solidFill><a:ln w='25400'><a:noFill/></a:ln></xdr:spPr>"
               "<xdr:style><a:lnRef idx='2'><a:srgbClr val='FF0000'/></a:lnRef><a:fillRef idx='0'/>"
               "<a:fontRef><a:srgbClr val='00FF00'/></a:fontRef></xdr:style>"
               "<xdr:txBody><a:bodyPr anchor='b' wrap='none' lIns='1' bIns='2'/><a:p><a:pPr algn='ctr'/><a:r>"
               "<a:rPr b='1' sz='1450'/><a:t>one</a:t></a:r><a:br/><a:r><a:rPr b='0' sz='900'/><a:t> &amp; "
               "two</a:t></a:r></a:p>"
               "<a:p/><a:p><a:fld><a:t>three</a:t></a:fld></a:p></xdr:txBody></xdr:sp>") +
      Anchored("<xdr:cxnSp><xdr:spPr><a:prstGeom prst='line'/></xdr:spPr><xdr:style><a:lnRef "
               "idx='0'/></xdr:style></xdr:cxnSp>")));
  const TSheetDrawing& box = DrawingAt(*book, 0);
  TSheetDrawing want;
  want.Anchor = box.Anchor;
  want.Kind = sdkShape;
  want.Name = u"T";
  want.IsTextBox = want.FlipH = want.FlipV = want.TextBold = true;
  want.Rotation = 5400000;
  want.PresetGeom = u"roundRect";
  want.GeomAdj1 = 16667;
  want.FillColor = 0x332211;
  want.HasLine = want.TextWrap = false;
  want.LineColor = 0;
  want.LineWidthEmu = 25400;
  want.TextColor = 0x00FF00;
  want.TextVAlign = 2;
  want.TextHAlign = 2;
  want.TextInsetLeftEmu = 1;
  want.TextInsetBottomEmu = 2;
  want.TextSize = 14.5F;
  want.Text = u"one\r\n & two\r\n\r\nthree";
  EXPECT_TRUE(box == want);
  EXPECT_EQ(DrawingAt(*book, 1).PresetGeom, u"line");
  EXPECT_FALSE(DrawingAt(*book, 1).HasLine);
}

TEST(DrawingPart, ReadsInkBesideItsPicture) {
  const std::string ink =
      "<inkml:ink><inkml:definitions><inkml:brush><inkml:brushProperty name='width' value='0.5' units='cm'/>"
      "<inkml:brushProperty name='height' value='4' units='mm'/><inkml:brushProperty name='rasterOp' value='maskPen'/>"
      "</inkml:brush></inkml:definitions></inkml:ink>";
  TParts parts = DrawingOf(Anchored("<AlternateContent><Choice><contentPart r:id='i'/></Choice><Fallback>" + Pic("p") +
                                    "</Fallback></AlternateContent>"),
                           Relation("i", "../ink/ink1.xml") + Relation("p", "../media/image1.png"));
  parts["xl/ink/ink1.xml"] = ink;
  parts["xl/media/image1.png"] = "png";
  const auto book = LoadDrawings(parts);
  const TSheetDrawing& drawing = DrawingAt(*book, 0);
  EXPECT_EQ(TextOf(drawing.InkMlBytes), ink);
  EXPECT_EQ(TextOf(drawing.ImageBytes), "png");
  EXPECT_EQ(drawing.InkTipWidthCm, 0.5);
  EXPECT_EQ(drawing.InkTipHeightCm, 0.4);
  EXPECT_LT(drawing.ImageOpacity, 255);
}

TEST(DrawingPart, FailsOnDamagedPartsWithTheirNames) {
  const auto finding = [](TParts AParts) { return Thrown([&] { LoadDrawings(AParts); }).substr(0, 33); };
  TParts parts =
      DrawingOf(Anchored("<graphicFrame><chart r:id='c'/></graphicFrame>"), Relation("c", "../charts/c.xml"));
  EXPECT_EQ(finding(parts), "nothing");
  parts["xl/charts/c.xml"] = "<chartSpace><chart>";
  EXPECT_EQ(finding(parts), "format: xl/charts/c.xml, line 1: ");
  parts[kDrawingPart] = "<wsDr>";
  EXPECT_EQ(finding(parts), "format: xl/drawings/drawing1.xml,");
}

TEST(DrawingPart, ReportsThePointsThatChartsLose) {
  TParts parts =
      DrawingOf(Anchored("<graphicFrame><chart r:id='c'/></graphicFrame>"), Relation("c", "../charts/c.xml"));
  std::string points;
  for (int i = 0; i < 40; ++i) points += "<pt idx='" + std::to_string(i) + "'><v>1</v></pt>";
  parts["xl/charts/c.xml"] = "<chartSpace><chart><plotArea><pieChart><ser><val><numLit>" + points +
                             "</numLit></val></ser></pieChart></plotArea></chart></chartSpace>";
  TFileReport report;
  const auto book = LoadDrawings(parts, &report, {.MaxXmlTreeNodes = 100});
  EXPECT_EQ(DrawingAt(*book, 0).ChartType, sctPie);
  EXPECT_EQ(TextOf(DrawingAt(*book, 0).ChartSpaceXml), parts["xl/charts/c.xml"]);
  ASSERT_EQ(report.Items().size(), 1u);
  EXPECT_EQ(report.Items()[0].Feature + " in " + report.Items()[0].Where,
            "chart point or series in xl/drawings/drawing1.xml");
  EXPECT_EQ(report.Items()[0].Count, 40u);
}

TEST(DrawingPart, NamesOfOneBigPartDoNotFillMemory) {
  std::string anchors;
  for (int i = 0; i < 100; ++i) anchors += Anchored(Pic("a"));
  TParts parts = DrawingOf(anchors, Relation("a", "../media/a.png"));
  parts["xl/media/a.png"] = std::string(1 << 20, '\0');
  TFileReport report;
  const auto book = LoadDrawings(parts, &report, {.MaxTotalBytes = uint64_t{64} << 20});
  size_t bytes = 0;
  for (int32_t i = 0; i < book->GetSheet(0)->Drawings().Count(); ++i) bytes += DrawingAt(*book, i).ImageBytes.size();
  EXPECT_EQ(book->GetSheet(0)->Drawings().Count(), 100);
  EXPECT_GT(bytes, size_t{25} << 20);
  EXPECT_LE(bytes, size_t{33} << 20);
  EXPECT_GT(report.CountOf(ffDropped), 60u);
}

// ---- writing

std::unique_ptr<TSheetDrawing> NewDrawing(TSheetDrawingKind AKind, const char16_t* AName) {
  auto drawing = std::make_unique<TSheetDrawing>();
  drawing->Kind = AKind;
  drawing->Name = AName;
  return drawing;
}

TEST(DrawingBags, HoldAllThatIsWritten) {
  TWorkbook book;
  TSheetDrawingList& list = book.GetSheet(0)->Drawings();
  auto picture = NewDrawing(sdkPicture, u"<a> & \"b\"");
  picture->SetImage(BytesOf("gif"), u"image/gif");
  picture->ImageOpacity = 128;
  picture->Rotation = 60000;
  picture->Anchor = {.Kind = dakOneCell, .FromCol = 3, .FromRow = 4, .FromColOffEmu = -5, .ExtCxEmu = 6, .ExtCyEmu = 7};
  list.Add(std::move(picture));
  auto text = NewDrawing(sdkShape, u"Box");
  text->IsTextBox = true;
  text->Text = u"a_x0041_\r\n\r\n<b>";
  text->TextHAlign = 1;
  text->TextVAlign = 1;
  text->TextSize = 8.5F;
  text->TextColor = 0x123456;
  text->TextInsetTopEmu = 0;
  text->GeomAdj1 = -4;
  text->PresetGeom = u"roundRect";
  text->Anchor = {.Kind = dakAbsolute, .ExtCxEmu = 1, .ExtCyEmu = 2, .PosXEmu = 3, .PosYEmu = -4};
  list.Add(std::move(text));
  auto line = NewDrawing(sdkShape, u"Line");
  line->PresetGeom = u"line";
  line->HasFill = line->HasLine = false;
  line->FlipV = true;
  line->Anchor = {.FromCol = 16384, .FromRow = 1048576, .ToCol = 16384, .ToRow = 1048576, .ToColOffEmu = 9};
  list.Add(std::move(line));
  const std::vector<TSheetDrawing> before = {*list.GetItem(0), *list.GetItem(1), *list.GetItem(2)};
  TFileReport report;
  const auto again = Rewritten(book, &report);
  EXPECT_TRUE(report.IsEmpty());
  const std::string part = TextOf(list.Bag().DrawingXml());
  EXPECT_NE(part.find("<xdr:cxnSp"), part.npos);
  EXPECT_NE(part.find("<xdr:cNvPr id=\"3\" name=\"Line\"/>"), part.npos);
  ASSERT_EQ(again->GetSheet(0)->Drawings().Count(), 3);
  for (int32_t i = 0; i < 3; ++i) EXPECT_TRUE(DrawingAt(*again, i) == before[static_cast<size_t>(i)]) << i << part;
}

TEST(DrawingBags, LeaveOutWhatFilesCannotHold) {
  TWorkbook book;
  TSheetDrawingList& list = book.GetSheet(0)->Drawings();
  list.Bag().SetDrawingPart(u"xl/drawings/old.xml", BytesOf("<old/>"));
  auto hidden = NewDrawing(sdkShape, u"hidden");
  hidden->Hidden = true;
  list.Add(std::move(hidden));
  list.Add(NewDrawing(sdkUnknown, u"group"));
  auto ink = NewDrawing(sdkPicture, u"ink");
  ink->SetInkMl(BytesOf("<ink/>"));
  list.Add(std::move(ink));
  list.Add(NewDrawing(sdkPicture, u"nothing"));
  TFileReport report;
  detail::EnsureWorkbookDrawingBagsFromOverlays(book, &report);
  EXPECT_EQ(report.CountOf(ffDropped), 4u);
  EXPECT_TRUE(PartsOf(list.Bag()).empty());
  EXPECT_TRUE(list.Bag().SheetRelId().IsEmpty());
}

TEST(DrawingBags, StayAsTheyAreForSheetsWithoutDrawings) {
  TWorkbook book;
  TSheetDrawingBag& kept = book.GetSheet(0)->Drawings().Bag();
  kept.SetDrawingPart(u"XL/drawings/Drawing2.xml", BytesOf("<kept/>"));
  for (const char16_t* path : {u"xl/media/image1.png", u"xl/media/IMAGE2.jpg", u"xl/charts/style1.xml"})
    kept.AddPart(path, BytesOf("x"));
  for (int sheet = 0; sheet < 2; ++sheet) {
    TSheetDrawingList& list = book.AddSheet(sheet == 0 ? "A" : "B").Drawings();
    for (const char16_t* type : {u"image/png", u"image/jpg", u"image/emf"}) {
      auto picture = NewDrawing(sdkPicture, u"p");
      picture->SetImage(BytesOf("x"), type);
      list.Add(std::move(picture));
    }
    list.Add(NewDrawing(sdkChart, u"c"));
  }
  const TParts before = PartsOf(kept);
  detail::EnsureWorkbookDrawingBagsFromOverlays(book, nullptr);
  EXPECT_EQ(PartsOf(kept), before);
  const auto names = [&book](int32_t ASheet) {
    std::string text;
    for (const auto& [name, content] : PartsOf(book.GetSheet(ASheet)->Drawings().Bag())) text += name.substr(3) + " ";
    return text;
  };
  EXPECT_EQ(names(1),
            "charts/chart2.xml drawings/_rels/drawing4.xml.rels drawings/drawing4.xml media/image2.png "
            "media/image3.jpg media/image4.emf ");
  EXPECT_EQ(names(2),
            "charts/chart3.xml drawings/_rels/drawing3.xml.rels drawings/drawing3.xml media/image5.png "
            "media/image6.jpg media/image7.emf ");
}

TEST(DrawingBags, KnowTheShapesOfTheFormat) {
  const struct {
    const char16_t* Name;
    const char* Want;
  } cases[] = {{u"", "rect adj1"},
               {u"ROUNDRECT", "roundRect adj"},
               {u"Connector", "straightConnector1 adj1 c"},
               {u"LINE", "line adj1 c"},
               {u"straightconnector1", "straightConnector1 adj1 c"},
               {u"rightArrow", "rightArrow adj1"},
               {u"rect\"/>", "rect adj1"},
               {u"bentConnector3", "bentConnector3 adj1"}};
  for (const auto& row : cases) {
    const detail::TXlsxPreset preset = detail::XlsxPresetOf(row.Name);
    EXPECT_EQ(std::string(preset.Name) + " " + std::string(preset.Adjustment) + (preset.IsConnector ? " c" : ""),
              row.Want);
  }
}

}  // namespace
}  // namespace tessarine
