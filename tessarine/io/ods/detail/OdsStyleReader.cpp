#include <tessarine/io/ods/detail/OdsStyleReader.h>

#include <algorithm>
#include <iterator>
#include <utility>

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

// Formats are compared with one another, so none must be long. Other programs take 255 units and four sections.
constexpr size_t kMaxSections = 8;
constexpr size_t kMaxCodeUnits = 8192;

/// The index of a name in a table; its size for an unknown one.
template <size_t TCount>
size_t IndexIn(const std::string_view (&ATable)[TCount], std::string_view AName) {
  return static_cast<size_t>(std::find(std::begin(ATable), std::end(ATable), AName) - std::begin(ATable));
}

}  // namespace

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
      FProperties.AddFontFace(tree.Root());
    }
  }
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
  TText& joined = found->second.Joined;
  if (joined.IsEmpty()) joined = JoinedCode(found->second);
  return joined;
}

TText TOdsStyleReader::JoinedCode(const TNumberStyle& AStyle) const {
  std::u16string code = AStyle.ExactCode;
  if (code.empty()) {
    std::vector<TOdsConditionalCode> sections;
    for (const TCondition& condition : AStyle.Conditions) {
      const auto applied = FNumberStyles.find(condition.DataStyle);
      if (applied != FNumberStyles.end()) sections.push_back({condition.Text, applied->second.Code});
      if (sections.size() == kMaxSections) break;
    }
    code = OdsJoinConditionalCodes(AStyle.Code, AStyle.IsText, sections);
  }
  return code.empty() || code.size() > kMaxCodeUnits ? GeneralFormatCode() : TText(code);
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
  FProperties.ApplyFont(AStyle.Group(ogText), AFormat.Font);
  FProperties.ApplyParagraph(AStyle.Group(ogParagraph), AFormat.Alignment);
  FProperties.ApplyCell(AStyle.Group(ogCell), AFormat);
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
  for (auto next = chain.rbegin(); next != chain.rend(); ++next) FProperties.ApplyFont((*next)->Group(ogText), font);
  return font;
}

}  // namespace tessarine::detail
