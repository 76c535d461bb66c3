#include <tessarine/io/xlsx/detail/XlsxStylesReader.h>

#include <cstddef>
#include <cstdint>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/io/xlsx/detail/XlsxCommon.h>

namespace tessarine::detail {

namespace {

template <class TValue>
struct TWord {
  std::string_view Text;
  TValue Value;
};

constexpr int32_t kSolidPattern = 1;
constexpr TWord<int32_t> kPatterns[] = {
    {"none", 0},          {"solid", kSolidPattern}, {"gray125", 2},        {"darkGray", 3},        {"gray0625", 3},
    {"mediumGray", 4},    {"lightGray", 5},         {"darkHorizontal", 6}, {"lightHorizontal", 6}, {"darkVertical", 7},
    {"lightVertical", 7}, {"darkDown", 8},          {"lightDown", 8},      {"darkUp", 9},          {"lightUp", 9},
};
constexpr int32_t kUnknownPattern = 2;

constexpr TWord<TBorderLineStyle> kLineStyles[] = {
    {"thin", blsThin},     {"medium", blsMedium}, {"thick", blsThick}, {"dashed", blsDashed},
    {"dotted", blsDotted}, {"double", blsDouble}, {"hair", blsHair},
};

constexpr TWord<THorizontalAlignment> kHorizontals[] = {
    {"center", haCenter}, {"right", haRight}, {"left", haLeft}, {"justify", haJustify}};

constexpr TWord<TVerticalAlignment> kVerticals[] = {{"top", vaTop}, {"center", vaCenter}, {"bottom", vaBottom}};

template <class TValue, size_t Count>
TValue FindWord(const TWord<TValue> (&AWords)[Count], std::string_view AText, TValue ADefault) {
  for (const auto& word : AWords) {
    if (EqualXmlNames(word.Text, AText)) return word.Value;
  }
  return ADefault;
}

int32_t PatternFromWord(std::string_view AWord) {
  return AWord.empty() ? 0 : FindWord(kPatterns, AWord, kUnknownPattern);
}

TCellFillInfo ParseGradient(const TXmlNode* ANode) {
  const TXmlNode* first = nullptr;
  const TXmlNode* last = nullptr;
  for (const TXmlNode* stop : TXmlElements(ANode)) {
    if (!XmlLocalNameIs(stop, "stop")) continue;
    if (!first) first = stop;
    last = stop;
  }
  if (!first) return TCellFillInfo::None();
  const double degree = XmlAttrFloat(ANode, "degree", 90);
  const int32_t angle = degree > -3600 && degree < 3600 ? static_cast<int32_t>(degree) : 90;
  return TCellFillInfo::Gradient(XlsxParseColor(XmlFindChild(first, "color")),
                                 XlsxParseColor(XmlFindChild(last, "color")), angle);
}

TCellFillInfo ParseFill(const TXmlNode* ANode) {
  if (const TXmlNode* gradient = XmlFindChild(ANode, "gradientFill")) return ParseGradient(gradient);
  const TXmlNode* const pattern = XmlFindChild(ANode, "patternFill");
  const TXmlNode* const foreground = XmlFindChild(pattern, "fgColor");
  const TXmlNode* const background = XmlFindChild(pattern, "bgColor");
  TCellFillInfo fill = TCellFillInfo::None();
  fill.PatternType = PatternFromWord(XmlAttr(pattern, "patternType"));
  if (fill.PatternType == kSolidPattern && !foreground) fill.PatternType = 0;
  if (foreground) fill.ForegroundColor = XlsxParseColor(foreground);
  if (background) fill.BackgroundColor = XlsxParseColor(background);
  return fill;
}

TBorderSide ParseBorderSide(const TXmlNode* ANode) {
  return {FindWord(kLineStyles, XmlAttr(ANode, "style"), blsNone), XlsxParseColor(XmlFindChild(ANode, "color"))};
}

TCellBorderInfo ParseBorder(const TXmlNode* ANode) {
  TCellBorderInfo border;
  border.Left = ParseBorderSide(XmlFindChild(ANode, "left"));
  border.Top = ParseBorderSide(XmlFindChild(ANode, "top"));
  border.Right = ParseBorderSide(XmlFindChild(ANode, "right"));
  border.Bottom = ParseBorderSide(XmlFindChild(ANode, "bottom"));
  border.Diagonal = ParseBorderSide(XmlFindChild(ANode, "diagonal"));
  border.DiagonalUp = XlsxAttrIsOn(ANode->Attributes, "diagonalUp");
  border.DiagonalDown = XlsxAttrIsOn(ANode->Attributes, "diagonalDown");
  return border;
}

TCellAlignmentInfo ParseAlignment(const TXmlNode* ANode) {
  TCellAlignmentInfo alignment;
  alignment.Horizontal = FindWord(kHorizontals, XmlAttr(ANode, "horizontal"), alignment.Horizontal);
  alignment.Vertical = FindWord(kVerticals, XmlAttr(ANode, "vertical"), alignment.Vertical);
  alignment.WrapText = XlsxAttrIsOn(ANode->Attributes, "wrapText");
  alignment.ShrinkToFit = XlsxAttrIsOn(ANode->Attributes, "shrinkToFit");
  alignment.Indent = XmlAttrInt(ANode, "indent", 0);
  alignment.TextRotation = XmlAttrInt(ANode, "textRotation", 0);
  const int32_t order = XmlAttrInt(ANode, "readingOrder", 0);
  if (order == 1) alignment.ReadingOrder = roLTR;
  if (order == 2) alignment.ReadingOrder = roRTL;
  return alignment;
}

/// The entry of a table; null for an index that it does not have.
template <class TList>
const typename TList::value_type* FindEntry(const TList& AList, int32_t AIndex) {
  return AIndex >= 0 && static_cast<size_t>(AIndex) < AList.size() ? &AList[static_cast<size_t>(AIndex)] : nullptr;
}

}  // namespace

void TXlsxStylesReader::Load(std::string_view ABytes, std::string_view APartName, const TReadLimits& ALimits) {
  const TXmlTree tree(ABytes, APartName, ALimits);
  const struct {
    std::string_view Name;
    void (TXlsxStylesReader::*Parse)(const TXmlNode*);
  } sections[] = {
      {"numFmts", &TXlsxStylesReader::ParseNumFmts}, {"fonts", &TXlsxStylesReader::ParseFonts},
      {"fills", &TXlsxStylesReader::ParseFills},     {"borders", &TXlsxStylesReader::ParseBorders},
      {"cellXfs", &TXlsxStylesReader::ParseCellXfs},
  };
  for (const auto& section : sections) {
    if (const TXmlNode* node = XmlFindChild(tree.Root(), section.Name)) (this->*section.Parse)(node);
  }
}

void TXlsxStylesReader::ParseNumFmts(const TXmlNode* ANode) {
  FStyleSheet.ClearNumFmts();
  for (const TXmlNode* format : TXmlElements(ANode)) {
    if (!XmlLocalNameIs(format, "numFmt")) continue;
    const int32_t id = XmlAttrInt(format, "numFmtId", -1);
    if (id >= 0) FStyleSheet.RegisterNumFmt(id, XlsxText(XmlAttr(format, "formatCode")));
  }
}

void TXlsxStylesReader::ParseFonts(const TXmlNode* ANode) {
  FStyleSheet.ClearFonts();
  for (const TXmlNode* font : TXmlElements(ANode)) {
    if (XmlLocalNameIs(font, "font")) FStyleSheet.AddFont(XlsxParseFontNode(font, TCellFontInfo::Default()));
  }
}

/// No entry is ever left out: cell formats refer to fills by their place.
void TXlsxStylesReader::ParseFills(const TXmlNode* ANode) {
  FStyleSheet.ClearFills();
  for (const TXmlNode* fill : TXmlElements(ANode)) {
    if (XmlLocalNameIs(fill, "fill")) FStyleSheet.AddFill(ParseFill(fill));
  }
}

void TXlsxStylesReader::ParseBorders(const TXmlNode* ANode) {
  FStyleSheet.ClearBorders();
  for (const TXmlNode* border : TXmlElements(ANode)) {
    if (XmlLocalNameIs(border, "border")) FStyleSheet.AddBorder(ParseBorder(border));
  }
}

void TXlsxStylesReader::ParseCellXfs(const TXmlNode* ANode) {
  FStyleSheet.ClearCellXfs();
  for (const TXmlNode* xf : TXmlElements(ANode)) {
    if (XmlLocalNameIs(xf, "xf")) FStyleSheet.AddCellXf(ParseXf(xf));
  }
  // Cells without a style have index 0: it must not become what somebody adds later.
  if (FStyleSheet.Count() == 0) FStyleSheet.AddCellXf(TCellFormat::Default());
}

TCellFormat TXlsxStylesReader::ParseXf(const TXmlNode* ANode) const {
  TCellFormat format;
  if (const auto* font = FindEntry(FStyleSheet.Fonts(), XmlAttrInt(ANode, "fontId", 0))) format.Font = *font;
  if (const auto* fill = FindEntry(FStyleSheet.Fills(), XmlAttrInt(ANode, "fillId", 0))) format.Fill = *fill;
  if (const auto* border = FindEntry(FStyleSheet.Borders(), XmlAttrInt(ANode, "borderId", 0))) format.Border = *border;
  if (XmlAttr(ANode, "applyNumberFormat") != "0")
    format.NumberFormat = FStyleSheet.GetNumFmt(XmlAttrInt(ANode, "numFmtId", 0));
  if (const TXmlNode* alignment = XmlFindChild(ANode, "alignment")) format.Alignment = ParseAlignment(alignment);
  return format;
}

}  // namespace tessarine::detail
