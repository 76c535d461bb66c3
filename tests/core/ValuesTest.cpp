#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include <tessarine/core/lists/PageSetupNames.h>
#include <tessarine/core/lists/SavedView.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/CellValue.h>
#include <tessarine/core/values/Coercion.h>

#include "../support/CaseTable.h"
#include "../support/SheetFixture.h"

namespace tessarine {
namespace {

using test::ExpectCases;
using test::TCase;

std::string Utf8(std::u16string_view AText) { return TText(AText).ToUtf8(); }

TEST(Addresses, LettersAndColumnsAreInverseWithinTheSheet) {
  for (int32_t col = 1; col <= kMaxCol; ++col) ASSERT_EQ(LettersToCol(ColToLetters(col)), col);
  EXPECT_EQ(ColToLetters(16384), u"XFD");
  EXPECT_EQ(ColToLetters(16385), u"XFE");
  EXPECT_EQ(ColToLetters(0), u"");
}

std::string PlainText(const TCellValue& AValue) {
  std::u16string text = u"<";
  AppendDisplayString(AValue.View(), text);
  EXPECT_EQ(text, u"<" + AValue.ToDisplayString().ToString());
  EXPECT_EQ(TCellValue::FromView(AValue.View()), AValue);
  return Utf8(std::u16string_view(text).substr(1));
}

TEST(Values, ExamplesHold) {
  const auto address = [](const TCase& ACase) {
    const TCellAddress read = TCellAddress::FromA1(ACase.Text(1));
    return std::to_string(read.Col) + "," + std::to_string(read.Row);
  };
  const auto range = [](const TCase& ACase) {
    const TCellRange read = TCellRange::FromA1(ACase.Text(1));
    return read.StartCol < 1 || read.StartRow < 1 ? "none" : Utf8(read.ToA1());
  };
  const auto sheetRange = [](const TCase& ACase) {
    const auto parsed = TryParseSheetRange(ACase.Text(1));
    return parsed ? Utf8(parsed->Sheet) + "|" + Utf8(parsed->Range.ToA1()) : "none";
  };
  const auto file = [](const TCase& ACase) {
    const TTessarineFileFormat format = FileFormatFromExtension(ACase[1]);
    return format == ffTsr    ? "Tsr"
           : format == ffXlsx ? "Xlsx"
           : format == ffOds  ? "Ods"
           : format == ffCsv  ? "Csv"
                              : "Auto";
  };
  const auto selection = [](const TCase& ACase) {
    return TSheetSavedView::FormatSqref(TSheetSavedView::ParseSqref(ACase.Text(1)));
  };
  const auto compare = [](const TCase& ACase) {
    return CompareValues(testing::ContentOf(ACase[1]).View(), testing::ContentOf(ACase[2]).View());
  };
  ExpectCases("core/values.tsv", {{"shows", [](const TCase& ACase) { return PlainText(testing::ContentOf(ACase[1])); }},
                                  {"compare", compare},
                                  {"address", address},
                                  {"range", range},
                                  {"column", [](const TCase& ACase) { return LettersToCol(ACase.Text(1)); }},
                                  {"file", file},
                                  {"sheet-range", sheetRange},
                                  {"selection", selection}});
  EXPECT_EQ(TSheetSavedView::FormatSqref({{3, 9, 2, 2}}), u"B2:C9");
}

TEST(Ranges, BehaveLikeTheirOrderedCorners) {
  const TCellRange swapped{3, 9, 2, 2};
  EXPECT_EQ(swapped.ToA1(), u"B2:C9");
  EXPECT_TRUE(swapped.Contains(2, 9));
  EXPECT_FALSE(swapped.Contains(4, 5));
  EXPECT_EQ(swapped.Width(), 2);
  EXPECT_EQ(swapped.Height(), 8);
  EXPECT_TRUE(swapped.Intersects({3, 3, 1, 2}));
  EXPECT_FALSE(swapped.Intersects({4, 1, 9, 9}));
}

TEST(Values, FormulasShowTheirSignAndUnknownErrorsAName) {
  EXPECT_EQ(PlainText(TCellValue::FromFormula(u"SUM(A1)")), "=SUM(A1)");
  EXPECT_EQ(PlainText(TCellValue::FromFormula(u"")), "");
  EXPECT_EQ(ErrorCodeToString(ceNone), u"#ERROR!");
  EXPECT_EQ(ErrorCodeToString(static_cast<TCellErrorCode>(77)), u"#ERROR!");
}

TEST(Values, NumbersThatAreNoneBecomeErrors) {
  EXPECT_EQ(NumberOrError(1e308 * 10), TCellValue::FromError(ceNum));
  EXPECT_FALSE(std::signbit(NumberOrError(-0.0).Number));
  double number = 7;
  EXPECT_FALSE(AsNumber(TCellValue::FromText(u""), number));
  EXPECT_EQ(number, 0);
  EXPECT_TRUE(AsNumber(TCellValue::FromText(u" -3.5E2 "), number));
  EXPECT_EQ(number, -350);
  EXPECT_TRUE(ValueIsTruthy(TCellValue::FromText(u"FALSE")));
  EXPECT_FALSE(ValueIsTruthy(TCellValue::FromError(ceNA)));
}

TEST(Texts, AreSharedAcrossThreads) {
  const TText text(u"a text that stands in one block");
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&text] {
      std::vector<TText> copies;
      for (int k = 0; k < 20000; ++k) copies.push_back(text);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(text.Block()->RefCount.load(), 1u);
  EXPECT_EQ(TText::FromUtf8("gr\xC3\xBC\xC3\x9F \xF0\x9F\x99\x82").ToUtf8(), "gr\xC3\xBC\xC3\x9F \xF0\x9F\x99\x82");
}

}  // namespace
}  // namespace tessarine
