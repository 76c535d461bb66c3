#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <tessarine/core/lists/OlapConnections.h>
#include <tessarine/core/lists/Slicers.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/features/pivot/PivotCommands.h>
#include <tessarine/features/pivot/PivotEngine.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Unicode.h>

#include "PivotFixture.h"

namespace tessarine {
namespace {

using testing::TPivotFixture;

constexpr const char* kSales =
    "Region,Product,Year,Amount;"
    "North,Tea,2023,10;South,Tea,2023,20;North,Milk,2024,5;North,Tea,2024,1;South,Milk,2024,4;West,Tea,2023,8";

TEST(PivotLayout, FormsAndFields) {
  const struct {
    const char* Name;
    void (*Define)(TPivotFixture&);
    const char* Grid;
  } cases[] = {
      {"one value without fields", [](TPivotFixture& F) { F.Add(pfrValue, 3); },
       "Row Labels|Sum of Amount / |48 / Grand Total|48"},
      {"rows",
       [](TPivotFixture& F) {
         F.Add(pfrRow, 0);
         F.Add(pfrValue, 3);
       },
       "Row Labels|Sum of Amount / North|16 / South|24 / West|8 / Grand Total|48"},
      {"rows and columns",
       [](TPivotFixture& F) {
         F.Add(pfrRow, 0);
         F.Add(pfrColumn, 2);
         F.Add(pfrValue, 3);
       },
       "Sum of Amount|Column Labels||  / Row Labels|2023|2024|Grand Total / North|10|6|16 / South|20|4|24 / "
       "West|8|0|8 / Grand Total|38|10|48"},
      {"two values below columns",
       [](TPivotFixture& F) {
         F.Add(pfrRow, 1);
         F.Add(pfrColumn, 2);
         F.Add(pfrValue, 3, paAverage);
         F.Add(pfrValue, 3, paCount).CustomName = u"n";
         F.Pivot->RowGrandTotals = false;
       },
       "|Column Labels||||| / |2023||2024||| / Row Labels|Average of Amount|n|Average of Amount|n|Grand Total| / "
       "Tea|12.6666666666667|3|1|1|13.6666666666667|4 / Milk|0|0|4.5|2|4.5|2"},
      {"two row fields, compact",
       [](TPivotFixture& F) {
         F.Add(pfrRow, 0);
         F.Add(pfrRow, 1);
         F.Add(pfrValue, 3);
       },
       "Row Labels|Sum of Amount / North|16 / >Tea|11 / >Milk|5 / South|24 / >Tea|20 / >Milk|4 / West|8 / >Tea|8 / "
       "Grand Total|48"},
      {"two row fields, tabular, columns without a total",
       [](TPivotFixture& F) {
         F.Add(pfrRow, 0);
         F.Add(pfrRow, 1);
         F.Add(pfrColumn, 2);
         F.Add(pfrValue, 3);
         F.Pivot->LayoutForm = plfTabular;
         F.Pivot->ColGrandTotals = false;
       },
       "Sum of Amount||Column Labels| / Region|Product|2023|2024 / North|Tea|10|1 / South|Tea|20|0 / "
       "North|Milk|0|5 / South|Milk|0|4 / West|Tea|8|0 / Grand Total||38|10"},
      {"only columns",
       [](TPivotFixture& F) {
         F.Add(pfrColumn, 2);
         F.Add(pfrColumn, 1);
         F.Add(pfrValue, 3);
         F.Pivot->RowGrandTotals = false;
       },
       "Sum of Amount|Column Labels||| / |2023|2024|2024| / Row Labels|Tea|Milk|Tea|Grand Total / |38|9|1|48"},
      {"a field behind the last one",
       [](TPivotFixture& F) {
         F.Add(pfrRow, 9);
         F.Add(pfrValue, 9, paCount);
         F.Pivot->LayoutForm = plfTabular;
       },
       "|Count of Value / (blank)|6 / Grand Total|6"},
      {"nothing passes",
       [](TPivotFixture& F) {
         F.Add(pfrRow, 0);
         F.Add(pfrColumn, 2);
         F.Add(pfrValue, 3);
         F.Pivot->SetFilterSelection(1, {u"Coffee"});
       },
       "Sum of Amount|Column Labels| / Row Labels||Grand Total / Grand Total|0|0"},
  };
  for (const auto& row : cases) {
    TPivotFixture fixture(kSales);
    row.Define(fixture);
    std::string wanted = row.Grid;
    if (const size_t at = wanted.find("||  /"); at != std::string::npos) wanted.replace(at, 4, "|| ");
    EXPECT_EQ(fixture.Refreshed(), wanted) << row.Name;
  }
}

TEST(PivotValues, AggregatesCountWhatTheyShould) {
  const struct {
    TPivotAgg Agg;
    const char* Caption;
    const char* Values;  // of a, b and c
  } cases[] = {
      {paSum, "Sum of v", "15|0|3"},
      {paCount, "Count of v", "5|2|1"},
      {paCountNums, "Count of v", "3|0|1"},
      {paAverage, "Average of v", "5|0|3"},
      {paMin, "Min of v", "1|0|3"},
      {paMax, "Max of v", "12|0|3"},
      {paProduct, "Product of v", "24|0|3"},
      {paVar, "Var of v", "37|0|0"},
      {paStdDevp, "StdDevp of v", "4.96655480858378|0|0"},
      {paStdDev, "StdDev of v", "6.08276253029822|0|0"},
      {paVarp, "Varp of v", "24.6666666666667|0|0"},
  };
  for (const auto& row : cases) {
    TPivotFixture fixture("k,v;a,2;a,'12 ;a,TRUE;a,x;a,_;b,#N/A;b,_;c,3");
    fixture.Add(pfrRow, 0);
    fixture.Add(pfrValue, 1, row.Agg);
    fixture.Pivot->RowGrandTotals = false;
    std::string grid = std::string("Row Labels|") + row.Caption;
    const std::string values = row.Values;
    const size_t first = values.find('|');
    const size_t second = values.find('|', first + 1);
    grid += " / a|" + values.substr(0, first) + " / b|" + values.substr(first + 1, second - first - 1) + " / c|" +
            values.substr(second + 1);
    EXPECT_EQ(fixture.Refreshed(), grid);
  }
}

TEST(PivotValues, TotalsAreSumsOfAggregatesAndShowAsGoesByPlace) {
  const struct {
    TPivotShowAs ShowAs;
    const char* Grid;  // rows a, b and the totals; columns x, y and the totals
  } cases[] = {
      {psaNormal, "2|4|6 / 6|0|6 / 8|4|12"},
      {psaRunningTotal, "2|4|6 / 6|0|6 / 8|4|12"},
      {psaPercentOfGrand,
       "0.166666666666667|0.333333333333333|0.5 / 0.5|0|0.5 / 0.666666666666667|0.333333333333333|1"},
      {psaPercentOfRow, "1|1|1 / 1|0|1 / 0.666666666666667|0.333333333333333|1"},
      {psaPercentOfCol, "0.25|1|0.5 / 0.75|0|0.5 / 1|1|1"},
      {psaIndex, "1.5|3|1 / 1.5|0|1 / 1|1|1"},
      {psaRank, "1|1|1 / 2|2|2 / 3|3|3"},
  };
  for (const auto& row : cases) {
    TPivotFixture fixture("r,c,v;a,x,1;a,x,3;a,y,4;b,x,6");
    fixture.Add(pfrRow, 0);
    fixture.Add(pfrColumn, 1);
    fixture.Add(pfrValue, 2, paAverage).ShowAs = row.ShowAs;
    fixture.Refreshed();
    EXPECT_EQ(fixture.Grid({3, 8, 5, 10}), row.Grid) << static_cast<int>(row.ShowAs);
  }
}

TEST(PivotItems, AreToldApartByKindCaseAndFifteenDigits) {
  TPivotFixture fixture("k,v;a,1;A,2;'5,3;5,4;_,5;',6;=0.1+0.2,7;0.3,8;TRUE,9;'TRUE,10;#N/A,11");
  fixture.Run("A8");
  fixture.Add(pfrRow, 0);
  fixture.Add(pfrValue, 1);
  fixture.Pivot->RowGrandTotals = false;
  EXPECT_EQ(fixture.Refreshed(),
            "Row Labels|Sum of v / a|1 / A|2 / 5|3 / 5|4 / (blank)|11 / 0.3|15 / TRUE|9 / TRUE|10 / #N/A|11");
}

TEST(PivotItems, Groups) {
  const struct {
    TPivotGroupDef Group;
    const char* Labels;
  } cases[] = {
      {{.DateGroup = pdgYears}, "2024 x 1999 (blank) TRUE"},
      {{.DateGroup = pdgQuarters}, "Q1 2024 x Q4 1999 (blank) TRUE"},
      {{.DateGroup = pdgMonths}, "2024-01 x 1999-12 (blank) TRUE"},
      {{.DateGroup = pdgMinutes}, "2024-01-31 09:05 x 1999-12-24 00:00 (blank) TRUE"},
      {{.DateGroup = pdgHours}, "2024-01-31 09 x 1999-12-24 00 (blank) TRUE"},
      {{.NumStart = 1, .NumBy = 10000}, "40001-50001 x 12/24/1999 (blank) -9999-1"},
      {{.ManualItems = {{u"nothing"}, {u"X", u"(blank)"}, {u"true"}}, .GroupNames = {u"n", u"", u"Yes"}},
       "45322.3784722222 Group2 12/24/1999 Yes"},
  };
  for (const auto& row : cases) {
    TPivotFixture fixture("d,v;45322.3784722222,1;x,1;'12/24/1999,1;_,1;TRUE,1");
    fixture.Pivot->Groups = {{.FieldIndex = 1, .DateGroup = pdgYears}, row.Group};
    fixture.Add(pfrRow, 0);
    fixture.Add(pfrValue, 1);
    fixture.Refreshed();
    std::string labels;
    for (int32_t r = 7; r < fixture.Pivot->LastBody.EndRow; ++r) labels += fixture.Grid({2, r, 2, r}) + " ";
    EXPECT_EQ(labels, std::string(row.Labels) + " ");
  }
  // A text that reads as a number has no number of its own.
  TPivotFixture fixture("d,v;'25,1;-3,1");
  fixture.Pivot->Groups = {{.FieldIndex = 0, .NumStart = 0, .NumBy = 10}};
  fixture.Add(pfrRow, 0);
  fixture.Add(pfrValue, 1);
  EXPECT_EQ(fixture.Refreshed(), "Row Labels|Sum of v / 0-10|1 / -10-0|1 / Grand Total|2");
}

TEST(PivotCalculatedFields, OneOperatorBetweenAFieldAndAnOperand) {
  const struct {
    const char16_t* Formula;
    const char* Values;
  } cases[] = {
      {u" Price * Qty ", "6|#VALUE!|0"},
      {u"price-0.5", "1.5|2.5|4.5"},
      {u"Price/Qty", "0.666666666666667|#VALUE!|#DIV/0!"},
      {u"2*Price", "#VALUE!|#VALUE!|#VALUE!"},
      {u"Price+Qty*2", "#VALUE!|#VALUE!|#VALUE!"},
      {u"Qty", "3|x|0"},
      {u"nothing", "(blank)|(blank)|(blank)"},
      {u" ", "(blank)|(blank)|(blank)"},
      {u"-Price", "(blank)|(blank)|(blank)"},
  };
  for (const auto& row : cases) {
    TPivotFixture fixture("Price,Qty;2,3;3,x;5,0");
    fixture.Pivot->CalcFields = {{u"first", u"Price"}, {u"c", row.Formula}};
    fixture.Add(pfrColumn, 0);
    fixture.Add(pfrRow, 3);
    fixture.Add(pfrValue, 3, paCount);
    fixture.Pivot->RowGrandTotals = false;
    fixture.Refreshed();
    std::string values;
    for (int32_t r = 8; r <= fixture.Pivot->LastBody.EndRow; ++r) {
      const std::string label = fixture.Grid({2, r, 2, r});
      const std::string total = fixture.Grid({6, r, 6, r});
      for (int n = 0; n < std::stoi(total); ++n) values += (values.empty() ? "" : "|") + label;
    }
    EXPECT_EQ(values, row.Values) << TText(row.Formula).ToUtf8();
  }
}

TEST(PivotFilters, SelectionsGoByLabelsOfAnyField) {
  const struct {
    int32_t Field;
    std::vector<TText> Items;
    const char* Labels;
  } cases[] = {
      {0, {u"NORTH"}, "North Tea|11 Milk|5"},
      {2, {u"2024", u"1999"}, "Milk|9 Tea|1"},
      {1, {}, "Tea|39 Milk|9"},
      {9, {u"x"}, "Tea|39 Milk|9"},
  };
  for (const auto& row : cases) {
    TPivotFixture fixture(kSales);
    fixture.Add(pfrRow, 1);
    fixture.Add(pfrValue, 3);
    fixture.Pivot->RowGrandTotals = false;
    fixture.Pivot->SetFilterSelection(row.Field, row.Items);
    std::string wanted = row.Labels;
    if (wanted.starts_with("North ")) wanted.erase(0, 6);
    wanted.replace(wanted.find(' '), 1, " / ");
    EXPECT_EQ(fixture.Refreshed(), "Row Labels|Sum of Amount / " + wanted) << row.Field;
  }
  TPivotFixture blanks("k,v;a,1;_,2;',4");
  blanks.Add(pfrRow, 0);
  blanks.Add(pfrValue, 1);
  blanks.Pivot->SetFilterSelection(0, {u"(Blank)"});
  EXPECT_EQ(blanks.Refreshed(), "Row Labels|Sum of v / (blank)|6 / Grand Total|6");
}

TEST(PivotFilters, TheBlockNeedsRoomAndItsButtonsAreFound) {
  TPivotFixture fixture(kSales);
  fixture.Add(pfrFilter, 0);
  fixture.Add(pfrFilter, 1);
  fixture.Add(pfrFilter, 7);
  fixture.Add(pfrRow, 1);
  fixture.Add(pfrColumn, 2);
  fixture.Add(pfrValue, 3);
  fixture.Pivot->SetFilterSelection(0, {u"North", u"West"});
  fixture.Pivot->SetFilterSelection(1, {u"Tea"});
  fixture.Refreshed();
  EXPECT_EQ(fixture.Grid({2, 2, 3, 5}), "Region|(2 items) / Product|Tea / Filter|(All) / |");
  const struct {
    int32_t Col, Row, Field;
  } buttons[] = {{3, 2, 0}, {3, 3, 1}, {3, 4, 7}, {3, 5, -1}, {2, 2, -1}, {2, 7, 1}, {3, 6, 2}, {2, 6, -1}};
  for (const auto& row : buttons) {
    const auto target = TPivotEngine::ResolveFilterTarget(fixture.Out(), row.Col, row.Row);
    EXPECT_EQ(target ? target->FieldIndex : -1, row.Field) << row.Col << " " << row.Row;
    EXPECT_EQ(TPivotEngine::IsFilterHeaderCell(fixture.Out(), row.Col, row.Row), row.Field >= 0);
  }
  std::string items;
  for (const auto& item : TPivotEngine::CollectFieldItems(fixture.Workbook, *fixture.Pivot, 0))
    items += item.Label.ToUtf8() + (item.Checked ? "+ " : "- ");
  EXPECT_EQ(items, "North+ South- West+ ");

  // Without room for all of the block nothing of it is written, but its place is cleared.
  fixture.Pivot->Dest = {2, 4};
  fixture.Refreshed();
  EXPECT_EQ(fixture.Grid({2, 1, 3, 3}), "| / | / |");
  EXPECT_FALSE(TPivotEngine::IsFilterHeaderCell(fixture.Out(), 3, 2));
}

TEST(PivotFilters, SlicersOfTheSheetReplaceAllFiltersOfTheirCaches) {
  TPivotFixture fixture(kSales);
  fixture.Add(pfrRow, 0);
  fixture.Add(pfrValue, 3);
  fixture.Pivot->RowGrandTotals = false;
  const auto slicer = [&](TWorksheet& ASheet, int32_t AField, std::vector<TText> AItems) -> TSheetSlicer& {
    auto made = std::make_unique<TSheetSlicer>(u"S", skSlicer, fixture.Cache->Id(), AField, TCellAddress{9, 9});
    made->SetSelected(std::move(AItems));
    made->PivotNames = {u"nobody", u"p"};
    return ASheet.Slicers().Add(std::move(made));
  };
  slicer(fixture.Sheet(), 2, {u"2024"});
  TPivotEngine::ApplySlicerFilters(fixture.Workbook, fixture.Sheet());
  EXPECT_EQ(fixture.Refreshed(), "Row Labels|Sum of Amount / North|6 / South|4");
  slicer(fixture.Out(), 1, {u"MILK", u"cheese"});
  EXPECT_EQ(fixture.Refreshed(), "Row Labels|Sum of Amount / North|5 / South|4");
  slicer(fixture.Out(), 1, {});
  EXPECT_EQ(fixture.Refreshed(), "Row Labels|Sum of Amount / North|16 / South|24 / West|8");

  fixture.Out().Slicers().Clear();
  slicer(fixture.Out(), 1, {});
  TUndoManager undo;
  undo.ExecuteCommand(std::make_shared<TSlicerSelectionCommand>(fixture.Workbook, 1, u"s", std::vector<TText>{},
                                                                std::vector<TText>{u"Milk"}));
  EXPECT_EQ(fixture.Grid(fixture.Pivot->LastBody), "Row Labels|Sum of Amount / North|5 / South|4");
  EXPECT_EQ(undo.NextUndo()->Description(), u"Slicer filter");
  undo.Undo();
  EXPECT_EQ(fixture.Grid(fixture.Pivot->LastBody), "Row Labels|Sum of Amount / North|16 / South|24 / West|8");
}

TEST(PivotSort, IsThatOfAnExchangeSort) {
  const struct {
    const char* Records;
    int32_t Field, Ordinal;
    bool Ascending;
    const char* Labels;
  } cases[] = {
      {"k,v;x,2;y,2;z,1", -1, 0, true, "z y x"},   {"k,v;x,2;y,3;z,1", -1, 0, false, "y x z"},
      {"k,v;b,1;B,2;a,3", 0, -1, true, "a B b"},   {"k,v;b,1;c,2;a,3", 7, -1, false, "c b a"},
      {"k,v;b,1;c,2;a,3", -1, 5, true, "b c a"},   {"k,v;b,1;c,2;a,3", 0, 5, true, "a b c"},
      {"k,v;2,1;10,2;1,3", 0, -1, true, "1 10 2"},
  };
  for (const auto& row : cases) {
    TPivotFixture fixture(row.Records);
    fixture.Add(pfrRow, 0);
    fixture.Add(pfrValue, 1);
    fixture.Pivot->SortFieldIndex = row.Field;
    fixture.Pivot->SortValueOrdinal = row.Ordinal;
    fixture.Pivot->SortAscending = row.Ascending;
    fixture.Refreshed();
    std::string labels = fixture.Grid({2, 7, 2, 9});
    for (size_t at = labels.find(" / "); at != std::string::npos; at = labels.find(" / ")) labels.replace(at, 3, " ");
    EXPECT_EQ(labels, row.Labels) << row.Records;
  }
  TPivotFixture fixture(kSales);
  fixture.Add(pfrRow, 0);
  fixture.Add(pfrRow, 1);
  fixture.Add(pfrValue, 3);
  TUndoManager undo;
  TPivotFilterState state;
  fixture.Refreshed();
  const std::string before = fixture.Grid(fixture.Pivot->LastBody);
  TPivotFilterState sorted = state;
  sorted.SortValueOrdinal = 0;
  undo.ExecuteCommand(std::make_shared<TPivotFilterCommand>(fixture.Workbook, 1, u"p", 0, state, sorted));
  EXPECT_EQ(undo.NextUndo()->Description(), u"Pivot sort");
  EXPECT_EQ(fixture.Grid(fixture.Pivot->LastBody),
            "Row Labels|Sum of Amount / South|24 / >Milk|4 / >Tea|20 / North|16 / >Milk|5 / >Tea|11 / West|8 / "
            ">Tea|8 / Grand Total|48");
  TPivotFilterState filtered = sorted;
  filtered.HasFilter = true;
  filtered.Items = {u"West"};
  undo.ExecuteCommand(std::make_shared<TPivotFilterCommand>(fixture.Workbook, 1, u"P", 0, sorted, filtered));
  EXPECT_EQ(undo.NextUndo()->Description(), u"Pivot filter");
  EXPECT_EQ(fixture.Grid(fixture.Pivot->LastBody), "Row Labels|Sum of Amount / West|8 / >Tea|8 / Grand Total|8");
  undo.Undo();
  undo.Undo();
  EXPECT_EQ(fixture.Grid(fixture.Pivot->LastBody), before);
}

TEST(PivotSources, SheetsConsolidationsAndConnections) {
  TPivotFixture fixture("a,b,_;1,_,3;_,_,_;=1+1,5,=\"n\"&1");
  fixture.Run("A4 C4");
  TPivotEngine::RebuildCache(fixture.Workbook, *fixture.Cache);
  EXPECT_EQ(fixture.Cache->FieldNames(), (std::vector<TText>{u"a", u"b", u"Field3"}));
  ASSERT_EQ(fixture.Cache->RecordCount(), 3u);
  EXPECT_EQ(fixture.Cache->Value(2, 0).Number, 2);
  EXPECT_EQ(fixture.Cache->Value(2, 2).Text, u"n1");
  fixture.Set("B3", "7");
  TPivotEngine::RebuildCache(fixture.Workbook, *fixture.Cache);
  EXPECT_EQ(fixture.Cache->Value(1, 1).Number, 7);
  fixture.Set("A1", "=1");  // a header's name is its source
  fixture.Sheet().Spills().SetSpill(1, 2, 2, 1, {TCellValue::FromNumber(1), TCellValue::FromNumber(9)});
  fixture.Cache->SourceSheet = u"gone";
  TPivotEngine::RebuildCache(fixture.Workbook, *fixture.Cache);
  EXPECT_EQ(fixture.Cache->FieldNames()[0], u"=1");
  EXPECT_EQ(fixture.Cache->Value(1, 0).Number, 9);

  fixture.Cache->SourceKind = pcsMultiConsolidation;
  fixture.Set({{"Out!E1", "x"}, {"Out!F1", "q1"}, {"Out!E2", "r"}, {"Out!F2", "4"}});
  fixture.Cache->MultiRanges = {u"nowhere!A1:B2", u"'Out'!F2:E1", u"Out!A1"};
  TPivotEngine::RebuildCache(fixture.Workbook, *fixture.Cache);
  ASSERT_EQ(fixture.Cache->RecordCount(), 1u);
  std::string record;
  for (size_t i = 0; i < 4; ++i) record += fixture.Cache->Value(0, i).ToDisplayString().ToUtf8() + " ";
  EXPECT_EQ(record, "Range2 r q1 4 ");

  fixture.Cache->SourceKind = pcsExternal;
  TPivotEngine::RebuildCache(fixture.Workbook, *fixture.Cache);
  EXPECT_EQ(fixture.Cache->RecordCount(), 1u);
  TOlapConnection& cube = fixture.Workbook.OlapConnections().Add(std::make_unique<TOlapConnection>(u"C1"));
  cube.SetMockMembers(u"years", {u"2023", u"2024"});
  cube.SetMockMeasure(u"2024", 5);
  fixture.Cache->ConnectionId = u"c1";
  fixture.Add(pfrRow, 0);
  fixture.Add(pfrValue, 1);
  EXPECT_EQ(fixture.Refreshed(), "Row Labels|Sum of Value / 2023|0 / 2024|5 / Grand Total|5");
  EXPECT_EQ(fixture.Cache->SourceKind, pcsOlap);
}

TEST(PivotOutput, OldCellsGoForeignOnesStayAndFormatsAreLaidOver) {
  TPivotFixture fixture(kSales);
  fixture.Add(pfrRow, 0);
  fixture.Add(pfrRow, 1);
  fixture.Add(pfrValue, 3).NumberFormat = u" 0.00 ";
  fixture.Refreshed();
  const auto look = [&](const char* AAddress) {
    const TCell cell = fixture.Out().GetCell(TCellAddress::FromA1(Utf8ToUtf16(AAddress)));
    if (!cell.HasFormatOverride) return std::string("none");
    char text[32];
    std::snprintf(text, sizeof text, "%08X%s ", cell.FormatOverride.Fill.ForegroundColor.ARGB,
                  cell.FormatOverride.Font.Bold ? "b" : "");
    return text + cell.FormatOverride.NumberFormat.ToUtf8();
  };
  EXPECT_EQ(look("B6"), "FF5B9BD5b General");
  EXPECT_EQ(look("B7"), "FFDDEBF7b General");  // a group
  EXPECT_EQ(look("C7"), "FFDDEBF7b 0.00");
  EXPECT_EQ(look("C8"), "00000000 0.00");
  EXPECT_EQ(look("B9"), "FFF2F2F2 General");
  EXPECT_EQ(look("C15"), "FFBDD7EEb 0.00");
  fixture.Set({{"Out!D9", "mine"}, {"Out!C9", "over"}});
  fixture.Pivot->ClearLayout();
  fixture.Add(pfrRow, 0);
  fixture.Add(pfrColumn, 2);
  fixture.Add(pfrValue, 3);
  fixture.Refreshed();
  EXPECT_EQ(fixture.Grid({2, 9, 5, 9}), "South|20|4|24");
  EXPECT_EQ(look("C13"), "none");
  EXPECT_EQ(look("E6"), "FF5B9BD5b General");  // an empty cell of the header
  fixture.Pivot->ClearLayout();
  fixture.Add(pfrRow, 0);
  fixture.Refreshed();
  EXPECT_EQ(fixture.Out().Store().CellCount(), 0u);
  EXPECT_EQ(fixture.Pivot->LastBody, (TCellRange{2, 6, 2, 6}));
}

TEST(PivotOutput, WatchedAndUnwatchedRefreshesLeaveTheSameCells) {
  std::string dumps[2];
  size_t events = 0;
  for (int watched = 0; watched < 2; ++watched) {
    TPivotFixture fixture(kSales);
    if (watched) fixture.Out().SetOnChange([&](auto&, TCellAddress, const TCell&, const TCell&) { ++events; });
    fixture.Add(pfrFilter, 2);
    fixture.Add(pfrRow, 0);
    fixture.Add(pfrRow, 1);
    fixture.Add(pfrValue, 3).NumberFormat = u"0.0";
    fixture.Refreshed();
    fixture.Pivot->SetFilterSelection(0, {u"West"});
    fixture.Refreshed();
    fixture.Out().Store().ForEachByRow({1, 1, 20, 40}, [&](int32_t ACol, int32_t ARow, const auto&) {
      const TCell cell = fixture.Out().GetCell({ACol, ARow});
      dumps[watched] += TText(TCellAddress{ACol, ARow}.ToA1()).ToUtf8() + cell.Value.ToDisplayString().ToUtf8() +
                        std::to_string(HashOf(cell.FormatOverride)) + " ";
    });
    dumps[watched] += std::to_string(fixture.Out().UsedMaxRow()) + " " + std::to_string(fixture.Out().UsedMaxCol());
  }
  EXPECT_EQ(dumps[0], dumps[1]);
  EXPECT_EQ(events, 89u);  // (5 cleared, 20 + 2 written, 20 styled), then (24 cleared, 8 + 2 written, 8 styled)
}

TEST(PivotOutput, TablesThatLeaveTheSheetOrAreAbsurdAreNoHarm) {
  TPivotFixture fixture(kSales);
  fixture.Add(pfrRow, 0);
  fixture.Add(pfrColumn, 2);
  fixture.Add(pfrValue, 3);
  fixture.Pivot->Dest = {kMaxCol, kMaxRow - 2};
  EXPECT_EQ(fixture.Refreshed().substr(0, 13), "Sum of Amount");
  fixture.Pivot->Dest = {-2, -1};
  fixture.Refreshed();
  EXPECT_EQ(fixture.Grid({1, 1, 2, 4}), "16| / 24| / 8| / 48|");
  fixture.Pivot->LastBody = {-5, -5, INT32_MAX, INT32_MAX};
  fixture.Pivot->Dest = {2, INT32_MIN};
  fixture.Refreshed();
  EXPECT_EQ(fixture.Out().Store().CellCount(), 0u);
  fixture.Pivot->HeaderRowCount = INT32_MAX;
  fixture.Pivot->LastBody = {1, 1, INT32_MAX, INT32_MAX};
  TPivotEngine::ApplyLoadedPivotStyles(fixture.Workbook);
  fixture.Cache->SourceRange = {INT32_MIN, INT32_MIN, 0, 0};
  fixture.Pivot->Dest = {2, 2};
  EXPECT_EQ(fixture.Refreshed(), "Sum of Value|Column Labels| / Row Labels||Grand Total / Grand Total|0|0");

  // 4,000 rows by 4,000 columns are more cells than a table may have: the sheet stays as it is.
  for (int32_t row = 1; row <= 4001; ++row) fixture.Sheet().SetValue({1, row}, TCellValue::FromNumber(row));
  fixture.Cache->SourceRange = {1, 1, 4, 4001};
  fixture.Pivot->ClearLayout();
  for (const TPivotFieldRole role : {pfrRow, pfrColumn, pfrValue}) fixture.Add(role, 0);
  EXPECT_THROW(fixture.Refreshed(), ELimit);
  EXPECT_EQ(fixture.Grid({2, 2, 2, 4}), "Sum of Value / Row Labels / Grand Total");
}

TEST(PivotData, FormulasAskTablesByNameAndItem) {
  TPivotFixture fixture(kSales);
  fixture.Add(pfrRow, 0);
  fixture.Add(pfrValue, 3);
  fixture.Add(pfrValue, 3, paAverage).CustomName = u"Mean";
  fixture.Pivot->SetFilterSelection(0, {u"North"});
  fixture.Refreshed();
  fixture.Pivot->Groups = {{.FieldIndex = 2, .ManualItems = {{u"2023"}}, .GroupNames = {u"before"}}};
  const struct {
    const char* Formula;
    const char* Result;
  } cases[] = {
      {"=GETPIVOTDATA(\"amount\",Out!C7)", "48"},
      {"=GETPIVOTDATA(\"Sum of Amount\",Out!B6,\"Region\",\"north\")", "16"},
      {"=GETPIVOTDATA(\"MEAN\",Out!B6,\"region\",\"South\",\"Product\",\"Tea\")", "20"},
      {"=GETPIVOTDATA(\"Max of Amount\",Out!B6,\"Year\",2024)", "10"},
      {"=GETPIVOTDATA(\"Amount\",Out!B6,\"Year\",\"Before\")", "38"},
      {"=GETPIVOTDATA(\"Amount\",Out!B6,\"Region\",\"nowhere\")", "0"},
      {"=GETPIVOTDATA(\"Amount\",Out!B6,\"Colour\",1)", "#REF!"},
      {"=GETPIVOTDATA(\"Price\",Out!B6)", "#REF!"},
      {"=GETPIVOTDATA(\"Amount\",Out!H60)", "#REF!"},
      {"=GETPIVOTDATA(\"Amount\",B6)", "48"},
      {"=CUBEVALUE(\"c\",\"x\")", "#N/A"},
  };
  for (const auto& row : cases) EXPECT_EQ(fixture.Eval(row.Formula), row.Result) << row.Formula;
  fixture.Set("D2", "110");
  EXPECT_EQ(fixture.Eval("=GETPIVOTDATA(\"Amount\",Out!B6)"), "148");
  fixture.Workbook.OlapConnections().Add(std::make_unique<TOlapConnection>(u"c")).SetMockMeasure(u"X", 3);
  EXPECT_EQ(fixture.Eval("=CUBEVALUE(\"c\",\" x \")"), "3");
}

}  // namespace
}  // namespace tessarine
