#pragma once

#include <array>
#include <cstddef>
#include <utility>

#include <tessarine/formula/library/detail/ArgReading.h>

/// Functions of numbers as bodies of the function table.
namespace tessarine::detail {

/// Reads the first arguments into ANumbers, as many as there are places; the first ALeast of them must be given, places
/// beyond the arguments keep what they hold. False when too few are given or one is no number.
template <size_t Count>
bool ReadNumbers(TFormulaArgs AArgs, std::array<double, Count>& ANumbers, size_t ALeast = Count) {
  if (AArgs.size() < ALeast) return false;
  for (size_t i = 0; i < Count && i < AArgs.size(); ++i) {
    if (!ArgAsNumber(AArgs[i], ANumbers[i])) return false;
  }
  return true;
}

/// NumericBody<F>::Call reads as many numbers as F has parameters: #VALUE! when one is missing or none; F answers NaN
/// outside its domain, which becomes #NUM!.
template <auto Formula>
struct NumericBody;

template <class... TNumbers, double (*Formula)(TNumbers...)>
struct NumericBody<Formula> {
  static TCellValue Call(TFormulaArgs AArgs, const TFormulaContext&) {
    std::array<double, sizeof...(TNumbers)> numbers{};
    if (!ReadNumbers(AArgs, numbers)) return ValueError();
    return Apply(numbers, std::index_sequence_for<TNumbers...>());
  }

 private:
  template <size_t... Index>
  static TCellValue Apply(const std::array<double, sizeof...(TNumbers)>& ANumbers, std::index_sequence<Index...>) {
    return NumberOrError(Formula(ANumbers[Index]...));
  }
};

}  // namespace tessarine::detail
