#include <tessarine/formula/library/detail/TextSearch.h>

#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

template <TTextCase Case>
constexpr char16_t Folded(char16_t AUnit) {
  return Case == tcsIgnoreAscii ? AsciiUpper(AUnit) : AUnit;
}

/// The first place from AFrom up to below AEnd that holds one of two units, or AEnd. Whole blocks are tested without a
/// branch, so that a compiler can do it in vectors.
size_t FindEither(const char16_t* AText, size_t AFrom, size_t AEnd, char16_t AOne, char16_t AOther) {
  constexpr size_t kBlock = 16;
  while (AEnd - AFrom >= kBlock) {
    unsigned found = 0;
    for (size_t i = 0; i < kBlock; ++i) found |= (AText[AFrom + i] == AOne) | (AText[AFrom + i] == AOther);
    if (found) break;
    AFrom += kBlock;
  }
  while (AFrom < AEnd && AText[AFrom] != AOne && AText[AFrom] != AOther) ++AFrom;
  return AFrom;
}

/// How many units at the start of two texts are equal; AText is at least as long as ANeedle.
template <TTextCase Case>
size_t CommonLength(const char16_t* AText, std::u16string_view ANeedle) {
  size_t length = 0;
  while (length < ANeedle.size() && Folded<Case>(AText[length]) == Folded<Case>(ANeedle[length])) ++length;
  return length;
}

}  // namespace

size_t TTextSearch::Find(std::u16string_view AText, size_t AFrom) {
  if (AFrom > AText.size() || AText.size() - AFrom < FNeedle.size()) return AText.npos;
  return FCase == tcsExact ? FindInPlace<tcsExact>(AText, AFrom) : FindInPlace<tcsIgnoreAscii>(AText, AFrom);
}

size_t TTextSearch::FindPlain(std::u16string_view AText, size_t AFrom) const {
  for (size_t at = AFrom; at + FNeedle.size() <= AText.size(); ++at) {
    const std::u16string_view part = AText.substr(at, FNeedle.size());
    if (FCase == tcsExact ? part == FNeedle : EqualAsciiNoCase(part, FNeedle)) return at;
  }
  return AText.npos;
}

template <TTextCase Case>
size_t TTextSearch::FindInPlace(std::u16string_view AText, size_t AFrom) {
  if (!FBorders.empty()) return FindByBorders<Case>(AText, AFrom);
  const char16_t first = Folded<Case>(FNeedle[0]);
  const char16_t other = Case == tcsIgnoreAscii ? AsciiLower(first) : first;
  const size_t end = AText.size() - FNeedle.size() + 1;
  for (size_t at = AFrom; at < end; ++at) {
    const size_t next = FindEither(AText.data(), at, end, first, other);
    if (next == end) break;
    const size_t equal = CommonLength<Case>(AText.data() + next, FNeedle);
    if (equal == FNeedle.size()) return next;
    FCredit += 2 * (next - at + 1);
    if (equal > FCredit) {
      BuildBorders<Case>();
      return FindByBorders<Case>(AText, next + 1);
    }
    FCredit -= equal;
    at = next;
  }
  return AText.npos;
}

template <TTextCase Case>
size_t TTextSearch::FindByBorders(std::u16string_view AText, size_t AFrom) {
  size_t equal = 0;
  for (size_t at = AFrom; at < AText.size(); ++at) {
    const char16_t unit = Folded<Case>(AText[at]);
    while (equal > 0 && Folded<Case>(FNeedle[equal]) != unit) equal = FBorders[equal - 1];
    if (Folded<Case>(FNeedle[equal]) == unit) ++equal;
    if (equal == FNeedle.size()) return at + 1 - equal;
  }
  return AText.npos;
}

template <TTextCase Case>
void TTextSearch::BuildBorders() {
  FBorders.assign(FNeedle.size(), 0);
  uint32_t border = 0;
  for (size_t at = 1; at < FNeedle.size(); ++at) {
    const char16_t unit = Folded<Case>(FNeedle[at]);
    while (border > 0 && Folded<Case>(FNeedle[border]) != unit) border = FBorders[border - 1];
    if (Folded<Case>(FNeedle[border]) == unit) ++border;
    FBorders[at] = border;
  }
}

}  // namespace tessarine::detail
