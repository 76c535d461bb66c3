#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>

#include <tessarine/core/reference/FormulaTokenizer.h>
#include <tessarine/core/reference/ReferenceRewrite.h>
#include <tessarine/platform/Unicode.h>

#include "../support/CaseTable.h"

namespace tessarine {
namespace {

using test::ExpectCases;
using test::TCase;
using test::TCaseWork;

std::string Parts(std::u16string_view AText) {
  const auto parts = SplitSheetRefText(AText);
  if (!parts) return "none";
  return Utf16ToUtf8(parts->Sheet + u"|" + parts->First + u"|" + parts->Second);
}

/// A shift or a move on Sheet1, where the formula stands.
TCaseWork Shifted(TShiftAxis AAxis) {
  return [AAxis](const TCase& ACase) {
    return AdjustFormula(ACase.Text(1), u"Sheet1", true, AAxis, ACase.Integer(2), ACase.Integer(3));
  };
}

TCaseWork Moved(TShiftAxis AAxis) {
  return [AAxis](const TCase& ACase) {
    return AdjustFormulaForMove(ACase.Text(1), u"Sheet1", true, AAxis, ACase.Integer(2), ACase.Integer(3),
                                ACase.Integer(4));
  };
}

TEST(ReferenceRewrite, ExamplesHold) {
  const auto inserted = [](const TCase& ACase) {
    return AdjustFormula(ACase.Text(1), ACase.Text(2), ACase.Flag(3), saRows, 1, 1);
  };
  const auto copied = [](const TCase& ACase) {
    return OffsetSharedFormula(ACase.Text(1), ACase.Integer(2), ACase.Integer(3));
  };
  ExpectCases("core/reference_rewrites.tsv",
              {{"split", [](const TCase& ACase) { return Parts(ACase.Text(1)); }},
               {"quote", [](const TCase& ACase) { return QuoteSheetName(ACase.Text(1)); }},
               {"rows", Shifted(saRows)},
               {"columns", Shifted(saColumns)},
               {"insert-row", inserted},
               {"move-rows", Moved(saRows)},
               {"move-columns", Moved(saColumns)},
               {"copy", copied}});
}

/// A formula in canonical spelling, made of references, names, numbers and operators.
std::u16string RandomFormula(std::mt19937& ARandom) {
  static const char16_t* const kOperands[] = {
      u"B3",    u"$C$4", u"D$5:$E6", u"Data!F7",    u"'My Data'!G8:H9", u"B:C",
      u"$3:$4", u"12",   u"\"A1\"",  u"SUM(B3,C4)", u"Table1[Price]",   u"TRUE"};
  std::u16string formula = u"=";
  for (auto count = ARandom() % 5 + 1; count > 0; --count) {
    formula += kOperands[ARandom() % std::size(kOperands)];
    if (count > 1) formula += u"+-*&"[ARandom() % 4];
  }
  return formula;
}

TEST(ReferenceRewrite, AnEditAndItsReverseGiveTheFormulaBack) {
  std::mt19937 random(11);
  for (int round = 0; round < 2000; ++round) {
    const std::u16string formula = RandomFormula(random);
    const TShiftAxis axis = random() % 2 ? saRows : saColumns;
    const auto start = static_cast<int64_t>(random() % 12) + 1;
    const auto count = static_cast<int64_t>(random() % 4) + 1;
    const auto dest = static_cast<int64_t>(random() % 12) + 1;
    for (const char16_t* sheet : {u"Data", u"My Data", u"Elsewhere"}) {
      const std::u16string inserted = AdjustFormula(formula, sheet, true, axis, start, count);
      EXPECT_EQ(AdjustFormula(inserted, sheet, true, axis, start, -count), formula);
      const std::u16string moved = AdjustFormulaForMove(formula, sheet, true, axis, start, count, dest);
      EXPECT_EQ(AdjustFormulaForMove(moved, sheet, true, axis, dest, count, start), formula);
    }
    EXPECT_EQ(OffsetSharedFormula(OffsetSharedFormula(formula, count, dest), -count, -dest), formula);
  }
}

}  // namespace
}  // namespace tessarine
