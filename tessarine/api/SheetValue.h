#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/values/CellValue.h>

namespace tessarine {

enum class TSheetValueKind : uint8_t { svkEmpty, svkBoolean, svkNumber, svkText };
using enum TSheetValueKind;

namespace detail {
template <class T, class... TOthers>
constexpr bool kIsNoneOf = (!std::same_as<T, TOthers> && ...);
}

/// Any number; a character is neither a number nor a text.
template <class T>
concept TSheetNumber =
    std::is_arithmetic_v<T> && detail::kIsNoneOf<T, bool, char, wchar_t, char8_t, char16_t, char32_t>;

/// What host programs put into cells and read from them: nothing, a Boolean, a number or a text. Made from the plain
/// types of the language, so that `SetValue(12.5)`, `SetValue("Total")` and `SetValue(true)` read as they mean; texts
/// are UTF-8 or UTF-16.
class TESSARINE_API TSheetValue {
 public:
  TSheetValue() = default;
  TSheetValue(std::nullptr_t) {}  // NOLINT
  template <std::same_as<bool> T>
  TSheetValue(T AValue) : FValue(TCellValue::FromBoolean(AValue)) {}  // NOLINT
  template <TSheetNumber T>
  TSheetValue(T ANumber) : FValue(TCellValue::FromNumber(static_cast<double>(ANumber))) {}   // NOLINT
  TSheetValue(TText AText) : FValue(TCellValue::FromText(std::move(AText))) {}               // NOLINT
  TSheetValue(std::u16string_view AText) : TSheetValue(TText(AText)) {}                      // NOLINT
  TSheetValue(const std::u16string& AText) : TSheetValue(TText(AText)) {}                    // NOLINT
  TSheetValue(const char16_t* AText) : TSheetValue(TText(AText)) {}                          // NOLINT
  TSheetValue(std::string_view AText) : TSheetValue(TText::FromUtf8(AText)) {}               // NOLINT
  TSheetValue(const std::string& AText) : TSheetValue(TText::FromUtf8(AText)) {}             // NOLINT
  TSheetValue(const char* AText) : TSheetValue(TText::FromUtf8(std::string_view(AText))) {}  // NOLINT

  /// An error gives its text ("#N/A"), a formula its source.
  static TSheetValue From(const TCellValue& AValue);

  TSheetValueKind Kind() const;
  bool IsEmpty() const { return FValue.IsEmpty(); }

  /// The number; 1 and 0 for a Boolean, what a text reads as under the current locale, else 0.
  double ToNumber() const;
  /// The Boolean; whether a number is not 0; whether a text is "TRUE" in any case.
  bool ToBoolean() const;
  /// The text; a number with up to 15 digits, TRUE or FALSE, the empty text for nothing.
  TText ToText() const;
  /// As it is stored in a cell.
  const TCellValue& ToCellValue() const { return FValue; }

  friend bool operator==(const TSheetValue&, const TSheetValue&) = default;

 private:
  TCellValue FValue;  // empty, Boolean, number or text
};

/// Values by rows; rows may differ in length.
using TSheetRow = std::vector<TSheetValue>;
using TSheetRows = std::vector<TSheetRow>;

}  // namespace tessarine
