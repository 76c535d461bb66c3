#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>

#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/csv/Csv.h>
#include <tessarine/io/csv/detail/CsvCellQueue.h>
#include <tessarine/io/csv/detail/CsvFieldReader.h>
#include <tessarine/io/csv/detail/CsvSource.h>
#include <tessarine/io/csv/detail/CsvValues.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Files.h>

namespace tessarine {

namespace {

constexpr int32_t kDelimiterSampleLines = 200;

/// Puts values into a cleared sheet, row by row. Changes are told once at the end, by the destructor too, unless a
/// host's own handler has to see each of them.
class TSheetFiller {
 public:
  /// ATextBytes: how much text there will be, about.
  TSheetFiller(TWorkbook& AWorkbook, TWorksheet& ASheet, uint64_t AMaxBytes, size_t ATextBytes)
      : FWorkbook(AWorkbook),
        FSheet(ASheet),
        FStore(ASheet.Store()),
        FMaxCells(AMaxBytes / sizeof(detail::TCellSlot)),
        FTexts(ATextBytes),
        FQueue(FTexts, FStore) {
    FWorkbook.BeginUpdate();
    FSheet.ClearCells();
    FSheet.Spills().ClearAll();
    FSheet.RecalcUsedBounds();
    FIsBulk = FSheet.ChangesAreUnobserved();
    FWorkbook.MarkModified();
  }
  TSheetFiller(const TSheetFiller&) = delete;
  TSheetFiller& operator=(const TSheetFiller&) = delete;
  ~TSheetFiller() {
    FSheet.UpdateUsedBounds({FMaxCol, FMaxRow});
    FWorkbook.EndUpdate();
  }

  void PutNumber(int32_t ACol, int32_t ARow, double ANumber) {
    if (!FIsBulk) return FSheet.SetValue({ACol, ARow}, TCellValue::FromNumber(ANumber));
    FQueue.AddNumber(ACol, ARow, ANumber);
    Note(ACol, ARow);
  }
  void PutText(int32_t ACol, int32_t ARow, std::string_view AText) {
    if (!FIsBulk) {
      TText text = FTexts.TextOf(AText, static_cast<size_t>(ACol - 1));
      return FSheet.SetValue({ACol, ARow}, TCellValue::FromText(std::move(text)));
    }
    FQueue.AddText(ACol, ARow, AText);
    Note(ACol, ARow);
  }
  bool IsFull() const { return (FIsBulk ? FQueue.Count() : FStore.CellCount()) >= FMaxCells; }

  /// Brings all cells so far into the sheet.
  void Settle() { FQueue.Settle(); }

 private:
  void Note(int32_t ACol, int32_t ARow) {
    FMaxCol = std::max(FMaxCol, ACol);
    FMaxRow = ARow;
  }

  TWorkbook& FWorkbook;
  TWorksheet& FSheet;
  detail::TCellStore& FStore;
  uint64_t FMaxCells;
  detail::TCsvTextCache FTexts;
  detail::TCsvCellQueue FQueue;
  bool FIsBulk = false;
  int32_t FMaxCol = 1;
  int32_t FMaxRow = 1;
};

/// What an import makes of the fields.
struct TFieldRules {
  TFormatSettings Settings;
  bool KeepEmptyFields = false;
  bool QuotedIsText = false;
  bool AllText = false;
  bool SkipEmptyLines = false;
  int32_t FirstRow = 1;
  uint64_t MaxBytes = 0;  // memory for cells
};

TWorksheet& SheetForImport(TWorkbook& AWorkbook, int32_t ASheetIndex) {
  TWorksheet* sheet = AWorkbook.GetSheet(ASheetIndex);
  return sheet ? *sheet : AWorkbook.AddSheet(u"Sheet1");
}

/// Moves fields from a reader to a sheet.
class TFieldImport {
 public:
  TFieldImport(TWorkbook& AWorkbook, TWorksheet& ASheet, detail::TCsvSource& ASource, detail::TCsvFieldReader& AReader,
               const TFieldRules& ARules)
      : FFiller(AWorkbook, ASheet, ARules.MaxBytes,
                ASource.IsFinal() ? ASource.Size() : std::numeric_limits<size_t>::max()),
        FSource(ASource),
        FReader(AReader),
        FRules(ARules),
        FNumbers(ARules.Settings) {
    ASource.SetBeforeReport([this] { FFiller.Settle(); });
  }
  TFieldImport(const TFieldImport&) = delete;
  TFieldImport& operator=(const TFieldImport&) = delete;
  ~TFieldImport() { FSource.SetBeforeReport({}); }

  void Run() {
    try {
      ReadRows();
    } catch (...) {
      FFiller.Settle();  // what stands before the error has been read
      throw;
    }
    FFiller.Settle();
  }

 private:
  void ReadRows() {
    detail::TCsvField field;
    int64_t line = FReader.Line();
    for (int64_t fileRow = 1; FReader.Next(field); ++fileRow) {
      if (fileRow >= FRules.FirstRow) {
        ReadRow(field, line);
      } else {
        while (!field.EndsRow && FReader.Next(field)) continue;
      }
      line = FReader.Line();
    }
  }

  /// AField is the first field of the row, which begins on line ALine of the file.
  void ReadRow(detail::TCsvField& AField, int64_t ALine) {
    if (FRules.SkipEmptyLines && AField.EndsRow && AField.Text.empty()) return;
    if (FRow == kMaxRow) Fail(ALine, "a sheet has no more than " + std::to_string(kMaxRow) + " rows");
    if (FFiller.IsFull())
      Fail(ALine, "the cells before it take all of the " + std::to_string(FRules.MaxBytes) + " bytes that are allowed");
    ++FRow;
    for (int32_t col = 1;; ++col) {
      if (col > kMaxCol) Fail(ALine, "the row has more than the " + std::to_string(kMaxCol) + " columns of a sheet");
      Put(col, AField);
      if (AField.EndsRow || !FReader.Next(AField)) return;
    }
  }

  void Put(int32_t ACol, const detail::TCsvField& AField) {
    double number = 0;
    if (AField.Text.empty()) {
      if (FRules.KeepEmptyFields) FFiller.PutText(ACol, FRow, {});
    } else if (!FRules.AllText && !(FRules.QuotedIsText && AField.IsQuoted) && FNumbers.Read(AField.Text, number)) {
      FFiller.PutNumber(ACol, FRow, number);
    } else {
      FFiller.PutText(ACol, FRow, AField.Text);
    }
  }

  [[noreturn]] void Fail(int64_t ALine, const std::string& AWhat) const {
    throw ELimit(FSource.Prefix() + "line " + std::to_string(ALine) + ": " + AWhat +
                 "; what stands before that line has been read");
  }

  TSheetFiller FFiller;
  detail::TCsvSource& FSource;
  detail::TCsvFieldReader& FReader;
  const TFieldRules& FRules;
  detail::TCsvNumberReader FNumbers;
  int32_t FRow = 0;
};

// ---- the delimiter of a file

constexpr std::array<char, 4> kDelimiters = {'\t', ';', '|', ','};

/// How often each of the delimiters stands outside quotes in the next line; moves ARest behind the line. False at the
/// end, and for a last line that is not whole.
bool CountInLine(std::string_view& ARest, bool AIsFinal, std::array<int32_t, kDelimiters.size()>& ACounts) {
  ACounts = {};
  bool inQuotes = false;
  for (size_t at = 0; at < ARest.size(); ++at) {
    const char byte = ARest[at];
    if (byte == '"') inQuotes = !inQuotes;
    if (inQuotes) continue;
    if (byte == '\n' || byte == '\r') {
      ARest.remove_prefix(at + 1);
      return true;
    }
    for (size_t i = 0; i < kDelimiters.size(); ++i) ACounts[i] += byte == kDelimiters[i] ? 1 : 0;
  }
  const bool isLine = AIsFinal && !ARest.empty();
  ARest = {};
  return isLine;
}

/// The delimiter that stands equally often, and at all, in most of the first lines. Among equals the comma comes last,
/// because it also stands in numbers.
char FindDelimiter(std::string_view AHead, bool AIsFinal) {
  std::array<int32_t, kDelimiters.size()> counts{};
  std::array<std::array<int32_t, 64>, kDelimiters.size()> linesByCount{};
  for (int32_t line = 0; line < kDelimiterSampleLines && CountInLine(AHead, AIsFinal, counts); ++line) {
    for (size_t i = 0; i < counts.size(); ++i) ++linesByCount[i][static_cast<size_t>(std::min<int32_t>(counts[i], 63))];
  }
  char best = ',';
  int32_t bestLines = 0;
  for (size_t i = 0; i < kDelimiters.size(); ++i) {
    const int32_t lines = *std::max_element(linesByCount[i].begin() + 1, linesByCount[i].end());
    if (lines > bestLines) {
      best = kDelimiters[i];
      bestLines = lines;
    }
  }
  return best;
}

bool IsPossibleDelimiter(char16_t ADelimiter) {
  return ADelimiter != 0 && ADelimiter < 0x80 && ADelimiter != u'"' && ADelimiter != u'\r' && ADelimiter != u'\n';
}

/// The delimiter that a first line such as "sep=;" gives, 0 without one. Takes that line out of the source.
char TakeDelimiterLine(detail::TCsvSource& ASource) {
  const std::string_view head = ASource.Window();
  if (!head.starts_with("sep=") || head.size() < 5 || !IsPossibleDelimiter(static_cast<unsigned char>(head[4])))
    return 0;
  const char delimiter = head[4];
  const std::string_view rest = head.substr(5);
  if (!rest.empty() && rest[0] != '\r' && rest[0] != '\n') return 0;
  const size_t lineEnd = rest.starts_with("\r\n") ? 2 : std::min<size_t>(rest.size(), 1);
  ASource.Advance(5 + lineEnd);
  return delimiter;
}

/// ImportSheet, with a name for the messages of errors.
void ImportLines(TWorkbook& AWorkbook, IReadStream& AStream, int32_t ASheetIndex, const std::string& ASourceName) {
  const TReadLimits limits;
  const TWorkControl control;
  detail::TCsvSource source(AStream, limits.MaxPartBytes, false, ASourceName, control);
  detail::TCsvFieldReader reader(source, ',', detail::cqLines, false);
  const TFieldRules rules{
      .Settings = CurrentFormatSettings(), .KeepEmptyFields = true, .MaxBytes = limits.MaxTotalBytes};
  TFieldImport(AWorkbook, SheetForImport(AWorkbook, ASheetIndex), source, reader, rules).Run();
}

}  // namespace

void TCsvIO::ImportSheet(TWorkbook& AWorkbook, IReadStream& AStream, int32_t ASheetIndex) {
  ImportLines(AWorkbook, AStream, ASheetIndex, {});
}

void TCsvIO::ImportWithOptions(TWorkbook& AWorkbook, IReadStream& AStream, int32_t ASheetIndex,
                               const TCsvImportOptions& AOptions) {
  if (AOptions.Delimiter != 0 && !IsPossibleDelimiter(AOptions.Delimiter))
    throw EArgument("The delimiter of a text file is an ASCII character other than a double quote or a line end");
  const TReadLimits limits = AOptions.Limits.Clamped();
  detail::TCsvSource source(AStream, limits.MaxPartBytes, true, AOptions.SourceName, AOptions.Control);
  auto delimiter = static_cast<char>(AOptions.Delimiter);
  if (delimiter == 0) delimiter = TakeDelimiterLine(source);
  if (delimiter == 0) delimiter = FindDelimiter(source.Window(), source.IsFinal());
  detail::TCsvFieldReader reader(source, delimiter, detail::cqFields, AOptions.TrimBlanks);
  TFieldRules rules{.Settings = CurrentFormatSettings(),
                    .QuotedIsText = AOptions.QuotedIsText,
                    .AllText = AOptions.AllText,
                    .SkipEmptyLines = AOptions.SkipEmptyLines,
                    .FirstRow = AOptions.FirstRow,
                    .MaxBytes = limits.MaxTotalBytes};
  if (AOptions.DecimalSeparator != 0) rules.Settings.DecimalSeparator = AOptions.DecimalSeparator;
  TFieldImport(AWorkbook, SheetForImport(AWorkbook, ASheetIndex), source, reader, rules).Run();
  AOptions.Control.Report(ppLoading, 1);
}

void TCsvIO::LoadFromFile(TWorkbook& AWorkbook, const std::string& AFileName) {
  const TSharedReadStream file = OpenSharedReadStream(AFileName);
  ImportLines(AWorkbook, *file.Stream, 0, AFileName);
}

}  // namespace tessarine
