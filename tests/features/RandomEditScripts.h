#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/CellComments.h>
#include <tessarine/core/lists/ConditionalFormats.h>
#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/core/undo/StructureCommands.h>
#include <tessarine/core/undo/UndoManager.h>
#include <tessarine/features/AutoFiltering.h>
#include <tessarine/features/Fill.h>
#include <tessarine/features/Sorting.h>
#include <tessarine/formula/Evaluator.h>

namespace tessarine::testing {

/// Decisions taken from bytes; zeros when they are used up.
class TDecisions {
 public:
  explicit TDecisions(std::span<const uint8_t> ABytes) : FRest(ABytes) {}

  bool AreLeft() const { return !FRest.empty(); }
  uint32_t Below(uint32_t ALimit) { return Byte() % ALimit; }
  /// A line number: mostly a small one, else one at or beyond the limits.
  int32_t Line(int32_t ALimit) {
    const uint32_t choice = Byte();
    const int32_t odd[] = {0, -5, INT32_MIN, INT32_MAX, ALimit - 1, ALimit, ALimit + 1, ALimit / 2};
    return choice < 224 ? 1 + static_cast<int32_t>(choice % 24) : odd[choice % std::size(odd)];
  }
  int32_t Count(int32_t ALimit) {
    const uint32_t choice = Byte();
    const int32_t odd[] = {0, -1, INT32_MIN, INT32_MAX, ALimit, ALimit - 1, 1000, 256};
    return choice < 224 ? 1 + static_cast<int32_t>(choice % 5) : odd[choice % std::size(odd)];
  }
  TCellAddress Place() {
    const uint32_t choice = Byte();
    if (choice >= 248) return {choice % 2 == 0 ? kMaxCol : 1, kMaxRow - static_cast<int32_t>(choice % 4)};
    return {1 + static_cast<int32_t>(choice % 8), 1 + static_cast<int32_t>(Below(24))};
  }
  TCellRange Range() {
    const TCellAddress corner = Place();
    return {corner.Col, corner.Row, std::min(kMaxCol, corner.Col + static_cast<int32_t>(Below(4))),
            std::min(kMaxRow, corner.Row + static_cast<int32_t>(Below(9)))};
  }

 private:
  uint8_t Byte() {
    if (FRest.empty()) return 0;
    const uint8_t byte = FRest.front();
    FRest = FRest.subspan(1);
    return byte;
  }

  std::span<const uint8_t> FRest;
};

/// What taking a structural edit back promises to restore.
struct TPromisedState {
  std::vector<std::vector<std::pair<TCellAddress, TCell>>> Cells;  // of all sheets, without results
  std::vector<TMergedRange> Merges;                                // of one sheet, as all below
  std::string Sizes;
  std::vector<std::string> Tables;
  std::vector<TDataValidationRule> Rules;
  TAutoFilterState Filter;
  std::vector<std::pair<TText, TText>> Names;

  TPromisedState(const TWorkbook& ABook, int32_t ASheetIndex) {
    for (int32_t i = 0; i < ABook.SheetCount(); ++i) Cells.push_back(CellsOf(*ABook.GetSheet(i)));
    const TWorksheet& sheet = *ABook.GetSheet(ASheetIndex);
    Merges.assign(sheet.Merges().begin(), sheet.Merges().end());
    Sizes = SizesOf(sheet);
    for (const auto& table : sheet.Tables()) Tables.push_back(TableText(*table));
    Rules.assign(sheet.Validations().begin(), sheet.Validations().end());
    Filter = sheet.AutoFilter().CopyState();
    Names = ABook.CopyNamedFormulas();
  }

  /// Empty when all is the same.
  std::string DifferenceTo(const TPromisedState& AOther) const {
    if (Cells != AOther.Cells) return "cells" + CellDifference(AOther);
    if (Merges != AOther.Merges) return "merges";
    if (Sizes != AOther.Sizes) return "sizes: " + Sizes + " / " + AOther.Sizes;
    if (Tables != AOther.Tables) return "tables";
    if (Rules != AOther.Rules) return "validations";
    if (Filter != AOther.Filter) return "filter";
    return Names == AOther.Names ? "" : "names";
  }

 private:
  static std::vector<std::pair<TCellAddress, TCell>> CellsOf(const TWorksheet& ASheet) {
    std::vector<std::pair<TCellAddress, TCell>> cells;
    ASheet.Store().ForEachByRow({1, 1, kMaxCol, kMaxRow}, [&](int32_t ACol, int32_t ARow, const detail::TCellSlot&) {
      TCell cell = ASheet.GetCellAt(ACol, ARow);
      cell.ClearCachedResult();
      cells.emplace_back(TCellAddress{ACol, ARow}, std::move(cell));
    });
    return cells;
  }

  static std::string SizesOf(const TWorksheet& ASheet) {
    const TRowColSizing& sizing = ASheet.Sizing();
    std::string text = std::to_string(ASheet.FrozenRows()) + "," + std::to_string(ASheet.FrozenCols());
    for (const int32_t row : sizing.MarkedRows())
      text += " r" + std::to_string(row) + "=" + std::to_string(sizing.GetRowHeightPt(row)) + "," +
              std::to_string(sizing.IsRowHidden(row)) + "," + std::to_string(sizing.GetRowOutlineLevel(row));
    for (const int32_t col : sizing.MarkedCols())
      text += " c" + std::to_string(col) + "=" + std::to_string(sizing.GetColWidthChars(col)) + "," +
              std::to_string(sizing.IsColHidden(col)) + "," + std::to_string(sizing.GetColOutlineLevel(col));
    return text;
  }

  static std::string TableText(const TSheetTable& ATable) {
    std::string text = ATable.Name().ToUtf8() + " " + TText(ATable.Ref().ToA1()).ToUtf8();
    text += ATable.HasTotalsRow() ? " totals" : "";
    for (const TText& name : ATable.ColumnNames()) text += " " + name.ToUtf8();
    return text;
  }

  std::string CellDifference(const TPromisedState& AOther) const {
    for (size_t i = 0; i < std::min(Cells.size(), AOther.Cells.size()); ++i) {
      for (size_t k = 0; k < std::min(Cells[i].size(), AOther.Cells[i].size()); ++k) {
        const auto& [place, cell] = Cells[i][k];
        if (Cells[i][k] == AOther.Cells[i][k]) continue;
        return " of sheet " + std::to_string(i) + " at " + TText(place.ToA1()).ToUtf8() + " " +
               cell.Value.ToDisplayString().ToUtf8() + " / " + TText(AOther.Cells[i][k].first.ToA1()).ToUtf8() + " " +
               AOther.Cells[i][k].second.Value.ToDisplayString().ToUtf8();
      }
      if (Cells[i].size() != AOther.Cells[i].size()) return " of sheet " + std::to_string(i) + " by number";
    }
    return "";
  }
};

/// Carries out a script of edits that some bytes stand for, and watches what must hold after each.
class TRandomEditScript {
 public:
  explicit TRandomEditScript(std::span<const uint8_t> ABytes) : FDecide(ABytes), FEvaluator(FBook) {
    FBook.AddSheet(u"Other");
    for (int32_t row = 1; row <= 12; ++row) {
      FBook.GetSheet(0)->SetValue({1, row}, TCellValue::FromNumber(row));
      FBook.GetSheet(1)->SetValue({2, row}, TCellValue::FromFormula(u"=SUM(Sheet1!A1:A" + DigitsOf(row) + u")"));
    }
    FBook.SetNamedFormula(u"Total", u"=SUM(Sheet1!$A$1:$A$12)");
  }

  /// What went wrong, with the steps that led there; empty when nothing did.
  std::string Run() {
    for (int step = 0; step < kMaxSteps && FDecide.AreLeft() && FFailure.empty(); ++step) {
      FSheetIndex = static_cast<int32_t>(FDecide.Below(2));
      Step();
      Check();
    }
    return FFailure.empty() ? "" : FFailure + " after: " + FHistory;
  }

 private:
  static constexpr int kMaxSteps = 60;

  static std::u16string DigitsOf(int32_t ANumber) {
    const std::string digits = std::to_string(ANumber);
    return {digits.begin(), digits.end()};
  }

  TWorksheet& Sheet() { return *FBook.GetSheet(FSheetIndex); }

  void Note(const std::string& AStep) { FHistory += (FHistory.empty() ? "" : "; ") + AStep; }

  void Require(bool AHolds, const std::string& AWhat) {
    if (!AHolds && FFailure.empty()) FFailure = AWhat;
  }

  // ---- steps

  void Step() {
    using TStepProc = void (TRandomEditScript::*)();
    constexpr TStepProc kSteps[] = {
        &TRandomEditScript::EditCell,    &TRandomEditScript::EditCell,    &TRandomEditScript::Shift,
        &TRandomEditScript::Shift,       &TRandomEditScript::Shift,       &TRandomEditScript::Move,
        &TRandomEditScript::Undo,        &TRandomEditScript::Undo,        &TRandomEditScript::Redo,
        &TRandomEditScript::WriteCell,   &TRandomEditScript::ShiftDirect, &TRandomEditScript::Merge,
        &TRandomEditScript::EditTable,   &TRandomEditScript::AddRule,     &TRandomEditScript::SetNote,
        &TRandomEditScript::Fill,        &TRandomEditScript::Filter,      &TRandomEditScript::Sort,
        &TRandomEditScript::SetSize,     &TRandomEditScript::AddFormat,   &TRandomEditScript::SetName,
        &TRandomEditScript::Recalculate,
    };
    (this->*kSteps[FDecide.Below(static_cast<uint32_t>(std::size(kSteps)))])();
  }

  TCell RandomCell() {
    constexpr const char16_t* kFormulas[] = {u"=A1+1",          u"=SUM(A:A)",        u"=Other!B3*2", u"=TOTAL",
                                             u"=SEQUENCE(3,2)", u"= sum( $A$1:b4 )", u"=T1[#All]",   u"=Sheet1!A2:A5"};
    TCell cell;
    const uint32_t choice = FDecide.Below(16);
    if (choice < 8) {
      cell.Value = TCellValue::FromFormula(kFormulas[choice]);
    } else if (choice < 12) {
      cell.Value = TCellValue::FromNumber(choice);
    } else if (choice < 14) {
      cell.Value = TCellValue::FromText(u"text");
    }
    cell.HasFormatOverride = choice == 14;
    cell.FormatOverride.Font.Bold = choice == 14;
    return cell;
  }

  /// Executes a command as the next step of the undo manager. What it promises to restore must come back at once when
  /// it is undone, and what it has done when it is done again.
  template <class TRun>
  void RunAndTakeBack(const std::string& AStep, TRun&& ARun) {
    Note(AStep);
    Sheet().AutoFilter().SyncToTables(Sheet().Tables());  // as every structural edit does, taken back or not
    const TPromisedState before(FBook, FSheetIndex);
    const size_t steps = FBook.UndoManager().UndoCount();
    const bool wasFull = steps >= static_cast<size_t>(FBook.UndoManager().MaxLevels());
    ARun();
    if (FBook.UndoManager().UndoCount() == steps && !wasFull) return;
    const TPromisedState after(FBook, FSheetIndex);
    FBook.UndoManager().Undo();
    Require(before.DifferenceTo({FBook, FSheetIndex}).empty(),
            "undo leaves " + before.DifferenceTo({FBook, FSheetIndex}));
    FBook.UndoManager().Redo();
    Require(after.DifferenceTo({FBook, FSheetIndex}).empty(),
            "redo leaves " + after.DifferenceTo({FBook, FSheetIndex}));
  }

  void EditCell() {
    const TCellAddress place = FDecide.Place();
    const TCell cell = RandomCell();
    RunAndTakeBack("edit " + TText(place.ToA1()).ToUtf8() + " " + cell.Value.ToDisplayString().ToUtf8(), [&] {
      FBook.UndoManager().ExecuteCommand(
          std::make_shared<TCellEditCommand>(FBook, FSheetIndex, place, Sheet().GetCell(place), cell));
    });
  }

  void WriteCell() {
    const TCellAddress place = FDecide.Place();
    Note("write " + TText(place.ToA1()).ToUtf8());
    Sheet().SetCell(place, RandomCell());
  }

  void Shift() {
    const bool areRows = FDecide.Below(2) == 0;
    const bool isDelete = FDecide.Below(2) == 0;
    const int32_t limit = areRows ? kMaxRow : kMaxCol;
    const int32_t start = FDecide.Line(limit);
    const int32_t count = FDecide.Count(limit);
    RunAndTakeBack(LineText(isDelete ? "delete" : "insert", areRows, start, count), [&] {
      FBook.UndoManager().ExecuteCommand(
          std::make_shared<TRowColShiftCommand>(FBook, FSheetIndex, areRows, isDelete, start, count));
    });
  }

  void Move() {
    const bool areRows = FDecide.Below(2) == 0;
    const int32_t limit = areRows ? kMaxRow : kMaxCol;
    const int32_t start = FDecide.Line(limit);
    const int32_t count = FDecide.Count(limit);
    const int32_t dest = FDecide.Line(limit);
    RunAndTakeBack(LineText("move", areRows, start, count) + " before " + std::to_string(dest), [&] {
      FBook.UndoManager().ExecuteCommand(
          std::make_shared<TRowColMoveCommand>(FBook, FSheetIndex, areRows, start, count, dest));
    });
  }

  /// Past the undo manager, so that what it holds is out of step.
  void ShiftDirect() {
    const bool isDelete = FDecide.Below(2) == 0;
    const int32_t start = FDecide.Line(kMaxRow);
    const int32_t count = FDecide.Count(kMaxRow);
    Note("directly " + LineText(isDelete ? "delete" : "insert", true, start, count));
    (FBook.*(isDelete ? &TWorkbook::DeleteRows : &TWorkbook::InsertRows))(FSheetIndex, start, count);
  }

  std::string LineText(const char* AVerb, bool AAreRows, int32_t AStart, int32_t ACount) const {
    return std::string(AVerb) + (AAreRows ? " rows " : " columns ") + std::to_string(AStart) + " " +
           std::to_string(ACount) + " on " + std::to_string(FSheetIndex);
  }

  void Undo() {
    Note("undo");
    FBook.UndoManager().Undo();
  }
  void Redo() {
    Note("redo");
    FBook.UndoManager().Redo();
  }

  void Merge() {
    Note("merge");
    FBook.UndoManager().ExecuteCommand(
        std::make_shared<TMergeCommand>(FBook, FSheetIndex, FDecide.Range(), FDecide.Below(4) != 0));
  }

  void EditTable() {
    Note("table");
    TSheetTableList& tables = Sheet().Tables();
    if (tables.Count() > 1) return tables.RemoveAt(FDecide.Below(2));
    TSheetTable& table = tables.Add(tables.IsEmpty() ? u"T1" : u"T2", FDecide.Range());
    table.SetHasTotalsRow(FDecide.Below(2) == 0);
    Sheet().RefreshTableColumnNames();
    Sheet().AutoFilter().SyncToTables(tables);
  }

  void AddRule() {
    Note("validation");
    TDataValidationRule rule;
    rule.Ranges = {FDecide.Range(), FDecide.Range()};
    rule.ValidationType = FDecide.Below(2) == 0 ? dvtList : dvtWhole;
    rule.Formula1 = FDecide.Below(2) == 0 ? u"=Sheet1!$A$1:$A$9" : u"Q1,Q2";
    Sheet().Validations().AddRule(std::move(rule));
  }

  void SetNote() {
    Note("note");
    const TCellAddress place = FDecide.Place();
    Sheet().Comments().SetComment(place.Col, place.Row, u"me", FDecide.Below(4) == 0 ? u"" : u"note");
  }

  void Fill() {
    const TCellRange source = FDecide.Range();
    TCellRange dest = source;
    const auto more = static_cast<int32_t>(FDecide.Below(40));
    switch (FDecide.Below(4)) {
      case 0: dest.EndRow = std::min(kMaxRow, dest.EndRow + more); break;
      case 1: dest.StartRow = std::max(1, dest.StartRow - more); break;
      case 2: dest.EndCol = std::min(kMaxCol, dest.EndCol + more); break;
      default: dest.StartCol = std::max(1, dest.StartCol - more); break;
    }
    const bool copies = FDecide.Below(2) == 0;
    RunAndTakeBack("fill", [&] { TessarineApplyFill(&FBook, FSheetIndex, &Sheet(), source, dest, copies, u"Fill"); });
  }

  void Filter() {
    Note("filter");
    if (FDecide.Below(4) == 0) return DisableAutoFilter(Sheet());
    const TCellRange range = FDecide.Range();
    Sheet().AutoFilter().Enable(range);
    Sheet().AutoFilter().SetColumnValues(range.StartCol, {u"1", u"text"}, false);
    if (FDecide.Below(2) == 0) Sheet().AutoFilter().SetColumnContains(range.EndCol, u"1", true);
    Sheet().AutoFilter().SyncToTables(Sheet().Tables());
    ApplyAutoFilter(Sheet(), &FBook.StyleSheet());
  }

  void Sort() {
    const TCellRange range = FDecide.Range();
    const TSheetSortKey key{range.StartCol, FDecide.Below(2) == 0};
    const bool hasHeader = FDecide.Below(2) == 0;
    RunAndTakeBack("sort " + TText(range.ToA1()).ToUtf8(),
                   [&] { TessarineSortRange(&FBook, &Sheet(), range.ToA1(), hasHeader, std::span(&key, 1)); });
  }

  void SetSize() {
    Note("size");
    const TCellAddress place = FDecide.Place();
    TRowColSizing& sizing = Sheet().Sizing();
    switch (FDecide.Below(6)) {
      case 0: sizing.SetRowHeightPt(place.Row, 30); break;
      case 1: sizing.SetColWidthChars(place.Col, 3); break;
      case 2: sizing.SetRowHidden(place.Row, FDecide.Below(2) == 0); break;
      case 3: sizing.SetColHidden(place.Col, FDecide.Below(2) == 0); break;
      case 4: sizing.SetRowOutlineLevel(place.Row, static_cast<int32_t>(FDecide.Below(9))); break;
      default: Sheet().SetFrozenRows(place.Row); break;
    }
  }

  void AddFormat() {
    Note("conditional format");
    TConditionalFormatRule rule;
    rule.Ranges = {FDecide.Range()};
    rule.Operator = cfoGreaterThan;
    rule.Formula1 = u"3";
    rule.HasBold = rule.Bold = true;
    Sheet().ConditionalFormats().AddRule(std::move(rule));
  }

  void SetName() {
    Note("name");
    FBook.SetNamedFormula(FDecide.Below(2) == 0 ? u"total" : u"$Other_1",
                          FDecide.Below(2) == 0 ? u"=Sheet1!A1:A5" : u"");
  }

  void Recalculate() {
    Note("recalculate");
    FEvaluator.RecalculateAll();
  }

  // ---- what must hold at any time

  void Check() {
    for (int32_t i = 0; i < FBook.SheetCount(); ++i) {
      CheckCells(*FBook.GetSheet(i));
      CheckSpills(*FBook.GetSheet(i));
      CheckIndexes(*FBook.GetSheet(i));
    }
    CheckNames();
  }

  void CheckCells(const TWorksheet& ASheet) {
    Require(ASheet.UsedMaxCol() >= 1 && ASheet.UsedMaxCol() <= kMaxCol && ASheet.UsedMaxRow() >= 1 &&
                ASheet.UsedMaxRow() <= kMaxRow,
            "used bounds leave the sheet");
    size_t count = 0;
    ASheet.Store().ForEachByColumn([&](int32_t ACol, int32_t ARow, const detail::TCellSlot&) {
      ++count;
      Require(TCellAddress{ACol, ARow}.IsValid(), "a cell stands outside the sheet");
      Require(ACol <= ASheet.UsedMaxCol() && ARow <= ASheet.UsedMaxRow(), "a cell stands outside the used bounds");
      Require(!ASheet.GetCellAt(ACol, ARow).IsEmpty(), "an empty cell is stored");
    });
    Require(count == ASheet.Store().CellCount(), "cells are miscounted");
  }

  void CheckSpills(const TWorksheet& ASheet) {
    size_t count = 0;
    ASheet.Spills().ForEachSpill([&](const TSpillRange& ABlock) {
      ++count;
      Require(ABlock.EndCol >= ABlock.AnchorCol && ABlock.EndRow >= ABlock.AnchorRow, "a spilled block is turned over");
      Require(ASheet.Spills().TryGetSpill(ABlock.AnchorCol, ABlock.AnchorRow) == &ABlock,
              "a spilled block is not found");
      const TCellAddress last{ABlock.EndCol, ABlock.EndRow};
      const TCellValue* child = ASheet.Spills().FindChildValue(last.Col, last.Row);
      Require(child != nullptr, "a spilled block does not answer for its last cell");
      if (child && last.IsValid() && !ASheet.HasCell(last))
        Require(ASheet.GetEffectiveValue(last) == *child, "a spilled value is not seen in its cell");
    });
    Require(count == ASheet.Spills().Count(), "spilled blocks are miscounted");
  }

  /// Indexed questions against walks over the lists.
  void CheckIndexes(const TWorksheet& ASheet) {
    const TCellAddress places[] = {{1, 1}, {2, 3}, {3, 8}, {5, 12}, {8, 20}, {1, kMaxRow}, {kMaxCol, kMaxRow - 1}};
    for (const TCellAddress place : places) {
      Require(ASheet.Merges().FindContaining(place.Col, place.Row) ==
                  ASheet.Merges().FindContainingPlain(place.Col, place.Row),
              "merges are indexed wrongly");
      const TDataValidationRule* plain = nullptr;
      for (const TDataValidationRule& rule : ASheet.Validations())
        for (const TCellRange& range : rule.Ranges)
          if (!plain && range.ContainsAddress(place)) plain = &rule;
      Require(ASheet.Validations().FindRuleAt(place.Col, place.Row) == plain, "validations are indexed wrongly");
      TCellFormat fast;
      TCellFormat slow;
      const bool isFast = ASheet.ConditionalFormats().Evaluate(place.Col, place.Row, u"5", true, 5, fast);
      const bool isSlow = ASheet.ConditionalFormats().EvaluatePlain(place.Col, place.Row, u"5", true, 5, slow);
      Require(isFast == isSlow && fast == slow, "conditional formats are indexed wrongly");
    }
    Require(ASheet.Sizing().GetCumulativeRowHeightBefore(30, 96) ==
                ASheet.Sizing().GetCumulativeRowHeightBeforePlain(30, 96),
            "rows are measured wrongly");
  }

  void CheckNames() {
    const std::vector<TText> names = FBook.NamedFormulaNames();
    const auto formulas = FBook.CopyNamedFormulas();
    Require(std::is_sorted(names.begin(), names.end()), "names are not sorted");
    Require(names.size() == formulas.size() && FBook.HasNamedFormulas() == !names.empty(), "names are miscounted");
    for (const auto& [name, formula] : formulas) {
      const TText* found = FBook.FindNormalizedName(TWorkbook::NormalizeName(name));
      Require(found && *found == formula, "a name is not found");
    }
  }

  TDecisions FDecide;
  TWorkbook FBook;
  TFormulaEvaluator FEvaluator;
  int32_t FSheetIndex = 0;
  std::string FHistory;
  std::string FFailure;
};

}  // namespace tessarine::testing
