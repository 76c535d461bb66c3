#include <tessarine/core/options/UiTheme.h>

#include <algorithm>

#include <tessarine/core/values/Coercion.h>

namespace tessarine {

namespace {

constexpr TUiThemeColorRow kColors[] = {
    {u"SheetBackground", &TUiThemeColors::SheetBackground, {0xFFFFFF, 0xFFFFFF, 0xF5F5F5, 0xFFFFFF}},
    {u"GridLine", &TUiThemeColors::GridLine, {0xD0D0D0, 0xD4D4D4, 0xC8C8C8, 0xD0D0D0}},
    {u"FreezeLine", &TUiThemeColors::FreezeLine, {0x808080, 0x808080, 0x989898, 0x808080}},
    {u"HeaderBackground", &TUiThemeColors::HeaderBackground, {0xF0F0F0, 0x222222, 0xE2E2E2, 0x666666}},
    {u"HeaderLine", &TUiThemeColors::HeaderLine, {0xC0C0C0, 0x383838, 0xB4B4B4, 0x7A7A7A}},
    {u"HeaderText", &TUiThemeColors::HeaderText, {0x000000, 0xF5F5F5, 0x303030, 0xF5F5F5}},
    {u"HeaderSelectedBg", &TUiThemeColors::HeaderSelectedBg, {0xD6D6D6, 0x484848, 0xD4D4D4, 0x7A7A7A}},
    {u"HeaderEntireSelectedBg", &TUiThemeColors::HeaderEntireSelectedBg, {0xC6DFC6, 0x505050, 0xD4CEC8, 0x5A7A5A}},
    {u"TableHeaderText", &TUiThemeColors::TableHeaderText, {0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF}},
    {u"SelectionBorder", &TUiThemeColors::SelectionBorder, {0x595959, 0x467321, 0x686868, 0x467321}},
    {u"SelectionOverlay", &TUiThemeColors::SelectionOverlay, {0x000000, 0x000000, 0x000000, 0x000000}},
    {u"ActiveCellBorder", &TUiThemeColors::ActiveCellBorder, {0x595959, 0x467321, 0x686868, 0x467321}},
    {u"FillHandle", &TUiThemeColors::FillHandle, {0x2E4921, 0x2E4921, 0x787060, 0x2E4921}},
    {u"FillHandleHalo", &TUiThemeColors::FillHandleHalo, {0xFFFFFF, 0xFFFFFF, 0xF5F5F5, 0xFFFFFF}},
    {u"CommentMarker", &TUiThemeColors::CommentMarker, {0x0000FF, 0x0000FF, 0x4040C0, 0x0000FF}},
    {u"DrawingSelection", &TUiThemeColors::DrawingSelection, {0xC65A00, 0xC65A00, 0x909070, 0xC65A00}},
    {u"DrawingHandleFace", &TUiThemeColors::DrawingHandleFace, {0xFFFFFF, 0xFFFFFF, 0xF5F5F5, 0xFFFFFF}},
    {u"OutlineLine", &TUiThemeColors::OutlineLine, {0x777777, 0xA0A0A0, 0x909090, 0xA0A0A0}},
    {u"GroupButtonFace", &TUiThemeColors::GroupButtonFace, {0xFFFFFF, 0xFFFFFF, 0xF0F0F0, 0xFFFFFF}},
    {u"GroupButtonBorder", &TUiThemeColors::GroupButtonBorder, {0x666666, 0x222222, 0x808080, 0x666666}},
    {u"AutoFilterIdle", &TUiThemeColors::AutoFilterIdle, {0xF5F5F5, 0xF5F5F5, 0xECECEC, 0xF5F5F5}},
    {u"AutoFilterActive", &TUiThemeColors::AutoFilterActive, {0xF2D5B5, 0xF2D5B5, 0xD8DCE0, 0xF2D5B5}},
    {u"AutoFilterBorder", &TUiThemeColors::AutoFilterBorder, {0x808080, 0x808080, 0xA0A0A0, 0x808080}},
    {u"AutoFilterGlyph", &TUiThemeColors::AutoFilterGlyph, {0x222222, 0x222222, 0x404040, 0x222222}},
    {u"TabBarBackground", &TUiThemeColors::TabBarBackground, {0xF0F0F0, 0x1A1A1A, 0xDCDCDC, 0x444444}},
    {u"TabInactive", &TUiThemeColors::TabInactive, {0xE8E8E8, 0x1A1A1A, 0xD0D0D0, 0x444444}},
    {u"TabActive", &TUiThemeColors::TabActive, {0xFFFFFF, 0xFFFFFF, 0xF5F5F5, 0xFFFFFF}},
    {u"TabAccent", &TUiThemeColors::TabAccent, {0x467321, 0x467321, 0x467321, 0x467321}},
    {u"TabText", &TUiThemeColors::TabText, {0x000000, 0xF0F0F0, 0x303030, 0xF0F0F0}},
    {u"TabTextMuted", &TUiThemeColors::TabTextMuted, {0x888888, 0xA0A0A0, 0x787878, 0xB0B0B0}},
    {u"TabScrollEnabled", &TUiThemeColors::TabScrollEnabled, {0x333333, 0xF0F0F0, 0x505050, 0xF0F0F0}},
    {u"TabScrollDisabled", &TUiThemeColors::TabScrollDisabled, {0xAAAAAA, 0x606060, 0xA8A8A8, 0x808080}},
    {u"ScrollBarTrack", &TUiThemeColors::ScrollBarTrack, {0xF0F0F0, 0x101010, 0xE4E4E4, 0x3A3A3A}},
    {u"ScrollBarThumb", &TUiThemeColors::ScrollBarThumb, {0xC1C1C1, 0x808080, 0xB8B8B8, 0x8A8A8A}},
    {u"ScrollBarThumbHot", &TUiThemeColors::ScrollBarThumbHot, {0xA8A8A8, 0x989898, 0xA0A0A0, 0xA0A0A0}},
    {u"ScrollBarThumbPressed", &TUiThemeColors::ScrollBarThumbPressed, {0x787878, 0xB0B0B0, 0x808080, 0xB8B8B8}},
    {u"ScrollBarButton", &TUiThemeColors::ScrollBarButton, {0xF0F0F0, 0x1A1A1A, 0xE2E2E2, 0x444444}},
    {u"ScrollBarArrow", &TUiThemeColors::ScrollBarArrow, {0x606060, 0xC8C8C8, 0x505050, 0xF0F0F0}},
    {u"FormulaBarBackground", &TUiThemeColors::FormulaBarBackground, {0xFFFFFF, 0x1A1A1A, 0xEAEAEA, 0x444444}},
    {u"FormulaBarText", &TUiThemeColors::FormulaBarText, {0x000000, 0xF0F0F0, 0x303030, 0xF0F0F0}},
    {u"FormulaBarEditBackground", &TUiThemeColors::FormulaBarEditBackground, {0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF}},
    {u"MiniBarBackground", &TUiThemeColors::MiniBarBackground, {0xF0F0F0, 0x222222, 0xE4E4E4, 0x4A4A4A}},
    {u"MiniBarBorder", &TUiThemeColors::MiniBarBorder, {0xA0A0A0, 0x484848, 0xA8A8A8, 0x606060}},
    {u"TipBackground", &TUiThemeColors::TipBackground, {0xE1FFFF, 0xE1FFFF, 0xE8ECF0, 0xE1FFFF}},
    {u"TipBorder", &TUiThemeColors::TipBorder, {0x808080, 0x808080, 0xA0A8B0, 0x808080}},
    {u"TipText", &TUiThemeColors::TipText, {0x000000, 0x000000, 0x303030, 0x000000}},
    {u"HostBackground", &TUiThemeColors::HostBackground, {0xFFFFFF, 0x1A1A1A, 0xF0F0F0, 0x444444}},
    {u"EditorBackground", &TUiThemeColors::EditorBackground, {0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF}},
    {u"EditorText", &TUiThemeColors::EditorText, {0x000000, 0x000000, 0x303030, 0x000000}},
    {u"EditorSelection", &TUiThemeColors::EditorSelection, {0xFFD6B4, 0xFFD6B4, 0xE0D4C8, 0xFFD6B4}},
    {u"EditorFocusRing", &TUiThemeColors::EditorFocusRing, {0xFFBF00, 0x467321, 0x909888, 0x467321}},
    {u"EditorCaret", &TUiThemeColors::EditorCaret, {0x000000, 0x000000, 0x303030, 0x000000}},
    {u"ChartSeries1", &TUiThemeColors::ChartSeries1, {0xC47244, 0xC47244, 0x908070, 0xC47244}},
    {u"ChartSeries2", &TUiThemeColors::ChartSeries2, {0x317DED, 0x317DED, 0x808080, 0x317DED}},
    {u"ChartSeries3", &TUiThemeColors::ChartSeries3, {0xA5A5A5, 0xA5A5A5, 0xA0A0A0, 0xA5A5A5}},
    {u"ChartSeries4", &TUiThemeColors::ChartSeries4, {0x00C0FF, 0x00C0FF, 0x786860, 0x00C0FF}},
    {u"ChartSeries5", &TUiThemeColors::ChartSeries5, {0xD59B5B, 0xD59B5B, 0xA09890, 0xD59B5B}},
    {u"ChartSeries6", &TUiThemeColors::ChartSeries6, {0x47AD70, 0x47AD70, 0x787878, 0x47AD70}},
    {u"ChartAxis", &TUiThemeColors::ChartAxis, {0xD9D9D9, 0xD9D9D9, 0x909090, 0xD9D9D9}},
    {u"ChartGrid", &TUiThemeColors::ChartGrid, {0xD9D9D9, 0xD9D9D9, 0xD8D8D8, 0xD9D9D9}},
    {u"ChartLabel", &TUiThemeColors::ChartLabel, {0x595959, 0x595959, 0x585858, 0x595959}},
    {u"ChartPlotBackground", &TUiThemeColors::ChartPlotBackground, {0xFFFFFF, 0xFFFFFF, 0xF5F5F5, 0xFFFFFF}},
    {u"ChartPlaceholderBg", &TUiThemeColors::ChartPlaceholderBg, {0xF2F2F2, 0xF2F2F2, 0xE8E8E8, 0xF2F2F2}},
    {u"ChartPlaceholderBorder", &TUiThemeColors::ChartPlaceholderBorder, {0x808080, 0x808080, 0x989898, 0x808080}},
    {u"ChartSelectionOuter", &TUiThemeColors::ChartSelectionOuter, {0xC65A00, 0xC65A00, 0x708090, 0xC65A00}},
    {u"ChartSelectionInner", &TUiThemeColors::ChartSelectionInner, {0xF0B070, 0xF0B070, 0xA0A8B0, 0xF0B070}},
};
static_assert(sizeof(TUiThemeColors) == std::size(kColors) * sizeof(uint32_t), "a colour has no row");

constexpr uint8_t kOverlayAlphas[] = {40, 40, 36, 40};  // by preset

constexpr uint32_t TUiThemeColors::*kSeries[] = {
    &TUiThemeColors::ChartSeries1, &TUiThemeColors::ChartSeries2, &TUiThemeColors::ChartSeries3,
    &TUiThemeColors::ChartSeries4, &TUiThemeColors::ChartSeries5, &TUiThemeColors::ChartSeries6,
};

constexpr std::u16string_view kDroppedProperties[] = {
    u"AiBackground", u"AiRoleYou", u"AiRoleAgent", u"AiRoleTool",       u"AiRoleSystem",
    u"AiRoleError",  u"AiBody",    u"AiCode",      u"AiCardBackground", u"AiCardBorder",
};

thread_local TTessarineUiTheme* ActiveTheme = nullptr;

float AsSize(const TCellValue& AValue) {
  double number = 0;
  return AsNumber(AValue, number) ? static_cast<float>(std::clamp(number, 0.0, 1e6)) : 0;
}

}  // namespace

std::span<const TUiThemeColorRow> UiThemeColorTable() { return kColors; }

TTessarineUiTheme::TTessarineUiTheme(void* AOwner) : FOwner(AOwner) { ApplyPreset(utpExcelLight); }

void TTessarineUiTheme::EndUpdate() {
  FUpdating = std::max(FUpdating - 1, 0);
  if (FUpdating == 0) Changed();
}

void TTessarineUiTheme::Changed() {
  if (FUpdating < 1 && FOnChanged) FOnChanged(*this);
}

void TTessarineUiTheme::ApplyPreset(TTessarineUiThemePreset APreset) {
  const auto preset = static_cast<size_t>(APreset);
  if (preset >= std::size(kOverlayAlphas)) return;
  BeginUpdate();
  FPreset = APreset;
  for (const TUiThemeColorRow& row : kColors) FColors.*row.Field = row.Presets[preset];
  FSelectionOverlayAlpha = kOverlayAlphas[preset];
  FSizes = {};
  FFonts = {};
  FFillHandleSize = 7;
  EndUpdate();
}

uint32_t TTessarineUiTheme::ChartSeriesColor(int32_t AIndex) const {
  const int32_t count = static_cast<int32_t>(std::size(kSeries));
  return FColors.*kSeries[(AIndex % count + count) % count];
}

bool TTessarineUiTheme::ReadLegacyProperty(std::u16string_view AName, const TCellValue& AValue) {
  if (AName == u"UiFontName") {
    SetString(&TUiThemeFonts::Header, AValue.ToDisplayString());
  } else if (AName == u"UiFontSize") {
    SetSingle(&TUiThemeSizes::HeaderFontSize, AsSize(AValue));
  } else if (AName == u"FormulaBarFontName") {
    SetString(&TUiThemeFonts::FormulaBar, AValue.ToDisplayString());
    FHasLegacyFormulaBarFont = true;
  } else if (AName == u"FormulaBarFontSize") {
    SetSingle(&TUiThemeSizes::FormulaBarFontSize, AsSize(AValue));
    FHasLegacyFormulaBarFont = true;
  } else {
    return std::find(std::begin(kDroppedProperties), std::end(kDroppedProperties), AName) !=
           std::end(kDroppedProperties);
  }
  return true;
}

std::optional<TTessarineUiTheme::TLegacyFont> TTessarineUiTheme::TakeLegacyFormulaBarFont() {
  if (!std::exchange(FHasLegacyFormulaBarFont, false)) return std::nullopt;
  return TLegacyFont{FFonts.FormulaBar, FSizes.FormulaBarFontSize};
}

TTessarineUiTheme& TessarineDefaultUiTheme() {
  static TTessarineUiTheme theme;
  return theme;
}

TTessarineUiTheme& ActiveUiTheme() { return ActiveTheme ? *ActiveTheme : TessarineDefaultUiTheme(); }

void SetActiveUiTheme(TTessarineUiTheme* ATheme) { ActiveTheme = ATheme; }

}  // namespace tessarine
