#include <algorithm>
#include <cmath>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/core/html/Html.h>
#include <tessarine/core/sheet/Cell.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/formula/FunctionTable.h>
#include <tessarine/formula/RtdHub.h>
#include <tessarine/formula/library/detail/ArgReading.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

using namespace detail;

TCellValue CallRtd(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  return EvalRtd(AArgs, AContext, AContext.RtdHub);
}

// SPARKLINE ----------------------------------------------------------------------------------------------------------

constexpr uint32_t kMarkColor = 0xFF4472C4;

/// What the second argument says. Options that the chart in a cell has no use for are accepted and pass.
struct TSparklineOptions {
  TSparklineKind Kind = spkLine;
  double MaxVal = 0;  // 0: from the values
  uint32_t Color = kMarkColor;
  bool BlanksAreZero = false;
  bool TextsAreZero = false;
  bool IsReversed = false;
};

struct TSparklineKindName {
  std::u16string_view Name;
  TSparklineKind Kind;
};

constexpr TSparklineKindName kKindNames[] = {
    {u"bar", spkBar}, {u"column", spkColumn}, {u"line", spkLine}, {u"winloss", spkWinLoss}};

/// Takes over one pair; false for a value that the option cannot have.
bool SetOption(std::u16string_view AName, const TValueView& AValue, TSparklineOptions& AOptions) {
  std::u16string buffer;
  const std::u16string_view text = TrimSpaces(DisplayView(AValue, buffer));
  const auto isName = [&](std::u16string_view AOther) { return EqualAsciiNoCase(AName, AOther); };
  if (isName(u"charttype")) {
    const auto* const kind = std::find_if(std::begin(kKindNames), std::end(kKindNames),
                                          [&](const auto& AKind) { return EqualAsciiNoCase(AKind.Name, text); });
    if (kind == std::end(kKindNames)) return false;
    AOptions.Kind = kind->Kind;
  } else if (isName(u"max") || isName(u"ymax")) {
    return AsNumber(AValue, AOptions.MaxVal) && AOptions.MaxVal >= 0;
  } else if (isName(u"color") || isName(u"color1")) {
    AOptions.Color = CssColorToARGB(text);
  } else if (isName(u"empty")) {
    AOptions.BlanksAreZero = EqualAsciiNoCase(text, u"zero");
  } else if (isName(u"nan")) {
    AOptions.TextsAreZero = EqualAsciiNoCase(text, u"convert");
  } else if (isName(u"rtl")) {
    AOptions.IsReversed = AValue.Kind == cvkText ? EqualAsciiNoCase(text, u"true") : ValueIsTruthy(AValue);
  }
  return true;
}

/// Pairs of names and values in the first two columns, row by row.
bool ReadOptions(const TFormulaArg& AArg, TSparklineOptions& AOptions) {
  if (!AArg.IsRange) return AArg.FirstView().IsEmpty();
  if (AArg.ColCount < 2) return false;
  constexpr int32_t kMaxOptions = 1000;
  std::u16string buffer;
  for (int32_t row = 0; row < std::min(AArg.RowCount, kMaxOptions); ++row) {
    const std::u16string name(TrimSpaces(DisplayView(AArg.ViewAt(row, 0), buffer)));
    if (!name.empty() && !SetOption(name, AArg.ViewAt(row, 1), AOptions)) return false;
  }
  return true;
}

/// The series in order; nothing for one that is too long. Of two columns, or two rows, a line draws the second: the
/// first holds where its points lie.
std::vector<double> ReadSeries(const TFormulaArg& AArg, const TSparklineOptions& AOptions) {
  const bool isLine = AOptions.Kind == spkLine && AArg.IsRange;
  const bool secondCol = isLine && AArg.ColCount == 2 && AArg.RowCount >= 2;
  const bool secondRow = isLine && !secondCol && AArg.RowCount == 2 && AArg.ColCount >= 2;
  std::vector<double> series;
  const auto add = [&](int64_t AIndex, const TValueView& AValue) {
    if (secondCol && AIndex % 2 == 0) return;
    if (secondRow && AIndex < AArg.ColCount) return;
    if (AValue.Kind == cvkNumber) {
      series.push_back(AValue.Number);
    } else if (AValue.IsEmpty() ? AOptions.BlanksAreZero : AOptions.TextsAreZero) {
      series.push_back(0);
    }
  };
  if (!AOptions.BlanksAreZero) {
    ForEachNonBlank(AArg, add);
  } else if (AArg.CellCount() <= kMaxGeneratedCells) {
    int64_t index = 0;
    ForEachValue(AArg, [&](const TValueView& AValue) { add(index++, AValue); });
  }
  if (static_cast<int64_t>(series.size()) > kMaxGeneratedCells) series.clear();
  if (AOptions.IsReversed) std::reverse(series.begin(), series.end());
  return series;
}

/// The chart of a series. A bar shows the sum of its values. The scale of a win/loss chart ends at its smallest value:
/// all its columns are of full height.
TSparklineData MakeSparkline(std::vector<double> ASeries, const TSparklineOptions& AOptions) {
  TSparklineData chart;
  chart.Kind = AOptions.Kind;
  chart.Color = AOptions.Color;
  double largest = 0;
  double smallest = 0;
  for (const double value : ASeries) {
    chart.Value += value;
    const double size = std::fabs(value);
    largest = std::max(largest, size);
    if (size > 0 && (smallest == 0 || size < smallest)) smallest = size;
  }
  switch (AOptions.Kind) {
    case spkBar: chart.MaxVal = std::fabs(chart.Value); break;
    case spkWinLoss: chart.MaxVal = smallest; break;
    default: chart.MaxVal = largest; break;
  }
  if (AOptions.MaxVal > 0 && AOptions.Kind != spkWinLoss) chart.MaxVal = AOptions.MaxVal;
  if (AOptions.Kind == spkBar) return chart;
  chart.Value = 0;
  chart.Values = std::move(ASeries);
  return chart;
}

/// Puts the chart into the cell entered last, if that is a formula's.
void StoreSparkline(const TFormulaContext& AContext, TSparklineData AChart) {
  const TCellAddress address{AContext.EvalCol, AContext.EvalRow};
  if (!AContext.Sheet || !address.IsValid()) return;
  const TFormulaRecord* record = AContext.Sheet->Store().FindRecord(address.Col, address.Row);
  if (!record) return;
  const auto visiting = static_cast<uint8_t>(record->Flags & TFormulaRecord::frVisiting);
  TCell cell = AContext.Sheet->GetCell(address);
  if (cell.Sparkline == AChart) return;
  cell.Sparkline = std::move(AChart);
  AContext.Sheet->SetCell(address, cell);
  if (TFormulaRecord* stored = AContext.Sheet->Store().FindRecord(address.Col, address.Row)) stored->Flags |= visiting;
}

TCellValue NoSparkline(const TFormulaContext& AContext, const TCellValue& AError) {
  StoreSparkline(AContext, {});
  return AError;
}

/// The chart stands in for a text: what the cell shows beside it is empty.
TCellValue CallSparkline(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (AArgs.empty() || AArgs[0].IsLambda) return NoSparkline(AContext, ValueError());
  for (const TFormulaArg& arg : AArgs) {
    if (!arg.IsRange && arg.Scalar.IsError()) return NoSparkline(AContext, arg.Scalar);
  }
  TSparklineOptions options;
  if (AArgs.size() > 1 && !ReadOptions(AArgs[1], options)) return NoSparkline(AContext, ValueError());
  std::vector<double> series = ReadSeries(AArgs[0], options);
  if (series.empty()) return NoSparkline(AContext, NotAvailable());
  TSparklineData chart = MakeSparkline(std::move(series), options);
  if (!std::isfinite(chart.Value)) return NoSparkline(AContext, NumError());
  StoreSparkline(AContext, std::move(chart));
  return TextOf({});
}

// clang-format off
constexpr TFunctionDef kLiveDataFunctions[] = {
    {.Name = u"RTD", .MinArgs = 3, .Tier = ftrExtra, .Body = CallRtd, .Arguments = u"progid, server, topic1, [topic2], ...",
     .Description = u"The present value of a topic of a real-time source."},
    {.Name = u"SPARKLINE", .MinArgs = 1, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallSparkline, .InCompletion = true,
     .Arguments = u"values, [options]",
     .Description = u"A small line, column, win/loss or bar chart inside the cell; options are pairs of names and values."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> LiveDataFunctions() { return kLiveDataFunctions; }

}  // namespace tessarine
