#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/core/values/CellValue.h>
#include <tessarine/io/native/detail/NativeSheetWriter.h>

namespace tessarine::detail {

class TCellStore;
struct TCellSlot;

/// Writes the cells of one sheet as the members of the object that is open, row by row.
class TNativeCellWriter {
 public:
  /// All arguments outlive the writer.
  TNativeCellWriter(TNativeOutput& AOutput, const TWorksheet& ASheet, const TTsrWriteOptions& AOptions);

  /// Of all work ADone and AShare are the parts before these cells and their own, 0 to 1.
  void Write(double ADone, double AShare);

  /// Write with WriteCellPlain for every cell: the definition of the text.
  void WritePlain();

  /// Cells whose sparkline the document leaves out.
  uint64_t SparklineCount() const { return FSparklines; }

 private:
  template <size_t ALimit>
  struct TPiece {
    char Text[ALimit] = {};
    uint8_t Size = 0;
  };

  void WriteCell(int32_t ACol, int32_t ARow, const TCellSlot& ASlot);
  void WriteCellPlain(int32_t ACol, int32_t ARow);
  void LayOutColumns();
  void LayOutRow(int32_t ARow);
  char* PutKey(int32_t ACol, char* AOut);
  char* PutFormula(std::u16string_view AText, char* AOut);
  char* PutValue(const TValueView& AValue, char* AOut);
  char* PutEscaped(std::u16string_view AText, char* AOut);
  char* Room(size_t ACount);
  void HandOn();

  TNativeOutput& FOutput;
  std::string& FText;
  const TWorksheet& FSheet;
  const TCellStore& FStore;
  const TTsrWriteOptions& FOptions;
  std::unique_ptr<char[]> FBlock;  // what comes behind FText, FEnd bytes of it
  size_t FCapacity = 0;
  size_t FEnd = 0;
  std::vector<TPiece<8>> FColumns;  // by column - 1: the comma and the key's beginning
  TPiece<24> FRowPiece;             // of row FRow: the key's end and what stands before the value
  int32_t FRow = 0;
  std::u16string FFormula;
  std::string FUtf8;
  std::string FEscaped;
  bool FIsFirst = true;
  uint64_t FSparklines = 0;
};

}  // namespace tessarine::detail
