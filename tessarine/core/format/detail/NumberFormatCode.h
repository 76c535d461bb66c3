#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// The steps in which a number format code is taken apart. They know nothing of the value but its sign.

namespace tessarine::detail {

/// Stands before every literal character of a masked section.
inline constexpr char16_t kLiteralMark = u'\x0001';

/// A date mark ("y", "d", "h", "s", "am/pm", "a/p", or "m") and no numeric mark ("#", "0", "%") anywhere in the code,
/// quotes and sections or not. AM stands for a date only in a code without numeric marks.
bool IsDateTimeCode(std::u16string_view ACode);

/// The code in the pattern language of TryFormatDateTime.
std::u16string DateTimePatternOf(std::u16string_view ACode);

/// The pieces between ";" outside double quotes; at least one, and the last one even if it is empty. The views point
/// into ACode.
std::vector<std::u16string_view> SplitSections(std::u16string_view ACode);

/// The section that applies, by the value's sign alone; a fourth one never does.
std::u16string_view SelectSection(const std::vector<std::u16string_view>& ASections, double AValue);

/// A section after its bracketed tags were carried out.
struct TStrippedSection {
  std::u16string Code;
  bool ColorFound = false;
  uint32_t ARGB = 0xFF000000u;  // of the last colour tag
};

/// Colours and unknown tags go, a currency tag leaves its symbol; the first tag of elapsed time ("[h]") ends the work.
TStrippedSection StripTags(std::u16string_view ASection);

/// Puts kLiteralMark before quoted and escaped characters and "$"; "_x" and "*x" become one blank.
std::u16string MaskSection(std::u16string_view ASection);

/// The characters of a masked section without the marks.
std::u16string WithoutMarks(std::u16string_view AMasked);

/// A masked section without the units up to U+0020 at both ends, literal blanks included. A mark stays with its
/// character.
std::u16string_view TrimMasked(std::u16string_view AMasked);

/// The number of blanks (U+0020) at the very end.
size_t CountTrailingBlanks(std::u16string_view AText);

/// A masked section in the pattern language of TFloatPattern: runs of literals in single quotes.
std::u16string FloatPatternOf(std::u16string_view AMasked);

/// Whether a pattern asks for digits: any "#", "0" or "?", quoted or not.
bool HoldsPlaceholder(std::u16string_view APattern);

/// The first "*" outside double quotes, or npos.
size_t FindFill(std::u16string_view ASection);

}  // namespace tessarine::detail
