#include <tessarine/core/values/Coercion.h>

#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

bool TextAsNumber(std::u16string_view AText, double& ANumber) {
  if (!AText.empty() && TryStrToFloat(AText, CurrentFormatSettings(), ANumber)) return true;
  ANumber = 0;
  return false;
}

int CompareValues(const TValueView& ALeft, const TValueView& ARight) {
  double left = 0;
  double right = 0;
  if (AsNumber(ALeft, left) && AsNumber(ARight, right)) return left < right ? -1 : left > right ? 1 : 0;
  std::u16string leftBuffer;
  std::u16string rightBuffer;
  const int order = CompareAsciiNoCase(DisplayView(ALeft, leftBuffer), DisplayView(ARight, rightBuffer));
  return order < 0 ? -1 : order > 0 ? 1 : 0;
}

bool EqualDisplayText(const TValueView& ALeft, const TValueView& ARight) {
  std::u16string leftBuffer;
  std::u16string rightBuffer;
  return EqualAsciiNoCase(DisplayView(ALeft, leftBuffer), DisplayView(ARight, rightBuffer));
}

}  // namespace tessarine
