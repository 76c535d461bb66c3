#include <hosts/cli/Phrase.h>

#include <utility>

#include <tessarine/core/format/CellFormat.h>
#include <tessarine/platform/JsonWriter.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::cli {

namespace {

constexpr const char* kHorizontal[] = {"", "left", "center", "right", "fill", "justify"};
constexpr const char* kVertical[] = {"top", "middle", ""};
constexpr const char* kReading[] = {"", "left to right", "right to left"};
constexpr const char* kUnderlines[] = {"", "underlined", "underlined twice"};
constexpr const char* kScripts[] = {"", "superscript", "subscript"};
constexpr const char* kLines[] = {"", "thin", "medium", "thick", "dashed", "dotted", "double", "hair"};

template <class TValue, size_t kCount>
const char* NameOf(const char* const (&ANames)[kCount], TValue AValue) {
  return static_cast<size_t>(AValue) < kCount ? ANames[static_cast<size_t>(AValue)] : "";
}

void DescribeFont(const TCellFontInfo& AFont, TPhrase& APhrase) {
  const TCellFontInfo usual;
  if (AFont.Name != usual.Name) APhrase.Put("font", AFont.Name);
  APhrase.Number("size", static_cast<double>(AFont.Size), static_cast<double>(usual.Size));
  APhrase.Word(AFont.Bold, "bold").Word(AFont.Italic, "italic").Word(AFont.Strikethrough, "struck");
  const std::string_view words[] = {NameOf(kUnderlines, AFont.Underline), NameOf(kScripts, AFont.Script)};
  for (const std::string_view word : words) APhrase.Word(!word.empty(), word);
  if (AFont.Color != usual.Color) APhrase.Put("color", ColorText(AFont.Color));
}

void DescribeFill(const TCellFillInfo& AFill, TPhrase& APhrase) {
  const TCellFillInfo none;
  if (AFill == none) return;
  APhrase.Put("fill", ColorText(AFill.ForegroundColor));
  if (AFill.PatternType != 1) APhrase.Put("pattern", AFill.IsGradient() ? "gradient" : NumberText(AFill.PatternType));
  if (AFill.BackgroundColor != none.BackgroundColor) APhrase.Put("background", ColorText(AFill.BackgroundColor));
  APhrase.Number("angle", AFill.GradientAngle, none.GradientAngle);
}

void DescribeBorder(const TCellBorderInfo& ABorder, TPhrase& APhrase) {
  const std::pair<const char*, const TBorderSide*> sides[] = {{"left", &ABorder.Left},
                                                              {"top", &ABorder.Top},
                                                              {"right", &ABorder.Right},
                                                              {"bottom", &ABorder.Bottom},
                                                              {"diagonal", &ABorder.Diagonal}};
  for (const auto& [name, side] : sides) {
    if (*side == TBorderSide()) continue;
    const bool isBlack = side->Color == TBorderSide().Color;
    const std::string style = side->Style == blsNone ? "none" : NameOf(kLines, side->Style);
    APhrase.Put(std::string(name) + " border", style + (isBlack ? "" : " " + ColorText(side->Color)));
  }
  APhrase.Word(ABorder.DiagonalUp, "diagonal up").Word(ABorder.DiagonalDown, "diagonal down");
}

void DescribeAlignment(const TCellAlignmentInfo& AAlignment, TPhrase& APhrase) {
  const std::string_view words[] = {NameOf(kHorizontal, AAlignment.Horizontal), NameOf(kVertical, AAlignment.Vertical),
                                    NameOf(kReading, AAlignment.ReadingOrder)};
  for (const std::string_view word : words) APhrase.Word(!word.empty(), word);
  APhrase.Word(AAlignment.WrapText, "wrapped").Word(AAlignment.ShrinkToFit, "shrunk to fit");
  APhrase.Number("indent", AAlignment.Indent, 0).Number("rotation", AAlignment.TextRotation, 0);
  APhrase.Number("left margin", AAlignment.MarginLeftCm, 0).Number("right margin", AAlignment.MarginRightCm, 0);
  APhrase.Number("left padding", AAlignment.PaddingLeftCm, 0).Number("right padding", AAlignment.PaddingRightCm, 0);
}

}  // namespace

void TPhrase::Begin() {
  if (!FText.empty()) FText += ", ";
}

TPhrase& TPhrase::Word(bool AApplies, std::string_view AWord) {
  if (!AApplies) return *this;
  Begin();
  FText += AWord;
  return *this;
}

TPhrase& TPhrase::Put(std::string_view AWord, std::string_view AValue) {
  if (AValue.empty()) return *this;
  Begin();
  FText += AWord;
  if (!AWord.empty()) FText += ' ';
  FText += AValue;
  return *this;
}

TPhrase& TPhrase::Number(std::string_view AWord, double AValue, double ADefault) {
  return AValue == ADefault ? *this : Put(AWord, NumberText(AValue));
}

std::string A1Text(const TCellRange& ARange) { return Utf16ToUtf8(ARange.ToA1()); }
std::string A1Text(TCellAddress AAddress) { return Utf16ToUtf8(AAddress.ToA1()); }

std::string RangesText(const std::vector<TCellRange>& ARanges) {
  std::string text;
  for (const TCellRange& range : ARanges) text += (text.empty() ? "" : " ") + A1Text(range);
  return text;
}

std::string NumberText(double AValue) {
  std::string text;
  TJsonWriter(text).Number(AValue);
  return text;
}

std::string ColorText(const TColorRef& AColor) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  if (AColor.IsThemeColor())
    return "theme " + std::to_string(AColor.ThemeIndex) + (AColor.Tint == 0 ? "" : " tint " + NumberText(AColor.Tint));
  std::string text = "#";
  for (int shift = (AColor.ARGB >> 24) == 0xFF ? 20 : 28; shift >= 0; shift -= 4)
    text += kDigits[(AColor.ARGB >> shift) & 15];
  return text + (AColor.Tint == 0 ? "" : " tint " + NumberText(AColor.Tint));
}

std::string FormatText(const TCellFormat& AFormat) {
  TPhrase phrase;
  if (AFormat.NumberFormat != TCellFormat::Default().NumberFormat)
    phrase.Put("number", "\"" + AFormat.NumberFormat.ToUtf8() + "\"");
  DescribeFont(AFormat.Font, phrase);
  DescribeFill(AFormat.Fill, phrase);
  DescribeBorder(AFormat.Border, phrase);
  DescribeAlignment(AFormat.Alignment, phrase);
  phrase.Word(!AFormat.Locked, "unlocked").Word(AFormat.Hidden, "hidden formula");
  return phrase.Text().empty() ? "default" : phrase.Text();
}

}  // namespace tessarine::cli
