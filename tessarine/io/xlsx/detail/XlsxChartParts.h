#pragma once

#include <string>

#include <tessarine/core/lists/Charts.h>
#include <tessarine/io/xlsx/detail/XlsxChartReader.h>
#include <tessarine/platform/XmlTree.h>

namespace tessarine::detail {

// The pieces that a chart part is read from. A null node means that the element is missing.

/// The attribute "val" of a child; empty without either.
std::string_view XlsxChildVal(const TXmlNode* ANode, std::string_view AChild);

/// The number in the attribute "val" of a child, kept between the limits; ADefault without it.
int32_t XlsxChildWhole(const TXmlNode* ANode, std::string_view AChild, int32_t ADefault, int32_t AMin, int32_t AMax);

/// The text of a title or of a series' name: rich text, else the cached texts of a reference joined by blanks, else a
/// plain value. Paragraphs are joined by CR LF.
std::u16string XlsxChartText(const TXmlNode* AText);

/// The font of the first paragraph of a text body ("txPr", "rich") with that of its first run over it.
TSheetChartFont XlsxTextBodyFont(const TXmlNode* ABody, const TTessarineTheme* ATheme);

/// The place that a title, a legend or the plot area was given by hand, and whether it lies over the plot.
TSheetChartManualLayout XlsxReadLayout(const TXmlNode* AParent);

TSheetChartDataLabels XlsxReadDataLabels(const TXmlNode* ALabels);

/// A series (ECMA-376-1 §21.2.2.170 and its kin); ANumber is its 1-based place in the chart, for a stand-in name.
TSheetChartSeries XlsxReadSeries(const TXmlNode* ASeries, size_t ANumber, const TXlsxChartContext& AContext);

/// An axis of any kind.
TSheetChartAxisInfo XlsxReadAxis(const TXmlNode* AAxis, const TXlsxChartContext& AContext);

}  // namespace tessarine::detail
