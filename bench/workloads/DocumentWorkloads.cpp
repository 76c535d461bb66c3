#include <cstddef>
#include <string>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/native/Native.h>
#include <tessarine/io/xlsx/XlsxReader.h>

#include "Workload.h"
#include "WorkloadData.h"

namespace tessarine::bench {

namespace {

constexpr int32_t kDocumentRows = 100000;

std::string PackageFile(const TRun& ARun) { return ARun.Folder + "/w23.xlsx"; }
std::string DocumentFile(const TRun& ARun) { return ARun.Folder + "/w23.tsr"; }

}  // namespace

/// The workbook of W5, as a package for the saving and as a native document for the loading.
void PrepareDocument(TRun& ARun) {
  WriteMixedWorkbook(PackageFile(ARun), ARun.Rows(kDocumentRows));
  TWorkbook book;
  TXlsxReader::LoadFromFile(book, PackageFile(ARun));
  TTsrIO::SaveToFile(book, DocumentFile(ARun));
}

void MeasureDocument(TRun& ARun) {
  const int32_t rows = ARun.Rows(kDocumentRows);
  {
    TWorkbook once;  // the peak of a single load, before any repetition
    TTsrIO::LoadFromFile(once, DocumentFile(ARun));
  }
  const double peak = PeakMegabytes();
  TWorkbook book;
  const double load = MedianMilliseconds([&] { TTsrIO::LoadFromFile(book, DocumentFile(ARun)); });
  const TWorksheet& sheet = *book.GetSheet(0);
  const TMixedRow last = MixedRow(rows);
  const bool loaded = sheet.GetEffectiveValue({10, rows}).Number == last.J &&
                      sheet.GetEffectiveValue({6, rows}).Text.ToUtf8() == last.F &&
                      sheet.GetCell({9, 5}).Value.Formula() == u"=B5*C5" &&
                      sheet.Store().CellCount() == static_cast<size_t>(rows) * 10;
  ARun.Results.push_back({"load", int64_t{rows} * 10, load, {}, peak, loaded});

  const std::string copy = ARun.Folder + "/w23copy.tsr";
  const double save = MedianMilliseconds([&] { TTsrIO::SaveToFile(book, copy); });
  TWorkbook again;
  TTsrIO::LoadFromFile(again, copy);
  const bool saved = again.GetSheet(0)->Store().CellCount() == sheet.Store().CellCount() &&
                     again.GetSheet(0)->GetCell({9, rows}) == sheet.GetCell({9, rows});
  ARun.Results.push_back({"save", int64_t{rows} * 10, save, {}, PeakMegabytes(), saved});
}

}  // namespace tessarine::bench
