#include <tessarine/formula/library/detail/QueryTokens.h>

#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

bool IsNameUnit(char16_t AUnit) { return IsAsciiLetter(AUnit) || IsAsciiDigit(AUnit) || AUnit == u'_'; }
bool IsSignUnit(char16_t AUnit) { return AUnit == u'+' || AUnit == u'-'; }

struct TQuerySign {
  std::u16string_view Text;
  TQueryTokenKind Kind;
};

/// The longer ones first.
constexpr TQuerySign kSigns[] = {
    {u"!=", qtNotEqual}, {u"<>", qtNotEqual}, {u"<=", qtLessEqual}, {u">=", qtGreaterEqual},
    {u"<", qtLess},      {u">", qtGreater},   {u"=", qtEqual},      {u"(", qtLParen},
    {u")", qtRParen},    {u"*", qtStar},      {u",", qtComma},
};

}  // namespace

TQueryToken TQueryTokenizer::Next() {
  while (FAt < FText.size() && FText[FAt] <= u' ') ++FAt;
  if (FAt >= FText.size()) return {};
  const char16_t unit = FText[FAt];
  if (unit == u'\'') return ReadString();
  if (StartsNumber()) return ReadNumber();
  if (IsAsciiLetter(unit) || unit == u'_') return ReadIdentifier();
  return ReadSign();
}

bool TQueryTokenizer::StartsNumber() const {
  const char16_t unit = UnitAt(FAt);
  return IsAsciiDigit(unit) || ((IsSignUnit(unit) || unit == u'.') && IsAsciiDigit(UnitAt(FAt + 1)));
}

/// Two quotes are one; a missing closing quote stands at the end.
TQueryToken TQueryTokenizer::ReadString() {
  TQueryToken token{qtString, {}, 0};
  for (++FAt; FAt < FText.size(); ++FAt) {
    if (FText[FAt] == u'\'') {
      if (UnitAt(FAt + 1) != u'\'') break;
      ++FAt;
    }
    token.Text += FText[FAt];
  }
  if (FAt < FText.size()) ++FAt;
  return token;
}

TQueryToken TQueryTokenizer::ReadNumber() {
  const size_t start = FAt++;
  while (IsAsciiDigit(UnitAt(FAt)) || UnitAt(FAt) == u'.') ++FAt;
  const size_t exponent = FAt + (IsSignUnit(UnitAt(FAt + 1)) ? 2 : 1);
  if (AsciiUpper(UnitAt(FAt)) == u'E' && IsAsciiDigit(UnitAt(exponent))) {
    for (FAt = exponent; IsAsciiDigit(UnitAt(FAt));) ++FAt;
  }
  TQueryToken token{qtNumber, {}, 0};
  return TryParseFileNumber(FText.substr(start, FAt - start), token.Number) ? token : TQueryToken();
}

TQueryToken TQueryTokenizer::ReadIdentifier() {
  const size_t start = FAt;
  while (IsNameUnit(UnitAt(FAt))) ++FAt;
  return {qtIdentifier, std::u16string(FText.substr(start, FAt - start)), 0};
}

TQueryToken TQueryTokenizer::ReadSign() {
  const std::u16string_view rest = FText.substr(FAt);
  for (const TQuerySign& sign : kSigns) {
    if (!rest.starts_with(sign.Text)) continue;
    FAt += sign.Text.size();
    return {sign.Kind, {}, 0};
  }
  ++FAt;
  return {};
}

}  // namespace tessarine::detail
