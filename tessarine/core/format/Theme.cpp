#include <tessarine/core/format/Theme.h>

#include <algorithm>
#include <cmath>

#include <tessarine/platform/Numbers.h>

namespace tessarine {

namespace {

constexpr double kSameChannel = 1e-12;

struct THls {
  double Hue;  // 0 to 1
  double Lightness;
  double Saturation;
};

THls HlsFromRgb(double ARed, double AGreen, double ABlue) {
  const double most = std::max({ARed, AGreen, ABlue});
  const double least = std::min({ARed, AGreen, ABlue});
  const double delta = most - least;
  THls hls{0, (most + least) / 2, 0};
  if (std::abs(delta) <= kSameChannel) return hls;

  hls.Saturation = hls.Lightness <= 0.5 ? delta / (most + least) : delta / (2 - most - least);
  if (std::abs(most - ARed) <= kSameChannel) {
    hls.Hue = (AGreen - ABlue) / delta + (ABlue > AGreen ? 6 : 0);
  } else if (std::abs(most - AGreen) <= kSameChannel) {
    hls.Hue = (ABlue - ARed) / delta + 2;
  } else {
    hls.Hue = (ARed - AGreen) / delta + 4;
  }
  hls.Hue /= 6;
  return hls;
}

double ChannelOfHue(double AP, double AQ, double AHue) {
  if (AHue < 0) AHue += 1;
  if (AHue >= 1) AHue -= 1;
  if (AHue < 1.0 / 6) return AP + (AQ - AP) * 6 * AHue;
  if (AHue < 1.0 / 2) return AQ;
  if (AHue < 2.0 / 3) return AP + (AQ - AP) * (2.0 / 3 - AHue) * 6;
  return AP;
}

uint32_t ChannelByte(double AValue) { return static_cast<uint32_t>(std::clamp(RoundToEven(AValue * 255), 0.0, 255.0)); }

uint32_t RgbFromHls(const THls& AHls) {
  const double lightness = AHls.Lightness;
  const double saturation = AHls.Saturation;
  if (std::abs(saturation) <= kSameChannel) return ChannelByte(lightness) * 0x010101u;
  const double q = lightness <= 0.5 ? lightness * (1 + saturation) : lightness + saturation - lightness * saturation;
  const double p = 2 * lightness - q;
  return (ChannelByte(ChannelOfHue(p, q, AHls.Hue + 1.0 / 3)) << 16) |
         (ChannelByte(ChannelOfHue(p, q, AHls.Hue)) << 8) | ChannelByte(ChannelOfHue(p, q, AHls.Hue - 1.0 / 3));
}

/// Light stands before dark in files, dark before light in the list.
int32_t ListSlot(int32_t AFileSlot) { return AFileSlot >= 0 && AFileSlot <= 3 ? AFileSlot ^ 1 : AFileSlot; }

}  // namespace

void TTessarineTheme::SetDefaultOfficeTheme() {
  static const TText majorFont = TText::Immortal(u"Calibri Light");
  FMajorFont = majorFont;
  FMinorFont = detail::DefaultFontName();
  FColors = {0xFF000000, 0xFFFFFFFF, 0xFF44546A, 0xFFE7E6E6, 0xFF4472C4, 0xFFED7D31,
             0xFFA5A5A5, 0xFFFFC000, 0xFF5B9BD5, 0xFF70AD47, 0xFF0563C1, 0xFF954F72};
}

uint32_t TTessarineTheme::ApplyTint(uint32_t AColor, double ATint) {
  if (!(std::abs(ATint) > 1e-12)) return AColor;
  THls hls = HlsFromRgb(((AColor >> 16) & 0xFF) / 255.0, ((AColor >> 8) & 0xFF) / 255.0, (AColor & 0xFF) / 255.0);
  const double lightness = ATint < 0 ? hls.Lightness * (1 + ATint) : hls.Lightness * (1 - ATint) + ATint;
  hls.Lightness = lightness > 0 ? std::min(lightness, 1.0) : 0;  // also what an endless tint makes of black
  return (AColor & 0xFF000000u) | RgbFromHls(hls);
}

uint32_t TTessarineTheme::ResolveThemeColor(int32_t AIndex, double ATint) const {
  const int32_t slot = ListSlot(AIndex);
  const bool known = slot >= 0 && static_cast<size_t>(slot) < FColors.size();
  return ApplyTint(known ? FColors[static_cast<size_t>(slot)] : kOpaqueBlack, ATint);
}

uint32_t ResolveColor(const TColorRef& AColor, const TTessarineTheme* ATheme) {
  if (!ATheme || !AColor.IsThemeColor()) return AColor.ARGB;
  return ATheme->ResolveThemeColor(AColor.ThemeIndex, AColor.Tint);
}

}  // namespace tessarine
