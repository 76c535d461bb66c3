#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/CellValue.h>
#include <tessarine/core/values/Coercion.h>

namespace tessarine {
namespace {

std::string Utf8(std::u16string_view AText) { return TText(AText).ToUtf8(); }

TEST(Addresses, LettersAndColumnsAreInverseWithinTheSheet) {
  for (int32_t col = 1; col <= kMaxCol; ++col) ASSERT_EQ(LettersToCol(ColToLetters(col)), col);
  EXPECT_EQ(ColToLetters(16384), u"XFD");
  EXPECT_EQ(ColToLetters(16385), u"XFE");
  EXPECT_EQ(ColToLetters(0), u"");
  for (const auto* text : {u"XFE", u"ABCD", u"A1", u"", u"É"}) EXPECT_EQ(LettersToCol(text), 0) << Utf8(text);
  EXPECT_EQ(LettersToCol(u"xfd"), 16384);
}

TEST(Addresses, ReadA1TextsTolerantly) {
  const struct {
    const char16_t* Text;
    int32_t Col, Row;
  } cases[] = {
      {u"$b$2", 2, 2},
      {u"A-1", 1, 1},
      {u"A 1", 1, 1},
      {u" C7 ", 3, 7},
      {u"XFD1048576", kMaxCol, kMaxRow},
      {u"1A", 0, 0},
      {u"AA1B", 0, 0},
      {u"A0", 0, 0},
      {u"A1048577", 0, 0},
      {u"XFE1", 0, 0},
      {u"ABCD1", 0, 0},
      {u"", 0, 0},
      {u"A", 0, 0},
      {u"7", 0, 0},
      {u"Sheet1!A1", 0, 0},
      {u"A007", 1, 7},
      {u"é#A1", 1, 1},
      {u"A99999999999999", 0, 0},
  };
  for (const auto& row : cases) {
    const TCellAddress address = TCellAddress::FromA1(row.Text);
    EXPECT_EQ(address.Col, row.Col) << Utf8(row.Text);
    EXPECT_EQ(address.Row, row.Row) << Utf8(row.Text);
  }
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
  EXPECT_EQ(TCellRange::FromA1(u"C3:A1"), (TCellRange{1, 1, 3, 3}));
  EXPECT_EQ(TCellRange::FromA1(u" B2 "), (TCellRange{2, 2, 2, 2}));
  EXPECT_EQ(TCellRange::FromA1(u"B2:B2").ToA1(), u"B2");
  for (const auto* text : {u"A:C", u"1:1", u"nonsense", u"A1:"}) {
    const TCellRange range = TCellRange::FromA1(text);
    EXPECT_TRUE(range.StartCol < 1 || range.StartRow < 1) << Utf8(text);
  }
}

TEST(Values, ShowTheirPlainText) {
  const struct {
    TCellValue Value;
    const char16_t* Shown;
  } cases[] = {
      {TCellValue::Empty(), u""},
      {TCellValue::FromText(u"x"), u"x"},
      {TCellValue::FromNumber(0.5), u"0.5"},
      {TCellValue::FromNumber(100), u"100"},
      {TCellValue::FromNumber(0.1 + 0.2), u"0.3"},
      {TCellValue::FromNumber(1.2e20), u"1.2E+2"},  // zeros are cut from the exponent as well
      {TCellValue::FromNumber(1e20), u"1E+20"},
      {TCellValue::FromNumber(-0.0), u"0"},
      {TCellValue::FromBoolean(true), u"TRUE"},
      {TCellValue::FromError(ceDiv0), u"#DIV/0!"},
      {TCellValue::FromError(ceSpill), u"#SPILL!"},
      {TCellValue::FromFormula(u"SUM(A1)"), u"=SUM(A1)"},
      {TCellValue::FromFormula(u""), u""},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(row.Value.ToDisplayString(), row.Shown);
    std::u16string text = u"<";
    AppendDisplayString(row.Value.View(), text);
    EXPECT_EQ(text, std::u16string(u"<") + row.Shown);
    EXPECT_EQ(TCellValue::FromView(row.Value.View()), row.Value);
  }
  EXPECT_EQ(ErrorCodeToString(ceNone), u"#ERROR!");
  EXPECT_EQ(ErrorCodeToString(static_cast<TCellErrorCode>(77)), u"#ERROR!");
}

TEST(Values, CompareAcrossKinds) {
  const TCellValue blank;
  const auto text = [](const char16_t* AText) { return TCellValue::FromText(AText); };
  const auto number = [](double ANumber) { return TCellValue::FromNumber(ANumber); };
  const struct {
    TCellValue Left, Right;
    int Order;
  } cases[] = {
      {blank, number(0), 0},
      {blank, text(u""), 0},
      {TCellValue::FromBoolean(true), number(1), 0},
      {text(u"10"), number(10), 0},
      {text(u"abc"), number(5), 1},
      {text(u"a"), text(u"A"), 0},
      {TCellValue::FromBoolean(true), text(u"TRUE"), 0},
      {text(u"_"), text(u"a"), 1},  // folded to upper case
      {text(u"2"), text(u"10"), -1},
      {TCellValue::FromError(ceNA), text(u"#n/a"), 0},
  };
  for (const auto& row : cases) EXPECT_EQ(CompareValues(row.Left.View(), row.Right.View()), row.Order);
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

TEST(FileFormats, GoByTheExtensionInAnyCase) {
  EXPECT_EQ(FileFormatFromExtension("a/b.TSR"), ffTsr);
  EXPECT_EQ(FileFormatFromExtension("b.xlsm"), ffXlsx);
  EXPECT_EQ(FileFormatFromExtension("b.Ods"), ffOds);
  EXPECT_EQ(FileFormatFromExtension("x.csv"), ffCsv);
  EXPECT_EQ(FileFormatFromExtension("x.csv/readme"), ffAuto);
  EXPECT_EQ(FileFormatFromExtension("csv"), ffAuto);
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
