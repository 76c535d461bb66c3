#include <gtest/gtest.h>

#include <set>
#include <thread>

#include <tessarine/core/options/HostOptions.h>
#include <tessarine/core/options/NamedRanges.h>
#include <tessarine/core/options/UiTheme.h>
#include <tessarine/core/sheet/Workbook.h>

namespace tessarine {
namespace {

TEST(HostOptions, TellOnlyRealChanges) {
  TTessarineBehaviorOptions options;
  TTessarineBehaviorOptions copy;
  int changes = 0;
  for (TTessarineBehaviorOptions* each : {&options, &copy})
    each->SetOnChanged([&](TTessarineBehaviorOptions&) { ++changes; });
  options.Set(&TBehaviorSettings::HistoryLimit, 100);
  EXPECT_EQ(changes, 0);
  options.Set(&TBehaviorSettings::HistoryLimit, 7);
  options.Set(&TBehaviorSettings::EnterMoves, emNone);
  EXPECT_EQ(changes, 2);
  options.AssignTo(copy);
  options.AssignTo(copy);
  EXPECT_EQ(changes, 3);
  EXPECT_EQ(copy->HistoryLimit, 7);
  EXPECT_EQ(copy->EnterMoves, emNone);
}

TEST(NamedRanges, AreThoseOfTheWorkbookOrNone) {
  TWorkbook workbook;
  TTessarineNamedRanges names(&workbook);
  names.AddOrSet("Tax", "A1");
  names.AddOrSet("rate", "=B1");
  EXPECT_EQ(names.GetFormula(" $TAX "), u"=A1");
  EXPECT_EQ(names.Count(), 2);
  names.Remove(" t$ax ");
  names.Remove("other");
  EXPECT_FALSE(names.Contains("Tax"));
  EXPECT_TRUE(names.Contains("Rate"));
  names.Clear();
  EXPECT_FALSE(workbook.HasNamedFormulas());

  names.SetWorkbook(nullptr);
  names.AddOrSet("Tax", "A1");
  names.Remove("Tax");
  names.Clear();
  EXPECT_EQ(names.Count(), 0);
  EXPECT_FALSE(names.Contains("Tax"));
  EXPECT_TRUE(names.GetFormula("Tax").IsEmpty());
}

TEST(UiTheme, EveryColourHasOneRowWhichThePresetsApply) {
  TTessarineUiTheme theme;
  std::set<std::u16string_view> names;
  for (const TUiThemeColorRow& row : UiThemeColorTable()) {
    EXPECT_TRUE(names.insert(row.Name).second);
    TUiThemeColors colors;
    colors.*row.Field = 1;
    for (const TUiThemeColorRow& other : UiThemeColorTable()) EXPECT_EQ(colors.*other.Field, &row == &other ? 1u : 0u);
  }
  const struct {
    TTessarineUiThemePreset Preset;
    uint32_t Header, Selection, Series6;  // single colours, against slips in the table
    int Alpha;
  } presets[] = {{utpExcelLight, 0xF0F0F0, 0x595959, 0x47AD70, 40},
                 {utpExcelDark, 0x222222, 0x467321, 0x47AD70, 40},
                 {utpTessarineBrand, 0xE2E2E2, 0x686868, 0x787878, 36},
                 {utpExcelDarkGray, 0x666666, 0x467321, 0x47AD70, 40}};
  for (const auto& row : presets) {
    theme.SetSingle(&TUiThemeSizes::ChartTitleSize, 99);
    int changes = 0;
    theme.SetOnChanged([&](TTessarineUiTheme&) { ++changes; });
    theme.ApplyPreset(row.Preset);
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(theme.Preset(), row.Preset);
    EXPECT_EQ(theme.Colors().HeaderBackground, row.Header);
    EXPECT_EQ(theme.Colors().SelectionBorder, row.Selection);
    EXPECT_EQ(theme.ChartSeriesColor(-1), row.Series6);
    EXPECT_EQ(theme.ChartSeriesColor(7), theme.Colors().ChartSeries2);
    EXPECT_EQ(theme.SelectionOverlayAlpha(), row.Alpha);
    EXPECT_EQ(theme.Sizes(), TUiThemeSizes{});
    theme.SetOnChanged({});
  }
}

TEST(UiTheme, UpdatesAreToldOnceAndOldSettingsAreRead) {
  TTessarineUiTheme theme;
  int changes = 0;
  theme.SetOnChanged([&](TTessarineUiTheme&) { ++changes; });
  theme.SetColor(&TUiThemeColors::GridLine, theme.Colors().GridLine);
  EXPECT_EQ(changes, 0);
  theme.BeginUpdate();
  theme.SetColor(&TUiThemeColors::GridLine, 1);
  theme.SetString(&TUiThemeFonts::Code, u"Mono");
  EXPECT_EQ(changes, 0);
  theme.EndUpdate();
  EXPECT_EQ(changes, 1);
  theme.EndUpdate();
  EXPECT_EQ(changes, 2);
  theme.SetFillHandleSize(9);
  EXPECT_EQ(changes, 3);

  EXPECT_FALSE(theme.TakeLegacyFormulaBarFont().has_value());
  EXPECT_TRUE(theme.ReadLegacyProperty(u"UiFontSize", TCellValue::FromNumber(12)));
  EXPECT_TRUE(theme.ReadLegacyProperty(u"FormulaBarFontName", TCellValue::FromText(u"Serif")));
  EXPECT_TRUE(theme.ReadLegacyProperty(u"AiCardBorder", TCellValue::FromNumber(3)));
  EXPECT_FALSE(theme.ReadLegacyProperty(u"GridLine", TCellValue::FromNumber(3)));
  EXPECT_EQ(theme.Sizes().HeaderFontSize, 12);
  EXPECT_EQ(theme.TakeLegacyFormulaBarFont()->Name, u"Serif");
  EXPECT_FALSE(theme.TakeLegacyFormulaBarFont().has_value());
}

TEST(UiTheme, TheActiveThemeBelongsToItsThread) {
  TTessarineUiTheme theme;
  SetActiveUiTheme(&theme);
  const TTessarineUiTheme* elsewhere = nullptr;
  std::thread([&] { elsewhere = &ActiveUiTheme(); }).join();
  EXPECT_EQ(elsewhere, &TessarineDefaultUiTheme());
  EXPECT_EQ(&ActiveUiTheme(), &theme);
  SetActiveUiTheme(nullptr);
  EXPECT_EQ(&ActiveUiTheme(), &TessarineDefaultUiTheme());
  EXPECT_EQ(ColorRefToARGB(0x112233, 0x80), 0x80332211u);
}

}  // namespace
}  // namespace tessarine
