#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include <tessarine/formula/FormulaArg.h>

namespace tessarine::detail {

/// Room for the arguments of calls under evaluation, last in first out, so that the frames of the walkers stay small.
/// Also knows which of all the arguments held at present are views, because these must become arrays before anything
/// changes what they show.
class TArgStack {
 public:
  /// ACount fresh arguments side by side. Given back in reverse order.
  TFormulaArg* Take(size_t ACount);
  void GiveBack(TFormulaArg* AFirst, size_t ACount);

  size_t ViewCount() const { return FViews.size(); }
  void NoteView(TFormulaArg& AArg) { FViews.push_back(&AArg); }
  void ForgetViews(size_t ACount) { FViews.resize(ACount); }

  /// Makes all noted views arrays. Those below one that is an array already are arrays too.
  void MaterializeViews() {
    for (size_t i = FViews.size(); i > 0 && FViews[i - 1]->IsView(); --i) FViews[i - 1]->Materialize();
  }

 private:
  struct TChunk {
    std::unique_ptr<TFormulaArg[]> Args;
    size_t Size = 0;
    size_t Used = 0;
  };

  std::vector<TChunk> FChunks;
  size_t FTop = 0;  // the chunk in use; those above it are empty
  std::vector<TFormulaArg*> FViews;
};

/// The arguments of one call.
class TArgFrame {
 public:
  TArgFrame(TArgStack& AStack, size_t ACount)
      : FStack(AStack), FFirst(AStack.Take(ACount)), FCount(ACount), FViews(AStack.ViewCount()) {}
  ~TArgFrame() {
    FStack.ForgetViews(FViews);
    FStack.GiveBack(FFirst, FCount);
  }
  TArgFrame(const TArgFrame&) = delete;
  TArgFrame& operator=(const TArgFrame&) = delete;

  void Set(size_t AIndex, TFormulaArg&& AArg) {
    FFirst[AIndex] = std::move(AArg);
    if (FFirst[AIndex].IsView()) FStack.NoteView(FFirst[AIndex]);
  }

  /// The arguments are about to be set again from the first on.
  void Restart() { FStack.ForgetViews(FViews); }

  std::span<const TFormulaArg> Values() const { return {FFirst, FCount}; }

 private:
  TArgStack& FStack;
  TFormulaArg* FFirst;
  size_t FCount;
  size_t FViews;
};

/// An argument that is held while others are evaluated.
class THeldArg {
 public:
  THeldArg(TArgStack& AStack, TFormulaArg& AArg) : FStack(AStack), FViews(AStack.ViewCount()) {
    if (AArg.IsView()) AStack.NoteView(AArg);
  }
  ~THeldArg() { FStack.ForgetViews(FViews); }
  THeldArg(const THeldArg&) = delete;
  THeldArg& operator=(const THeldArg&) = delete;

 private:
  TArgStack& FStack;
  size_t FViews;
};

}  // namespace tessarine::detail
