#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/format/CellFormat.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

/// A stretch of a formatted text in a string table. A run states some properties of its font; all others are those of
/// the cell that shows it.
struct TRichStringRun {
  TText Text;
  TCellFontInfo Font;
  bool HasFont = false;  ///< the run has a font element, however empty
  bool HasName = false;  ///< this flag and those below: the property is stated
  bool HasSize = false;
  bool HasBold = false;
  bool HasItalic = false;
  bool HasUnderline = false;
  bool HasStrike = false;
  bool HasColor = false;
  bool HasScript = false;

  friend bool operator==(const TRichStringRun&, const TRichStringRun&) = default;
};

/// An entry of a string table, to look at; valid until the table changes.
struct TSharedStringItem {
  std::u16string_view Text;              ///< of a rich entry: the texts of its runs, joined
  std::span<const TRichStringRun> Runs;  ///< empty for a plain entry
  bool IsRich = false;
};

/// The texts that the cells of a workbook file share, by 0-based index.
class TESSARINE_API TSharedStringTable {
 public:
  TSharedStringTable();
  ~TSharedStringTable();
  TSharedStringTable(const TSharedStringTable&) = delete;
  TSharedStringTable& operator=(const TSharedStringTable&) = delete;

  void Clear();

  /// Appends a plain text, also one that is there already, and returns its index.
  int32_t Add(TText AText);

  /// The first index of a plain text, which is appended when it is not there.
  int32_t FindOrAdd(const TText& AText);

  /// Appends a formatted text and returns its index. FindOrAdd never finds it.
  int32_t AddRich(std::vector<TRichStringRun> ARuns, TText AText);

  int32_t Count() const { return static_cast<int32_t>(FTexts.size()); }

  /// Throws EArgument for an index out of range.
  TSharedStringItem GetItem(int32_t AIndex) const;

  /// The text alone, to be shared by cells; the index must be in range.
  const TText& TextAt(int32_t AIndex) const { return FTexts[static_cast<size_t>(AIndex)]; }

  /// The runs of a rich entry; null for a plain one and for an index out of range.
  const std::vector<TRichStringRun>* FindRuns(int32_t AIndex) const;

 private:
  struct TIndexes;

  void CheckRoom() const;

  std::vector<TText> FTexts;
  std::unique_ptr<TIndexes> FIndexes;  // never null
};

}  // namespace tessarine
