#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>

#include <tessarine/Export.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

/// A reversible edit.
class TESSARINE_API IUndoCommand {
 public:
  virtual ~IUndoCommand() = default;

  /// Applies the change; also used to redo it.
  virtual void Execute() = 0;
  virtual void Undo() = 0;
  /// A text for the undo menu ("Edit cell B3").
  virtual TText Description() const = 0;
  /// A number that moves with every change that Execute or Undo makes; the manager compares it when one of them threw.
  /// A command that changes all or nothing need not answer.
  virtual uint64_t ChangeStamp() const { return 0; }
};

/// The edits that can be taken back and those that can be done again. Every executed command is one step; what
/// belongs together is one command.
class TESSARINE_API TUndoManager {
 public:
  /// Levels that a workbook keeps.
  static constexpr int32_t kDefaultLevels = 100;

  explicit TUndoManager(int32_t AMaxLevels = kDefaultLevels) : FMaxLevels(AMaxLevels) {}
  TUndoManager(const TUndoManager&) = delete;
  TUndoManager& operator=(const TUndoManager&) = delete;

  /// Executes ACommand and puts it on the undo stack, of which the oldest commands beyond the limit go; what could be
  /// redone goes as well. While disabled it is only executed. When it throws, the stacks stay as they are.
  void ExecuteCommand(std::shared_ptr<IUndoCommand> ACommand);

  bool CanUndo() const { return FEnabled && !FUndoStack.empty(); }
  bool CanRedo() const { return FEnabled && !FRedoStack.empty(); }
  /// Nothing happens when there is nothing to do. When the command throws, its step stays where it was, or, when it had
  /// changed something by then, goes to the other stack as if it were done, so that it can be taken the other way.
  void Undo();
  void Redo();
  void Clear();

  bool IsEnabled() const { return FEnabled; }
  void SetEnabled(bool AValue) { FEnabled = AValue; }
  int32_t MaxLevels() const { return FMaxLevels; }
  /// Takes effect with the next command.
  void SetMaxLevels(int32_t AValue) { FMaxLevels = AValue; }

  size_t UndoCount() const { return FUndoStack.size(); }
  size_t RedoCount() const { return FRedoStack.size(); }
  /// What Undo or Redo would do next; null when there is nothing.
  const IUndoCommand* NextUndo() const { return FUndoStack.empty() ? nullptr : FUndoStack.back().get(); }
  const IUndoCommand* NextRedo() const { return FRedoStack.empty() ? nullptr : FRedoStack.back().get(); }

  /// Called after every change of the stacks.
  void SetOnChanged(std::function<void(TUndoManager& ASender)> AHandler) { FOnChanged = std::move(AHandler); }

 private:
  using TSteps = std::list<std::shared_ptr<IUndoCommand>>;  // a step changes its stack without an allocation

  void FireChanged();
  void TakeStep(TSteps& AFrom, TSteps& ATo, void (IUndoCommand::*AAct)());

  TSteps FUndoStack;  // newest last
  TSteps FRedoStack;  // most recently undone last
  int32_t FMaxLevels;
  bool FEnabled = true;
  std::function<void(TUndoManager&)> FOnChanged;
};

}  // namespace tessarine
