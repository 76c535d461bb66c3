#pragma once

#include <cstdint>
#include <optional>

#include <tessarine/Export.h>
#include <tessarine/core/values/Address.h>

namespace tessarine {

enum class TShiftAxis : uint8_t { saRows, saColumns };
using enum TShiftAxis;

/// The new place of a 1-based index after an insert (ADelta above 0) or a delete (below 0) at AStart; nothing when the
/// index was deleted. Not clamped to a sheet.
TESSARINE_API std::optional<int64_t> ShiftIndex(int64_t AIndex, int64_t AStart, int64_t ADelta);

/// The first index of a block of ACount from AStart after it was moved before ADest of the old numbering; nothing when
/// the move changes nothing or an argument is below 1.
TESSARINE_API std::optional<int64_t> NormalizeMoveDest(int64_t AStart, int64_t ACount, int64_t ADest);

/// The new place of an index after a move; ADest is the block's new first index, as NormalizeMoveDest gives it.
TESSARINE_API int64_t MoveIndex(int64_t AIndex, int64_t AStart, int64_t ACount, int64_t ADest);

struct TAdjustedRange {
  TCellRange Range;      // normalized; the input's corners when Deleted
  bool Deleted = false;  // nothing of the range is left
};

/// A range after an insert or a delete: it moves, grows when lines come between its ends and shrinks when lines go.
/// Not clamped to a sheet; ends that 32 bits cannot hold stay at their limit.
TESSARINE_API TAdjustedRange AdjustRange(const TCellRange& ARange, TShiftAxis AAxis, int64_t AStart, int64_t ADelta);

/// A range after a move, ADest as in MoveIndex: both ends go their own way and are ordered again. Normalized.
TESSARINE_API TCellRange AdjustRangeForMove(const TCellRange& ARange, TShiftAxis AAxis, int64_t AStart, int64_t ACount,
                                            int64_t ADest);

}  // namespace tessarine
