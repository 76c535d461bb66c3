#include <tessarine/core/reference/detail/FormulaTemplate.h>

#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tessarine/core/values/Address.h>
#include <tessarine/platform/Unicode.h>

#include "../support/CaseTable.h"

namespace tessarine::detail {
namespace {

TEST(FormulaTemplates, CopiesOfOneFormulaShareATemplateAndOthersDoNot) {
  test::ExpectCases("core/formula_templates.tsv", [](const test::TCase& ACase) {
    TFormulaPool pool;
    const auto intern = [&](size_t AField) {
      const TCellAddress at = TCellAddress::FromA1(ACase.Text(AField + 1));
      return pool.Intern(ACase.Text(AField), at.Col, at.Row);
    };
    return intern(0) == intern(2) ? "same" : "other";
  });
}

TEST(FormulaTemplates, TellTheirReferencesWithPlaceAndDistance) {
  TFormulaPool pool;
  const TFormulaTemplate* formula = pool.Intern(u"=$AA$10+SUM(B$2:C30)", 3, 20);
  const auto slots = formula->SlotsAt(4, 21);
  EXPECT_EQ(formula->TextAt(4, 21), u"=$AA$10+SUM(C$2:D31)");
  ASSERT_EQ(slots.size(), 3u);
  const TReferenceSlot expected[] = {
      {1, 6, 27, 10, true, true}, {12, 3, -1, 2, false, true}, {16, 3, 0, 10, false, false}};
  for (size_t i = 0; i < slots.size(); ++i) {
    EXPECT_EQ(slots[i].Offset, expected[i].Offset) << i;
    EXPECT_EQ(slots[i].Length, expected[i].Length) << i;
    EXPECT_EQ(slots[i].Col, expected[i].Col) << i;
    EXPECT_EQ(slots[i].Row, expected[i].Row) << i;
    EXPECT_EQ(slots[i].ColAbsolute, expected[i].ColAbsolute) << i;
    EXPECT_EQ(slots[i].RowAbsolute, expected[i].RowAbsolute) << i;
  }
  EXPECT_TRUE(formula->HasSlots());
  EXPECT_FALSE(pool.Intern(u"=1+PI()", 1, 1)->HasSlots());
}

TEST(FormulaTemplates, GoWithTheLastReference) {
  TFormulaPool pool;
  TFormulaTemplate* first = pool.Intern(u"=A1", 2, 1);
  TFormulaTemplate* second = pool.Intern(u"=A2", 2, 2);
  ASSERT_EQ(first, second);
  pool.Release(first);
  EXPECT_EQ(pool.Count(), 1u);
  EXPECT_EQ(second->RefCount(), 1u);
  pool.Release(second);
  EXPECT_EQ(pool.Count(), 0u);
  EXPECT_EQ(pool.Intern(u"=A3", 2, 3)->TextAt(2, 3), u"=A3");  // nothing remembers the one that went
}

/// Random texts of pieces that references stand in, next to or apart from.
class TFormulaTexts {
 public:
  explicit TFormulaTexts(unsigned ASeed) : FRandom(ASeed) {}

  int32_t Below(int32_t ALimit) { return static_cast<int32_t>(FRandom() % static_cast<uint32_t>(ALimit)); }

  std::u16string Next() {
    static const char16_t* const pieces[] = {
        u"+", u"(", u")",         u"SUM(",   u",",      u":",     u"!",    u".",        u" ",      u"\"", u"'",
        u"[", u"]", u"T[[#All],", u"'s p'!", u"\"A1\"", u"1.5",   u"$",    u"_",        u"\u00E9", u"a1", u"A01",
        u"A", u"7", u"\uE000",    u"\uE001", u"\uE00F", u"LOG10", u"XFE1", u"A1048577", u"ABCD1",  u"@"};
    std::u16string text = Below(8) == 0 ? u"" : u"=";
    const int32_t count = Below(9);
    for (int32_t i = 0; i < count; ++i) {
      if (Below(2) == 0) {
        text += pieces[Below(static_cast<int32_t>(std::size(pieces)))];
      } else {
        AppendReference(text);
      }
    }
    return text;
  }

 private:
  void AppendReference(std::u16string& AText) {
    if (Below(3) == 0) AText += u'$';
    AppendColLetters(Below(6) == 0 ? Below(kMaxCol) + 1 : Below(4) + 1, AText);
    if (Below(3) == 0) AText += u'$';
    AText += Utf8ToUtf16(std::to_string(Below(6) == 0 ? Below(kMaxRow) + 1 : Below(5) + 1));
  }

  std::mt19937 FRandom;
};

TEST(FormulaTemplates, GiveBackEveryTextAsItCameIn) {
  TFormulaTexts texts(1);
  TFormulaPool pool;
  for (int i = 0; i < 40000; ++i) {
    const std::u16string text = texts.Next();
    const int32_t col = texts.Below(4) == 0 ? texts.Below(kMaxCol) + 1 : texts.Below(5) + 1;
    const int32_t row = texts.Below(4) == 0 ? texts.Below(kMaxRow) + 1 : texts.Below(5) + 1;
    const TFormulaTemplate* formula = pool.Intern(text, col, row);
    ASSERT_EQ(formula->TextAt(col, row).ToUtf8(), Utf16ToUtf8(text)) << "in " << col << ", " << row;
    for (const TReferenceSlot& slot : formula->SlotsAt(col, row)) {
      const std::u16string_view reference = std::u16string_view(text).substr(slot.Offset, slot.Length);
      const TCellAddress address = TCellAddress::FromA1(reference);
      EXPECT_EQ(address.Col, slot.ColAbsolute ? slot.Col : slot.Col + col) << Utf16ToUtf8(text);
      EXPECT_EQ(address.Row, slot.RowAbsolute ? slot.Row : slot.Row + row) << Utf16ToUtf8(text);
    }
  }
}

TEST(FormulaTemplates, LookAtRecentOnesFindsWhatTheKeyFinds) {
  TFormulaTexts texts(2);
  TFormulaPool pool;
  std::vector<TFormulaTemplate*> held;
  for (int round = 0; round < 3000; ++round) {
    // A text, then copies of it and near misses below, so that the look at the recent one is asked at every turn.
    const std::u16string text = texts.Next();
    const int32_t col = texts.Below(3) + 1;
    for (int step = 0; step < 8; ++step) {
      const int32_t row = texts.Below(3) == 0 ? kMaxRow - texts.Below(3) : texts.Below(6) + 1;
      TFormulaTemplate* base = pool.InternPlain(text, col, row);
      std::u16string copy = texts.Below(4) == 0 ? text : std::u16string(base->TextAt(col, row + texts.Below(3) - 1));
      if (texts.Below(5) == 0 && !copy.empty())
        copy[static_cast<size_t>(texts.Below(static_cast<int32_t>(copy.size())))] = u'1';
      TFormulaTemplate* fast = pool.Intern(copy, col, row);
      TFormulaTemplate* plain = pool.InternPlain(copy, col, row);
      ASSERT_EQ(fast, plain) << Utf16ToUtf8(copy) << " in " << col << ", " << row;
      held.insert(held.end(), {base, fast, plain});
    }
    if (texts.Below(20) != 0) continue;
    for (TFormulaTemplate* formula : held) pool.Release(formula);
    held.clear();
    EXPECT_EQ(pool.Count(), 0u);
  }
}

TEST(FormulaTemplates, TakeVeryLongTexts) {
  TFormulaPool pool;
  for (const char16_t* piece : {u"A1 ", u"\"", u"[", u"'", u"((((", u"$", u"AAAA", u"\uE000"}) {
    std::u16string text = u"=";
    while (text.size() < 1'000'000) text += piece;
    EXPECT_TRUE(pool.Intern(text, 5, 5)->TextAt(5, 5).View() == text) << Utf16ToUtf8(piece);
  }
}

}  // namespace
}  // namespace tessarine::detail
