#include <tessarine/io/xlsx/detail/XlsxStylesWriter.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/io/xlsx/detail/XlsxMarkupWriter.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

constexpr size_t kFirstCustomFormat = 164;
constexpr int32_t kLastBuiltInFormat = 49;

constexpr std::string_view kPatternWords[] = {
    "none",      "solid",           "gray125",       "darkGray",  "mediumGray",
    "lightGray", "lightHorizontal", "lightVertical", "lightDown", "lightUp",
};
constexpr std::string_view kLineWords[] = {"", "thin", "medium", "thick", "dashed", "dotted", "double", "hair"};
constexpr std::string_view kHorizontalWords[] = {"", "left", "center", "right", "fill", "justify"};
constexpr std::string_view kVerticalWords[] = {"top", "center", "bottom"};

/// The word of an enumeration's value; that of its first one for what is out of range.
template <size_t Count>
std::string_view WordOf(const std::string_view (&AWords)[Count], int32_t AValue) {
  return AWords[AValue >= 0 && static_cast<size_t>(AValue) < Count ? static_cast<size_t>(AValue) : 0];
}

// ---- keys

class TKey {
 public:
  TKey& Add(int64_t AValue) {
    AppendDecimal(AValue, FText);
    FText += '|';
    return *this;
  }
  TKey& Add(double AValue, int ADigits) {
    char text[400];
    const auto [end, error] =
        std::to_chars(std::begin(text), std::end(text), AValue, std::chars_format::fixed, ADigits);
    if (error == std::errc()) FText.append(text, end);
    FText += '|';
    return *this;
  }
  TKey& Add(std::u16string_view AText) {
    AppendUtf16AsUtf8(AText, FText);
    FText += '|';
    return *this;
  }
  const std::string& Text() const { return FText; }

 private:
  std::string FText;
};

std::string KeyOf(const TCellFontInfo& AFont) {
  const TColorRef& color = AFont.Color;
  TKey key;
  key.Add(AFont.Name.View()).Add(static_cast<double>(AFont.Size), 2).Add(AFont.Bold).Add(AFont.Italic);
  key.Add(static_cast<int64_t>(AFont.Underline)).Add(AFont.Strikethrough);
  key.Add(color.IsThemeColor()).Add(color.ThemeIndex).Add(color.Tint, 4);
  if (!color.IsThemeColor()) key.Add(int64_t{color.ARGB});
  return key.Text();
}

std::string KeyOf(const TCellFillInfo& AFill) {
  const TColorRef& color = AFill.ForegroundColor;
  TKey key;
  key.Add(AFill.PatternType).Add(AFill.GradientAngle).Add(color.IsThemeColor()).Add(color.ThemeIndex);
  key.Add(color.Tint, 4).Add(int64_t{color.ARGB}).Add(int64_t{AFill.BackgroundColor.ARGB});
  return key.Text();
}

std::string KeyOf(const TCellBorderInfo& ABorder) {
  TKey key;
  for (const TBorderSide* side : {&ABorder.Left, &ABorder.Top, &ABorder.Right, &ABorder.Bottom, &ABorder.Diagonal})
    key.Add(static_cast<int64_t>(side->Style));
  return key.Add(ABorder.DiagonalUp).Add(ABorder.DiagonalDown).Text();
}

// ---- elements

void AppendColor(std::string_view AName, const TColorRef& AColor, std::string& AOut) {
  (AOut += '<') += AName;
  if (AColor.IsThemeColor()) {
    AppendXlsxInt("theme", AColor.ThemeIndex, AOut);
    if (AColor.Tint != 0 && std::isfinite(AColor.Tint)) {
      AOut += " tint=\"";
      AppendShortDecimal(AColor.Tint, 4, AOut);
      AOut += '"';
    }
  } else {
    AOut += " rgb=\"";
    AppendXlsxRgb(AColor.ARGB, AOut);
    AOut += '"';
  }
  AOut += "/>";
}

void AppendFont(const TCellFontInfo& AFont, std::string& AOut) {
  AOut += "<font>";
  if (AFont.Bold) AOut += "<b/>";
  if (AFont.Italic) AOut += "<i/>";
  if (AFont.Strikethrough) AOut += "<strike/>";
  if (AFont.Underline == usDouble) AOut += "<u val=\"double\"/>";
  if (AFont.Underline == usSingle) AOut += "<u/>";
  if (AFont.Size > 0 && std::isfinite(AFont.Size)) {
    AOut += "<sz val=\"";
    AppendShortDecimal(static_cast<double>(AFont.Size), 2, AOut);
    AOut += "\"/>";
  }
  AppendColor("color", AFont.Color, AOut);
  AOut += "<name";
  AppendXlsxTextAttr("val", AFont.Name.IsEmpty() ? DefaultFontName().View() : AFont.Name.View(), AOut);
  AOut += "/></font>";
}

void AppendGradient(const TCellFillInfo& AFill, std::string& AOut) {
  AOut += "<gradientFill";
  AppendXlsxInt("degree", AFill.GradientAngle, AOut);
  AOut += "><stop position=\"0\">";
  AppendColor("color", AFill.ForegroundColor, AOut);
  AOut += "</stop><stop position=\"1\">";
  AppendColor("color", AFill.BackgroundColor, AOut);
  AOut += "</stop></gradientFill>";
}

void AppendPattern(std::string_view AWord, std::string& AOut) {
  AOut += "<patternFill";
  AppendXlsxWord("patternType", AWord, AOut);
}

void AppendFill(const TCellFillInfo& AFill, std::string& AOut) {
  AOut += "<fill>";
  if (AFill.IsGradient()) {
    AppendGradient(AFill, AOut);
  } else {
    const std::string_view word = WordOf(kPatternWords, AFill.PatternType);
    AppendPattern(word, AOut);
    if (word == kPatternWords[0]) {
      AOut += "/>";
    } else {
      AOut += '>';
      AppendColor("fgColor", AFill.ForegroundColor, AOut);
      AppendColor("bgColor", AFill.BackgroundColor, AOut);
      AOut += "</patternFill>";
    }
  }
  AOut += "</fill>";
}

void AppendSide(std::string_view AName, const TBorderSide& ASide, std::string& AOut) {
  (AOut += '<') += AName;
  const std::string_view word = WordOf(kLineWords, static_cast<int32_t>(ASide.Style));
  if (word.empty()) {
    AOut += "/>";
    return;
  }
  AppendXlsxWord("style", word, AOut);
  AOut += '>';
  AppendColor("color", ASide.Color, AOut);
  ((AOut += "</") += AName) += '>';
}

void AppendBorder(const TCellBorderInfo& ABorder, std::string& AOut) {
  AOut += "<border";
  AppendXlsxFlag("diagonalUp", ABorder.DiagonalUp, AOut);
  AppendXlsxFlag("diagonalDown", ABorder.DiagonalDown, AOut);
  AOut += '>';
  AppendSide("left", ABorder.Left, AOut);
  AppendSide("right", ABorder.Right, AOut);
  AppendSide("top", ABorder.Top, AOut);
  AppendSide("bottom", ABorder.Bottom, AOut);
  AppendSide("diagonal", ABorder.Diagonal, AOut);
  AOut += "</border>";
}

void AppendTable(std::string_view AName, size_t ACount, std::string_view AEntries, std::string& AOut) {
  (AOut += '<') += AName;
  AppendXlsxInt("count", static_cast<int64_t>(ACount), AOut);
  (AOut += '>') += AEntries;
  ((AOut += "</") += AName) += '>';
}

constexpr int32_t kStackedText = 255;

/// An angle in the form of the file: 0 to 90 up, 91 to 180 for 1 to 90 down. Upside down has no form there: the line
/// of the text stays.
int32_t LegalRotation(int32_t AAngle) {
  if (AAngle > 180 && AAngle < 360 && AAngle != kStackedText) AAngle -= AAngle < 270 ? 180 : 360;
  return AAngle < 0 && AAngle >= -90 ? 90 - AAngle : AAngle;
}

}  // namespace

std::string TXlsxStylesWriter::Part() {
  TCellFillInfo gray;
  gray.PatternType = 2;
  for (const TCellFillInfo& fixed : {TCellFillInfo::None(), gray}) {
    FFills.Place(KeyOf(fixed), [&](std::string& AOut) {
      AOut += "<fill>";
      AppendPattern(WordOf(kPatternWords, fixed.PatternType), AOut);
      AOut += "/></fill>";
    });
  }
  for (const TCellFormat& format : FStyleSheet.CellXfs()) AppendXf(format);
  size_t count = FStyleSheet.CellXfs().size();
  if (count == 0 || FHasSpare) {
    AppendXf(TCellFormat::Default());
    ++count;
  }
  std::string out(kXmlHead);
  ((out += "<styleSheet xmlns=\"") += kXlsxMainNamespace) += "\">";
  if (FCustomFormats > 0) AppendTable("numFmts", FCustomFormats, FNumberFormatXml, out);
  AppendTable("fonts", FFonts.Count, FFonts.Xml, out);
  AppendTable("fills", FFills.Count, FFills.Xml, out);
  AppendTable("borders", FBorders.Count, FBorders.Xml, out);
  AppendTable("cellStyleXfs", 1, "<xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" borderId=\"0\"/>", out);
  AppendTable("cellXfs", count, FXfs, out);
  out += "</styleSheet>";
  return out;
}

size_t TXlsxStylesWriter::NumberFormatId(const TText& ACode) {
  const std::u16string_view code = ACode;
  if (code.empty() || EqualAsciiNoCase(code, u"General")) return 0;
  const auto [found, isNew] = FNumberFormats.try_emplace(std::u16string(code), 0);
  if (!isNew) return found->second;
  for (int32_t id = 1; id <= kLastBuiltInFormat; ++id) {
    if (EqualAsciiNoCase(BuiltInExcelNumberFormat(id), code)) return found->second = static_cast<size_t>(id);
  }
  found->second = kFirstCustomFormat + FCustomFormats++;
  FNumberFormatXml += "<numFmt";
  AppendXlsxInt("numFmtId", static_cast<int64_t>(found->second), FNumberFormatXml);
  AppendXlsxTextAttr("formatCode", code, FNumberFormatXml);
  FNumberFormatXml += "/>";
  return found->second;
}

size_t TXlsxStylesWriter::FontId(const TCellFontInfo& AFont) {
  return FFonts.Place(KeyOf(AFont), [&](std::string& AOut) { AppendFont(AFont, AOut); });
}

size_t TXlsxStylesWriter::FillId(const TCellFillInfo& AFill) {
  return FFills.Place(KeyOf(AFill), [&](std::string& AOut) { AppendFill(AFill, AOut); });
}

size_t TXlsxStylesWriter::BorderId(const TCellBorderInfo& ABorder) {
  return FBorders.Place(KeyOf(ABorder), [&](std::string& AOut) { AppendBorder(ABorder, AOut); });
}

void TXlsxStylesWriter::AppendXf(const TCellFormat& AFormat) {
  const struct {
    std::string_view Id;
    std::string_view Apply;
    size_t Value;
  } ids[] = {
      {"numFmtId", "applyNumberFormat", NumberFormatId(AFormat.NumberFormat)},
      {"fontId", "applyFont", FontId(AFormat.Font)},
      {"fillId", "applyFill", FillId(AFormat.Fill)},
      {"borderId", "applyBorder", BorderId(AFormat.Border)},
  };
  FXfs += "<xf";
  for (const auto& id : ids) AppendXlsxInt(id.Id, static_cast<int64_t>(id.Value), FXfs);
  FXfs += " xfId=\"0\"";
  for (const auto& id : ids) AppendXlsxFlag(id.Apply, id.Value != 0, FXfs);
  if (AFormat.Alignment == TCellAlignmentInfo::Default()) {
    FXfs += "/>";
    return;
  }
  FXfs += " applyAlignment=\"1\">";
  AppendAlignment(AFormat.Alignment);
  FXfs += "</xf>";
}

void TXlsxStylesWriter::AppendAlignment(const TCellAlignmentInfo& AAlignment) {
  const int32_t rotation = FIsLiteral ? AAlignment.TextRotation : LegalRotation(AAlignment.TextRotation);
  const int32_t indent = FIsLiteral ? AAlignment.Indent : std::max(AAlignment.Indent, 0);
  const std::string_view horizontal = WordOf(kHorizontalWords, static_cast<int32_t>(AAlignment.Horizontal));
  FXfs += "<alignment";
  if (!horizontal.empty()) AppendXlsxWord("horizontal", horizontal, FXfs);
  AppendXlsxWord("vertical", WordOf(kVerticalWords, static_cast<int32_t>(AAlignment.Vertical)), FXfs);
  AppendXlsxFlag("wrapText", AAlignment.WrapText, FXfs);
  if (indent != 0) AppendXlsxInt("indent", indent, FXfs);
  if (rotation != 0) AppendXlsxInt("textRotation", rotation, FXfs);
  AppendXlsxFlag("shrinkToFit", AAlignment.ShrinkToFit, FXfs);
  if (AAlignment.ReadingOrder != roContext)
    AppendXlsxInt("readingOrder", AAlignment.ReadingOrder == roLTR ? 1 : 2, FXfs);
  FXfs += "/>";
}

}  // namespace tessarine::detail
