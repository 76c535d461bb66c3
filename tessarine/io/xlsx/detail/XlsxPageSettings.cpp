#include <tessarine/io/xlsx/detail/XlsxPageSettings.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include <tessarine/core/lists/PageSetup.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/io/xlsx/detail/XlsxCommon.h>
#include <tessarine/io/xlsx/detail/XlsxReport.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Numbers.h>

namespace tessarine::detail {

namespace {

struct TPaperUnit {
  std::string_view Name;
  double Inches;
};

constexpr TPaperUnit kPaperUnits[] = {
    {"mm", 1 / 25.4}, {"cm", 1 / 2.54}, {"in", 1.0}, {"pt", 1.0 / 72}, {"pc", 1.0 / 6}, {"pi", 1.0 / 6},
};

/// A length with its unit ("210mm"), or a bare number of inches; ADefault for anything else.
double PaperInches(std::string_view AText, double ADefault) {
  AText = XlsxTrim(AText);
  double factor = 1;
  for (const TPaperUnit& unit : kPaperUnits) {
    if (AText.size() <= unit.Name.size() || !EqualXmlNames(AText.substr(AText.size() - 2), unit.Name)) continue;
    factor = unit.Inches;
    AText = XlsxTrim(AText.substr(0, AText.size() - 2));
    break;
  }
  double length = 0;
  return TryParseFileNumber(AText, length) && length > 0 ? length * factor : ADefault;
}

void ReadPageMargins(TXmlReader& AReader, TPageSetup& APage) {
  const struct {
    std::string_view Name;
    double& Value;
  } margins[] = {
      {"left", APage.MarginLeft},     {"right", APage.MarginRight},   {"top", APage.MarginTop},
      {"bottom", APage.MarginBottom}, {"header", APage.MarginHeader}, {"footer", APage.MarginFooter},
  };
  for (const auto& margin : margins) margin.Value = XlsxAttrFloat(AReader.Attributes(), margin.Name, margin.Value);
  AReader.SkipElement();
}

void ReadPagePaper(TXmlAttributes AAttributes, TPageSetup& APage) {
  if (FindXmlAttribute(AAttributes, "paperSize"))
    APage.SetPaperSize(PaperSizeFromOOXML(XlsxAttrInt(AAttributes, "paperSize", 1)));
  const auto width = FindXmlAttribute(AAttributes, "paperWidth");
  const auto height = FindXmlAttribute(AAttributes, "paperHeight");
  if (width || height) {
    APage.SetCustomPaperInches(PaperInches(width.value_or(""), APage.PaperWidthInches()),
                               PaperInches(height.value_or(""), APage.PaperHeightInches()));
  }
}

void ReadPageScaling(TXmlAttributes AAttributes, TPageSetup& APage) {
  if (FindXmlAttribute(AAttributes, "scale")) APage.ScalePercent = XlsxAttrInt(AAttributes, "scale", 100);
  if (!FindXmlAttribute(AAttributes, "fitToWidth") && !FindXmlAttribute(AAttributes, "fitToHeight")) return;
  APage.FitToPage = true;
  APage.FitToWidth = XlsxAttrInt(AAttributes, "fitToWidth", 1);
  APage.FitToHeight = XlsxAttrInt(AAttributes, "fitToHeight", 1);
}

void ReadPageSetup(TXmlReader& AReader, TPageSetup& APage) {
  const TXmlAttributes attributes = AReader.Attributes();
  const auto is = [&](std::string_view AName, std::string_view AWord) {
    return EqualXmlNames(XlsxAttr(attributes, AName), AWord);
  };
  ReadPagePaper(attributes, APage);
  if (is("orientation", "landscape")) APage.Orientation = poLandscape;
  if (is("orientation", "portrait")) APage.Orientation = poPortrait;
  ReadPageScaling(attributes, APage);
  APage.FirstPageNumber = XlsxAttrInt(attributes, "firstPageNumber", APage.FirstPageNumber);
  if (is("pageOrder", "overThenDown")) APage.PageOrder = poOverThenDown;
  if (XlsxAttrIsOn(attributes, "blackAndWhite")) APage.BlackAndWhite = true;
  if (XlsxAttrIsOn(attributes, "draft")) APage.DraftQuality = true;
  if (is("cellComments", "atEnd")) APage.CommentsMode = pcmAtEnd;
  if (is("cellComments", "asDisplayed")) APage.CommentsMode = pcmAsDisplayed;
  if (is("errors", "blank")) APage.ErrorsMode = pemBlank;
  if (is("errors", "dash")) APage.ErrorsMode = pemDash;
  if (is("errors", "NA")) APage.ErrorsMode = pemNA;
  AReader.SkipElement();
}

void ReadPrintOptions(TXmlReader& AReader, TPageSetup& APage) {
  const TXmlAttributes attributes = AReader.Attributes();
  if (XlsxAttrIsOn(attributes, "gridLines")) APage.PrintGridlines = true;
  if (XlsxAttrIsOn(attributes, "headings")) APage.PrintHeadings = true;
  if (XlsxAttrIsOn(attributes, "horizontalCentered")) APage.CenterHorizontally = true;
  if (XlsxAttrIsOn(attributes, "verticalCentered")) APage.CenterVertically = true;
  AReader.SkipElement();
}

/// Headers of first and even pages are not kept.
void ReadPageHeaders(TXmlReader& AReader, TPageSetup& APage, const TXlsxReport& AReport) {
  bool isRead[2] = {};
  std::string text;
  for (TXmlEvent event = AReader.Next(); event != xeEndElement && event != xeEnd; event = AReader.Next()) {
    if (event != xeStartElement) continue;
    const bool isHeader = AReader.LocalNameIs("oddHeader");
    if ((isHeader || AReader.LocalNameIs("oddFooter")) && !std::exchange(isRead[isHeader ? 0 : 1], true)) {
      ReadXlsxText(AReader, text);
      (isHeader ? APage.Header : APage.Footer) = SplitXlsxHeader(XlsxText(text).View());
      continue;
    }
    ReadXlsxText(AReader, text);
    if (!text.empty()) AReport.Drop("header or footer of first or even pages");
  }
}

void SortBreaks(std::vector<int32_t>& ABreaks) {
  std::sort(ABreaks.begin(), ABreaks.end());
  ABreaks.erase(std::unique(ABreaks.begin(), ABreaks.end()), ABreaks.end());
}

/// Where the first code of this letter begins, or the text's length.
size_t FindSection(std::u16string_view AText, char16_t ALetter) {
  for (size_t at = 0; at + 1 < AText.size(); ++at) {
    if (AText[at] != u'&') continue;
    if (AText[at + 1] == ALetter) return at;
    if (AText[at + 1] == u'&') ++at;
  }
  return AText.size();
}

}  // namespace

THeaderFooterSection SplitXlsxHeader(std::u16string_view AText) {
  THeaderFooterSection sections;
  std::pair<size_t, TText*> starts[] = {
      {FindSection(AText, u'L'), &sections.Left},
      {FindSection(AText, u'C'), &sections.Center},
      {FindSection(AText, u'R'), &sections.Right},
  };
  std::sort(std::begin(starts), std::end(starts));
  const std::u16string_view front = AText.substr(0, starts[0].first);
  for (size_t i = 0; i < std::size(starts); ++i) {
    const size_t begin = std::min(starts[i].first + 2, AText.size());
    const size_t end = i + 1 < std::size(starts) ? starts[i + 1].first : AText.size();
    if (starts[i].first < AText.size()) *starts[i].second = TText(AText.substr(begin, end - begin));
  }
  if (!front.empty()) sections.Center = TText(std::u16string(front).append(sections.Center.View()));
  return sections;
}

bool TXlsxPageSettings::TryReadSection(TXmlReader& AReader, const TXlsxReport& AReport) {
  if (AReader.LocalNameIs("pageMargins")) return ReadPageMargins(AReader, FPageSetup), true;
  if (AReader.LocalNameIs("pageSetup")) return ReadPageSetup(AReader, FPageSetup), true;
  if (AReader.LocalNameIs("printOptions")) return ReadPrintOptions(AReader, FPageSetup), true;
  if (AReader.LocalNameIs("headerFooter")) return ReadPageHeaders(AReader, FPageSetup, AReport), true;
  if (AReader.LocalNameIs("rowBreaks")) return ReadBreaks(AReader, FRowBreaks), true;
  if (AReader.LocalNameIs("colBreaks")) return ReadBreaks(AReader, FColBreaks), true;
  return false;
}

/// A file names the line above or left of a break.
void TXlsxPageSettings::ReadBreaks(TXmlReader& AReader, std::vector<int32_t>& ABreaks) {
  ForEachXlsxChild(AReader, "brk", [&] {
    const int32_t line = XlsxAttrInt(AReader.Attributes(), "id", 0);
    if (line >= 1 && line < kMaxRow) ABreaks.push_back(line + 1);
    if (ABreaks.size() > FMaxRecords) {
      throw ELimit(AReader.PartName() + ": the part has more page breaks than the limit of " +
                   std::to_string(FMaxRecords));
    }
    AReader.SkipElement();
  });
}

/// In rising order each one is added at the end.
void TXlsxPageSettings::ApplyBreaks() {
  SortBreaks(FRowBreaks);
  SortBreaks(FColBreaks);
  for (const int32_t row : FRowBreaks) FPageSetup.AddRowBreak(row);
  for (const int32_t col : FColBreaks) FPageSetup.AddColBreak(col);
}

}  // namespace tessarine::detail
