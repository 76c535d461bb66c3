#include <memory>
#include <string>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/ods/OdsReader.h>
#include <tessarine/io/ods/OdsWriter.h>
#include <tessarine/io/xlsx/XlsxReader.h>

#include "Workload.h"
#include "WorkloadData.h"

namespace tessarine::bench {

namespace {

constexpr int32_t kOdsRows = 20000;

std::string OdsFile(const TRun& ARun) { return ARun.Folder + "/mixed.ods"; }

bool HoldsMixedRows(const TWorkbook& ABook, int32_t ARows) {
  const TWorksheet& sheet = *ABook.GetSheet(0);
  const TMixedRow last = MixedRow(ARows);
  return sheet.GetEffectiveValue({10, ARows}).Number == last.J &&
         sheet.GetEffectiveValue({6, ARows}).Text.ToUtf8() == last.F &&
         sheet.GetEffectiveValue({8, 1}).Number == MixedRow(1).K &&
         sheet.GetCell({9, 5}).Value.Formula() == u"=B5*C5" &&
         sheet.Store().CellCount() == static_cast<size_t>(ARows) * 10;
}

}  // namespace

void PrepareOds(TRun& ARun) {
  const std::string source = ARun.Folder + "/mixed-for-ods.xlsx";
  WriteMixedWorkbook(source, ARun.Rows(kOdsRows));
  TWorkbook book;
  TXlsxReader::LoadFromFile(book, source);
  TOdsWriter::SaveToFile(book, OdsFile(ARun));
}

void MeasureOds(TRun& ARun) {
  const int32_t rows = ARun.Rows(kOdsRows);
  {
    TWorkbook once;  // the peak of a single load, before any repetition
    TOdsReader::LoadFromFile(once, OdsFile(ARun));
  }
  const double peak = PeakMegabytes();
  std::unique_ptr<TWorkbook> book;
  const double load = MedianMilliseconds([&] { TOdsReader::LoadFromFile(*book, OdsFile(ARun)); },
                                         [&] { book = std::make_unique<TWorkbook>(); });
  ARun.Results.push_back({"load", int64_t{rows} * 10, load, {}, peak, HoldsMixedRows(*book, rows)});
  const std::string copy = ARun.Folder + "/mixed-saved.ods";
  const double save = MedianMilliseconds([&] { TOdsWriter::SaveToFile(*book, copy); });
  TWorkbook again;
  TOdsReader::LoadFromFile(again, copy);
  ARun.Results.push_back({"save", int64_t{rows} * 10, save, {}, PeakMegabytes(), HoldsMixedRows(again, rows)});
}

}  // namespace tessarine::bench
