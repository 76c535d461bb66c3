#include <tessarine/formula/library/detail/Query.h>

#include <algorithm>

#include <tessarine/formula/library/detail/ArrayBodies.h>
#include <tessarine/formula/library/detail/QueryRows.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

/// Rows times comparisons and group columns that one call may look at.
constexpr int64_t kMostQueryWork = int64_t{1} << 28;

bool IsTooMuchWork(const TQuery& AQuery, int64_t ARows) {
  auto columns = static_cast<int64_t>(AQuery.GroupCols.size());
  for (const auto& allOf : AQuery.AnyOf) columns += static_cast<int64_t>(allOf.size());
  return columns > kMostQueryWork / std::max<int64_t>(ARows, 1);
}

/// The display texts of the first row, or "Col1" and so on.
std::vector<TText> HeadersOf(const TFormulaArg& AData, int64_t AHeaderRows) {
  std::vector<TText> headers;
  std::u16string buffer;
  for (int32_t col = 0; col < AData.ColCount; ++col) {
    const TCellValue named = AHeaderRows > 0 ? AData.CellAt(0, col) : TCellValue::FromNumber(col + 1);
    if (AHeaderRows > 0) {
      headers.push_back(named.Kind == cvkText ? named.Text : named.ToDisplayString());
    } else {
      headers.emplace_back(u"Col" + named.ToDisplayString().ToString());
    }
  }
  return headers;
}

TCellValue ItemValue(const TQuerySource& ASource, const TQueryLines& ALines, const TQueryItem& AItem, uint32_t ALine) {
  if (AItem.Aggregate == qaNone) {
    if (!ASource.HasCol(AItem.Col)) return {};
    return TCellValue::FromView(ASource.Data.ViewAt(static_cast<int32_t>(ALines.Rows[ALine]), AItem.Col));
  }
  const auto col = std::lower_bound(ALines.StatsCols.begin(), ALines.StatsCols.end(), AItem.Col);
  if (col == ALines.StatsCols.end() || *col != AItem.Col) return TQueryStats().Result(AItem.Aggregate);
  const auto place = static_cast<size_t>(col - ALines.StatsCols.begin());
  return ALines.Stats[ALine * ALines.StatsCols.size() + place].Result(AItem.Aggregate);
}

/// The lines from OFFSET on, LIMIT of them, with the labels ahead.
TFormulaArg ResultOf(const TQuerySource& ASource, const TQueryLines& ALines, std::span<const uint32_t> AOrder,
                     bool AHasLabels) {
  const TQuery& query = ASource.Query;
  const auto count = static_cast<int64_t>(AOrder.size());
  const int64_t start = std::min(query.Offset.value_or(0), count);
  const int64_t most = std::min(query.Limit.value_or(count), count - start);
  if (most <= 0) return ErrorArg(ceNA);
  const int64_t rows = most + (AHasLabels ? 1 : 0);
  const auto cols = static_cast<int64_t>(query.Items.size());
  if (!MayGenerate(rows, cols, ASource.Data.CellCount())) return ErrorArg(ceNum);
  std::vector<TCellValue> cells;
  cells.reserve(static_cast<size_t>(rows * cols));
  if (AHasLabels) {
    for (const TQueryItem& item : query.Items) cells.push_back(TCellValue::FromText(item.Label));
  }
  for (const uint32_t line : AOrder.subspan(static_cast<size_t>(start), static_cast<size_t>(most))) {
    for (const TQueryItem& item : query.Items) cells.push_back(ItemValue(ASource, ALines, item, line));
  }
  return TFormulaArg::FromRange(std::move(cells), static_cast<int32_t>(rows), static_cast<int32_t>(cols));
}

TFormulaArg RunQuery(TFormulaArgs AArgs, bool AIsPlain) {
  if (AArgs.size() < 2) return ErrorArg(ceValue);
  const TAsRectangle data(AArgs[0]);
  if (data->CellCount() == 0) return ErrorArg(ceNA);
  std::u16string buffer;
  const std::u16string_view text = TrimSpaces(ArgTextView(AArgs[1], buffer));
  int64_t headerRows = 1;
  if (text.empty() || (AArgs.size() > 2 && !ArgAsInt64(AArgs[2], headerRows))) return ErrorArg(ceValue);
  const auto query = ParseQuery(text, HeadersOf(*data, headerRows));
  if (!query || query->Items.empty()) return ErrorArg(ceValue);
  const auto firstRow = static_cast<int32_t>(std::clamp<int64_t>(headerRows, 0, data->RowCount));
  if (IsTooMuchWork(*query, data->RowCount - firstRow)) return ErrorArg(ceNum);

  const TQuerySource source{*data, firstRow, *query};
  std::optional<TQueryLines> lines;
  if (!AIsPlain) lines = TrySelectLines(source);
  if (!lines) lines = SelectLinesPlain(source);
  if (lines->IsTooMuch) return ErrorArg(ceNum);
  if (lines->Rows.empty()) return ErrorArg(ceNA);
  const auto lineCount = static_cast<int64_t>(lines->Rows.size());
  const auto keyCount = static_cast<int64_t>(OrderKeysOf(source).size());
  if (!FitsArranged(lineCount, keyCount)) return ErrorArg(ceNum);
  const auto order = AIsPlain ? OrderLinesPlain(source, *lines) : OrderLines(source, *lines);
  return ResultOf(source, *lines, order, headerRows > 0);
}

}  // namespace

TFormulaArg EvalQuery(TFormulaArgs AArgs) { return RunQuery(AArgs, false); }
TFormulaArg EvalQueryPlain(TFormulaArgs AArgs) { return RunQuery(AArgs, true); }

TCellValue TQueryStats::Result(TQueryAggregate AAggregate) const {
  switch (AAggregate) {
    case qaSum: return NumberOrError(Sum);
    case qaCount: return TCellValue::FromNumber(static_cast<double>(Values));
    case qaAvg: return Numbers == 0 ? TCellValue() : NumberOrError(Sum / static_cast<double>(Numbers));
    case qaMin: return Numbers == 0 ? TCellValue() : NumberOrError(Min);
    case qaMax: return Numbers == 0 ? TCellValue() : NumberOrError(Max);
    case qaNone: break;
  }
  return {};
}

void TQueryLines::AddStats() {
  constexpr size_t kMostStats = size_t{1} << 24;
  IsTooMuch = IsTooMuch || (!StatsCols.empty() && Rows.size() > kMostStats / StatsCols.size());
  if (!IsTooMuch) Stats.resize(Rows.size() * StatsCols.size());
}

std::vector<int32_t> StatsColsOf(const TQuerySource& ASource) {
  std::vector<int32_t> cols;
  for (const TQueryItem& item : ASource.Query.Items) {
    if (item.Aggregate != qaNone && ASource.HasCol(item.Col)) cols.push_back(item.Col);
  }
  std::sort(cols.begin(), cols.end());
  cols.erase(std::unique(cols.begin(), cols.end()), cols.end());
  return cols;
}

std::vector<TQueryOrderKey> OrderKeysOf(const TQuerySource& ASource) {
  std::vector<bool> mayDecide(static_cast<size_t>(ASource.Data.ColCount), !ASource.Query.IsGrouped());
  for (const TQueryItem& item : ASource.Query.Items) {
    if (item.Aggregate == qaNone && ASource.HasCol(item.Col)) mayDecide[static_cast<size_t>(item.Col)] = true;
  }
  std::vector<TQueryOrderKey> keys;
  for (const TQueryOrderKey& key : ASource.Query.OrderKeys) {
    if (!ASource.HasCol(key.Col) || !mayDecide[static_cast<size_t>(key.Col)]) continue;
    keys.push_back(key);
    mayDecide[static_cast<size_t>(key.Col)] = false;
  }
  return keys;
}

}  // namespace tessarine::detail
