#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
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
  const std::vector<int32_t>& Strings;  // indexes of the sheet's texts, row by row
  int32_t StyleCount = 0;               // formats of the style sheet; the next index is that of a default one
  bool IsLiteral = false;
};

/// Builds the rows and cells of a sheet part.
class TXlsxCellWriter {
 public:
  /// The arguments outlive the writer; nothing changes the sheet meanwhile.
  TXlsxCellWriter(const TWorksheet& ASheet, const TXlsxCellOptions& AOptions);

  /// Appends the element with all rows to AOut.
  void Append(std::string& AOut);

  /// Called every few thousand cells with the share that is done.
  std::function<void(double AFraction)> OnProgress;

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
  void Poll();

  const TWorksheet& FSheet;
  const TCellStore& FStore;
  const TSpillMap* FSpills;  // null when there are none
  TXlsxCellOptions FOptions;
  TXlsxFormulaWriter FFormulas;
  std::vector<TLetters> FLetters;  // by column
  std::vector<int32_t> FMarked;    // rows with more than cells, ascending
  size_t FNextMarked = 0;
  size_t FNextString = 0;
  int32_t FRow = 0;  // that is open, 0 when none is
  bool FRowHasCells = false;
  std::array<char, 12> FRowDigits{};
  size_t FRowLength = 0;
  size_t FCellsDone = 0;
};

}  // namespace tessarine::detail
