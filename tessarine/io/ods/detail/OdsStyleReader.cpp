#include <tessarine/io/ods/detail/OdsStyleReader.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include <tessarine/core/format/Theme.h>
#include <tessarine/io/ods/detail/OdsExactMarks.h>
#include <tessarine/io/ods/detail/OdsNumberStyleReader.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/Xml.h>
#include <tessarine/platform/XmlTree.h>

namespace tessarine::detail {

namespace {

constexpr std::string_view kFamilies[] = {"table-cell", "table-column", "table-row", "table",
                                          "text",       "graphic",      "chart"};
static_assert(std::size(kFamilies) == static_cast<size_t>(ofCount));

constexpr std::string_view kGroups[] = {"text-properties",         "paragraph-properties", "table-cell-properties",
                                        "table-column-properties", "table-row-properties", "table-properties",
                                        "graphic-properties",      "chart-properties"};
static_assert(std::size(kGroups) == static_cast<size_t>(ogCount));

constexpr std::string_view kDefaultStyle = "Default";
constexpr int kMaxParents = 64;  // looked at for one property; formats inherit without a limit
constexpr double kMinFontSize = 1;
constexpr double kMaxFontSize = 409;
constexpr double kLengthRounding = 0.00051;  // of a length with three digits

/// The index of a name in a table; its size for an unknown one.
template <size_t TCount>
size_t IndexIn(const std::string_view (&ATable)[TCount], std::string_view AName) {
  return static_cast<size_t>(std::find(std::begin(ATable), std::end(ATable), AName) - std::begin(ATable));
}

double FontSizePoints(std::string_view AText, double ABase) {
  double size = 0;
  if (AText.ends_with('%')) {
    size = TryParseFileNumber(AText.substr(0, AText.size() - 1), size) ? ABase * size / 100 : 0;
  } else if (!AText.ends_with("pt") || !TryParseFileNumber(AText.substr(0, AText.size() - 2), size)) {
    size = OdsCmToPoints(OdsParseLengthCm(AText));
  }
  return size > 0 ? std::clamp(size, kMinFontSize, kMaxFontSize) : ABase;
}

bool IsBoldWeight(std::string_view AText) {
  int32_t weight = 0;
  return AText == "bold" || (TryParseInt32(AText, weight) && weight >= 600);
}

TScriptPosition ScriptOf(std::string_view AText) {
  double raise = 0;
  if (AText.starts_with("super")) return spSuperscript;
  if (AText.starts_with("sub")) return spSubscript;
  const std::string_view first = AText.substr(0, AText.find_first_of("% "));
  if (!TryParseFileNumber(first, raise) || raise == 0) return spNormal;
  return raise > 0 ? spSuperscript : spSubscript;
}

THorizontalAlignment HorizontalOf(std::string_view AText) {
  struct TWord {
    std::string_view Text;
    THorizontalAlignment Value;
  };
  static constexpr TWord kWords[] = {{"center", haCenter}, {"end", haRight}, {"right", haRight},
                                     {"start", haLeft},    {"left", haLeft}, {"justify", haJustify}};
  for (const TWord& word : kWords)
    if (word.Text == AText) return word.Value;
  return haGeneral;
}

TReadingOrder ReadingOrderOf(std::string_view AText) {
  if (AText == "rl-tb" || AText == "rl" || AText == "rtl") return roRTL;
  return AText == "lr-tb" || AText == "lr" || AText == "ltr" ? roLTR : roContext;
}

int32_t RotationOf(std::string_view AText) {
  if (AText.ends_with("deg")) AText.remove_suffix(3);
  double angle = 0;
  if (!TryParseFileNumber(AText, angle) || std::fabs(angle) > 36'000) return 0;
  return static_cast<int32_t>(std::lround(std::fmod(angle, 360)));
}

struct TBorderWord {
  std::string_view Text;
  TBorderLineStyle Style;  // blsThin stands for "as wide as the line is"
};
constexpr TBorderWord kBorderWords[] = {
    {"none", blsNone},     {"hidden", blsNone},        {"solid", blsThin},      {"dashed", blsDashed},
    {"dash", blsDashed},   {"fine-dashed", blsDashed}, {"dash-dot", blsDashed}, {"dash-dot-dot", blsDashed},
    {"dotted", blsDotted}, {"dot", blsDotted},         {"double", blsDouble},   {"double-thin", blsDouble},
    {"groove", blsThin},   {"ridge", blsThin},         {"inset", blsThin},      {"outset", blsThin},
};

constexpr double kMediumCm = 0.045;  // from here on lines are medium, and from the next thick
constexpr double kThickCm = 0.08;

double BorderWidthCm(std::string_view AWord) {
  if (AWord == "thin") return kOdsCmPerPoint;
  if (AWord == "medium") return kMediumCm;
  if (AWord == "thick" || AWord == "bold") return kThickCm;
  double pixels = 0;
  if (AWord.ends_with("px") && TryParseFileNumber(AWord.substr(0, AWord.size() - 2), pixels))
    return pixels / 96 * kOdsCmPerInch;
  return OdsParseLengthCm(AWord);
}

bool IsBorderWidth(std::string_view AWord) {
  static constexpr std::string_view kWords[] = {"thin", "medium", "thick", "bold"};
  return IndexIn(kWords, AWord) < std::size(kWords) || (AWord.front() >= '0' && AWord.front() <= '9') ||
         AWord.front() == '.';
}

}  // namespace

TBorderSide OdsParseBorderSide(std::string_view AText) {
  TBorderSide side;
  bool hasStyle = false;
  TBorderLineStyle style = blsThin;
  double width = 0;
  for (size_t at = AText.find_first_not_of(' '); at != AText.npos; at = AText.find_first_not_of(' ', at)) {
    const size_t end = std::min(AText.find(' ', at), AText.size());
    const std::string_view word = AText.substr(at, end - at);
    at = end;
    if (word.front() == '#') {
      if (const auto color = OdsColorFromHex(word)) side.Color = TColorRef::FromARGB(*color);
    } else if (IsBorderWidth(word)) {
      width = BorderWidthCm(word);
    } else {
      for (const TBorderWord& known : kBorderWords) {
        if (known.Text != word) continue;
        style = known.Style;
        hasStyle = true;
      }
    }
    if (at >= AText.size()) break;
  }
  if (!hasStyle && width <= 0) return TBorderSide::None();
  if (style == blsThin && width >= kMediumCm) style = width >= kThickCm ? blsThick : blsMedium;
  if (style == blsNone) return TBorderSide::None();
  side.Style = style;
  return side;
}

// ---- reading

void TOdsStyleReader::LoadPart(std::string_view ABytes, std::string_view APartName) {
  TXmlReader reader(ABytes, APartName, FLimits);
  for (TXmlEvent event = reader.Next(); event != xeEnd; event = reader.Next())
    if (event == xeStartElement && reader.Depth() == 2) ReadSection(reader);
}

void TOdsStyleReader::ReadSection(TXmlReader& AReader) {
  const bool isStyles = AReader.LocalNameIs("styles") || AReader.LocalNameIs("automatic-styles");
  if (!isStyles && !AReader.LocalNameIs("font-face-decls")) return AReader.SkipElement();
  for (TXmlEvent event = AReader.Next(); event != xeEndElement && event != xeEnd; event = AReader.Next()) {
    if (event != xeStartElement) continue;
    const std::string_view name = AReader.LocalName();
    const bool isDefault = name == "default-style";
    const bool isNumberStyle = isStyles && OdsIsNumberStyle(name);
    const bool isStyle = isStyles && (name == "style" || isDefault);
    if (!isStyle && !isNumberStyle && (isStyles || name != "font-face")) {
      AReader.SkipElement();
      continue;
    }
    const TXmlTree tree(AReader, FLimits);
    if (isNumberStyle) {
      ReadNumberStyle(tree.Root());
    } else if (isStyle) {
      ReadStyle(tree.Root(), isDefault);
    } else {
      ReadFontFace(tree.Root());
    }
  }
}

void TOdsStyleReader::ReadFontFace(const TXmlNode* ANode) {
  FFontFaces[std::string(XmlAttr(ANode, "name"))] = {std::string(XmlAttr(ANode, "font-family")),
                                                     std::string(XmlAttr(ANode, "font-family-generic"))};
}

void TOdsStyleReader::ReadStyle(const TXmlNode* ANode, bool AIsDefault) {
  const size_t family = IndexIn(kFamilies, XmlAttr(ANode, "family"));
  if (family == std::size(kFamilies)) return;
  if (AIsDefault && static_cast<TOdsFamily>(family) != ofCell) return;
  TStyle style;
  style.Parent = XmlAttr(ANode, "parent-style-name");
  style.DataStyle = XmlAttr(ANode, "data-style-name");
  if (XmlHasAttr(ANode, "exact-code")) style.Code = XmlAttr(ANode, "exact-code");
  for (const TXmlNode* child : TXmlElements(ANode)) {
    if (XmlLocalNameIs(child, "map")) ++FConditions;
    const size_t group = IndexIn(kGroups, XmlLocalName(child));
    if (group == std::size(kGroups)) continue;
    for (const TXmlAttribute& attribute : child->Attributes)
      style.Groups[group].Items.push_back({std::string(XmlLocalName(attribute.Name)), std::string(attribute.Value)});
  }
  if (AIsDefault) {
    FCellDefaults = std::move(style);
  } else {
    FStyles[family][std::string(XmlAttr(ANode, "name"))] = std::move(style);
  }
}

void TOdsStyleReader::ReadNumberStyle(const TXmlNode* ANode) {
  TNumberStyle style;
  style.Code = OdsNumberFormatCode(ANode);
  style.ExactCode = Utf8ToUtf16(XmlAttr(ANode, "exact-code"));
  style.IsText = XmlLocalNameIs(ANode, "text-style");
  for (const TXmlNode* child : TXmlElements(ANode)) {
    if (!XmlLocalNameIs(child, "map")) continue;
    style.Conditions.push_back(
        {std::string(XmlAttr(child, "condition")), std::string(XmlAttr(child, "apply-style-name"))});
  }
  FNumberStyles[std::string(XmlAttr(ANode, "name"))] = std::move(style);
}

// ---- lookups

std::string_view TOdsStyleReader::TProperties::Find(std::string_view AName) const {
  for (const TProperty& item : Items)
    if (item.Name == AName) return item.Value;
  return {};
}

const TOdsStyleReader::TStyle* TOdsStyleReader::Find(TOdsFamily AFamily, std::string_view AName) const {
  const auto found = Styles(AFamily).find(AName);
  return found == Styles(AFamily).end() ? nullptr : &found->second;
}

bool TOdsStyleReader::Has(TOdsFamily AFamily, std::string_view AName) const { return Find(AFamily, AName) != nullptr; }

std::string_view TOdsStyleReader::Property(TOdsFamily AFamily, std::string_view AName, TOdsGroup AGroup,
                                           std::string_view AProperty) const {
  const TStyle* style = Find(AFamily, AName);
  for (int step = 0; style && step < kMaxParents; ++step) {
    const std::string_view value = style->Group(AGroup).Find(AProperty);
    if (!value.empty()) return value;
    style = style->Parent.empty() ? nullptr : Find(AFamily, style->Parent);
  }
  return {};
}

std::optional<double> TOdsStyleReader::GetColWidthCm(std::string_view AName) const {
  std::string_view width = Property(ofColumn, AName, ogColumn, "column-width");
  if (width.empty()) width = Property(ofColumn, AName, ogColumn, "width");
  return width.empty() ? std::nullopt : std::optional(OdsParseLengthCm(width));
}

std::optional<double> TOdsStyleReader::GetRowHeightCm(std::string_view AName) const {
  const std::string_view height = Property(ofRow, AName, ogRow, "row-height");
  return height.empty() ? std::nullopt : std::optional(OdsParseLengthCm(height));
}

namespace {

/// A size that was read, or the exact one behind a mark while a file has the same for both.
template <class TToSize, class TToCm>
TOdsStyleReader::TLineSize SizeOfLine(double ACm, std::string_view AMark, TToSize AToSize, TToCm AToCm) {
  double exact = 0;
  if (AMark == kOdsDefaultSizeMark) return {AToSize(ACm), true};
  if (!TryParseFileNumber(AMark, exact) || OdsParseLengthCm(AToCm(exact)) != ACm) return {AToSize(ACm), false};
  return {exact, false};
}

}  // namespace

std::optional<TOdsStyleReader::TLineSize> TOdsStyleReader::GetColWidth(std::string_view AName) const {
  const auto width = GetColWidthCm(AName);
  if (!width) return std::nullopt;
  return SizeOfLine(*width, Property(ofColumn, AName, ogColumn, "exact-width"), OdsCmToColChars, OdsColCharsToCm);
}

std::optional<TOdsStyleReader::TLineSize> TOdsStyleReader::GetRowHeight(std::string_view AName) const {
  const auto height = GetRowHeightCm(AName);
  if (!height || *height <= 0) return std::nullopt;
  return SizeOfLine(*height, Property(ofRow, AName, ogRow, "exact-height"), OdsCmToPoints, OdsPointsToCm);
}

std::optional<TOdsGraphicStyle> TOdsStyleReader::TryGetGraphicStyle(std::string_view AName, TOdsFamily AFamily) const {
  if (!Has(AFamily, AName)) return std::nullopt;
  const auto property = [&](std::string_view AProperty) { return Property(AFamily, AName, ogGraphic, AProperty); };
  TOdsGraphicStyle style;
  style.HasFill = property("fill") != "none";
  style.HasStroke = property("stroke") != "none";
  style.FillColor = OdsColorFromHex(property("fill-color"));
  style.StrokeColor = OdsColorFromHex(property("stroke-color"));
  style.StrokeWidthCm = OdsParseLengthCm(property("stroke-width"));
  return style;
}

TText TOdsStyleReader::GetNumberFormat(std::string_view AName) const {
  const auto found = FNumberStyles.find(AName);
  if (found == FNumberStyles.end()) return GeneralFormatCode();
  if (!found->second.ExactCode.empty()) return TText(found->second.ExactCode);
  std::vector<TOdsConditionalCode> sections;
  for (const TCondition& condition : found->second.Conditions) {
    const auto applied = FNumberStyles.find(condition.DataStyle);
    if (applied != FNumberStyles.end()) sections.push_back({condition.Text, applied->second.Code});
  }
  const std::u16string code = OdsJoinConditionalCodes(found->second.Code, found->second.IsText, sections);
  return code.empty() ? GeneralFormatCode() : TText(code);
}

// ---- cell formats

const TCellFormat& TOdsStyleReader::GetCellFormat(std::string_view AName) {
  auto found = Styles(ofCell).find(AName);
  if (found == Styles(ofCell).end()) found = Styles(ofCell).find(kDefaultStyle);
  if (found != Styles(ofCell).end()) return Resolve(found->second);
  if (!FCellDefaults.Format) {
    FCellDefaults.Format.emplace();
    Apply(FCellDefaults, *FCellDefaults.Format);
  }
  return *FCellDefaults.Format;
}

/// Styles inherit before they apply their own. One that inherits from itself ends the chain there.
const TCellFormat& TOdsStyleReader::Resolve(TStyle& AStyle) {
  std::vector<TStyle*> chain;
  TStyle* style = &AStyle;
  while (style && !style->Format && !style->IsResolving) {
    style->IsResolving = true;
    chain.push_back(style);
    const std::string_view parent = style->Parent.empty() ? kDefaultStyle : std::string_view(style->Parent);
    const auto found = Styles(ofCell).find(parent);
    style = found == Styles(ofCell).end() ? nullptr : &found->second;
  }
  TCellFormat format;
  if (style && style->Format) {
    format = *style->Format;
  } else {
    Apply(FCellDefaults, format);
  }
  for (auto next = chain.rbegin(); next != chain.rend(); ++next) {
    Apply(**next, format);
    (*next)->Format = format;
    (*next)->IsResolving = false;
  }
  return *AStyle.Format;
}

void TOdsStyleReader::Apply(const TStyle& AStyle, TCellFormat& AFormat) const {
  ApplyFont(AStyle.Group(ogText), AFormat.Font);
  ApplyParagraph(AStyle.Group(ogParagraph), AFormat.Alignment);
  ApplyCell(AStyle.Group(ogCell), AFormat);
  ApplyExactCell(AStyle.Group(ogCell), AFormat);
  if (!AStyle.DataStyle.empty()) {
    AFormat.NumberFormat = GetNumberFormat(AStyle.DataStyle);
  } else if (AStyle.Code) {
    AFormat.NumberFormat = TText::FromUtf8(*AStyle.Code);
  }
}

TCellFontInfo TOdsStyleReader::GetTextFont(std::string_view AName, const TCellFontInfo& ABase) const {
  std::vector<const TStyle*> chain;
  for (const TStyle* style = Find(ofText, AName); style && chain.size() < kMaxParents;) {
    chain.push_back(style);
    style = style->Parent.empty() ? nullptr : Find(ofText, style->Parent);
  }
  TCellFontInfo font = ABase;
  for (auto next = chain.rbegin(); next != chain.rend(); ++next) ApplyFont((*next)->Group(ogText), font);
  return font;
}

void TOdsStyleReader::ApplyFontName(const TProperties& AText, TCellFontInfo& AFont) const {
  std::string_view name = AText.Find("font-name");
  std::string_view family = AText.Find("font-family");
  std::string_view generic = AText.Find("font-family-generic");
  if (name.empty() && family.empty()) return;
  const auto face = FFontFaces.find(name);
  if (face != FFontFaces.end()) {
    // The name is only a label of this file; the face tells what the font is called.
    if (family.empty()) family = face->second.Family;
    if (generic.empty()) generic = face->second.Generic;
  }
  if (face != FFontFaces.end() || name.empty()) {
    name = family.substr(0, family.find(','));
    while (!name.empty() && (name.front() == '\'' || name.front() == '"' || name.front() == ' ')) name.remove_prefix(1);
    while (!name.empty() && (name.back() == '\'' || name.back() == '"' || name.back() == ' ')) name.remove_suffix(1);
    if (name.empty()) name = AText.Find("font-name");
  }
  if (name.empty()) return;
  AFont.Name = OdsResolveFontName(Utf8ToUtf16(name), Utf8ToUtf16(family), generic, FFontInstalled);
}

void TOdsStyleReader::ApplyFont(const TProperties& AText, TCellFontInfo& AFont) const {
  if (AText.Items.empty()) return;
  ApplyFontName(AText, AFont);
  for (const TProperty& item : AText.Items) {
    const std::string_view value = item.Value;
    if (item.Name == "font-size") {
      AFont.Size = static_cast<float>(FontSizePoints(value, static_cast<double>(AFont.Size)));
    } else if (item.Name == "font-weight") {
      AFont.Bold = IsBoldWeight(value);
    } else if (item.Name == "font-style") {
      AFont.Italic = value == "italic" || value == "oblique";
    } else if (item.Name == "color") {
      if (const auto color = OdsColorFromHex(value)) AFont.Color = TColorRef::FromARGB(*color);
    } else if (item.Name == "text-underline-style") {
      AFont.Underline = value == "none" ? usNone : AText.Find("text-underline-type") == "double" ? usDouble : usSingle;
    } else if (item.Name == "text-line-through-style") {
      AFont.Strikethrough = value != "none";
    } else if (item.Name == "text-position") {
      AFont.Script = ScriptOf(value);
    }
  }
  ApplyExactFont(AText, AFont);
}

/// Whether a colour is what a standard attribute says.
bool TOdsStyleReader::IsColor(const TColorRef& AColor, std::string_view AText) const {
  const auto color = OdsColorFromHex(AText);
  return color && ((ResolveColor(AColor, FTheme) ^ *color) & 0xFFFFFFu) == 0;
}

void TOdsStyleReader::ApplyExactFont(const TProperties& AText, TCellFontInfo& AFont) const {
  constexpr double kMostRounding = 0.051;  // of a size with one decimal
  double size = 0;
  if (TryParseFileNumber(AText.Find("exact-size"), size) && !AText.Find("font-size").empty() &&
      std::fabs(size - static_cast<double>(AFont.Size)) < kMostRounding) {
    AFont.Size = static_cast<float>(size);
  }
  const auto color = OdsParseColorMark(AText.Find("exact-color"));
  if (color && IsColor(*color, AText.Find("color"))) AFont.Color = *color;
}

void TOdsStyleReader::ApplyExactCell(const TProperties& ACell, TCellFormat& AFormat) const {
  struct TSide {
    std::string_view Mark;
    std::string_view Standard;
    TBorderSide TCellBorderInfo::*Side;
  };
  static constexpr TSide kSides[] = {{"exact-left", "border-left", &TCellBorderInfo::Left},
                                     {"exact-right", "border-right", &TCellBorderInfo::Right},
                                     {"exact-top", "border-top", &TCellBorderInfo::Top},
                                     {"exact-bottom", "border-bottom", &TCellBorderInfo::Bottom},
                                     {"exact-diagonal", "diagonal-bl-tr", &TCellBorderInfo::Diagonal},
                                     {"exact-diagonal", "diagonal-tl-br", &TCellBorderInfo::Diagonal}};
  for (const TSide& side : kSides) {
    const auto mark = OdsParseBorderMark(ACell.Find(side.Mark));
    if (mark && OdsBorderText(mark->Style, ResolveColor(mark->Color, FTheme)) == ACell.Find(side.Standard))
      AFormat.Border.*side.Side = *mark;
  }
  const std::string_view background = ACell.Find("background-color");
  if (const auto fill = OdsParseFillMark(ACell.Find("exact-fill"))) {
    const bool agrees = fill->PatternType == 0 ? background.empty() : IsColor(fill->ForegroundColor, background);
    if (agrees) AFormat.Fill = *fill;
  }
  int32_t rotation = 0;
  if (TryParseInt32(ACell.Find("exact-rotation"), rotation) &&
      OdsRotationAngle(rotation) == RotationOf(ACell.Find("rotation-angle"))) {
    AFormat.Alignment.TextRotation = rotation;
  }
}

void TOdsStyleReader::ApplyParagraph(const TProperties& AParagraph, TCellAlignmentInfo& AAlignment) {
  for (const TProperty& item : AParagraph.Items) {
    const std::string_view value = item.Value;
    if (item.Name == "text-align") {
      AAlignment.Horizontal = HorizontalOf(value);
    } else if (item.Name == "writing-mode" || item.Name == "direction") {
      AAlignment.ReadingOrder = ReadingOrderOf(value);
    } else if (item.Name == "margin-left") {
      AAlignment.MarginLeftCm = OdsParseLengthCm(value);
    } else if (item.Name == "margin-right") {
      AAlignment.MarginRightCm = OdsParseLengthCm(value);
    }
  }
  constexpr int32_t kMostIndent = 1'000'000;
  int32_t indent = 0;
  if (!TryParseInt32(AParagraph.Find("exact-indent"), indent) || indent <= 0 || indent > kMostIndent) return;
  if (std::fabs(indent * kOdsIndentCm - AAlignment.MarginLeftCm) > kLengthRounding) return;
  AAlignment.Indent = indent;
  AAlignment.MarginLeftCm = 0;
}

void TOdsStyleReader::ApplyCell(const TProperties& ACell, TCellFormat& AFormat) {
  TCellAlignmentInfo& alignment = AFormat.Alignment;
  TCellBorderInfo& border = AFormat.Border;
  const auto length = [&](std::string_view AName, double& AResult) {
    if (const std::string_view value = ACell.Find(AName); !value.empty()) AResult = OdsParseLengthCm(value);
  };
  const auto side = [&](std::string_view AName, TBorderSide& AResult) {
    if (const std::string_view value = ACell.Find(AName); !value.empty()) AResult = OdsParseBorderSide(value);
  };
  if (const std::string_view all = ACell.Find("border"); !all.empty())
    border.Left = border.Top = border.Right = border.Bottom = OdsParseBorderSide(all);
  side("border-left", border.Left);
  side("border-right", border.Right);
  side("border-top", border.Top);
  side("border-bottom", border.Bottom);
  for (const std::string_view name : {"diagonal-bl-tr", "diagonal-tl-br"}) {
    const std::string_view value = ACell.Find(name);
    if (value.empty()) continue;
    const TBorderSide line = OdsParseBorderSide(value);
    (name == "diagonal-bl-tr" ? border.DiagonalUp : border.DiagonalDown) = line.Style != blsNone;
    if (line.Style != blsNone) border.Diagonal = line;
  }
  length("padding", alignment.PaddingLeftCm);
  length("padding", alignment.PaddingRightCm);
  length("padding-left", alignment.PaddingLeftCm);
  length("padding-right", alignment.PaddingRightCm);
  for (const TProperty& item : ACell.Items) {
    const std::string_view value = item.Value;
    if (item.Name == "background-color") {
      const auto color = OdsColorFromHex(value);
      AFormat.Fill = color ? TCellFillInfo::Solid(TColorRef::FromARGB(*color)) : TCellFillInfo::None();
    } else if (item.Name == "vertical-align") {
      alignment.Vertical = value == "middle" ? vaCenter : value == "top" ? vaTop : vaBottom;
    } else if (item.Name == "wrap-option") {
      alignment.WrapText = value == "wrap";
    } else if (item.Name == "shrink-to-fit") {
      alignment.ShrinkToFit = value == "true";
    } else if (item.Name == "rotation-angle") {
      alignment.TextRotation = RotationOf(value);
    } else if (item.Name == "direction" && value == "ttb") {
      alignment.TextRotation = kOdsStackedRotation;
    } else if (item.Name == "repeat-content" && value == "true") {
      alignment.Horizontal = haFill;
    } else if (item.Name == "text-align-source" && value == "value-type") {
      alignment.Horizontal = haGeneral;
    } else if (item.Name == "writing-mode") {
      alignment.ReadingOrder = ReadingOrderOf(value);
    } else if (item.Name == "cell-protect") {
      AFormat.Locked = value.find("protected") != value.npos;
      AFormat.Hidden = value.find("hidden") != value.npos;
    }
  }
}

}  // namespace tessarine::detail
