#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/reference/IndexShift.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

/// A note at a cell.
struct TCellComment {
  TText Author;
  TText Text;

  static TCellComment Create(TText AAuthor, TText AText) { return {std::move(AAuthor), std::move(AText)}; }

  friend bool operator==(const TCellComment&, const TCellComment&) = default;
};

/// The notes of a sheet, at most one a cell, in row order. Places are not validated.
class TESSARINE_API TCellCommentList {
 public:
  /// The key of a cell ("C7").
  static std::u16string Key(int32_t ACol, int32_t ARow) { return TCellAddress{ACol, ARow}.ToKey(); }

  void Clear() { FItems.clear(); }

  /// Adds or replaces; the text is stored untrimmed, one of nothing but blanks removes the note.
  void SetComment(int32_t ACol, int32_t ARow, TText AAuthor, TText AText);

  /// The note at a cell or null; valid until the list changes.
  const TCellComment* Find(int32_t ACol, int32_t ARow) const;
  bool HasComment(int32_t ACol, int32_t ARow) const { return Find(ACol, ARow) != nullptr; }
  void ClearComment(int32_t ACol, int32_t ARow) { FItems.erase({ARow, ACol}); }

  bool IsEmpty() const { return FItems.empty(); }
  size_t Count() const { return FItems.size(); }

  /// The cells with notes as keys, row by row.
  std::vector<std::u16string> GetKeys() const;
  const TCellComment* FindByKey(std::u16string_view AKey) const;

  /// AVisit(TCellAddress, const TCellComment&), row by row.
  template <class TVisit>
  void ForEach(TVisit&& AVisit) const {
    for (const auto& [place, comment] : FItems) AVisit(TCellAddress{place.second, place.first}, comment);
  }

  /// Notes at or behind AStart move by ADelta. Those in deleted lines slide up with the rest; one that leaves the sheet
  /// at its top or left goes, and of two that meet the lower (or right) one stays.
  void ShiftRows(int64_t AStart, int64_t ADelta) { Shift(saRows, AStart, ADelta); }
  void ShiftColumns(int64_t AStart, int64_t ADelta) { Shift(saColumns, AStart, ADelta); }
  /// ADest is the block's new first line.
  void MoveRows(int64_t AStart, int64_t ACount, int64_t ADest) { Move(saRows, AStart, ACount, ADest); }
  void MoveColumns(int64_t AStart, int64_t ACount, int64_t ADest) { Move(saColumns, AStart, ACount, ADest); }

 private:
  using TPlace = std::pair<int32_t, int32_t>;  // row, column

  template <class TNewIndex>
  void Replace(TShiftAxis AAxis, TNewIndex&& ANewIndex);
  void Shift(TShiftAxis AAxis, int64_t AStart, int64_t ADelta);
  void Move(TShiftAxis AAxis, int64_t AStart, int64_t ACount, int64_t ADest);

  std::map<TPlace, TCellComment> FItems;
};

}  // namespace tessarine
