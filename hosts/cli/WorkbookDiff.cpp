#include <hosts/cli/WorkbookDiff.h>

#include <algorithm>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include <hosts/cli/CellJson.h>
#include <hosts/cli/Features.h>
#include <hosts/cli/Phrase.h>
#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/format/Theme.h>
#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/platform/Progress.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::cli {

namespace {

using TTell = std::function<void(const TDifference& ADifference)>;

TDiffSide TextSide(const std::string& AText) { return TCellValue::FromText(TText::FromUtf8(AText)); }

TDiffSide ValueSide(const TValueView& AValue) { return AValue.IsEmpty() ? TDiffSide() : TCellValue::FromView(AValue); }

bool AreEqual(const TValueView& AFirst, const TValueView& ASecond) {
  if (AFirst.Kind != ASecond.Kind) return false;
  switch (AFirst.Kind) {
    case cvkEmpty: return true;
    case cvkNumber: return AFirst.Number == ASecond.Number;
    case cvkBoolean: return AFirst.BooleanValue == ASecond.BooleanValue;
    case cvkError: return AFirst.ErrorCode == ASecond.ErrorCode;
    case cvkText:
    case cvkFormula: return AFirst.Text() == ASecond.Text();
  }
  return false;
}

/// A cell of one of the workbooks, read where it stands.
struct TCellReader {
  const TWorkbook& Workbook;
  const TWorksheet& Sheet;

  const detail::TCellSlot* Slot(TCellAddress AAddress) const { return Sheet.Store().Find(AAddress.Col, AAddress.Row); }
  /// A formula's source, the place of the formula that lays a value over the cell, or nothing.
  std::string Formula(TCellAddress AAddress, const detail::TCellSlot* ASlot) const {
    if (ASlot && ASlot->Kind == cvkFormula) return Sheet.GetCell(AAddress).Value.Text.ToUtf8();
    const TSpillRange* block = Sheet.Spills().FindChildBlock(AAddress.Col, AAddress.Row);
    return block ? "spilled from " + A1Text(TCellAddress{block->AnchorCol, block->AnchorRow}) : std::string();
  }
  const detail::TCellExtras* Extras(TCellAddress AAddress, const detail::TCellSlot* ASlot) const {
    return ASlot && ASlot->HasExtras() ? Sheet.Store().FindExtras(AAddress.Col, AAddress.Row) : nullptr;
  }
  const TCellFormat& Format(TCellAddress AAddress, const detail::TCellSlot* ASlot) const {
    const detail::TCellExtras* extras = Extras(AAddress, ASlot);
    if (extras && extras->Override) return *extras->Override;
    return Workbook.StyleSheet().GetCellXf(ASlot ? ASlot->StyleIndex : 0);
  }
  const TRichTextRuns* Runs(TCellAddress AAddress, const detail::TCellSlot* ASlot) const {
    const detail::TCellExtras* extras = Extras(AAddress, ASlot);
    return extras && extras->Runs && !extras->Runs->empty() ? extras->Runs.get() : nullptr;
  }
};

std::string RunsText(const TRichTextRuns* ARuns) {
  std::string text;
  if (!ARuns) return text;
  for (const TRichTextRun& run : *ARuns) {
    TCellFormat format;
    format.Font = run.Font;
    text += (text.empty() ? "" : " | ") + run.Text.ToUtf8() + " (" + FormatText(format) + ")";
  }
  return text;
}

/// Compares the cells of two sheets.
class TCellDiff {
 public:
  TCellDiff(const TCellReader& AFirst, const TCellReader& ASecond, const TTell& ATell)
      : FFirst(AFirst), FSecond(ASecond), FTell(ATell) {}

  int64_t Run(const TWorkControl& AControl) {
    int64_t cells = 0;
    size_t visited = 0;
    for (const uint64_t place : Places()) {
      if (++visited % 4096 == 0) AControl.CheckStop();
      cells += Compare({static_cast<int32_t>(place & 0xFFFFFFFFu), static_cast<int32_t>(place >> 32)}) ? 1 : 0;
    }
    return cells;
  }

 private:
  /// The cells that either sheet shows or stores, row by row.
  std::vector<uint64_t> Places() const {
    std::vector<uint64_t> places;
    for (const TCellReader* side : {&FFirst, &FSecond}) {
      const size_t middle = places.size();
      ForEachShownCell(side->Sheet, {1, 1, kMaxCol, kMaxRow}, [&](TCellAddress AAddress) {
        places.push_back(static_cast<uint64_t>(AAddress.Row) << 32 | static_cast<uint32_t>(AAddress.Col));
      });
      std::inplace_merge(places.begin(), places.begin() + static_cast<ptrdiff_t>(middle), places.end());
    }
    places.erase(std::unique(places.begin(), places.end()), places.end());
    return places;
  }

  bool Compare(TCellAddress AAddress) {
    const detail::TCellSlot* first = FFirst.Slot(AAddress);
    const detail::TCellSlot* second = FSecond.Slot(AAddress);
    bool differs = false;
    const auto tell = [&](const char* AWhat, TDiffSide AFirst, TDiffSide ASecond) {
      FTell({FFirst.Sheet.Name().ToUtf8(), AWhat, A1Text(AAddress), std::move(AFirst), std::move(ASecond)});
      differs = true;
    };
    const TValueView firstValue = FFirst.Sheet.EffectiveView(AAddress.Col, AAddress.Row);
    const TValueView secondValue = FSecond.Sheet.EffectiveView(AAddress.Col, AAddress.Row);
    if (!AreEqual(firstValue, secondValue)) tell("value", ValueSide(firstValue), ValueSide(secondValue));
    const auto textSide = [](const std::string& AText) { return AText.empty() ? TDiffSide() : TextSide(AText); };
    const std::string firstText = FFirst.Formula(AAddress, first);
    const std::string secondText = FSecond.Formula(AAddress, second);
    if (firstText != secondText) tell("formula", textSide(firstText), textSide(secondText));
    if (!HaveEqualFormats(AAddress, first, second))
      tell("format", TextSide(FormatText(FFirst.Format(AAddress, first))),
           TextSide(FormatText(FSecond.Format(AAddress, second))));
    const TRichTextRuns* firstRuns = FFirst.Runs(AAddress, first);
    const TRichTextRuns* secondRuns = FSecond.Runs(AAddress, second);
    if (firstRuns || secondRuns) {
      if (!firstRuns || !secondRuns || *firstRuns != *secondRuns)
        tell("runs", textSide(RunsText(firstRuns)), textSide(RunsText(secondRuns)));
    }
    return differs;
  }

  bool HaveEqualFormats(TCellAddress AAddress, const detail::TCellSlot* AFirst, const detail::TCellSlot* ASecond) {
    const auto areEqual = [&] { return FFirst.Format(AAddress, AFirst) == FSecond.Format(AAddress, ASecond); };
    if ((AFirst && AFirst->HasExtras()) || (ASecond && ASecond->HasExtras())) return areEqual();
    const auto styleOf = [](const detail::TCellSlot* ASlot) {
      return static_cast<uint32_t>(ASlot ? ASlot->StyleIndex : 0);
    };
    const auto [known, isNew] = FEqualStyles.try_emplace(uint64_t{styleOf(AFirst)} << 32 | styleOf(ASecond), false);
    if (isNew) known->second = areEqual();
    return known->second;
  }

  const TCellReader& FFirst;
  const TCellReader& FSecond;
  const TTell& FTell;
  std::unordered_map<uint64_t, bool> FEqualStyles;  // by the two style indexes
};

// ---- features

bool IsOrdered(const std::string& AKind) {
  return AKind == "conditional format" || AKind == "validation" || AKind == "chart" || AKind == "picture" ||
         AKind == "shape";
}

/// Those of a kind whose order counts, in their order.
std::vector<std::string> OrderOf(const std::vector<TFeature>& AFeatures) {
  std::vector<std::string> names;
  for (const TFeature& feature : AFeatures)
    if (IsOrdered(feature.Kind)) names.push_back(feature.Kind + " " + feature.Name);
  return names;
}

std::string Joined(const std::vector<std::string>& ATexts) {
  std::string text;
  for (const std::string& item : ATexts) text += (text.empty() ? "" : "; ") + item;
  return text;
}

int64_t DiffFeatures(const std::string& ASheet, std::vector<TFeature> AFirst, std::vector<TFeature> ASecond,
                     const TTell& ATell) {
  int64_t count = 0;
  const auto tell = [&](const TFeature& AFeature, TDiffSide AOne, TDiffSide AOther) {
    ATell({ASheet, AFeature.Kind, AFeature.Name, std::move(AOne), std::move(AOther)});
    ++count;
  };
  const std::vector<std::string> firstOrder = OrderOf(AFirst);
  const std::vector<std::string> secondOrder = OrderOf(ASecond);
  const auto isBefore = [](const TFeature& ALeft, const TFeature& ARight) {
    return std::tie(ALeft.Kind, ALeft.Name) < std::tie(ARight.Kind, ARight.Name);
  };
  std::stable_sort(AFirst.begin(), AFirst.end(), isBefore);
  std::stable_sort(ASecond.begin(), ASecond.end(), isBefore);
  auto first = AFirst.begin();
  auto second = ASecond.begin();
  while (first != AFirst.end() || second != ASecond.end()) {
    if (second == ASecond.end() || (first != AFirst.end() && isBefore(*first, *second))) {
      tell(*first, TextSide(first->Text), {});
      ++first;
    } else if (first == AFirst.end() || isBefore(*second, *first)) {
      tell(*second, {}, TextSide(second->Text));
      ++second;
    } else {
      if (first->Text != second->Text) tell(*first, TextSide(first->Text), TextSide(second->Text));
      ++first;
      ++second;
    }
  }
  if (count == 0 && firstOrder != secondOrder)
    tell({"order", "", ""}, TextSide(Joined(firstOrder)), TextSide(Joined(secondOrder)));
  return count;
}

/// A drawing without what is only its file's way of putting it.
TSheetDrawing Comparable(TSheetDrawing ADrawing) {
  ADrawing.ChartSpaceXml.clear();
  ADrawing.ChartStyleXml.clear();
  ADrawing.ChartColorsXml.clear();
  ADrawing.ZOrder = 0;
  return ADrawing;
}

/// What the words about drawings leave out; only where they have found no difference.
int64_t DiffDrawings(const TWorksheet& AFirst, const TWorksheet& ASecond, const TTell& ATell) {
  int64_t count = 0;
  for (int32_t i = 0; i < AFirst.Drawings().Count() && i < ASecond.Drawings().Count(); ++i) {
    const TSheetDrawing first = Comparable(*AFirst.Drawings().GetItem(i));
    const TSheetDrawing second = Comparable(*ASecond.Drawings().GetItem(i));
    if (first == second) continue;
    const std::string name = first.Name.IsEmpty() ? std::to_string(i + 1) : first.Name.ToUtf8();
    ATell({AFirst.Name().ToUtf8(), "drawing", name, TextSide("(details)"), TextSide("(other details)")});
    ++count;
  }
  return count;
}

int64_t DiffSheetFeatures(const TCellReader& AFirst, const TCellReader& ASecond, const TTell& ATell) {
  const std::string name = AFirst.Sheet.Name().ToUtf8();
  const int64_t told =
      DiffFeatures(name, FeaturesOf(AFirst.Workbook, AFirst.Sheet), FeaturesOf(ASecond.Workbook, ASecond.Sheet), ATell);
  return told + (told == 0 ? DiffDrawings(AFirst.Sheet, ASecond.Sheet, ATell) : 0) +
         DiffFeatures(name, SettingsOf(AFirst.Sheet), SettingsOf(ASecond.Sheet), ATell);
}

std::vector<std::string> SheetNames(const TWorkbook& AWorkbook) {
  std::vector<std::string> names;
  names.reserve(static_cast<size_t>(AWorkbook.SheetCount()));
  for (int32_t i = 0; i < AWorkbook.SheetCount(); ++i) names.push_back(AWorkbook.GetSheet(i)->Name().ToUtf8());
  return names;
}

/// Sheets as features of the workbook: their names, and the order when all names are the same.
int64_t DiffSheetLists(const TWorkbook& AFirst, const TWorkbook& ASecond, const TTell& ATell) {
  const auto sheetsOf = [](const TWorkbook& AWorkbook) {
    std::vector<TFeature> features;
    for (std::string& name : SheetNames(AWorkbook)) features.push_back({"sheet", std::move(name), ""});
    return features;
  };
  const int64_t count = DiffFeatures("", sheetsOf(AFirst), sheetsOf(ASecond), ATell);
  if (count > 0 || SheetNames(AFirst) == SheetNames(ASecond)) return count;
  ATell({"", "order of sheets", "", TextSide(Joined(SheetNames(AFirst))), TextSide(Joined(SheetNames(ASecond)))});
  return 1;
}

}  // namespace

TDiffCounts DiffWorkbooks(const TWorkbook& AFirst, const TWorkbook& ASecond, const TWorkControl& AControl,
                          const TTell& ATell) {
  TDiffCounts counts;
  counts.Features += DiffSheetLists(AFirst, ASecond, ATell);
  counts.Features += DiffFeatures("", FeaturesOf(AFirst), FeaturesOf(ASecond), ATell);
  if (!(AFirst.Theme() == ASecond.Theme())) {
    ATell({"", "theme", "", TextSide("(details)"), TextSide("(other details)")});
    ++counts.Features;
  }
  const bool areAlone = AFirst.SheetCount() == 1 && ASecond.SheetCount() == 1;
  for (int32_t i = 0; i < AFirst.SheetCount(); ++i) {
    const TWorksheet& sheet = *AFirst.GetSheet(i);
    const TWorksheet* other = areAlone ? ASecond.GetSheet(0) : ASecond.FindSheet(sheet.Name());
    if (!other) continue;
    const TCellReader first{AFirst, sheet};
    const TCellReader second{ASecond, *other};
    counts.Cells += TCellDiff(first, second, ATell).Run(AControl);
    counts.Features += DiffSheetFeatures(first, second, ATell);
  }
  return counts;
}

}  // namespace tessarine::cli
