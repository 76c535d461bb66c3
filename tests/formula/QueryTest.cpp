#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/library/detail/Query.h>
#include <tessarine/platform/Unicode.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

std::string ShownRows(const TFormulaArg& AArg) {
  if (!AArg.IsRange) return testing::Shown(AArg.Scalar);
  std::string shown;
  for (int32_t row = 0; row < AArg.RowCount; ++row) {
    if (row > 0) shown += ";";
    for (int32_t col = 0; col < AArg.ColCount; ++col)
      shown += (col > 0 ? " " : "") + testing::Shown(AArg.CellAt(row, col));
  }
  return shown;
}

TFormulaArg TextArg(std::string_view AText) {
  return TFormulaArg::FromScalar(TCellValue::FromText(Utf8ToUtf16(AText)));
}

/// A query over data in the notation of calls; headers -2 leaves the third argument out.
std::string Queried(const char* AData, std::string_view AText, int AHeaders = -2) {
  std::vector<TFormulaArg> args = {testing::ArgsOf(AData)[0], TextArg(AText)};
  if (AHeaders != -2) args.push_back(TFormulaArg::FromScalar(TCellValue::FromNumber(AHeaders)));
  const std::string fast = ShownRows(detail::EvalQuery(args));
  EXPECT_EQ(fast, ShownRows(detail::EvalQueryPlain(args))) << AText;
  return fast;
}

constexpr const char* kSales = "['Shop' 'Units' 'Sum';'a' 3 10;'b' 1 _;'a' 2 'x';'A' 5 '7']";

TEST(Query, Clauses) {
  const struct {
    const char* Text;
    const char* Result;
  } cases[] = {
      {"select *", "'Shop' 'Units' 'Sum';'a' 3 10;'b' 1 _;'a' 2 'x';'A' 5 '7'"},
      {"select A, *, sum(B)", "'Shop' 'Units' 'Sum';'a' 3 10;'b' 1 _;'a' 2 'x';'A' 5 '7'"},
      {"SELECT col2, shop LIMIT 1", "'Units' 'Shop';3 'a'"},
      {"select A where B > 2 order by A desc limit 1", "'Shop';'a'"},
      {"select B where A = 'a'", "'Units';3;2"},  // case counts
      {"select B where A != 'a' and B < 5 or C = 7", "'Units';1;5"},
      {"select B where C = 0", "'Units';1"},  // a blank is 0
      {"select B where C = 'x' or C >= 10", "'Units';3;2"},
      {"select B where C <> true and B <= 2", "'Units';1;2"},
      {"select B where Col9 = 1", "#N/A"},
      {"select Col9, B where B=1", "'' 'Units';_ 1"},
      {"select A, sum(B), avg(C), count(C), min(C), max(B) group by A",
       "'Shop' 'sum Units' 'avg Sum' 'count Sum' 'min Sum' 'max Units';'a' 5 10 2 10 3;'b' 1 0 1 0 1;'A' 5 7 1 7 5"},
      {"select count(Col9), sum(Col9), max(Col9), A", "'count ' 'sum ' 'max ' 'Shop';0 0 _ 'a'"},
      {"select sum(B) group by A order by A desc", "'sum Units';5;1;5"},  // A is not selected: no order
      {"select sum(B), A group by A order by A desc, B", "'sum Units' 'Shop';1 'b';5 'a';5 'A'"},
      {"select B order by B offset 1 limit 2", "#VALUE!"},  // the order of clauses is fixed
      {"select B order by B limit 2.9 offset 1", "'Units';2;3"},
      {"select B order by B offset 4", "#N/A"},
      {"select B limit 0", "#N/A"},
      {"select B limit -0.5", "#N/A"},
      {"select B limit -1", "#VALUE!"},
      {"select A, sum(B) group by A limit 1 label A 'it''s', B 'no', A 'two", "'two' 'sum Units';'a' 5"},
      {"select sum where B=1", "'Sum';_"},                     // a name of an aggregate without parenthesis is a column
      {"select sum(sum) limit 1 ; whatever", "'sum Sum';17"},  // what cannot be read ends the text
      {"select B where B=+1e0 or B=.5 or B=-2", "'Units';1"},
  };
  for (const auto& row : cases) EXPECT_EQ(Queried(kSales, row.Text), row.Result) << row.Text;
}

TEST(Query, WhatIsNoQuery) {
  for (const char* text : {"where B>2",
                           "select",
                           "select A,",
                           "select A B",
                           "select A where B > 2 and (C = 1)",
                           "select A where A = \"x\"",
                           "select A where 2 < B",
                           "select A where B ! 2",
                           "select A where B > 1.2.3",
                           "select A where B > 1e999",
                           "select A where not B = 1",
                           "select A where B",
                           "select A group A",
                           "select A order by",
                           "select A limit",
                           "select A limit 'x'",
                           "select A label 'x'",
                           "select A label A x",
                           "select sum(B",
                           "select sum(*)",
                           "select where",
                           "select D",
                           "select Col0",
                           "select nothing",
                           "select A as 'x'",
                           "select A order by A limit 1 limit 1",
                           "select \xC3\xA4",
                           "'select A'",
                           "   ",
                           "!"}) {
    EXPECT_EQ(Queried(kSales, text), "#VALUE!") << text;
  }
}

TEST(Query, HeadersAndArguments) {
  EXPECT_EQ(Queried("[1 2;3 4]", "select Col2", 0), "2;4");
  EXPECT_EQ(Queried("[1 2;3 4]", "select Col2", -1), "2;4");
  EXPECT_EQ(Queried("['x' 'y';'p' 'q';3 4]", "select y, x", 2), "'y' 'x';4 3");
  EXPECT_EQ(Queried("[1 2;3 4]", "select A", 9), "#N/A");
  EXPECT_EQ(Queried("[1 2;3 4]", "select", 9), "#VALUE!");
  EXPECT_EQ(Queried("['B' 'A';1 2]", "select A"), "'B';1");  // letters go before headers
  EXPECT_EQ(Queried("5", "select * where A = 5", 0), "5");
  EXPECT_EQ(Queried("[]", "select *"), "#N/A");
  EXPECT_EQ(testing::Called("QUERY", "[1 2]"), "#VALUE!");
  EXPECT_EQ(testing::Called("QUERY", "[1 2] 'select *' 'x'"), "#VALUE!");
  EXPECT_EQ(testing::Called("QUERY",
                            "['h';'1';'1.0']"
                            " 'select A, count(A) group by A'"),
            "'h'");
}

TEST(Query, GroupsAndOrderOfEquals) {
  EXPECT_EQ(Queried("[1;'1';TRUE;'TRUE';0.3]", "select A, count(A) group by A", 0), "1 2;TRUE 2;0.3 1");
  EXPECT_EQ(Queried("['a\x01' 'b';'a' '\x01"
                    "b']",
                    "select count(A) group by A, B", 0),
            "2");
  EXPECT_EQ(Queried("['a' 'b';'a' 'c';'a' 'b']", "select A, B, count(A) group by A, B, A", 0), "'a' 'b' 2;'a' 'c' 1");
  EXPECT_EQ(Queried("[2 'a';2 'b';1 'c']", "select A, B order by A", 0), "1 'c';2 'b';2 'a'");
  EXPECT_EQ(Queried("[9;'1a';10]", "select A order by A", 0), "10;'1a';9");  // no total order: as the loop leaves it
}

TEST(Query, TooMuchIsAnError) {
  std::string text = "select A";
  for (int i = 0; i < 2000; ++i) text += ",A";
  std::vector<TFormulaArg> args = {TFormulaArg::FromRange(std::vector<TCellValue>(1000), 1000, 1), TextArg(text)};
  EXPECT_EQ(ShownRows(detail::EvalQuery(args)), "#NUM!");
  args = {TFormulaArg::FromRange(std::vector<TCellValue>(1'000'000), 1'000'000, 1), TextArg("select A where A=1")};
  EXPECT_EQ(ShownRows(detail::EvalQuery(args)), "#N/A");
  text = "select A where A=1";
  for (int i = 0; i < 300; ++i) text += " or A=1";
  args[1] = TextArg(text);
  EXPECT_EQ(ShownRows(detail::EvalQuery(args)), "#NUM!");
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
    const std::string plain = ShownRows(detail::EvalQueryPlain(std::vector{owned, TextArg(text), headers}));
    ASSERT_NE(plain, "#VALUE!") << text;
    for (const TFormulaArg& data : {view, owned})
      ASSERT_EQ(ShownRows(detail::EvalQuery(std::vector{data, TextArg(text), headers})), plain) << text;
  }
}

}  // namespace

}  // namespace tessarine
