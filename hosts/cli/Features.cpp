#include <hosts/cli/Features.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include <hosts/cli/Phrase.h>
#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/CellComments.h>
#include <tessarine/core/lists/ConditionalFormats.h>
#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/lists/Hyperlinks.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/OlapConnections.h>
#include <tessarine/core/lists/PageSetup.h>
#include <tessarine/core/lists/PivotCache.h>
#include <tessarine/core/lists/PivotTables.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/lists/Slicers.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::cli {

namespace {

using TFeatures = std::vector<TFeature>;

constexpr const char* kAggregates[] = {"sum",     "count",  "countnums", "average", "min", "max",
                                       "product", "stddev", "stddevp",   "var",     "varp"};
constexpr const char* kShowAs[] = {"",           "% of grand total", "% of row", "% of column", "% of",
                                   "difference", "running total",    "index",    "rank"};
constexpr const char* kRoles[] = {"unused", "filter", "row", "column", "value"};
constexpr const char* kLayouts[] = {"compact", "outline", "tabular"};
constexpr const char* kValidationTypes[] = {"any", "list", "whole", "decimal", "date", "textLength", "custom"};
constexpr const char* kOperators[] = {"between",     "notBetween", "equal",        "notEqual",
                                      "greaterThan", "lessThan",   "greaterEqual", "lessEqual"};
constexpr const char* kErrorStyles[] = {"", "warning", "information"};
constexpr const char* kCharts[] = {"unknown",  "bar",   "column", "line",  "pie",   "area",       "scatter",
                                   "doughnut", "radar", "bubble", "stock", "combo", "pie of pie", "surface"};
constexpr const char* kTimelineLevels[] = {"", "years", "quarters", "months", "days"};
constexpr const char* kSourceKinds[] = {"sheet", "ranges", "cube", "external"};

template <class TValue, size_t kCount>
std::string NameIn(const char* const (&ANames)[kCount], TValue AValue) {
  return static_cast<size_t>(AValue) < kCount ? ANames[static_cast<size_t>(AValue)] : "unknown";
}

std::string Joined(const std::vector<TText>& ATexts) {
  std::string text;
  for (const TText& item : ATexts) text += (text.empty() ? "" : "|") + item.ToUtf8();
  return text;
}

void AddTables(const TWorksheet& ASheet, TFeatures& AFeatures) {
  for (const auto& table : ASheet.Tables()) {
    TPhrase phrase;
    phrase.Put("", A1Text(table->Ref()));
    if (table->Name() != table->DisplayName()) phrase.Put("named", table->Name());
    phrase.Word(!table->HasHeaderRow(), "no header").Word(table->HasTotalsRow(), "totals");
    phrase.Word(!table->ShowAutoFilter(), "no filter").Word(!table->ShowRowStripes(), "no row stripes");
    phrase.Word(table->ShowColumnStripes(), "column stripes").Put("style", table->StyleName());
    phrase.Put("columns", Joined(table->ColumnNames()));
    AFeatures.push_back({"table", table->DisplayName().ToUtf8(), phrase.Text()});
  }
}

/// A link over a small range is told cell by cell: how cells with equal links are put together is of no account.
void AddLinks(const TWorksheet& ASheet, TFeatures& AFeatures) {
  constexpr int64_t kMostCells = 1024;
  struct TLink {
    TCellRange Range;
    std::string Target;
  };
  std::vector<TLink> links;
  ASheet.Hyperlinks().ForEach([&](const TCellRange& ARange, const TText& ATarget) {
    const std::string target = ATarget.ToUtf8();
    if (int64_t{ARange.Width()} * ARange.Height() > kMostCells) {
      links.push_back({ARange, target});
      return;
    }
    for (int32_t row = ARange.StartRow; row <= ARange.EndRow; ++row)
      for (int32_t col = ARange.StartCol; col <= ARange.EndCol; ++col) links.push_back({{col, row, col, row}, target});
  });
  std::sort(links.begin(), links.end(), [](const TLink& ALeft, const TLink& ARight) {
    return std::pair(ALeft.Range.StartRow, ALeft.Range.StartCol) <
           std::pair(ARight.Range.StartRow, ARight.Range.StartCol);
  });
  for (TLink& link : links) AFeatures.push_back({"link", A1Text(link.Range), std::move(link.Target)});
}

void AddValidations(const TWorksheet& ASheet, TFeatures& AFeatures) {
  for (const TDataValidationRule& rule : ASheet.Validations()) {
    TPhrase phrase;
    phrase.Put("", NameIn(kValidationTypes, rule.ValidationType)).Put("named", rule.Name);
    const bool hasOperator = rule.ValidationType != dvtList && rule.ValidationType != dvtCustom;
    if (hasOperator && rule.ValidationType != dvtNone) phrase.Put("", NameIn(kOperators, rule.Operator));
    phrase.Put("", rule.Formula1).Put("and", rule.Formula2);
    phrase.Word(rule.AllowBlank, "blank allowed").Put("prompt", rule.Prompt).Put("prompt title", rule.PromptTitle);
    phrase.Word(rule.ShowInputMessage, "prompt shown");
    phrase.Put("error", rule.Error).Put("error title", rule.ErrorTitle).Word(rule.ShowErrorMessage, "error shown");
    phrase.Put("error style", kErrorStyles[static_cast<size_t>(rule.ErrorStyle) % 3]);
    AFeatures.push_back({"validation", RangesText(rule.Ranges), phrase.Text()});
  }
}

void AddConditionalFormats(const TWorksheet& ASheet, TFeatures& AFeatures) {
  for (const TConditionalFormatRule& rule : ASheet.ConditionalFormats()) {
    TPhrase phrase;
    phrase.Put("", Utf16ToUtf8(CfOperatorName(rule.Operator))).Put("", rule.Formula1).Put("and", rule.Formula2);
    phrase.Word(rule.StopIfTrue, "then stop");
    if (rule.HasFill) phrase.Put("fill", ColorText(rule.Fill.ForegroundColor));
    if (rule.HasFontColor) phrase.Put("color", ColorText(rule.FontColor));
    if (rule.HasBold) phrase.Word(true, rule.Bold ? "bold" : "not bold");
    if (rule.HasItalic) phrase.Word(true, rule.Italic ? "italic" : "not italic");
    AFeatures.push_back({"conditional format", RangesText(rule.Ranges), phrase.Text()});
  }
}

void AddFilter(const TWorksheet& ASheet, TFeatures& AFeatures) {
  if (!ASheet.AutoFilter().IsEnabled()) return;
  TPhrase phrase;
  for (const auto& [col, column] : ASheet.AutoFilter().Columns()) {
    if (!column.Active) continue;
    const std::string name = Utf16ToUtf8(ColToLetters(col));
    const std::string criterion =
        column.Contains.IsEmpty() ? "keeps " + Joined(column.Values) : "contains " + column.Contains.ToUtf8();
    phrase.Put(name, criterion + (column.MatchCase ? " (case matters)" : ""));
  }
  AFeatures.push_back({"filter", A1Text(ASheet.AutoFilter().Range()), phrase.Text()});
}

std::string FieldText(const TPivotCache* ACache, int32_t AField) {
  const bool isKnown = ACache && AField >= 0 && static_cast<size_t>(AField) < ACache->FieldCount();
  return isKnown ? ACache->FieldNames()[static_cast<size_t>(AField)].ToUtf8() : "field " + std::to_string(AField + 1);
}

void AddPivots(const TWorkbook& AWorkbook, const TWorksheet& ASheet, TFeatures& AFeatures) {
  for (const auto& table : ASheet.Pivots()) {
    const TPivotCache* cache = AWorkbook.PivotCaches().FindById(table->CacheId);
    TPhrase phrase;
    phrase.Put("", A1Text(table->LastBody));
    for (const TPivotFieldRef& field : table->Fields) {
      const std::string agg = field.Role == pfrValue ? ":" + NameIn(kAggregates, field.Agg) : "";
      phrase.Put(NameIn(kRoles, field.Role), FieldText(cache, field.CacheFieldIndex) + agg);
      phrase.Put("as", kShowAs[static_cast<size_t>(field.ShowAs) % std::size(kShowAs)]);
      phrase.Put("captioned", field.CustomName).Put("number", field.NumberFormat);
    }
    for (const auto& [field, items] : table->FilterSelections)
      phrase.Put("only", FieldText(cache, field) + " = " + Joined(items));
    for (const TPivotCalcField& field : table->CalcFields)
      phrase.Put("computed", field.Name.ToUtf8() + " " + field.Formula.ToUtf8());
    phrase.Put("groups", table->Groups.empty() ? "" : std::to_string(table->Groups.size()));
    phrase.Put("layout", NameIn(kLayouts, table->LayoutForm)).Put("style", table->StyleName);
    phrase.Word(!table->RowGrandTotals, "no row of totals").Word(!table->ColGrandTotals, "no column of totals");
    if (table->SortFieldIndex >= 0) phrase.Put("sorted by", FieldText(cache, table->SortFieldIndex));
    if (table->SortValueOrdinal >= 0) phrase.Put("sorted by value", std::to_string(table->SortValueOrdinal + 1));
    phrase.Word(!table->SortAscending, "descending");
    AFeatures.push_back({"pivot table", table->Name.ToUtf8(), phrase.Text()});
  }
}

void AddSlicers(const TWorkbook& AWorkbook, const TWorksheet& ASheet, TFeatures& AFeatures) {
  for (const auto& slicer : ASheet.Slicers()) {
    const TPivotCache* cache = AWorkbook.PivotCaches().FindById(slicer->CacheId);
    TPhrase phrase;
    phrase.Put("of", FieldText(cache, slicer->FieldIndex)).Put("at", A1Text(slicer->Anchor));
    phrase.Put("", std::to_string(slicer->WidthCols) + " x " + std::to_string(slicer->HeightRows));
    phrase.Put("for", Joined(slicer->PivotNames)).Put("selected", Joined(slicer->Selected()));
    if (slicer->Kind == skTimeline) phrase.Put("by", NameIn(kTimelineLevels, slicer->TimelineLevel));
    AFeatures.push_back({slicer->Kind == skTimeline ? "timeline" : "slicer", slicer->Name.ToUtf8(), phrase.Text()});
  }
}

const char* DrawingKindName(const TSheetDrawing& ADrawing) {
  switch (ADrawing.Kind) {
    case sdkPicture: return "picture";
    case sdkChart: return "chart";
    case sdkShape: return !ADrawing.InkMlBytes.empty() ? "ink" : ADrawing.IsTextBox ? "text box" : "shape";
    case sdkUnknown: break;
  }
  return ADrawing.InkMlBytes.empty() ? "drawing" : "ink";
}

std::string AnchorText(const TDrawingAnchor& AAnchor) {
  if (AAnchor.Kind == dakAbsolute) return NumberText(static_cast<double>(AAnchor.PosXEmu)) + " EMU right";
  const std::string from = A1Text(TCellAddress{AAnchor.FromCol, AAnchor.FromRow});
  return AAnchor.Kind == dakOneCell ? from : from + ":" + A1Text(TCellAddress{AAnchor.ToCol, AAnchor.ToRow});
}

/// The outlines of a drawing; its finer points are compared where drawings are (see WorkbookDiff).
std::string DrawingText(const TSheetDrawing& ADrawing) {
  TPhrase phrase;
  phrase.Put("at", AnchorText(ADrawing.Anchor)).Word(ADrawing.Hidden, "hidden");
  if (ADrawing.Kind == sdkChart) {
    phrase.Put("", NameIn(kCharts, ADrawing.ChartType)).Word(ADrawing.Stacked, "stacked");
    phrase.Word(ADrawing.PercentStacked, "stacked to 100%").Word(ADrawing.ChartIs3D, "3D");
    phrase.Put("titled", ADrawing.Title).Put("of pivot table", ADrawing.LinkedPivotName);
    for (const TSheetChartSeries& series : ADrawing.Series) phrase.Put("series", series.ValuesFormula);
    for (const TSheetChartSubplot& subplot : ADrawing.Subplots)
      for (const TSheetChartSeries& series : subplot.Series) phrase.Put("series", series.ValuesFormula);
  }
  if (ADrawing.Kind == sdkPicture)
    phrase.Put("", ADrawing.ContentType).Put("bytes", std::to_string(ADrawing.ImageBytes.size()));
  if (ADrawing.Kind == sdkShape) phrase.Put("", ADrawing.PresetGeom).Put("text", ADrawing.Text);
  return phrase.Text();
}

void AddDrawings(const TWorksheet& ASheet, TFeatures& AFeatures) {
  for (int32_t i = 0; i < ASheet.Drawings().Count(); ++i) {
    const TSheetDrawing& drawing = *ASheet.Drawings().GetItem(i);
    const std::string number = std::to_string(i + 1);
    const std::string name = drawing.Name.ToUtf8();
    AFeatures.push_back({DrawingKindName(drawing), name.empty() ? number : name, DrawingText(drawing)});
  }
}

std::string LinesText(const std::vector<int32_t>& ALines) {
  std::string text;
  for (const int32_t line : ALines) text += (text.empty() ? "" : " ") + std::to_string(line);
  return text;
}

}  // namespace

std::vector<TFeature> FeaturesOf(const TWorkbook& AWorkbook) {
  TFeatures features;
  for (const auto& [name, formula] : AWorkbook.CopyNamedFormulas())
    features.push_back({"name", name.ToUtf8(), formula.ToUtf8()});
  for (const auto& cache : AWorkbook.PivotCaches()) {
    TPhrase phrase;
    phrase.Put("", NameIn(kSourceKinds, cache->SourceKind)).Put("", cache->SourceSheet);
    if (cache->SourceKind == pcsWorksheet) phrase.Put("", A1Text(cache->SourceRange));
    phrase.Put("ranges", Joined(cache->MultiRanges)).Put("connection", cache->ConnectionId);
    phrase.Put("fields", Joined(cache->FieldNames()));
    features.push_back({"pivot source", std::to_string(cache->Id()), phrase.Text()});
  }
  for (const auto& connection : AWorkbook.OlapConnections()) {
    TPhrase phrase;
    phrase.Put("", connection->Provider).Put("catalog", connection->Catalog).Put("cube", connection->Cube);
    features.push_back({"connection", connection->Id.ToUtf8(), phrase.Text()});
  }
  return features;
}

std::vector<TFeature> FeaturesOf(const TWorkbook& AWorkbook, const TWorksheet& ASheet) {
  TFeatures features;
  AddTables(ASheet, features);
  for (const TMergedRange& merge : ASheet.Merges()) features.push_back({"merged area", A1Text(merge.AsRange()), ""});
  ASheet.Comments().ForEach([&](TCellAddress AAddress, const TCellComment& AComment) {
    TPhrase phrase;
    phrase.Put("", AComment.Text).Put("by", AComment.Author);
    features.push_back({"note", A1Text(AAddress), phrase.Text()});
  });
  AddLinks(ASheet, features);
  AddValidations(ASheet, features);
  AddConditionalFormats(ASheet, features);
  AddFilter(ASheet, features);
  AddPivots(AWorkbook, ASheet, features);
  AddSlicers(AWorkbook, ASheet, features);
  AddDrawings(ASheet, features);
  if (ASheet.PageSetup().HasPrintArea()) features.push_back({"print area", A1Text(ASheet.PageSetup().PrintArea()), ""});
  return features;
}

namespace {

void AddView(const TWorksheet& ASheet, TFeatures& AFeatures) {
  const TSheetViewOptions& view = ASheet.View();
  TPhrase phrase;
  phrase.Word(!view.ShowGridLines, "no grid lines").Word(!view.ShowHeaders, "no headers");
  phrase.Word(view.ShowFormulas, "formulas shown").Word(!view.ShowZeros, "zeros hidden").Word(view.R1C1, "R1C1");
  phrase.Word(view.RightToLeft, "right to left").Number("zoom", view.Zoom, 100);
  phrase.Number("frozen rows", ASheet.FrozenRows(), 0).Number("frozen columns", ASheet.FrozenCols(), 0);
  phrase.Word(ASheet.IsProtected(), "protected").Word(ASheet.Visibility() == svHidden, "hidden");
  phrase.Word(ASheet.Visibility() == svVeryHidden, "very hidden");
  AFeatures.push_back({"view", "", phrase.Text()});
}

void AddSizes(const TWorksheet& ASheet, TFeatures& AFeatures) {
  const TRowColSizing& sizing = ASheet.Sizing();
  TPhrase phrase;
  phrase.Put("column width", NumberText(sizing.DefaultColWidth()))
      .Put("row height", NumberText(sizing.DefaultRowHeight()));
  phrase.Word(!sizing.OutlineSummaryBelow(), "summary rows above");
  phrase.Word(!sizing.OutlineSummaryRight(), "summary columns at the left");
  AFeatures.push_back({"default sizes", "", phrase.Text()});
  for (const int32_t col : sizing.MarkedCols()) {
    TPhrase line;
    if (sizing.HasCustomColWidth(col)) line.Put("width", NumberText(sizing.GetColWidthChars(col)));
    line.Word(sizing.IsColHidden(col), "hidden").Number("outline level", sizing.GetColOutlineLevel(col), 0);
    line.Word(sizing.IsColCollapsed(col), "collapsed");
    AFeatures.push_back({"column", Utf16ToUtf8(ColToLetters(col)), line.Text()});
  }
  for (const int32_t row : sizing.MarkedRows()) {
    TPhrase line;
    if (sizing.HasCustomRowHeight(row)) line.Put("height", NumberText(sizing.GetRowHeightPt(row)));
    line.Word(sizing.IsRowHidden(row), "hidden").Number("outline level", sizing.GetRowOutlineLevel(row), 0);
    line.Word(sizing.IsRowCollapsed(row), "collapsed");
    AFeatures.push_back({"row", std::to_string(row), line.Text()});
  }
}

void AddSection(const char* AName, const THeaderFooterSection& ASection, TPhrase& APhrase) {
  if (ASection.IsEmpty()) return;
  APhrase.Put(AName, ASection.Left.ToUtf8() + "|" + ASection.Center.ToUtf8() + "|" + ASection.Right.ToUtf8());
}

void AddPageSetup(const TWorksheet& ASheet, TFeatures& AFeatures) {
  const TPageSetup& page = ASheet.PageSetup();
  const TPageSetup usual;
  TPhrase phrase;
  phrase.Word(page.Orientation == poLandscape, "landscape").Number("scale", page.ScalePercent, usual.ScalePercent);
  phrase.Number("paper", static_cast<double>(page.PaperSize()), static_cast<double>(usual.PaperSize()));
  phrase.Number("paper width", page.PaperWidthInches(), usual.PaperWidthInches());
  phrase.Number("paper height", page.PaperHeightInches(), usual.PaperHeightInches());
  if (page.FitToPage)
    phrase.Put("fit to", std::to_string(page.FitToWidth) + " x " + std::to_string(page.FitToHeight) + " pages");
  phrase.Number("first page", page.FirstPageNumber, 0).Word(page.BlackAndWhite, "black and white");
  phrase.Word(page.DraftQuality, "draft").Word(page.CenterHorizontally, "centered across");
  phrase.Word(page.CenterVertically, "centered down").Word(page.PrintGridlines, "grid lines");
  phrase.Word(page.PrintHeadings, "headings").Word(page.PageOrder == poOverThenDown, "over, then down");
  phrase.Number("comments", static_cast<double>(page.CommentsMode), 0);
  phrase.Number("errors", static_cast<double>(page.ErrorsMode), 0);
  const std::pair<const char*, double TPageSetup::*> margins[] = {
      {"left margin", &TPageSetup::MarginLeft},     {"right margin", &TPageSetup::MarginRight},
      {"top margin", &TPageSetup::MarginTop},       {"bottom margin", &TPageSetup::MarginBottom},
      {"header margin", &TPageSetup::MarginHeader}, {"footer margin", &TPageSetup::MarginFooter}};
  for (const auto& [name, margin] : margins) phrase.Number(name, page.*margin, usual.*margin);
  AddSection("header", page.Header, phrase);
  AddSection("footer", page.Footer, phrase);
  if (page.HasTitleRows())
    phrase.Put("title rows", std::to_string(page.TitleRows().StartRow) + ":" + std::to_string(page.TitleRows().EndRow));
  if (page.HasTitleCols())
    phrase.Put("title columns", Utf16ToUtf8(ColToLetters(page.TitleCols().StartCol)) + ":" +
                                    Utf16ToUtf8(ColToLetters(page.TitleCols().EndCol)));
  phrase.Put("row breaks", LinesText(page.RowBreaks())).Put("column breaks", LinesText(page.ColBreaks()));
  AFeatures.push_back({"page setup", "", phrase.Text()});
}

}  // namespace

std::vector<TFeature> SettingsOf(const TWorksheet& ASheet) {
  TFeatures features;
  AddView(ASheet, features);
  AddSizes(ASheet, features);
  AddPageSetup(ASheet, features);
  return features;
}

}  // namespace tessarine::cli
