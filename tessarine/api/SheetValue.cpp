#include <tessarine/api/SheetValue.h>

#include <tessarine/core/values/Coercion.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

TSheetValue TSheetValue::From(const TCellValue& AValue) {
  TSheetValue value;
  if (AValue.Kind == cvkError || AValue.Kind == cvkFormula) {
    value.FValue = TCellValue::FromText(AValue.ToDisplayString());
  } else {
    value.FValue = AValue;
  }
  return value;
}

TSheetValueKind TSheetValue::Kind() const {
  switch (FValue.Kind) {
    case cvkBoolean: return svkBoolean;
    case cvkNumber: return svkNumber;
    case cvkEmpty: return svkEmpty;
    case cvkText:
    case cvkError:
    case cvkFormula: break;
  }
  return svkText;
}

double TSheetValue::ToNumber() const {
  double number = 0;
  AsNumber(FValue, number);
  return number;
}

bool TSheetValue::ToBoolean() const {
  switch (FValue.Kind) {
    case cvkBoolean: return FValue.BooleanValue;
    case cvkNumber: return FValue.Number != 0;
    case cvkText: return EqualAsciiNoCase(TrimSpaces(FValue.Text), u"TRUE");
    case cvkEmpty:
    case cvkError:
    case cvkFormula: break;
  }
  return false;
}

TText TSheetValue::ToText() const { return FValue.ToDisplayString(); }

}  // namespace tessarine
