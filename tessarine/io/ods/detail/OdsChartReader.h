#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/core/lists/Drawings.h>
#include <tessarine/platform/ReadLimits.h>

namespace tessarine {
struct TXmlNode;
}

namespace tessarine::detail {

class TOdsStyleReader;

/// Reads the document inside a document that holds a chart. Values come from the table that it carries.
class TOdsChartReader {
 public:
  /// APoints is how many values and categories may still be kept; it outlives the reader.
  TOdsChartReader(const TReadLimits& ALimits, size_t& APoints) : FLimits(ALimits), FPoints(APoints) {}

  /// Fills the chart's fields of ADrawing; false for a document without a chart. Throws for what is not well-formed.
  bool Read(std::string_view ABytes, std::string_view APartName, TSheetDrawing& ADrawing);

  /// Whether values or categories were left out because there were too many; references to cells stay.
  bool HasLeftOut() const { return FHasLeftOut; }

 private:
  struct TEntry {
    TText Text;
    double Number = 0;
  };
  using TRow = std::vector<TEntry>;

  void ReadTable(const TXmlNode* ATable);
  void AddRows(const TXmlNode* AParent);
  void ReadPlot(const TXmlNode* APlot, const TOdsStyleReader& AStyles, TSheetDrawing& ADrawing);
  /// The title, the values and where they come from.
  TSheetChartSeries ReadData(const TXmlNode* ANode, TSheetChartType AType);
  void ReadSeries(const TXmlNode* ANode, const TOdsStyleReader& AStyles, TSheetDrawing& ADrawing);
  void ReadPoints(const TXmlNode* ANode, const TOdsStyleReader& AStyles, TSheetChartSeries& ASeries) const;
  bool HasColumn(size_t AColumn) const { return AColumn < FWidth; }
  bool TakePoints();
  std::vector<double> Column(size_t AColumn);
  std::vector<TText> Categories();

  const TReadLimits FLimits;
  size_t& FPoints;
  bool FHasLeftOut = false;
  std::vector<TRow> FRows;  // of the table, headers included
  size_t FHeaderRows = 0;
  size_t FWidth = 0;
  size_t FEntries = 0;
  size_t FNextColumn = 1;  // column 0 has the categories
  TText FCategoriesFormula;
  std::vector<double> FXValues;  // those of the series before count for one that has none
};

}  // namespace tessarine::detail
