#pragma once

#include <cmath>
#include <cstdint>
#include <string_view>

#include <tessarine/Export.h>
#include <tessarine/core/values/CellValue.h>

namespace tessarine {

/// The number that a value stands for in a calculation: blank 0, Boolean 1 or 0, text that reads as a number under
/// the current locale. Fails, with 0, for other texts (also the empty one), errors and formulas.
TESSARINE_API bool TextAsNumber(std::u16string_view AText, double& ANumber);

inline bool AsNumber(const TValueView& AValue, double& ANumber) {
  switch (AValue.Kind) {
    case cvkNumber: ANumber = AValue.Number; return true;
    case cvkEmpty: ANumber = 0; return true;
    case cvkBoolean: ANumber = AValue.BooleanValue ? 1 : 0; return true;
    case cvkText: return TextAsNumber(AValue.Text(), ANumber);
    case cvkError:
    case cvkFormula: break;
  }
  ANumber = 0;
  return false;
}
inline bool AsNumber(const TCellValue& AValue, double& ANumber) { return AsNumber(AValue.View(), ANumber); }

/// Text is true unless empty, a number unless 0, a Boolean as it is; blanks and errors are false.
inline bool ValueIsTruthy(const TValueView& AValue) {
  switch (AValue.Kind) {
    case cvkText: return AValue.Block != nullptr;
    case cvkNumber: return AValue.Number != 0;
    case cvkBoolean: return AValue.BooleanValue;
    default: return false;
  }
}
inline bool ValueIsTruthy(const TCellValue& AValue) { return ValueIsTruthy(AValue.View()); }

/// -1, 0 or 1: as numbers when both sides are numbers in the sense of AsNumber, else by their display texts without
/// regard to ASCII case (folded to upper), ordinal.
TESSARINE_API int CompareValues(const TValueView& ALeft, const TValueView& ARight);

/// Whether the display texts are equal without regard to ASCII case.
TESSARINE_API bool EqualDisplayText(const TValueView& ALeft, const TValueView& ARight);

/// Every numeric result passes here: what is not finite is #NUM!, and a negative zero loses its sign.
inline TCellValue NumberOrError(double AValue) {
  return std::isfinite(AValue) ? TCellValue::FromNumber(AValue == 0 ? 0.0 : AValue) : TCellValue::FromError(ceNum);
}

}  // namespace tessarine
