#include <bit>
#include <cmath>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/format/Theme.h>
#include <tessarine/core/lists/CellComments.h>
#include <tessarine/core/lists/Hyperlinks.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/OlapConnections.h>
#include <tessarine/core/lists/PivotCache.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SavedView.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/FileReport.h>
#include <tessarine/io/native/detail/NativeCellReader.h>
#include <tessarine/io/native/detail/NativeCellWriter.h>

#include "../support/XlsxBuilder.h"
#include "NativeSupport.h"

namespace tessarine {
namespace {

using test::LoadNative;
using test::SavedNative;
using test::TNativeRandom;

TCellValue RandomConstant(TNativeRandom& ARandom) {
  switch (ARandom.Below(5)) {
    case 0: return TCellValue::FromText(ARandom.Text());
    case 1: return TCellValue::FromNumber(ARandom.Number());
    case 2: return TCellValue::FromBoolean(ARandom.Flip());
    case 3: return TCellValue::FromError(static_cast<TCellErrorCode>(ARandom.Below(10)));
    default: return {};
  }
}

TCell RandomCell(TNativeRandom& ARandom) {
  TCell cell;
  cell.Value = RandomConstant(ARandom);
  if (ARandom.Below(3) == 0) cell.Value = TCellValue::FromFormula(ARandom.Flip() ? u"SUM(A1:B2)" : u"\"x\"&$A$1");
  cell.StyleIndex = static_cast<int32_t>(ARandom.Below(4)) - 1;
  if (ARandom.Below(4) == 0) cell.SetCachedResult(RandomConstant(ARandom));
  if (ARandom.Below(6) == 0) {
    cell.HasFormatOverride = true;
    cell.FormatOverride = ARandom.Record<TCellFormat>();
  }
  if (ARandom.Below(6) == 0 && !cell.IsEmpty()) ARandom.Fill(cell.RichText);
  return cell;
}

void FillCells(TNativeRandom& ARandom, TWorksheet& ASheet, int ACount) {
  for (int i = 0; i < ACount; ++i) {
    const TCellAddress place{static_cast<int32_t>(1 + ARandom.Below(40)), static_cast<int32_t>(1 + ARandom.Below(600))};
    ASheet.SetCell(place, RandomCell(ARandom));
  }
}

/// Texts of all short lengths with one unit somewhere that may need an escape, far out in the sheet.
void FillOddTexts(TNativeRandom& ARandom, TWorksheet& ASheet) {
  constexpr char16_t kUnits[] = {u'"', u'\\', 0x1F, u' ', u'~', 0x7F, 0x80, 0xFF, 0x122, 0x8061, 0xD83D, 0xFFFF};
  for (int32_t length = 0; length < 40; ++length) {
    std::u16string text(static_cast<size_t>(length), u'a');
    if (length > 0) text[ARandom.Below(text.size())] = kUnits[ARandom.Below(std::size(kUnits))];
    TCell cell;
    cell.Value = TCellValue::FromText(TText(text));
    ASheet.SetCell({kMaxCol - length * 400, kMaxRow - length}, cell);
  }
}

void FillSizing(TNativeRandom& ARandom, TRowColSizing& ASizing) {
  for (int32_t line = 1; line < 40; line += 1 + static_cast<int32_t>(ARandom.Below(6))) {
    ASizing.SetColWidthChars(line, 8 + ARandom.Below(9) / 7.0);
    ASizing.SetRowHeightPt(line * 7, 12 + ARandom.Below(9) / 3.0);
    ASizing.SetColHidden(line + 1, true);
    ASizing.SetRowHidden(line * 3, ARandom.Flip());
    ASizing.SetRowOutlineLevel(line, static_cast<int32_t>(ARandom.Below(8)));
    ASizing.SetColOutlineLevel(line, static_cast<int32_t>(ARandom.Below(8)));
    ASizing.SetRowCollapsed(line, ARandom.Flip());
    ASizing.SetColCollapsed(line + 2, ARandom.Flip());
  }
  ASizing.SetRowHidden(kMaxRow + 3, true);  // pushed off the sheet
  ASizing.SetColWidthChars(0, 3);
  ASizing.SetDefaultColWidth(9.5);
  ASizing.SetDefaultRowHeight(16.25);
  ASizing.SetOutlineSummaryBelow(ARandom.Flip());
  ASizing.SetOutlineSummaryRight(ARandom.Flip());
}

void FillLists(TNativeRandom& ARandom, TWorksheet& ASheet) {
  for (int i = 0; i < 2; ++i) {
    auto drawing = std::make_unique<TSheetDrawing>(ARandom.Record<TSheetDrawing>());
    if (i == 0) drawing->ImageBytes.clear();
    if (i == 0) drawing->ContentType = {};
    ASheet.Drawings().Add(std::move(drawing));
    ASheet.Validations().AddRule(ARandom.Record<TDataValidationRule>());
    auto rule = ARandom.Record<TConditionalFormatRule>();
    if (!rule.HasFill) rule.Fill = {};
    if (!rule.HasFontColor) rule.FontColor = {};
    ASheet.ConditionalFormats().AddRule(rule);
    ASheet.MergeRange(ARandom.Record<TCellRange>());
    ASheet.Comments().SetComment(2 + i, 3, ARandom.Text(), u"note \"1\"");
    ASheet.SetHyperlink(1 + i, 5, u"https://example.com/?a=1&b=2");
    TPivotTable& pivot = ASheet.Pivots().Add(u"P", 3, {2, 9});
    ARandom.Fill(pivot.Fields);
    pivot.LayoutForm = plfTabular;
    pivot.RowGrandTotals = ARandom.Flip();
    auto slicer = std::make_unique<TSheetSlicer>(u"S", skTimeline, 2, i, TCellAddress{4, 7});
    slicer->SetSelected({u"one", ARandom.Text()});
    slicer->PivotNames = {u"P"};
    slicer->TimelineLevel = stlYears;
    ASheet.Slicers().Add(std::move(slicer));
    TSheetTable& table = ASheet.Tables().Add(i == 0 ? u"T0" : u"T1", {1, 1 + i * 20, 3, 9 + i * 20});
    table.SetDisplayName(u"Shown");
    table.SetHasTotalsRow(ARandom.Flip());
    table.SetHasHeaderRow(ARandom.Flip());
    table.SetShowAutoFilter(ARandom.Flip());
    table.SetShowRowStripes(ARandom.Flip());
    table.SetShowColumnStripes(ARandom.Flip());
    table.SetStyleName(ARandom.Text());
    table.SetColumnNames({u"a", ARandom.Text()});
  }
  ASheet.Hyperlinks().SetHyperlinkRange({1, 10, 3, 12}, u"#A1");
  ASheet.Hyperlinks().SetHyperlinkRange({1, 100, kMaxCol, kMaxRow}, u"#far");
  ASheet.Drawings().Bag().SetSheetRelId(u"rId7");
  ASheet.Drawings().Bag().SetDrawingPart(u"xl/drawings/drawing1.xml", std::vector<std::byte>(3, std::byte{65}));
  ASheet.Drawings().Bag().AddPart(u"xl/media/\u00e9.png", std::vector<std::byte>(5, std::byte{200}));
  TAutoFilterState filter{true, {1, 1, 4, 50}, {}};
  for (int32_t col = 1; col < 3; ++col) {
    filter.Columns[col] = ARandom.Record<TAutoFilterColumn>();
    filter.Columns[col].Col = col;
  }
  ASheet.AutoFilter().RestoreState(filter);
}

void FillSettings(TNativeRandom& ARandom, TWorksheet& ASheet) {
  ASheet.SetView({false, ARandom.Flip(), true, false, ARandom.Flip(), 85, ARandom.Flip()});
  ASheet.SetProtected(true);
  ASheet.SetFrozenRows(3);
  ASheet.SetFrozenCols(static_cast<int32_t>(ARandom.Below(3)));
  ASheet.SavedView().AssignFrom({{2, 2, 5, 9}, {7, 7, 7, 7}}, 2, 3, static_cast<int32_t>(ARandom.Below(3)), 4,
                                ARandom.Flip());
  TPageSetup& setup = ASheet.PageSetup();
  detail::VisitPageScaleFields(ARandom, setup);
  detail::VisitPagePrintFields(ARandom, setup);
  ARandom.Fill(setup.Orientation);
  setup.SetPaperSize(ARandom.Flip() ? psCustom : psA4);
  if (setup.PaperSize() == psCustom) setup.SetCustomPaperInches(5.5, 7.25);
  if (ARandom.Flip()) setup.SetPrintArea({1, 1, 5, 20});
  if (ARandom.Flip()) setup.SetTitleRows(1, 2);
  if (ARandom.Flip()) setup.SetTitleCols(2, 3);
  setup.AddRowBreak(20);
  setup.AddColBreak(9);
}

void FillBook(TNativeRandom& ARandom, TWorkbook& ABook) {
  for (int i = 0; i < 4; ++i) ABook.StyleSheet().AddCellXf(ARandom.Record<TCellFormat>());
  ABook.Theme().SetMajorFont(ARandom.Text());
  ABook.Theme().AddColor(0xFF102030u);
  ABook.SetNamedFormula(u"rate", u"=Sheet1!$A$1*0.5");
  ABook.SetNamedFormula(u"text", u"\"a\"\"b\"");
  TPivotCache& cache = ABook.PivotCaches().AddNew();
  cache.SourceKind = pcsMultiConsolidation;
  cache.SourceRange = {2, 3, 4, 5};
  cache.SetFieldNames({u"f1", ARandom.Text()});
  cache.MultiRanges = {u"Sheet1!A1:B2"};
  auto connection = std::make_unique<TOlapConnection>(u"C1");
  connection->Provider = u"p";
  connection->Cube = ARandom.Text();
  ABook.OlapConnections().Add(std::move(connection));
  ABook.AddSheet(u"Two \"2\"");
  ABook.AddSheet(u"Empty").SetVisibility(svVeryHidden);
  for (int32_t index = 0; index < 2; ++index) {
    TWorksheet& sheet = *ABook.GetSheet(index);
    FillCells(ARandom, sheet, 300);
    FillSizing(ARandom, sheet.Sizing());
    FillSettings(ARandom, sheet);
    FillLists(ARandom, sheet);
  }
  ABook.SetActiveSheetIndex(1);
  ABook.SetStructureProtected(true);
}

template <class TList>
std::vector<typename std::decay_t<decltype(*std::declval<const TList&>().begin())>> ItemsOf(const TList& AList) {
  return {AList.begin(), AList.end()};
}

void ExpectSameSheet(const TWorksheet& ALeft, const TWorksheet& ARight) {
  EXPECT_EQ(test::DumpCells(ALeft), test::DumpCells(ARight));
  ALeft.Store().ForEachByColumn([&](int32_t ACol, int32_t ARow, const detail::TCellSlot&) {
    ASSERT_EQ(ALeft.GetCellAt(ACol, ARow), ARight.GetCellAt(ACol, ARow)) << ACol << " " << ARow;
  });
  EXPECT_EQ(ALeft.UsedMaxRow(), ARight.UsedMaxRow());
  EXPECT_EQ(ALeft.View(), ARight.View());
  EXPECT_EQ(ALeft.SavedView(), ARight.SavedView());
  EXPECT_EQ(ALeft.PageSetup(), ARight.PageSetup());
  EXPECT_EQ(ALeft.AutoFilter().CopyState(), ARight.AutoFilter().CopyState());
  EXPECT_EQ(ItemsOf(ALeft.Validations()), ItemsOf(ARight.Validations()));
  EXPECT_EQ(ItemsOf(ALeft.ConditionalFormats()), ItemsOf(ARight.ConditionalFormats()));
  EXPECT_EQ(ItemsOf(ALeft.Merges()), ItemsOf(ARight.Merges()));
  ASSERT_EQ(ALeft.Drawings().Count(), ARight.Drawings().Count());
  for (int32_t index = 0; index < ALeft.Drawings().Count(); ++index)
    EXPECT_TRUE(*ALeft.Drawings().GetItem(index) == *ARight.Drawings().GetItem(index)) << index;
  EXPECT_EQ(ALeft.Drawings().Bag().Parts(), ARight.Drawings().Bag().Parts());
  EXPECT_EQ(ALeft.Hyperlinks().Count(), ARight.Hyperlinks().Count());
  EXPECT_EQ(ALeft.FindHyperlink(9, 5000), ARight.FindHyperlink(9, 5000));
  EXPECT_EQ(ALeft.Sizing().MarkedRows(true), ARight.Sizing().MarkedRows(true));
  EXPECT_EQ(ALeft.Visibility(), ARight.Visibility());
}

TEST(NativeRoundTrip, RandomWorkbooksComeBackToTheByte) {
  for (uint32_t seed = 1; seed <= 6; ++seed) {
    SCOPED_TRACE(seed);
    TNativeRandom random(seed);
    TWorkbook book;
    FillBook(random, book);
    const std::string first = SavedNative(book);
    ASSERT_TRUE(nlohmann::json::accept(first));
    TWorkbook again;
    LoadNative(again, first);
    EXPECT_EQ(SavedNative(again), first);
    EXPECT_FALSE(again.IsModified());
    EXPECT_EQ(again.CopyNamedFormulas(), book.CopyNamedFormulas());
    EXPECT_TRUE(again.StyleSheet().CellXfs() == book.StyleSheet().CellXfs());
    EXPECT_EQ(again.Theme(), book.Theme());
    EXPECT_EQ(again.ActiveSheetIndex(), 1);
    ASSERT_EQ(again.SheetCount(), 3);
    for (int32_t index = 0; index < 3; ++index) ExpectSameSheet(*book.GetSheet(index), *again.GetSheet(index));
    // A document whose members stand in another order means the same: sorted by name, with blanks between.
    TWorkbook sorted;
    LoadNative(sorted, nlohmann::json::parse(first).dump(2));
    EXPECT_EQ(SavedNative(sorted), first);
  }
}

TEST(NativeRoundTrip, FastPathsDoWhatThePlainOnesDo) {
  for (uint32_t seed = 1; seed <= 20; ++seed) {
    SCOPED_TRACE(seed);
    TNativeRandom random(seed);
    TWorkbook book;
    TWorksheet& sheet = *book.GetSheet(0);
    FillCells(random, sheet, 400);
    FillOddTexts(random, sheet);
    const TTsrWriteOptions options;
    TMemoryWriteStream sinks[2];
    std::string texts[2];
    for (const bool isPlain : {false, true}) {
      detail::TNativeOutput output(sinks[isPlain]);
      output.Json().BeginObject();
      detail::TNativeCellWriter writer(output, sheet, options);
      isPlain ? writer.WritePlain() : writer.Write(0, 1);
      output.Json().EndObject();
      output.Flush();
      const auto bytes = sinks[isPlain].ToVector();
      texts[isPlain].assign(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }
    ASSERT_EQ(texts[0], texts[1]);
    // Spellings that the fast reader has to leave to the plain one, and values that are out of their kind.
    std::string text = texts[0];
    for (const auto& [from, to] : {std::pair("{\"kind\":2,", "{ \"kind\":2,"),
                                   {",\"error\":0", ",\"error\": 0"},
                                   {"\"kind\":3", "\"kind\":9"},
                                   {"\"text\":\"x\"", "\"text\":\"\\u0078\""}}) {
      const size_t at = text.find(from, random.Below(text.size()));
      if (at != text.npos) text.replace(at, std::string_view(from).size(), to);
    }
    detail::TJsonText json = detail::TJsonText::FromBytes(text);
    ASSERT_TRUE(json.IsSound(detail::SkipWrittenValue));
    detail::TNativeDocument document(json);
    TWorkbook books[2];
    for (const bool isPlain : {false, true}) {
      detail::TNativeCellReader reader(document, *books[isPlain].GetSheet(0), {});
      isPlain ? reader.ReadPlain(json.Root()) : reader.Read(json.Root());
    }
    ExpectSameSheet(*books[0].GetSheet(0), *books[1].GetSheet(0));
    EXPECT_TRUE(books[0].IsModified() && books[1].IsModified());
  }
}

TEST(NativeRoundTrip, SinglePrecisionNumbersAreShort) {
  std::mt19937 random(5);
  for (int i = 0; i < 100'000; ++i) {
    const auto number = std::bit_cast<float>(static_cast<uint32_t>(random()));
    if (!std::isfinite(number)) continue;
    ASSERT_EQ(static_cast<float>(detail::ShortestNative(number)), number);
  }
  EXPECT_EQ(detail::ShortestNative(10.1f), 10.1);
}

/// The names of every object below a value as "path: a,b,c"; the members of maps are "*".
void CollectNames(const nlohmann::ordered_json& AValue, const std::string& APath,
                  std::map<std::string, std::string>& ANames) {
  static const std::set<std::string> kMaps = {"cells",       "namedFormulas",    "hyperlinks",   "comments",
                                              "parts",       "colWidths",        "rowHeights",   "hiddenCols",
                                              "hiddenRows",  "rowOutlineLevels", "rowCollapsed", "colOutlineLevels",
                                              "colCollapsed"};
  if (!AValue.is_structured()) return;
  for (const auto& item : AValue.items()) {
    if (!AValue.is_object()) {
      CollectNames(item.value(), APath, ANames);
      continue;
    }
    const bool isMap = kMaps.contains(APath);
    if (!isMap) {
      std::string& names = ANames[APath];
      if ((" " + names + " ").find(" " + item.key() + " ") == std::string::npos) names += " " + item.key();
    }
    CollectNames(item.value(), isMap ? APath + "*" : item.key(), ANames);
  }
}

TEST(NativeRoundTrip, NamesStandInTheirOrder) {
  TNativeRandom random(3);
  TWorkbook book;
  FillBook(random, book);
  TWorksheet& sheet = *book.GetSheet(0);
  TSheetDrawing drawing = random.Record<TSheetDrawing>();
  drawing.Series = {random.Record<TSheetChartSeries>()};
  drawing.Subplots = {random.Record<TSheetChartSubplot>()};
  drawing.ChartTitleRuns = {random.Record<TSheetChartTextRun>()};
  while (sheet.Drawings().Count() > 0) static_cast<void>(sheet.Drawings().Extract(0));
  sheet.Drawings().Add(drawing.Clone());
  sheet.SavedView().AssignFrom({{1, 1, 2, 2}}, 1, 1, 1, 1, true);
  std::map<std::string, std::string> names;
  CollectNames(nlohmann::ordered_json::parse(SavedNative(book)), "root", names);
  const std::pair<const char*, const char*> expected[] = {
      {"root", " version theme styles namedFormulas pivotCaches connections sheets activeSheet structureProtected"},
      {"theme", " majorFont minorFont colors"},
      {"sheets",
       " name showGridLines showHeaders showFormulas showZeros r1c1 protected frozenRows frozenCols zoom rightToLeft "
       "visibility sizing view cells merges drawings drawingBag hyperlinks comments autoFilter tables pivotTables "
       "slicers validations conditionalFormats pageSetup"},
      {"cells*", " value styleIndex cached format richText"},
      {"value", " kind text number bool error formula"},
      {"format", " numberFormat font fill border alignment locked hidden"},
      {"border", " left top right bottom diagonal diagonalUp diagonalDown"},
      {"alignment",
       " h v wrap shrink indent rotation readingOrder marginLeftCm marginRightCm paddingLeftCm paddingRightCm"},
      {"sizing",
       " defaultColWidth defaultRowHeight outlineSummaryBelow outlineSummaryRight colWidths rowHeights hiddenCols "
       "hiddenRows rowOutlineLevels rowCollapsed colOutlineLevels colCollapsed"},
      {"view", " activeCol activeRow topLeftCol topLeftRow tabSelected selection"},
      {"anchor",
       " kind fromCol fromRow fromColOffEmu fromRowOffEmu toCol toRow toColOffEmu toRowOffEmu extCxEmu extCyEmu "
       "posXEmu "
       "posYEmu"},
      {"drawings",
       " kind name hidden zOrder anchor imageBase64 contentType imageOpacity inkMlBase64 inkTipWidthCm inkTipHeightCm "
       "chartType stacked title showLegend legendPos gapWidth overlap chartIs3D viewRotX viewRotY viewPerspective "
       "viewRightAngleAxes series subplots roundedCorners chartStyleId doughnutHolePct firstSliceAng dispBlanksAs "
       "plotVisOnly plotVaryColors radarStyle scatterStyle percentStacked hasDropLines hasHiLowLines hasUpDownBars "
       "styleMarker styleMarkerSizePt hasSecondaryValueAxis chartPalette chartAreaFill chartAreaLine plotAreaFill "
       "plotAreaLine titleFont titleRuns legendFont valueAxis catAxis valueAxis2 titleLayout legendLayout plotLayout "
       "plotLabels chartSpaceXmlBase64 chartStyleXmlBase64 chartColorsXmlBase64 presetGeom fillColor hasFill lineColor "
       "hasLine lineWidthEmu rotation flipH flipV text textBold textSize textColor textHAlign textVAlign textWrap "
       "isTextBox textInsetLeftEmu textInsetRightEmu textInsetTopEmu textInsetBottomEmu geomAdj1"},
      {"valueAxis",
       " deleted line majorGridlines majorGridStroke minorGridlines minorGridStroke majorTickMark minorTickMark hasMin "
       "hasMax hasMajorUnit minVal maxVal majorUnitVal font numFmt hasCrossBetween crossBetweenMidCat title titleFont "
       "hasTitleRotation titleRotation hasTickLabelRotation tickLabelRotation tickLblPos axPos crosses hasMinorUnit "
       "minorUnitVal layout orientationMaxMin"},
      {"legendLayout", " overlay hasX hasY hasW hasH x y w h xMode yMode wMode hMode target"},
      {"legendFont",
       " assigned name sizePt color bold italic outline shadowColor shadowDistPt fillPattern fillBackColor"},
      {"plotLabels",
       " assigned showLegendKey showVal showCatName showSerName showPercent showBubbleSize showLeaderLines"},
      {"chartAreaFill", " mode color alpha pattern backColor"},
      {"outline", " mode color widthPt"},
      {"series",
       " title categories values xValues sizes pointColors showDataLabels labels plotKind valuesFormula "
       "categoriesFormula xValuesFormula sizesFormula style explosion invertIfNegative axisGroup idx order "
       "hasTrendline "
       "trendlineType hasErrorBars"},
      {"subplots",
       " chartType stacked percentStacked series gapWidth overlap varyColors radarStyle scatterStyle grouping "
       "hasDropLines hasHiLowLines hasUpDownBars"},
      {"drawingBag", " sheetRelId drawingPartPath drawingXmlBase64 drawingRelsPath drawingRelsXmlBase64 parts"},
      {"tables",
       " name displayName ref hasHeaderRow hasTotalsRow showAutoFilter showRowStripes showColumnStripes styleName "
       "columnNames"},
      {"pivotTables", " name cacheId dest rowGrandTotals colGrandTotals layoutForm styleName headerRowCount fields"},
      {"slicers", " name kind cacheId fieldIndex anchor widthCols heightRows timelineLevel selected pivotNames"},
      {"pivotCaches", " id sourceKind sourceSheet sourceRange connectionId fieldNames multiRanges"},
      {"connections", " id provider connectionString catalog cube"},
      {"autoFilter", " active range columns"},
      {"columns", " col active values contains matchCase excludeBlanks"},
      {"validations",
       " name ranges promptTitle prompt showInputMessage type operator formula1 formula2 allowBlank showErrorMessage "
       "errorTitle error errorStyle"},
      {"pageSetup",
       " orientation paperSize paperWidthInches paperHeightInches scalePercent fitToPage fitToWidth fitToHeight "
       "firstPageNumber blackAndWhite draftQuality marginLeft marginRight marginTop marginBottom marginHeader "
       "marginFooter centerHorizontally centerVertically header footer hasPrintArea printArea hasTitleRows titleRows "
       "hasTitleCols titleCols printGridlines printHeadings pageOrder commentsMode errorsMode rowBreaks colBreaks"},
  };
  for (const auto& [path, list] : expected) {
    std::string seen = names[path];
    if (std::string_view(path) == "pageSetup" ||
        std::string_view(path) == "cells*") {  // optional ones come when first met
      const auto wordsOf = [](const std::string& AText) {
        std::istringstream words(AText);
        return std::set<std::string>(std::istream_iterator<std::string>(words), {});
      };
      for (const std::string& word : wordsOf(seen)) EXPECT_TRUE(wordsOf(list).contains(word)) << word;
    } else {
      EXPECT_EQ(seen, list) << path;
    }
  }
}

}  // namespace
}  // namespace tessarine
