#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/library/detail/Conditions.h>
#include <tessarine/formula/library/detail/Criteria.h>
#include <tessarine/platform/Locale.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

using testing::ExpectCalls;

TEST(CriteriaFunctions, EqualityIsByNumberOrElseByText) {
  ExpectCalls({
      {"COUNTIF", "[_ 0 '' 'a'] 0", "2"},   // a blank is 0
      {"COUNTIF", "[_ 0 '' 'a'] ''", "2"},  // and it is ""
      {"COUNTIF", "[_ 0 '' 'a'] '='", "2"},
      {"COUNTIF", "[_ 0 '' 'a'] _", "2"},            // a blank criterion is an empty text
      {"COUNTIF", "['a' 'A' 'ab' 'a*'] 'a*'", "1"},  // no wildcards
      {"COUNTIF", "['a' 'A' 'ab'] 'A'", "2"},
      {"COUNTIF", "['a' 'A' 'ab'] '=a'", "2"},
      {"COUNTIF", "['=a' 'a'] '==a'", "1"},
      {"COUNTIF", "[5 '5' '5.0' ' 5' 'x'] 5", "4"},
      {"COUNTIF", "[5 '5' 'x'] '5.00'", "2"},
      {"COUNTIF", "[TRUE 1 '1' 'TRUE'] TRUE", "2"},  // the text TRUE is no number
      {"COUNTIF", "[TRUE 1 '1' 'TRUE'] 1", "3"},
      {"COUNTIF", "[#N/A '#n/a' 'x'] #N/A", "2"},
      {"COUNTIF", "[-0 0 _] '-0'", "3"},
      {"COUNTIF", "[120 1.2e20] 1.2e20", "1"},  // its display text is 1.2E+2
      {"COUNTIF", "[0.30000000000000004 0.3] 0.30000000000000004", "1"},
      {"COUNTIF", "['\xC3\xA4' '\xC3\x84'] '\xC3\xA4'", "1"},  // only ASCII letters fold
  });
}

TEST(CriteriaFunctions, OrderAndDifference) {
  ExpectCalls({
      {"COUNTIF", "[1 2 '5' 'x' _ TRUE #N/A] '>1'", "2"},
      {"COUNTIF", "[1 2 '5' 'x' _ TRUE #N/A] '>=1'", "4"},
      {"COUNTIF", "[1 2 '5' 'x' _ TRUE] '<1'", "1"},
      {"COUNTIF", "[1 2 '5' 'x' _ TRUE] '<=1'", "3"},
      {"COUNTIF", "['x' 'a'] '>b'", "0"},
      {"COUNTIF", "['x' 'a' _ 5] '>'", "0"},
      {"COUNTIF", "[5 '5' 'x' _ #N/A] '<>5'", "3"},
      {"COUNTIF", "['a' 'A' 'b' _] '<>a'", "2"},
      {"COUNTIF", "['a' '' _ 0] '<>'", "2"},
      {"COUNTIF", "[1 2] '> 1'", "1"},  // blanks around a number are allowed
      {"COUNTIF", "[1 '>1'] '=>1'", "1"},
  });
}

TEST(CriteriaFunctions, SumsAndMeansPairCellsByIndex) {
  ExpectCalls({
      {"SUMIF", "[1 2 3] '>1'", "5"},
      {"SUMIF", "[1 '2' 3] '>1'", "3"},  // only numbers are added
      {"SUMIF", "['a' 'b' 'a'] 'a' [1 2 4]", "5"},
      {"SUMIF", "['a' 'b' 'a'] 'a' [1;2;4]", "5"},
      {"SUMIF", "['a' 'b' 'a'] 'a' [1 2]", "1"},
      {"SUMIF", "['a' 'a'] 'a' [1 2 4]", "3"},
      {"SUMIF", "['a' 'a' 'a'] 'a' [1 '7' #N/A]", "1"},
      {"SUMIF", "7 7", "7"},
      {"SUMIF", "7 7 [5 6]", "5"},
      {"SUMIF", "[1] 1 8", "8"},
      {"SUMIF", "[1 2]", "#VALUE!"},
      {"SUMIF", "[] 1 [1]", "0"},
      {"SUMIF", "fn 0 [3]", "3"},
      {"SUMIF", "[1e308 1e308] '>0'", "#NUM!"},
      {"SUMIF", "[1e16 1 -1e16 1] '<>x'", "1"},
      {"AVERAGEIF", "['a' 'b' 'a'] 'a' [1 2 4]", "2.5"},
      {"AVERAGEIF", "['a'] 'b' [1]", "#DIV/0!"},
      {"AVERAGEIF", "['a'] 'a' ['1']", "#DIV/0!"},
      {"AVERAGEIF", "[1]", "#VALUE!"},
      {"COUNTIF", "[1]", "#VALUE!"},
  });
}

TEST(CriteriaFunctions, SeveralCriteriaNeedRangesOfOneSize) {
  ExpectCalls({
      {"COUNTIFS", "[1 2 3] '>1' ['a' 'b' 'a'] 'a'", "1"},
      {"COUNTIFS", "[1 2 3] '>1' ['a';'b';'a'] 'a'", "1"},  // the shape plays no part
      {"COUNTIFS", "[1 2 3] '>1' ['a' 'b'] 'a'", "#VALUE!"},
      {"COUNTIFS", "[1 2 3] '>1' ['a' 'b' 'a']", "#VALUE!"},
      {"COUNTIFS", "", "#VALUE!"},
      {"COUNTIFS", "5 5 'x' 'X'", "1"},
      {"COUNTIFS", "[_ _ 1] 0 [_ 'x' _] ''", "1"},  // all criteria hold for blanks
      {"COUNTIFS", "[] 1", "0"},
      {"SUMIFS", "[10 20 40] ['a' 'b' 'a'] 'a' [1 2 3] '>1'", "40"},
      {"SUMIFS", "[10 20 40] ['a' 'b' 'a'] 'a'", "50"},
      {"SUMIFS", "['10' 20 #N/A] ['a' 'a' 'a'] 'a'", "20"},
      {"SUMIFS", "[10 20] ['a' 'b' 'a'] 'a'", "#VALUE!"},
      {"SUMIFS", "[10 20] ['a' 'b']", "#VALUE!"},
      {"SUMIFS", "[10]", "#VALUE!"},
      {"SUMIFS", "10 1 1", "10"},
      {"SUMIFS", "[] [] 1", "0"},
  });
}

/// The process's locale for the length of a test.
class TLocaleGuard {
 public:
  explicit TLocaleGuard(char16_t ADecimalSeparator) : FBefore(CurrentFormatSettings()) {
    TFormatSettings settings = FBefore;
    settings.DecimalSeparator = ADecimalSeparator;
    SetDefaultFormatSettings(settings);
  }
  ~TLocaleGuard() { SetDefaultFormatSettings(FBefore); }

 private:
  TFormatSettings FBefore;
};

TEST(CriteriaFunctions, UnderADecimalCommaFractionsAreComparedAsTexts) {
  const TLocaleGuard comma(u',');
  ExpectCalls({
      {"COUNTIF", "[0.5 '0.5' '0,5'] 0.5", "2"},    // "0.5" does not read as a number
      {"COUNTIF", "[0.5 '0.5' '0,5'] '0,5'", "2"},  // "0,5" does, and so does the cell with that text
      {"COUNTIF", "[0.5 3 '0,5'] '>0,4'", "3"},
      {"COUNTIF", "[0.5 3] '>0.4'", "0"},
  });
}

const char* const kValues[] = {"_",  "''",   "0",      "-0",   "1",    "'1'",   "'1.0'", "TRUE",    "'TRUE'", "'true'",
                               "5",  "2",    "'a'",    "'A'",  "'b'",  "0.5",   "'0.5'", "'0,5'",   "#N/A",   "'#n/a'",
                               "-3", "1e20", "1.2e20", "'=a'", "'>1'", "'INF'", "'1e'",  "'FALSE'", "FALSE",  "'-'"};
const char* const kOperators[] = {"", "=", "<>", "<", "<=", ">", ">="};

TEST(CriteriaFunctions, ParsedCriteriaAndKeysGiveWhatThePlainOnesGive) {
  for (const char16_t separator : {u'.', u','}) {
    const TLocaleGuard locale(separator);
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

}  // namespace

}  // namespace tessarine
