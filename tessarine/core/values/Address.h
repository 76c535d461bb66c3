#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <tessarine/Export.h>

namespace tessarine {

/// Limits of a sheet; addresses are 1-based and 0 means "no address".
constexpr int32_t kMaxCol = 16384;  // column XFD
constexpr int32_t kMaxRow = 1048576;

/// The letters of a column ("A", "XFD"; beyond the sheet's limit as well); empty for a column below 1.
TESSARINE_API std::u16string ColToLetters(int32_t ACol);

/// Appends the letters to a text that is being built.
TESSARINE_API void AppendColLetters(int32_t ACol, std::u16string& AText);

/// The column of one to three letters in any case; 0 for anything that is no column of a sheet.
TESSARINE_API int32_t LettersToCol(std::u16string_view ALetters);

/// The place of one cell, 1-based; (0, 0) when a text could not be read.
struct TESSARINE_API TCellAddress {
  int32_t Col = 0;
  int32_t Row = 0;

  static TCellAddress Create(int32_t ACol, int32_t ARow) { return {ACol, ARow}; }

  /// Reads "C7" in any case. Every character but ASCII letters and digits is skipped wherever it stands
  /// ("$A$1" and "A-1" are A1); a letter behind a digit, or a place outside the sheet, gives (0, 0).
  static TCellAddress FromA1(std::u16string_view ARef);
  static TCellAddress FromKey(std::u16string_view AKey) { return FromA1(AKey); }

  bool IsValid() const { return Col >= 1 && Col <= kMaxCol && Row >= 1 && Row <= kMaxRow; }

  /// Letters and row without "$" ("C7"); not validated.
  std::u16string ToA1() const;
  std::u16string ToKey() const { return ToA1(); }

  friend bool operator==(const TCellAddress&, const TCellAddress&) = default;
};

/// A rectangle given by two corners, kept as given. Every question about it is answered for the ordered corners.
struct TESSARINE_API TCellRange {
  int32_t StartCol = 0;
  int32_t StartRow = 0;
  int32_t EndCol = 0;
  int32_t EndRow = 0;

  static TCellRange Create(int32_t AStartCol, int32_t AStartRow, int32_t AEndCol, int32_t AEndRow) {
    return {AStartCol, AStartRow, AEndCol, AEndRow};
  }

  /// Reads "A1" or "A1:C3", normalized. A corner that cannot be read is (0, 0): test StartCol and StartRow.
  static TCellRange FromA1(std::u16string_view ARef);

  TCellRange Normalize() const;
  bool Contains(int32_t ACol, int32_t ARow) const;
  bool ContainsAddress(TCellAddress AAddress) const { return Contains(AAddress.Col, AAddress.Row); }
  bool Intersects(const TCellRange& AOther) const;
  int32_t Width() const;
  int32_t Height() const;

  /// "B2" for one cell, "B2:C9" otherwise.
  std::u16string ToA1() const;

  friend bool operator==(const TCellRange&, const TCellRange&) = default;
};

}  // namespace tessarine
