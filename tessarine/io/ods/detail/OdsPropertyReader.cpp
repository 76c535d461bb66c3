#include <tessarine/io/ods/detail/OdsPropertyReader.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include <tessarine/core/format/Theme.h>
#include <tessarine/io/ods/detail/OdsExactMarks.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/XmlTree.h>

namespace tessarine::detail {

namespace {

constexpr double kMinFontSize = 1;
constexpr double kMaxFontSize = 409;
constexpr double kLengthRounding = 0.00051;  // of a length with three digits

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
  return std::find(std::begin(kWords), std::end(kWords), AWord) != std::end(kWords) ||
         (AWord.front() >= '0' && AWord.front() <= '9') || AWord.front() == '.';
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

std::string_view TOdsProperties::Find(std::string_view AName) const {
  for (const TOdsProperties::TItem& item : Items)
    if (item.Name == AName) return item.Value;
  return {};
}

// ---- fonts

void TOdsPropertyReader::AddFontFace(const TXmlNode* ANode) {
  FFontFaces[std::string(XmlAttr(ANode, "name"))] = {std::string(XmlAttr(ANode, "font-family")),
                                                     std::string(XmlAttr(ANode, "font-family-generic"))};
}

void TOdsPropertyReader::ApplyFontName(const TOdsProperties& AText, TCellFontInfo& AFont) const {
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

void TOdsPropertyReader::ApplyFont(const TOdsProperties& AText, TCellFontInfo& AFont) const {
  if (AText.Items.empty()) return;
  ApplyFontName(AText, AFont);
  for (const TOdsProperties::TItem& item : AText.Items) {
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
bool TOdsPropertyReader::IsColor(const TColorRef& AColor, std::string_view AText) const {
  const auto color = OdsColorFromHex(AText);
  return color && ((ResolveColor(AColor, FTheme) ^ *color) & 0xFFFFFFu) == 0;
}

void TOdsPropertyReader::ApplyExactFont(const TOdsProperties& AText, TCellFontInfo& AFont) const {
  constexpr double kMostRounding = 0.051;  // of a size with one decimal
  double size = 0;
  if (TryParseFileNumber(AText.Find("exact-size"), size) && !AText.Find("font-size").empty() &&
      std::fabs(size - static_cast<double>(AFont.Size)) < kMostRounding) {
    AFont.Size = static_cast<float>(size);
  }
  const auto color = OdsParseColorMark(AText.Find("exact-color"));
  if (color && IsColor(*color, AText.Find("color"))) AFont.Color = *color;
}

// ---- paragraphs

void TOdsPropertyReader::ApplyParagraph(const TOdsProperties& AParagraph, TCellAlignmentInfo& AAlignment) {
  for (const TOdsProperties::TItem& item : AParagraph.Items) {
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

// ---- cells

void TOdsPropertyReader::ApplyCell(const TOdsProperties& ACell, TCellFormat& AFormat) const {
  ApplyStandardCell(ACell, AFormat);
  ApplyExactCell(ACell, AFormat);
}

void TOdsPropertyReader::ApplyExactCell(const TOdsProperties& ACell, TCellFormat& AFormat) const {
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

void TOdsPropertyReader::ApplyStandardCell(const TOdsProperties& ACell, TCellFormat& AFormat) {
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
  for (const TOdsProperties::TItem& item : ACell.Items) {
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
