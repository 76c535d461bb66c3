#include <tessarine/formula/library/detail/SortTexts.h>

#include <algorithm>
#include <numeric>
#include <string>

#include <tessarine/core/values/Coercion.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

/// The rank of each text among all of them; texts that compare as equal have one rank.
std::vector<uint32_t> RanksOf(std::span<const std::u16string_view> ATexts) {
  std::vector<uint32_t> order(ATexts.size());
  std::iota(order.begin(), order.end(), 0u);
  std::sort(order.begin(), order.end(),
            [&](uint32_t ALeft, uint32_t ARight) { return CompareAsciiNoCase(ATexts[ALeft], ATexts[ARight]) < 0; });
  std::vector<uint32_t> ranks(ATexts.size());
  uint32_t rank = 0;
  for (size_t i = 0; i < order.size(); ++i) {
    if (i == 0 || !EqualAsciiNoCase(ATexts[order[i - 1]], ATexts[order[i]])) ++rank;
    ranks[order[i]] = rank;
  }
  return ranks;
}

}  // namespace

int CompareSortTexts(const TSortText& ALeft, const TSortText& ARight) {
  if (ALeft.Rank != 0 && ARight.Rank != 0) return ALeft.Rank < ARight.Rank ? -1 : ALeft.Rank > ARight.Rank ? 1 : 0;
  return CompareAsciiNoCase(ALeft.Text, ARight.Text);
}

std::vector<TSortText> SortTextsOf(std::span<const TValueView> AKeys, std::vector<TText>& AMade) {
  std::vector<TSortText> texts(AKeys.size());
  TLongTextMemo<uint32_t> numbers;
  std::vector<std::u16string_view> longTexts;
  std::u16string buffer;
  for (size_t i = 0; i < AKeys.size(); ++i) {
    const TValueView& key = AKeys[i];
    if (key.Kind == cvkNumber) {
      AMade.emplace_back(DisplayView(key, buffer));
      texts[i].Text = AMade.back().View();
      continue;
    }
    texts[i].Text = DisplayView(key, buffer);  // stands somewhere
    if (!IsLongText(key)) continue;
    texts[i].Rank = numbers.Of(key, [&] {
      longTexts.push_back(key.Text());
      return static_cast<uint32_t>(longTexts.size());
    });
  }
  if (longTexts.empty()) return texts;
  const std::vector<uint32_t> ranks = RanksOf(longTexts);
  for (TSortText& text : texts) {
    if (text.Rank != 0) text.Rank = ranks[text.Rank - 1];
  }
  return texts;
}

std::optional<double> TKeyNumbers::NumberOf(const TValueView& AKey) {
  const auto read = [&]() -> std::optional<double> {
    double number = 0;
    if (AsNumber(AKey, number)) return number;
    return std::nullopt;
  };
  return IsLongText(AKey) ? FLong.Of(AKey, read) : read();
}

TTextKeys::TTextKeys(std::span<const TSortText> ATexts) : FTexts(ATexts) {
  const std::u16string_view first = ATexts.front().Text;
  FSkip = first.size();
  for (const TSortText& text : ATexts) FSkip = SharedUnits(first, text);
  size_t longest = 0;
  char16_t units = 0;  // all units' bits together
  bool hasNul = false;
  for (const TSortText& text : ATexts) {
    longest = std::max(longest, text.Text.size() - FSkip);
    for (const char16_t unit : text.Text.substr(FSkip, 8)) {
      units |= unit;
      hasNul = hasNul || unit == 0;
    }
  }
  FNarrow = units < 0x100;  // eight units of a byte, else four of two
  FWhole = !hasNul && longest <= (FNarrow ? 8 : 4);
}

uint64_t TTextKeys::KeyOf(uint32_t APosition) const {
  const std::u16string_view text = FTexts[APosition].Text.substr(FSkip);
  uint64_t key = 0;
  for (size_t i = 0; i < (FNarrow ? 8u : 4u); ++i) {
    key = key << (FNarrow ? 8 : 16) | (i < text.size() ? AsciiUpper(text[i]) : 0u);
  }
  return key;
}

/// How much of FSkip units the text shares with the first one. What they share beyond kLongText is found only where
/// they are the same: it need not be all, and every text is asked.
size_t TTextKeys::SharedUnits(std::u16string_view AFirst, const TSortText& AText) const {
  const size_t most = std::min(FSkip, AText.Text.size());
  if (AText.Rank != 0 && AText.Rank == FTexts.front().Rank) return most;
  size_t same = 0;
  while (same < std::min(most, kLongText) && AsciiUpper(AText.Text[same]) == AsciiUpper(AFirst[same])) ++same;
  return same;
}

}  // namespace tessarine::detail
