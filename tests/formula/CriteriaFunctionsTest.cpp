#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/library/detail/Conditions.h>
#include <tessarine/formula/library/detail/Criteria.h>
#include <tessarine/formula/library/detail/RecordFilter.h>

#include "../support/LocaleGuard.h"
#include "CallNotation.h"

namespace tessarine {

namespace {

const char* const kValues[] = {"_",  "''",   "0",      "-0",   "1",    "'1'",   "'1.0'", "TRUE",    "'TRUE'", "'true'",
                               "5",  "2",    "'a'",    "'A'",  "'b'",  "0.5",   "'0.5'", "'0,5'",   "#N/A",   "'#n/a'",
                               "-3", "1e20", "1.2e20", "'=a'", "'>1'", "'INF'", "'1e'",  "'FALSE'", "FALSE",  "'-'"};
const char* const kOperators[] = {"", "=", "<>", "<", "<=", ">", ">="};

TEST(CriteriaFunctions, ParsedCriteriaAndKeysGiveWhatThePlainOnesGive) {
  for (const char16_t separator : {u'.', u','}) {
    const test::TLocaleGuard locale(separator);
    for (const char* operand : kValues) {
      const TCellValue value = testing::ArgsOf(operand)[0].First();
      std::vector<TCellValue> criteria = {value};
      for (const char* sign : kOperators) {
        criteria.push_back(TCellValue::FromText(TText::FromUtf8(sign + value.ToDisplayString().ToUtf8())));
      }
      for (const char* shown : kValues) {
        const TCellValue cell = testing::ArgsOf(shown)[0].First();
        for (const TCellValue& criterion : criteria) {
          const detail::TCriterion parsed(criterion.View());
          const bool expected = detail::MatchesCriteriaPlain(cell.View(), criterion.View());
          EXPECT_EQ(parsed.Matches(cell.View()), expected) << shown << " " << testing::Shown(criterion);
          if (cell.IsEmpty()) {
            EXPECT_EQ(parsed.MatchesBlank(), expected) << testing::Shown(criterion);
          }
        }
        const detail::TMatchKey key(value.View());
        EXPECT_EQ(key.Equals(cell.View()), detail::EqualsKeyPlain(value.View(), cell.View())) << shown << operand;
        if (cell.IsEmpty()) {
          EXPECT_EQ(key.EqualsBlank(), key.Equals({})) << operand;
        }
      }
    }
  }
}

/// Sheets with gaps against the same cells as arrays: what is walked by stored cells must count blanks alike.
TEST(CriteriaFunctions, ViewsWithGapsGiveWhatEveryCellGives) {
  std::mt19937 random(5);
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  for (int round = 0; round < 300; ++round) {
    sheet.ClearCells();
    for (int i = 0; i < 40; ++i) {
      sheet.SetValue({static_cast<int32_t>(1 + random() % 6), static_cast<int32_t>(1 + random() % 20)},
                     testing::ArgsOf(kValues[random() % std::size(kValues)])[0].First());
    }
    std::vector<TFormulaArg> ranges;
    std::vector<detail::TCondition> conditions;
    for (int i = 0; i < 3; ++i) ranges.push_back(TFormulaArg::FromView(sheet, 0, 1 + 2 * i, 1, 20, 1 + i % 2));
    const int64_t count = 20;
    for (size_t i = 0; i < 1 + random() % 3; ++i) {
      const TCellValue operand = testing::ArgsOf(kValues[random() % std::size(kValues)])[0].First();
      const std::string text = kOperators[random() % std::size(kOperators)] + operand.ToDisplayString().ToUtf8();
      conditions.push_back({&ranges[i], detail::TCriterion(TCellValue::FromText(TText::FromUtf8(text)).View())});
    }
    ASSERT_EQ(detail::CountMatches(conditions, count, nullptr), detail::CountMatchesPlain(conditions, count)) << round;
    std::vector<double> found;
    std::vector<double> expected;
    const auto into = [](std::vector<double>& AList) {
      return [&AList](std::span<const double> ANumbers) {
        AList.insert(AList.end(), ANumbers.begin(), ANumbers.end());
        return true;
      };
    };
    detail::WalkMatchingNumbers(ranges[2], conditions, count, nullptr, into(found));
    detail::WalkMatchingNumbersPlain(ranges[2], conditions, count, into(expected));
    ASSERT_EQ(found, expected) << round;
  }
}

/// Rows of random values under the names a, b and c.
std::string RandomRows(std::mt19937& ARandom, int ARows, std::initializer_list<const char*> AValues) {
  std::string text = "['a' 'b' 'C'";
  for (int row = 0; row < ARows; ++row) {
    for (int col = 0; col < 3; ++col) {
      text += (col == 0 ? ";" : " ") + std::string(AValues.begin()[ARandom() % AValues.size()]);
    }
  }
  return text + "]";
}

TEST(Database, FiledCriteriaPassTheSameRecordsAsPlainOnes) {
  std::mt19937 random(7);
  int passed = 0;
  int failed = 0;
  for (int round = 0; round < 60; ++round) {
    const std::string database = RandomRows(
        random, 40, {"_", "''", "0", "1", "2.5", "'2.5'", "'x'", "'X'", "'1x'", "TRUE", "'true'", "#N/A", "-0", "3"});
    std::string criteria = RandomRows(random, round % 2 == 0 ? 6 : 90,
                                      {"'>1'", "'<=2.5'", "'<0'", "'>=3'", "'>x'", "1", "'=2.50'", "'=x'", "'1X'",
                                       "TRUE", "'#n/a'", "'<>1'", "'='", "''", "0", "3", "'zz'", "'>2'", "'<1'"});
    if (round % 3 == 0) {  // stretches of one column and of two
      criteria = RandomRows(random, 40, {"'<0'", "'>3'", "'>=3'", "'<=0'", "'<-1'", "'>2.5'", "'>x'"});
      criteria.replace(criteria.find('C'), 1, round % 2 == 0 ? "b" : "a");
      if (round % 4 == 0) criteria.replace(criteria.find('a'), 1, "b");
    }
    const auto args = testing::ArgsOf(database + " " + criteria);
    const detail::TRecordFilter filter(args[0], args[1]);
    const auto expected = filter.PassingPlain();
    ASSERT_EQ(filter.Passing(), expected) << database << criteria;
    for (const uint8_t passes : expected) ++(passes ? passed : failed);
  }
  EXPECT_TRUE(passed > 100 && failed > 100) << passed << ' ' << failed;
}

}  // namespace

}  // namespace tessarine
