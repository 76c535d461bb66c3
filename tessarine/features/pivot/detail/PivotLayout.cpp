#include <tessarine/features/pivot/detail/PivotLayout.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <string>
#include <utility>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/formula/library/detail/ExchangeSort.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

TPivotCube WithColumnKey(TPivotCube ACube) {
  TPivotKeys& columns = ACube.Columns;
  if (columns.Count > 0) return ACube;
  columns.Count = 1;
  columns.FieldCount = 0;  // its labels are empty
  return ACube;
}

/// ANumerator / ADivisor, 0 for a division by zero.
double Ratio(double ANumerator, double ADivisor) { return ADivisor == 0 ? 0 : ANumerator / ADivisor; }

/// The order in which an exchange sort leaves ACount positions; ACompare is a total order with ties.
template <class F>
std::vector<uint32_t> ExchangeOrder(size_t ACount, F&& ACompare) {
  std::vector<uint32_t> sorted(ACount);
  std::iota(sorted.begin(), sorted.end(), 0u);
  std::stable_sort(sorted.begin(), sorted.end(),
                   [&](uint32_t ALeft, uint32_t ARight) { return ACompare(ALeft, ARight) < 0; });
  std::vector<uint32_t> ends;
  for (size_t i = 1; i <= ACount; ++i) {
    if (i == ACount || ACompare(sorted[i - 1], sorted[i]) != 0) ends.push_back(static_cast<uint32_t>(i));
  }
  return ExchangeSortTies(sorted, ends);
}

}  // namespace

TText PivotFieldName(const TPivotCache& ACache, int32_t AField, const TText& AOther) {
  const bool isThere = AField >= 0 && static_cast<size_t>(AField) < ACache.FieldCount();
  return isThere ? ACache.FieldNames()[static_cast<size_t>(AField)] : AOther;
}

std::u16string_view PivotAggPrefix(TPivotAgg AAgg) {
  static constexpr std::array<std::u16string_view, 11> kPrefixes = {
      u"Sum of ",     u"Count of ",  u"Count of ",   u"Average of ", u"Min of ", u"Max of ",
      u"Product of ", u"StdDev of ", u"StdDevp of ", u"Var of ",     u"Varp of "};
  const auto index = static_cast<size_t>(AAgg);
  return kPrefixes[index < kPrefixes.size() ? index : 0];
}

TText PivotValueCaption(const TPivotCache& ACache, const TPivotFieldRef& AValue) {
  if (!AValue.CustomName.IsEmpty()) return AValue.CustomName;
  std::u16string text(PivotAggPrefix(AValue.Agg));
  text += PivotFieldName(ACache, AValue.CacheFieldIndex, u"Value").View();
  return text;
}

TText PivotNumberFormat(const TPivotFieldRef& AValue) {
  const std::u16string_view code = TrimSpaces(AValue.NumberFormat);
  return EqualAsciiNoCase(code, u"General") ? TText() : TText(code);
}

double PivotShownValue(TPivotShowAs AShowAs, double AValue, double ARowTotal, double AColumnTotal, double AGrandTotal,
                       double APosition) {
  switch (AShowAs) {
    case psaPercentOfGrand: return Ratio(AValue, AGrandTotal);
    case psaPercentOfRow: return Ratio(AValue, ARowTotal);
    case psaPercentOfCol: return Ratio(AValue, AColumnTotal);
    case psaIndex: return Ratio(AValue * AGrandTotal, ARowTotal * AColumnTotal);
    case psaRank: return APosition;
    case psaNormal:
    case psaPercentOf:
    case psaDifferenceFrom:
    case psaRunningTotal: break;
  }
  return AValue;
}

TPivotLayout::TPivotLayout(const TPivotCache& ACache, const TPivotTable& ATable, TPivotCube ACube)
    : RowFields(ATable.FieldsFor(pfrRow)),
      ColumnFields(ATable.FieldsFor(pfrColumn)),
      ValueFields(ATable.FieldsFor(pfrValue)),
      Cube(WithColumnKey(std::move(ACube))) {
  if (ATable.LayoutForm == plfTabular) LabelColumns = std::max<int64_t>(1, static_cast<int64_t>(RowFields.size()));
  if (!ColumnFields.empty())
    HeaderRows = static_cast<int64_t>(ColumnFields.size()) + 1 + (ValueFields.size() > 1 ? 1 : 0);
  HasTotalColumn = ATable.ColGrandTotals && !ColumnFields.empty();
  HasTotalRow = ATable.RowGrandTotals;
  for (const TPivotFieldRef& value : ValueFields) Captions.push_back(PivotValueCaption(ACache, value));
  AddTotals();
  FRowOrder.resize(Cube.Rows.Count);
  std::iota(FRowOrder.begin(), FRowOrder.end(), 0u);
  SortRows(ATable);
  AddEntries(ATable.LayoutForm);
}

TText TPivotLayout::ColumnLabel(size_t AKey, size_t AField) const {
  return AField < Cube.Columns.FieldCount ? Cube.Columns.LabelOf(AKey, AField) : TText();
}

/// All totals are sums of aggregates, added in the order of row keys, column keys and value fields as first seen.
void TPivotLayout::AddTotals() {
  const size_t values = ValueFields.size();
  FRowTotals.resize(Cube.Rows.Count * values);
  ColumnTotals.resize(Cube.Columns.Count * values);
  GrandTotals.resize(values);
  FFirstPlaces.resize(Cube.Rows.Count + 1);
  for (size_t place = 0; place < Cube.Places.size(); ++place) {
    const auto [row, column] = Cube.Places[place];
    FFirstPlaces[row + 1] = place + 1;
    const std::span<const double> aggregates = Cube.AggregatesOf(place);
    for (size_t i = 0; i < values; ++i) {
      FRowTotals[row * values + i] += aggregates[i];
      ColumnTotals[column * values + i] += aggregates[i];
      GrandTotals[i] += aggregates[i];
    }
  }
}

void TPivotLayout::SortRows(const TPivotTable& ATable) {
  const size_t values = ValueFields.size();
  const int sign = ATable.SortAscending ? 1 : -1;
  if (Cube.Rows.Count < 2) return;
  if (ATable.SortValueOrdinal >= 0 && static_cast<size_t>(ATable.SortValueOrdinal) < values) {
    const auto total = [&](uint32_t ARow) {
      return FRowTotals[ARow * values + static_cast<size_t>(ATable.SortValueOrdinal)];
    };
    const auto compare = [&](uint32_t ALeft, uint32_t ARight) {
      return total(ALeft) > total(ARight) ? sign : total(ALeft) < total(ARight) ? -sign : 0;
    };
    const bool hasNan =
        std::any_of(FRowOrder.begin(), FRowOrder.end(), [&](uint32_t ARow) { return std::isnan(total(ARow)); });
    if (!hasNan) {
      FRowOrder = ExchangeOrder(Cube.Rows.Count, compare);
    } else {  // what is not a number equals everything, so there is no total order
      FRowOrder = Cube.Rows.Count <= kMaxMixedKeys ? ExchangeSortPlain(Cube.Rows.Count, compare)
                                                   : TolerantMergeSort(Cube.Rows.Count, compare);
    }
  } else if (ATable.SortFieldIndex >= 0 && Cube.Rows.FieldCount > 0) {
    const auto found = std::find_if(RowFields.begin(), RowFields.end(), [&](const TPivotFieldRef& ARef) {
      return ARef.CacheFieldIndex == ATable.SortFieldIndex;
    });
    const size_t field = found == RowFields.end() ? 0 : static_cast<size_t>(found - RowFields.begin());
    FRowOrder = ExchangeOrder(Cube.Rows.Count, [&](uint32_t ALeft, uint32_t ARight) {
      return sign * CompareAsciiNoCase(Cube.Rows.LabelOf(ALeft, field), Cube.Rows.LabelOf(ARight, field));
    });
  }
}

void TPivotLayout::AddEntries(TPivotLayoutForm AForm) {
  if (RowFields.empty()) {
    Entries.push_back({{}, 0, std::vector<uint32_t>(Cube.Rows.Count, 0)});
  } else if (AForm != plfTabular && RowFields.size() > 1) {
    AddOutline();
  } else {
    for (const uint32_t row : FRowOrder)
      Entries.push_back({AForm == plfTabular ? TText() : Cube.Rows.LabelOf(row, 0), 0, {row}});
  }
}

/// One entry for each distinct beginning of the keys, those of more parts below those of fewer; siblings in the order
/// in which the keys, as they are listed, first have them.
void TPivotLayout::AddOutline() {
  const size_t depth = RowFields.size();
  if (Cube.Rows.Count > kMaxPivotParts / depth) throw ELimit("The pivot table has too many row labels");
  struct TNode {
    uint32_t Part = 0;
    int32_t Depth = 0;
    std::vector<uint32_t> Children;
    std::vector<uint32_t> Keys;
  };
  std::vector<TNode> nodes(1);
  boost::unordered_flat_map<uint64_t, uint32_t> children;  // parent << 32 | part
  for (const uint32_t row : FRowOrder) {
    uint32_t parent = 0;
    for (size_t field = 0; field < depth; ++field) {
      const uint32_t part = Cube.Rows.PartOf(row, field);
      const auto [found, isNew] =
          children.try_emplace(uint64_t{parent} << 32 | part, static_cast<uint32_t>(nodes.size()));
      const uint32_t node = found->second;
      if (isNew) {
        nodes[parent].Children.push_back(node);
        nodes.push_back({part, static_cast<int32_t>(field), {}, {}});
      }
      nodes[node].Keys.push_back(row);
      parent = node;
    }
  }
  std::vector<uint32_t> open(nodes[0].Children.rbegin(), nodes[0].Children.rend());
  while (!open.empty()) {
    TNode& node = nodes[open.back()];
    open.pop_back();
    Entries.push_back({Cube.Rows.Labels[static_cast<size_t>(node.Depth)][node.Part], node.Depth, std::move(node.Keys)});
    open.insert(open.end(), node.Children.rbegin(), node.Children.rend());
  }
}

std::vector<double> TPivotLayout::ValuesOf(const TPivotEntry& AEntry) const {
  const size_t values = ValueFields.size();
  std::vector<double> sums(Cube.Columns.Count * values);
  for (const uint32_t row : AEntry.Keys) {
    for (size_t place = FFirstPlaces[row]; place < FFirstPlaces[row + 1]; ++place) {
      const std::span<const double> aggregates = Cube.AggregatesOf(place);
      for (size_t i = 0; i < values; ++i) sums[Cube.Places[place].Column * values + i] += aggregates[i];
    }
  }
  return sums;
}

}  // namespace tessarine::detail
