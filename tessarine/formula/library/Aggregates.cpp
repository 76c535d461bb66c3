#include <tessarine/formula/FunctionTable.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include <tessarine/formula/library/detail/ArgReading.h>

namespace tessarine {

namespace {

using namespace detail;

// All sums and products run strictly from left to right with one accumulator over all arguments: results must be the
// same to the last bit however the values are stored.

TCellValue CallSum(TFormulaArgs AArgs, const TFormulaContext&) {
  double sum = 0;
  ForEachNumber(AArgs, [&](double ANumber) { sum += ANumber; });
  return NumberOrError(sum);
}

TCellValue CallAverage(TFormulaArgs AArgs, const TFormulaContext&) {
  double sum = 0;
  int64_t count = 0;
  ForEachNumber(AArgs, [&](double ANumber) {
    sum += ANumber;
    ++count;
  });
  return count == 0 ? Div0Error() : NumberOrError(sum / static_cast<double>(count));
}

template <class TBetter>
TCellValue ExtremeOf(TFormulaArgs AArgs, TBetter ABetter) {
  std::optional<double> best;
  ForEachNumber(AArgs, [&](double ANumber) {
    if (!best || ABetter(ANumber, *best)) best = ANumber;
  });
  return NumberOrError(best.value_or(0));
}

TCellValue CallMin(TFormulaArgs AArgs, const TFormulaContext&) { return ExtremeOf(AArgs, std::less<double>()); }
TCellValue CallMax(TFormulaArgs AArgs, const TFormulaContext&) { return ExtremeOf(AArgs, std::greater<double>()); }

TCellValue CallProduct(TFormulaArgs AArgs, const TFormulaContext&) {
  double product = 1;
  bool any = false;
  ForEachNumber(AArgs, [&](double ANumber) {
    product *= ANumber;
    any = true;
  });
  return NumberOrError(any ? product : 0);
}

TCellValue CountOf(int64_t ACount) { return TCellValue::FromNumber(static_cast<double>(ACount)); }

TCellValue CallCount(TFormulaArgs AArgs, const TFormulaContext&) {
  int64_t count = 0;
  ForEachNumber(AArgs, [&](double) { ++count; });
  return CountOf(count);
}

TCellValue CallCountA(TFormulaArgs AArgs, const TFormulaContext&) {
  const TBlankCount count = CountBlanks(AArgs);
  return CountOf(count.Others + count.EmptyTexts);
}

TCellValue CallCountBlank(TFormulaArgs AArgs, const TFormulaContext&) {
  const TBlankCount count = CountBlanks(AArgs);
  return CountOf(count.Blanks + count.EmptyTexts);
}

TCellValue CallSubtotal(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  int64_t code = 0;
  if (AArgs.size() < 2 || !ArgAsInt64(AArgs[0], code)) return ValueError();
  const TFormulaArgs values = AArgs.subspan(1);
  switch (code >= 100 ? code - 100 : code) {
    case 1: return CallAverage(values, AContext);
    case 2: return CallCount(values, AContext);
    case 3: return CallCountA(values, AContext);
    case 4: return CallMax(values, AContext);
    case 5: return CallMin(values, AContext);
    case 6: return CallProduct(values, AContext);
    case 9: return CallSum(values, AContext);
    default: return ValueError();
  }
}

/// What one argument of SUMPRODUCT gives for a term: a scalar itself, a rectangle its cell or 0 behind its end.
double FactorAt(const TFormulaArg& AArg, int64_t AIndex) {
  double factor = 0;
  if (!AArg.IsRange) {
    AsNumber(AArg.Scalar.View(), factor);
  } else if (AIndex < AArg.CellCount()) {
    AsNumber(AArg.ViewAt(AIndex), factor);
  }
  return factor;
}

double SumProductPlain(TFormulaArgs AArgs) {
  const int64_t terms = AArgs[0].IsRange ? AArgs[0].CellCount() : 1;
  double sum = 0;
  for (int64_t index = 0; index < terms; ++index) {
    double product = 1;
    for (const TFormulaArg& arg : AArgs) product *= FactorAt(arg, index);
    sum += product;
  }
  return sum;
}

/// For a view as first argument: only its cells that are not blank. A blank's term is 0, and adding it changes no sum
/// that began with 0.
std::optional<double> TrySumProductSparse(TFormulaArgs AArgs) {
  if (!AArgs[0].IsView()) return std::nullopt;
  double sum = 0;
  ForEachNonBlank(AArgs[0], [&](int64_t AIndex, const TValueView& AValue) {
    double product = 0;
    AsNumber(AValue, product);
    for (const TFormulaArg& arg : AArgs.subspan(1)) product *= FactorAt(arg, AIndex);
    sum += product;
  });
  return sum;
}

/// For rectangles of one shape with scalars among them: bands of rows are read into arrays of numbers and multiplied
/// there. Term by term the operations are those of the plain form.
std::optional<double> TrySumProductLanes(TFormulaArgs AArgs) {
  constexpr int32_t kMaxCols = 64;
  constexpr int32_t kLanes = 1024;
  const int32_t rows = AArgs[0].RowCount;
  const int32_t cols = AArgs[0].ColCount;
  if (AArgs.size() < 2 || !AArgs[0].IsRange || rows == 0 || cols == 0 || cols > kMaxCols) return std::nullopt;
  const auto fits = [&](const TFormulaArg& AArg) {
    return !AArg.IsRange || (AArg.RowCount == rows && AArg.ColCount == cols);
  };
  if (!std::all_of(AArgs.begin(), AArgs.end(), fits)) return std::nullopt;

  std::vector<double> products(kLanes);
  std::vector<double> factors(kLanes);
  double sum = 0;
  for (int32_t row = 0, band = kLanes / cols; row < rows; row += band) {
    const int32_t height = std::min(band, rows - row);
    const auto lanes = static_cast<size_t>(height) * static_cast<size_t>(cols);
    if (!ReadNumberLanes(AArgs[0], row, height, {products.data(), lanes})) continue;
    for (const TFormulaArg& arg : AArgs.subspan(1)) {
      if (arg.IsRange) {
        ReadNumberLanes(arg, row, height, {factors.data(), lanes});
      } else {
        std::fill_n(factors.begin(), lanes, FactorAt(arg, 0));
      }
      for (size_t i = 0; i < lanes; ++i) products[i] *= factors[i];
    }
    for (size_t i = 0; i < lanes; ++i) sum += products[i];
  }
  return sum;
}

TCellValue CallSumProduct(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  if (const auto fast = TrySumProductLanes(AArgs)) return NumberOrError(*fast);
  if (const auto fast = TrySumProductSparse(AArgs)) return NumberOrError(*fast);
  return NumberOrError(SumProductPlain(AArgs));
}

TCellValue CallRank(TFormulaArgs AArgs, const TFormulaContext&) {
  double number = 0;
  if (AArgs.size() < 2 || !ArgAsNumber(AArgs[0], number)) return ValueError();
  double order = 0;
  if (AArgs.size() > 2) ArgAsNumber(AArgs[2], order);
  int64_t below = 0;
  int64_t equal = 0;
  int64_t above = 0;
  ForEachNumber(AArgs[1], [&](double AOther) {
    below += AOther < number;
    equal += AOther == number;
    above += AOther > number;
  });
  return equal == 0 ? NotAvailable() : CountOf((order != 0 ? below : above) + 1);
}

// clang-format off
constexpr TFunctionDef kAggregateFunctions[] = {
    {.Name = u"AVERAGE", .MinArgs = 1, .Body = CallAverage, .InCompletion = true,
     .Arguments = u"value1, [value2], ...", .Description = u"Arithmetic mean of the numbers among the values."},
    {.Name = u"COUNT", .MinArgs = 1, .Body = CallCount, .InCompletion = true,
     .Arguments = u"value1, [value2], ...", .Description = u"How many of the values are numbers."},
    {.Name = u"COUNTA", .MinArgs = 1, .Body = CallCountA, .InCompletion = true,
     .Arguments = u"value1, [value2], ...", .Description = u"How many of the values are not blank."},
    {.Name = u"COUNTBLANK", .MinArgs = 1, .Body = CallCountBlank, .InCompletion = true,
     .Arguments = u"value1, [value2], ...", .Description = u"How many of the values are blank or an empty text."},
    {.Name = u"MAX", .MinArgs = 1, .Body = CallMax, .InCompletion = true,
     .Arguments = u"value1, [value2], ...", .Description = u"Largest number among the values, 0 without any."},
    {.Name = u"MIN", .MinArgs = 1, .Body = CallMin, .InCompletion = true,
     .Arguments = u"value1, [value2], ...", .Description = u"Smallest number among the values, 0 without any."},
    {.Name = u"PRODUCT", .MinArgs = 1, .Body = CallProduct, .InCompletion = true,
     .Arguments = u"value1, [value2], ...", .Description = u"Product of the numbers among the values."},
    {.Name = u"RANK", .MinArgs = 2, .MaxArgs = 3, .Body = CallRank, .InCompletion = true,
     .Arguments = u"number, values, [ascending]", .Description = u"Place of a number among the numbers of a range."},
    {.Name = u"RANK.EQ", .MinArgs = 2, .MaxArgs = 3, .Body = CallRank,
     .Arguments = u"number, values, [ascending]",
     .Description = u"Place of a number among the numbers of a range; equal numbers share the best place."},
    {.Name = u"SUBTOTAL", .MinArgs = 2, .Body = CallSubtotal,
     .Arguments = u"code, value1, [value2], ...",
     .Description = u"Average (1), count (2, 3), maximum (4), minimum (5), product (6) or sum (9) of the values."},
    {.Name = u"SUM", .MinArgs = 1, .Body = CallSum, .InCompletion = true,
     .Arguments = u"value1, [value2], ...", .Description = u"Sum of the numbers among the values."},
    {.Name = u"SUMPRODUCT", .MinArgs = 1, .Body = CallSumProduct, .InCompletion = true,
     .Arguments = u"array1, [array2], ...",
     .Description = u"Multiplies the arrays place by place and adds up the products."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> AggregateFunctions() { return kAggregateFunctions; }

}  // namespace tessarine
