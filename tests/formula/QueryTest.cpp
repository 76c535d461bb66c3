#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/library/detail/Query.h>
#include <tessarine/platform/Unicode.h>

#include "../support/CaseTable.h"
#include "CallNotation.h"

namespace tessarine {

namespace {

TFormulaArg TextArg(std::string_view AText) {
  return TFormulaArg::FromScalar(TCellValue::FromText(Utf8ToUtf16(AText)));
}

TEST(Query, ExamplesGiveTheirRows) {
  const std::string sales = "['Shop' 'Units' 'Sum';'a' 3 10;'b' 1 _;'a' 2 'x';'A' 5 '7']";
  test::ExpectCases("formula/queries.tsv", [&](const test::TCase& ACase) {
    std::vector<TFormulaArg> args = testing::ArgsOf(ACase[0] == "sales" ? sales : ACase[0]);
    args.push_back(TextArg(ACase[1]));
    if (ACase.Count() > 3) args.push_back(testing::ArgsOf(ACase[2])[0]);
    const std::string fast = testing::Shown(detail::EvalQuery(args));
    EXPECT_EQ(fast, testing::Shown(detail::EvalQueryPlain(args))) << ACase.Place();
    return fast;
  });
  EXPECT_EQ(testing::Called("QUERY", "[1 2]"), "#VALUE!");
}

TEST(Query, TooMuchIsAnError) {
  std::string text = "select A";
  for (int i = 0; i < 2000; ++i) text += ",A";
  std::vector<TFormulaArg> args = {TFormulaArg::FromRange(std::vector<TCellValue>(1000), 1000, 1), TextArg(text)};
  EXPECT_EQ(testing::Shown(detail::EvalQuery(args)), "#NUM!");
  args = {TFormulaArg::FromRange(std::vector<TCellValue>(1'000'000), 1'000'000, 1), TextArg("select A where A=1")};
  EXPECT_EQ(testing::Shown(detail::EvalQuery(args)), "#N/A");
  text = "select A where A=1";
  for (int i = 0; i < 300; ++i) text += " or A=1";
  args[1] = TextArg(text);
  EXPECT_EQ(testing::Shown(detail::EvalQuery(args)), "#NUM!");
}

// The fast way against the plain one ---------------------------------------------------------------------------------

class TQueryMaker {
 public:
  explicit TQueryMaker(uint32_t ASeed) : FRandom(ASeed) {}

  int Pick(int ACount) { return static_cast<int>(FRandom() % static_cast<uint32_t>(ACount)); }
  bool Chance() { return Pick(2) == 0; }

  /// Kind 0 gives numbers, 1 texts, 2 anything.
  TCellValue Value(int AKind) {
    static const char16_t* const kTexts[] = {u"", u"a", u"A", u"b", u"1", u"2.0", u"TRUE", u"10", u"a\u0001"};
    const int kind = AKind < 2 ? AKind : Pick(6);
    switch (kind) {
      case 0: return TCellValue::FromNumber(Pick(6) / 2.0);
      case 1: return TCellValue::FromText(kTexts[AKind == 1 ? 1 + Pick(3) : Pick(9)]);
      case 2: return TCellValue::FromBoolean(Chance());
      case 3: return TCellValue::FromError(ceNA);
      case 4: return TCellValue::FromNumber(0.1 + Pick(3) * 0.2);
      default: return {};
    }
  }

  std::string Query() {
    std::string text = "select " + List([this] { return Item(); });
    if (Chance()) text += " where " + Comparison();
    while (text.find("where") != text.npos && Pick(3) == 0) text += (Chance() ? " and " : " or ") + Comparison();
    if (Chance()) text += " group by " + List([this] { return Column(); });
    if (Chance()) text += " order by " + List([this] { return Column() + (Chance() ? " desc" : ""); });
    if (Pick(4) == 0) text += " limit " + std::to_string(Pick(20));
    if (Pick(4) == 0) text += " offset " + std::to_string(Pick(5));
    return text;
  }

 private:
  template <class F>
  std::string List(F&& AOne) {
    std::string text = AOne();
    while (Pick(3) == 0) text += ", " + AOne();
    return text;
  }
  std::string Column() { return Pick(12) == 0 ? "Col7" : std::string(1, static_cast<char>('A' + Pick(4))); }
  std::string Item() {
    static const char* const kNames[] = {"sum", "avg", "count", "min", "max"};
    return Chance() ? Column() : std::string(kNames[Pick(5)]) + "(" + Column() + ")";
  }
  std::string Comparison() {
    static const char* const kOperators[] = {"=", "!=", "<", ">", "<=", ">="};
    static const char* const kLiterals[] = {"1", "'a'", "'A'", "true", "''", "'1'", "0", "2.5"};
    return Column() + kOperators[Pick(6)] + kLiterals[Pick(8)];
  }

  std::mt19937 FRandom;
};

TEST(Query, FastEqualsPlain) {
  TQueryMaker maker(20261);
  for (int round = 0; round < 600; ++round) {
    const int32_t rows = 1 + maker.Pick(round % 50 == 0 ? 3000 : 40);
    TWorkbook book;
    TWorksheet& sheet = *book.GetSheet(0);
    std::vector<TCellValue> cells;
    const int kinds[] = {maker.Pick(3), maker.Pick(3), 0, 2};
    for (int32_t row = 0; row < rows; ++row) {
      for (int32_t col = 0; col < 4; ++col) {
        cells.push_back(maker.Value(kinds[col]));
        if (!cells.back().IsEmpty()) sheet.SetValue({col + 2, row + 3}, cells.back());
      }
    }
    const std::string text = maker.Query();
    const TFormulaArg view = TFormulaArg::FromView(sheet, 0, 2, 3, rows, 4);
    const TFormulaArg owned = TFormulaArg::FromRange(cells, rows, 4);
    const TFormulaArg headers = TFormulaArg::FromScalar(TCellValue::FromNumber(maker.Pick(2)));
    const std::string plain = testing::Shown(detail::EvalQueryPlain(std::vector{owned, TextArg(text), headers}));
    ASSERT_NE(plain, "#VALUE!") << text;
    for (const TFormulaArg& data : {view, owned})
      ASSERT_EQ(testing::Shown(detail::EvalQuery(std::vector{data, TextArg(text), headers})), plain) << text;
  }
}

}  // namespace

}  // namespace tessarine
