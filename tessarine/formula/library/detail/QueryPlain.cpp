#include <algorithm>
#include <unordered_map>

#include <tessarine/formula/library/detail/ExchangeSort.h>
#include <tessarine/formula/library/detail/QueryRows.h>

namespace tessarine::detail {

namespace {

bool KeepsRow(const TQuerySource& ASource, int32_t ARow) {
  const auto holds = [&](const TQueryComparison& AComparison) {
    if (!ASource.HasCol(AComparison.Col)) return false;
    const TValueView value = ASource.Data.ViewAt(ARow, AComparison.Col);
    return QueryHolds(AComparison.Operator, QueryCompare(value, AComparison.Literal.View()));
  };
  const auto& anyOf = ASource.Query.AnyOf;
  return anyOf.empty() || std::any_of(anyOf.begin(), anyOf.end(), [&](const auto& AAllOf) {
           return std::all_of(AAllOf.begin(), AAllOf.end(), holds);
         });
}

/// Units of all keys together that one call may look at.
constexpr size_t kMostKeyUnits = size_t{1} << 28;

/// No longer than ASoMuch and a text.
std::u16string GroupKey(const TQuerySource& ASource, int32_t ARow, size_t ASoMuch) {
  std::u16string key;
  bool isFirst = true;
  for (const int32_t col : ASource.Query.GroupCols) {
    if (!std::exchange(isFirst, false)) key += u'\u0001';
    if (ASource.HasCol(col)) AppendDisplayString(ASource.Data.ViewAt(ARow, col), key);
    if (key.size() > ASoMuch) break;
  }
  return key;
}

}  // namespace

int QueryCompare(const TValueView& ALeft, const TValueView& ARight) {
  double left = 0;
  double right = 0;
  if (AsNumber(ALeft, left) && AsNumber(ARight, right)) return left < right ? -1 : left > right ? 1 : 0;
  std::u16string leftBuffer;
  std::u16string rightBuffer;
  return DisplayView(ALeft, leftBuffer).compare(DisplayView(ARight, rightBuffer));
}

TQueryLines SelectLinesPlain(const TQuerySource& ASource) {
  TQueryLines lines;
  lines.StatsCols = StatsColsOf(ASource);
  const bool isGrouped = ASource.Query.IsGrouped();
  std::unordered_map<std::u16string, size_t> groups;
  size_t keyUnits = 0;
  for (int32_t row = ASource.FirstRow; row < ASource.Data.RowCount; ++row) {
    if (!KeepsRow(ASource, row)) continue;
    size_t line = lines.Rows.size();
    if (isGrouped) {
      std::u16string key = GroupKey(ASource, row, kMostKeyUnits - keyUnits);
      lines.IsTooMuch = key.size() > kMostKeyUnits - keyUnits;
      if (lines.IsTooMuch) return lines;
      keyUnits += key.size();
      line = groups.emplace(std::move(key), line).first->second;
    }
    if (line == lines.Rows.size()) {
      lines.Rows.push_back(static_cast<uint32_t>(row));
      lines.AddStats();
      if (lines.IsTooMuch) return lines;
    }
    TQueryStats* stats = lines.Stats.data() + line * lines.StatsCols.size();
    for (const int32_t col : lines.StatsCols) (stats++)->Add(ASource.Data.ViewAt(row, col));
  }
  return lines;
}

std::vector<uint32_t> OrderLinesPlain(const TQuerySource& ASource, const TQueryLines& ALines) {
  const std::vector<TQueryOrderKey> keys = OrderKeysOf(ASource);
  return ExchangeSortPlain(ALines.Rows.size(), [&](uint32_t ALeft, uint32_t ARight) {
    for (const TQueryOrderKey& key : keys) {
      const auto value = [&](uint32_t ALine) {
        return ASource.Data.ViewAt(static_cast<int32_t>(ALines.Rows[ALine]), key.Col);
      };
      const int order = QueryCompare(value(ALeft), value(ARight));
      if (order != 0) return key.Descending ? -order : order;
    }
    return 0;
  });
}

}  // namespace tessarine::detail
