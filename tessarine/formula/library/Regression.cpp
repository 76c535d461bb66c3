#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include <tessarine/formula/FunctionTable.h>
#include <tessarine/formula/library/detail/ArrayBodies.h>
#include <tessarine/formula/library/detail/LeastSquares.h>
#include <tessarine/formula/library/detail/Samples.h>

namespace tessarine {

namespace {

using namespace detail;

/// Pairs in two passes: y from the first, x from the second argument.
struct TPairMoments {
  double Count = 0;
  double MeanY = 0;
  double MeanX = 0;
  double SquaresY = 0;
  double SquaresX = 0;
  double Products = 0;
};

TPairMoments PairMomentsOf(const TPairs& APairs) {
  TPairMoments moments;
  for (size_t i = 0; i < APairs.First.size(); ++i) {
    moments.MeanY += APairs.First[i];
    moments.MeanX += APairs.Second[i];
  }
  moments.Count = static_cast<double>(APairs.First.size());
  moments.MeanY /= moments.Count;
  moments.MeanX /= moments.Count;
  for (size_t i = 0; i < APairs.First.size(); ++i) {
    const double y = APairs.First[i] - moments.MeanY;
    const double x = APairs.Second[i] - moments.MeanX;
    moments.SquaresY += y * y;
    moments.SquaresX += x * x;
    moments.Products += y * x;
  }
  return moments;
}

/// What a formula of pairs answers: a divisor of 0, few pairs among its reasons, is #DIV/0!.
TCellValue Quotient(double ADividend, double ADivisor) {
  if (!std::isfinite(ADivisor)) return NumError();
  return ADivisor > 0 ? NumberOrError(ADividend / ADivisor) : Div0Error();
}

using TPairFormula = TCellValue (*)(const TPairMoments& AMoments);

/// #N/A when the arguments have not the same number of cells, #DIV/0! without any pair.
TCellValue CallOnPairs(const TFormulaArg& AY, const TFormulaArg& AX, TPairFormula AFormula) {
  const auto pairs = PairsOf(AY, AX);
  if (!pairs) return NotAvailable();
  return pairs->First.empty() ? Div0Error() : AFormula(PairMomentsOf(*pairs));
}

template <TPairFormula Formula>
TCellValue CallPairs(TFormulaArgs AArgs, const TFormulaContext&) {
  return AArgs.size() < 2 ? ValueError() : CallOnPairs(AArgs[0], AArgs[1], Formula);
}

TCellValue CovarianceP(const TPairMoments& AMoments) { return NumberOrError(AMoments.Products / AMoments.Count); }
TCellValue CovarianceS(const TPairMoments& AMoments) { return Quotient(AMoments.Products, AMoments.Count - 1); }
TCellValue Slope(const TPairMoments& AMoments) { return Quotient(AMoments.Products, AMoments.SquaresX); }

/// The root is taken of each sum: their product could leave the range of doubles.
TCellValue Correlation(const TPairMoments& AMoments) {
  return Quotient(AMoments.Products, std::sqrt(AMoments.SquaresY) * std::sqrt(AMoments.SquaresX));
}

TCellValue CorrelationSquared(const TPairMoments& AMoments) {
  const TCellValue root = Correlation(AMoments);
  return root.Kind == cvkNumber ? NumberOrError(root.Number * root.Number) : root;
}

TCellValue Intercept(const TPairMoments& AMoments) {
  const TCellValue slope = Slope(AMoments);
  return slope.Kind == cvkNumber ? NumberOrError(AMoments.MeanY - slope.Number * AMoments.MeanX) : slope;
}

/// y values, x values. The errors are added one by one: as a difference of sums they would lose their digits.
TCellValue CallStandardError(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.size() < 2) return ValueError();
  const auto pairs = PairsOf(AArgs[0], AArgs[1]);
  if (!pairs) return NotAvailable();
  if (pairs->First.size() < 3) return Div0Error();
  const TPairMoments moments = PairMomentsOf(*pairs);
  const TCellValue slope = Slope(moments);
  if (slope.Kind != cvkNumber) return slope;
  double errors = 0;
  for (size_t i = 0; i < pairs->First.size(); ++i) {
    const double error = pairs->First[i] - moments.MeanY - slope.Number * (pairs->Second[i] - moments.MeanX);
    errors += error * error;
  }
  return NumberOrError(std::sqrt(errors / (moments.Count - 2)));
}

/// x, y values, x values
TCellValue CallForecast(TFormulaArgs AArgs, const TFormulaContext&) {
  double x = 0;
  if (AArgs.size() < 3 || !ArgAsNumber(AArgs[0], x)) return ValueError();
  const auto pairs = PairsOf(AArgs[1], AArgs[2]);
  if (!pairs) return NotAvailable();
  if (pairs->First.empty()) return Div0Error();
  const TPairMoments moments = PairMomentsOf(*pairs);
  const TCellValue slope = Slope(moments);
  if (slope.Kind != cvkNumber) return slope;
  return NumberOrError(moments.MeanY + slope.Number * (x - moments.MeanX));
}

/// How variables lie in a rectangle beside the results.
enum class TVariableLayout : uint8_t { vlOne, vlColumns, vlRows, vlNone };
using enum TVariableLayout;

TVariableLayout LayoutOf(const TFormulaArg& AResults, const TFormulaArg& AVariables) {
  if (AResults.RowCount == AVariables.RowCount && AResults.ColCount == AVariables.ColCount) return vlOne;
  if (AResults.ColCount == 1 && AResults.RowCount == AVariables.RowCount) return vlColumns;
  if (AResults.RowCount == 1 && AResults.ColCount == AVariables.ColCount) return vlRows;
  return vlNone;
}

/// All cells of a rectangle, which must be numbers.
std::optional<std::vector<double>> AllNumbersOf(const TFormulaArg& ARectangle) {
  std::vector<double> numbers = NumbersOf(ARectangle);
  if (numbers.size() != static_cast<size_t>(ARectangle.CellCount())) return std::nullopt;
  return numbers;
}

/// The cells of a rectangle as variables, each with its observations.
std::vector<std::vector<double>> VariablesOf(std::vector<double> ACells, const TFormulaArg& ARectangle,
                                             TVariableLayout ALayout) {
  if (ALayout == vlOne) return {std::move(ACells)};
  const auto cols = static_cast<size_t>(ARectangle.ColCount);
  std::vector<std::vector<double>> variables(ALayout == vlColumns ? cols : static_cast<size_t>(ARectangle.RowCount));
  for (size_t i = 0; i < ACells.size(); ++i) {
    variables[ALayout == vlColumns ? i % cols : i / cols].push_back(ACells[i]);
  }
  return variables;
}

/// A fitted model with what is needed to use it.
struct TFit {
  TLinearModel Model;
  TVariableLayout Layout = vlOne;
  std::vector<double> FirstPoint;  // the first observation of the variables
  TCellErrorCode Error = ceNone;
};

/// AArgs: results, [variables]; without variables they are 1, 2, 3 and so on. AOfLogarithms fits the logarithms of the
/// results, which must be above 0.
TFit FitOf(TFormulaArgs AArgs, bool AWithConstant, bool AOfLogarithms) {
  TFit fit;
  const auto failed = [&](TCellErrorCode AError) {
    fit.Error = AError;
    return fit;
  };
  const TAsRectangle results(AArgs[0]);
  const TAsRectangle given(AArgs[AArgs.size() > 1 ? 1 : 0]);
  fit.Layout = LayoutOf(*results, *given);
  if (fit.Layout == vlNone || results->CellCount() == 0) return failed(ceValue);
  if (!FitsLeastSquares(results->CellCount(), given->CellCount() / results->CellCount())) return failed(ceNum);
  auto numbers = AllNumbersOf(*results);
  auto cells = AllNumbersOf(*given);
  if (!numbers || !cells) return failed(ceValue);
  if (AArgs.size() == 1) {
    for (size_t i = 0; i < cells->size(); ++i) (*cells)[i] = static_cast<double>(i + 1);
  }
  if (AOfLogarithms) {
    for (double& number : *numbers) {
      if (number <= 0) return failed(ceNum);
      number = std::log(number);
    }
  }
  TObservations observations{numbers->size(), VariablesOf(std::move(*cells), *given, fit.Layout), std::move(*numbers)};
  if (observations.Variables.empty()) return failed(ceValue);
  for (const auto& variable : observations.Variables) fit.FirstPoint.push_back(variable[0]);
  fit.Model = FitLinearModel(std::move(observations), AWithConstant);
  return fit;
}

/// An optional flag, TRUE when it is left out; false when it is no number.
bool ReadFlag(TFormulaArgs AArgs, size_t AIndex, bool& AFlag) {
  double number = 1;
  if (AIndex < AArgs.size() && !ArgAsNumber(AArgs[AIndex], number)) return false;
  AFlag = number != 0;
  return true;
}

/// results, [variables], [constant], [statistics]: the first value of the rectangle of factors, which is the factor of
/// the last variable.
template <bool OfLogarithms>
TCellValue CallFactor(TFormulaArgs AArgs, const TFormulaContext&) {
  bool withConstant = true;
  bool withStatistics = true;
  if (AArgs.empty() || !ReadFlag(AArgs, 2, withConstant) || !ReadFlag(AArgs, 3, withStatistics)) return ValueError();
  const TFit fit = FitOf(AArgs.first(std::min<size_t>(AArgs.size(), 2)), withConstant, OfLogarithms);
  if (fit.Error != ceNone) return TCellValue::FromError(fit.Error);
  const double factor = fit.Model.Factors.back();
  return NumberOrError(OfLogarithms ? std::exp(factor) : factor);
}

/// The first point of new variables, or nothing when they are not as many or one is no number.
std::optional<std::vector<double>> FirstPointOf(const TFormulaArg& AVariables, const TFit& AFit) {
  const size_t count = AFit.FirstPoint.size();
  const TAsRectangle variables(AVariables);
  const int32_t given = AFit.Layout == vlColumns ? variables->ColCount : variables->RowCount;
  if (variables->CellCount() == 0 || (AFit.Layout != vlOne && static_cast<size_t>(given) != count)) return std::nullopt;
  std::vector<double> point;
  for (size_t i = 0; i < count; ++i) {
    const auto place = static_cast<int32_t>(i);
    const TValueView cell =
        AFit.Layout == vlColumns ? variables->ViewAt(0, place) : variables->ViewAt(place, int32_t{0});
    if (cell.Kind != cvkNumber) return std::nullopt;
    point.push_back(cell.Number);
  }
  return point;
}

/// results, [variables], [new variables], [constant]: the first of the results that the model has for the new ones.
template <bool OfLogarithms>
TCellValue CallTrend(TFormulaArgs AArgs, const TFormulaContext&) {
  bool withConstant = true;
  if (AArgs.empty() || !ReadFlag(AArgs, 3, withConstant)) return ValueError();
  const TFit fit = FitOf(AArgs.first(std::min<size_t>(AArgs.size(), 2)), withConstant, OfLogarithms);
  if (fit.Error != ceNone) return TCellValue::FromError(fit.Error);
  const auto point = AArgs.size() > 2 ? FirstPointOf(AArgs[2], fit) : fit.FirstPoint;
  if (!point) return ValueError();
  const double result = fit.Model.At(*point);
  return NumberOrError(OfLogarithms ? std::exp(result) : result);
}

// clang-format off
constexpr TFunctionDef kRegressionFunctions[] = {
    {.Name = u"CORREL", .Spellings = u"PEARSON", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra,
     .Body = CallPairs<Correlation>, .Arguments = u"values1, values2",
     .Description = u"Correlation of the numbers that stand at the same places."},
    {.Name = u"COVARIANCE.P", .Spellings = u"COVAR", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra,
     .Body = CallPairs<CovarianceP>, .Arguments = u"values1, values2",
     .Description = u"Covariance, as of a population, of the numbers that stand at the same places."},
    {.Name = u"COVARIANCE.S", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallPairs<CovarianceS>,
     .Arguments = u"values1, values2",
     .Description = u"Covariance, as of a sample, of the numbers that stand at the same places."},
    {.Name = u"FORECAST.LINEAR", .Spellings = u"FORECAST", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra,
     .Body = CallForecast, .Arguments = u"x, y_values, x_values",
     .Description = u"The y at an x on the line of best fit."},
    {.Name = u"GROWTH", .MinArgs = 1, .MaxArgs = 4, .Tier = ftrExtra, .Body = CallTrend<true>,
     .Arguments = u"y_values, [x_values], [new_x_values], [constant]",
     .Description = u"The y at the first of new x on the exponential curve of best fit."},
    {.Name = u"INTERCEPT", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallPairs<Intercept>,
     .Arguments = u"y_values, x_values", .Description = u"The y at which the line of best fit meets x = 0."},
    {.Name = u"LINEST", .MinArgs = 1, .MaxArgs = 4, .Tier = ftrExtra, .Body = CallFactor<false>,
     .Arguments = u"y_values, [x_values], [constant], [statistics]",
     .Description = u"Factor of the last variable in the linear model of best fit."},
    {.Name = u"LOGEST", .MinArgs = 1, .MaxArgs = 4, .Tier = ftrExtra, .Body = CallFactor<true>,
     .Arguments = u"y_values, [x_values], [constant], [statistics]",
     .Description = u"Base of the last variable in the exponential model of best fit."},
    {.Name = u"RSQ", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallPairs<CorrelationSquared>,
     .Arguments = u"y_values, x_values", .Description = u"Square of the correlation."},
    {.Name = u"SLOPE", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallPairs<Slope>,
     .Arguments = u"y_values, x_values", .Description = u"Slope of the line of best fit."},
    {.Name = u"STEYX", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallStandardError,
     .Arguments = u"y_values, x_values", .Description = u"Standard error of the y on the line of best fit."},
    {.Name = u"TREND", .MinArgs = 1, .MaxArgs = 4, .Tier = ftrExtra, .Body = CallTrend<false>,
     .Arguments = u"y_values, [x_values], [new_x_values], [constant]",
     .Description = u"The y at the first of new x in the linear model of best fit."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> RegressionFunctions() { return kRegressionFunctions; }

}  // namespace tessarine
