#include <gtest/gtest.h>

#include <limits>
#include <random>

#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/library/detail/ArgReading.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

using testing::Shown;

TFormulaArg ViewOf(const TWorksheet& ASheet, const TCellRange& ARange) {
  return TFormulaArg::FromView(ASheet, 0, ARange.StartCol, ARange.StartRow, ARange.Height(), ARange.Width());
}

TCell FormulaWith(const TCellValue& AResult) {
  TCell cell;
  cell.Value = TCellValue::FromFormula(u"=X");
  cell.SetCachedResult(AResult);
  return cell;
}

/// Fills a part of a sheet with cells of every kind: constants, formulas with and without results, formats without
/// values; and lays spilled blocks over it.
class TRandomSheet {
 public:
  explicit TRandomSheet(uint32_t ASeed) : FRandom(ASeed), Sheet(*FBook.GetSheet(0)) {
    const int32_t density = ASeed % 4 == 0 ? 12000 : 300;
    for (int32_t i = 0; i < density; ++i) PutCell(1 + Draw(7), 1 + Draw(1200));
    if (ASeed % 4 == 1) {
      for (int32_t row = 200; row < 800; ++row) Sheet.SetValue({3, row}, TCellValue::FromNumber(row / 3.0));
    }
    if (ASeed % 3 == 0) return;
    for (int32_t i = Draw(6); i >= 0; --i)
      PutBlock(1 + Draw(8), 1 + Draw(1200), 1 + Draw(ASeed % 2 ? 3 : 300), 1 + Draw(3));
  }

  int32_t Draw(int32_t ALast) { return static_cast<int32_t>(FRandom() % static_cast<uint32_t>(ALast + 1)); }

  TFormulaArg DrawView() {
    const int32_t rows = Draw(3) ? 1 + Draw(1300) : 1 + Draw(5);
    const int32_t cols = Draw(2) ? 1 + Draw(9) : 1;
    return TFormulaArg::FromView(Sheet, 0, 1 + Draw(4), 1 + Draw(600), rows, cols);
  }

 private:
  TCellValue DrawValue() {
    const char* const values[] = {"_", "TRUE", "FALSE", "#N/A", "0"};
    if (Draw(2)) return TCellValue::FromNumber(Draw(100000) / 7.0 - 5000);
    return testing::ValueOf(values[Draw(4)]);
  }

  void PutCell(int32_t ACol, int32_t ARow) {
    TCell cell;
    switch (Draw(9)) {
      case 0: cell.StyleIndex = 3; break;
      case 1: cell.Value = TCellValue::FromFormula(u"=X"); break;
      case 2: cell = FormulaWith({}); break;
      case 3: cell = FormulaWith(DrawValue()); break;
      case 4: cell.Value = TCellValue::FromText(u"12"); break;
      case 5: cell.Value = TCellValue::FromText({}); break;
      default: cell.Value = DrawValue();
    }
    Sheet.SetCell({ACol, ARow}, cell);
  }

  void PutBlock(int32_t ACol, int32_t ARow, int32_t ARows, int32_t ACols) {
    std::vector<TCellValue> values;
    for (int32_t i = 0; i < ARows * ACols; ++i) values.push_back(DrawValue());
    Sheet.SetCell({ACol, ARow}, FormulaWith(values[0]));
    Sheet.Spills().SetSpill(ACol, ARow, ARows, ACols, std::move(values));
  }

  std::mt19937 FRandom;
  TWorkbook FBook;

 public:
  TWorksheet& Sheet;
};

std::string ShownView(const TValueView& AValue) { return Shown(TCellValue::FromView(AValue)); }

TEST(ArgReading, WalksOverViewsSeeWhatTheCellsShow) {
  for (uint32_t seed = 1; seed <= 40; ++seed) {
    TRandomSheet random(seed);
    for (int round = 0; round < 12; ++round) {
      const TFormulaArg view = random.DrawView();
      SCOPED_TRACE(::testing::Message() << "seed " << seed << " round " << round);

      std::vector<std::string> expected;
      detail::TBlankCount counts;
      for (int64_t i = 0; i < view.CellCount(); ++i) {
        const TValueView value = random.Sheet.EffectiveView(view.OriginCol + static_cast<int32_t>(i % view.ColCount),
                                                            view.OriginRow + static_cast<int32_t>(i / view.ColCount));
        expected.push_back(ShownView(value));
        ++(value.IsEmpty() ? counts.Blanks : expected.back() == "''" ? counts.EmptyTexts : counts.Others);
      }
      std::vector<std::string> all;
      EXPECT_TRUE(detail::ForEachValue(view, [&](const TValueView& AValue) { all.push_back(ShownView(AValue)); }));
      ASSERT_EQ(all, expected);

      std::vector<std::string> spread(expected.size(), "_");
      int64_t last = -1;
      detail::ForEachNonBlank(view, [&](int64_t AIndex, const TValueView& AValue) {
        EXPECT_GT(AIndex, last);
        last = AIndex;
        spread[static_cast<size_t>(AIndex)] = ShownView(AValue);
      });
      ASSERT_EQ(spread, expected);

      const detail::TBlankCount found = detail::CountBlanks({&view, 1});
      EXPECT_EQ(found.Blanks, counts.Blanks);
      EXPECT_EQ(found.EmptyTexts, counts.EmptyTexts);
      EXPECT_EQ(found.Others, counts.Others);

      TFormulaArg owned = view;
      owned.Materialize();
      ASSERT_FALSE(owned.IsView());
      std::vector<std::string> copied;
      detail::ForEachValue(owned, [&](const TValueView& AValue) { copied.push_back(ShownView(AValue)); });
      ASSERT_EQ(copied, expected);
    }
  }
}

TEST(ArgReading, NumbersOfViewsComeAsFromThePlainWalk) {
  for (uint32_t seed = 1; seed <= 60; ++seed) {
    TRandomSheet random(seed);
    for (int round = 0; round < 20; ++round) {
      const TFormulaArg view = random.DrawView();
      std::vector<double> plain;
      detail::WalkViewNumbersPlain(view, [&](std::span<const double> ABatch) {
        plain.insert(plain.end(), ABatch.begin(), ABatch.end());
        return true;
      });
      std::vector<double> fast;
      detail::ForEachNumber(view, [&](double ANumber) { fast.push_back(ANumber); });
      ASSERT_EQ(fast, plain) << "seed " << seed << " round " << round;

      double sum = 0;
      for (const double number : plain) sum += number;
      EXPECT_EQ(EvaluateFunction(u"SUM", {&view, 1}, {}).Number, sum);

      const int32_t first = random.Draw(view.RowCount - 1);
      const int32_t rows = 1 + random.Draw(view.RowCount - first - 1);
      std::vector<double> lanes(static_cast<size_t>(rows) * static_cast<size_t>(view.ColCount), 99);
      detail::ReadNumberLanes(view, first, rows, lanes);
      for (size_t i = 0; i < lanes.size(); ++i) {
        double number = 0;
        AsNumber(view.ViewAt(int64_t{first} * view.ColCount + static_cast<int64_t>(i)), number);
        ASSERT_EQ(lanes[i], number) << "seed " << seed << " round " << round << " lane " << i;
      }
    }
  }
}

TEST(ArgReading, AWalkEndsWhereTheVisitorSaysSo) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  for (int32_t row = 1; row <= 2000; row += 2) sheet.SetValue({2, row}, TCellValue::FromNumber(row));
  for (const TCellRange range : {TCellRange{2, 1, 2, 2000}, TCellRange{1, 1, 3, 2000}}) {
    const TFormulaArg view = ViewOf(sheet, range);
    for (const int limit : {1, 255, 256, 257, 999}) {
      int seen = 0;
      EXPECT_FALSE(detail::ForEachNumber(view, [&](double) { return ++seen < limit; }));
      EXPECT_EQ(seen, limit);
      seen = 0;
      EXPECT_FALSE(detail::ForEachValue(view, [&](const TValueView&) { return ++seen < limit; }));
      EXPECT_EQ(seen, limit);
    }
  }
}

TEST(ArgReading, AWholeSheetCostsItsCells) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  sheet.SetValue({1, 1}, TCellValue::FromNumber(1));
  sheet.SetValue({16384, 1048576}, TCellValue::FromNumber(20));
  sheet.SetValue({9000, 777}, TCellValue::FromText({}));
  sheet.SetCell({5, 1048575}, FormulaWith(TCellValue::FromNumber(300)));
  sheet.Spills().SetSpill(5, 1048575, 3, 2, std::vector<TCellValue>(6, TCellValue::FromNumber(300)));
  std::vector<TFormulaArg> args;
  args.push_back(TFormulaArg::FromView(sheet, 0, 1, 1, 1048576, 16384));
  const auto called = [&](std::u16string_view AName) { return Shown(EvaluateFunction(AName, args, {})); };
  EXPECT_EQ(called(u"SUM"), "1221");
  EXPECT_EQ(called(u"COUNT"), "6");
  EXPECT_EQ(called(u"COUNTA"), "7");
  EXPECT_EQ(called(u"COUNTBLANK"), "17179869178");
  EXPECT_EQ(called(u"AND"), "FALSE");
  EXPECT_EQ(called(u"XOR"), "FALSE");
  EXPECT_EQ(called(u"SUMPRODUCT"), "1221");
  args.push_back(args[0]);
  EXPECT_EQ(called(u"SUMPRODUCT"), "360401");
  EXPECT_EQ(called(u"SUM"), "2442");
  args[0].Materialize();  // far more than may be copied
  EXPECT_EQ(Shown(args[0].First()), "#NUM!");
}

TEST(ArgReading, SpilledValuesPastTheSheetsEdge) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  sheet.SetCell({16384, 1048576}, FormulaWith(TCellValue::FromNumber(1)));
  sheet.Spills().SetSpill(16384, 1048576, 2, 2, std::vector<TCellValue>(4, TCellValue::FromNumber(1)));
  const TFormulaArg view = TFormulaArg::FromView(sheet, 0, 16383, 1048570, 10, 4);
  EXPECT_EQ(Shown(EvaluateFunction(u"SUM", {&view, 1}, {})), "4");
}

TEST(ArgReading, IntegersAreCutAndHeldInTheirRange) {
  constexpr int64_t kLeast = std::numeric_limits<int64_t>::min();
  constexpr int64_t kMost = std::numeric_limits<int64_t>::max();
  const struct {
    double Number;
    int64_t Cut;
  } cases[] = {{2.9, 2},
               {-2.9, -2},
               {0x1p63, kMost},
               {-0x1p63, kLeast},
               {1e300, kMost},
               {-1e300, kLeast},
               {0x1p62, int64_t{1} << 62},
               {std::numeric_limits<double>::quiet_NaN(), 0},
               {std::numeric_limits<double>::infinity(), kMost}};
  for (const auto& row : cases) EXPECT_EQ(detail::TruncateToInt64(row.Number), row.Cut) << row.Number;
  int64_t number = 5;
  EXPECT_TRUE(detail::ArgAsInt64(testing::ArgsOf("'-7.5'")[0], number));
  EXPECT_EQ(number, -7);
  EXPECT_FALSE(detail::ArgAsInt64(testing::ArgsOf("'x'")[0], number));
  EXPECT_EQ(number, 0);
}

TEST(ArgReading, FirstValuesAndTheirTexts) {
  const struct {
    const char* Arg;
    const char16_t* Text;
    bool IsTrue;
  } cases[] = {{"'FALSE'", u"FALSE", true}, {"_", u"", false},          {"1.5", u"1.5", true}, {"TRUE", u"TRUE", true},
               {"#N/A", u"#N/A", false},    {"[]", u"", false},         {"fn", u"", false},    {"[0 1]", u"0", false},
               {"''", u"", false},          {"1.2e20", u"1.2E+2", true}};
  for (const auto& row : cases) {
    const TFormulaArg arg = testing::ArgsOf(row.Arg)[0];
    std::u16string buffer;
    EXPECT_EQ(detail::ArgText(arg).View(), row.Text) << row.Arg;
    EXPECT_EQ(detail::ArgTextView(arg, buffer), row.Text) << row.Arg;
    EXPECT_EQ(detail::ArgIsTrue(arg), row.IsTrue) << row.Arg;
  }
}

TEST(FormulaArg, CellsOutsideARectangleAreReferenceErrors) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  sheet.SetValue({2, 2}, TCellValue::FromNumber(7));
  const TFormulaArg view = ViewOf(sheet, {1, 1, 2, 2});
  EXPECT_EQ(Shown(view.CellAt(1, 1)), "7");
  EXPECT_EQ(Shown(view.CellAt(0, 0)), "_");
  for (const auto& [row, col] : {std::pair{-1, 0}, {0, -1}, {2, 0}, {0, 2}}) {
    EXPECT_EQ(Shown(view.CellAt(row, col)), "#REF!");
    EXPECT_EQ(Shown(testing::ArgsOf("5")[0].CellAt(row, col)), "5");
  }
  EXPECT_EQ(Shown(testing::ArgsOf("[]")[0].CellAt(0, 0)), "#REF!");
  EXPECT_EQ(Shown(testing::ArgsOf("[]")[0].First()), "_");
}

TEST(FormulaArg, AMaterializedViewNoLongerFollowsTheSheet) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  sheet.SetValue({1, 1}, TCellValue::FromNumber(1));
  TFormulaArg view = ViewOf(sheet, {1, 1, 1, 2});
  sheet.SetValue({1, 2}, TCellValue::FromNumber(2));
  EXPECT_EQ(Shown(view.CellAt(1, 0)), "2");
  TFormulaArg owned = view;
  owned.Materialize();
  const TFormulaArg copy = owned;
  sheet.SetValue({1, 2}, TCellValue::FromNumber(3));
  EXPECT_EQ(Shown(view.CellAt(1, 0)), "3");
  EXPECT_EQ(Shown(owned.CellAt(1, 0)), "2");
  EXPECT_TRUE(owned.HasOrigin);
  EXPECT_EQ(owned.OriginRow, 1);

  std::vector<TCellValue> cells = owned.TakeCells();  // a copy still holds them
  ASSERT_EQ(cells.size(), 2u);
  cells[1] = TCellValue::FromNumber(9);
  EXPECT_EQ(Shown(copy.CellAt(1, 0)), "2");
  EXPECT_EQ(Shown(owned.CellAt(1, 0)), "_");
}

}  // namespace

}  // namespace tessarine
