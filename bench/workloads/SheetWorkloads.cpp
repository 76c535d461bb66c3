#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/csv/Csv.h>
#include <tessarine/io/xlsx/XlsxReader.h>
#include <tessarine/io/xlsx/XlsxWriter.h>
#include <tessarine/platform/Files.h>

#include "Workload.h"
#include "WorkloadData.h"

namespace tessarine::bench {

namespace {

constexpr int32_t kMixedRows = 100000;
constexpr int32_t kCsvRows = 1000000;

std::string MixedFile(const TRun& ARun) { return ARun.Folder + "/w5.xlsx"; }
std::string CsvFile(const TRun& ARun) { return ARun.Folder + "/w6.csv"; }

/// Resident memory of this process in bytes.
double ResidentBytes() {
  long pages = 0;
  long resident = 0;
  if (std::FILE* file = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(file, "%ld %ld", &pages, &resident) != 2) resident = 0;
    std::fclose(file);
  }
  return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

}  // namespace

void PrepareXlsx(TRun& ARun) { WriteMixedWorkbook(MixedFile(ARun), ARun.Rows(kMixedRows)); }

void MeasureXlsxLoad(TRun& ARun) {
  const int32_t rows = ARun.Rows(kMixedRows);
  {
    TWorkbook once;  // the peak of a single load, before any repetition
    TXlsxReader::LoadFromFile(once, MixedFile(ARun));
  }
  const double peak = PeakMegabytes();
  std::unique_ptr<TWorkbook> book;  // a new one each time: what frees the one before is no part of loading
  const double load = MedianMilliseconds([&] { TXlsxReader::LoadFromFile(*book, MixedFile(ARun)); },
                                         [&] { book = std::make_unique<TWorkbook>(); });
  const TWorksheet& sheet = *book->GetSheet(0);
  const TMixedRow last = MixedRow(rows);
  const bool check = sheet.GetEffectiveValue({10, rows}).Number == last.J &&
                     sheet.GetEffectiveValue({6, rows}).Text.ToUtf8() == last.F &&
                     sheet.GetEffectiveValue({8, 1}).Number == MixedRow(1).K &&
                     sheet.GetCell({9, 5}).Value.Formula() == u"=B5*C5" &&
                     sheet.Store().CellCount() == static_cast<size_t>(rows) * 10;
  ARun.Results.push_back({"load", int64_t{rows} * 10, load, {}, peak, check});

  TMemoryWriteStream saved;
  const double save = MedianMilliseconds([&] {
    TMemoryWriteStream target;
    TXlsxWriter::SaveToStream(*book, target);
    saved = std::move(target);
  });
  const double savePeak = PeakMegabytes();
  TWorkbook back;
  TMemoryReadStream source(saved.Bytes());
  TXlsxReader::LoadFromStream(back, source);
  const TWorksheet& again = *back.GetSheet(0);
  const bool isSame =
      again.Store().CellCount() == sheet.Store().CellCount() && again.GetEffectiveValue({10, rows}).Number == last.J &&
      again.GetEffectiveValue({6, rows}).Text.ToUtf8() == last.F && again.GetCell({9, 5}).Value.Formula() == u"=B5*C5";
  ARun.Results.push_back({"save", int64_t{rows} * 10, save, {}, savePeak, isSame});
}

void PrepareCsv(TRun& ARun) { WriteCsvFile(CsvFile(ARun), ARun.Rows(kCsvRows)); }

void MeasureCsv(TRun& ARun) {
  const int32_t rows = ARun.Rows(kCsvRows);
  std::unique_ptr<TWorkbook> book;
  const double import = MedianMilliseconds(
      [&] {
        const TSharedReadStream file = OpenSharedReadStream(CsvFile(ARun));
        TCsvIO::ImportWithOptions(*book, *file.Stream, 0, {});
      },
      [&] { book = std::make_unique<TWorkbook>(); });
  const TWorksheet& sheet = *book->GetSheet(0);
  const std::string line = CsvLine(rows);
  const bool imported = sheet.GetEffectiveValue({1, rows + 1}).Number == rows &&
                        line.find(sheet.GetEffectiveValue({5, rows + 1}).Text.ToUtf8()) != std::string::npos &&
                        sheet.Store().CellCount() == static_cast<size_t>(rows + 1) * 5;
  ARun.Results.push_back({"import", rows, import, {}, PeakMegabytes(), imported});

  size_t length = 0;
  const double exportTime = MedianMilliseconds([&] {
    TMemoryWriteStream target;
    TCsvIO::ExportSheet(*book, target, 0);
    length = target.Bytes().size();
  });
  ARun.Results.push_back({"export", rows, exportTime, {}, PeakMegabytes(), length > static_cast<size_t>(rows) * 40});
}

void MeasureStore(TRun& ARun) {
  const int32_t dense = ARun.Rows(500000);
  {
    TWorkbook book;
    TWorksheet& sheet = *book.GetSheet(0);
    const double before = ResidentBytes();
    for (int32_t row = 1; row <= dense; ++row) {
      for (int32_t col = 1; col <= 10; ++col) sheet.SetValue({col, row}, TCellValue::FromNumber(row + col));
    }
    const double cells = static_cast<double>(dense) * 10;
    const double bytes = std::max(ResidentBytes() - before, static_cast<double>(sheet.Store().BytesUsed())) / cells;
    ARun.Results.push_back({"dense",
                            int64_t{dense} * 10,
                            {},
                            bytes,
                            PeakMegabytes(),
                            sheet.GetEffectiveValue({10, dense}).Number == dense + 10});
  }
  const int32_t scattered = ARun.Rows(1000000);
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  const double before = ResidentBytes();
  for (int32_t i = 1; i <= scattered; ++i) {
    const auto index = static_cast<uint32_t>(i);
    sheet.SetValue(
        {static_cast<int32_t>(Hash(index, 82) % 1000) + 1, static_cast<int32_t>(Hash(index, 81) % 1048576) + 1},
        TCellValue::FromNumber(i));
  }
  const size_t cells = sheet.Store().CellCount();
  ARun.Results.push_back(
      {"scattered",
       scattered,
       {},
       std::max(ResidentBytes() - before, static_cast<double>(sheet.Store().BytesUsed())) / static_cast<double>(cells),
       PeakMegabytes(),
       cells > static_cast<size_t>(scattered) * 99 / 100});
}

void MeasureDisplayTexts(TRun& ARun) {
  const int32_t rows = ARun.Rows(1000000);
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  int32_t styles[4];
  size_t next = 0;
  for (const char16_t* code : {u"#,##0.00", u"0.0%", u"yyyy-mm-dd", u"$#,##0_);($#,##0)"}) {
    TCellFormat format;
    format.NumberFormat = code;
    styles[next++] = book.StyleSheet().AddCellXf(format);
  }
  for (int32_t row = 1; row <= rows; ++row) {
    TCell cell;
    cell.Value = TCellValue::FromNumber(ColumnA(row) * 100 + 1);
    cell.StyleIndex = styles[row % 4];
    sheet.SetCell({1, row}, cell);
  }
  size_t units = 0;
  const double time = MedianMilliseconds([&] {
    units = 0;
    std::u16string text;
    for (int32_t row = 1; row <= rows; ++row) {
      text.clear();
      sheet.AppendDisplayText({1, row}, &book.StyleSheet(), text);
      units += text.size();
    }
  });
  const bool check =
      sheet.GetDisplayText({1, 4}, &book.StyleSheet()).Length() > 0 && units > static_cast<size_t>(rows) * 4;
  ARun.Results.push_back({"text", rows, time, {}, PeakMegabytes(), check});
}

}  // namespace tessarine::bench
