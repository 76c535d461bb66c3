#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include <tessarine/core/values/CellValue.h>
#include <tessarine/formula/library/detail/LongTexts.h>

/// What sorting needs of its keys, made so that many keys with the same long text cost no more than short ones.
namespace tessarine::detail {

/// A key's display text. Long texts, which many keys may share, are compared with one another once and have ranks in
/// their order, from 1 on; short ones have rank 0.
struct TSortText {
  std::u16string_view Text;
  uint32_t Rank = 0;
};

/// By units, without regard to ASCII case.
int CompareSortTexts(const TSortText& ALeft, const TSortText& ARight);

/// The texts of all keys. Those of numbers stand in AMade.
std::vector<TSortText> SortTextsOf(std::span<const TValueView> AKeys, std::vector<TText>& AMade);

/// The numbers that keys stand for; a long text is read once.
class TKeyNumbers {
 public:
  std::optional<double> NumberOf(const TValueView& AKey);

 private:
  TLongTextMemo<std::optional<double>> FLong;
};

/// Texts behind what all of them begin with, cut into a key of 8 bytes that sorts as they do. A missing unit counts as
/// U+0000, so equal keys only mean equal texts when IsWhole().
class TTextKeys {
 public:
  explicit TTextKeys(std::span<const TSortText> ATexts);

  /// Whether nothing of any text is left out of its key.
  bool IsWhole() const { return FWhole; }

  uint64_t KeyOf(uint32_t APosition) const;

 private:
  size_t SharedUnits(std::u16string_view AFirst, const TSortText& AText) const;

  std::span<const TSortText> FTexts;
  size_t FSkip = 0;  // units that all texts share, case folded
  bool FNarrow = false;
  bool FWhole = false;
};

}  // namespace tessarine::detail
