#pragma once

#include <cstddef>
#include <functional>
#include <string_view>
#include <vector>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/values/CellValue.h>

namespace tessarine::detail {

/// Texts of more units than this are hashed, parsed or compared once each and not once for every cell that shares them:
/// cells are many, distinct long texts are as few as memory allows.
constexpr size_t kLongText = 64;

inline bool IsTextKind(const TValueView& AValue) { return AValue.Kind == cvkText || AValue.Kind == cvkFormula; }
inline bool IsLongText(const TValueView& AValue) {
  return IsTextKind(AValue) && AValue.Block && AValue.Block->Length > kLongText;
}

/// What was found out about a long text, by its block.
template <class T>
class TLongTextMemo {
 public:
  /// The value for a long text, made by AMake() at the first meeting of its block.
  template <class F>
  T Of(const TValueView& AText, F&& AMake) {
    if (AText.Block == FLast) return FValues[FLastIndex];
    const auto [place, isNew] = FIndexes.try_emplace(AText.Block, FValues.size());
    if (isNew) FValues.push_back(AMake());
    FLast = AText.Block;
    FLastIndex = place->second;
    return FValues[FLastIndex];
  }

 private:
  std::vector<T> FValues;
  boost::unordered_flat_map<const TTextBlock*, size_t> FIndexes;
  const TTextBlock* FLast = nullptr;
  size_t FLastIndex = 0;
};

/// Gives equal long texts one block.
class TLongTextBlocks {
 public:
  const TTextBlock* BlockOf(const TValueView& AText) {
    return FMemo.Of(AText, [&] { return FBlocks.try_emplace(AText.Text(), AText.Block).first->second; });
  }

 private:
  struct THash {
    size_t operator()(std::u16string_view AText) const { return std::hash<std::u16string_view>()(AText); }
  };
  TLongTextMemo<const TTextBlock*> FMemo;
  boost::unordered_flat_map<std::u16string_view, const TTextBlock*, THash> FBlocks;
};

}  // namespace tessarine::detail
