#pragma once

#include <concepts>
#include <cstdint>
#include <type_traits>

#include <tessarine/core/format/CellFormat.h>
#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/ConditionalFormats.h>
#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/core/lists/PageSetup.h>
#include <tessarine/core/lists/PivotCache.h>
#include <tessarine/core/lists/PivotTables.h>
#include <tessarine/core/lists/Slicers.h>
#include <tessarine/core/sheet/Cell.h>
#include <tessarine/core/values/Address.h>

namespace tessarine::detail {

// What a native document holds of each record, in the order in which it is written: one list for both directions.
//
// VisitNativeFields(AVisit, ARecord) calls AVisit(name, member) for every field; ARecord is const for the writer.
// A field that is missing leaves its member alone, so what a fresh record holds (NewNativeRecord) is the default.
// AVisit.When(condition, name, member) is a field that is written only under a condition, AVisit.Color one that reads
// leniently, AVisit.Bytes one that is base64 and left out when empty, AVisit.AllBytes the same but always written.

template <class TField, class TRecord>
concept ANative = std::same_as<std::remove_const_t<TField>, TRecord>;

/// The largest ordinal of an enumeration; a larger one in a document counts as missing.
template <class TEnum>
inline constexpr TEnum kLastNative = TEnum::unknown_enumeration;

template <>
inline constexpr auto kLastNative<TCellValueKind> = cvkFormula;
template <>
inline constexpr auto kLastNative<TCellErrorCode> = ceSpill;
template <>
inline constexpr auto kLastNative<THorizontalAlignment> = haJustify;
template <>
inline constexpr auto kLastNative<TVerticalAlignment> = vaBottom;
template <>
inline constexpr auto kLastNative<TReadingOrder> = roRTL;
template <>
inline constexpr auto kLastNative<TUnderlineStyle> = usDouble;
template <>
inline constexpr auto kLastNative<TScriptPosition> = spSubscript;
template <>
inline constexpr auto kLastNative<TBorderLineStyle> = blsHair;
template <>
inline constexpr auto kLastNative<TCfOperator> = cfoEndsWith;
template <>
inline constexpr auto kLastNative<TDataValidationType> = dvtCustom;
template <>
inline constexpr auto kLastNative<TDataValidationOperator> = dvoLessEqual;
template <>
inline constexpr auto kLastNative<TDataValidationErrorStyle> = dvesInformation;
template <>
inline constexpr auto kLastNative<TPageOrientation> = poLandscape;
template <>
inline constexpr auto kLastNative<TPaperSize> = psCustom;
template <>
inline constexpr auto kLastNative<TPageOrder> = poOverThenDown;
template <>
inline constexpr auto kLastNative<TPrintCommentsMode> = pcmAsDisplayed;
template <>
inline constexpr auto kLastNative<TPrintErrorsMode> = pemNA;
template <>
inline constexpr auto kLastNative<TPivotCacheSourceKind> = pcsExternal;
template <>
inline constexpr auto kLastNative<TPivotAgg> = paVarp;
template <>
inline constexpr auto kLastNative<TPivotShowAs> = psaRank;
template <>
inline constexpr auto kLastNative<TPivotFieldRole> = pfrValue;
template <>
inline constexpr auto kLastNative<TPivotLayoutForm> = plfTabular;
template <>
inline constexpr auto kLastNative<TSlicerKind> = skTimeline;
template <>
inline constexpr auto kLastNative<TSlicerTimelineLevel> = stlDays;

/// What a record holds before its fields are read.
template <class TRecord>
TRecord NewNativeRecord() {
  return {};
}
template <>
inline TColorRef NewNativeRecord() {
  return TColorRef::FromARGB(kOpaqueBlack);
}
template <>
inline TCellRange NewNativeRecord() {
  return {1, 1, 1, 1};
}
template <>
inline TAutoFilterColumn NewNativeRecord() {
  TAutoFilterColumn column;
  column.Col = 1;
  return column;
}
template <>
inline TDataValidationRule NewNativeRecord() {
  TDataValidationRule rule;
  rule.AllowBlank = true;
  return rule;
}

// ---- formats

void VisitNativeFields(auto& AVisit, ANative<TColorRef> auto& AColor) {
  AVisit.Color("argb", AColor.ARGB);
  AVisit("theme", AColor.ThemeIndex);
  AVisit("tint", AColor.Tint);
}

void VisitNativeFields(auto& AVisit, ANative<TBorderSide> auto& ASide) {
  AVisit("style", ASide.Style);
  AVisit("color", ASide.Color);
}

void VisitNativeFields(auto& AVisit, ANative<TCellFontInfo> auto& AFont) {
  AVisit("name", AFont.Name);
  AVisit("size", AFont.Size);
  AVisit("bold", AFont.Bold);
  AVisit("italic", AFont.Italic);
  AVisit("underline", AFont.Underline);
  AVisit("strike", AFont.Strikethrough);
  AVisit("script", AFont.Script);
  AVisit("color", AFont.Color);
}

void VisitNativeFields(auto& AVisit, ANative<TCellFillInfo> auto& AFill) {
  AVisit("pattern", AFill.PatternType);
  AVisit("fg", AFill.ForegroundColor);
  AVisit("bg", AFill.BackgroundColor);
  AVisit("gradAngle", AFill.GradientAngle);
}

void VisitNativeFields(auto& AVisit, ANative<TCellBorderInfo> auto& ABorder) {
  AVisit("left", ABorder.Left);
  AVisit("top", ABorder.Top);
  AVisit("right", ABorder.Right);
  AVisit("bottom", ABorder.Bottom);
  AVisit("diagonal", ABorder.Diagonal);
  AVisit("diagonalUp", ABorder.DiagonalUp);
  AVisit("diagonalDown", ABorder.DiagonalDown);
}

void VisitNativeFields(auto& AVisit, ANative<TCellAlignmentInfo> auto& AAlignment) {
  AVisit("h", AAlignment.Horizontal);
  AVisit("v", AAlignment.Vertical);
  AVisit("wrap", AAlignment.WrapText);
  AVisit("shrink", AAlignment.ShrinkToFit);
  AVisit("indent", AAlignment.Indent);
  AVisit("rotation", AAlignment.TextRotation);
  AVisit("readingOrder", AAlignment.ReadingOrder);
  AVisit("marginLeftCm", AAlignment.MarginLeftCm);
  AVisit("marginRightCm", AAlignment.MarginRightCm);
  AVisit("paddingLeftCm", AAlignment.PaddingLeftCm);
  AVisit("paddingRightCm", AAlignment.PaddingRightCm);
}

void VisitNativeFields(auto& AVisit, ANative<TCellFormat> auto& AFormat) {
  AVisit("numberFormat", AFormat.NumberFormat);
  AVisit("font", AFormat.Font);
  AVisit("fill", AFormat.Fill);
  AVisit("border", AFormat.Border);
  AVisit("alignment", AFormat.Alignment);
  AVisit("locked", AFormat.Locked);
  AVisit("hidden", AFormat.Hidden);
}

/// The form of documents from before formats had a "font"; read only.
void VisitFlatFormatFields(auto& AVisit, TCellFormat& AFormat) {
  AVisit("numberFormat", AFormat.NumberFormat);
  AVisit("fontName", AFormat.Font.Name);
  AVisit("fontSize", AFormat.Font.Size);
  AVisit("bold", AFormat.Font.Bold);
  AVisit("italic", AFormat.Font.Italic);
  AVisit("fillPattern", AFormat.Fill.PatternType);
  AVisit("fillColor", AFormat.Fill.ForegroundColor);
  AVisit("hAlign", AFormat.Alignment.Horizontal);
  AVisit("vAlign", AFormat.Alignment.Vertical);
  AVisit("wrap", AFormat.Alignment.WrapText);
}

void VisitNativeFields(auto& AVisit, ANative<TRichTextRun> auto& ARun) {
  AVisit("text", ARun.Text);
  AVisit("font", ARun.Font);
}

/// The six members of a value, of which those count that go with its kind.
struct TNativeValue {
  TCellValueKind Kind = cvkEmpty;
  TText Text;
  double Number = 0;
  bool Boolean = false;
  TCellErrorCode Error = ceNone;
  TText Formula;
};

void VisitNativeFields(auto& AVisit, ANative<TNativeValue> auto& AValue) {
  AVisit("kind", AValue.Kind);
  AVisit("text", AValue.Text);
  AVisit("number", AValue.Number);
  AVisit("bool", AValue.Boolean);
  AVisit("error", AValue.Error);
  AVisit("formula", AValue.Formula);
}

// ---- lists of a sheet

void VisitNativeFields(auto& AVisit, ANative<TCellRange> auto& ARange) {
  AVisit("sc", ARange.StartCol);
  AVisit("sr", ARange.StartRow);
  AVisit("ec", ARange.EndCol);
  AVisit("er", ARange.EndRow);
}

void VisitNativeFields(auto& AVisit, ANative<TAutoFilterColumn> auto& AColumn) {
  AVisit("col", AColumn.Col);
  AVisit("active", AColumn.Active);
  AVisit("values", AColumn.Values);
  AVisit("contains", AColumn.Contains);
  AVisit("matchCase", AColumn.MatchCase);
  AVisit("excludeBlanks", AColumn.ExcludeBlanks);
}

void VisitNativeFields(auto& AVisit, ANative<TDataValidationRule> auto& ARule) {
  AVisit("name", ARule.Name);
  AVisit("ranges", ARule.Ranges);
  AVisit("promptTitle", ARule.PromptTitle);
  AVisit("prompt", ARule.Prompt);
  AVisit("showInputMessage", ARule.ShowInputMessage);
  AVisit("type", ARule.ValidationType);
  AVisit("operator", ARule.Operator);
  AVisit("formula1", ARule.Formula1);
  AVisit("formula2", ARule.Formula2);
  AVisit("allowBlank", ARule.AllowBlank);
  AVisit("showErrorMessage", ARule.ShowErrorMessage);
  AVisit("errorTitle", ARule.ErrorTitle);
  AVisit("error", ARule.Error);
  AVisit("errorStyle", ARule.ErrorStyle);
}

void VisitNativeFields(auto& AVisit, ANative<TConditionalFormatRule> auto& ARule) {
  AVisit("ranges", ARule.Ranges);
  AVisit("operator", ARule.Operator);
  AVisit("formula1", ARule.Formula1);
  AVisit("formula2", ARule.Formula2);
  AVisit("stopIfTrue", ARule.StopIfTrue);
  AVisit("hasFill", ARule.HasFill);
  AVisit.When(ARule.HasFill, "fill", ARule.Fill);
  AVisit("hasFontColor", ARule.HasFontColor);
  AVisit.When(ARule.HasFontColor, "fontColor", ARule.FontColor);
  AVisit("hasBold", ARule.HasBold);
  AVisit("bold", ARule.Bold);
  AVisit("hasItalic", ARule.HasItalic);
  AVisit("italic", ARule.Italic);
}

void VisitNativeFields(auto& AVisit, ANative<TPivotFieldRef> auto& AField) {
  AVisit("field", AField.CacheFieldIndex);
  AVisit("role", AField.Role);
  AVisit("agg", AField.Agg);
  AVisit("showAs", AField.ShowAs);
  AVisit("customName", AField.CustomName);
  AVisit.When(!AField.NumberFormat.IsEmpty(), "numberFormat", AField.NumberFormat);
}

void VisitNativeFields(auto& AVisit, ANative<THeaderFooterSection> auto& ASection) {
  AVisit("left", ASection.Left);
  AVisit("center", ASection.Center);
  AVisit("right", ASection.Right);
}

/// The plain fields of a page setup in three stretches; ranges, paper and breaks, which have rules of their own, stand
/// between and behind them.
void VisitPageScaleFields(auto& AVisit, ANative<TPageSetup> auto& ASetup) {
  AVisit("scalePercent", ASetup.ScalePercent);
  AVisit("fitToPage", ASetup.FitToPage);
  AVisit("fitToWidth", ASetup.FitToWidth);
  AVisit("fitToHeight", ASetup.FitToHeight);
  AVisit("firstPageNumber", ASetup.FirstPageNumber);
  AVisit("blackAndWhite", ASetup.BlackAndWhite);
  AVisit("draftQuality", ASetup.DraftQuality);
  AVisit("marginLeft", ASetup.MarginLeft);
  AVisit("marginRight", ASetup.MarginRight);
  AVisit("marginTop", ASetup.MarginTop);
  AVisit("marginBottom", ASetup.MarginBottom);
  AVisit("marginHeader", ASetup.MarginHeader);
  AVisit("marginFooter", ASetup.MarginFooter);
  AVisit("centerHorizontally", ASetup.CenterHorizontally);
  AVisit("centerVertically", ASetup.CenterVertically);
  AVisit("header", ASetup.Header);
  AVisit("footer", ASetup.Footer);
}

void VisitPagePrintFields(auto& AVisit, ANative<TPageSetup> auto& ASetup) {
  AVisit("printGridlines", ASetup.PrintGridlines);
  AVisit("printHeadings", ASetup.PrintHeadings);
  AVisit("pageOrder", ASetup.PageOrder);
  AVisit("commentsMode", ASetup.CommentsMode);
  AVisit("errorsMode", ASetup.ErrorsMode);
}

}  // namespace tessarine::detail
