#include <tessarine/core/undo/UndoManager.h>

#include <iterator>
#include <utility>

namespace tessarine {

void TUndoManager::FireChanged() {
  if (FOnChanged) FOnChanged(*this);
}

void TUndoManager::ExecuteCommand(std::shared_ptr<IUndoCommand> ACommand) {
  if (!ACommand) return;
  TSteps step{std::move(ACommand)};
  step.back()->Execute();
  if (!FEnabled) return;
  FUndoStack.splice(FUndoStack.end(), step);
  FRedoStack.clear();
  while (!FUndoStack.empty() && static_cast<int64_t>(FUndoStack.size()) > FMaxLevels) FUndoStack.pop_front();
  FireChanged();
}

void TUndoManager::TakeStep(TSteps& AFrom, TSteps& ATo, void (IUndoCommand::*AAct)()) {
  TSteps step;  // off the stacks while it runs: a handler may use them
  step.splice(step.end(), AFrom, std::prev(AFrom.end()));
  IUndoCommand& command = *step.back();
  const uint64_t before = command.ChangeStamp();
  try {
    (command.*AAct)();
  } catch (...) {
    const bool hasChanged = command.ChangeStamp() != before;
    TSteps& stack = hasChanged ? ATo : AFrom;
    stack.splice(stack.end(), step);
    if (hasChanged) FireChanged();
    throw;
  }
  ATo.splice(ATo.end(), step);
  FireChanged();
}

void TUndoManager::Undo() {
  if (CanUndo()) TakeStep(FUndoStack, FRedoStack, &IUndoCommand::Undo);
}

void TUndoManager::Redo() {
  if (CanRedo()) TakeStep(FRedoStack, FUndoStack, &IUndoCommand::Execute);
}

void TUndoManager::Clear() {
  FUndoStack.clear();
  FRedoStack.clear();
  FireChanged();
}

}  // namespace tessarine
