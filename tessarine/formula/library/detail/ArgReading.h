#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

#include <tessarine/core/values/CellValue.h>
#include <tessarine/core/values/Coercion.h>
#include <tessarine/formula/FormulaArg.h>

/// How functions read their arguments: the coercions that the families share, and walks over all values of a call.
namespace tessarine::detail {

using TFormulaArgs = std::span<const TFormulaArg>;

// One value ----------------------------------------------------------------------------------------------------------

inline TCellValue ValueError() { return TCellValue::FromError(ceValue); }
inline TCellValue NumError() { return TCellValue::FromError(ceNum); }
inline TCellValue NotAvailable() { return TCellValue::FromError(ceNA); }
inline TCellValue RefError() { return TCellValue::FromError(ceRef); }
inline TCellValue Div0Error() { return TCellValue::FromError(ceDiv0); }
inline TCellValue BooleanOf(bool AValue) { return TCellValue::FromBoolean(AValue); }
inline TCellValue TextOf(TText AText) { return TCellValue::FromText(std::move(AText)); }

/// The number of the argument's first value; false, with 0, when it is none.
inline bool ArgAsNumber(const TFormulaArg& AArg, double& ANumber) { return AsNumber(AArg.FirstView(), ANumber); }

/// AValue cut toward zero; what 64 bits cannot hold becomes the nearest end of their range, and NaN 0.
int64_t TruncateToInt64(double AValue);

/// The number of the argument's first value as an integer, cut toward zero; false, with 0, when it is no number.
bool ArgAsInt64(const TFormulaArg& AArg, int64_t& ANumber);

/// The display text of the argument's first value.
TText ArgText(const TFormulaArg& AArg);

/// The same without a copy where a text stands already; valid as long as the argument and ABuffer are unchanged.
std::u16string_view ArgTextView(const TFormulaArg& AArg, std::u16string& ABuffer);

/// Whether the argument's first value counts as true (texts but "", numbers but 0, TRUE).
inline bool ArgIsTrue(const TFormulaArg& AArg) { return ValueIsTruthy(AArg.FirstView()); }

// All values ---------------------------------------------------------------------------------------------------------
// The order is that of the arguments, rectangles row by row. A visitor returns nothing, or a Boolean of which false
// ends the walk; a walk returns false when it was ended so. Visitors must not change what they walk over.

/// A value that is not blank and its row-by-row index in the rectangle.
struct TIndexedValue {
  int64_t Index = 0;
  TValueView Value;
};

/// A borrowed function that takes values in batches; false ends the walk.
template <class T>
class TBatchSink {
 public:
  template <class F>
  requires(!std::is_same_v<std::remove_cvref_t<F>, TBatchSink>)
      TBatchSink(F&& AFunction)  // NOLINT(bugprone-forwarding-reference-overload)
      : FContext(const_cast<void*>(static_cast<const void*>(&AFunction))),
        FCall([](void* AContext, std::span<const T> ABatch) {
          return static_cast<bool>((*static_cast<std::remove_reference_t<F>*>(AContext))(ABatch));
        }) {}

  bool operator()(std::span<const T> ABatch) const { return FCall(FContext, ABatch); }

 private:
  void* FContext;
  bool (*FCall)(void*, std::span<const T>);
};

/// The values of a view that are not blank, in order. Costs the stored cells and spilled values of the area, not the
/// area. With AFirstRow and ARowCount (0-based, inside the view) only of these rows; indexes stay those of the view.
bool WalkViewValues(const TFormulaArg& AView, TBatchSink<TIndexedValue> ASink);
bool WalkViewValues(const TFormulaArg& AView, int32_t AFirstRow, int32_t ARowCount, TBatchSink<TIndexedValue> ASink);

/// The numbers of a view, in order.
bool WalkViewNumbers(const TFormulaArg& AView, TBatchSink<double> ASink);

/// The plain form of WalkViewNumbers, cell by cell over the whole area: the definition of the result.
bool WalkViewNumbersPlain(const TFormulaArg& AView, TBatchSink<double> ASink);

/// Calls a visitor of either kind.
template <class F, class... A>
bool OfferTo(F& AVisit, const A&... AValues) {
  if constexpr (std::is_void_v<decltype(AVisit(AValues...))>) {
    AVisit(AValues...);
    return true;
  } else {
    return static_cast<bool>(AVisit(AValues...));
  }
}

/// Every value of one argument, blanks among them: AVisit(const TValueView&). A closure is one blank.
template <class F>
bool ForEachValue(const TFormulaArg& AArg, F&& AVisit) {
  if (!AArg.IsRange) return OfferTo(AVisit, AArg.Scalar.View());
  if (!AArg.IsView()) {
    for (const TCellValue& cell : AArg.Cells()) {
      if (!OfferTo(AVisit, cell.View())) return false;
    }
    return true;
  }
  int64_t next = 0;
  const auto skipTo = [&](int64_t AIndex) {
    for (; next < AIndex; ++next) {
      if (!OfferTo(AVisit, TValueView())) return false;
    }
    return true;
  };
  const auto batch = [&](std::span<const TIndexedValue> AValues) {
    for (const TIndexedValue& item : AValues) {
      if (!skipTo(item.Index) || !OfferTo(AVisit, item.Value)) return false;
      ++next;
    }
    return true;
  };
  return WalkViewValues(AArg, batch) && skipTo(AArg.CellCount());
}

template <class F>
bool ForEachValue(TFormulaArgs AArgs, F&& AVisit) {
  for (const TFormulaArg& arg : AArgs) {
    if (!ForEachValue(arg, AVisit)) return false;
  }
  return true;
}

/// The values of one argument that are not blank: AVisit(int64_t index, const TValueView&). The index counts row by
/// row from 0; a scalar has index 0.
template <class F>
bool ForEachNonBlank(const TFormulaArg& AArg, F&& AVisit) {
  if (AArg.IsView()) {
    return WalkViewValues(AArg, [&](std::span<const TIndexedValue> AValues) {
      for (const TIndexedValue& item : AValues) {
        if (!OfferTo(AVisit, item.Index, item.Value)) return false;
      }
      return true;
    });
  }
  int64_t index = 0;
  return ForEachValue(AArg, [&](const TValueView& AValue) {
    const int64_t at = index++;
    return AValue.IsEmpty() || OfferTo(AVisit, at, AValue);
  });
}

/// The numbers of one argument, everything else left out: AVisit(double).
template <class F>
bool ForEachNumber(const TFormulaArg& AArg, F&& AVisit) {
  if (AArg.IsView()) {
    return WalkViewNumbers(AArg, [&](std::span<const double> ANumbers) {
      for (const double number : ANumbers) {
        if (!OfferTo(AVisit, number)) return false;
      }
      return true;
    });
  }
  return ForEachValue(
      AArg, [&](const TValueView& AValue) { return AValue.Kind != cvkNumber || OfferTo(AVisit, AValue.Number); });
}

template <class F>
bool ForEachNumber(TFormulaArgs AArgs, F&& AVisit) {
  for (const TFormulaArg& arg : AArgs) {
    if (!ForEachNumber(arg, AVisit)) return false;
  }
  return true;
}

// Counts -------------------------------------------------------------------------------------------------------------

/// How many values the arguments have: 1 for a scalar or closure, the cells of a rectangle.
int64_t CountValues(TFormulaArgs AArgs);

struct TBlankCount {
  int64_t Blanks = 0;      // kind cvkEmpty
  int64_t EmptyTexts = 0;  // texts ""
  int64_t Others = 0;
};
TBlankCount CountBlanks(TFormulaArgs AArgs);

/// Fills ALanes with the numbers that the cells of whole rows stand for, row by row, ARowCount * ColCount of them:
/// blanks and what is no number are 0. AFirstRow is 0-based, the rows lie inside the rectangle. False when nothing but
/// blanks was met and all lanes are 0.
bool ReadNumberLanes(const TFormulaArg& ARange, int32_t AFirstRow, int32_t ARowCount, std::span<double> ALanes);

}  // namespace tessarine::detail
