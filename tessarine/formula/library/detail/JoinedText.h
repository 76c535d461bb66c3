#pragma once

#include <span>
#include <string>
#include <string_view>

#include <tessarine/core/values/CellValue.h>
#include <tessarine/formula/FunctionTable.h>

namespace tessarine::detail {

/// A text that grows piece by piece up to kMaxGeneratedText.
class TGrowingText {
 public:
  /// False, and from then on always false, once the text would be too long.
  bool Add(std::u16string_view APiece) {
    FFits = FFits && APiece.size() <= kMaxGeneratedText - FText.size();
    if (FFits) FText += APiece;
    return FFits;
  }

  /// Adds the display text of a value.
  bool Add(const TValueView& AValue) { return Add(DisplayView(AValue, FBuffer)); }

  /// The text; #VALUE! when it became too long.
  TCellValue Value() const { return FFits ? TCellValue::FromText(TText(FText)) : TCellValue::FromError(ceValue); }

 private:
  std::u16string FText;
  std::u16string FBuffer;
  bool FFits = true;
};

/// The first of the arguments' first values that is an error, as a blank when there is none.
inline TCellValue FirstError(std::span<const TFormulaArg> AArgs) {
  for (const TFormulaArg& arg : AArgs) {
    if (arg.FirstView().IsError()) return arg.First();
  }
  return {};
}

}  // namespace tessarine::detail
