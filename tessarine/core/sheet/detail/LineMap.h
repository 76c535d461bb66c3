#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/core/reference/IndexShift.h>

namespace tessarine::detail {

/// Neighbouring lines (rows or columns) that an edit carries along together.
struct TLineStretch {
  int32_t First = 0;
  int32_t Last = 0;
  int32_t NewFirst = 0;

  int32_t Distance() const { return NewFirst - First; }
  friend bool operator==(const TLineStretch&, const TLineStretch&) = default;
};

/// Where every line of one axis goes. Lines of no stretch go away; lines that no stretch goes to become free.
/// The stretches rise by NewFirst and neither they nor their targets overlap.
struct TLineMap {
  TShiftAxis Axis = saRows;
  std::vector<TLineStretch> Stretches;  // empty: every line stays

  bool IsIdentity() const { return Stretches.empty(); }
  /// The new place of a line, 0 when it goes away.
  int32_t NewLine(int32_t ALine) const;
  /// The way back; what went away does not return by it.
  TLineMap Inverse() const;
  /// The lines of the axis that go away, ascending, as stretches without a target.
  std::vector<TLineStretch> Gone() const;
};

/// An insert, a delete or a move of lines.
struct TLineEdit {
  TShiftAxis Axis = saRows;
  bool IsMove = false;
  int64_t Start = 1;
  int64_t Count = 0;  // of a shift: above 0 inserts, below 0 deletes
  int64_t Dest = 1;   // of a move: the block's new first line

  static TLineEdit Shift(TShiftAxis AAxis, int64_t AStart, int64_t ADelta) { return {AAxis, false, AStart, ADelta, 1}; }
  static TLineEdit Move(TShiftAxis AAxis, int64_t AStart, int64_t ACount, int64_t ADest) {
    return {AAxis, true, AStart, ACount, ADest};
  }

  /// The map of the sheet's own lines.
  TLineMap Map() const;
  std::optional<int64_t> NewIndex(int64_t AIndex) const {
    return IsMove ? std::optional(MoveIndex(AIndex, Start, Count, Dest)) : ShiftIndex(AIndex, Start, Count);
  }
  /// Lines of one region (0 to 3) all go the same distance, or all go away.
  uint32_t Region(int64_t AIndex) const;
  /// The last line of the region that a line is in; far beyond the sheet for the last one.
  int64_t RegionEnd(int64_t AIndex) const;
  /// A formula's text after the edit of the sheet ASheetName.
  std::u16string Rewritten(std::u16string_view AText, std::u16string_view ASheetName, bool AOnSheet) const;
};

/// The edit as a sheet's operation means it; nothing when it is none: a start or target outside the sheet, a count
/// below 1, a block that stays. ADest of a move counts in the old numbering.
std::optional<TLineEdit> MakeShift(TShiftAxis AAxis, int64_t AStart, int64_t ACount, bool AIsDelete);
std::optional<TLineEdit> MakeMove(TShiftAxis AAxis, int64_t AStart, int64_t ACount, int64_t ADest);

}  // namespace tessarine::detail
