#include <tessarine/formula/detail/LocalNames.h>

#include <gtest/gtest.h>

#include "../support/SheetFixture.h"

namespace tessarine::testing {
namespace {

TFormulaArg Number(double ANumber) { return TFormulaArg::FromScalar(TCellValue::FromNumber(ANumber)); }

TEST(LocalNames, AreOneFlatTable) {
  detail::TLocalNames names;
  EXPECT_EQ(names.Find(u"x"), nullptr);
  EXPECT_FALSE(names.Bind(u"x", Number(1), false));
  EXPECT_FALSE(names.Bind(u"Y", Number(2), true));
  EXPECT_EQ(NotationOf(*names.Find(u" $X")), "1");
  EXPECT_TRUE(names.IsMissing(u"y"));
  EXPECT_TRUE(names.Bind(u"X", Number(3), true)) << "the earlier binding is gone for good";
  EXPECT_TRUE(names.IsMissing(u"x"));
  EXPECT_TRUE(names.Bind(u"x", Number(4), false));
  EXPECT_FALSE(names.IsMissing(u"x"));
  EXPECT_EQ(NotationOf(*names.Find(u"x")), "4");
  names.Unbind(u"$x");
  names.Unbind(u"nothing");
  EXPECT_EQ(names.Find(u"x"), nullptr);
  EXPECT_NE(names.Find(u"y"), nullptr);
}

TEST(LocalNames, KeepWhatARangeShowedWhenItWasBound) {
  TSheetFixture sheet({{"A1", "1"}, {"A2", "2"}});
  detail::TLocalNames names;
  names.Bind(u"r", TFormulaArg::FromView(sheet.Sheet(), 0, 1, 1, 2, 1), false);
  sheet.Set("A1", "9");
  EXPECT_EQ(NotationOf(*names.Find(u"r")), "{1;2}");
  EXPECT_TRUE(names.Find(u"r")->HasOrigin);
}

}  // namespace
}  // namespace tessarine::testing
