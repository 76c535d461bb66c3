#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <tessarine/Export.h>

namespace tessarine {

enum class TRegexOutcome : uint8_t {
  roMatched,
  roNoMatch,
  roFailed,  // the pattern or the replacement is invalid, the search took too much, or the text became too long
};
using enum TRegexOutcome;

struct TRegexMatch {
  TRegexOutcome Outcome = roNoMatch;
  bool HasGroups = false;          // the pattern captures
  std::u16string_view Whole;       // parts of the text; empty unless it matched
  std::u16string_view FirstGroup;  // also empty for a group that took no part
};

/// The first match of a Perl-compatible pattern anywhere in AText. Characters are code points, case counts unless the
/// pattern says otherwise ("(?i)"), and a lone surrogate in AText matches nothing; in the pattern it is an error.
///
/// No text and no pattern can hold the caller up: a search that goes on for half a second or needs more than some
/// 64 MB fails. Patterns are compiled once per thread and kept while they are among the last kept ones; a pattern that
/// returns is translated to machine code where the system allows it. May be called on any thread.
[[nodiscard]] TESSARINE_API TRegexMatch FindRegex(std::u16string_view APattern, std::u16string_view AText);

/// AText with every match replaced, in AOut; roNoMatch when there was none, with AOut the text as it was. "$1", "${1}",
/// "$name", "${name}" and "\1" stand for a group, "$0" for the match, "$$" for a dollar sign, "\\" for a backslash.
/// A group that took no part is empty, one that does not exist an error. Results above AMaxLength units fail.
[[nodiscard]] TESSARINE_API TRegexOutcome ReplaceRegex(std::u16string_view APattern, std::u16string_view AText,
                                                       std::u16string_view AReplacement, size_t AMaxLength,
                                                       std::u16string& AOut);

}  // namespace tessarine
