#pragma once

#include <array>
#include <cstddef>
#include <limits>

#include <tessarine/formula/library/detail/NumericBody.h>

/// Functions of many numbers, the last of them optional, as bodies of the function table.
namespace tessarine::detail {

/// What formulas answer outside their domain.
constexpr double kOutsideDomain = std::numeric_limits<double>::quiet_NaN();

/// The first numbers of a call.
template <size_t Count>
using TNumbers = std::array<double, Count>;

template <auto Formula>
struct NumbersBody;

/// Call<Least> reads up to Count numbers of which the first Least must be given; the last one is LastDefault and the
/// others 0 when they are missing. #VALUE! when one is missing or none; NaN from the formula becomes #NUM!.
template <size_t Count, double (*Formula)(const TNumbers<Count>&)>
struct NumbersBody<Formula> {
  template <size_t Least, int LastDefault = 0>
  static TCellValue Call(TFormulaArgs AArgs, const TFormulaContext&) {
    TNumbers<Count> numbers{};
    numbers[Count - 1] = LastDefault;
    return ReadNumbers(AArgs, numbers, Least) ? NumberOrError(Formula(numbers)) : ValueError();
  }
};

}  // namespace tessarine::detail
