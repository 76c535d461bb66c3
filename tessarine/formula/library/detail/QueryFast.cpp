#include <algorithm>
#include <bit>
#include <boost/unordered/unordered_flat_map.hpp>
#include <cmath>
#include <deque>
#include <numeric>

#include <tessarine/formula/library/detail/ArgReading.h>
#include <tessarine/formula/library/detail/ExchangeSort.h>
#include <tessarine/formula/library/detail/LongTexts.h>
#include <tessarine/formula/library/detail/QueryRows.h>
#include <tessarine/formula/library/detail/SortTexts.h>

namespace tessarine::detail {

namespace {

// Columns in runs ----------------------------------------------------------------------------------------------------

/// Some rows of those columns that a query looks at.
class TColumnRuns {
 public:
  explicit TColumnRuns(const TFormulaArg& AData) : FData(AData) {}

  /// The slot of a column of the data, which is read from now on.
  size_t Use(int32_t ACol) {
    const auto [entry, isNew] = FSlots.try_emplace(ACol, FCols.size());
    if (isNew) FCols.push_back(ACol);
    return entry->second;
  }

  /// So many rows that all columns together stay in the cache.
  int32_t RowsAtOnce() const { return std::max(64, 16'384 / static_cast<int32_t>(FCols.size() + 1)); }

  void Read(int32_t AFirstRow, int32_t ACount) {
    FValues.resize(FCols.size());
    for (size_t slot = 0; slot < FCols.size(); ++slot) {
      FValues[slot].assign(static_cast<size_t>(ACount), TValueView());
      ReadColumn(FCols[slot], AFirstRow, FValues[slot]);
    }
  }

  const TValueView* Column(size_t ASlot) const { return FValues[ASlot].data(); }

 private:
  void ReadColumn(int32_t ACol, int32_t AFirstRow, std::vector<TValueView>& AValues) const {
    const auto count = static_cast<int32_t>(AValues.size());
    if (!FData.IsView()) {
      for (int32_t row = 0; row < count; ++row) AValues[static_cast<size_t>(row)] = FData.ViewAt(AFirstRow + row, ACol);
      return;
    }
    const TFormulaArg column = TFormulaArg::FromView(*FData.ViewSheet(), FData.OriginSheetIndex, FData.OriginCol + ACol,
                                                     FData.OriginRow + AFirstRow, count, 1);
    WalkViewValues(column, [&](std::span<const TIndexedValue> AItems) {
      for (const TIndexedValue& item : AItems) AValues[static_cast<size_t>(item.Index)] = item.Value;
      return true;
    });
  }

  const TFormulaArg& FData;
  std::vector<int32_t> FCols;  // by slot
  boost::unordered_flat_map<int32_t, size_t> FSlots;
  std::vector<std::vector<TValueView>> FValues;
};

// Filtering ----------------------------------------------------------------------------------------------------------

/// The comparisons with what their literals are read once.
class TRowFilter {
 public:
  TRowFilter(const TQuerySource& ASource, TColumnRuns& AColumns) {
    for (const auto& allOf : ASource.Query.AnyOf) {
      auto& tests = FAnyOf.emplace_back();
      for (const TQueryComparison& comparison : allOf) {
        TTest& test = tests.emplace_back();
        test.Exists = ASource.HasCol(comparison.Col);
        if (test.Exists) test.Slot = AColumns.Use(comparison.Col);
        test.Operator = comparison.Operator;
        test.IsNumber = AsNumber(comparison.Literal, test.Number);
        test.Text = comparison.Literal.ToDisplayString();
      }
    }
  }

  /// The rows of the runs that are kept, ascending.
  const std::vector<uint32_t>& Kept(const TColumnRuns& AColumns, uint32_t ACount) {
    FKept.resize(ACount);
    std::iota(FKept.begin(), FKept.end(), 0u);
    if (FAnyOf.empty()) return FKept;
    if (FAnyOf.size() == 1) {
      Narrow(FAnyOf.front(), AColumns, FKept);
      return FKept;
    }
    FFound.clear();
    for (auto& tests : FAnyOf) {
      FCandidates = FKept;
      Narrow(tests, AColumns, FCandidates);
      if (FCandidates.empty()) continue;
      FFound.insert(FFound.end(), FCandidates.begin(), FCandidates.end());
      FRest.clear();
      std::set_difference(FKept.begin(), FKept.end(), FCandidates.begin(), FCandidates.end(),
                          std::back_inserter(FRest));
      FKept.swap(FRest);
      if (FKept.empty()) break;
    }
    std::sort(FFound.begin(), FFound.end());
    FKept.swap(FFound);
    return FKept;
  }

 private:
  struct TTest {
    bool Exists = false;
    bool IsNumber = false;
    TQueryOperator Operator = qoEqual;
    size_t Slot = 0;
    double Number = 0;
    TText Text;
    TLongTextMemo<int> Long;
  };

  void Narrow(std::vector<TTest>& ATests, const TColumnRuns& AColumns, std::vector<uint32_t>& ARows) {
    for (TTest& test : ATests) {
      if (ARows.empty()) return;
      if (!test.Exists) return ARows.clear();
      const TValueView* values = AColumns.Column(test.Slot);
      const auto fails = [&](uint32_t ARow) { return !QueryHolds(test.Operator, Compare(values[ARow], test)); };
      ARows.erase(std::remove_if(ARows.begin(), ARows.end(), fails), ARows.end());
    }
  }

  int Compare(const TValueView& AValue, TTest& ATest) {
    if (!IsLongText(AValue)) return CompareShort(AValue, ATest);
    return ATest.Long.Of(AValue, [&] { return CompareShort(AValue, ATest); });
  }

  int CompareShort(const TValueView& AValue, const TTest& ATest) {
    double number = 0;
    if (ATest.IsNumber && AsNumber(AValue, number)) return number < ATest.Number ? -1 : number > ATest.Number ? 1 : 0;
    return DisplayView(AValue, FBuffer).compare(ATest.Text.View());
  }

  std::vector<std::vector<TTest>> FAnyOf;
  std::vector<uint32_t> FKept;
  std::vector<uint32_t> FCandidates;
  std::vector<uint32_t> FFound;
  std::vector<uint32_t> FRest;
  std::u16string FBuffer;
};

// Grouping -----------------------------------------------------------------------------------------------------------

/// Numbers display texts in the order in which they are first seen. Texts are hashed where they stand; a number becomes
/// text only the first time.
class TTextNumbers {
 public:
  uint32_t NumberOf(const TValueView& AValue) {
    if (IsLongText(AValue)) return FLong.Of(AValue, [&] { return NumberOfText(AValue.Text(), false); });
    if (AValue.Kind != cvkNumber) return NumberOfText(DisplayView(AValue, FBuffer), false);
    const auto [entry, isNew] = FByBits.try_emplace(std::bit_cast<uint64_t>(AValue.Number), 0u);
    if (isNew) entry->second = NumberOfText(DisplayView(AValue, FBuffer), true);
    return entry->second;
  }

  bool HasSeparator() const { return FHasSeparator; }

 private:
  uint32_t NumberOfText(std::u16string_view AText, bool AIsPassing) {
    if (const auto found = FByText.find(AText); found != FByText.end()) return found->second;
    if (AIsPassing) AText = FOwned.emplace_back(AText);
    FHasSeparator = FHasSeparator || AText.find(u'\u0001') != AText.npos;
    const auto number = static_cast<uint32_t>(FByText.size());
    FByText.emplace(AText, number);
    return number;
  }

  boost::unordered_flat_map<std::u16string_view, uint32_t, std::hash<std::u16string_view>> FByText;
  boost::unordered_flat_map<uint64_t, uint32_t> FByBits;
  TLongTextMemo<uint32_t> FLong;
  std::deque<std::u16string> FOwned;
  std::u16string FBuffer;
  bool FHasSeparator = false;
};

/// Numbers groups in the order in which they are first seen.
class TGroupNumbers {
 public:
  TGroupNumbers(const TQuerySource& ASource, TColumnRuns& AColumns) {
    std::vector<bool> isNew(static_cast<size_t>(ASource.Data.ColCount), true);
    for (const int32_t col : ASource.Query.GroupCols) {
      if (!ASource.HasCol(col) || !isNew[static_cast<size_t>(col)]) continue;
      isNew[static_cast<size_t>(col)] = false;
      FLevels.push_back({AColumns.Use(col), {}, {}});
    }
  }

  uint32_t NumberOf(const TColumnRuns& AColumns, uint32_t ARow) {
    uint32_t number = 0;
    for (size_t i = 0; i < FLevels.size(); ++i) {
      TLevel& level = FLevels[i];
      const uint32_t text = level.Texts.NumberOf(AColumns.Column(level.Slot)[ARow]);
      number = i == 0 ? text : NumberOfPair(level, number, text);
    }
    return number;
  }

  /// Whether texts of several columns could be joined to the same key in two ways.
  bool IsAmbiguous() const {
    return FLevels.size() > 1 && std::any_of(FLevels.begin(), FLevels.end(),
                                             [](const TLevel& ALevel) { return ALevel.Texts.HasSeparator(); });
  }

 private:
  /// One group column: its texts, and the pairs of a group by the columns before it and a text.
  struct TLevel {
    size_t Slot;
    TTextNumbers Texts;
    boost::unordered_flat_map<uint64_t, uint32_t> Pairs;
  };

  static uint32_t NumberOfPair(TLevel& ALevel, uint32_t AGroup, uint32_t AText) {
    const auto next = static_cast<uint32_t>(ALevel.Pairs.size());
    return ALevel.Pairs.try_emplace(uint64_t{AGroup} << 32 | AText, next).first->second;
  }

  std::vector<TLevel> FLevels;
};

/// TQueryStats::Add, which reads a long text once.
void AddValue(const TValueView& AValue, TQueryStats& AStats, TKeyNumbers& ALong) {
  if (!IsLongText(AValue)) return AStats.Add(AValue);
  ++AStats.Values;
  if (const auto number = ALong.NumberOf(AValue)) AStats.AddNumber(*number);
}

}  // namespace

std::optional<TQueryLines> TrySelectLines(const TQuerySource& ASource) {
  TQueryLines lines;
  lines.StatsCols = StatsColsOf(ASource);
  TColumnRuns columns(ASource.Data);
  TRowFilter filter(ASource, columns);
  TGroupNumbers groups(ASource, columns);
  std::vector<size_t> statsSlots;
  for (const int32_t col : lines.StatsCols) statsSlots.push_back(columns.Use(col));
  const bool isGrouped = ASource.Query.IsGrouped();

  TKeyNumbers longNumbers;
  std::vector<uint32_t> lineOf;  // of each kept row of a run
  for (int32_t first = ASource.FirstRow, count = 0; first < ASource.Data.RowCount; first += count) {
    count = std::min(columns.RowsAtOnce(), ASource.Data.RowCount - first);
    columns.Read(first, count);
    const std::vector<uint32_t>& kept = filter.Kept(columns, static_cast<uint32_t>(count));
    if (!isGrouped) {
      for (const uint32_t row : kept) lines.Rows.push_back(static_cast<uint32_t>(first) + row);
      continue;
    }
    lineOf.clear();
    for (const uint32_t row : kept) {
      lineOf.push_back(groups.NumberOf(columns, row));
      if (lineOf.back() == lines.Rows.size()) lines.Rows.push_back(static_cast<uint32_t>(first) + row);
    }
    if (groups.IsAmbiguous()) return std::nullopt;
    lines.AddStats();
    if (lines.IsTooMuch) return lines;
    for (size_t i = 0; i < statsSlots.size(); ++i) {
      const TValueView* values = columns.Column(statsSlots[i]);
      for (size_t k = 0; k < kept.size(); ++k) {
        AddValue(values[kept[k]], lines.Stats[lineOf[k] * statsSlots.size() + i], longNumbers);
      }
    }
  }
  return lines;
}

// Ordering -----------------------------------------------------------------------------------------------------------

namespace {

int OrderOf(double ALeft, double ARight) { return ALeft < ARight ? -1 : ALeft > ARight ? 1 : 0; }

/// A text to sort by. Long ones, which many lines may share, are compared with one another once and have ranks in their
/// order, from 1 on; short ones have rank 0.
struct TRankedText {
  std::u16string_view Text;
  uint32_t Rank = 0;

  int Compare(const TRankedText& AOther) const {
    if (Rank == 0 || AOther.Rank == 0) return Text.compare(AOther.Text);
    return Rank < AOther.Rank ? -1 : Rank > AOther.Rank ? 1 : 0;
  }
};

/// The values of one order key, each read once.
class TKeyColumn {
 public:
  TKeyColumn(const TQuerySource& ASource, const TQueryLines& ALines, TQueryOrderKey AKey)
      : FDescending(AKey.Descending), FNumbers(ALines.Rows.size()), FIsNumber(ALines.Rows.size()) {
    const auto valueAt = [&](size_t AIndex) {
      return ASource.Data.ViewAt(static_cast<int32_t>(ALines.Rows[AIndex]), AKey.Col);
    };
    TKeyNumbers numbers;
    for (size_t i = 0; i < FNumbers.size(); ++i) {
      const auto number = numbers.NumberOf(valueAt(i));
      FIsNumber[i] = number.has_value();
      FNumbers[i] = number.value_or(0);
      FNumberCount += FIsNumber[i];
      FHasNan = FHasNan || std::isnan(FNumbers[i]);
    }
    if (FNumberCount == FNumbers.size()) return;
    std::u16string buffer;
    TLongTextBlocks longTexts;
    FTexts.resize(FNumbers.size());
    for (size_t i = 0; i < FTexts.size(); ++i) {
      const TValueView value = valueAt(i);
      if (IsLongText(value)) {
        FTexts[i].Text = longTexts.BlockOf(value)->View();
        continue;
      }
      const std::u16string_view text = DisplayView(value, buffer);
      FTexts[i].Text = value.Kind == cvkNumber ? std::u16string_view(FOwned.emplace_back(text)) : text;
    }
    RankLongTexts();
  }

  bool IsTotal() const { return !FHasNan && (FNumberCount == 0 || FNumberCount == FNumbers.size()); }

  int Compare(uint32_t ALeft, uint32_t ARight) const {
    const int order = FIsNumber[ALeft] && FIsNumber[ARight] ? OrderOf(FNumbers[ALeft], FNumbers[ARight])
                                                            : FTexts[ALeft].Compare(FTexts[ARight]);
    return FDescending ? -order : order;
  }

 private:
  /// Equal long texts stand in one place already.
  void RankLongTexts() {
    boost::unordered_flat_map<const char16_t*, uint32_t> ranks;
    std::vector<std::u16string_view> texts;
    for (const TRankedText& text : FTexts) {
      if (text.Text.size() > kLongText && ranks.try_emplace(text.Text.data(), 0u).second) texts.push_back(text.Text);
    }
    std::sort(texts.begin(), texts.end());
    for (size_t i = 0; i < texts.size(); ++i) ranks[texts[i].data()] = static_cast<uint32_t>(i + 1);
    for (TRankedText& text : FTexts) {
      if (text.Text.size() > kLongText) text.Rank = ranks[text.Text.data()];
    }
  }

  bool FDescending;
  bool FHasNan = false;
  size_t FNumberCount = 0;
  std::vector<double> FNumbers;
  std::vector<uint8_t> FIsNumber;
  std::vector<TRankedText> FTexts;  // none where all are numbers
  std::deque<std::u16string> FOwned;
};

}  // namespace

std::vector<uint32_t> OrderLines(const TQuerySource& ASource, const TQueryLines& ALines) {
  std::vector<uint32_t> order(ALines.Rows.size());
  std::iota(order.begin(), order.end(), 0u);
  std::deque<TKeyColumn> keys;
  for (const TQueryOrderKey& key : OrderKeysOf(ASource)) keys.emplace_back(ASource, ALines, key);
  if (keys.empty()) return order;
  const auto compare = [&](uint32_t ALeft, uint32_t ARight) {
    for (const TKeyColumn& key : keys) {
      if (const int result = key.Compare(ALeft, ARight); result != 0) return result;
    }
    return 0;
  };
  if (!std::all_of(keys.begin(), keys.end(), [](const TKeyColumn& AKey) { return AKey.IsTotal(); })) {
    return order.size() <= kMaxMixedKeys ? ExchangeSortPlain(order.size(), compare)
                                         : TolerantMergeSort(order.size(), compare);
  }
  std::sort(order.begin(), order.end(), [&](uint32_t ALeft, uint32_t ARight) {
    const int result = compare(ALeft, ARight);
    return result != 0 ? result < 0 : ALeft < ARight;
  });
  std::vector<uint32_t> groupEnds;
  for (size_t i = 1; i <= order.size(); ++i) {
    if (i == order.size() || compare(order[i - 1], order[i]) != 0) groupEnds.push_back(static_cast<uint32_t>(i));
  }
  return ExchangeSortTies(order, groupEnds);
}

}  // namespace tessarine::detail
