#include <tessarine/io/native/detail/NativeCellWriter.h>

#include <algorithm>
#include <charconv>
#include <cmath>

#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/native/detail/NativeCells.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

constexpr uint64_t kSavePollCells = 4096;

/// The beginning of a value of a kind, up to what differs in it.
void AppendHead(TCellValueKind AKind, std::string_view ABehind, std::string& AOut) {
  AOut += kNativeKind;
  AOut += static_cast<char>('0' + static_cast<int>(AKind));
  AOut += ABehind;
}

void AppendInteger(int64_t AValue, std::string& AOut) {
  char buffer[24];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, AValue);
  AOut.append(buffer, static_cast<size_t>(result.ptr - buffer));
}

void AppendColumn(int32_t ACol, std::string& AOut) {
  char letters[8];
  size_t first = sizeof letters;
  for (; ACol > 0; ACol = (ACol - 1) / 26) letters[--first] = static_cast<char>('A' + (ACol - 1) % 26);
  AOut.append(letters + first, sizeof letters - first);
}

/// Appends a text of printable ASCII that needs no escapes; false, with nothing appended, for any other.
bool TryAppendAscii(std::u16string_view AText, std::string& AOut) {
  const size_t start = AOut.size();
  AOut.resize(start + AText.size());
  char* out = AOut.data() + start;
  bool isPlain = true;
  for (const char16_t unit : AText) {
    isPlain &= unit >= 0x20 && unit < 0x7F && unit != u'"' && unit != u'\\';
    *out++ = static_cast<char>(unit);
  }
  if (!isPlain) AOut.resize(start);
  return isPlain;
}

TNativeValue FieldsOf(const TCellValue& AValue) {
  TNativeValue fields;
  fields.Kind = AValue.Kind;
  fields.Number = AValue.Number;
  fields.Boolean = AValue.BooleanValue;
  fields.Error = AValue.ErrorCode;
  (AValue.Kind == cvkFormula ? fields.Formula : fields.Text) = AValue.Text;
  return fields;
}

}  // namespace

TNativeCellWriter::TNativeCellWriter(TNativeOutput& AOutput, const TWorksheet& ASheet, const TTsrWriteOptions& AOptions)
    : FOutput(AOutput), FText(AOutput.Text()), FSheet(ASheet), FStore(ASheet.Store()), FOptions(AOptions) {}

void TNativeCellWriter::Write(double ADone, double AShare) {
  const std::string name = FSheet.Name().ToUtf8();
  const double total = static_cast<double>(std::max<size_t>(FStore.CellCount(), 1));
  uint64_t count = 0;
  FStore.ForEachByRow({1, 1, kMaxCol, kMaxRow}, [&](int32_t ACol, int32_t ARow, const TCellSlot& ASlot) {
    WriteCell(ACol, ARow, ASlot);
    FOutput.Pass();
    if (++count % kSavePollCells != 0) return;
    FOptions.Control.CheckStop();
    FOptions.Control.Report(ppSaving, ADone + AShare * static_cast<double>(count) / total, name);
  });
}

void TNativeCellWriter::WritePlain() {
  FStore.ForEachByRow({1, 1, kMaxCol, kMaxRow}, [&](int32_t ACol, int32_t ARow, const TCellSlot&) {
    WriteCellPlain(ACol, ARow);
    FOutput.Pass();
  });
}

/// The key of a cell and its colon.
void TNativeCellWriter::BeginMember(int32_t ACol, int32_t ARow) {
  FText += FIsFirst ? "\"" : ",\"";
  FIsFirst = false;
  AppendColumn(ACol, FText);
  AppendInteger(ARow, FText);
  FText += "\":";
}

void TNativeCellWriter::WriteCellPlain(int32_t ACol, int32_t ARow) {
  const TCell cell = FSheet.GetCellAt(ACol, ARow);
  if (cell.Sparkline.Kind != spkNone) ++FSparklines;
  BeginMember(ACol, ARow);
  TJsonWriter json(FText);
  TNativeFieldWriter fields(json);
  json.BeginObject();
  fields("value", FieldsOf(cell.Value));
  fields("styleIndex", cell.StyleIndex);
  if (cell.HasCachedValue) fields("cached", FieldsOf(cell.CachedValue));
  if (cell.HasFormatOverride) fields("format", cell.FormatOverride);
  if (!cell.RichText.empty()) fields("richText", cell.RichText);
  json.EndObject();
}

/// What the plain way writes of a cell without entries in the side table, put together from pieces that are known.
void TNativeCellWriter::WriteCell(int32_t ACol, int32_t ARow, const TCellSlot& ASlot) {
  if (ASlot.HasExtras()) return WriteCellPlain(ACol, ARow);
  BeginMember(ACol, ARow);
  FText += "{\"value\":";
  if (ASlot.Kind == cvkFormula) {
    AppendFormula(ACol, ARow, ASlot);
  } else {
    AppendValue(ASlot.ConstantView());
  }
  FText += ",\"styleIndex\":";
  AppendInteger(ASlot.StyleIndex, FText);
  if (ASlot.Kind == cvkFormula && FStore.Record(ASlot.Record).HasCached()) {
    FText += ",\"cached\":";
    AppendValue(FStore.Record(ASlot.Record).CachedView());
  }
  FText += '}';
}

void TNativeCellWriter::AppendFormula(int32_t ACol, int32_t ARow, const TCellSlot& ASlot) {
  FFormula.clear();
  FStore.Record(ASlot.Record).Template->AppendTextAt(ACol, ARow, FFormula);
  AppendHead(cvkFormula, kNativeFormulaHead, FText);
  AppendText(FFormula);
  FText += kNativeFormulaTail;
}

void TNativeCellWriter::AppendValue(const TValueView& AValue) {
  switch (AValue.Kind) {
    case cvkNumber:
      AppendHead(cvkNumber, kNativeNoText, FText);
      if (std::isfinite(AValue.Number)) {
        AppendFileNumber(AValue.Number, FText);
      } else {
        FText += "null";
      }
      FText += kNativeTail;
      return;
    case cvkText:
      AppendHead(cvkText, kNativeText, FText);
      AppendText(AValue.Text());
      FText += kNativeTextTail;
      return;
    case cvkFormula:
      AppendHead(cvkFormula, kNativeFormulaHead, FText);
      AppendText(AValue.Text());
      FText += kNativeFormulaTail;
      return;
    case cvkEmpty:
    case cvkBoolean:
    case cvkError: break;
  }
  AppendHead(AValue.Kind, kNativeNoText, FText);
  FText += '0';
  FText += kNativeBoolean;
  FText += AValue.BooleanValue ? "true" : "false";
  FText += kNativeError;
  AppendInteger(static_cast<int64_t>(AValue.ErrorCode), FText);
  FText += kNativeFormula;
  FText += kNativeFormulaTail;
}

void TNativeCellWriter::AppendText(std::u16string_view AText) {
  if (TryAppendAscii(AText, FText)) return;
  std::string utf8;
  AppendUtf16AsUtf8(AText, utf8);
  AppendJsonEscaped(utf8, FText);
}

}  // namespace tessarine::detail
