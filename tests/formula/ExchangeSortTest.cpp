#include <tessarine/formula/library/detail/ExchangeSort.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "CallNotation.h"

namespace tessarine {

namespace {

using detail::ExchangeSortTies;
using detail::SortedOrder;
using detail::SortedOrderPlain;

std::vector<TValueView> ViewsOf(const std::vector<TCellValue>& ACells) {
  std::vector<TValueView> views;
  for (const TCellValue& cell : ACells) views.push_back(cell.View());
  return views;
}

std::vector<uint32_t> OrderOf(std::string_view ACells, bool ADescending = false) {
  const std::vector<TFormulaArg> args = testing::ArgsOf(ACells);
  return SortedOrder(ViewsOf(args[0].Cells()), ADescending);
}

using TOrder = std::vector<uint32_t>;

TEST(ExchangeSort, EqualKeysStandWhereTheExchangesLeaveThem) {
  EXPECT_EQ(OrderOf("[2 2 1]"), (TOrder{2, 1, 0}));
  EXPECT_EQ(OrderOf("[2 2 2]"), (TOrder{0, 1, 2}));
  EXPECT_EQ(OrderOf("[3 3 2 1]"), (TOrder{3, 2, 0, 1}));
  EXPECT_EQ(OrderOf("[1 1 2]", true), (TOrder{2, 1, 0}));
  EXPECT_EQ(OrderOf("['b' 'B' 'a']"), (TOrder{2, 1, 0}));
  EXPECT_EQ(OrderOf("[_ 0 FALSE -1]"), (TOrder{3, 1, 2, 0}));  // three zeros
  EXPECT_EQ(OrderOf("[7]"), (TOrder{0}));
  EXPECT_TRUE(SortedOrder({}, false).empty());
}

TEST(ExchangeSort, TextsGoByUnitsFoldedToUpperCase) {
  EXPECT_EQ(OrderOf("['_' 'b' 'A']"), (TOrder{2, 1, 0}));
  EXPECT_EQ(OrderOf("['abcde' 'abcd' 'ABCDD' 'abc']"), (TOrder{3, 1, 2, 0}));
  EXPECT_EQ(OrderOf("['x' #N/A '']"), (TOrder{2, 1, 0}));
  EXPECT_EQ(OrderOf("['abcdefgh2' 'abcdefgh1' 'b']"), (TOrder{1, 0, 2}));  // told apart by the ninth unit
  EXPECT_EQ(OrderOf("['\xD0\x96xyz2' '\xD0\x96xyz1' 'b']"), (TOrder{2, 1, 0}));
}

/// Every sequence of up to seven keys over an alphabet, in both directions.
TEST(ExchangeSort, AllShortSequencesOfNumbersEqualTheLoop) {
  for (int length = 1; length <= 7; ++length) {
    std::vector<int> digits(static_cast<size_t>(length), 0);
    for (bool more = true; more;) {
      std::vector<TCellValue> cells;
      for (const int digit : digits) cells.push_back(TCellValue::FromNumber(digit));
      const auto keys = ViewsOf(cells);
      for (const bool descending : {false, true}) {
        ASSERT_EQ(SortedOrder(keys, descending), SortedOrderPlain(keys, descending))
            << ::testing::PrintToString(digits);
      }
      size_t at = 0;
      while (at < digits.size() && digits[at] == 3) digits[at++] = 0;
      more = at < digits.size();
      if (more) ++digits[at];
    }
  }
}

TCellValue RandomKey(std::mt19937& ARandom, int AKinds, uint32_t ADistinct) {
  const uint32_t pick = ARandom() % ADistinct;
  switch (ARandom() % static_cast<uint32_t>(AKinds)) {
    case 0: return TCellValue::FromNumber((pick % 2 ? -0.5 : 1e10) * pick);
    case 1: return TCellValue::FromBoolean(pick % 2 == 0);
    case 2: return TCellValue::FromText(TText::FromUtf8(std::to_string(pick)));
    case 3: return {};
    case 4: return TCellValue::FromNumber(-0.0);
    case 5: return TCellValue::FromText(TText::FromUtf8((pick % 2 ? "Key" : "kEY") + std::to_string(pick / 2) + "x"));
    default: return TCellValue::FromError(static_cast<TCellErrorCode>(1 + pick % 9));
  }
}

TEST(ExchangeSort, RandomKeysOfEveryMixtureEqualTheLoop) {
  std::mt19937 random(7);
  for (int round = 0; round < 400; ++round) {
    const uint32_t distinct = 1 + random() % (round % 4 == 0 ? 1000 : 12);
    const size_t count = 1 + random() % (round % 10 == 0 ? 900 : 120);  // on both sides of the switch of methods
    const int kinds = round % 3 == 0 ? 7 : 5;                           // five kinds: all of them numbers
    std::vector<TCellValue> cells;
    for (size_t i = 0; i < count; ++i) cells.push_back(RandomKey(random, kinds, distinct));
    if (round % 3 == 1) {
      for (TCellValue& cell : cells) {
        if (cell.Kind != cvkError) cell = RandomKey(random, 7, distinct);
      }
      std::erase_if(cells, [](const TCellValue& ACell) {  // none of them a number
        return ACell.Kind != cvkError && (ACell.Kind != cvkText || ACell.Text.View().back() != u'x');
      });
    }
    const auto keys = ViewsOf(cells);
    const bool descending = random() % 2 == 0;
    ASSERT_EQ(SortedOrder(keys, descending), SortedOrderPlain(keys, descending)) << "round " << round;
  }
}

TEST(ExchangeSort, LargeGroupsTurnAsTheLoopTurnsThem) {
  std::mt19937 random(11);
  std::vector<TCellValue> cells;
  for (int i = 0; i < 4000; ++i) cells.push_back(TCellValue::FromNumber(random() % 3));
  const auto keys = ViewsOf(cells);
  EXPECT_EQ(SortedOrder(keys, false), SortedOrderPlain(keys, false));
  EXPECT_EQ(SortedOrder(keys, true), SortedOrderPlain(keys, true));
}

/// Texts that share a beginning, end early or late, hold U+0000 or units above a byte.
TEST(ExchangeSort, RandomTextsEqualTheLoop) {
  std::mt19937 random(13);
  const std::u16string units = u"aAbZ_{xX\u00E9\u0416";
  for (int round = 0; round < 120; ++round) {
    const size_t alphabet = 2 + random() % (units.size() - 1);
    const size_t length = random() % 12;
    std::vector<TCellValue> cells;
    for (size_t i = 0; i < (round % 4 == 0 ? 700u : 90u); ++i) {
      std::u16string text = round % 3 == 0 ? u"" : i % 2 == 0 ? u"Shared " : u"sHARED ";
      if (round % 5 == 0 && i % 3 != 1) text.append(70, i % 2 == 0 ? u'q' : u'Q');
      for (size_t unit = random() % (length + 1); unit > 0; --unit) {
        text += random() % 9 == 0 ? u'\0' : units[random() % std::min(alphabet, units.size())];
      }
      const bool isShared = i > 0 && random() % 4 == 0;
      cells.push_back(isShared ? cells[random() % i] : TCellValue::FromText(TText(text)));
    }
    const auto keys = ViewsOf(cells);
    const bool descending = random() % 2 == 0;
    ASSERT_EQ(SortedOrder(keys, descending), SortedOrderPlain(keys, descending)) << "round " << round;
  }
}

TEST(ExchangeSort, ManyMixedKeysAreStillAllThere) {
  std::mt19937 random(3);
  std::vector<TCellValue> cells;
  for (size_t i = 0; i < detail::kMaxMixedKeys + 500; ++i) cells.push_back(RandomKey(random, 7, 5000));
  TOrder order = SortedOrder(ViewsOf(cells), false);
  std::sort(order.begin(), order.end());
  for (uint32_t i = 0; i < order.size(); ++i) ASSERT_EQ(order[i], i);
  EXPECT_EQ(order.size(), cells.size());
}

}  // namespace

}  // namespace tessarine
