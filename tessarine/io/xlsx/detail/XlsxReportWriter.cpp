#include <tessarine/io/xlsx/detail/XlsxReportWriter.h>

#include <string>
#include <string_view>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/lists/CellComments.h>
#include <tessarine/core/lists/ConditionalFormats.h>
#include <tessarine/core/lists/PageSetup.h>
#include <tessarine/core/lists/Slicers.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/FileReport.h>
#include <tessarine/io/xlsx/detail/XlsxListsWriter.h>
#include <tessarine/io/xlsx/detail/XlsxPlanWriter.h>

namespace tessarine::detail {

void ReportXlsxSheetLosses(const TWorksheet& ASheet, const TXlsxSheetPlan& APlan, const TXlsxListLosses& ALosses,
                           TFileReport& AReport) {
  const TSheetViewOptions& view = ASheet.View();
  const struct {
    std::string_view Feature;
    uint64_t Count;
    std::string_view Note;
  } losses[] = {
      {"comment", ASheet.Comments().Count(), {}},
      {"conditional format", ASheet.ConditionalFormats().Count(), {}},
      {"sparkline", static_cast<uint64_t>(APlan.LostSparklines), "the formula is there"},
      {"slicer", ASheet.Slicers().Count(), {}},
      {"error value", static_cast<uint64_t>(APlan.LostErrors), "entered as such, not the result of a formula"},
      {"number", static_cast<uint64_t>(APlan.LostNumbers), "not finite"},
      {"spilled block", static_cast<uint64_t>(ASheet.Spills().Count()), "its formula is there and gives it again"},
      {"merged area", ALosses.Merges, "of one cell, outside the sheet, or over another one"},
      {"validation rule", ALosses.Rules, "without a restriction or without cells"},
      {"filter criterion", ALosses.Criteria, "of a table's filter"},
      {"sheet protection", ASheet.IsProtected() ? 1u : 0u, {}},
      {"custom paper size", ASheet.PageSetup().PaperSize() == psCustom ? 1u : 0u, {}},
      {"view setting", (view.ShowFormulas ? 1u : 0u) + (view.ShowZeros ? 0u : 1u) + (view.R1C1 ? 1u : 0u), {}},
  };
  const std::string where = ASheet.Name().ToUtf8();
  for (const auto& loss : losses) AReport.Add(loss.Feature, ffDropped, where, loss.Count, loss.Note);
}

void ReportXlsxWorkbookLosses(const TWorkbook& AWorkbook, TFileReport& AReport) {
  uint64_t flags = 0;
  for (const TCellFormat& format : AWorkbook.StyleSheet().CellXfs()) flags += !format.Locked || format.Hidden ? 1u : 0u;
  AReport.Add("cell format with protection flags", ffDropped, {}, flags, "the format is there without them");
  AReport.Add("workbook protection", ffDropped, {}, AWorkbook.IsStructureProtected() ? 1u : 0u);
}

}  // namespace tessarine::detail
