#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include <tessarine/core/values/CellValue.h>
#include <tessarine/platform/detail/JsonText.h>

namespace tessarine::detail {

// What stands between the parts of a value that differ from cell to cell, as the writer spells it.
inline constexpr std::string_view kNativeKind = "{\"kind\":";
inline constexpr std::string_view kNativeText = ",\"text\":\"";
inline constexpr std::string_view kNativeTextTail = "\",\"number\":0,\"bool\":false,\"error\":0,\"formula\":\"\"}";
inline constexpr std::string_view kNativeNoText = ",\"text\":\"\",\"number\":";
inline constexpr std::string_view kNativeTail = ",\"bool\":false,\"error\":0,\"formula\":\"\"}";
inline constexpr std::string_view kNativeBoolean = ",\"bool\":";
inline constexpr std::string_view kNativeError = ",\"error\":";
inline constexpr std::string_view kNativeFormula = ",\"formula\":\"";
inline constexpr std::string_view kNativeFormulaHead =
    ",\"text\":\"\",\"number\":0,\"bool\":false,\"error\":0,\"formula\":\"";
inline constexpr std::string_view kNativeFormulaTail = "\"}";
static_assert(kNativeFormulaHead.size() <= TJsonText::kPadding && kNativeTextTail.size() <= TJsonText::kPadding);

/// A value of a cell as a document spells it.
struct TNativeValueSpelling {
  TCellValueKind Kind = cvkEmpty;
  std::string_view Text;    // cvkText, cvkFormula: between the quotes
  std::string_view Number;  // cvkNumber
  bool Boolean = false;     // cvkBoolean
  uint8_t Error = 0;        // cvkError
  bool IsPlain = true;      // Text is ASCII without escapes
};

/// Reads a value in exactly the spelling that the writer gives one of its kind, the members that the kind does not use
/// being what they are when unused. Null for every other spelling. With AIsSound the text was checked before, so that
/// escapes need no look at what follows them; without, null also stands for what is not sound.
template <bool AIsSound>
TJsonPlace TryReadWrittenValue(TJsonPlace AAt, TNativeValueSpelling& AValue);

/// TJsonText::TShortcut for documents: most of a document is such values.
TJsonPlace SkipWrittenValue(TJsonPlace AObject);

}  // namespace tessarine::detail
