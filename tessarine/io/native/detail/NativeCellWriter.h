#pragma once

#include <cstdint>
#include <string>
#include <string_view>

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
  void BeginMember(int32_t ACol, int32_t ARow);
  void WriteCell(int32_t ACol, int32_t ARow, const TCellSlot& ASlot);
  void WriteCellPlain(int32_t ACol, int32_t ARow);
  void AppendValue(const TValueView& AValue);
  void AppendFormula(int32_t ACol, int32_t ARow, const TCellSlot& ASlot);
  void AppendText(std::u16string_view AText);

  TNativeOutput& FOutput;
  std::string& FText;
  const TWorksheet& FSheet;
  const TCellStore& FStore;
  const TTsrWriteOptions& FOptions;
  std::u16string FFormula;
  bool FIsFirst = true;
  uint64_t FSparklines = 0;
};

}  // namespace tessarine::detail
