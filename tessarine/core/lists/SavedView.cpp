#include <tessarine/core/lists/SavedView.h>

#include <algorithm>
#include <utility>

#include <tessarine/platform/Unicode.h>

namespace tessarine {

void TSheetSavedView::Clear() { *this = TSheetSavedView{}; }

void TSheetSavedView::AssignFrom(std::vector<TCellRange> ASelectionRanges, int32_t AActiveCol, int32_t AActiveRow,
                                 int32_t ATopLeftCol, int32_t ATopLeftRow, bool ATabSelected) {
  HasView = true;
  ActiveCol = AActiveCol;
  ActiveRow = AActiveRow;
  TopLeftCol = ATopLeftCol;
  TopLeftRow = ATopLeftRow;
  TabSelected = ATabSelected;
  SelectionRanges = std::move(ASelectionRanges);
}

std::vector<TCellRange> TSheetSavedView::ParseSqref(std::u16string_view AText) {
  std::vector<TCellRange> ranges;
  while (!AText.empty()) {
    const size_t blank = std::min(AText.find(u' '), AText.size());
    const std::u16string_view piece = TrimSpaces(AText.substr(0, blank));
    AText.remove_prefix(std::min(blank + 1, AText.size()));
    if (piece.empty()) continue;
    const TCellRange range = TCellRange::FromA1(piece);
    if (range.StartCol >= 1 && range.StartRow >= 1) ranges.push_back(range);
  }
  return ranges;
}

std::u16string TSheetSavedView::FormatSqref(const std::vector<TCellRange>& ARanges) {
  std::u16string text;
  for (const TCellRange& range : ARanges) {
    if (!text.empty()) text += u' ';
    text += range.Normalize().ToA1();
  }
  return text;
}

}  // namespace tessarine
