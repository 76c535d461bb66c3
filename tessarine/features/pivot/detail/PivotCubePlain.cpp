#include <cmath>
#include <map>
#include <string>
#include <utility>

#include <tessarine/features/pivot/detail/PivotCube.h>
#include <tessarine/features/pivot/detail/PivotValues.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

struct TPlainBucket {
  std::vector<double> Numbers;
  int32_t CountAll = 0;
};

double PlainAggregate(TPivotAgg AAgg, const TPlainBucket& ABucket) {
  TPivotSums sums;
  sums.Records = static_cast<size_t>(ABucket.CountAll);
  sums.Numbers = ABucket.Numbers.size();
  bool isFirst = true;
  for (const double number : ABucket.Numbers) {
    sums.Sum += number;
    sums.Product *= number;
    if (isFirst || number < sums.Least) sums.Least = number;
    if (isFirst || number > sums.Greatest) sums.Greatest = number;
    isFirst = false;
  }
  const double mean = sums.Sum / static_cast<double>(sums.Numbers);
  for (const double number : ABucket.Numbers) sums.Squares += (number - mean) * (number - mean);
  return PivotAggregate(AAgg, sums);
}

using TPlainRecord = std::vector<TCellValue>;

TCellValue ValueAt(const TPlainRecord& ARecord, int32_t AField) {
  return AField >= 0 && static_cast<size_t>(AField) < ARecord.size() ? ARecord[static_cast<size_t>(AField)]
                                                                     : TCellValue();
}

bool PassesSelections(const TPivotTable& ATable, const TPlainRecord& ARecord) {
  for (const auto& [field, items] : ATable.FilterSelections) {
    if (items.empty() || field < 0 || static_cast<size_t>(field) >= ARecord.size()) continue;
    const TText label = PivotLabel(GroupedPivotValue(ATable, field, ValueAt(ARecord, field)));
    bool found = false;
    for (const TText& item : items) found = found || EqualAsciiNoCase(item, label);
    if (!found) return false;
  }
  return true;
}

/// Keys as texts, and their numbers in order of first sight.
class TPlainKeys {
 public:
  TPlainKeys(const TPivotTable& ATable, const std::vector<TPivotFieldRef>& AFields)
      : FTable(ATable), FFields(AFields), FParts(AFields.size()) {
    Keys.FieldCount = AFields.size();
    Keys.Labels.resize(AFields.size());
  }

  uint32_t Add(const TPlainRecord& ARecord) {
    std::u16string key;
    std::vector<uint32_t> parts;
    for (size_t i = 0; i < FFields.size(); ++i) {
      const int32_t field = FFields[i].CacheFieldIndex;
      const TCellValue value = GroupedPivotValue(FTable, field, ValueAt(ARecord, field));
      std::u16string part;
      AppendKeyPart(value.View(), part);
      key += (i > 0 ? u"\u0001" : u"") + part;
      const auto [found, isNew] = FParts[i].try_emplace(part, static_cast<uint32_t>(Keys.Labels[i].size()));
      if (isNew) Keys.Labels[i].push_back(PivotLabel(value));
      parts.push_back(found->second);
    }
    const auto [found, isNew] = FNumbers.try_emplace(key, static_cast<uint32_t>(Keys.Count));
    if (isNew) {
      Keys.Parts.insert(Keys.Parts.end(), parts.begin(), parts.end());
      ++Keys.Count;
    }
    return found->second;
  }

  TPivotKeys Keys;

 private:
  const TPivotTable& FTable;
  const std::vector<TPivotFieldRef>& FFields;
  std::vector<std::map<std::u16string, uint32_t>> FParts;
  std::map<std::u16string, uint32_t> FNumbers;
};

}  // namespace

TPivotCube BuildPivotCubePlain(const TPivotCache& ACache, const TPivotTable& ATable) {
  const auto rowFields = ATable.FieldsFor(pfrRow);
  const auto columnFields = ATable.FieldsFor(pfrColumn);
  const auto values = ATable.FieldsFor(pfrValue);
  TPlainKeys rows(ATable, rowFields);
  TPlainKeys columns(ATable, columnFields);
  std::map<std::pair<uint32_t, uint32_t>, std::vector<TPlainBucket>> buckets;
  for (size_t index = 0; index < ACache.RecordCount(); ++index) {
    TPlainRecord record;
    for (size_t field = 0; field < ACache.FieldCount(); ++field) record.push_back(ACache.Value(index, field));
    for (const TPivotCalcField& field : ATable.CalcFields)
      record.push_back(TPivotFormula(ACache, field.Formula).Evaluate(ACache.Records(), index));
    if (!ACache.RowPassesSlicers(record) || !PassesSelections(ATable, record)) continue;
    const uint32_t row = rows.Add(record);
    auto& place = buckets[{row, columns.Add(record)}];
    place.resize(values.size());
    for (size_t i = 0; i < values.size(); ++i) {
      ++place[i].CountAll;
      double number = 0;
      if (TryPivotNumber(ValueAt(record, values[i].CacheFieldIndex).View(), number)) place[i].Numbers.push_back(number);
    }
  }
  TPivotCube cube{std::move(rows.Keys), std::move(columns.Keys), values.size(), {}, {}};
  for (const auto& [place, ofValues] : buckets) {
    cube.Places.push_back({place.first, place.second});
    for (size_t i = 0; i < values.size(); ++i) cube.Aggregates.push_back(PlainAggregate(values[i].Agg, ofValues[i]));
  }
  return cube;
}

}  // namespace tessarine::detail
