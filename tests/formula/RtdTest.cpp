#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <tessarine/core/sheet/Providers.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/Evaluator.h>
#include <tessarine/formula/RtdHub.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

/// Topics by their key; writes down what it is asked.
class TFeed final : public ITessarineRtdProvider {
 public:
  bool TryGetValue(const TText& AProgId, const TText& AServer, std::span<const TText> ATopics,
                   TCellValue& AValue) override {
    ++Asked;
    if (Throws) throw std::runtime_error("gone");
    if (OnAsk) OnAsk();
    const auto found = Values.find(TTessarineRtdHub::TopicKeyStr(AProgId, AServer, ATopics).ToUtf8());
    if (found == Values.end()) return false;
    AValue = found->second;
    return true;
  }
  void Connect(const TText& AProgId, const TText& AServer, std::span<const TText> ATopics) override {
    Connected += TTessarineRtdHub::TopicKeyStr(AProgId, AServer, ATopics).ToUtf8() + " ";
  }
  void Disconnect(const TText&, const TText&, std::span<const TText>) override {}

  std::map<std::string, TCellValue> Values;
  std::string Connected;
  std::function<void()> OnAsk;
  int Asked = 0;
  bool Throws = false;
};

class Rtd : public ::testing::Test {
 protected:
  Rtd() { Book.RtdProvider = Feed; }

  void Put(TCellAddress AAddress, const char* AFormula) {
    Book.GetSheet(0)->SetValue(AAddress, TCellValue::FromFormula(TText::FromUtf8(AFormula)));
    Evaluator.NotifyCellChanged(0, AAddress.Col, AAddress.Row);
  }
  std::string Shown(TCellAddress AAddress) const {
    return testing::Shown(Book.GetSheet(0)->GetEffectiveValue(AAddress));
  }
  void SetTopic(const char* AKey, const char* AValue) { Feed->Values[AKey] = testing::ArgsOf(AValue)[0].First(); }
  void Notify(const char16_t* ATopic) { Evaluator.NotifyRtdUpdate(u"feed", u"", std::vector<TText>{ATopic}); }

  std::shared_ptr<TFeed> Feed = std::make_shared<TFeed>();
  TWorkbook Book;
  TFormulaEvaluator Evaluator{Book};
};

TEST_F(Rtd, CallsThatNameNoTopicAreNotAvailableAndErrorsPassThrough) {
  const struct {
    const char* Formula;
    const char* Result;
  } cases[] = {
      {"=RTD(\"feed\",\"\")", "#N/A"},        {"=RTD(\" \",\"\",\"a\")", "#N/A"},
      {"=RTD(\"feed\",\"\",1/0)", "#DIV/0!"}, {"=RTD(\"feed\",NOSUCH,\"a\")", "#NAME?"},
      {"=RTD(\"feed\",\"\",\"a\")", "#N/A"},
  };
  for (const auto& row : cases) {
    Put({1, 1}, row.Formula);
    EXPECT_EQ(Shown({1, 1}), row.Result) << row.Formula;
  }
  EXPECT_EQ(Feed->Connected, "feed||a| ") << "only the call that names a topic reaches the source";
  EXPECT_EQ(testing::Called("RTD", "'feed' '' 'a'"), "#N/A") << "without a hub";
}

TEST_F(Rtd, AChangeEvaluatesEveryCellOfTheTopicAndWhatDependsOnIt) {
  SetTopic("feed||a|", "1");
  Put({1, 1}, "=RTD(\" feed \",\"\",\"a\")");
  Put({2, 1}, "=RTD(\"feed\",\" \",\"a\")*10");
  Put({3, 1}, "=A1+B1");
  Put({4, 1}, "=RTD(\"feed\",\"\",\"b\",2.5)");
  Put({1, 1}, "=RTD(\" feed \",\"\",\"a\")");
  EXPECT_EQ(Shown({3, 1}), "11");
  EXPECT_EQ(Feed->Connected, "feed||a| feed||b|2.5| ");
  const std::vector<TRtdCellRef> cells{{0, 1, 1}, {0, 2, 1}};
  EXPECT_EQ(Evaluator.RtdHub().Subscribers(u"feed", u"", std::vector<TText>{u"a"}), cells) << "each cell once";
  SetTopic("feed||a|", "2");
  Notify(u"b");
  EXPECT_EQ(Shown({3, 1}), "11") << "another topic";
  Notify(u"a");
  EXPECT_EQ(Shown({1, 1}) + " " + Shown({2, 1}) + " " + Shown({3, 1}), "2 20 22");
  SetTopic("feed||b|2.5|", "'x'");
  Evaluator.NotifyRtdUpdateAll();
  EXPECT_EQ(Shown({4, 1}), "'x'");
}

TEST_F(Rtd, TheLastGoodValueStaysWhenTheSourceFailsUntilAReset) {
  SetTopic("feed||a|", "7");
  Put({1, 1}, "=RTD(\"feed\",\"\",\"a\")");
  Feed->Values.clear();
  Notify(u"a");
  EXPECT_EQ(Shown({1, 1}), "7");
  Feed->Throws = true;
  Notify(u"a");
  EXPECT_EQ(Shown({1, 1}), "7");
  Book.RtdProvider.reset();
  Notify(u"a");
  EXPECT_EQ(Shown({1, 1}), "7");
  Evaluator.Reset();
  Notify(u"a");
  EXPECT_EQ(Shown({1, 1}), "7") << "nobody is subscribed any more";
  Put({1, 1}, "=RTD(\"feed\",\"\",\"a\")");
  EXPECT_EQ(Shown({1, 1}), "#N/A");
}

TEST_F(Rtd, ASourceThatNotifiesWhileItIsAskedIsHeardAfterwards) {
  constexpr int kCells = 2000;
  for (int row = 1; row <= kCells; ++row) Put({1, row}, "=RTD(\"feed\",\"\",\"a\")");
  Feed->Asked = 0;
  int calls = 0;
  Feed->OnAsk = [&] {
    Feed->Values["feed||a|"] = TCellValue::FromNumber(++calls);
    Notify(u"a");
  };
  Evaluator.EvaluateCell(0, 1, 1);
  EXPECT_EQ(Feed->Asked, 1 + kCells) << "one round for all notifications";
  EXPECT_EQ(Shown({1, kCells}), std::to_string(1 + kCells));
  Feed->OnAsk = [&] { Evaluator.Reset(); };
  EXPECT_EQ(testing::Shown(Evaluator.EvaluateCell(0, 1, 1)), std::to_string(calls));
}

TEST_F(Rtd, ValuesThatNoCellMayHoldAreMadeSound) {
  Feed->Values["feed||a|"] = TCellValue::FromNumber(std::numeric_limits<double>::infinity());
  Feed->Values["feed||b|"] = TCellValue::FromFormula(u"=1");
  Put({1, 1}, "=RTD(\"feed\",\"\",\"a\")");
  Put({1, 2}, "=RTD(\"feed\",\"\",\"b\")");
  EXPECT_EQ(Shown({1, 1}) + " " + Shown({1, 2}), "#NUM! '=1'");
}

TEST(RtdTopicKey, DifferentPartsHaveDifferentTexts) {
  const std::vector<std::vector<TText>> lists = {{u"a", u"b"}, {u"a|b"}, {u"a", u"b", u""}, {u"a\\", u"b"}, {u"a\\|b"}};
  std::map<std::string, int> keys;
  for (const auto& list : lists) {
    ++keys[TTessarineRtdHub::TopicKeyStr(u"p", u"s", list).ToUtf8()];
    ++keys[TTessarineRtdHub::TopicKeyStr(u"p|s", u"", list).ToUtf8()];
  }
  EXPECT_EQ(keys.size(), 2 * lists.size());
}

}  // namespace

}  // namespace tessarine
