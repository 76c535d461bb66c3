#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include <tessarine/core/reference/FormulaTokenizer.h>
#include <tessarine/formula/Ast.h>
#include <tessarine/formula/CellId.h>
#include <tessarine/formula/Parser.h>
#include <tessarine/platform/Unicode.h>

#include "../support/CaseTable.h"

namespace tessarine {
namespace {

std::string Dump(const TAstNode* ANode) { return Utf16ToUtf8(DumpAst(ANode)); }
std::string Parsed(std::u16string_view AText) { return Dump(TFormulaParser::Parse(AText).get()); }

TEST(Parser, TreesAreThoseOfTheGrammar) {
  test::ExpectCases("formula/trees.tsv", [](const test::TCase& ACase) { return Parsed(ACase.Text(0)); });
}

TEST(Parser, ArrayLiteralsKnowTheirShape) {
  const struct {
    const char16_t* Formula;
    int32_t Cols, Rows;
  } cases[] = {{u"={1,2;3,4}", 2, 2}, {u"={}", 0, 0}, {u"={1}", 1, 1}, {u"={1;2;3}", 1, 3}, {u"={1,2,3}", 3, 1}};
  for (const auto& row : cases) {
    const auto tree = TFormulaParser::Parse(row.Formula);
    ASSERT_EQ(tree->Kind, ankArrayLit);
    EXPECT_EQ(tree->Col2, row.Cols) << Utf16ToUtf8(row.Formula);
    EXPECT_EQ(tree->Row2, row.Rows) << Utf16ToUtf8(row.Formula);
  }
}

// ---- against a plain recursive descent

/// The grammar written down as it reads.
class TRecursiveParser {
 public:
  static std::unique_ptr<TAstNode> Parse(std::u16string_view AText) {
    TRecursiveParser parser(AText);
    if (parser.FToken.Kind == ftEnd) return Error();
    auto tree = parser.ParseLevel(1);
    return parser.FToken.Kind == ftEnd ? std::move(tree) : Error();
  }

 private:
  explicit TRecursiveParser(std::u16string_view AText) : FTokenizer(AText) { Next(); }
  void Next() { FToken = FTokenizer.NextToken(); }

  static std::unique_ptr<TAstNode> Error() {
    auto node = std::make_unique<TAstNode>(ankError);
    node->ErrorCode = ceValue;
    return node;
  }

  bool IsInfix(int ALevel) const {
    static const std::vector<std::u16string> kLevels[] = {
        {u"=", u"<>", u"<", u">", u"<=", u">="}, {u"&"}, {u"+", u"-"}, {u"*", u"/"}, {u"^"}};
    if (FToken.Kind != ftOperator) return false;
    for (const auto& text : kLevels[ALevel - 1])
      if (text == FToken.Text) return true;
    return false;
  }

  std::unique_ptr<TAstNode> ParseLevel(int ALevel) {
    if (ALevel > 5) return ParseUnary();
    auto left = ParseLevel(ALevel + 1);
    while (IsInfix(ALevel)) {
      auto node = std::make_unique<TAstNode>(ankBinary);
      node->Op = FToken.Text;
      Next();
      node->Left = std::move(left);
      node->Right = ParseLevel(ALevel + 1);
      left = std::move(node);
    }
    return left;
  }

  std::unique_ptr<TAstNode> ParseUnary() {
    if (FToken.Kind != ftOperator || (FToken.Text != u"@" && FToken.Text != u"+" && FToken.Text != u"-"))
      return ParsePrimary();
    auto node = std::make_unique<TAstNode>(ankUnary);
    node->Op = FToken.Text;
    Next();
    node->Left = ParseUnary();
    return node;
  }

  std::unique_ptr<TAstNode> Leaf(TAstNodeKind AKind) {
    auto node = std::make_unique<TAstNode>(AKind);
    node->Text = FToken.Text;
    node->Number = FToken.Number;
    node->Col = FToken.Col;
    node->Row = FToken.Row;
    node->Col2 = FToken.Col2;
    node->Row2 = FToken.Row2;
    node->SheetName = FToken.SheetName;
    node->ColumnName = FToken.ColumnName;
    Next();
    return node;
  }

  std::unique_ptr<TAstNode> ParsePrimary() {
    switch (FToken.Kind) {
      case ftNumber: return Leaf(ankNumber);
      case ftString: return Leaf(ankString);
      case ftBoolean: return Leaf(ankBool);
      case ftCellRef: return Leaf(ankCellRef);
      case ftRangeRef: return Leaf(ankRange);
      case ftSheetRef: return Leaf(ankSheetRef);
      case ftTableRef: return Leaf(ankTableRef);
      case ftFunction: return ParseCall();
      case ftLBrace: return ParseArray();
      case ftLParen: {
        Next();
        auto inner = ParseLevel(1);
        if (FToken.Kind != ftRParen) return Error();
        Next();
        return inner;
      }
      default:
        if (FToken.Kind != ftEnd) Next();
        return Error();
    }
  }

  std::unique_ptr<TAstNode> ParseCall() {
    auto node = Leaf(ankFunc);
    if (FToken.Kind != ftLParen) return node;
    Next();
    if (FToken.Kind != ftRParen) {
      for (;;) {
        node->Args.push_back(ParseLevel(1));
        if (FToken.Kind != ftComma) break;
        Next();
      }
    }
    if (FToken.Kind != ftRParen) return Error();
    Next();
    return node;
  }

  std::unique_ptr<TAstNode> ParseArray() {
    auto node = std::make_unique<TAstNode>(ankArrayLit);
    Next();
    if (FToken.Kind == ftRBrace) {
      Next();
      return node;
    }
    size_t cols = 0;
    for (;;) {
      size_t length = 0;
      for (;;) {
        node->Args.push_back(ParseLevel(1));
        ++length;
        if (FToken.Kind != ftComma) break;
        Next();
      }
      if (cols != 0 && cols != length) return Error();
      cols = length;
      if (FToken.Kind != ftSemicolon) break;
      Next();
    }
    if (FToken.Kind != ftRBrace) return Error();
    Next();
    node->Col2 = static_cast<int32_t>(cols);
    node->Row2 = static_cast<int32_t>(node->Args.size() / cols);
    return node;
  }

  TFormulaTokenizer FTokenizer;
  TFormulaToken FToken;
};

TEST(Parser, EqualsARecursiveDescentOverTokenSoup) {
  const char16_t* const pieces[] = {
      u"1", u"2.5", u"\"s\"", u"A1", u"$B2:C$3", u"S!A1", u"T[c]", u"F(", u"x", u"TRUE", u"(", u")",
      u",", u";",   u"{",     u"}",  u"+",       u"-",    u"*",    u"/",  u"^", u"&",    u"=", u"<>",
      u"<", u"@",   u"%",     u":",  u" ",       u"G()",  u")",    u")",  u",", u"}",    u"(", u"{1,2;3,4}"};
  std::mt19937 random(20240607);
  size_t readable = 0;
  for (int round = 0; round < 60'000; ++round) {
    std::u16string text(random() % 2, u'=');
    const size_t length = 1 + random() % 14;
    for (size_t i = 0; i < length; ++i) text += pieces[random() % std::size(pieces)];
    const std::string expected = Dump(TRecursiveParser::Parse(text).get());
    ASSERT_EQ(Parsed(text), expected) << Utf16ToUtf8(text);
    readable += expected != "#VALUE!";
  }
  EXPECT_GT(readable, 2'000u);
}

// ---- depth and length

std::u16string Repeated(std::u16string_view APiece, size_t ACount) {
  std::u16string text;
  text.reserve(APiece.size() * ACount);
  for (size_t i = 0; i < ACount; ++i) text += APiece;
  return text;
}

TEST(Parser, NestingAboveTheLimitIsAnError) {
  constexpr size_t limit = TFormulaParser::kMaxDepth;
  const auto nested = [](std::u16string_view AOpen, size_t ADepth, std::u16string_view ACore,
                         std::u16string_view AClose) {
    return Repeated(AOpen, ADepth) + std::u16string(ACore) + Repeated(AClose, ADepth);
  };
  const struct {
    const char* Name;
    std::u16string Formula;
    bool IsError;
  } cases[] = {
      {"calls at the limit", nested(u"ABS(", limit - 1, u"1", u")"), false},
      {"calls above it", nested(u"ABS(", limit, u"1", u")"), true},
      {"array literals at the limit", nested(u"{", limit - 1, u"1", u"}"), false},
      {"array literals above it", nested(u"{", limit, u"1", u"}"), true},
      {"right-hand sides at the limit", nested(u"1+(", limit - 1, u"1", u")"), false},
      {"right-hand sides above it", nested(u"1+(", limit, u"1", u")"), true},
      {"signs and sums in turn above it", nested(u"-(", limit, u"1", u"+1)"), true},
      {"parentheses", nested(u"(", 100'000, u"1", u")"), false},
      {"open parentheses", Repeated(u"(", 100'000), true},
      {"calls without end", Repeated(u"F(", 100'000), true},
      {"signs", Repeated(u"-", 1'000'000) + u"1", false},
      {"signs in parentheses", nested(u"-(", 100'000, u"1", u")"), false},
      {"a sum", u"1" + Repeated(u"+1", 500'000), false},
      {"a sum in parentheses", nested(u"(", 100'000, u"1", u"+1)"), false},
      {"a chain of all operators", u"1" + Repeated(u"*2+3&4=5^6", 50'000), false},
      {"deep calls in a part that is refused", u"{G(" + nested(u"ABS(", 5'000, u"1", u")") + u";2}", false},
  };
  for (const auto& row : cases) {
    const auto tree = TFormulaParser::Parse(row.Formula);
    EXPECT_EQ(tree->Kind == ankError, row.IsError) << row.Name;
    const auto copy = CloneAstNode(tree.get());
    EXPECT_TRUE(DumpAst(copy.get()) == DumpAst(tree.get())) << row.Name;
  }
}

TEST(Parser, ACopyOwnsEverything) {
  auto tree = TFormulaParser::Parse(u"=IF(A1>1,-'S 1'!B$2:C3&\"t\",T[c])+{1,TRUE;#,x}");
  const std::string dumped = Dump(tree.get());
  const auto copy = CloneAstNode(tree.get());
  const TAstNode& call = *copy->Left;
  EXPECT_EQ(call.Args[0]->Left->StartIndex, 4);
  EXPECT_EQ(call.Args[0]->Left->Length, 2);
  tree.reset();
  EXPECT_EQ(Dump(copy.get()), dumped);
  EXPECT_EQ(copy->Right->Row2, 2);
  EXPECT_EQ(CloneAstNode(nullptr), nullptr);
}

TEST(Parser, ReferencesKnowWhereTheyStand) {
  const std::u16string text = u"=1+ sheet1!$A$1 - B2 : C3 *Tab [ x ]";
  const auto tree = TFormulaParser::Parse(text);
  const auto source = [&text](const TAstNode& ANode) {
    return Utf16ToUtf8(text.substr(static_cast<size_t>(ANode.StartIndex), static_cast<size_t>(ANode.Length)));
  };
  EXPECT_EQ(source(*tree->Left->Right), "sheet1!$A$1");
  EXPECT_EQ(source(*tree->Right->Left), "B2 : C3");
  EXPECT_EQ(source(*tree->Right->Right), "Tab [ x ]");
}

// ---- cell ids

TEST(CellId, KeysReadBackAndOthersAreRefused) {
  EXPECT_EQ(CellKeyOf(TCellId::Of(0, 3, 7)), u"0!3,7");
  for (const TCellId id : {TCellId::Of(0, 1, 1), TCellId::Of(12, 16384, 1048576), TCellId::Of(255, 65535, 0xFFFFFF)})
    EXPECT_EQ(ParseCellKey(CellKeyOf(id)), id) << CellKeyOf(id).ToUtf8();
  for (const char16_t* key : {u"", u"3!0,1", u"3!1,0", u"-1!1,1", u"!1,1", u"1!1", u"1,1", u"1!,1", u"0!1,1x",
                              u"0!65536,1", u"0!1,16777216", u"16777216!1,1", u"0!99999999999999999999,1", u"0! 1,1"})
    EXPECT_FALSE(ParseCellKey(key)) << Utf16ToUtf8(key);
}

TEST(CellId, OrderIsSheetThenColumnThenRow) {
  EXPECT_LT(TCellId::Of(0, 2, 9), TCellId::Of(0, 3, 1));
  EXPECT_LT(TCellId::Of(0, 16384, 1048576), TCellId::Of(1, 1, 1));
  EXPECT_LT(TCellId::Of(2, 5, 1), TCellId::Of(2, 5, 2));
}

}  // namespace
}  // namespace tessarine
