#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <tessarine/Export.h>
#include <tessarine/core/values/CellValue.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

/// The text of a number under a format code ("#,##0.00", "yyyy-mm-dd", "0.0%;(0.0%)"), with the separators and names
/// of the host's locale. Never fails: an unknown tag disappears, a code without placeholders shows its literal text.
/// A code longer than kMaxFormatCodeLength counts as "General".
TESSARINE_API TText FormatNumber(double AValue, std::u16string_view AFormat);

/// The same text, appended to a buffer that the caller reuses: no allocation once the buffer has grown. Codes are
/// compiled once per thread. The quickest lookup is for a code that stands where it stood before (a cell's format).
TESSARINE_API void AppendFormattedNumber(double AValue, std::u16string_view AFormat, std::u16string& AOut);

/// As many units as the longest text of a cell in a file.
inline constexpr size_t kMaxFormatCodeLength = 32767;

/// The text of any value. Only numbers are formatted; text, Booleans and errors read as they are, a formula as its
/// source, an empty value as the empty text.
TESSARINE_API TText FormatCellValue(const TCellValue& AValue, std::u16string_view AFormat);
TESSARINE_API void AppendFormattedValue(const TValueView& AValue, std::u16string_view AFormat, std::u16string& AOut);

/// The colour tag ("[Red]") of the section that applies to a value.
struct TNumberFormatColor {
  bool Found = false;
  uint32_t ARGB = 0xFF000000u;

  friend bool operator==(const TNumberFormatColor&, const TNumberFormatColor&) = default;
};
TESSARINE_API TNumberFormatColor NumberFormatColor(double AValue, std::u16string_view AFormat);

/// The texts left and right of a fill ("*" and the character to fill with), so that a painter can stretch the gap.
struct TNumberFillSplit {
  TText Left;
  TText Right;
};

/// Nothing when the section that applies to AValue has no fill.
TESSARINE_API std::optional<TNumberFillSplit> TryFormatNumberFillSplit(double AValue, std::u16string_view AFormat);

/// Whether the trimmed code is "@" or "Text" in any case.
TESSARINE_API bool IsTextNumberFormat(std::u16string_view AFormat);

}  // namespace tessarine
