#include <tessarine/formula/library/detail/Numerals.h>

#include <algorithm>
#include <limits>

namespace tessarine::detail {

namespace {

struct TRomanStep {
  int Value;
  std::u16string_view Letters;
};
constexpr TRomanStep kRomanSteps[] = {
    {1000, u"M"}, {900, u"CM"}, {500, u"D"}, {400, u"CD"}, {100, u"C"}, {90, u"XC"}, {50, u"L"},
    {40, u"XL"},  {10, u"X"},   {9, u"IX"},  {5, u"V"},    {4, u"IV"},  {1, u"I"},
};

/// 0 for what is no Roman letter.
int RomanValue(char16_t AUnit) {
  const char16_t upper = AUnit >= u'a' && AUnit <= u'z' ? static_cast<char16_t>(AUnit - u'a' + u'A') : AUnit;
  for (const TRomanStep& step : kRomanSteps) {
    if (step.Letters.size() == 1 && step.Letters[0] == upper) return step.Value;
  }
  return 0;
}

std::u16string_view WithoutBlanks(std::u16string_view AText) {
  const size_t first = std::min(AText.find_first_not_of(u' '), AText.size());
  return AText.substr(first, AText.find_last_not_of(u' ') + 1 - first);
}

}  // namespace

unsigned DigitValue(char16_t AUnit) {
  if (AUnit >= u'0' && AUnit <= u'9') return static_cast<unsigned>(AUnit - u'0');
  if (AUnit >= u'A' && AUnit <= u'Z') return static_cast<unsigned>(AUnit - u'A') + 10;
  if (AUnit >= u'a' && AUnit <= u'z') return static_cast<unsigned>(AUnit - u'a') + 10;
  return 36;
}

std::u16string DigitsOf(uint64_t ANumber, unsigned ARadix, size_t ALength) {
  std::u16string digits;
  for (uint64_t rest = ANumber; rest > 0 || digits.empty(); rest /= ARadix) {
    digits.push_back(u"0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"[rest % ARadix]);
  }
  if (digits.size() < ALength) digits.resize(ALength, u'0');
  std::reverse(digits.begin(), digits.end());
  return digits;
}

double NumberOfDigits(std::u16string_view ADigits, unsigned ARadix) {
  double number = 0;
  for (const char16_t unit : ADigits) {
    const unsigned digit = DigitValue(unit);
    if (digit >= ARadix) return std::numeric_limits<double>::quiet_NaN();
    number = number * ARadix + digit;
  }
  return number;
}

std::u16string RomanNumeral(double ANumber) {
  std::u16string numeral;
  if (!(ANumber >= 1 && ANumber <= 3999)) return numeral;
  int rest = static_cast<int>(ANumber);
  for (const TRomanStep& step : kRomanSteps) {
    for (; rest >= step.Value; rest -= step.Value) numeral += step.Letters;
  }
  return numeral;
}

bool TryParseRoman(std::u16string_view AText, double& ANumber) {
  std::u16string_view letters = WithoutBlanks(AText);
  const bool isNegative = letters.starts_with(u'-');
  if (isNegative) letters.remove_prefix(1);
  double sum = 0;
  for (size_t i = 0; i < letters.size(); ++i) {
    const int value = RomanValue(letters[i]);
    if (value == 0) return false;
    sum += i + 1 < letters.size() && RomanValue(letters[i + 1]) > value ? -value : value;
  }
  ANumber = isNegative ? -sum : sum;
  return true;
}

}  // namespace tessarine::detail
