#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

/// Hash and equality of texts without regard to ASCII case, for tables of texts.
struct TTextNoCaseHash {
  using is_transparent = void;
  using is_avalanching = void;
  size_t operator()(std::u16string_view AText) const {
    uint64_t hash = 0xCBF29CE484222325u ^ AText.size();
    for (const char16_t unit : AText) hash = (hash ^ AsciiUpper(unit)) * 0x9E3779B97F4A7C15u;
    return static_cast<size_t>(hash ^ (hash >> 32));
  }
};
struct TTextNoCaseEqual {
  using is_transparent = void;
  bool operator()(std::u16string_view ALeft, std::u16string_view ARight) const {
    return ALeft.size() == ARight.size() && EqualAsciiNoCase(ALeft, ARight);
  }
};

}  // namespace tessarine::detail
