#include <tessarine/formula/library/detail/RangeIndex.h>

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/Evaluator.h>
#include <tessarine/formula/FunctionTable.h>
#include <tessarine/formula/library/detail/Conditions.h>
#include <tessarine/formula/library/detail/Search.h>

#include "../support/LocaleGuard.h"
#include "CallNotation.h"

namespace tessarine {

namespace {

using namespace detail;

constexpr int32_t kRows = 90;

/// Values that meet one another in every way that equality knows: numbers, texts of them, case, Booleans, errors.
TCellValue RandomValue(std::mt19937& ARandom) {
  static const char* const shown[] = {"_",      "''",     "TRUE",   "'TRUE'",  "'true'", "FALSE", "#N/A",
                                      "'#n/a'", "#REF!",  "0.5",    "'0.5'",   "'0,5'",  "-0",    "0",
                                      "'0'",    "'abcd'", "'ABCD'", "'abcde'", "1.2e20", "120",   "'INF'",
                                      "-1e308", "1e308",  "'1E2'",  "100",     "'1e+2'", "'x'"};
  const uint32_t pick = ARandom() % 60;
  if (pick < std::size(shown)) return testing::ArgsOf(shown[pick])[0].First();
  if (pick < 45) return TCellValue::FromNumber(static_cast<double>(ARandom() % 12) - 3);
  return TCellValue::FromText(TText::FromUtf8(std::to_string(ARandom() % 8)));
}

class TIndexJudge {
 public:
  explicit TIndexJudge(uint32_t ASeed) : FRandom(ASeed), FSheet(*FBook.GetSheet(0)) {
    const uint32_t density = 1 + FRandom() % 4;
    for (int32_t row = 1; row <= kRows; ++row) {
      for (int32_t col = 1; col <= 4; ++col) {
        if (FRandom() % 4 < density) FSheet.SetValue({col, row}, RandomValue(FRandom));
      }
    }
  }

  void Play(int ARounds) {
    for (int round = 0; round < ARounds; ++round) {
      if (FRandom() % 4 == 0) Disturb();
      for (int i = 0; i < 4; ++i) Search();
      for (int i = 0; i < 4; ++i) Aggregate();
    }
    EXPECT_GT(FCache.BuildCount(), 0u);
  }

 private:
  void Disturb() {
    const TCellAddress at{static_cast<int32_t>(1 + FRandom() % 4), static_cast<int32_t>(1 + FRandom() % kRows)};
    switch (FRandom() % 8) {
      case 0: FLocale.SetDecimal(FRandom() % 2 ? u',' : u'.'); break;
      case 1:
        FSheet.Spills().SetSpill(at.Col, at.Row, 3, 1,
                                 {RandomValue(FRandom), RandomValue(FRandom), RandomValue(FRandom)});
        break;
      case 2: FSheet.Spills().ClearAll(); break;
      case 3: FSheet.ClearCell(at); break;
      default: FSheet.SetValue(at, RandomValue(FRandom)); break;
    }
  }

  TFormulaArg RandomRange() {
    switch (FRandom() % 4) {
      case 0: return TFormulaArg::FromView(FSheet, 0, 1, 1, 45, 4);
      case 1: return TFormulaArg::FromView(FSheet, 0, 1, 1, kRows + 10, 2);  // blanks behind the last cell
      case 2: return TFormulaArg::FromView(FSheet, 0, 2, 1, kRows, 1);
      default: return TFormulaArg::FromView(FSheet, 0, 3, 1, kRows, 1);
    }
  }

  void Search() {
    const TFormulaArg range = RandomRange();
    const TSearchLine line = FRandom() % 2 ? TSearchLine::All(range) : TSearchLine::FirstColumn(range);
    const TCellValue value = RandomValue(FRandom);
    const TMatchKey key(value.View());
    const std::string shown = testing::Shown(value);
    for (TRangeIndexCache* cache : {&FCache, static_cast<TRangeIndexCache*>(nullptr)}) {
      ASSERT_EQ(FindEqual(line, key, cache), FindEqualPlain(line, value.View())) << shown;
      ASSERT_EQ(FindEqualOrBelow(line, key, cache), FindEqualOrBelowPlain(line, value.View())) << shown;
      for (const bool below : {false, true}) {
        ASSERT_EQ(FindNearest(line, key.Number(), below, cache), FindNearestPlain(line, key.Number(), below)) << shown;
      }
    }
  }

  void Aggregate() {
    static const char* const signs[] = {"", "", "", "=", "<>", "<", "<=", ">", ">="};
    const bool pair = FRandom() % 2 == 0;
    const TFormulaArg ranges[] = {pair ? TFormulaArg::FromView(FSheet, 0, 2, 1, kRows, 1) : RandomRange(),
                                  TFormulaArg::FromView(FSheet, 0, 3, 1, kRows, 1)};
    const TFormulaArg values = TFormulaArg::FromView(FSheet, 0, 4, 1, kRows, 1);
    std::vector<TCondition> conditions;
    std::string shown;
    for (size_t i = 0; i < (pair ? 2u : 1u); ++i) {
      shown = signs[FRandom() % std::size(signs)] + RandomValue(FRandom).ToDisplayString().ToUtf8();
      conditions.push_back({&ranges[i], TCriterion(TCellValue::FromText(TText::FromUtf8(shown)).View())});
    }
    const int64_t all = ranges[0].CellCount();
    ASSERT_EQ(CountMatches(conditions, all, &FCache), CountMatchesPlain(conditions, all)) << shown;
    const int64_t count = std::min<int64_t>(all, values.CellCount());
    std::vector<double> found;
    std::vector<double> expected;
    WalkMatchingNumbers(values, conditions, count, &FCache, [&](std::span<const double> ANumbers) {
      found.insert(found.end(), ANumbers.begin(), ANumbers.end());
      return true;
    });
    WalkMatchingNumbersPlain(values, conditions, count, [&](std::span<const double> ANumbers) {
      expected.insert(expected.end(), ANumbers.begin(), ANumbers.end());
      return true;
    });
    ASSERT_EQ(found, expected) << shown;
  }

  std::mt19937 FRandom;
  test::TLocaleGuard FLocale;
  TWorkbook FBook;
  TWorksheet& FSheet;
  TRangeIndexCache FCache{20'000};  // room for a few indexes only
};

TEST(RangeIndex, AnswersAreThoseOfThePlainSearchesWhateverHappensBetween) {
  for (uint32_t seed = 1; seed <= 60; ++seed) {
    TIndexJudge(seed).Play(60);
    if (::testing::Test::HasFatalFailure()) FAIL() << "seed " << seed;
  }
}

class RangeIndexCacheTest : public ::testing::Test {
 protected:
  RangeIndexCacheTest() { Fill(0); }

  /// Always the same number of writes, so that sheets filled so have the same versions.
  void Fill(int AAdded) {
    for (int32_t row = 1; row <= 200; ++row) {
      for (int32_t col = 1; col <= 3; ++col) Sheet().SetValue({col, row}, TCellValue::FromNumber(row + AAdded));
    }
  }

  TWorksheet& Sheet() { return *FBook.GetSheet(0); }
  TFormulaArg Column(int32_t ACol, int32_t ARows = 200) { return TFormulaArg::FromView(Sheet(), 0, ACol, 1, ARows, 1); }

  TWorkbook FBook;
};

TEST_F(RangeIndexCacheTest, OnlyRangesThatAreSearchedAgainGetAnIndex) {
  TRangeIndexCache cache;
  EXPECT_EQ(cache.Equality(Column(1)), nullptr);
  EXPECT_EQ(cache.Equality(Column(2)), nullptr);
  EXPECT_EQ(cache.Order(Column(1)), nullptr);
  EXPECT_NE(cache.Equality(Column(1)), nullptr);
  EXPECT_EQ(cache.BuildCount(), 1u);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(cache.Equality(Column(1, 63)), nullptr);              // too small to pay
    EXPECT_EQ(cache.Equality(AsRangeArg(TFormulaArg())), nullptr);  // no view
  }
  for (int32_t rows = 64; rows < 200; ++rows) EXPECT_EQ(cache.Equality(Column(3, rows)), nullptr);
}

TEST_F(RangeIndexCacheTest, AWriteElsewhereKeepsAnIndexAndOneInItsColumnsEndsIt) {
  TRangeIndexCache cache;
  cache.Equality(Column(1));
  for (int i = 0; i < 20; ++i) ASSERT_NE(cache.Equality(Column(1)), nullptr);
  Sheet().SetValue({2, 5}, TCellValue::FromNumber(-1));
  cache.Equality(Column(1));
  EXPECT_EQ(cache.BuildCount(), 1u);
  Sheet().SetValue({1, 5}, TCellValue::FromNumber(-1));
  const TEqualityIndex* index = cache.Equality(Column(1));  // it has paid: built anew at once
  ASSERT_NE(index, nullptr);
  EXPECT_EQ(index->FirstMatch(TMatchKey(TValueView::FromNumber(-1))), 4);
  EXPECT_EQ(index->FirstMatch(TMatchKey(TValueView::FromNumber(5))), -1);
  Sheet().SetValue({1, 6}, TCellValue::FromNumber(-1));
  EXPECT_EQ(cache.Equality(Column(1)), nullptr);  // the new one has not
}

TEST_F(RangeIndexCacheTest, ASheetThatReplacesAnotherDoesNotInheritItsIndexes) {
  TRangeIndexCache cache;
  for (int i = 0; i < 30; ++i) cache.Equality(Column(1));
  for (int round = 0; round < 20; ++round) {
    FBook.AddSheet(u"Next");
    FBook.RemoveSheet(0);
    Fill(1000 * (round + 1));
    for (int i = 0; i < 3; ++i) {
      const TEqualityIndex* index = cache.Equality(Column(1));
      if (index) {
        ASSERT_EQ(index->FirstMatch(TMatchKey(TValueView::FromNumber(3 + 1000 * (round + 1)))), 2) << round;
      }
    }
  }
}

TEST_F(RangeIndexCacheTest, MemoryStaysBelowTheLimit) {
  TRangeIndexCache one;
  for (int i = 0; i < 2; ++i) one.Equality(Column(1));
  const size_t size = one.BytesUsed();
  ASSERT_GT(size, 200u * 4);
  TRangeIndexCache cache(2 * size + size / 2);
  for (int32_t rows = 150; rows <= 200; ++rows) {
    for (int i = 0; i < 3; ++i) cache.Equality(Column(1, rows));
    EXPECT_LE(cache.BytesUsed(), 2 * size + size / 2);
    EXPECT_NE(cache.Equality(Column(1, rows)), nullptr);  // the newest one stays
  }
  TRangeIndexCache tiny(1);
  for (int i = 0; i < 3; ++i) tiny.Equality(Column(1));
  EXPECT_NE(tiny.Equality(Column(1)), nullptr);
  for (int i = 0; i < 2; ++i) tiny.Equality(Column(2));
  EXPECT_LE(tiny.BytesUsed(), size);
  tiny.Clear();
  EXPECT_EQ(tiny.BytesUsed(), 0u);
}

/// Whole calls, with and without indexes, over a sheet of numbers and texts.
TEST_F(RangeIndexCacheTest, FunctionsAnswerAlikeWithAndWithoutIndexes) {
  for (int32_t row = 1; row <= 200; row += 3) {
    Sheet().SetValue({1, row}, TCellValue::FromText(TText::FromUtf8("Item " + std::to_string(row % 20))));
  }
  TRangeIndexCache cache;
  TFormulaContext indexed;
  indexed.Indexes = &cache;
  const TFormulaArg table = TFormulaArg::FromView(Sheet(), 0, 1, 1, 200, 3);
  const TFormulaArg wide = TFormulaArg::FromView(Sheet(), 0, 1, 1, 3, 90);
  const auto text = [](const std::string& AText) {
    return TFormulaArg::FromScalar(TCellValue::FromText(TText::FromUtf8(AText)));
  };
  const auto number = [](double ANumber) { return TFormulaArg::FromScalar(TCellValue::FromNumber(ANumber)); };
  for (int i = 0; i < 60; ++i) {
    const TFormulaArg name = text("ITEM " + std::to_string(i % 22));
    const TFormulaArg value = number(i * 3.5);
    const TFormulaArg above = text(">" + std::to_string(i * 2));
    const std::pair<std::u16string_view, std::vector<TFormulaArg>> calls[] = {
        {u"VLOOKUP", {name, table, number(3), number(0)}},
        {u"VLOOKUP", {value, table, number(2)}},
        {u"HLOOKUP", {value, wide, number(2), number(i % 2)}},
        {u"MATCH", {value, Column(1), number(i % 3 - 1)}},
        {u"XLOOKUP", {name, Column(1), Column(3), text("none")}},
        {u"COUNTIF", {Column(1), name}},
        {u"COUNTIF", {Column(2), above}},
        {u"SUMIF", {Column(1), name, Column(2)}},
        {u"AVERAGEIF", {Column(1), name, Column(2)}},
        {u"SUMIFS", {Column(3), Column(1), name, Column(2), above}},
        {u"COUNTIFS", {Column(2), above, Column(1), name}},
    };
    for (const auto& [function, args] : calls) {
      EXPECT_EQ(testing::Shown(EvaluateFunction(function, args, indexed)),
                testing::Shown(EvaluateFunction(function, args, {})))
          << i;
    }
  }
  EXPECT_GT(cache.BuildCount(), 4u);
}

TEST(RangeIndex, XMatchFindsTheSamePositions) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  std::mt19937 random(8);
  std::string cells = "[";
  for (int32_t row = 1; row <= 400; ++row) {
    const auto value = static_cast<int>(random() % 90);
    cells += (row > 1 ? ";" : "") + (value == 0 ? std::string("_") : std::to_string(value));
    if (value != 0) sheet.SetValue({1, row}, TCellValue::FromNumber(value));
  }
  cells += "]";
  TFormulaEvaluator evaluator(book);
  for (const char* modes : {"-1,1", "1,1", "-1,-1", "1,-1", "0,1", "0,-1"}) {
    for (const int key : {-3, 0, 17, 43, 89, 95}) {
      const std::string formula = "=XMATCH(" + std::to_string(key) + ",A1:A400," + modes + ")";
      std::string args = std::to_string(key) + " " + cells + " " + modes;
      args[args.rfind(',')] = ' ';
      for (int again = 0; again < 3; ++again)  // the first searches scan
        EXPECT_EQ(testing::Shown(evaluator.EvaluateAt(formula, 0, 5, 5).First()), testing::Called("XMATCH", args))
            << formula;
    }
  }
}

}  // namespace

}  // namespace tessarine
