#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/csv/Csv.h>
#include <tessarine/io/csv/detail/CsvNames.h>
#include <tessarine/io/csv/detail/CsvWriter.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Files.h>
#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

/// The places in ARange that spilled values cover, as row and column in one number, sorted.
std::vector<uint64_t> SpillPlaces(const TWorksheet& ASheet, const TCellRange& ARange) {
  std::vector<uint64_t> places;
  for (const TSpillRange* block : ASheet.Spills().BlocksIn(ARange)) {
    const int32_t lastRow = std::min(block->EndRow, ARange.EndRow);
    const int32_t lastCol = std::min(block->EndCol, ARange.EndCol);
    for (int32_t row = std::max(block->AnchorRow, ARange.StartRow); row <= lastRow; ++row) {
      for (int32_t col = std::max(block->AnchorCol, ARange.StartCol); col <= lastCol; ++col)
        places.push_back(static_cast<uint64_t>(row) << 32 | static_cast<uint32_t>(col));
    }
  }
  std::sort(places.begin(), places.end());
  places.erase(std::unique(places.begin(), places.end()), places.end());
  return places;
}

/// Whether a spreadsheet that opens the file may take this field for a formula. A number's sign is none.
bool ReadsAsFormula(std::u16string_view AText, bool AIsNumber) {
  const char16_t first = AText.empty() ? u'\0' : AText[0];
  if (first == u'+' || first == u'-') return !AIsNumber;
  return first == u'=' || first == u'@' || first == u'\t' || first == u'\r';
}

/// Writes a range row by row: the cells that show something are put in order, what lies between them costs its
/// delimiters and line ends only.
class TRangeWriter {
 public:
  TRangeWriter(const TWorkbook& AWorkbook, const TWorksheet& ASheet, const TCellRange& ARange, IWriteStream& AStream,
               const TCsvExportOptions& AOptions)
      : FSheet(ASheet),
        FStyles(AWorkbook.StyleSheet()),
        FRange(ARange),
        FControl(AOptions.Control),
        FDefuses(AOptions.DefuseFormulas),
        FSheetName(ASheet.Name().ToUtf8()),
        FWriter(AStream, AOptions.Delimiter),
        FRow(ARange.StartRow),
        FCol(ARange.StartCol) {
    if (AOptions.Utf8Bom) FWriter.PutByteOrderMark();
    const bool isPlainLocale = CurrentFormatSettings().DecimalSeparator == u'.' && AOptions.Delimiter != u'.' &&
                               AOptions.Delimiter != u'-' && !IsAsciiDigit(AOptions.Delimiter);
    if (!isPlainLocale || !ASheet.View().ShowZeros) return;
    FIsGeneral.resize(static_cast<size_t>(FStyles.Count()));
    for (size_t i = 0; i < FIsGeneral.size(); ++i)
      FIsGeneral[i] = FStyles.GetCellXf(static_cast<int32_t>(i)).NumberFormat == u"General";
  }

  void Run() {
    const std::vector<uint64_t> spilled = SpillPlaces(FSheet, FRange);
    auto nextSpilled = spilled.begin();
    FSheet.Store().ForEachByRow(FRange, [&](int32_t ACol, int32_t ARow, const detail::TCellSlot& ASlot) {
      const uint64_t place = static_cast<uint64_t>(ARow) << 32 | static_cast<uint32_t>(ACol);
      for (; nextSpilled != spilled.end() && *nextSpilled < place; ++nextSpilled) PutSpilled(*nextSpilled);
      if (nextSpilled != spilled.end() && *nextSpilled == place) ++nextSpilled;
      MoveTo(ACol, ARow);
      PutSlot(ASlot);
    });
    for (; nextSpilled != spilled.end(); ++nextSpilled) PutSpilled(*nextSpilled);
    MoveTo(FRange.EndCol, FRange.EndRow);
    FWriter.PutLineEnd();
    FWriter.Flush();
    FControl.Report(ppSaving, 1, FSheetName);
  }

 private:
  /// Writes all that lies between the last field and this place.
  void MoveTo(int32_t ACol, int32_t ARow) {
    for (; FRow < ARow; ++FRow) {
      FWriter.PutDelimiters(FRange.EndCol - FCol);
      FWriter.PutLineEnd();
      FCol = FRange.StartCol;
      if (++FRowsDone % kRowsPerCheck == 0) Check();
    }
    FWriter.PutDelimiters(ACol - FCol);
    FCol = ACol;
  }

  void Check() {
    FControl.CheckStop();
    FControl.Report(ppSaving, static_cast<double>(FRowsDone) / static_cast<double>(FRange.Height()), FSheetName);
  }

  void PutSpilled(uint64_t APlace) {
    MoveTo(static_cast<int32_t>(APlace & 0xFFFFFFFFu), static_cast<int32_t>(APlace >> 32));
    PutDisplayText();
  }

  void PutSlot(const detail::TCellSlot& ASlot) {
    if (ASlot.Kind == cvkText && !ASlot.HasExtras() && !FDefuses) {
      FWriter.PutField(ASlot.Text ? ASlot.Text->View() : std::u16string_view());
    } else if (!TryPutGeneralNumber(ASlot)) {
      PutDisplayText();
    }
  }

  void PutDisplayText() {
    FText.clear();
    FSheet.AppendDisplayText({FCol, FRow}, &FStyles, FText);
    if (FDefuses && ReadsAsFormula(FText, FSheet.EffectiveView(FCol, FRow).Kind == cvkNumber))
      FText.insert(0, 1, u'\'');
    FWriter.PutField(FText);
  }

  /// The number of a cell under the format General, without the way over UTF-16. The exponent is the one thing in which
  /// the two texts differ, so only magnitudes that surely need none are taken.
  bool TryPutGeneralNumber(const detail::TCellSlot& ASlot) {
    if (ASlot.Kind != cvkNumber || ASlot.HasExtras() || ASlot.StyleIndex < 0 ||
        static_cast<size_t>(ASlot.StyleIndex) >= FIsGeneral.size() ||
        !FIsGeneral[static_cast<size_t>(ASlot.StyleIndex)])
      return false;
    const double magnitude = std::fabs(ASlot.Number);
    if (!(magnitude < 1e14) || (magnitude < 1e-4 && magnitude != 0)) return false;
    char buffer[kNumberTextSize];
    FWriter.PutAscii({buffer, WriteGeneralNumber(ASlot.Number, buffer)});
    return true;
  }

  static constexpr int64_t kRowsPerCheck = 4096;

  const TWorksheet& FSheet;
  const TTessarineStyleSheet& FStyles;
  TCellRange FRange;
  const TWorkControl& FControl;
  bool FDefuses;
  std::string FSheetName;
  detail::TCsvWriter FWriter;
  int32_t FRow;  // the place up to which all is written, its own field apart
  int32_t FCol;
  int64_t FRowsDone = 0;
  std::vector<bool> FIsGeneral;  // by style index; empty when numbers must go by their display texts
  std::u16string FText;
};

TCellRange UsedRange(const TWorksheet& ASheet) { return {1, 1, ASheet.UsedMaxCol(), ASheet.UsedMaxRow()}; }

void ExportFile(const TWorkbook& AWorkbook, const TWorksheet& ASheet, const std::string& AFileName,
                const TCellRange& ARange, const TCsvExportOptions& AOptions) {
  SaveToFileViaTemp(AFileName,
                    [&](IWriteStream& AStream) { TCsvIO::ExportRange(AWorkbook, &ASheet, AStream, ARange, AOptions); });
}

}  // namespace

std::u16string TCsvIO::EscapeCsvField(std::u16string_view AValue, char16_t ADelimiter) {
  return detail::EscapedCsvField(AValue, ADelimiter);
}

std::u16string TCsvIO::SanitizeFileNamePart(std::u16string_view AText) { return detail::FileNamePart(AText); }

void TCsvIO::ExportRange(const TWorkbook& AWorkbook, const TWorksheet* ASheet, IWriteStream& AStream,
                         const TCellRange& ARange, const TCsvExportOptions& AOptions) {
  AOptions.Control.CheckStop();
  const TCellRange range = ARange.Normalize();
  const bool isValid =
      TCellAddress{range.StartCol, range.StartRow}.IsValid() && TCellAddress{range.EndCol, range.EndRow}.IsValid();
  if (ASheet && isValid) TRangeWriter(AWorkbook, *ASheet, range, AStream, AOptions).Run();
}

void TCsvIO::ExportSheet(TWorkbook& AWorkbook, IWriteStream& AStream, int32_t ASheetIndex) {
  if (const TWorksheet* sheet = AWorkbook.GetSheet(ASheetIndex))
    ExportRange(AWorkbook, sheet, AStream, UsedRange(*sheet), {});
}

void TCsvIO::ExportWithOptions(TWorkbook& AWorkbook, const std::string& AFileName, const TCsvExportOptions& AOptions,
                               int32_t AActiveSheet) {
  const TWorksheet* active = AWorkbook.GetSheet(AActiveSheet);
  if (!active) {
    throw EArgument("Cannot export sheet " + std::to_string(AActiveSheet) + ": the workbook has " +
                    std::to_string(AWorkbook.SheetCount()) + " sheets, counted from 0");
  }
  const std::string base = detail::WithoutExtension(AFileName);
  switch (AOptions.What) {
    case pwSelection: ExportFile(AWorkbook, *active, base + ".csv", AOptions.Selection, AOptions); return;
    case pwActiveSheets: ExportFile(AWorkbook, *active, base + ".csv", UsedRange(*active), AOptions); return;
    case pwEntireWorkbook: break;
  }
  detail::TFileNameParts parts;
  for (int32_t index = 0; index < AWorkbook.SheetCount(); ++index) {
    const TWorksheet& sheet = *AWorkbook.GetSheet(index);
    if (!sheet.IsVisible()) continue;
    std::string name = base;
    if (&sheet != active) name.append("_").append(parts.Add(sheet.Name()));
    ExportFile(AWorkbook, sheet, name.append(".csv"), UsedRange(sheet), AOptions);
  }
}

void TCsvIO::SaveToFile(TWorkbook& AWorkbook, const std::string& AFileName, int32_t AActiveSheet) {
  ExportWithOptions(AWorkbook, AFileName, {}, AActiveSheet);
  AWorkbook.ClearModified();
}

}  // namespace tessarine
