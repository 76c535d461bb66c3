#include <gtest/gtest.h>

#include <algorithm>
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

#include "../support/CaseTable.h"

namespace tessarine {
namespace {

using testing::TPivotFixture;

constexpr const char* kSales =
    "Region,Product,Year,Amount;"
    "North,Tea,2023,10;South,Tea,2023,20;North,Milk,2024,5;North,Tea,2024,1;South,Milk,2024,4;West,Tea,2023,8";

template <typename TEnum>
TEnum Named(std::initializer_list<const char*> ANames, const std::string& AName) {
  const auto found = std::find_if(ANames.begin(), ANames.end(), [&](const char* A) { return AName == A; });
  EXPECT_NE(found, ANames.end()) << AName;
  return static_cast<TEnum>(found - ANames.begin());
}

/// A pivot table over records, laid out by words that are separated by commas: "row 0, value 1 average".
class TPivotLayouts {
 public:
  void SetRecords(std::string ARecords) { FRecords = std::move(ARecords); }
  std::string Layout(std::string AText) {
    TPivotFixture fixture(FRecords);
    std::string show;
    for (const std::string& clause : test::SplitAt(AText, ',')) {
      const size_t start = clause.find_first_not_of(' ');
      const std::string words = clause.substr(start);
      if (words == "labels" || words == "counted" || words.starts_with("part ")) {
        show = words;
      } else {
        Apply(fixture, words);
      }
    }
    const std::string grid = fixture.Refreshed();
    if (show == "labels") return Labels(fixture);
    if (show == "counted") return Counted(fixture);
    return show.empty() ? grid : fixture.Grid(TCellRange::FromA1(Utf8ToUtf16(show.substr(5))));
  }

 private:
  static void Apply(TPivotFixture& F, const std::string& AWords) {
    const std::vector<std::string> words = test::SplitAt(AWords, ' ');
    const std::string rest = AWords.substr(std::min(words[0].size() + 1, AWords.size()));
    const auto field = [&] { return std::stoi(words.at(1)); };
    if (words[0] == "row" || words[0] == "column") {
      F.Add(words[0] == "row" ? pfrRow : pfrColumn, field());
    } else if (words[0] == "value") {
      AddValue(F.Add(pfrValue, field()), words);
    } else if (words[0] == "select") {
      std::vector<TText> items;
      for (const auto& item : test::SplitAt(words.size() > 2 ? words[2] : "", ';'))
        if (!item.empty()) items.push_back(TText::FromUtf8(item));
      F.Pivot->SetFilterSelection(field(), items);
    } else if (words[0] == "group") {
      F.Pivot->Groups.push_back(Group(words));
    } else if (words[0] == "calc") {
      const size_t sign = rest.find('=');
      F.Pivot->CalcFields.push_back({TText::FromUtf8(rest.substr(0, sign)), TText::FromUtf8(rest.substr(sign + 1))});
    } else if (words[0] == "sort") {
      F.Pivot->SortFieldIndex = field();
      F.Pivot->SortValueOrdinal = std::stoi(words.at(2));
      F.Pivot->SortAscending = words.at(3) == "up";
    } else if (words[0] == "run") {
      F.Run(rest);
    } else if (AWords == "tabular") {
      F.Pivot->LayoutForm = plfTabular;
    } else {
      EXPECT_TRUE(AWords == "no row totals" || AWords == "no column totals") << AWords;
      (AWords == "no row totals" ? F.Pivot->RowGrandTotals : F.Pivot->ColGrandTotals) = false;
    }
  }
  static void AddValue(TPivotFieldRef& AField, const std::vector<std::string>& AWords) {
    for (size_t i = 2; i < AWords.size(); ++i) {
      if (AWords[i] == "as") {
        AField.CustomName = TText::FromUtf8(AWords.at(++i));
      } else if (AWords[i] == "shown") {
        AField.ShowAs = Named<TPivotShowAs>({"normal", "percentOfGrand", "percentOfRow", "percentOfCol", "percentOf",
                                             "differenceFrom", "runningTotal", "index", "rank"},
                                            AWords.at(++i));
      } else {
        AField.Agg = Named<TPivotAgg>(
            {"sum", "count", "countNums", "average", "min", "max", "product", "stdDev", "stdDevp", "var", "varp"},
            AWords[i]);
      }
    }
  }
  /// "group 0 by years", "group 0 from 1 by 10" or "group 0 name=item;item ...".
  static TPivotGroupDef Group(const std::vector<std::string>& AWords) {
    TPivotGroupDef group{.FieldIndex = std::stoi(AWords.at(1))};
    if (AWords.at(2) == "by") {
      group.DateGroup =
          Named<TPivotDateGroup>({"none", "years", "quarters", "months", "days", "hours", "minutes"}, AWords.at(3));
    } else if (AWords[2] == "from") {
      group.NumStart = std::stod(AWords.at(3));
      group.NumBy = std::stod(AWords.at(5));
    } else {
      for (size_t i = 2; i < AWords.size(); ++i) {
        const std::vector<std::string> sides = test::SplitAt(AWords[i], '=');
        group.GroupNames.push_back(TText::FromUtf8(sides[0]));
        group.ManualItems.emplace_back();
        for (const auto& item : test::SplitAt(sides.at(1), ';'))
          group.ManualItems.back().push_back(TText::FromUtf8(item));
      }
    }
    return group;
  }
  static std::string Labels(TPivotFixture& F) {
    std::string labels;
    for (int32_t row = 7; row < F.Pivot->LastBody.EndRow; ++row)
      labels += (row > 7 ? " " : "") + F.Grid({2, row, 2, row});
    return labels;
  }
  /// The labels, each as often as it was counted.
  static std::string Counted(TPivotFixture& F) {
    std::string labels;
    for (int32_t row = 8; row <= F.Pivot->LastBody.EndRow; ++row) {
      const int count = std::stoi(F.Grid({6, row, 6, row}));
      for (int n = 0; n < count; ++n) labels += (labels.empty() ? "" : "|") + F.Grid({2, row, 2, row});
    }
    return labels;
  }

  std::string FRecords;
};

TEST(Pivots, LayoutsGiveTheirTables) {
  test::ExpectDialogues<TPivotLayouts>("features/pivots.tsv",
                                       {{"records", &TPivotLayouts::SetRecords}, {"layout", &TPivotLayouts::Layout}});
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

TEST(PivotSort, CommandsSortFilterAndTakeBack) {
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
  fixture.Workbook.FindSheet(u"Out")->SetName(u"Out's");
  fixture.Cache->MultiRanges = {u"nowhere!A1:B2", u"'Out''s'!F2:E1", u"Out!A1"};
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
  test::ExpectCases("features/pivot_data.tsv", [&](const test::TCase& ACase) { return fixture.Eval(ACase[0]); });
  fixture.Set("D2", "110");
  EXPECT_EQ(fixture.Eval("=GETPIVOTDATA(\"Amount\",Out!B6)"), "148");
  fixture.Workbook.OlapConnections().Add(std::make_unique<TOlapConnection>(u"c")).SetMockMeasure(u"X", 3);
  EXPECT_EQ(fixture.Eval("=CUBEVALUE(\"c\",\" x \")"), "3");
}

}  // namespace
}  // namespace tessarine
