#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/CellComments.h>
#include <tessarine/core/lists/Hyperlinks.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/SavedView.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/lists/Slicers.h>
#include <tessarine/core/lists/SpillMap.h>

#include "ListCases.h"

namespace tessarine {
namespace {

using test::Shown;
using test::TCase;

/// The lists of a sheet, all of which see the structural edits.
struct TLists {
  TMergedCellList Merges;
  THyperlinkList Links;
  TSpillMap Spills;
  TSheetTableList Tables;
  TSheetAutoFilter Filter;
  TCellCommentList Notes;
  TSheetSlicer Slicer{u"S", skSlicer, 1, 0, {2, 2}};
  uint64_t LastSpills = Spills.Version();
  uint64_t LastTables = Tables.Version();

  void ShiftRows(int64_t AStart, int64_t ADelta) {
    Merges.ShiftRows(AStart, ADelta), Spills.ShiftRows(AStart, ADelta), Tables.ShiftRows(AStart, ADelta);
    Filter.ShiftRows(AStart, ADelta), Notes.ShiftRows(AStart, ADelta);
  }
  void ShiftColumns(int64_t AStart, int64_t ADelta) {
    Merges.ShiftColumns(AStart, ADelta), Spills.ShiftColumns(AStart, ADelta), Tables.ShiftColumns(AStart, ADelta);
    Filter.ShiftColumns(AStart, ADelta), Notes.ShiftColumns(AStart, ADelta);
  }
  void MoveRows(int64_t AStart, int64_t ACount, int64_t ADest) {
    Merges.MoveRows(AStart, ACount, ADest), Tables.MoveRows(AStart, ACount, ADest);
    Filter.MoveRows(AStart, ACount, ADest), Notes.MoveRows(AStart, ACount, ADest);
  }
  void MoveColumns(int64_t AStart, int64_t ACount, int64_t ADest) {
    Merges.MoveColumns(AStart, ACount, ADest), Tables.MoveColumns(AStart, ACount, ADest);
    Filter.MoveColumns(AStart, ACount, ADest), Notes.MoveColumns(AStart, ACount, ADest);
  }
  TSheetTable& Table() { return Tables.GetItem(Tables.Count() - 1); }
  void Merge(TCellRange ARange) { Merges.Add(ARange); }
  void MergeSome() {
    for (const char16_t* range : {u"B2:C2", u"A5:A6", u"D1:E9"}) Merge(TCellRange::FromA1(range));
    EXPECT_EQ(Merges.FindContaining(1, 5), 1);
  }
  std::vector<TCellRange> MergeRanges() const {
    std::vector<TCellRange> ranges;
    for (const TMergedRange& merge : Merges) ranges.push_back(merge.AsRange());
    return ranges;
  }
  std::string MergeAnchor(TCellAddress A) const {
    const TMergeAnchor found = Merges.FindAnchor(A.Col, A.Row);
    return Shown(found.Anchor) + (found.InMerge ? "" : " alone");
  }
  bool HasFewLinkRecords() const {
    size_t records = 0;
    Links.ForEach([&](const TCellRange&, const TText&) { ++records; });
    return records <= 9;
  }
  void Spill(TCellAddress A, int64_t ARows, int64_t ACols, int64_t ACount) {
    std::vector<TCellValue> values;
    for (int64_t i = 1; i <= ACount; ++i) values.push_back(TCellValue::FromNumber(static_cast<double>(i)));
    Spills.SetSpill(A.Col, A.Row, ARows, ACols, std::move(values));
  }
  std::string Child(TCellAddress A) const {
    const auto value = Spills.TryGetValue(A.Col, A.Row);
    return value ? "[" + value->ToDisplayString().ToUtf8() + "]" : "-";
  }
  std::string SpillRange(TCellAddress A) const {
    const TSpillRange* block = Spills.TryGetSpill(A.Col, A.Row);
    return block ? Shown(block->AsRange()) : "none";
  }
  std::vector<int32_t> SpillColumns() const {
    std::vector<int32_t> columns;
    Spills.ForEachSpill([&](const TSpillRange& ABlock) { columns.push_back(ABlock.AnchorCol); });
    return columns;
  }
  std::vector<int32_t> SpillColumnsIn(TCellRange ARange) const {
    std::vector<int32_t> columns;
    for (const TSpillRange* block : Spills.BlocksIn(ARange)) columns.push_back(block->AnchorCol);
    return columns;
  }
  bool IsBlocked(TCellRange ARange, TCellAddress A) const { return Spills.IntersectsOther(ARange, A.Col, A.Row); }
  bool SpillsChanged() { return std::exchange(LastSpills, Spills.Version()) != Spills.Version(); }
  bool TablesChanged() { return std::exchange(LastTables, Tables.Version()) != Tables.Version(); }
  void SetFilterText(int32_t ACol, TText AText, bool AMatchCase) { Filter.SetColumnContains(ACol, AText, AMatchCase); }
  void SetFilterValue(int32_t ACol, TText AText, bool AMatchCase) { Filter.SetColumnValues(ACol, {AText}, AMatchCase); }
  static std::vector<int32_t> Sorted(std::vector<int32_t> ALines) {
    std::sort(ALines.begin(), ALines.end());
    return ALines;
  }
  static std::string TableParts(TCellRange ARange, bool AHeader, bool ATotals) {
    TSheetTable table(u"T", ARange);
    table.SetHasHeaderRow(AHeader);
    table.SetHasTotalsRow(ATotals);
    EXPECT_EQ(table.IsHeaderRow(2), AHeader);
    EXPECT_EQ(table.IsTotalsRow(table.Ref().EndRow), ATotals);
    const TCellRange data = table.DataRange();
    EXPECT_EQ(table.DataBandIndex(data.StartRow), 0);
    EXPECT_EQ(table.DataBandIndex(data.StartRow - 1), -1);
    EXPECT_EQ(table.DataBandIndex(data.EndRow + 1), -1);
    return Shown(data) + " " + std::to_string(table.HeaderRow());
  }
  void SetColumns(std::string ANames) {
    std::vector<TText> names;
    for (const std::string& name : test::SplitAt(ANames, '|')) names.push_back(TText::FromUtf8(name));
    Table().SetColumnNames(names);
  }
  std::string ColumnData(std::u16string_view AName) {
    const TCellRange data = Table().ColumnDataRange(AName);
    if (data.EndRow >= data.StartRow) return Shown(data);
    EXPECT_EQ(data.StartCol, Table().Ref().StartCol);
    return "none";
  }
  int64_t IndexOf(const TSheetTable* ATable) const {
    const auto found = std::find_if(Tables.begin(), Tables.end(), [&](const auto& A) { return A.get() == ATable; });
    return found == Tables.end() ? -1 : found - Tables.begin();
  }
  std::string TableRefs() const {
    std::string text;
    for (const auto& table : Tables)
      text += (text.empty() ? "" : " ") + Shown(table->Name()) + "=" + Shown(table->Ref());
    return text;
  }
  std::string FilterColumn(int32_t ACol) const {
    const TAutoFilterColumn column = Filter.GetColumn(ACol);
    EXPECT_EQ(column.Active, Filter.ColumnHasFilter(ACol));
    return column.Active ? Shown(column.Contains) + "|" + Shown(column.Values) + "|" + Shown(column.MatchCase) : "none";
  }
  void NoteSome() {
    for (const auto& [place, text] :
         {std::pair(TCellAddress{1, 1}, u"a"), {{1, 5}, u"c"}, {{2, 5}, u"d"}, {{1, 9}, u"e"}})
      Notes.SetComment(place.Col, place.Row, u"", text);
  }
  std::string ShownNotes() const {
    std::string text;
    Notes.ForEach([&](TCellAddress AAddress, const TCellComment& ANote) {
      EXPECT_EQ(Notes.FindByKey(AAddress.ToA1())->Text, ANote.Text);
      text += (text.empty() ? "" : " ") + Shown(AAddress) + "=" + Shown(ANote.Text);
    });
    return text;
  }
};

TCellAddress Cell(const TCase& ACase, size_t AField = 1) { return test::CaseArgument<TCellAddress>(ACase, AField); }
TCellRange Range(const TCase& ACase, size_t AField = 1) { return test::CaseArgument<TCellRange>(ACase, AField); }

TEST(SheetLists, ExamplesHold) {
  using T = TLists;
  const std::map<std::string, test::TStepWork<T>> steps = {
      // clang-format off
      {"shift-rows", &T::ShiftRows}, {"shift-columns", &T::ShiftColumns}, {"move-rows", &T::MoveRows},
      {"move-columns", &T::MoveColumns}, {"merge", &T::Merge}, {"merge-some", &T::MergeSome},
      {"merges", &T::MergeRanges}, {"merge-anchor", &T::MergeAnchor},
      {"has-few-link-records", &T::HasFewLinkRecords}, {"spill", &T::Spill}, {"child", &T::Child},
      {"spill-range", &T::SpillRange}, {"spill-columns", &T::SpillColumns},
      {"spill-columns-in", &T::SpillColumnsIn}, {"table-parts", &T::TableParts}, {"columns", &T::SetColumns},
      {"column-data", &T::ColumnData}, {"tables", &T::TableRefs}, {"filter-column", &T::FilterColumn},
      {"note-some", &T::NoteSome}, {"notes", &T::ShownNotes},
      {"merge-at", [](T& L, const TCase& C) { return L.Merges.FindContaining(Cell(C).Col, Cell(C).Row); }},
      {"is-merge-anchor", [](T& L, const TCase& C) { return L.Merges.IsMergeAnchor(Cell(C).Col, Cell(C).Row); }},
      {"remove-merge", [](T& L, const TCase& C) { return L.Merges.RemoveAt(size_t(C.Integer(1))); }},
      {"clear-merges", [](T& L, const TCase&) { return L.Merges.Clear(); }},
      {"expand", [](T& L, const TCase& C) { return L.Merges.ExpandRange(Range(C)); }},
      {"link", [](T& L, const TCase& C) { return L.Links.SetHyperlink(Cell(C).Col, Cell(C).Row, C.Text(2)); }},
      {"link-range", [](T& L, const TCase& C) { return L.Links.SetHyperlinkRange(Range(C), C.Text(2)); }},
      {"link-at", [](T& L, const TCase& C) { return L.Links.FindHyperlink(Cell(C).Col, Cell(C).Row); }},
      {"unlink", [](T& L, const TCase& C) { return L.Links.ClearHyperlink(Cell(C).Col, Cell(C).Row); }},
      {"link-count", [](T& L, const TCase&) { return L.Links.Count(); }},
      {"unspill", [](T& L, const TCase& C) { return L.Spills.ClearAnchor(Cell(C).Col, Cell(C).Row); }},
      {"clear-spills", [](T& L, const TCase&) { return L.Spills.ClearAll(); }},
      {"spill-count", [](T& L, const TCase&) { return L.Spills.Count(); }},
      {"spill-anchor", [](T& L, const TCase& C) { return L.Spills.FindAnchor(Cell(C).Col, Cell(C).Row); }},
      {"spills-changed", &T::SpillsChanged},
      {"is-blocked", &T::IsBlocked},
      {"table", [](T& L, const TCase& C) { return void(L.Tables.Add(C.Text(1), Range(C, 2))); }},
      {"remove-table", [](T& L, const TCase& C) { return L.Tables.RemoveAt(size_t(C.Integer(1))); }},
      {"display-name", [](T& L, const TCase& C) { return L.Table().SetDisplayName(C.Text(1)); }},
      {"table-name", [](T& L, const TCase& C) { return L.Table().SetName(C.Text(1)); }},
      {"table-range", [](T& L, const TCase& C) { return L.Table().SetRef(Range(C)); }},
      {"totals", [](T& L, const TCase& C) { return L.Table().SetHasTotalsRow(C.Flag(1)); }},
      {"stripes", [](T& L, const TCase& C) { return L.Table().SetShowRowStripes(C.Flag(1)); }},
      {"table-buttons", [](T& L, const TCase& C) { return L.Table().SetShowAutoFilter(C.Flag(1)); }},
      {"column-count", [](T& L, const TCase&) { return L.Table().ColumnCount(); }},
      {"column-index", [](T& L, const TCase& C) { return L.Table().ColumnIndex(C.Text(1)); }},
      {"find-table", [](T& L, const TCase& C) { return L.IndexOf(L.Tables.FindByName(C.Text(1))); }},
      {"table-at", [](T& L, const TCase& C) { return L.IndexOf(L.Tables.FindContaining(Cell(C).Col, Cell(C).Row)); }},
      {"tables-changed", &T::TablesChanged},
      {"filter", [](T& L, const TCase& C) { return L.Filter.Enable(Range(C)); }},
      {"filter-range", [](T& L, const TCase&) { return L.Filter.IsEnabled() ? Shown(L.Filter.Range()) : "none"; }},
      {"is-filter-header", [](T& L, const TCase& C) { return L.Filter.IsFilterHeaderCell(Cell(C).Col, Cell(C).Row); }},
      {"filter-contains", &T::SetFilterText},
      {"filter-values", &T::SetFilterValue},
      {"clear-filter-column", [](T& L, const TCase& C) { return L.Filter.ClearColumn(C.Int(1)); }},
      {"filtered-data", [](T& L, const TCase&) { return L.Filter.DataSortRange(L.Tables); }},
      {"sync-filter", [](T& L, const TCase&) { return L.Filter.SyncToTables(L.Tables); }},
      {"note", [](T& L, const TCase& C) { return L.Notes.SetComment(Cell(C).Col, Cell(C).Row, u"me", C.Text(2)); }},
      {"select", [](T& L, const TCase& C) { return L.Slicer.ToggleItem(C.Text(1)); }},
      {"is-selected", [](T& L, const TCase& C) { return L.Slicer.IsItemSelected(C.Text(1)); }},
      {"selected", [](T& L, const TCase&) { return L.Slicer.Selected(); }},
      {"spilled-rows", [](T& L, const TCase& C) {
        std::vector<int32_t> rows;
        L.Spills.CollectNavRowsInColumn(C.Int(1), rows);
        return T::Sorted(rows);
      }},
      {"spilled-columns", [](T& L, const TCase& C) {
        std::vector<int32_t> columns;
        L.Spills.CollectNavColsInRow(C.Int(1), columns);
        return T::Sorted(columns);
      }},
      // clang-format on
  };
  test::ExpectDialogues<T>("core/sheet_lists.tsv", steps);
}

TEST(SheetLists, VastTablesCountWithoutOverflow) {
  constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();
  constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
  const TSheetTable vast(u"V", {kLeast, kLeast, kMost, kMost});
  EXPECT_EQ(vast.ColumnCount(), kMost);
  EXPECT_EQ(vast.DataBandIndex(5), kMost);
  TSpillMap map;
  map.SetSpill(1, 1, std::numeric_limits<int64_t>::max(), std::numeric_limits<int64_t>::max(), {});
  EXPECT_EQ(map.TryGetSpill(1, 1)->EndRow, kMost);
}

TEST(SheetLists, AnchorsOfSlicersMoveUnchecked) {
  TSheetSlicerList slicers;
  slicers.Add(std::make_unique<TSheetSlicer>(u"S", skTimeline, 1, 0, TCellAddress{4, 6}));
  slicers.ShiftRows(5, -9);
  slicers.ShiftColumns(4, 2);
  slicers.ShiftColumns(7, 2);
  EXPECT_EQ(slicers.FindByName(u"s")->Anchor, (TCellAddress{6, -3}));
}

TEST(SavedView, ClearForgetsWhatWasAssigned) {
  TSheetSavedView view;
  view.AssignFrom({{1, 1, 2, 2}}, 3, 4, 5, 6, true);
  EXPECT_TRUE(view.HasView);
  EXPECT_EQ(view.TopLeftRow, 6);
  view.Clear();
  EXPECT_EQ(view, TSheetSavedView());
  EXPECT_EQ(view.ActiveCol, 1);
}

}  // namespace
}  // namespace tessarine
