#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/lists/PageSetup.h>
#include <tessarine/io/xlsx/detail/XlsxReport.h>

namespace tessarine {
class TWorkbook;
class TWorksheet;
struct TXmlNode;
}  // namespace tessarine

namespace tessarine::detail {

/// Takes the defined names of a workbook part into a workbook whose sheets stand already. Names have no scope here: of
/// several of one name the last counts. Those that tell print areas and titles also go to the sheets that they name, in
/// file order.
class TXlsxNames {
 public:
  /// The workbook outlives the object and keeps its sheets.
  TXlsxNames(TWorkbook& AWorkbook, TXlsxReport AReport);

  /// Takes an element of a defined name; one without name or text is passed over.
  void Read(const TXmlNode* AName);

  /// Gives the sheets what the names told about printing.
  void ApplyPrintNames();

 private:
  /// What the names tell about all sheets of one name.
  struct TTarget {
    std::vector<TWorksheet*> Sheets;
    std::optional<TPageSetup> Print;  // only print area and titles are used
  };

  void OfferPrintName(std::u16string_view AName, std::u16string_view AText);
  void ReportScope(const TXmlNode* AName, const std::u16string& ANormalized);

  TWorkbook& FWorkbook;
  const TXlsxReport FReport;
  boost::unordered_flat_map<std::u16string, TTarget> FTargets;  // by sheet name in lower case
};

}  // namespace tessarine::detail
