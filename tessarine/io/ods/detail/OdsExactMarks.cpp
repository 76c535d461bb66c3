#include <tessarine/io/ods/detail/OdsExactMarks.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <iterator>

#include <tessarine/io/ods/detail/OdsUnits.h>
#include <tessarine/platform/Numbers.h>

namespace tessarine::detail {

namespace {

/// How a line style stands in a file, in the order of the enumeration.
struct TBorderLook {
  const char* Width;
  const char* Word;
};
constexpr TBorderLook kBorderLooks[] = {{"0.026cm", "solid"},  {"0.026cm", "solid"},  {"0.05cm", "solid"},
                                        {"0.1cm", "solid"},    {"0.026cm", "dashed"}, {"0.026cm", "dotted"},
                                        {"0.026cm", "double"}, {"0.013cm", "solid"}};
static_assert(std::size(kBorderLooks) == static_cast<size_t>(blsHair) + 1);

/// Takes the piece in front of the next separator off AText.
std::string_view TakePiece(std::string_view& AText, char ASeparator) {
  const size_t end = std::min(AText.find(ASeparator), AText.size());
  const std::string_view piece = AText.substr(0, end);
  AText.remove_prefix(std::min(end + 1, AText.size()));
  return piece;
}

}  // namespace

int32_t OdsRotationAngle(int32_t ARotation) {
  const int32_t turned = ARotation > 90 && ARotation <= 180 ? 90 - ARotation : ARotation;
  return (turned % 360 + 360) % 360;
}

std::string OdsBorderText(TBorderLineStyle AStyle, uint32_t ARGB) {
  if (AStyle == blsNone) return {};
  const TBorderLook& look = kBorderLooks[static_cast<size_t>(AStyle)];
  char buffer[40];
  std::snprintf(buffer, sizeof buffer, "%s %s #%.6x", look.Width, look.Word, ARGB & 0xFFFFFFu);
  return buffer;
}

std::string OdsColorMark(const TColorRef& AColor) {
  if (!AColor.IsThemeColor()) {
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "#%.8x", AColor.ARGB);
    return buffer;
  }
  std::string mark = "theme:" + std::to_string(AColor.ThemeIndex) + ":";
  AppendFileNumber(std::isfinite(AColor.Tint) ? AColor.Tint : 0, mark);
  return mark;
}

std::optional<TColorRef> OdsParseColorMark(std::string_view AText) {
  if (AText.starts_with('#')) {
    const auto color = AText.size() == 9 ? OdsColorFromHex(AText) : std::nullopt;
    return color ? std::optional(TColorRef::FromARGB(*color)) : std::nullopt;
  }
  if (TakePiece(AText, ':') != "theme") return std::nullopt;
  int32_t index = 0;
  double tint = 0;
  if (!TryParseInt32(TakePiece(AText, ':'), index) || index < 0) return std::nullopt;
  if (!TryParseFileNumber(AText, tint) || std::fabs(tint) > 1) return std::nullopt;
  return TColorRef::FromTheme(index, tint);
}

std::string OdsBorderMark(const TBorderSide& ASide) {
  return std::to_string(static_cast<int>(ASide.Style)) + " " + OdsColorMark(ASide.Color);
}

std::optional<TBorderSide> OdsParseBorderMark(std::string_view AText) {
  int32_t style = 0;
  if (!TryParseInt32(TakePiece(AText, ' '), style)) return std::nullopt;
  const auto color = OdsParseColorMark(AText);
  if (!color || style < 0 || style > static_cast<int32_t>(blsHair)) return std::nullopt;
  return TBorderSide{static_cast<TBorderLineStyle>(style), *color};
}

std::string OdsFillMark(const TCellFillInfo& AFill) {
  return std::to_string(AFill.PatternType) + " " + OdsColorMark(AFill.ForegroundColor) + " " +
         OdsColorMark(AFill.BackgroundColor) + " " + std::to_string(AFill.GradientAngle);
}

std::optional<TCellFillInfo> OdsParseFillMark(std::string_view AText) {
  constexpr int32_t kMostPatterns = 255;
  TCellFillInfo fill;
  if (!TryParseInt32(TakePiece(AText, ' '), fill.PatternType)) return std::nullopt;
  if (fill.PatternType < -1 || fill.PatternType > kMostPatterns) return std::nullopt;
  const auto foreground = OdsParseColorMark(TakePiece(AText, ' '));
  const auto background = OdsParseColorMark(TakePiece(AText, ' '));
  if (!foreground || !background || !TryParseInt32(AText, fill.GradientAngle)) return std::nullopt;
  if (fill.GradientAngle < -3600 || fill.GradientAngle > 3600) return std::nullopt;
  fill.ForegroundColor = *foreground;
  fill.BackgroundColor = *background;
  return fill;
}

}  // namespace tessarine::detail
