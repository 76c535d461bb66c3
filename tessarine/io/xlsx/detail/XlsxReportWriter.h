#pragma once

namespace tessarine {
class TFileReport;
class TWorkbook;
class TWorksheet;
}  // namespace tessarine

namespace tessarine::detail {

struct TXlsxListLosses;
struct TXlsxSheetPlan;

/// Tells a report what a sheet has that its part does not hold.
void ReportXlsxSheetLosses(const TWorksheet& ASheet, const TXlsxSheetPlan& APlan, const TXlsxListLosses& ALosses,
                           TFileReport& AReport);

/// Tells a report what the workbook itself has that the file does not hold.
void ReportXlsxWorkbookLosses(const TWorkbook& AWorkbook, TFileReport& AReport);

}  // namespace tessarine::detail
