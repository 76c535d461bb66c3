#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include <tessarine/core/values/Address.h>
#include <tessarine/io/xlsx/detail/XlsxFormulaWriter.h>

namespace tessarine {
class TSpillMap;
class TWorksheet;
}  // namespace tessarine

namespace tessarine::detail {

class TCellStore;
struct TCellSlot;

/// What the cells of a sheet part refer to.
struct TXlsxCellOptions {
  std::span<const int32_t> Strings;     // indexes of the sheet's texts, row by row
  std::span<const int32_t> MarkedRows;  // rows with more than cells, ascending
  int32_t StyleCount = 0;               // formats of the style sheet; the next index is that of a default one
  bool IsLiteral = false;
};

/// Rows of a sheet that are written together.
struct TXlsxBand {
  int32_t FirstRow = 1;
  int32_t LastRow = kMaxRow;
  size_t FirstString = 0;  // cells with text above
};

/// Builds the rows of a sheet part with their cells. Writers of one sheet may work on different threads.
class TXlsxCellWriter {
 public:
  /// The sheet and what the options refer to outlive the writer; nothing changes the sheet meanwhile.
  TXlsxCellWriter(const TWorksheet& ASheet, const TXlsxCellOptions& AOptions);

  /// Appends the elements of the rows in ABand to AOut.
  void Append(const TXlsxBand& ABand, std::string& AOut);

 private:
  /// A column's letters.
  struct TLetters {
    std::array<char, 3> Units{};
    uint8_t Length = 0;
  };

  void MoveToRow(int32_t ARow, std::string& AOut);
  void OpenRow(int32_t ARow, bool AIsMarked, std::string& AOut);
  void CloseRow(std::string& AOut);
  void AppendCell(int32_t ACol, const TCellSlot& ASlot, std::string& AOut);
  void AppendFormula(int32_t ACol, const TCellSlot& ASlot, std::string& AOut);
  char* PutHead(int32_t ACol, int32_t AStyle, char* AAt) const;

  const TWorksheet& FSheet;
  const TCellStore& FStore;
  const TSpillMap* FSpills;  // null when there are none
  TXlsxCellOptions FOptions;
  TXlsxFormulaWriter FFormulas;
  std::vector<TLetters> FLetters;  // by column
  int32_t FLastRow = 0;            // of the band
  size_t FNextMarked = 0;
  size_t FNextString = 0;
  int32_t FRow = 0;  // that is open, 0 when none is
  bool FRowHasCells = false;
  std::array<char, 12> FRowDigits{};
  size_t FRowLength = 0;
};

}  // namespace tessarine::detail
