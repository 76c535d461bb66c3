#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include <tessarine/formula/FormulaArg.h>

namespace tessarine::detail {

/// The arguments held at one time may own this many cells together (384 MB); one that goes beyond it is #NUM!. Small
/// ones, and a first one of any size, are not refused.
constexpr int64_t kMaxHeldCells = int64_t{1} << 24;
constexpr int64_t kUnitsPerCell = 12;  // of a text, as many as take the room of a cell

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

  /// Counts the cells that AArg owns, a long text as several, or makes it #NUM!. What it returns is given back by
  /// PutDown, in any order.
  int64_t PickUp(TFormulaArg& AArg) {
    if (!AArg.IsRange && AArg.Scalar.Kind != cvkText) return 0;
    return PickUpLarge(AArg);
  }
  void PutDown(int64_t ACells) { FHeldCells -= ACells; }

  /// Makes all noted views arrays. Those below one that is an array already are arrays too.
  void MaterializeViews() {
    for (size_t i = FViews.size(); i > 0 && FViews[i - 1]->IsView(); --i) FViews[i - 1]->Materialize();
  }

 private:
  int64_t PickUpLarge(TFormulaArg& AArg);

  struct TChunk {
    std::unique_ptr<TFormulaArg[]> Args;
    size_t Size = 0;
    size_t Used = 0;
  };

  std::vector<TChunk> FChunks;
  size_t FTop = 0;  // the chunk in use; those above it are empty
  std::vector<TFormulaArg*> FViews;
  int64_t FHeldCells = 0;
};

/// The arguments of one call.
class TArgFrame {
 public:
  TArgFrame(TArgStack& AStack, size_t ACount)
      : FStack(AStack), FFirst(AStack.Take(ACount)), FCount(ACount), FViews(AStack.ViewCount()) {}
  ~TArgFrame() {
    Restart();
    FStack.GiveBack(FFirst, FCount);
  }
  TArgFrame(const TArgFrame&) = delete;
  TArgFrame& operator=(const TArgFrame&) = delete;

  void Set(size_t AIndex, TFormulaArg&& AArg) {
    FFirst[AIndex] = std::move(AArg);
    FHeldCells += FStack.PickUp(FFirst[AIndex]);
    if (FFirst[AIndex].IsView()) FStack.NoteView(FFirst[AIndex]);
  }

  /// The arguments are about to be set again from the first on.
  void Restart() {
    FStack.ForgetViews(FViews);
    FStack.PutDown(std::exchange(FHeldCells, 0));
  }

  std::span<const TFormulaArg> Values() const { return {FFirst, FCount}; }

 private:
  TArgStack& FStack;
  TFormulaArg* FFirst;
  size_t FCount;
  size_t FViews;
  int64_t FHeldCells = 0;
};

/// An argument that is held while others are evaluated.
class THeldArg {
 public:
  THeldArg(TArgStack& AStack, TFormulaArg& AArg)
      : FStack(AStack), FViews(AStack.ViewCount()), FHeldCells(AStack.PickUp(AArg)) {
    if (AArg.IsView()) AStack.NoteView(AArg);
  }
  ~THeldArg() {
    FStack.ForgetViews(FViews);
    FStack.PutDown(FHeldCells);
  }
  THeldArg(const THeldArg&) = delete;
  THeldArg& operator=(const THeldArg&) = delete;

 private:
  TArgStack& FStack;
  size_t FViews;
  int64_t FHeldCells;
};

}  // namespace tessarine::detail
