#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include <tessarine/formula/detail/Program.h>

namespace tessarine::detail {

/// The body of a LAMBDA that is plain arithmetic (+ - * / ^ and signs) over its parameters and numbers, as steps over
/// numbers.
///
/// Equal to the walk of the tree by construction: the same operations in the same order, each result through the same
/// test (not finite: given up) and the same loss of a negative zero. Nothing in such a body reads a cell or another
/// name, so that a call has no effect but its value. A parameter that is neither a number nor blank, a division by
/// zero, a result that is not finite: the call is given up, and the caller makes it the plain way.
class TNumericLambda {
 public:
  static constexpr size_t kMostLanes = 256;

  /// ALambda is a LAMBDA of AProgram that is well formed; it is called with AArgCount arguments, at most two. Nothing
  /// for a body of another kind.
  static std::optional<TNumericLambda> Compile(const TProgram& AProgram, const TProgramNode& ALambda, size_t AArgCount);

  /// Room for ACount numbers, at most kMostLanes, to be used with CallEach.
  std::span<double> Lanes(int64_t ACount);

  /// One call; false when it is given up.
  bool Call(double AFirst, double ASecond, double& AResult);

  /// A call for each of AFirst, at most kMostLanes, with one argument; the results stand in AFirst. False, with AFirst
  /// as it was, when one of them is given up.
  bool CallEach(std::span<double> AFirst);

 private:
  enum class TStep : uint8_t {
    stConstant,
    stFirst,
    stSecond,
    stAdd,
    stSubtract,
    stMultiply,
    stDivide,
    stPower,
    stNegate
  };
  struct TInstruction {
    TStep Step;
    double Constant;
  };

  TNumericLambda() = default;
  bool Append(const TProgram& AProgram, const TProgramNode& ALambda, const TProgramNode& ANode, size_t AArgCount);
  void Push(TStep AStep, double AConstant = 0);
  bool AppendParameter(const TProgram& AProgram, const TProgramNode& ALambda, const TProgramNode& AName,
                       size_t AArgCount);

  std::vector<TInstruction> FSteps;
  size_t FDepth = 0;      // of the stack behind the steps so far
  size_t FMostDepth = 0;  // that the steps need
  std::vector<double> FStack;
  std::vector<double> FLanes;
};

}  // namespace tessarine::detail
