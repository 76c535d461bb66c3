#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tessarine {
class TFileReport;
class TXmlReader;
struct TXmlNode;
}  // namespace tessarine

namespace tessarine::detail {

class TXlsxPackage;

/// Tells a report, when there is one, what becomes of the content of one sheet or part.
struct TXlsxReport {
  TFileReport* Report = nullptr;
  std::string Where;

  bool IsWanted() const { return Report != nullptr; }
  void Drop(std::string_view AFeature, uint64_t ACount = 1, std::string_view ANote = {}) const;
  void Rewrite(std::string_view AFeature, uint64_t ACount = 1, std::string_view ANote = {}) const;
};

/// Called at the start event of a section that the reader of sheets does not know: counts what is in it as dropped, by
/// kinds, and goes on to its end event.
void PassOverXlsxSection(TXmlReader& AReader, const TXlsxReport& AReport);

/// Counts what the workbook part says beyond sheets, views and names.
void ReportXlsxWorkbookSettings(const TXmlNode* AWorkbook, const TXlsxReport& AReport);

/// Counts, by kinds, the parts that nobody has asked the package for.
void ReportUnreadXlsxParts(const TXlsxPackage& APackage, TFileReport& AReport);

}  // namespace tessarine::detail
