#include <tessarine/formula/detail/NumericLambda.h>

#include <algorithm>
#include <cmath>
#include <functional>

#include <tessarine/formula/detail/LocalNames.h>

namespace tessarine::detail {

namespace {

constexpr size_t kMostSteps = 64;
constexpr size_t kLambdaLanes = TNumericLambda::kMostLanes;

/// Brings the results of one step to what a single call has; false when one is not finite.
bool SettleLanes(double* ALanes, size_t ACount) {
  double sum = 0;
  for (size_t i = 0; i < ACount; ++i) {
    ALanes[i] += 0.0;        // -0 becomes 0
    sum += ALanes[i] * 0.0;  // 0 unless the lane is not finite
  }
  return sum == 0.0;
}

template <class TOperation>
void Combine(double* ALeft, const double* ARight, size_t ACount, TOperation AOperation) {
  for (size_t i = 0; i < ACount; ++i) ALeft[i] = AOperation(ALeft[i], ARight[i]);
}

}  // namespace

std::optional<TNumericLambda> TNumericLambda::Compile(const TProgram& AProgram, const TProgramNode& ALambda,
                                                      size_t AArgCount) {
  const uint32_t bodyIndex = AProgram.Children[ALambda.FirstChild + ALambda.ChildCount - 1];
  const TProgramNode& body = AProgram.Nodes[bodyIndex];
  if (body.Kind != ankBinary && (body.Kind != ankUnary || body.Op != opMinus)) return std::nullopt;
  // The nodes of a tree stand side by side in the order of a stack machine, from the leaf at its far left on.
  uint32_t index = bodyIndex;
  while (AProgram.Nodes[index].ChildCount > 0) index = AProgram.Children[AProgram.Nodes[index].FirstChild];
  if (bodyIndex - index >= kMostSteps) return std::nullopt;
  TNumericLambda result;
  for (; index <= bodyIndex; ++index) {
    if (!result.Append(AProgram, ALambda, AProgram.Nodes[index], AArgCount)) return std::nullopt;
  }
  result.FStack.resize(result.FMostDepth * kLambdaLanes);
  return result;
}

void TNumericLambda::Push(TStep AStep, double AConstant) {
  FSteps.push_back({AStep, AConstant});
  FMostDepth = std::max(FMostDepth, ++FDepth);
}

/// The name of an operand: the last parameter of that name counts, and one without an argument is blank.
bool TNumericLambda::AppendParameter(const TProgram& AProgram, const TProgramNode& ALambda, const TProgramNode& AName,
                                     size_t AArgCount) {
  for (uint32_t i = ALambda.ChildCount - 1; i-- > 0;) {
    if (!TLocalNames::AreSame(AProgram.Child(ALambda, i).Text, AName.Text)) continue;
    Push(i >= AArgCount ? TStep::stConstant : i == 0 ? TStep::stFirst : TStep::stSecond);
    return true;
  }
  return false;
}

bool TNumericLambda::Append(const TProgram& AProgram, const TProgramNode& ALambda, const TProgramNode& ANode,
                            size_t AArgCount) {
  static constexpr struct {
    TOperator Operator;
    TStep Step;
  } kSteps[] = {{opAdd, TStep::stAdd},
                {opSub, TStep::stSubtract},
                {opMul, TStep::stMultiply},
                {opDiv, TStep::stDivide},
                {opPow, TStep::stPower}};
  switch (ANode.Kind) {
    case ankNumber: Push(TStep::stConstant, ANode.Number); return true;
    case ankFunc: return ANode.IsIdentifier && AppendParameter(AProgram, ALambda, ANode, AArgCount);
    case ankUnary:
      if (ANode.Op == opMinus) FSteps.push_back({TStep::stNegate, 0});
      return ANode.Op != opAt;
    case ankBinary:
      for (const auto& row : kSteps) {
        if (row.Operator != ANode.Op) continue;
        FSteps.push_back({row.Step, 0});
        --FDepth;
        return true;
      }
      return false;
    default: return false;
  }
}

bool TNumericLambda::Call(double AFirst, double ASecond, double& AResult) {
  double* top = FStack.data();
  for (const TInstruction& step : FSteps) {
    switch (step.Step) {
      case TStep::stConstant: *top++ = step.Constant; continue;
      case TStep::stFirst: *top++ = AFirst; continue;
      case TStep::stSecond: *top++ = ASecond; continue;
      case TStep::stNegate: top[-1] = -top[-1]; break;
      case TStep::stAdd: --top, top[-1] += *top; break;
      case TStep::stSubtract: --top, top[-1] -= *top; break;
      case TStep::stMultiply: --top, top[-1] *= *top; break;
      case TStep::stDivide:
        if (*--top == 0) return false;
        top[-1] /= *top;
        break;
      case TStep::stPower: --top, top[-1] = std::pow(top[-1], *top); break;
    }
    if (!std::isfinite(top[-1])) return false;
    top[-1] += 0.0;
  }
  AResult = FStack[0];
  return true;
}

std::span<double> TNumericLambda::Lanes(int64_t ACount) {
  FLanes.resize(kMostLanes);
  return std::span<double>(FLanes).first(std::min(static_cast<size_t>(ACount), kMostLanes));
}

bool TNumericLambda::CallEach(std::span<double> AFirst) {
  if (AFirst.size() > kMostLanes) return false;
  const size_t count = AFirst.size();
  double* top = FStack.data();
  for (const TInstruction& step : FSteps) {
    switch (step.Step) {
      case TStep::stConstant: std::fill_n(top, count, step.Constant), top += kLambdaLanes; continue;
      case TStep::stSecond: return false;
      case TStep::stFirst: std::copy(AFirst.begin(), AFirst.end(), top), top += kLambdaLanes; continue;
      case TStep::stNegate:
        std::transform(top - kLambdaLanes, top - kLambdaLanes + count, top - kLambdaLanes, std::negate<>());
        break;
      default: {
        top -= kLambdaLanes;
        double* left = top - kLambdaLanes;
        switch (step.Step) {
          case TStep::stAdd: Combine(left, top, count, std::plus<>()); break;
          case TStep::stSubtract: Combine(left, top, count, std::minus<>()); break;
          case TStep::stMultiply: Combine(left, top, count, std::multiplies<>()); break;
          case TStep::stDivide:
            if (std::find(top, top + count, 0.0) != top + count) return false;
            Combine(left, top, count, std::divides<>());
            break;
          default: Combine(left, top, count, [](double ALeft, double ARight) { return std::pow(ALeft, ARight); });
        }
      }
    }
    if (!SettleLanes(top - kLambdaLanes, count)) return false;
  }
  std::copy_n(FStack.data(), count, AFirst.begin());
  return true;
}

}  // namespace tessarine::detail
