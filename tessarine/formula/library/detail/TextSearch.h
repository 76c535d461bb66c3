#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace tessarine::detail {

enum class TTextCase : uint8_t { tcsExact, tcsIgnoreAscii };
using enum TTextCase;

/// Finds one text in others, in time that grows with their lengths whatever they hold. Quick comparing in place goes
/// first; a text that makes it compare the same units again and again is searched on by the borders of the needle
/// (Knuth, Morris, Pratt 1977). Nothing is copied or folded beforehand.
class TTextSearch {
 public:
  /// ANeedle is not empty and outlives the search.
  TTextSearch(std::u16string_view ANeedle, TTextCase ACase) : FNeedle(ANeedle), FCase(ACase) {}

  /// The 0-based place of the first occurrence that begins at AFrom or behind; npos when there is none.
  size_t Find(std::u16string_view AText, size_t AFrom);

  /// The same by comparing at each place: the definition of the result.
  size_t FindPlain(std::u16string_view AText, size_t AFrom) const;

 private:
  template <TTextCase Case>
  size_t FindInPlace(std::u16string_view AText, size_t AFrom);
  template <TTextCase Case>
  size_t FindByBorders(std::u16string_view AText, size_t AFrom);
  template <TTextCase Case>
  void BuildBorders();

  std::u16string_view FNeedle;
  TTextCase FCase;
  size_t FCredit = 256;            // comparisons that may still be wasted in place
  std::vector<uint32_t> FBorders;  // of each prefix of the needle; empty until needed
};

}  // namespace tessarine::detail
