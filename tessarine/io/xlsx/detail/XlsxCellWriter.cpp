#include <tessarine/io/xlsx/detail/XlsxCellWriter.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/xlsx/detail/XlsxMarkupWriter.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

constexpr size_t kCellBuffer = 160;  // a cell without its texts

char* Put(std::string_view AText, char* AAt) {
  std::memcpy(AAt, AText.data(), AText.size());
  return AAt + AText.size();
}

char* PutInt(int32_t AValue, char* AAt) { return std::to_chars(AAt, AAt + 12, AValue).ptr; }

/// `><v>number</v></c>`
char* PutNumber(double ANumber, char* AAt) {
  AAt = Put("><v>", AAt);
  AAt += WriteFileNumber(ANumber, AAt);
  return Put("</v></c>", AAt);
}

}  // namespace

TXlsxCellWriter::TXlsxCellWriter(const TWorksheet& ASheet, const TXlsxCellOptions& AOptions)
    : FSheet(ASheet),
      FStore(ASheet.Store()),
      FSpills(ASheet.Spills().IsEmpty() ? nullptr : &ASheet.Spills()),
      FOptions(AOptions),
      FFormulas(AOptions.IsLiteral),
      FLetters(static_cast<size_t>(FStore.ColumnLimit()) + 1) {
  for (size_t col = 1; col < FLetters.size(); ++col) {
    const std::u16string letters = ColToLetters(static_cast<int32_t>(col));
    FLetters[col].Length = static_cast<uint8_t>(std::min(letters.size(), FLetters[col].Units.size()));
    for (size_t i = 0; i < FLetters[col].Length; ++i) FLetters[col].Units[i] = static_cast<char>(letters[i]);
  }
}

void TXlsxCellWriter::Append(const TXlsxBand& ABand, std::string& AOut) {
  const auto marked = std::lower_bound(FOptions.MarkedRows.begin(), FOptions.MarkedRows.end(), ABand.FirstRow);
  FNextMarked = static_cast<size_t>(marked - FOptions.MarkedRows.begin());
  FNextString = ABand.FirstString;
  FLastRow = ABand.LastRow;
  FStore.ForEachByRow({1, ABand.FirstRow, kMaxCol, ABand.LastRow},
                      [&](int32_t ACol, int32_t ARow, const TCellSlot& ASlot) {
                        if (ARow != FRow) MoveToRow(ARow, AOut);
                        if (!FRowHasCells) {
                          AOut += '>';
                          FRowHasCells = true;
                        }
                        AppendCell(ACol, ASlot, AOut);
                      });
  MoveToRow(ABand.LastRow + 1, AOut);
}

// ---- rows

/// Closes the open row, writes those without cells before ARow, and opens that unless it lies behind the band.
void TXlsxCellWriter::MoveToRow(int32_t ARow, std::string& AOut) {
  CloseRow(AOut);
  const std::span<const int32_t> marked = FOptions.MarkedRows;
  for (; FNextMarked < marked.size() && marked[FNextMarked] < ARow; ++FNextMarked) {
    OpenRow(marked[FNextMarked], true, AOut);
    CloseRow(AOut);
  }
  if (ARow > FLastRow) return;
  const bool isMarked = FNextMarked < marked.size() && marked[FNextMarked] == ARow;
  if (isMarked) ++FNextMarked;
  OpenRow(ARow, isMarked, AOut);
}

void TXlsxCellWriter::OpenRow(int32_t ARow, bool AIsMarked, std::string& AOut) {
  FRow = ARow;
  FRowLength = static_cast<size_t>(PutInt(ARow, FRowDigits.data()) - FRowDigits.data());
  ((AOut += "<row r=\"").append(FRowDigits.data(), FRowLength)) += '"';
  if (!AIsMarked) return;
  const TRowColSizing& sizing = FSheet.Sizing();
  const double height = sizing.GetRowHeightPt(ARow);
  if (sizing.HasCustomRowHeight(ARow) && height != sizing.DefaultRowHeight() && std::isfinite(height)) {
    AppendXlsxNumber("ht", height, AOut);
    AppendXlsxWord("customHeight", "1", AOut);
  }
  AppendXlsxFlag("hidden", sizing.IsRowHidden(ARow), AOut);
  if (const int32_t level = sizing.GetRowOutlineLevel(ARow); level > 0) AppendXlsxInt("outlineLevel", level, AOut);
  AppendXlsxFlag("collapsed", sizing.IsRowCollapsed(ARow), AOut);
}

void TXlsxCellWriter::CloseRow(std::string& AOut) {
  if (FRow == 0) return;
  AOut += FRowHasCells ? "</row>" : "/>";
  FRowHasCells = false;
  FRow = 0;
}

// ---- cells

/// `<c r="B2" s="3"`
char* TXlsxCellWriter::PutHead(int32_t ACol, int32_t AStyle, char* AAt) const {
  const TLetters& letters = FLetters[static_cast<size_t>(ACol)];
  AAt = Put("<c r=\"", AAt);
  std::memcpy(AAt, letters.Units.data(), letters.Units.size());
  AAt += letters.Length;
  std::memcpy(AAt, FRowDigits.data(), FRowDigits.size());
  AAt += FRowLength;
  *AAt++ = '"';
  if (!FOptions.IsLiteral && (AStyle < 0 || AStyle >= FOptions.StyleCount) && AStyle != 0) AStyle = FOptions.StyleCount;
  if (AStyle <= 0) return AAt;
  AAt = Put(" s=\"", AAt);
  AAt = PutInt(AStyle, AAt);
  *AAt++ = '"';
  return AAt;
}

void TXlsxCellWriter::AppendCell(int32_t ACol, const TCellSlot& ASlot, std::string& AOut) {
  if (ASlot.Kind == cvkFormula) return AppendFormula(ACol, ASlot, AOut);
  char buffer[kCellBuffer];
  char* at = PutHead(ACol, ASlot.StyleIndex, buffer);
  if (ASlot.Kind == cvkNumber && std::isfinite(ASlot.Number)) {
    at = PutNumber(ASlot.Number, at);
  } else if (ASlot.Kind == cvkText) {
    at = Put(" t=\"s\"><v>", at);
    at = PutInt(FOptions.Strings[FNextString++], at);
    at = Put("</v></c>", at);
  } else if (ASlot.Kind == cvkBoolean) {
    at = Put(ASlot.ConstantView().BooleanValue ? " t=\"b\"><v>1</v></c>" : " t=\"b\"><v>0</v></c>", at);
  } else {
    at = Put("/>", at);
  }
  AOut.append(buffer, static_cast<size_t>(at - buffer));
}

void TXlsxCellWriter::AppendFormula(int32_t ACol, const TCellSlot& ASlot, std::string& AOut) {
  const TFormulaRecord& record = FStore.Record(ASlot.Record);
  const TValueView result = record.CachedView();
  char buffer[kCellBuffer];
  char* at = PutHead(ACol, ASlot.StyleIndex, buffer);
  const bool isText = result.Kind == cvkText || result.Kind == cvkFormula;
  if (isText) at = Put(" t=\"str\"", at);
  if (result.Kind == cvkBoolean) at = Put(" t=\"b\"", at);
  *at++ = '>';
  AOut.append(buffer, static_cast<size_t>(at - buffer));

  const TSpillRange* const spill = FSpills ? FSpills->TryGetSpill(ACol, FRow) : nullptr;
  const TCellRange block = spill ? XlsxInsideSheet(spill->AsRange()) : TCellRange();
  FFormulas.Append(*record.Template, ACol, FRow, spill ? &block : nullptr, AOut);

  at = buffer;
  if (isText) {
    AppendXlsxSpacedElement("v", result.Text(), AOut);
    at = Put("</c>", at);
  } else if (result.Kind == cvkBoolean) {
    at = Put(result.BooleanValue ? "<v>1</v></c>" : "<v>0</v></c>", at);
  } else if (result.Kind == cvkNumber && std::isfinite(result.Number)) {
    at = Put("<v>", at);
    at += WriteFileNumber(result.Number, at);
    at = Put("</v></c>", at);
  } else {
    at = Put("</c>", at);
  }
  AOut.append(buffer, static_cast<size_t>(at - buffer));
}

}  // namespace tessarine::detail
