#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/sheet/Providers.h>
#include <tessarine/formula/StockHistory.h>
#include <tessarine/formula/library/detail/WebReading.h>
#include <tessarine/platform/Http.h>
#include <tessarine/platform/Unicode.h>

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
  struct TCase {
    const char* Formula;
    const char* Result;
  };
  void Expect(std::initializer_list<TCase> ACases) {
    for (const TCase& row : ACases) EXPECT_EQ(Eval(row.Formula), row.Result) << row.Formula;
  }

  TLoopbackServer Server;
  TSheetFixture Sheet;
};

TEST(EncodeUrl, LeavesWhatIsUnreserved) {
  ExpectCalls({
      {"ENCODEURL", "'a b'", "'a%20b'"},
      {"ENCODEURL", "' aZ09-._~ '", "'aZ09-._~'"},
      {"ENCODEURL", "'/?&=+ä€'", "'%2F%3F%26%3D%2B%C3%A4%E2%82%AC'"},
      {"ENCODEURL", "12.5", "'12.5'"},
      {"ENCODEURL", "#N/A", "#N/A"},
      {"ENCODEURL", "", "#VALUE!"},
  });
}

TEST_F(WebFunctions, CheckTheirArgumentsFirst) {
  const std::string longUrl = "http://x/" + std::string(2040, 'x');
  EXPECT_FALSE(detail::IsWebUrl(Utf8ToUtf16(longUrl)));
  EXPECT_TRUE(detail::IsWebUrl(Utf8ToUtf16(longUrl.substr(0, 2048))));
  Expect({
      {"=WEBSERVICE(\"ftp://x\")", "#VALUE!"},
      {"=WEBSERVICE(\"\")", "#VALUE!"},
      {"=WEBSERVICE(1/0)", "#DIV/0!"},
      {"=FILTERXML(\"\",\"//a\")", "#VALUE!"},
      {"=FILTERXML(\"<a/>\",\"\")", "#VALUE!"},
      {"=FILTERXML(NA(),1/0)", "#N/A"},
      {"=IMPORTHTML(\"{}/x\",\"tables\",1)", "#VALUE!"},
      {"=IMPORTHTML(\"{}/x\",\"table\",0)", "#VALUE!"},
      {"=IMPORTHTML(\"x\",\"table\",1,NA())", "#N/A"},
      {"=IMPORTDATA(\"{}/x\",\"select A\",\"maybe\")", "#VALUE!"},
      {"=IMPORTFEED(\"{}/x\",\"weather\")", "#VALUE!"},
      {"=IMPORTFEED(\"{}/x\",\"items weather\")", "#VALUE!"},
      {"=IMPORTFEED(\"{}/x\",Z9,Z9,0)", "#VALUE!"},
      {"=STOCKHISTORY(\"X\",45000,Z9,3)", "#VALUE!"},
      {"=STOCKHISTORY(\"X\",\"soon\")", "#VALUE!"},
      {"=STOCKHISTORY(\"X\",45000,Z9,Z9,3)", "#VALUE!"},
      {"=STOCKHISTORY(\"X\",45000,Z9,Z9,Z9,6)", "#VALUE!"},
      {"=STOCKHISTORY(\" \",45000)", "#VALUE!"},
      {"=GOOGLEFINANCE(\"X\",Z9,\"soon\")", "#VALUE!"},
      {"=IMPORTRANGE(\"\",\"A1\")", "#VALUE!"},
      {"=IMPORTRANGE(\"x\",\"A1\")", "#N/A"},
      {"=TRANSLATE(\"x\")", "#N/A"},
      {"=DETECTLANGUAGE(\"x\")", "#N/A"},
  });
  EXPECT_EQ(Server.Count("/x"), 0);
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

TEST_F(WebFunctions, FilterXmlAndImportXmlSelect) {
  Server.Reply("/x.xml", "<a><b>1</b><b> x </b><b/></a>", "text/xml");
  Server.Reply("/bad", "<a>");
  Expect({{"=FILTERXML(\"<a><b>1</b><b>2</b></a>\",\"//b\")", "'1';'2'"},
          {"=FILTERXML(\"<a><b>1</b></a>\",\"//b\")", "'1'"},
          {"=FILTERXML(\"<a/>\",\"//b\")", "#VALUE!"},
          {"=FILTERXML(\"<a>\",\"//b\")", "#VALUE!"},
          {"=FILTERXML(\"<a/>\",\"//[\")", "#VALUE!"},
          {"=IMPORTXML(\"{}/x.xml\",\"//b\")", "1;' x ';''"},
          {"=IMPORTXML(\"{}/x.xml\",\"//c\")", "#VALUE!"},
          {"=IMPORTXML(\"{}/bad\",\"//c\")", "#VALUE!"}});
}

TEST_F(WebFunctions, ImportHtmlReadsTablesAndLists) {
  Server.Reply("/p",
               "<html><head><title>t<body><script>'<table>'</script><!-- <table> -->"
               "<Table><tr><th>n<th>v</tr><tr><td>a<td>1.5</tr><tr><td>b</tr>"
               "<tr><td><table><tr><td>in</td></tr></table></td></tr></table>"
               "<ul><li> x <b>y</b></li><li>z<ol><li>1<li>2</ol></li></ul><table></table><ol><li>open",
               "text/html");
  Expect({
      {"=IMPORTHTML(\"{}/p\",\" Table \",1)", "'n','v';'a',1.5;'b','';'','';'in',''"},
      {"=IMPORTHTML(\"{}/p\",\"table\",3)", "#N/A"},
      {"=IMPORTHTML(\"{}/p\",\"table\",4)", "#N/A"},
      {"=IMPORTHTML(\"{}/p\",\"list\",2)", "1;2"},
      {"=IMPORTHTML(\"{}/p\",\"list\",3)", "'open'"},
      {"=IMPORTHTML(\"{}/p\",\"list\",4)", "#N/A"},
      {"=IMPORTHTML(\"{}/none\",\"list\",4)", "#VALUE!"},
      {"=IMPORTHTML(\"{}/p\",\"table\",2)", "'in'"},
      {"=IMPORTHTML(\"{}/p\",\"table\",1,\"select v where v > 1\")", "'v';1.5"},
      {"=IMPORTHTML(\"{}/p\",\"table\",1,\"select\")", "#VALUE!"},
      {"=1+IMPORTHTML(\"{}/p\",\"table\",1)", "#VALUE!"},
      {"=IMPORTHTML(\"{}/p\",\"list\",1)", "'x y';'z\n1\n2'"},
  });
  EXPECT_EQ(Server.Count("/p"), 1);
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

TEST_F(WebFunctions, ImportDataReadsDelimitedText) {
  Server.Reply("/c", "1,\"a,b\",\r\n2.5,c\n");
  Server.Reply("/t", "x\ty,z\n1\t2");
  Server.Reply("/e", "");
  Server.Reply("/wide", std::string(2000, ',') + std::string(2000, '\n'));
  Expect({{"=IMPORTDATA(\"{}/c\")", "1,'a,b','';2.5,'c',''"},
          {"=IMPORTDATA(\"{}/t\")", "'x','y,z';1,2"},
          {"=IMPORTDATA(\"{}/t\",\"select x\")", "'x';1"},
          {"=IMPORTDATA(\"{}/t\",Z9,FALSE)", "'x','y,z';1,2"},
          {"=IMPORTDATA(\"{}/e\")", "#N/A"},
          {"=IMPORTDATA(\"{}/wide\")", "#NUM!"},
          {"=IMPORTDATA(\"{}/none\")", "#VALUE!"}});
}

TEST_F(WebFunctions, ImportFeedReadsRssAndAtom) {
  Server.Reply("/rss",
               "\n<?xml version='1.0'?><rss xmlns:atom='a'><channel><title>News</title><atom:link href='self'/>"
               "<link>http://n/</link><description>d</description>"
               "<item><title>One &amp; all</title><link>http://1</link><pubDate>Mon</pubDate>"
               "<description><![CDATA[<b>s</b>]]></description><author>me</author></item>"
               "<item><title>2</title></item></channel></rss>");
  Server.Reply("/atom",
               "<feed xmlns='http://www.w3.org/2005/Atom'><title>A</title><link href='http://a/'/>"
               "<entry><title>E</title><link rel='x' href='http://e'/><updated>T</updated><summary>S</summary>"
               "<author><name>N</name><email>M</email></author></entry></feed>");
  Server.Reply("/none.xml", "<a/>");
  Server.Reply("/bad.xml", "<!DOCTYPE a [<!ENTITY x \"y\">]><a>&x;</a>");
  Expect({
      {"=IMPORTFEED(\"{}/rss\")", "'One & all','http://1','Mon';'2','',''"},
      {"=IMPORTFEED(\"{}/rss\",\"ITEMS \",TRUE,1)", "'Title','URL','Date';'One & all','http://1','Mon'"},
      {"=IMPORTFEED(\"{}/rss\",\"items title\")", "'One & all';'2'"},
      {"=IMPORTFEED(\"{}/rss\",\"items summary\",Z9,1)", "'<b>s</b>'"},
      {"=IMPORTFEED(\"{}/rss\",\"items author\",1,1)", "'Author';'me'"},
      {"=IMPORTFEED(\"{}/rss\",\"feed title\")", "'News'"},
      {"=IMPORTFEED(\"{}/rss\",\"feed url\")", "'http://n/'"},
      {"=IMPORTFEED(\"{}/rss\",\"feed\",TRUE)", "'Title','URL','Description';'News','http://n/','d'"},
      {"=IMPORTFEED(\"{}/atom\")", "'E','http://e','T'"},
      {"=IMPORTFEED(\"{}/atom\",\"items content\")", "'S'"},
      {"=IMPORTFEED(\"{}/atom\",\"items author\")", "'N'"},
      {"=IMPORTFEED(\"{}/atom\",\"feed url\")", "'http://a/'"},
      {"=IMPORTFEED(\"{}/none.xml\")", "#N/A"},
      {"=IMPORTFEED(\"{}/bad.xml\")", "#VALUE!"},
      {"=IMPORTFEED(\"{}/missing\")", "#VALUE!"},
  });
}

/// Sends the finance functions to the test's server.
class WebFinance : public WebFunctions {
 protected:
  WebFinance() { SetWebSettings({Before.ProjectAddress, Server.Url()}); }
  ~WebFinance() override { SetWebSettings(Before); }

  TWebSettings Before = WebSettings();
};

TEST_F(WebFinance, HistoriesComeFromTheChartService) {
  const std::string path = "/v8/finance/chart/%5EX?period1=1672617600&period2=1672876800&interval=";
  Server.Reply(path + "1d",
               "{\"chart\":{\"error\":null,\"result\":[{\"meta\":{\"a\":[1,{}]},\"timestamp\":[1672617600,null,"
               "1672747200],\"indicators\":{\"adj\":[1],\"quote\":[{\"open\":[1,2,3],\"high\":[4,5,6],\"low\":[7,8,9],"
               "\"close\":[10,11,null],\"volume\":[1e3]},{\"close\":[0]}]}},{\"timestamp\":[1]}]}}");
  Server.Reply(path + "1wk", "{\"chart\":{\"result\":[]}}");
  Server.Reply(path + "1mo", "{\"chart\":");
  Server.Reply("/v8/finance/chart/D?period1=1672617600&period2=1672704000&interval=1d",
               "{\"chart\":{\"result\":[{\"timestamp\":[1672617600]}]}}");
  Expect({
      {"=STOCKHISTORY(\"N:^X\",44928,44930)", "'Date','Close';44928,10;44929.5,0"},
      {"=STOCKHISTORY(\" ^X \",44928,44930,Z9,2,5,0,2)", "'^X',_,_;'Volume','Date','Open';1000,44928,1;0,44929.5,3"},
      {"=STOCKHISTORY(\"^X\",44928,44930,0,0,3,4)", "4,7;6,9"},
      {"=STOCKHISTORY(\"^X\",44928,44930,1)", "#N/A"},
      {"=STOCKHISTORY(\"^X\",44928,44930,2)", "#N/A"},
      {"=STOCKHISTORY(\"D\",44928,44000,Z9,0)", "44928,0"},
      {"=STOCKHISTORY(\"none\",44928)", "#N/A"},
      {"=STOCKHISTORY(\"X\",10^300)", "#N/A"},
      {"=GOOGLEFINANCE(\"^X\",\"High\",44928,44930)", "'Date','High';44928,4;44929.5,6"},
      {"=GOOGLEFINANCE(\"^X\",\"nothing\",44928,44930)", "#N/A"},
      {"=GOOGLEFINANCE(\"none\")", "#N/A"},
  });
}

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
  Expect({
      {"=STOCKHISTORY(\"N:X\",10,20,2,0,1,5)", "4,5;0,#NUM!"},
      {"=GOOGLEFINANCE(\"X\")", "4"},
      {"=GOOGLEFINANCE(\"X\",\"low\",10,20)", "'Date','Low';10,3;20,0"},
      {"=TRANSLATE(\" a \")", "'a auto en'"},
      {"=GOOGLETRANSLATE(\"a\",Z9,\"de\")", "'a auto de'"},
      {"=TRANSLATE(\"no\")", "#N/A"},
      {"=TRANSLATE(\"throw\")", "#N/A"},
      {"=DETECTLANGUAGE(\"a\")", "'fr'"},
      {"=DETECTLANGUAGE(\"no\")", "#N/A"},
      {"=IMPORTRANGE(\"u\",\"A1:B1\")", "'u','A1:B1'"},
      {"=IMPORTRANGE(\"torn\",\"A1\")", "#N/A"},
  });
  EXPECT_EQ(provider->Notes.substr(0, 10), "N:X 10 20 ");
  provider->Notes.clear();
  Sheet.Workbook.GoogleFinanceProvider = provider;
  EXPECT_EQ(Eval("=GOOGLEFINANCE(\"X\",Z9,5,Z9,7)"), "7,'=1'");
  EXPECT_EQ(provider->Notes, "X price 5 -1 7 ");
}

}  // namespace
}  // namespace tessarine::testing
