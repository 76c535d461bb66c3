#include <gtest/gtest.h>

#include <tessarine/formula/FormulaDialect.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {
namespace {

struct TDialectCase {
  const char16_t* Formula;
  const char* Result;
};

TEST(FormulaDialect, PlaceholderCallsAreUnwrapped) {
  const TDialectCase cases[] = {
      {u"=__xludf.DUMMYFUNCTION(\"QUERY(A1:B2,\"\"select A\"\")\")", "=QUERY(A1:B2,\"select A\")"},
      {u"  IFERROR(__XLUDF.dummyfunction( \n\" sparkline(A1:A3) \"),\"x\")", "=sparkline(A1:A3)"},
      {u"=_xludf.DummyFunction(\"IMPORTRANGE(\"\"u\"\",\"\"a\"\")\",1)", "=IMPORTRANGE(\"u\",\"a\")"},
      {u"=__xludf.DUMMYFUNCTION(\"GOOGLEFINANCE(\"\"G\"\")\")+__xludf.DUMMYFUNCTION(\"QUERY(A1)\")",
       "=GOOGLEFINANCE(\"G\")"},
      {u"=__xludf.DUMMYFUNCTION(\"IMPORTFEED(A1\"", "=IMPORTFEED(A1"},
  };
  for (const auto& row : cases) EXPECT_EQ(Utf16ToUtf8(UnwrapXlUdfDummyFunction(row.Formula)), row.Result);
}

TEST(FormulaDialect, OtherFormulasKeepEveryCharacter) {
  for (const char16_t* formula : {
           u"=__xludf.DUMMYFUNCTION(\"SUM(A1)\")",  // not a function that comes this way
           u"=__xludf.DUMMYFUNCTION(\"=QUERY(A1)\")",
           u"=__xludf.DUMMYFUNCTION(\"QUERY\")",
           u"=__xludf.DUMMYFUNCTION(A1)",
           u"=__xludf.DUMMYFUNCTION(\"QUERY(A1)\"\"",  // the text has no end
           u"=__xludf.DUMMYFUNCTION(\"QUERY(A1)",
           u"=__xludf.DUMMYFUNCTION(\"  \")",
           u"=__xludf.DUMMYFUNCTION(",
           u"=DUMMYFUNCTION(\"QUERY(A1)\")",
           u" =QUERY(A1) ",
           u"",
           u"=",
       })
    EXPECT_EQ(Utf16ToUtf8(UnwrapXlUdfDummyFunction(formula)), Utf16ToUtf8(formula));
}

TEST(FormulaDialect, SemicolonsBecomeCommasOutsideTextsAndBraces) {
  const TDialectCase cases[] = {
      {u"=IF(A1;\"a;b\";{1;2})", "=IF(A1,\"a;b\",{1;2})"},
      {u"=F(\"a\"\";\";1)", "=F(\"a\"\";\",1)"},
      {u"=F({1;{2;3};4};5)", "=F({1;{2;3};4},5)"},
      {u"=F(};1;{2;3})", "=F(},1,{2;3})"},  // a stray brace does not count below zero
      {u"={\"}\";1};2", "={\"}\";1},2"},
      {u"='a;b'.A1;\"open;", "='a,b'.A1,\"open;"},
      {u"", ""},
  };
  for (const auto& row : cases) EXPECT_EQ(Utf16ToUtf8(OdsSeparatorsToExcel(row.Formula)), row.Result);
}

}  // namespace
}  // namespace tessarine
