#include <tessarine/core/lists/CellComments.h>

#include <algorithm>
#include <limits>
#include <utility>

#include <tessarine/core/lists/detail/SlidLine.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

void TCellCommentList::SetComment(int32_t ACol, int32_t ARow, TText AAuthor, TText AText) {
  if (TrimSpaces(AText).empty()) {
    ClearComment(ACol, ARow);
  } else {
    FItems.insert_or_assign({ARow, ACol}, TCellComment::Create(std::move(AAuthor), std::move(AText)));
  }
}

const TCellComment* TCellCommentList::Find(int32_t ACol, int32_t ARow) const {
  const auto found = FItems.find({ARow, ACol});
  return found == FItems.end() ? nullptr : &found->second;
}

std::vector<std::u16string> TCellCommentList::GetKeys() const {
  std::vector<std::u16string> keys;
  keys.reserve(FItems.size());
  ForEach([&](TCellAddress AAddress, const TCellComment&) { keys.push_back(AAddress.ToKey()); });
  return keys;
}

const TCellComment* TCellCommentList::FindByKey(std::u16string_view AKey) const {
  const TCellAddress address = TCellAddress::FromKey(AKey);
  return Find(address.Col, address.Row);
}

/// Gives every note the line that ANewIndex(line) names; without one in 1 to 2^31 - 1 it goes, and so does a note that
/// stood above or left of the sheet.
template <class TNewIndex>
void TCellCommentList::Replace(TShiftAxis AAxis, TNewIndex&& ANewIndex) {
  for (auto& [place, comment] : std::exchange(FItems, {})) {
    TPlace moved = place;
    int32_t& line = AAxis == saRows ? moved.first : moved.second;
    const int64_t index = ANewIndex(int64_t{line});
    if (index < 1 || index > std::numeric_limits<int32_t>::max()) continue;
    line = static_cast<int32_t>(index);
    if (std::min(moved.first, moved.second) < 1) continue;
    FItems.insert_or_assign(moved, std::move(comment));
  }
}

void TCellCommentList::Shift(TShiftAxis AAxis, int64_t AStart, int64_t ADelta) {
  if (ADelta == 0) return;
  Replace(AAxis, [&](int64_t ALine) { return int64_t{detail::SlidLine(static_cast<int32_t>(ALine), AStart, ADelta)}; });
}

void TCellCommentList::Move(TShiftAxis AAxis, int64_t AStart, int64_t ACount, int64_t ADest) {
  if (ACount < 1 || AStart == ADest) return;
  Replace(AAxis, [&](int64_t ALine) { return MoveIndex(ALine, AStart, ACount, ADest); });
}

}  // namespace tessarine
