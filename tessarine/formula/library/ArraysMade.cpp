#include <tessarine/formula/library/detail/ArrayBodies.h>

#include <algorithm>

#include <tessarine/core/values/Coercion.h>
#include <tessarine/formula/library/detail/Random.h>

namespace tessarine::detail {

namespace {

constexpr int64_t kMaxSequenceRows = 1'048'576;
constexpr int64_t kMaxSequenceCols = 16'384;

double RandomInteger(int64_t AFrom, int64_t ATo) {
  const int64_t least = std::min(AFrom, ATo);
  const uint64_t width = static_cast<uint64_t>(std::max(AFrom, ATo)) - static_cast<uint64_t>(least);
  return static_cast<double>(static_cast<int64_t>(static_cast<uint64_t>(least) + RandomUpTo(width)));
}

}  // namespace

TFormulaArg CallSequence(TFormulaArgs AArgs, const TFormulaContext&) {
  int64_t rows = 0;
  if (AArgs.empty() || !ArgAsInt64(AArgs[0], rows)) return ErrorArg(ceValue);
  const int64_t cols = IntegerOr(AArgs, 1, 1);
  if (rows < 1 || cols < 1 || rows > kMaxSequenceRows || cols > kMaxSequenceCols || rows * cols > kMaxGeneratedCells) {
    return ErrorArg(ceNum);
  }
  const double start = NumberOr(AArgs, 2, 1);
  const double step = NumberOr(AArgs, 3, 1);
  std::vector<TCellValue> cells(static_cast<size_t>(rows * cols));
  for (size_t i = 0; i < cells.size(); ++i) cells[i] = NumberOrError(start + static_cast<double>(i) * step);
  return TFormulaArg::FromRange(std::move(cells), static_cast<int32_t>(rows), static_cast<int32_t>(cols));
}

TFormulaArg CallRandArray(TFormulaArgs AArgs, const TFormulaContext&) {
  const int64_t rows = IntegerOr(AArgs, 0, 1);
  const int64_t cols = IntegerOr(AArgs, 1, 1);
  if (rows < 1 || cols < 1) return ErrorArg(ceValue);
  if (!MayGenerate(rows, cols, 0)) return ErrorArg(ceNum);
  std::vector<TCellValue> cells(static_cast<size_t>(rows * cols));
  if (FlagOf(AArgs, 4)) {
    const int64_t least = IntegerOr(AArgs, 2, 0);
    const int64_t most = IntegerOr(AArgs, 3, 1);
    for (TCellValue& cell : cells) cell = TCellValue::FromNumber(RandomInteger(least, most));
  } else {
    const double least = NumberOr(AArgs, 2, 0);
    const double most = NumberOr(AArgs, 3, 1);
    for (TCellValue& cell : cells) cell = NumberOrError(least + (most - least) * RandomUnit());
  }
  return TFormulaArg::FromRange(std::move(cells), static_cast<int32_t>(rows), static_cast<int32_t>(cols));
}

}  // namespace tessarine::detail
