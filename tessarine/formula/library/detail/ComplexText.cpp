#include <tessarine/formula/library/detail/ComplexText.h>

#include <algorithm>
#include <cmath>
#include <string>

#include <tessarine/core/values/Coercion.h>
#include <tessarine/platform/Locale.h>

namespace tessarine::detail {

namespace {

bool IsSign(char16_t AUnit) { return AUnit == u'+' || AUnit == u'-'; }

/// Where the imaginary part begins in AText, which is without its suffix: at the last sign that is none of an exponent.
size_t ImaginaryStart(std::u16string_view AText) {
  for (size_t at = AText.size(); at-- > 1;) {
    if (IsSign(AText[at]) && AText[at - 1] != u'e' && AText[at - 1] != u'E') return at;
  }
  return 0;
}

/// A number, or nothing but a sign for 1.
bool TryParseCoefficient(std::u16string_view AText, double& ANumber) {
  if (AText.empty() || (AText.size() == 1 && IsSign(AText[0]))) {
    ANumber = AText == u"-" ? -1 : 1;
    return true;
  }
  return TextAsNumber(AText, ANumber);
}

bool TryParseComplex(std::u16string_view AText, TComplexNumber& ANumber) {
  if (AText.empty() || std::any_of(AText.begin(), AText.end(), [](char16_t AUnit) { return AUnit <= u' '; })) {
    return false;
  }
  double real = 0;
  double imaginary = 0;
  if (AText.back() != u'i' && AText.back() != u'j') {
    if (!TextAsNumber(AText, real)) return false;
    ANumber = {real, 0};
    return true;
  }
  const std::u16string_view parts = AText.substr(0, AText.size() - 1);
  const size_t start = ImaginaryStart(parts);
  if (start > 0 && !TextAsNumber(parts.substr(0, start), real)) return false;
  if (!TryParseCoefficient(parts.substr(start), imaginary)) return false;
  ANumber = {{real, imaginary}, AText.back()};
  return true;
}

/// With the decimal separator by which it is read again.
std::u16string TextOfPart(double APart) {
  std::u16string text = TCellValue::FromNumber(APart).ToDisplayString().ToString();
  std::replace(text.begin(), text.end(), u'.', CurrentFormatSettings().DecimalSeparator);
  return text;
}

}  // namespace

TCellErrorCode ReadComplex(const TValueView& AValue, TComplexNumber& ANumber) {
  switch (AValue.Kind) {
    case cvkEmpty: ANumber = {}; return ceNone;
    case cvkNumber: ANumber = {AValue.Number, 0}; return ceNone;
    case cvkText: return TryParseComplex(AValue.Text(), ANumber) ? ceNone : ceNum;
    case cvkBoolean:
    case cvkError:
    case cvkFormula: break;
  }
  return ceValue;
}

TCellValue ComplexOrError(const TComplexNumber& ANumber) {
  const double real = ANumber.Value.real();
  const double imaginary = ANumber.Value.imag();
  if (!std::isfinite(real) || !std::isfinite(imaginary)) return TCellValue::FromError(ceNum);
  if (imaginary == 0) return TCellValue::FromText(TextOfPart(real == 0 ? 0 : real));
  std::u16string text = real == 0 ? std::u16string() : TextOfPart(real);
  if (imaginary < 0) {
    text += u'-';
  } else if (!text.empty()) {
    text += u'+';
  }
  const std::u16string size = TextOfPart(std::fabs(imaginary));
  if (size != u"1") text += size;
  text += ANumber.Suffix ? ANumber.Suffix : u'i';
  return TCellValue::FromText(TText(text));
}

}  // namespace tessarine::detail
