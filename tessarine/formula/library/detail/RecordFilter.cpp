#include <tessarine/formula/library/detail/RecordFilter.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>

#include <tessarine/core/values/Coercion.h>
#include <tessarine/formula/library/detail/ArgReading.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

bool IsOrder(const TCriterion& ACriterion) {
  return ACriterion.Operator() != coEqual && ACriterion.Operator() != coDiffers;
}

/// Takes from AMask what does not compare with ALimit; NaN compares with nothing.
template <class TCompares>
void KeepWhere(const double* ANumbers, double ALimit, std::vector<uint8_t>& AMask, TCompares ACompares) {
  for (size_t i = 0; i < AMask.size(); ++i) AMask[i] &= static_cast<uint8_t>(ACompares(ANumbers[i], ALimit));
}

}  // namespace

int32_t HeaderColumn(const TFormulaArg& ADatabase, const TValueView& AName) {
  for (int32_t col = 0; col < ADatabase.ColCount; ++col) {
    if (EqualDisplayText(ADatabase.ViewAt(0, col), AName)) return col;
  }
  return -1;
}

/// Rows of criteria by the keys of one of their conditions of equality. Every row that a record meets is filed under
/// the number or under the text of the record's value; what is found there need not be met.
class TRecordFilter::TKeyFile {
 public:
  /// Files a row under the one of its keys that has the fewest rows so far. False when it has none, or when so many
  /// rows share its keys that comparisons, if it has some, leave less work.
  bool TryAdd(const TConditions& AConditions) {
    constexpr size_t kManyRows = 64;
    const TFieldCondition* best = nullptr;
    size_t fewest = 0;
    for (const TFieldCondition& condition : AConditions) {
      if (condition.Criterion.Operator() != coEqual) continue;
      const size_t filed = TextsOf(condition).size();
      if (best && filed >= fewest) continue;
      best = &condition;
      fewest = filed;
    }
    if (!best || (fewest >= kManyRows && HasOrder(AConditions))) return false;
    TColumn& column = FColumns[best->Column];
    const TMatchKey& key = best->Criterion.Operand();
    if (key.IsNumber()) column.Numbers[BitsOf(key.Number())].push_back(&AConditions);
    column.HasWords = column.HasWords || !key.IsNumber();
    TextsOf(*best).push_back(&AConditions);
    return true;
  }

  /// Marks the records that meet a row of the file.
  void Mark(const TRecordFilter& AFilter, std::vector<uint8_t>& APassing) const {
    std::u16string buffer;
    for (const auto& [col, column] : FColumns) {
      for (size_t record = 0; record < APassing.size(); ++record) {
        if (APassing[record]) continue;
        const auto meets = [&](const TConditions* ARow) { return AFilter.Meets(record, *ARow); };
        const auto meetsAny = [&](const auto& AFile, const auto& AKey) {
          const auto rows = AFile.find(AKey);
          return rows != AFile.end() && std::any_of(rows->second.begin(), rows->second.end(), meets);
        };
        const TValueView value = AFilter.FDatabase.ViewAt(static_cast<int32_t>(record) + 1, col);
        double number = 0;
        const bool isNumber = AsNumber(value, number);
        bool passes = isNumber && meetsAny(column.Numbers, BitsOf(number));
        // A number and a key that is one never meet as texts.
        if (!passes && (!isNumber || column.HasWords)) {
          passes = meetsAny(column.Texts, ToAsciiUpper(DisplayView(value, buffer)));
        }
        APassing[record] = passes;
      }
    }
  }

 private:
  using TRows = std::vector<const TConditions*>;
  struct TColumn {
    std::unordered_map<uint64_t, TRows> Numbers;
    std::unordered_map<std::u16string, TRows> Texts;
    bool HasWords = false;  // keys that are no numbers
  };

  /// The rows that ask for the same text of the same column.
  TRows& TextsOf(const TFieldCondition& ACondition) {
    return FColumns[ACondition.Column].Texts[ToAsciiUpper(ACondition.Criterion.Operand().Text())];
  }

  static uint64_t BitsOf(double ANumber) { return std::bit_cast<uint64_t>(ANumber == 0 ? 0.0 : ANumber); }

  std::map<int32_t, TColumn> FColumns;
};

/// The columns of a database as the numbers that its values stand for, NaN for those that stand for none.
class TRecordFilter::TNumberColumns {
 public:
  explicit TNumberColumns(const TRecordFilter& AFilter) : FFilter(AFilter) {}

  /// Takes a row of comparisons for MarkAdded. False for one with other conditions, or with more than two columns.
  bool TryAdd(const TConditions& AConditions) {
    int32_t first = -1;
    int32_t second = -1;
    for (const TFieldCondition& condition : AConditions) {
      if (!IsOrder(condition.Criterion)) return false;
      if (!condition.Criterion.Operand().IsNumber()) return true;  // no record meets it
      if (first < 0) first = condition.Column;
      if (condition.Column == first || condition.Column == second) continue;
      if (second >= 0) return false;
      second = condition.Column;
    }
    if (second >= 0 && second < first) std::swap(first, second);
    FAdded[{first, second}].push_back(&AConditions);
    return true;
  }

  /// Marks the records that meet a row taken: a stretch of one sorted column, or a rectangle over two. A sweep over the
  /// first column that keeps the stretches of the second in a tree of counts costs the logarithm for each row and each
  /// record, where Mark looks at every record for every row.
  void MarkAdded(std::vector<uint8_t>& APassing) {
    constexpr size_t kManyRows = 32;
    for (const auto& [columns, rows] : FAdded) {
      if (rows.size() >= kManyRows) {
        Sweep(Sorted(columns.first), columns.second < 0 ? nullptr : &Sorted(columns.second), columns, rows, APassing);
      } else {
        for (const TConditions* row : rows) Mark(*row, APassing);
      }
    }
  }

  /// Marks the records that meet a row: its comparisons first, the other conditions where these hold.
  void Mark(const TConditions& AConditions, std::vector<uint8_t>& APassing) {
    constexpr size_t kBlock = 2048;
    bool hasOthers = false;
    for (const TFieldCondition& condition : AConditions) {
      if (!IsOrder(condition.Criterion)) {
        hasOthers = true;
      } else if (condition.Criterion.Operand().IsNumber()) {
        Load(condition.Column);
      } else {
        return;
      }
    }
    for (size_t first = 0; first < APassing.size(); first += kBlock) {
      FMask.assign(std::min(kBlock, APassing.size() - first), 1);
      for (const TFieldCondition& condition : AConditions) {
        if (IsOrder(condition.Criterion)) Keep(condition.Criterion, FColumns[condition.Column].data() + first);
      }
      for (size_t i = 0; i < FMask.size(); ++i) {
        if (!hasOthers) {
          APassing[first + i] |= FMask[i];
        } else if (FMask[i] && !APassing[first + i]) {
          APassing[first + i] = FFilter.Meets(first + i, AConditions);
        }
      }
    }
  }

 private:
  using TRows = std::vector<const TConditions*>;

  /// The records with a number, in the order of their numbers.
  struct TSortedColumn {
    std::vector<uint32_t> Records;
    std::vector<double> Numbers;
    std::vector<uint32_t> Places;  // of each record; kNoPlace without a number
  };
  static constexpr uint32_t kNoPlace = std::numeric_limits<uint32_t>::max();

  /// Places from First up to, not including, End.
  struct TStretch {
    size_t First = 0;
    size_t End = 0;
  };

  const TSortedColumn& Sorted(int32_t AColumn) {
    TSortedColumn& sorted = FSorted[AColumn];
    if (!sorted.Places.empty()) return sorted;
    Load(AColumn);
    const std::vector<double>& numbers = FColumns[AColumn];
    sorted.Places.assign(numbers.size(), kNoPlace);
    for (uint32_t record = 0; record < numbers.size(); ++record)
      if (!std::isnan(numbers[record])) sorted.Records.push_back(record);
    std::sort(sorted.Records.begin(), sorted.Records.end(),
              [&](uint32_t ALeft, uint32_t ARight) { return numbers[ALeft] < numbers[ARight]; });
    for (const uint32_t record : sorted.Records) {
      sorted.Places[record] = static_cast<uint32_t>(sorted.Numbers.size());
      sorted.Numbers.push_back(numbers[record]);
    }
    return sorted;
  }

  /// Where the conditions on a column hold.
  static TStretch StretchOf(const TConditions& AConditions, int32_t AColumn, const std::vector<double>& ANumbers) {
    TStretch stretch{0, ANumbers.size()};
    for (const TFieldCondition& condition : AConditions) {
      if (condition.Column != AColumn) continue;
      const double limit = condition.Criterion.Operand().Number();
      const TCriterionOperator op = condition.Criterion.Operator();
      const auto at = op == coLess || op == coGreaterOrEqual
                          ? std::lower_bound(ANumbers.begin(), ANumbers.end(), limit)
                          : std::upper_bound(ANumbers.begin(), ANumbers.end(), limit);
      const auto place = static_cast<size_t>(at - ANumbers.begin());
      if (op == coLess || op == coLessOrEqual) {
        stretch.End = std::min(stretch.End, place);
      } else {
        stretch.First = std::max(stretch.First, place);
      }
    }
    return stretch;
  }

  /// Counts over places: all from a place on get one more, or one less.
  class TCounts {
   public:
    explicit TCounts(size_t ASize) : FTree(ASize + 2, 0) {}
    void Add(size_t APlace, int32_t ACount) {
      for (size_t at = APlace + 1; at < FTree.size(); at += at & (~at + 1)) FTree[at] += ACount;
    }
    int32_t At(size_t APlace) const {
      int32_t count = 0;
      for (size_t at = APlace + 1; at > 0; at &= at - 1) count += FTree[at];
      return count;
    }

   private:
    std::vector<int32_t> FTree;
  };

  /// ASecond is null for rows with one column.
  static void Sweep(const TSortedColumn& AFirst, const TSortedColumn* ASecond, std::pair<int32_t, int32_t> AColumns,
                    const TRows& ARows, std::vector<uint8_t>& APassing) {
    struct TEvent {
      size_t Place;
      TStretch Second;
      int32_t Count;
    };
    std::vector<TEvent> events;
    for (const TConditions* row : ARows) {
      const TStretch first = StretchOf(*row, AColumns.first, AFirst.Numbers);
      const TStretch second = ASecond ? StretchOf(*row, AColumns.second, ASecond->Numbers) : TStretch{0, 1};
      if (first.First >= first.End || second.First >= second.End) continue;
      events.push_back({first.First, second, 1});
      events.push_back({first.End, second, -1});
    }
    std::sort(events.begin(), events.end(),
              [](const TEvent& ALeft, const TEvent& ARight) { return ALeft.Place < ARight.Place; });
    TCounts counts(ASecond ? ASecond->Numbers.size() : 1);
    auto event = events.begin();
    for (size_t place = 0; place < AFirst.Records.size(); ++place) {
      for (; event != events.end() && event->Place == place; ++event) {
        counts.Add(event->Second.First, event->Count);
        counts.Add(event->Second.End, -event->Count);
      }
      const uint32_t record = AFirst.Records[place];
      const uint32_t second = ASecond ? ASecond->Places[record] : 0;
      if (second != kNoPlace && !APassing[record] && counts.At(second) > 0) APassing[record] = 1;
    }
  }

  void Load(int32_t AColumn) {
    std::vector<double>& numbers = FColumns[AColumn];
    if (!numbers.empty()) return;
    numbers.resize(FFilter.RecordCount());
    for (size_t record = 0; record < numbers.size(); ++record) {
      const TValueView value = FFilter.FDatabase.ViewAt(static_cast<int32_t>(record) + 1, AColumn);
      if (!AsNumber(value, numbers[record])) numbers[record] = std::numeric_limits<double>::quiet_NaN();
    }
  }

  void Keep(const TCriterion& ACriterion, const double* ANumbers) {
    const double limit = ACriterion.Operand().Number();
    switch (ACriterion.Operator()) {
      case coLess: return KeepWhere(ANumbers, limit, FMask, std::less<>());
      case coLessOrEqual: return KeepWhere(ANumbers, limit, FMask, std::less_equal<>());
      case coGreater: return KeepWhere(ANumbers, limit, FMask, std::greater<>());
      case coGreaterOrEqual: return KeepWhere(ANumbers, limit, FMask, std::greater_equal<>());
      case coEqual:
      case coDiffers: return;
    }
  }

  const TRecordFilter& FFilter;
  std::map<int32_t, std::vector<double>> FColumns;
  std::map<int32_t, TSortedColumn> FSorted;
  std::map<std::pair<int32_t, int32_t>, TRows> FAdded;  // by their columns, the second -1 for one
  std::vector<uint8_t> FMask;
};

TRecordFilter::TRecordFilter(const TFormulaArg& ADatabase, const TFormulaArg& ACriteria) : FDatabase(ADatabase) {
  constexpr int32_t kNotAsked = -2;
  if (!ACriteria.IsRange || ACriteria.RowCount < 2) return;
  FPassesAll = false;
  std::vector<int32_t> columns(static_cast<size_t>(ACriteria.ColCount), kNotAsked);
  int64_t filledRows = 0;
  int64_t lastRow = 0;
  bool isKnown = true;
  TConditions conditions;
  ForEachNonBlank(ACriteria, [&](int64_t AIndex, const TValueView& AValue) {
    const int64_t row = AIndex / ACriteria.ColCount;
    if (row == 0) return;
    if (row != lastRow) {
      CloseRow(conditions, isKnown);
      isKnown = true;
      ++filledRows;
      lastRow = row;
    }
    const auto col = static_cast<int32_t>(AIndex % ACriteria.ColCount);
    int32_t& column = columns[static_cast<size_t>(col)];
    if (column == kNotAsked) column = HeaderColumn(FDatabase, ACriteria.ViewAt(0, col));
    isKnown = isKnown && column >= 0;
    if (isKnown) conditions.push_back({column, TCriterion(AValue)});
  });
  CloseRow(conditions, isKnown);
  if (filledRows < ACriteria.RowCount - 1) FPassesAll = true;
}

void TRecordFilter::CloseRow(TConditions& ARow, bool AIsKnown) {
  if (AIsKnown && !ARow.empty()) FRows.push_back(std::move(ARow));
  ARow.clear();
}

bool TRecordFilter::HasOrder(const TConditions& AConditions) {
  return std::any_of(AConditions.begin(), AConditions.end(),
                     [](const TFieldCondition& ACondition) { return IsOrder(ACondition.Criterion); });
}

bool TRecordFilter::Meets(size_t ARecord, const TConditions& AConditions) const {
  return std::all_of(AConditions.begin(), AConditions.end(), [&](const TFieldCondition& ACondition) {
    return ACondition.Criterion.Matches(FDatabase.ViewAt(static_cast<int32_t>(ARecord) + 1, ACondition.Column));
  });
}

void TRecordFilter::MarkPlain(const TConditions& AConditions, std::vector<uint8_t>& APassing) const {
  for (size_t record = 0; record < APassing.size(); ++record) {
    if (!APassing[record] && Meets(record, AConditions)) APassing[record] = 1;
  }
}

std::vector<uint8_t> TRecordFilter::Passing() const {
  constexpr size_t kFewRows = 4;
  if (FPassesAll || FRows.size() <= kFewRows) return PassingPlain();
  std::vector<uint8_t> passing(RecordCount(), 0);
  TKeyFile keys;
  TNumberColumns numbers(*this);
  for (const TConditions& conditions : FRows) {
    if (keys.TryAdd(conditions) || numbers.TryAdd(conditions)) continue;
    if (HasOrder(conditions)) {
      numbers.Mark(conditions, passing);
    } else {
      MarkPlain(conditions, passing);
    }
  }
  numbers.MarkAdded(passing);
  keys.Mark(*this, passing);
  return passing;
}

std::vector<uint8_t> TRecordFilter::PassingPlain() const {
  std::vector<uint8_t> passing(RecordCount(), FPassesAll ? 1 : 0);
  for (const TConditions& conditions : FRows) MarkPlain(conditions, passing);
  return passing;
}

}  // namespace tessarine::detail
