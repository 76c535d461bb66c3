#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tessarine::detail {

enum class TQueryTokenKind : uint8_t {
  qtEnd,  // also of what is unreadable
  qtIdentifier,
  qtNumber,
  qtString,
  qtStar,
  qtComma,
  qtLParen,
  qtRParen,
  qtEqual,
  qtNotEqual,
  qtLess,
  qtGreater,
  qtLessEqual,
  qtGreaterEqual,
};
using enum TQueryTokenKind;

struct TQueryToken {
  TQueryTokenKind Kind = qtEnd;
  std::u16string Text;  // qtIdentifier as it stands, qtString without its quotes
  double Number = 0;    // qtNumber
};

/// Cuts the text of a query into tokens, one at a time. Names and numbers are ASCII; numbers have a decimal point in
/// every locale.
class TQueryTokenizer {
 public:
  /// AText outlives the tokenizer.
  explicit TQueryTokenizer(std::u16string_view AText) : FText(AText) {}

  TQueryToken Next();

 private:
  char16_t UnitAt(size_t APlace) const { return APlace < FText.size() ? FText[APlace] : u'\0'; }
  bool StartsNumber() const;
  TQueryToken ReadString();
  TQueryToken ReadNumber();
  TQueryToken ReadIdentifier();
  TQueryToken ReadSign();

  std::u16string_view FText;
  size_t FAt = 0;
};

}  // namespace tessarine::detail
