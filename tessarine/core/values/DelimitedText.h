#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

/// The fields of one line. A double quote switches quoting on and off wherever it stands and is never part of a field
/// (so a doubled one inside a quoted field leaves nothing); a delimiter outside quotes ends a field. There is always a
/// last field: an empty line gives one empty field.
TESSARINE_API std::vector<TText> ParseDelimitedLine(std::u16string_view ALine, char16_t ADelimiter);

/// ParseDelimitedLine with a comma.
TESSARINE_API std::vector<TText> ParseCsvLine(std::u16string_view ALine);

/// A tab when the first 4096 units hold more tabs than commas, else a comma.
TESSARINE_API char16_t DetectTextDelimiter(std::u16string_view AText);

/// The fields of every line of a text, lines ending at CR LF, CR or LF; an empty last line is dropped. Quotes do not
/// carry over a line's end. Nothing for a text without a row.
TESSARINE_API std::optional<std::vector<std::vector<TText>>> ParseDelimitedBody(std::u16string_view AText,
                                                                                char16_t ADelimiter);

}  // namespace tessarine
