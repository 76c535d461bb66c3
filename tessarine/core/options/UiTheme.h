#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include <tessarine/Export.h>
#include <tessarine/core/values/CellValue.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

enum class TTessarineUiThemePreset : uint8_t { utpExcelLight, utpExcelDark, utpTessarineBrand, utpExcelDarkGray };
using enum TTessarineUiThemePreset;

/// The colours of the chrome around and in a grid, 0x00BBGGRR.
struct TUiThemeColors {
  uint32_t SheetBackground = 0;
  uint32_t GridLine = 0;
  uint32_t FreezeLine = 0;
  uint32_t HeaderBackground = 0;
  uint32_t HeaderLine = 0;
  uint32_t HeaderText = 0;
  uint32_t HeaderSelectedBg = 0;
  uint32_t HeaderEntireSelectedBg = 0;
  uint32_t TableHeaderText = 0;
  uint32_t SelectionBorder = 0;
  uint32_t SelectionOverlay = 0;
  uint32_t ActiveCellBorder = 0;
  uint32_t FillHandle = 0;
  uint32_t FillHandleHalo = 0;
  uint32_t CommentMarker = 0;
  uint32_t DrawingSelection = 0;
  uint32_t DrawingHandleFace = 0;
  uint32_t OutlineLine = 0;
  uint32_t GroupButtonFace = 0;
  uint32_t GroupButtonBorder = 0;
  uint32_t AutoFilterIdle = 0;
  uint32_t AutoFilterActive = 0;
  uint32_t AutoFilterBorder = 0;
  uint32_t AutoFilterGlyph = 0;
  uint32_t TabBarBackground = 0;
  uint32_t TabInactive = 0;
  uint32_t TabActive = 0;
  uint32_t TabAccent = 0;
  uint32_t TabText = 0;
  uint32_t TabTextMuted = 0;
  uint32_t TabScrollEnabled = 0;
  uint32_t TabScrollDisabled = 0;
  uint32_t ScrollBarTrack = 0;
  uint32_t ScrollBarThumb = 0;
  uint32_t ScrollBarThumbHot = 0;
  uint32_t ScrollBarThumbPressed = 0;
  uint32_t ScrollBarButton = 0;
  uint32_t ScrollBarArrow = 0;
  uint32_t FormulaBarBackground = 0;
  uint32_t FormulaBarText = 0;
  uint32_t FormulaBarEditBackground = 0;
  uint32_t MiniBarBackground = 0;
  uint32_t MiniBarBorder = 0;
  uint32_t TipBackground = 0;
  uint32_t TipBorder = 0;
  uint32_t TipText = 0;
  uint32_t HostBackground = 0;
  uint32_t EditorBackground = 0;
  uint32_t EditorText = 0;
  uint32_t EditorSelection = 0;
  uint32_t EditorFocusRing = 0;
  uint32_t EditorCaret = 0;
  uint32_t ChartSeries1 = 0;
  uint32_t ChartSeries2 = 0;
  uint32_t ChartSeries3 = 0;
  uint32_t ChartSeries4 = 0;
  uint32_t ChartSeries5 = 0;
  uint32_t ChartSeries6 = 0;
  uint32_t ChartAxis = 0;
  uint32_t ChartGrid = 0;
  uint32_t ChartLabel = 0;
  uint32_t ChartPlotBackground = 0;
  uint32_t ChartPlaceholderBg = 0;
  uint32_t ChartPlaceholderBorder = 0;
  uint32_t ChartSelectionOuter = 0;
  uint32_t ChartSelectionInner = 0;

  friend bool operator==(const TUiThemeColors&, const TUiThemeColors&) = default;
};

/// Widths in pixels and font sizes in points.
struct TUiThemeSizes {
  float SelectionBorderWidth = 2;
  float ActiveCellBorderWidth = 2;
  float FormulaBarFontSize = 9;
  float HeaderFontSize = 9;
  float CodeFontSize = 8;
  float ChartTitleSize = 14;
  float ChartLabelSize = 9;

  friend bool operator==(const TUiThemeSizes&, const TUiThemeSizes&) = default;
};

struct TUiThemeFonts {
  TText FormulaBar{u"Segoe UI"};
  TText Header{u"Segoe UI"};
  TText Code{u"Consolas"};
  TText Chart{u"Calibri"};

  friend bool operator==(const TUiThemeFonts&, const TUiThemeFonts&) = default;
};

/// A colour of the themes: its name, its place and what the four presets set, in the order of the presets.
struct TUiThemeColorRow {
  const char16_t* Name;
  uint32_t TUiThemeColors::*Field;
  std::array<uint32_t, 4> Presets;
};

/// All colours; the one place that knows the presets.
TESSARINE_API std::span<const TUiThemeColorRow> UiThemeColorTable();

/// Colours, sizes and fonts of a host's chrome. Every setter that changes something tells so, once for all changes
/// between BeginUpdate and EndUpdate.
class TESSARINE_API TTessarineUiTheme {
 public:
  /// With the light preset. AOwner is kept for the host, it is never looked at.
  explicit TTessarineUiTheme(void* AOwner = nullptr);

  void* Owner() const { return FOwner; }
  void SetOnChanged(std::function<void(TTessarineUiTheme& ASender)> AHandler) { FOnChanged = std::move(AHandler); }

  void BeginUpdate() { ++FUpdating; }
  /// Tells a change when the last update ends, and also when none was begun.
  void EndUpdate();
  void Changed();

  /// Sets all colours, sizes and fonts.
  void ApplyPreset(TTessarineUiThemePreset APreset);
  TTessarineUiThemePreset Preset() const { return FPreset; }

  const TUiThemeColors& Colors() const { return FColors; }
  const TUiThemeSizes& Sizes() const { return FSizes; }
  const TUiThemeFonts& Fonts() const { return FFonts; }
  int32_t FillHandleSize() const { return FFillHandleSize; }  // pixels
  uint8_t SelectionOverlayAlpha() const { return FSelectionOverlayAlpha; }
  void SetColor(uint32_t TUiThemeColors::*AField, uint32_t AValue) { Set(FColors.*AField, AValue); }
  void SetSingle(float TUiThemeSizes::*AField, float AValue) { Set(FSizes.*AField, AValue); }
  void SetString(TText TUiThemeFonts::*AField, const TText& AValue) { Set(FFonts.*AField, AValue); }
  void SetFillHandleSize(int32_t AValue) { Set(FFillHandleSize, AValue); }
  void SetSelectionOverlayAlpha(uint8_t AValue) { Set(FSelectionOverlayAlpha, AValue); }

  /// The colour of a chart series, six in turn; any index will do.
  uint32_t ChartSeriesColor(int32_t AIndex) const;

  /// Takes a setting of old files that has no field of that name any more: the fonts of the chrome and of the formula
  /// bar; what belonged to panels that are gone is accepted and dropped. False for other names.
  bool ReadLegacyProperty(std::u16string_view AName, const TCellValue& AValue);

  struct TLegacyFont {
    TText Name;
    float Size = 0;
  };
  /// The formula bar's font that ReadLegacyProperty took, once.
  std::optional<TLegacyFont> TakeLegacyFormulaBarFont();

 private:
  template <class TValue>
  void Set(TValue& AField, const TValue& AValue) {
    if (AField == AValue) return;
    AField = AValue;
    Changed();
  }

  void* FOwner;
  std::function<void(TTessarineUiTheme&)> FOnChanged;
  int32_t FUpdating = 0;
  TTessarineUiThemePreset FPreset = utpExcelLight;
  TUiThemeColors FColors;
  TUiThemeSizes FSizes;
  TUiThemeFonts FFonts;
  int32_t FFillHandleSize = 7;
  uint8_t FSelectionOverlayAlpha = 40;
  bool FHasLegacyFormulaBarFont = false;
};

/// The theme of the process, made on first use with the light preset.
TESSARINE_API TTessarineUiTheme& TessarineDefaultUiTheme();

/// The theme that painting uses on this thread: the one set, else that of the process. A theme that is set must live
/// until another one, or null, is set.
TESSARINE_API TTessarineUiTheme& ActiveUiTheme();
TESSARINE_API void SetActiveUiTheme(TTessarineUiTheme* ATheme);

/// A colour 0x00BBGGRR with an alpha as ARGB.
constexpr uint32_t ColorRefToARGB(uint32_t AColor, uint8_t AAlpha) {
  return uint32_t{AAlpha} << 24 | (AColor & 0xFF) << 16 | (AColor & 0xFF00) | (AColor >> 16 & 0xFF);
}

}  // namespace tessarine
