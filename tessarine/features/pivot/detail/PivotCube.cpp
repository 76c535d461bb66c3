#include <tessarine/features/pivot/detail/PivotCube.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <string>
#include <utility>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/features/pivot/detail/PivotValues.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

constexpr uint32_t kNone = 0xFFFFFFFFu;
constexpr uint64_t kDenseLimit = uint64_t{1} << 22;  // codes up to here are looked up in an array

void CheckPivotSize(uint64_t ALeft, uint64_t ARight, uint64_t ALimit, const char* AWhat) {
  if (ARight == 0 || ALeft <= ALimit / ARight) return;
  throw ELimit(std::string("The pivot table has more than ") + std::to_string(ALimit) + " " + AWhat);
}

/// Gives each value of a column what AMake answers for it, which depends on nothing but the value. AMake is asked once
/// an item and number, not once a record. ATake(record, answer) gets the answers in order.
template <class F, class G>
void ForEachCode(const TPivotColumn* AColumn, size_t ACount, F&& AMake, G&& ATake) {
  constexpr size_t kSmall = 4096;  // whole numbers below this are looked up in an array
  size_t record = 0;
  if (AColumn) {
    std::vector<uint32_t> items(AColumn->Items().size(), kNone);
    std::vector<uint32_t> small(kSmall, kNone);
    boost::unordered_flat_map<uint64_t, uint32_t> others;
    for (const uint64_t word : AColumn->Words()) {
      uint32_t* code = nullptr;
      if (TPivotColumn::IsItem(word)) {
        code = &items[TPivotColumn::ItemOf(word)];
      } else {
        const double number = TPivotColumn::NumberOf(word);
        const bool isSmall = number >= 0 && number < static_cast<double>(kSmall) &&
                             static_cast<double>(static_cast<size_t>(number)) == number;
        code = isSmall ? &small[static_cast<size_t>(number)] : &others.try_emplace(word, kNone).first->second;
      }
      if (*code == kNone) *code = AMake(AColumn->ValueOf(word));
      ATake(record++, *code);
    }
  }
  if (record >= ACount) return;
  for (const uint32_t code = AMake(TValueView()); record < ACount; ++record) ATake(record, code);
}

/// The items of one field by number, and the number that each record has.
struct TPartCodes {
  std::vector<uint32_t> Codes;
  std::vector<TText> Labels;
};

TPartCodes PartsOf(TPivotFields& AFields, const TPivotTable& ATable, int32_t AField) {
  TPartCodes parts;
  parts.Codes.resize(AFields.RecordCount());
  boost::unordered_flat_map<std::u16string, uint32_t> numbers;
  std::u16string key;
  const auto make = [&](const TValueView& AValue) {
    const TCellValue value = GroupedPivotValue(ATable, AField, TCellValue::FromView(AValue));
    key.clear();
    AppendKeyPart(value.View(), key);
    const auto [found, isNew] = numbers.try_emplace(key, static_cast<uint32_t>(parts.Labels.size()));
    if (isNew) parts.Labels.push_back(PivotLabel(value));
    return found->second;
  };
  ForEachCode(AFields.Column(AField), AFields.RecordCount(), make,
              [&](size_t ARecord, uint32_t ACode) { parts.Codes[ARecord] = ACode; });
  return parts;
}

/// Which records are left in; empty while all are.
class TPassing {
 public:
  template <class F>  // F: bool(const TText& text of a value)
  void Restrict(TPivotFields& AFields, int32_t AField, const std::vector<TText>& AItems, F&& ATextOf) {
    if (AItems.empty() || AField < 0 || static_cast<size_t>(AField) >= AFields.FieldCount()) return;
    FPasses.resize(AFields.RecordCount(), 1);
    const auto make = [&](const TValueView& AValue) -> uint32_t {
      const TText text = ATextOf(TCellValue::FromView(AValue));
      return std::any_of(AItems.begin(), AItems.end(),
                         [&](const TText& AItem) { return EqualAsciiNoCase(AItem, text); })
                 ? 1
                 : 0;
    };
    ForEachCode(AFields.Column(AField), AFields.RecordCount(), make,
                [&](size_t ARecord, uint32_t APasses) { FPasses[ARecord] &= static_cast<uint8_t>(APasses); });
  }

  void RestrictToLabels(TPivotFields& AFields, const TPivotTable& ATable, int32_t AField,
                        const std::vector<TText>& AItems) {
    Restrict(AFields, AField, AItems,
             [&](const TCellValue& AValue) { return PivotLabel(GroupedPivotValue(ATable, AField, AValue)); });
  }

  bool Has(size_t ARecord) const { return FPasses.empty() || FPasses[ARecord] != 0; }

 private:
  std::vector<uint8_t> FPasses;
};

/// Numbers codes below ARadix in order of first sight; records that are not left in get kNone. Answers the record in
/// which each number was seen first.
std::vector<uint32_t> NumberCodes(std::span<const uint64_t> ACodes, uint64_t ARadix, const TPassing& APassing,
                                  std::vector<uint32_t>& ANumbers) {
  std::vector<uint32_t> firsts;
  const auto number = [&](auto&& AFind) {
    for (size_t record = 0; record < ACodes.size(); ++record) {
      if (!APassing.Has(record)) {
        ANumbers[record] = kNone;
        continue;
      }
      uint32_t& found = AFind(ACodes[record]);
      if (found == kNone) {
        found = static_cast<uint32_t>(firsts.size());
        firsts.push_back(static_cast<uint32_t>(record));
      }
      ANumbers[record] = found;
    }
  };
  ANumbers.resize(ACodes.size());
  if (ARadix <= kDenseLimit) {
    std::vector<uint32_t> dense(static_cast<size_t>(ARadix), kNone);
    number([&](uint64_t ACode) -> uint32_t& { return dense[static_cast<size_t>(ACode)]; });
  } else {
    boost::unordered_flat_map<uint64_t, uint32_t> sparse;
    number([&](uint64_t ACode) -> uint32_t& { return sparse.try_emplace(ACode, kNone).first->second; });
  }
  return firsts;
}

/// Codes of several fields run together into one, made small again before it could overflow.
class TJoinedCodes {
 public:
  explicit TJoinedCodes(size_t ACount) : FCodes(ACount, 0) {}

  void Join(std::span<const uint32_t> ACodes, uint64_t ARadix) {
    if (ARadix > (uint64_t{1} << 62) / FRadix) {
      std::vector<uint32_t> numbers;
      FRadix = std::max<uint64_t>(NumberCodes(FCodes, FRadix, {}, numbers).size(), 1);
      std::copy(numbers.begin(), numbers.end(), FCodes.begin());
    }
    for (size_t record = 0; record < FCodes.size(); ++record)
      FCodes[record] = FCodes[record] * ARadix + (ACodes[record] == kNone ? 0 : ACodes[record]);
    FRadix *= ARadix;
  }

  std::vector<uint32_t> Number(const TPassing& APassing, std::vector<uint32_t>& ANumbers) const {
    return NumberCodes(FCodes, FRadix, APassing, ANumbers);
  }

 private:
  std::vector<uint64_t> FCodes;
  uint64_t FRadix = 1;
};

/// The keys of the records in some fields; ANumbers gets the key of each record, kNone for one that is not left in.
TPivotKeys KeysOf(TPivotFields& AFields, const TPivotTable& ATable, const std::vector<TPivotFieldRef>& ARefs,
                  const TPassing& APassing, std::vector<uint32_t>& ANumbers) {
  std::map<int32_t, TPartCodes> parts;
  TJoinedCodes joined(AFields.RecordCount());
  for (const TPivotFieldRef& ref : ARefs) {
    if (parts.contains(ref.CacheFieldIndex)) continue;  // a field given twice tells no keys apart
    TPartCodes& field = parts[ref.CacheFieldIndex] = PartsOf(AFields, ATable, ref.CacheFieldIndex);
    joined.Join(field.Codes, std::max<uint64_t>(field.Labels.size(), 1));
  }
  const std::vector<uint32_t> firsts = joined.Number(APassing, ANumbers);
  CheckPivotSize(firsts.size(), ARefs.size(), kMaxPivotParts, "labels");
  TPivotKeys keys;
  keys.FieldCount = ARefs.size();
  keys.Count = firsts.size();
  keys.Parts.reserve(firsts.size() * ARefs.size());
  for (const uint32_t record : firsts) {
    for (const TPivotFieldRef& ref : ARefs) keys.Parts.push_back(parts[ref.CacheFieldIndex].Codes[record]);
  }
  for (const TPivotFieldRef& ref : ARefs) keys.Labels.push_back(parts[ref.CacheFieldIndex].Labels);
  return keys;
}

/// What the aggregates of one field need beside the sum.
struct TNeeded {
  bool Limits = false;
  bool Product = false;
  bool Squares = false;

  void Add(TPivotAgg AAgg) {
    Limits = Limits || AAgg == paMin || AAgg == paMax;
    Product = Product || AAgg == paProduct;
    Squares = Squares || (AAgg >= paStdDev && AAgg <= paVarp);
  }
};

/// Calls AVisit(bucket, number) for the numbers of a column in order of the records.
template <class F>
void ForEachNumber(const TPivotColumn* AColumn, std::span<const uint32_t> ABuckets, F&& AVisit) {
  if (!AColumn) return;
  struct TItemNumber {
    double Number = 0;
    bool HasNumber = false;
  };
  std::vector<TItemNumber> items;
  for (const TCellValue& item : AColumn->Items()) {
    TItemNumber& entry = items.emplace_back();
    entry.HasNumber = TryPivotNumber(item.View(), entry.Number);
  }
  const std::span<const uint64_t> words = AColumn->Words();
  for (size_t record = 0; record < words.size(); ++record) {
    const uint32_t bucket = ABuckets[record];
    if (bucket == kNone) continue;
    if (!TPivotColumn::IsItem(words[record])) {
      AVisit(bucket, TPivotColumn::NumberOf(words[record]));
    } else if (const TItemNumber& item = items[TPivotColumn::ItemOf(words[record])]; item.HasNumber) {
      AVisit(bucket, item.Number);
    }
  }
}

/// The sums of one column by bucket. ACounts holds the records of each bucket.
std::vector<TPivotSums> SumsOf(const TPivotColumn* AColumn, std::span<const uint32_t> ABuckets,
                               std::span<const uint32_t> ACounts, TNeeded ANeeded) {
  std::vector<TPivotSums> sums(ACounts.size());
  for (size_t i = 0; i < sums.size(); ++i) sums[i].Records = ACounts[i];
  ForEachNumber(AColumn, ABuckets, [&](uint32_t ABucket, double ANumber) {
    ++sums[ABucket].Numbers;
    sums[ABucket].Sum += ANumber;
  });
  if (ANeeded.Limits) {
    std::vector<bool> seen(sums.size());
    ForEachNumber(AColumn, ABuckets, [&](uint32_t ABucket, double ANumber) {
      TPivotSums& bucket = sums[ABucket];
      if (!seen[ABucket] || ANumber < bucket.Least) bucket.Least = ANumber;
      if (!seen[ABucket] || ANumber > bucket.Greatest) bucket.Greatest = ANumber;
      seen[ABucket] = true;
    });
  }
  if (ANeeded.Product)
    ForEachNumber(AColumn, ABuckets, [&](uint32_t ABucket, double ANumber) { sums[ABucket].Product *= ANumber; });
  if (ANeeded.Squares) {
    ForEachNumber(AColumn, ABuckets, [&](uint32_t ABucket, double ANumber) {
      const double distance = ANumber - sums[ABucket].Sum / static_cast<double>(sums[ABucket].Numbers);
      sums[ABucket].Squares += distance * distance;
    });
  }
  return sums;
}

/// Fills the cube's aggregates. ABuckets gives each record its bucket, APlaceOf each bucket its place.
void FillAggregates(TPivotFields& AFields, const std::vector<TPivotFieldRef>& AValues,
                    std::span<const uint32_t> ABuckets, std::span<const uint32_t> APlaceOf, TPivotCube& ACube) {
  std::vector<uint32_t> counts(APlaceOf.size());
  for (const uint32_t bucket : ABuckets) {
    if (bucket != kNone) ++counts[bucket];
  }
  std::map<int32_t, TNeeded> needed;
  for (const TPivotFieldRef& value : AValues) needed[value.CacheFieldIndex].Add(value.Agg);
  ACube.Aggregates.resize(APlaceOf.size() * AValues.size());
  for (const auto& [field, what] : needed) {
    const std::vector<TPivotSums> sums = SumsOf(AFields.Column(field), ABuckets, counts, what);
    for (size_t i = 0; i < AValues.size(); ++i) {
      if (AValues[i].CacheFieldIndex != field) continue;
      for (size_t bucket = 0; bucket < sums.size(); ++bucket)
        ACube.Aggregates[APlaceOf[bucket] * AValues.size() + i] = PivotAggregate(AValues[i].Agg, sums[bucket]);
    }
  }
}

/// Orders the places of the buckets, each known by a record of it, by row and column.
std::vector<uint32_t> OrderPlaces(std::span<const uint32_t> AFirsts, std::span<const uint32_t> ARows,
                                  std::span<const uint32_t> AColumns, TPivotCube& ACube) {
  std::vector<uint32_t> order(AFirsts.size());
  std::iota(order.begin(), order.end(), 0u);
  const auto key = [&](uint32_t ABucket) {
    return uint64_t{ARows[AFirsts[ABucket]]} << 32 | AColumns[AFirsts[ABucket]];
  };
  std::sort(order.begin(), order.end(), [&](uint32_t ALeft, uint32_t ARight) { return key(ALeft) < key(ARight); });
  std::vector<uint32_t> placeOf(AFirsts.size());
  for (uint32_t place = 0; place < order.size(); ++place) {
    placeOf[order[place]] = place;
    const uint32_t record = AFirsts[order[place]];
    ACube.Places.push_back({ARows[record], AColumns[record]});
  }
  return placeOf;
}

}  // namespace

double PivotAggregate(TPivotAgg AAgg, const TPivotSums& ASums) {
  const auto count = static_cast<double>(ASums.Numbers);
  if (AAgg == paCount) return static_cast<double>(ASums.Records);
  if (AAgg == paCountNums) return count;
  if (ASums.Numbers == 0) return 0;
  switch (AAgg) {
    case paAverage: return ASums.Sum / count;
    case paMin: return ASums.Least;
    case paMax: return ASums.Greatest;
    case paProduct: return ASums.Product;
    case paStdDev: return ASums.Numbers < 2 ? 0 : std::sqrt(ASums.Squares / (count - 1));
    case paStdDevp: return std::sqrt(ASums.Squares / count);
    case paVar: return ASums.Numbers < 2 ? 0 : ASums.Squares / (count - 1);
    case paVarp: return ASums.Squares / count;
    default: return ASums.Sum;
  }
}

TPivotCube BuildPivotCube(const TPivotCache& ACache, const TPivotTable& ATable) {
  TPivotFields fields(ACache, ATable);
  const auto values = ATable.FieldsFor(pfrValue);
  CheckPivotSize(ACache.RecordCount(), ATable.Fields.size() + ATable.FilterSelections.size(), kMaxPivotSteps,
                 "fields of records");
  TPassing passing;
  for (const auto& [field, items] : ACache.SlicerFilters())
    passing.Restrict(fields, field, items, [](const TCellValue& AValue) { return AValue.ToDisplayString(); });
  for (const auto& [field, items] : ATable.FilterSelections) passing.RestrictToLabels(fields, ATable, field, items);
  TPivotCube cube;
  cube.ValueCount = values.size();
  std::vector<uint32_t> rows;
  std::vector<uint32_t> columns;
  cube.Rows = KeysOf(fields, ATable, ATable.FieldsFor(pfrRow), passing, rows);
  cube.Columns = KeysOf(fields, ATable, ATable.FieldsFor(pfrColumn), passing, columns);
  std::vector<uint32_t> buckets;
  TJoinedCodes joined(ACache.RecordCount());
  joined.Join(rows, std::max<uint64_t>(cube.Rows.Count, 1));
  joined.Join(columns, std::max<uint64_t>(cube.Columns.Count, 1));
  const std::vector<uint32_t> firsts = joined.Number(passing, buckets);
  CheckPivotSize(firsts.size(), values.size(), kMaxPivotParts, "aggregates");
  const std::vector<uint32_t> placeOf = OrderPlaces(firsts, rows, columns, cube);
  FillAggregates(fields, values, buckets, placeOf, cube);
  return cube;
}

double AggregatePivotRecords(const TPivotCache& ACache, const TPivotTable& ATable, const TPivotFieldRef& AValue,
                             std::span<const int32_t> AFields, std::span<const TText> AItems) {
  TPivotFields fields(ACache, ATable);
  TPassing passing;
  for (size_t i = 0; i < AFields.size(); ++i) passing.RestrictToLabels(fields, ATable, AFields[i], {AItems[i]});
  std::vector<uint32_t> buckets(ACache.RecordCount(), 0);
  uint32_t count = 0;
  for (size_t record = 0; record < buckets.size(); ++record) {
    if (passing.Has(record)) {
      ++count;
    } else {
      buckets[record] = kNone;
    }
  }
  TNeeded needed;
  needed.Add(AValue.Agg);
  return PivotAggregate(AValue.Agg,
                        SumsOf(fields.Column(AValue.CacheFieldIndex), buckets, std::span(&count, 1), needed)[0]);
}

std::vector<TText> PivotItemLabels(const TPivotCache& ACache, const TPivotTable& ATable, int32_t AField) {
  TPivotFields fields(ACache, ATable);
  return fields.RecordCount() == 0 ? std::vector<TText>() : PartsOf(fields, ATable, AField).Labels;
}

}  // namespace tessarine::detail
