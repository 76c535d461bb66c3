#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/format/CellFormat.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

/// A document's formats by index. A new or cleared sheet holds one default font, fill, border and cell format, so
/// index 0 is the default look. Nothing is merged: adding equal formats twice gives two indexes.
class TESSARINE_API TTessarineStyleSheet {
 public:
  TTessarineStyleSheet() { Clear(); }

  /// Back to the state of a new sheet. References that GetCellXf gave out end here.
  void Clear();

  /// Each appends and returns the new 0-based index. References given out before stay valid.
  int32_t AddFont(TCellFontInfo AFont);
  int32_t AddFill(const TCellFillInfo& AFill);
  int32_t AddBorder(const TCellBorderInfo& ABorder);
  int32_t AddCellXf(TCellFormat AFormat);
  int32_t AddCellStyleXf(TCellFormat AFormat);

  /// Empty one list, for readers of a document that brings its own. Until formats are added again, every index
  /// reads as the default format.
  void ClearFonts();
  void ClearFills();
  void ClearBorders();
  void ClearCellXfs();
  void ClearCellStyleXfs();
  void ClearNumFmts();

  /// The format of a cell's style index; the default format for an index out of range. The reference stays valid
  /// until the formats are cleared.
  const TCellFormat& GetCellXf(int32_t AIndex) const {
    return AIndex >= 0 && static_cast<size_t>(AIndex) < FCellXfs.size() ? FCellXfs[static_cast<size_t>(AIndex)]
                                                                        : TCellFormat::Default();
  }
  const TCellFormat& ResolveFormat(int32_t AIndex) const { return GetCellXf(AIndex); }

  /// Adds or replaces the number format code of an id.
  void RegisterNumFmt(int32_t AId, TText ACode);

  /// The registered code of an id, else the built-in one. The reference stays valid until the id is registered
  /// again or the codes are cleared.
  const TText& GetNumFmt(int32_t AId) const;

  const std::vector<TCellFontInfo>& Fonts() const { return FFonts; }
  const std::vector<TCellFillInfo>& Fills() const { return FFills; }
  const std::vector<TCellBorderInfo>& Borders() const { return FBorders; }
  const std::deque<TCellFormat>& CellXfs() const { return FCellXfs; }
  const std::deque<TCellFormat>& CellStyleXfs() const { return FCellStyleXfs; }
  const std::map<int32_t, TText>& NumFmts() const { return FNumFmts; }

  /// The number of cell formats.
  int32_t Count() const { return static_cast<int32_t>(FCellXfs.size()); }

  /// Raised by every change; two equal readings mean that nothing changed in between.
  uint64_t Version() const { return FVersion; }

 private:
  std::vector<TCellFontInfo> FFonts;
  std::vector<TCellFillInfo> FFills;
  std::vector<TCellBorderInfo> FBorders;
  std::map<int32_t, TText> FNumFmts;
  std::deque<TCellFormat> FCellXfs;
  std::deque<TCellFormat> FCellStyleXfs;
  uint64_t FVersion = 0;
};

/// The number format code that an id has in every spreadsheet file (0 to 49); "General" for ids without one.
TESSARINE_API const TText& BuiltInExcelNumberFormat(int32_t AId);

}  // namespace tessarine
