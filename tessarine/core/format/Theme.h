#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/format/CellFormat.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

/// The colours and fonts that a document's theme offers. A new theme is the default office theme of twelve colours.
class TESSARINE_API TTessarineTheme {
 public:
  TTessarineTheme() { SetDefaultOfficeTheme(); }

  void SetDefaultOfficeTheme();

  /// Colours (ARGB) in list order: dark 1, light 1, dark 2, light 2, accents 1 to 6, link, followed link.
  const std::vector<uint32_t>& Colors() const { return FColors; }
  void ClearColors() { FColors.clear(); }
  void AddColor(uint32_t AValue) { FColors.push_back(AValue); }

  const TText& MajorFont() const { return FMajorFont; }
  void SetMajorFont(TText AName) { FMajorFont = std::move(AName); }
  const TText& MinorFont() const { return FMinorFont; }
  void SetMinorFont(TText AName) { FMinorFont = std::move(AName); }

  /// Shifts the lightness of AColor: a tint below 0 darkens, above 0 lightens; alpha stays.
  static uint32_t ApplyTint(uint32_t AColor, double ATint);

  /// The colour of a theme slot in file order, where light comes before dark (slots 0/1 and 2/3 change places).
  /// A slot that does not exist reads opaque black; the tint is applied to that too.
  uint32_t ResolveThemeColor(int32_t AIndex, double ATint) const;

  friend bool operator==(const TTessarineTheme&, const TTessarineTheme&) = default;

 private:
  std::vector<uint32_t> FColors;
  TText FMajorFont;
  TText FMinorFont;
};

/// The ARGB value of a colour. Without a theme (null) a theme colour gives its ARGB field as well.
TESSARINE_API uint32_t ResolveColor(const TColorRef& AColor, const TTessarineTheme* ATheme);

}  // namespace tessarine
