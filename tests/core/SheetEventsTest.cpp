#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>

#include "../support/SheetFixture.h"
#include "ListCases.h"

namespace tessarine {
namespace {

using test::Shown;
using test::TCase;
using testing::NotationOf;

/// A workbook whose first sheet is written to, with what it and the sheet have told.
struct TWatched {
  TWorkbook Book;
  TWorksheet& Sheet = *Book.GetSheet(0);
  std::vector<std::string> Told;
  int Fired = 0;
  uint64_t LastNames = Book.NamesVersion();
  uint64_t LastBounds = Sheet.BoundsVersion();

  void Watch() {
    Book.SetOnModified([this](TWorkbook& ASender) {
      EXPECT_EQ(&ASender, &Book);
      EXPECT_TRUE(Book.IsModified());
      ++Fired;
    });
  }
  void Listen() {
    Sheet.SetOnChange([this](TWorksheet& ASender, TCellAddress AAddress, const TCell& AOld, const TCell& ANew) {
      EXPECT_EQ(&ASender, &Sheet);
      Told.push_back(Shown(AAddress) + ":" + Shown(AOld.Value.ToDisplayString()) + ">" +
                     Shown(ANew.Value.ToDisplayString()) + (ANew.HasCachedValue ? " = " : "") +
                     Shown(ANew.CachedValue.ToDisplayString()));
    });
  }
  void Set(TCellAddress A, std::string AContent) { Sheet.SetValue(A, testing::ContentOf(AContent)); }
  void Put(TCellAddress A, std::string AContent) { Sheet.SetCell(A, CellOf(testing::ContentOf(AContent))); }
  static TCell CellOf(const TCellValue& AValue) {
    TCell cell;
    cell.Value = AValue;
    return cell;
  }
  void Store(TCellAddress A, std::string AContent) { Sheet.StoreCachedResult(A, testing::ContentOf(AContent)); }
  void PutStyle(TCellAddress A, int32_t AStyle) {
    TCell cell;
    cell.StyleIndex = AStyle;
    Sheet.SetCell(A, cell);
  }
  void PutRuns(TCellAddress A) {
    TCell runs;
    runs.RichText = {{u"x", {}}};
    Sheet.SetCell(A, runs);
  }
  /// A constant with a result.
  void PutOdd(TCellAddress A, double AValue, double AResult) {
    TCell odd = CellOf(TCellValue::FromNumber(AValue));
    odd.SetCachedResult(TCellValue::FromNumber(AResult));
    Sheet.SetCell(A, odd);
  }
  void Spill(TCellAddress A, int64_t ARows, int64_t ACols) {
    std::vector<TCellValue> values;
    for (int64_t i = 1; i <= ARows * ACols; ++i) values.push_back(TCellValue::FromNumber(static_cast<double>(i)));
    Sheet.Spills().SetSpill(A.Col, A.Row, ARows, ACols, std::move(values));
  }
  std::string Result(TCellAddress A) const { return NotationOf(Sheet.GetCell(A).CachedValue); }
  std::string Seen(TCellAddress A) const { return NotationOf(Sheet.GetEffectiveValue(A)); }
  std::string Active() const {
    const TWorksheet* sheet = Book.ActiveSheet();
    return std::to_string(Book.ActiveSheetIndex()) + " " + (sheet ? Shown(sheet->Name()) : "none");
  }
  void ShowSheet(int32_t AIndex, std::string AState) {
    Book.SetSheetVisibility(AIndex, AState == "visible" ? svVisible : AState == "hidden" ? svHidden : svVeryHidden);
  }
  std::string Named(std::u16string_view AName) const {
    const auto formula = Book.FindNamedFormula(AName);
    return formula ? Shown(*formula) : "none";
  }
  bool NamesChanged() { return std::exchange(LastNames, Book.NamesVersion()) != Book.NamesVersion(); }
  bool BoundsChanged() { return std::exchange(LastBounds, Sheet.BoundsVersion()) != Sheet.BoundsVersion(); }
  std::string Bounds() const { return std::to_string(Sheet.UsedMaxCol()) + "," + std::to_string(Sheet.UsedMaxRow()); }
  void Freeze(int32_t ARows, int32_t ACols) { Sheet.SetFrozenRows(ARows), Sheet.SetFrozenCols(ACols); }
  std::string Frozen() const { return std::to_string(Sheet.FrozenRows()) + "," + std::to_string(Sheet.FrozenCols()); }
  std::string Span(TCellAddress A) const {
    const auto found = Sheet.GetMergeSpan(A.Col, A.Row);
    return (found.IsAnchor ? "anchor " : "") + std::to_string(found.RowSpan) + " " + std::to_string(found.ColSpan);
  }
};

TEST(Workbooks, ExamplesHold) {
  using T = TWatched;
  const std::map<std::string, test::TStepWork<T>> steps = {
      // clang-format off
      {"watch", &T::Watch}, {"listen", &T::Listen}, {"set", &T::Set}, {"put", &T::Put}, {"store", &T::Store},
      {"put-style", &T::PutStyle}, {"put-runs", &T::PutRuns}, {"put-odd", &T::PutOdd}, {"spill", &T::Spill},
      {"result", &T::Result}, {"seen", &T::Seen}, {"active", &T::Active}, {"show-sheet", &T::ShowSheet},
      {"named", &T::Named}, {"names-changed", &T::NamesChanged}, {"bounds", &T::Bounds},
      {"bounds-changed", &T::BoundsChanged}, {"freeze", &T::Freeze}, {"frozen", &T::Frozen}, {"span", &T::Span},
      {"fired", [](T& W, const TCase&) { return W.Fired; }}, {"told", [](T& W, const TCase&) { return W.Told; }},
      {"unwatch", [](T& W, const TCase&) { return W.Book.SetOnModified({}); }},
      {"unlisten", [](T& W, const TCase&) { return W.Sheet.SetOnChange({}); }},
      {"mute", [](T& W, const TCase&) { return W.Sheet.MuteOnChange(); }},
      {"note-bulk", [](T& W, const TCase&) { return W.Sheet.NoteBulkChange(); }},
      {"is-unobserved", [](T& W, const TCase&) { return W.Sheet.ChangesAreUnobserved(); }},
      {"is-modified", [](T& W, const TCase&) { return W.Book.IsModified(); }},
      {"clear-modified", [](T& W, const TCase&) { return W.Book.ClearModified(); }},
      {"begin", [](T& W, const TCase&) { return W.Book.BeginUpdate(); }},
      {"is-updating", [](T& W, const TCase&) { return W.Book.IsUpdating(); }},
      {"end", [](T& W, const TCase&) { return W.Book.EndUpdate(); }},
      {"add", [](T& W, const TCase& C) { return void(W.Book.AddSheet(C.Text(1))); }},
      {"remove", [](T& W, const TCase& C) { return W.Book.RemoveSheet(C.Int(1)); }},
      {"activate", [](T& W, const TCase& C) { return W.Book.SetActiveSheetIndex(C.Int(1)); }},
      {"ensure-visible", [](T& W, const TCase&) { return W.Book.EnsureActiveSheetVisible(); }},
      {"first-visible", [](T& W, const TCase&) { return W.Book.FirstVisibleSheetIndex(); }},
      {"visible-count", [](T& W, const TCase&) { return W.Book.VisibleSheetCount(); }},
      {"define", [](T& W, const TCase& C) { return W.Book.SetNamedFormula(C.Text(1), C.Text(2)); }},
      {"names", [](T& W, const TCase&) { return W.Book.NamedFormulaNames(); }},
      {"clear-names", [](T& W, const TCase&) { return W.Book.ClearNamedFormulas(); }},
      {"has-normalized", [](T& W, const TCase& C) { return W.Book.FindNormalizedName(C.Text(1)) != nullptr; }},
      {"web-put", [](T& W, const TCase& C) { return W.Book.PutWebCache(C.Text(1), C.Text(2)); }},
      {"web", [](T& W, const TCase& C) { return W.Book.TryGetWebCache(C.Text(1)); }},
      {"clear-web", [](T& W, const TCase&) { return W.Book.ClearWebCache(); }},
      {"clear", [](T& W, const TCase& C) { return W.Sheet.ClearCell(test::CaseArgument<TCellAddress>(C, 1)); }},
      {"has-cell", [](T& W, const TCase& C) { return W.Sheet.HasCell(test::CaseArgument<TCellAddress>(C, 1)); }},
      {"clear-cells", [](T& W, const TCase&) { return W.Sheet.ClearCells(); }},
      {"count-bounds", [](T& W, const TCase&) { return W.Sheet.RecalcUsedBounds(); }},
      {"stretch", [](T& W, const TCase& C) { return W.Sheet.ExpandUsedBounds(C.Int(1), C.Int(2)); }},
      {"link", [](T& W, const TCase& C) { return W.Sheet.SetHyperlink(C.Int(1), C.Int(2), C.Text(3)); }},
      {"unlink", [](T& W, const TCase& C) { return W.Sheet.ClearHyperlink(C.Int(1), C.Int(2)); }},
      {"link-at", [](T& W, const TCase& C) { return W.Sheet.FindHyperlink(C.Int(1), C.Int(2)); }},
      {"merge", [](T& W, const TCase& C) { return W.Sheet.MergeRange(test::CaseArgument<TCellRange>(C, 1)); }},
      {"unmerge", [](T& W, const TCase& C) { return W.Sheet.UnmergeAt(C.Int(1), C.Int(2)); }},
      {"merge-count", [](T& W, const TCase&) { return W.Sheet.Merges().Count(); }},
      // clang-format on
  };
  test::ExpectDialogues<T>("core/workbooks.tsv", steps);
}

}  // namespace
}  // namespace tessarine
