#include <tessarine/formula/detail/ArgStack.h>

#include <algorithm>

namespace tessarine::detail {

namespace {

constexpr size_t kChunkArgs = 256;
constexpr int64_t kSmallCells = 64;
constexpr size_t kKeptChunkArgs = 4096;  // larger chunks go back as soon as they are empty

}  // namespace

TFormulaArg* TArgStack::Take(size_t ACount) {
  if (FChunks.empty() || FChunks[FTop].Size - FChunks[FTop].Used < ACount) {
    if (!FChunks.empty() && FChunks[FTop].Used > 0) ++FTop;
    if (FTop == FChunks.size()) FChunks.emplace_back();
    TChunk& chunk = FChunks[FTop];
    if (chunk.Size < ACount || !chunk.Args) {
      chunk.Size = std::max(kChunkArgs, ACount);
      chunk.Args = std::make_unique<TFormulaArg[]>(chunk.Size);
    }
  }
  TChunk& chunk = FChunks[FTop];
  TFormulaArg* first = chunk.Args.get() + chunk.Used;
  chunk.Used += ACount;
  return first;
}

void TArgStack::GiveBack(TFormulaArg* AFirst, size_t ACount) {
  for (size_t i = 0; i < ACount; ++i) AFirst[i] = TFormulaArg();
  TChunk& chunk = FChunks[FTop];
  chunk.Used -= ACount;
  if (chunk.Used > 0) return;
  if (chunk.Size > kKeptChunkArgs) chunk = TChunk();
  if (FTop > 0) --FTop;
}

int64_t TArgStack::PickUpLarge(TFormulaArg& AArg) {
  int64_t cells = 0;
  if (AArg.IsRange) {
    if (!AArg.IsView()) cells = AArg.CellCount();
  } else if (!AArg.HasOrigin) {  // the text of a cell is shared with it
    cells = static_cast<int64_t>(AArg.Scalar.Text.Length()) / kUnitsPerCell;
  }
  if (cells > kSmallCells && FHeldCells > 0 && FHeldCells + cells > kMaxHeldCells) {
    AArg = TFormulaArg::FromError(ceNum);
    return 0;
  }
  FHeldCells += cells;
  return cells;
}

}  // namespace tessarine::detail
