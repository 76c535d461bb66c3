#include <tessarine/formula/FunctionTable.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include <tessarine/formula/library/detail/ArgReading.h>
#include <tessarine/formula/library/detail/Conditions.h>
#include <tessarine/formula/library/detail/Criteria.h>

namespace tessarine {

namespace {

using namespace detail;

/// Arguments as rectangles: those that are ones already stand, scalars become rectangles of one cell that live here.
class TRectangles {
 public:
  explicit TRectangles(TFormulaArgs AArgs) : FArgs(AArgs) {
    const auto scalars = std::count_if(AArgs.begin(), AArgs.end(), [](const auto& AArg) { return !AArg.IsRange; });
    FMade.reserve(static_cast<size_t>(scalars));
  }

  const TFormulaArg& operator[](size_t AIndex) {
    if (FArgs[AIndex].IsRange) return FArgs[AIndex];
    return FMade.emplace_back(AsRangeArg(FArgs[AIndex]));
  }

 private:
  TFormulaArgs FArgs;
  std::vector<TFormulaArg> FMade;  // never grows beyond what is reserved, so that its elements stay where they are
};

struct TTotal {
  double Sum = 0;
  int64_t Count = 0;
};

TTotal TotalOf(const TFormulaArg& AValues, std::span<const TCondition> AConditions, int64_t ACount,
               const TFormulaContext& AContext) {
  TTotal total;
  WalkMatchingNumbers(AValues, AConditions, ACount, AContext.Indexes, [&](std::span<const double> ANumbers) {
    for (const double number : ANumbers) total.Sum += number;
    total.Count += static_cast<int64_t>(ANumbers.size());
    return true;
  });
  return total;
}

/// range, criterion, [values]: cells are paired by their index, up to the shorter of both.
TTotal TotalOfOneCondition(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  TRectangles rectangles(AArgs);
  const TFormulaArg& range = rectangles[0];
  const TFormulaArg& values = AArgs.size() > 2 ? rectangles[2] : range;
  const TCondition condition{&range, TCriterion(AArgs[1].FirstView())};
  return TotalOf(values, std::span(&condition, 1), std::min(range.CellCount(), values.CellCount()), AContext);
}

/// range1, criterion1, range2, criterion2, ...; empty when the ranges have not all ACount cells.
std::vector<TCondition> ConditionsOf(TRectangles& ARectangles, TFormulaArgs AArgs, size_t AFirst, int64_t ACount) {
  std::vector<TCondition> conditions;
  conditions.reserve((AArgs.size() - AFirst) / 2);
  for (size_t i = AFirst; i + 1 < AArgs.size(); i += 2) {
    const TFormulaArg& range = ARectangles[i];
    if (range.CellCount() != ACount) return {};
    conditions.push_back({&range, TCriterion(AArgs[i + 1].FirstView())});
  }
  return conditions;
}

TCellValue CallSumIf(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (AArgs.size() < 2) return ValueError();
  return NumberOrError(TotalOfOneCondition(AArgs, AContext).Sum);
}

TCellValue CallAverageIf(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (AArgs.size() < 2) return ValueError();
  const TTotal total = TotalOfOneCondition(AArgs, AContext);
  return total.Count == 0 ? Div0Error() : NumberOrError(total.Sum / static_cast<double>(total.Count));
}

TCellValue CallCountIf(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (AArgs.size() < 2) return ValueError();
  TRectangles rectangles(AArgs);
  const TFormulaArg& range = rectangles[0];
  const TCondition condition{&range, TCriterion(AArgs[1].FirstView())};
  const int64_t count = CountMatches(std::span(&condition, 1), range.CellCount(), AContext.Indexes);
  return TCellValue::FromNumber(static_cast<double>(count));
}

/// What the functions of values, range1, criterion1, ... share: AAnswer(values, conditions) when the arguments fit.
template <class TAnswer>
TCellValue AnswerWhere(TFormulaArgs AArgs, TAnswer&& AAnswer) {
  if (AArgs.size() < 3 || AArgs.size() % 2 == 0) return ValueError();
  TRectangles rectangles(AArgs);
  const TFormulaArg& values = rectangles[0];
  const std::vector<TCondition> conditions = ConditionsOf(rectangles, AArgs, 1, values.CellCount());
  return conditions.empty() ? ValueError() : AAnswer(values, conditions);
}

TCellValue CallSumIfs(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  return AnswerWhere(AArgs, [&](const TFormulaArg& AValues, const std::vector<TCondition>& AConditions) {
    return NumberOrError(TotalOf(AValues, AConditions, AValues.CellCount(), AContext).Sum);
  });
}

TCellValue CallAverageIfs(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  return AnswerWhere(AArgs, [&](const TFormulaArg& AValues, const std::vector<TCondition>& AConditions) {
    const TTotal total = TotalOf(AValues, AConditions, AValues.CellCount(), AContext);
    return total.Count == 0 ? Div0Error() : NumberOrError(total.Sum / static_cast<double>(total.Count));
  });
}

/// The largest or smallest of the numbers that meet the criteria, 0 without any.
template <class TBetter>
TCellValue ExtremeWhere(TFormulaArgs AArgs, const TFormulaContext& AContext, TBetter ABetter) {
  return AnswerWhere(AArgs, [&](const TFormulaArg& AValues, const std::vector<TCondition>& AConditions) {
    std::optional<double> best;
    WalkMatchingNumbers(AValues, AConditions, AValues.CellCount(), AContext.Indexes,
                        [&](std::span<const double> ANumbers) {
                          for (const double number : ANumbers) {
                            if (!best || ABetter(number, *best)) best = number;
                          }
                          return true;
                        });
    return NumberOrError(best.value_or(0));
  });
}

TCellValue CallMaxIfs(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  return ExtremeWhere(AArgs, AContext, std::greater<double>());
}
TCellValue CallMinIfs(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  return ExtremeWhere(AArgs, AContext, std::less<double>());
}

TCellValue CallCountIfs(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (AArgs.size() < 2 || AArgs.size() % 2 != 0) return ValueError();
  TRectangles rectangles(AArgs);
  const int64_t count = AArgs[0].IsRange ? AArgs[0].CellCount() : 1;
  const std::vector<TCondition> conditions = ConditionsOf(rectangles, AArgs, 0, count);
  if (conditions.empty()) return ValueError();
  return TCellValue::FromNumber(static_cast<double>(CountMatches(conditions, count, AContext.Indexes)));
}

// clang-format off
constexpr TFunctionDef kCriteriaFunctions[] = {
    {.Name = u"AVERAGEIF", .MinArgs = 2, .MaxArgs = 3, .Body = CallAverageIf, .InCompletion = true,
     .Arguments = u"range, criterion, [average_range]",
     .Description = u"Mean of the numbers whose cells in a range meet a criterion."},
    {.Name = u"AVERAGEIFS", .MinArgs = 3, .Tier = ftrExtra, .Body = CallAverageIfs, .InCompletion = true,
     .Arguments = u"average_range, range1, criterion1, [range2], [criterion2], ...",
     .Description = u"Mean of the numbers at the places that meet a criterion in every range."},
    {.Name = u"COUNTIF", .MinArgs = 2, .MaxArgs = 2, .Body = CallCountIf, .InCompletion = true,
     .Arguments = u"range, criterion", .Description = u"How many cells of a range meet a criterion such as \">5\"."},
    {.Name = u"COUNTIFS", .MinArgs = 2, .Body = CallCountIfs, .InCompletion = true,
     .Arguments = u"range1, criterion1, [range2], [criterion2], ...",
     .Description = u"How many places meet a criterion in every range; all ranges have the same number of cells."},
    {.Name = u"MAXIFS", .MinArgs = 3, .Tier = ftrExtra, .Body = CallMaxIfs,
     .Arguments = u"max_range, range1, criterion1, [range2], [criterion2], ...",
     .Description = u"Largest of the numbers at the places that meet a criterion in every range, 0 without any."},
    {.Name = u"MINIFS", .MinArgs = 3, .Tier = ftrExtra, .Body = CallMinIfs,
     .Arguments = u"min_range, range1, criterion1, [range2], [criterion2], ...",
     .Description = u"Smallest of the numbers at the places that meet a criterion in every range, 0 without any."},
    {.Name = u"SUMIF", .MinArgs = 2, .MaxArgs = 3, .Body = CallSumIf, .InCompletion = true,
     .Arguments = u"range, criterion, [sum_range]",
     .Description = u"Sum of the numbers whose cells in a range meet a criterion."},
    {.Name = u"SUMIFS", .MinArgs = 3, .Body = CallSumIfs, .InCompletion = true,
     .Arguments = u"sum_range, range1, criterion1, [range2], [criterion2], ...",
     .Description = u"Sum of the numbers at the places that meet a criterion in every range."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> CriteriaFunctions() { return kCriteriaFunctions; }

}  // namespace tessarine
