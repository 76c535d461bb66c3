#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/sheet/Providers.h>
#include <tessarine/formula/StockHistory.h>
#include <tessarine/formula/library/detail/WebReading.h>
#include <tessarine/platform/Http.h>
#include <tessarine/platform/Unicode.h>

#include "../support/CaseTable.h"
#include "../support/LoopbackServer.h"
#include "../support/SheetFixture.h"
#include "CallNotation.h"

namespace tessarine::testing {
namespace {

using test::TLoopbackServer;

class WebFunctions : public ::testing::Test {
 protected:
  /// A formula's result, rectangles without braces; "{}" in the formula is the server's address.
  std::string Eval(std::string AFormula) {
    for (size_t at = AFormula.find("{}"); at != std::string::npos; at = AFormula.find("{}"))
      AFormula.replace(at, 2, Server.Url());
    const std::string result = Sheet.EvalAt("A1", AFormula);
    return result.starts_with('{') ? result.substr(1, result.size() - 2) : result;
  }
  void Expect(std::initializer_list<std::pair<const char*, const char*>> ACases) {
    for (const auto& [formula, result] : ACases) EXPECT_EQ(Eval(formula), result) << formula;
  }
  /// Formulas with their results; a line "serve" gives a path of the server its answer.
  void ExpectFile(const std::string& APath) {
    for (const test::TCase& row : test::CasesOf("formula/" + APath, 2, 4)) {
      if (row[0] == "serve") {
        Server.Reply(row[1], row[2], row[3].empty() ? "text/plain" : row[3]);
      } else {
        EXPECT_EQ(Eval(row[0]), row[1]) << row.Place() << ": " << row[0];
      }
    }
  }

  TLoopbackServer Server;
  TSheetFixture Sheet;
};

TEST_F(WebFunctions, ReadWhatTheServerSends) {
  const std::string longUrl = "http://x/" + std::string(2040, 'x');
  EXPECT_FALSE(detail::IsWebUrl(Utf8ToUtf16(longUrl)));
  EXPECT_TRUE(detail::IsWebUrl(Utf8ToUtf16(longUrl.substr(0, 2048))));
  Server.Reply("/wide", std::string(2000, ',') + std::string(2000, '\n'));
  ExpectFile("web.tsv");
  EXPECT_EQ(Server.Count("/x"), 0) << "wrong arguments are told before anything is fetched";
  EXPECT_EQ(Server.Count("/p"), 1);
}

TEST_F(WebFunctions, WebServiceFetchesOnceAndTellsFailures) {
  Server.Reply("/a", "first");
  Server.Reply("/full", std::string(32767, 'x'));
  Server.Reply("/long", std::string(32768, 'x'));
  EXPECT_EQ(Eval("=WEBSERVICE(\" {}/a \")"), "'first'");
  Server.Reply("/a", "second");
  Expect({{"=WEBSERVICE(\"{}/a\")", "'first'"},
          {"=LEN(WEBSERVICE(\"{}/full\"))", "32767"},
          {"=WEBSERVICE(\"{}/long\")", "#VALUE!"},
          {"=WEBSERVICE(\"{}/none\")", "#VALUE!"}});
  EXPECT_EQ(Server.Count("/a"), 1);
  EXPECT_EQ(Server.Count("/none"), 1);
  Sheet.Workbook.ClearWebCache();
  EXPECT_EQ(Eval("=WEBSERVICE(\"{}/a\")"), "'second'");
}

TEST_F(WebFunctions, AHostForbidsOrReplacesTheNetwork) {
  Server.Reply("/a", "text");
  Sheet.Workbook.PutWebCache(Server.Url("/kept"), "kept");
  Sheet.Workbook.SetNetworkAllowed(false);
  Sheet.Workbook.NewWorkbook();
  Sheet.Workbook.PutWebCache(Server.Url("/kept"), "kept");
  Expect({{"=WEBSERVICE(\"{}/a\")", "#VALUE!"},
          {"=WEBSERVICE(\"{}/kept\")", "'kept'"},
          {"=IMPORTDATA(\"{}/a\")", "#VALUE!"},
          {"=STOCKHISTORY(\"X\",45000)", "#N/A"},
          {"=GOOGLEFINANCE(\"X\")", "#N/A"}});
  EXPECT_EQ(Server.Count("/a"), 0);
  class TOwnClient final : public IHttpClient {
   public:
    std::optional<THttpResponse> Get(const THttpRequest& ARequest) override {
      return THttpResponse{200, "", ARequest.Url};
    }
  };
  Sheet.Workbook.SetNetworkAllowed(true);
  Sheet.Workbook.HttpClient = std::make_shared<TOwnClient>();
  EXPECT_EQ(Eval("=WEBSERVICE(\"http://own/x\")"), "'http://own/x'");
}

TEST_F(WebFunctions, OneEvaluationFetchesOnce) {
  const std::string url = "=\"" + Server.Url("/none") + "\"";
  for (const char* formula : {"=WEBSERVICE(B1)", "=IFERROR(WEBSERVICE(B1),0)", "=-WEBSERVICE(B1)",
                              "=LEN(WEBSERVICE(B1))", "=SUM(IMPORTDATA(B1))", "=ROWS(SORT(IMPORTDATA(B1)))",
                              "=IF(B2,WEBSERVICE(B1))", "=WEBSERVICE(B1)&B2", "=CONCATENATE(WEBSERVICE(B1),B2)"}) {
    const int before = Server.Count("/none");
    Sheet.Set("B1", url);  // has no result now, so that reading it evaluates it
    Sheet.Set("B2", "=1+1");
    Sheet.Set("C1", formula);
    Sheet.Run("C1");
    EXPECT_EQ(Server.Count("/none"), before + 1) << formula;
    Sheet.Evaluator.RecalculateAll();
    EXPECT_EQ(Server.Count("/none"), before + 2) << formula;
  }
}

TEST_F(WebFunctions, ImportsBecomeTables) {
  Server.Reply("/d", "h,v\na,1\n");
  const std::string formula = "=IMPORTDATA(\"" + Server.Url("/d") + "\",TRUE)";
  Sheet.Set("B2", formula);
  Sheet.Run("B2");
  EXPECT_EQ(Sheet.Show("B2 C2 B3 C3"), "'h' 'v' 'a' 1");
  EXPECT_FALSE(Sheet.Sheet().GetCell({2, 2}).Value.Kind == cvkFormula);
  const TSheetTable* table = Sheet.Sheet().Tables().FindByName(u"Import_B2");
  ASSERT_TRUE(table);
  EXPECT_TRUE(table->HasHeaderRow());
  Sheet.Set("F3", "=1");
  Sheet.Set("E2", formula);
  EXPECT_EQ(Sheet.Run("E2"), "#SPILL!") << "a formula is in the way";
  const std::string query = "=IMPORTDATA(\"" + Server.Url("/d") + "\",\"select h\",TRUE)";
  Sheet.Set("H2", query);
  Sheet.Run("H2");
  EXPECT_EQ(Sheet.Show("H2 H3 I2"), "'h' 'a' _");
}

/// Sends the finance functions to the test's server.
class WebFinance : public WebFunctions {
 protected:
  WebFinance() { SetWebSettings({Before.ProjectAddress, Server.Url()}); }
  ~WebFinance() override { SetWebSettings(Before); }

  TWebSettings Before = WebSettings();
};

TEST_F(WebFinance, HistoriesComeFromTheChartService) { ExpectFile("web_finance.tsv"); }

/// One provider of everything; it notes what it is asked.
class TOwnProvider final : public ITessarineStockHistoryProvider,
                           public ITessarineGoogleFinanceProvider,
                           public ITessarineTranslateProvider,
                           public ITessarineImportRangeProvider {
 public:
  bool GetHistory(const TText& ASymbol, double AStart, double AEnd, int32_t AInterval,
                  std::vector<TStockHistoryBar>& ABars) override {
    Note({ASymbol}, AStart, AEnd, AInterval);
    ABars = {{AStart, 1, 2, 3, 4, 5}, {AEnd, 0, 0, 0, 0, std::numeric_limits<double>::infinity()}};
    return true;
  }
  bool GetFinanceData(const TText& ATicker, const TText& AAttribute, const double* AStart, const double* AEnd,
                      int32_t AInterval, TProviderBlock& ABlock) override {
    Note({ATicker, AAttribute}, AStart ? *AStart : -1, AEnd ? *AEnd : -1, AInterval);
    ABlock = {1, 2, {TCellValue::FromNumber(7), TCellValue::FromFormula(u"=1")}};
    return true;
  }
  bool Translate(const TText& AText, const TText& ASource, const TText& ATarget, TText& AResult) override {
    if (AText == u"throw") throw std::runtime_error("x");
    AResult = TText(AText.ToString() + u" " + ASource.ToString() + u" " + ATarget.ToString());
    return AText != u"no";
  }
  bool DetectLanguage(const TText& AText, TText& ALanguage) override {
    ALanguage = u"fr";
    return AText != u"no";
  }
  bool ImportRange(const TText& AUrl, const TText& ARange, TProviderBlock& ABlock) override {
    ABlock = {1, AUrl == u"torn" ? 3 : 2, {TCellValue::FromText(AUrl), TCellValue::FromText(ARange)}};
    return true;
  }

  std::string Notes;

 private:
  void Note(std::initializer_list<TText> ATexts, double AFirst, double ASecond, int32_t AThird) {
    for (const TText& text : ATexts) Notes += text.ToUtf8() + " ";
    for (const double number : {AFirst, ASecond, static_cast<double>(AThird)})
      Notes += Shown(TCellValue::FromNumber(number)) + " ";
  }
};

TEST_F(WebFunctions, ProvidersAreAskedInPlaceOfTheNetwork) {
  const auto provider = std::make_shared<TOwnProvider>();
  Sheet.Workbook.SetNetworkAllowed(false);
  Sheet.Workbook.StockHistoryProvider = provider;
  Sheet.Workbook.TranslateProvider = provider;
  Sheet.Workbook.ImportRangeProvider = provider;
  ExpectFile("web_providers.tsv");
  EXPECT_EQ(provider->Notes.substr(0, 10), "N:X 10 20 ");
  provider->Notes.clear();
  Sheet.Workbook.GoogleFinanceProvider = provider;
  EXPECT_EQ(Eval("=GOOGLEFINANCE(\"X\",Z9,5,Z9,7)"), "7,'=1'");
  EXPECT_EQ(provider->Notes, "X price 5 -1 7 ");
}

}  // namespace
}  // namespace tessarine::testing
