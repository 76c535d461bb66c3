#include <gtest/gtest.h>

#include <functional>
#include <iterator>
#include <random>
#include <stop_token>
#include <string>
#include <vector>

#include <tessarine/formula/detail/Interpreter.h>
#include <tessarine/platform/Errors.h>

#include <tests/support/SheetFixture.h>

namespace tessarine::testing {
namespace {

TEST(Recalculation, ChainsOfSpillsCostTheirLength) {
  TSheetFixture sheet;
  sheet.Set("A1", "={1,2}");
  for (int32_t col = 3; col <= 4001; col += 2) {
    const TText formula(u"=" + TCellRange{col - 2, 1, col - 1, 1}.ToA1());
    sheet.Sheet().SetValue({col, 1}, TCellValue::FromFormula(formula));
  }
  sheet.Evaluator.RecalculateAll();
  EXPECT_EQ(sheet.Sheet().GetEffectiveValue({4002, 1}), TCellValue::FromNumber(2));
  sheet.Set("A1", "={5,6}");
  sheet.Evaluator.NotifyCellChanged(0, 1, 1);
  EXPECT_EQ(sheet.Sheet().GetEffectiveValue({4002, 1}), TCellValue::FromNumber(6));
}

TEST(Recalculation, AStoppedOneLeavesTheResultsOfBefore) {
  for (const int reportsBeforeStop : {0, 1, 2, 3}) {
    TSheetFixture sheet;
    constexpr int32_t kRows = 9000;
    for (int32_t row = 1; row <= kRows; ++row) {
      const std::string r = std::to_string(row);
      sheet.Set("A" + r, r);
      sheet.Set("B" + r, "=A" + r + "&\"x\"");
      sheet.Set("C" + r, row == 1 ? "=A1" : "=C" + std::to_string(row - 1) + "+A" + r);
    }
    sheet.Set("E1", "={1;2;3}");
    sheet.Evaluator.RecalculateAll();
    std::vector<std::string> before;
    for (int32_t row = 1; row <= kRows; row += 37)
      before.push_back(sheet.Show("B" + std::to_string(row)) + sheet.Show("C" + std::to_string(row)));
    for (int32_t row = 1; row <= kRows; ++row) sheet.Sheet().SetValue({1, row}, TCellValue::FromNumber(-row));
    sheet.Set("E1", "={7;8}");

    std::stop_source stop;
    int reports = 0;
    TWorkControl control;
    control.Stop = stop.get_token();
    control.Progress = [&](const TTessarineProgressEvent&) {
      if (reports++ == reportsBeforeStop) stop.request_stop();
    };
    EXPECT_THROW(sheet.Evaluator.RecalculateAll(control), ECancelled);
    size_t at = 0;
    for (int32_t row = 1; row <= kRows; row += 37)
      ASSERT_EQ(sheet.Show("B" + std::to_string(row)) + sheet.Show("C" + std::to_string(row)), before[at++]) << row;
    EXPECT_EQ(sheet.Show("E1 E2 E3"), "_ 2 3");  // the new formula had no result yet; the old block is back
    sheet.Evaluator.RecalculateAll();
    EXPECT_EQ(sheet.Show("C2 E2 E3"), "-3 8 _");
  }
}

TEST(Recalculation, OutlastsListenersThatEdit) {
  const char* const formulas[] = {"=SEQUENCE(3,2)",
                                  "=A1:B4*2",
                                  "=SORT(A1:A6)",
                                  "=SUM(A1:F12)",
                                  "=C1+1",
                                  "=LET(x,A1,x+B2)",
                                  "=MAP(A1:A5,LAMBDA(v,v+C2))",
                                  "=Other!A1:A3",
                                  "={1,2;3,4}"};
  for (unsigned seed = 0; seed < 60; ++seed) {
    std::mt19937 random(seed);
    const auto pick = [&](unsigned ALimit) { return static_cast<int32_t>(random() % ALimit); };
    TSheetFixture book({{"Other!A1", "=SEQUENCE(2)"}});
    int budget = 60, depth = 0;
    std::function<void()> edit;
    const auto listen = [&] {
      for (int32_t i = 0; i < book.Workbook.SheetCount(); ++i) {
        book.Sheet(i).SetOnChange([&](TWorksheet&, TCellAddress, const TCell&, const TCell&) {
          if (depth >= 2 || budget-- <= 0) return;
          ++depth;
          edit();
          --depth;
        });
      }
    };
    edit = [&] {
      const int32_t index = pick(static_cast<unsigned>(book.Workbook.SheetCount())), col = 1 + pick(6),
                    row = 1 + pick(12);
      TWorksheet& sheet = book.Sheet(index);
      switch (pick(9)) {
        case 0: sheet.ClearCell({col, row}); break;
        case 1: book.Workbook.InsertRows(index, row, 1); break;
        case 2: book.Evaluator.NotifyCellChanged(index, col, row); break;
        case 3: book.Evaluator.RecalculateAll(); break;
        case 4: book.Workbook.SheetCount() > 1 ? book.Workbook.RemoveSheet(index) : sheet.ClearCells(); break;
        case 5: book.Workbook.AddSheet(u"Other"), listen(); break;
        default: sheet.SetValue({col, row}, ContentOf(formulas[pick(std::size(formulas))])); break;
      }
    };
    for (int step = 0; step < 40; ++step) edit();
    listen();
    for (int step = 0; step < 10; ++step, budget = 60) book.Evaluator.RecalculateAll();
    EXPECT_EQ(book.Eval("=SUM(SEQUENCE(3))"), "6") << seed;
  }
}

// ---- random workbooks: the fast ways against the plain one

/// One random content, most of it numeric and filled down so that runs and blocks arise.
std::string RandomContent(std::mt19937& ARandom, int32_t ARow) {
  const auto pick = [&](int ALimit) { return static_cast<int>(ARandom() % static_cast<unsigned>(ALimit)); };
  const std::string r = std::to_string(ARow);
  const std::string above = std::to_string(std::max(1, ARow - 1));
  const std::string below = std::to_string(ARow + 1);
  switch (pick(22)) {
    case 0: return "=A" + r + "*2+B" + r;
    case 1: return "=-C" + above + "/(A" + r + "-3)";
    case 2: return "=SUM(A$1:A" + r + ")";
    case 3: return "=SUM(A" + above + ":C" + r + ")";
    case 4: return "=D" + above + "+1";
    case 5: return "=IF(A" + r + ">B" + r + ",A" + r + ",B" + r + "&\"t\")";
    case 6: return "=AVERAGE(B$2:B" + r + ")";
    case 7: return "=E" + below + "+1";
    case 8: return "=MAX(A:A)";
    case 9: return "=$A$1*1E3";
    case 10: return "={1;2}";
    case 11: return "=A" + r + ":B" + r;
    case 12: return "=COUNT(D$1:D" + r + ")+MIN(D$1:D" + r + ")";
    case 13: return "=Other!A" + r + "+1";
    case 14: return "='text";
    case 15: return "_";
    case 16: return "TRUE";
    case 17: return "'word";
    default: return std::to_string(pick(9) - 2) + (pick(3) ? "" : ".25");
  }
}

std::string AddressOf(int32_t ACol, int32_t ARow) { return TText(TCellAddress{ACol, ARow}.ToA1()).ToUtf8(); }

std::string ShowAll(const TSheetFixture& AFixture) {
  std::string text;
  for (int32_t row = 1; row <= 44; ++row) {
    for (int32_t col = 1; col <= 7; ++col) {
      const std::string address = AddressOf(col, row);
      text += address + "=" + AFixture.Show(address) + " ";
    }
    text += AFixture.Show("Other!A" + std::to_string(row)) + "\n";
  }
  return text;
}

TEST(Recalculation, FastAndPlainWaysAgreeOnRandomWorkbooks) {
  std::mt19937 random(4711);
  for (int round = 0; round < 150; ++round) {
    TSheetFixture fast;
    TSheetFixture plain;
    plain.Evaluator.Options() = {false, false, false, false, false};
    const auto setBoth = [&](const std::string& AAddress, const std::string& AContent) {
      fast.Set(AAddress, AContent);
      plain.Set(AAddress, AContent);
    };
    for (int32_t row = 1; row <= 12; ++row) setBoth("Other!A" + std::to_string(row), std::to_string(row * 3));
    for (int block = 0; block < 7; ++block) {  // a formula or kind of value, filled down
      const int32_t col = static_cast<int32_t>(random() % 6) + 1;
      const int32_t first = static_cast<int32_t>(random() % 30) + 1;
      const int32_t last = std::min(40, first + static_cast<int32_t>(random() % 25));
      const unsigned seed = random();
      for (int32_t row = first; row <= last; ++row) {
        std::mt19937 same(seed);
        setBoth(AddressOf(col, row), RandomContent(same, row));
      }
    }
    fast.Evaluator.RecalculateAll();
    plain.Evaluator.RecalculateAll();
    ASSERT_EQ(ShowAll(fast), ShowAll(plain)) << "round " << round;
    for (int edit = 0; edit < 12; ++edit) {
      const int32_t col = static_cast<int32_t>(random() % 6) + 1;
      const int32_t row = static_cast<int32_t>(random() % 40) + 1;
      const std::string content = RandomContent(random, row);
      setBoth(AddressOf(col, row), content);
      fast.Evaluator.NotifyCellChanged(0, col, row);
      plain.Evaluator.NotifyCellChanged(0, col, row);
      ASSERT_EQ(ShowAll(fast), ShowAll(plain))
          << "round " << round << ", edit " << edit << ": " << AddressOf(col, row) << " " << content;
      ASSERT_EQ(fast.Eval("=ROW()&\",\"&COLUMN()"), plain.Eval("=ROW()&\",\"&COLUMN()")) << "round " << round;
    }
    fast.Evaluator.RecalculateAll();
    plain.Evaluator.RecalculateAll();
    ASSERT_EQ(ShowAll(fast), ShowAll(plain)) << "round " << round << ", all over";
  }
}

}  // namespace
}  // namespace tessarine::testing
