#include <tessarine/core/sheet/Cell.h>

namespace tessarine {

void TCell::SetCachedResult(const TCellValue& AResult) {
  CachedValue = AResult.Kind == cvkFormula ? TCellValue::FromText(AResult.Text) : AResult;
  HasCachedValue = true;
}

void TCell::ClearCachedResult() {
  CachedValue = TCellValue::Empty();
  HasCachedValue = false;
  Sparkline.Kind = spkNone;
  Sparkline.Values.clear();
}

}  // namespace tessarine
