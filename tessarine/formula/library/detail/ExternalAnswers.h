#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>

#include <tessarine/formula/FormulaArg.h>
#include <tessarine/formula/FunctionTable.h>
#include <tessarine/formula/library/detail/ArgReading.h>

/// Functions that ask something outside, asked once.
///
/// An evaluation may run a part of a formula a second time: arguments count as evaluated twice, and a formula that had
/// to wait for another cell begins anew. A fetch that failed, or a question to a host's provider, must not be repeated
/// by that. So the answers are kept, by function and arguments, until the call from outside comes back.
namespace tessarine::detail {

/// The answers of one outermost call of an evaluator; on the thread of that call.
class TExternalAnswers {
 public:
  /// Opens the scope if AIsOutermost, else does nothing.
  explicit TExternalAnswers(bool AIsOutermost) : FIsOpen(AIsOutermost) {
    if (FIsOpen) FOuter = std::exchange(FCurrent, this);
  }
  ~TExternalAnswers() {
    if (FIsOpen) FCurrent = FOuter;
  }
  TExternalAnswers(const TExternalAnswers&) = delete;
  TExternalAnswers& operator=(const TExternalAnswers&) = delete;

  /// What ABody answers for the arguments, from the answers of the scope that is open if it was asked before.
  static TFormulaArg Ask(TArrayBody ABody, TFormulaArgs AArgs, const TFormulaContext& AContext);

 private:
  using TAnswers = std::map<std::pair<TArrayBody, std::u16string>, TFormulaArg>;

  static thread_local constinit TExternalAnswers* FCurrent;

  bool FIsOpen;
  TExternalAnswers* FOuter = nullptr;
  std::unique_ptr<TAnswers> FAnswers;  // null as long as there are none
};

/// The body of a table's row whose function asks outside.
template <TArrayBody Body>
TFormulaArg AskOnce(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  return TExternalAnswers::Ask(Body, AArgs, AContext);
}
template <TArrayBody Body>
TCellValue AskOnceForValue(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  return TExternalAnswers::Ask(Body, AArgs, AContext).First();
}

}  // namespace tessarine::detail
