#include <tessarine/core/undo/UndoManager.h>

#include <utility>

namespace tessarine {

void TUndoManager::FireChanged() {
  if (FOnChanged) FOnChanged(*this);
}

void TUndoManager::ExecuteCommand(std::shared_ptr<IUndoCommand> ACommand) {
  if (!ACommand) return;
  ACommand->Execute();
  if (!FEnabled) return;
  FUndoStack.push_back(std::move(ACommand));
  FRedoStack.clear();
  while (!FUndoStack.empty() && static_cast<int64_t>(FUndoStack.size()) > FMaxLevels) FUndoStack.pop_front();
  FireChanged();
}

void TUndoManager::Undo() {
  if (!CanUndo()) return;
  const std::shared_ptr<IUndoCommand> command = std::move(FUndoStack.back());
  FUndoStack.pop_back();
  command->Undo();
  FRedoStack.push_back(command);
  FireChanged();
}

void TUndoManager::Redo() {
  if (!CanRedo()) return;
  const std::shared_ptr<IUndoCommand> command = std::move(FRedoStack.back());
  FRedoStack.pop_back();
  command->Execute();
  FUndoStack.push_back(command);
  FireChanged();
}

void TUndoManager::Clear() {
  FUndoStack.clear();
  FRedoStack.clear();
  FireChanged();
}

}  // namespace tessarine
