#include <gtest/gtest.h>

#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/XPath.h>
#include <tessarine/platform/detail/XPathCost.h>

#include "../support/CaseTable.h"

using namespace tessarine;

namespace {

/// The texts that are selected, separated by "|", or the outcome.
std::string Selected(std::string_view AXml, std::string_view AXPath, const TXPathLimits& ALimits = {}) {
  const auto document = TXPathDocument::TryLoad(Utf8ToUtf16(AXml));
  if (!document) return "(no document)";
  const TXPathSelection selection = document->Select(Utf8ToUtf16(AXPath), ALimits);
  switch (selection.Outcome) {
    case xoBadExpression: return "(bad)";
    case xoTooCostly: return "(costly)";
    case xoTooMuch: return "(much)";
    case xoDone: break;
  }
  std::string shown;
  for (const auto& text : selection.Texts) (shown += shown.empty() ? "" : "|") += Utf16ToUtf8(text);
  return shown;
}

std::string Repeated(std::string_view APiece, size_t ACount) {
  std::string text;
  for (size_t i = 0; i < ACount; ++i) text += APiece;
  return text;
}

}  // namespace

TEST(XPath, ExamplesHold) {
  const std::string xml =
      " <?xml version=\"1.0\" encoding=\"UTF-16\"?><r xmlns:n=\"u\"><a id=\"1\">x<b>y</b> z</a>\n"
      "<a id=\"2\"><![CDATA[<&]]>&#8364;</a><n:c>ns</n:c></r> ";
  test::ExpectCases("platform/xpath.tsv",
                    {{"select", [&](const test::TCase& ACase) { return Selected(xml, ACase[1]); }},
                     {"load", [](const test::TCase& ACase) { return Selected(ACase[1], "/*"); }}});
  EXPECT_EQ(Selected(Repeated("<a>", 100'000) + Repeated("</a>", 100'000), "/*"), "(no document)");
}

TEST(XPath, BoundsExpressionsAndResults) {
  const std::string xml = "<r>" + Repeated("<a>12345678</a>", 1000) + "</r>";
  EXPECT_EQ(Selected(xml, Repeated("(", 100'000) + "1" + Repeated(")", 100'000)), "(bad)");
  EXPECT_EQ(Selected(xml, Repeated("//a[", 70) + "1" + Repeated("]", 70)), "(bad)");
  EXPECT_EQ(Selected(xml, "/r" + Repeated("/..", 256)), "(bad)") << "more steps than may be";
  EXPECT_EQ(Selected(xml, "/r" + Repeated("/.", 254)).size(), 8000u);
  EXPECT_EQ(Selected(xml, "//a", {.MaxNodes = 999}), "(much)");
  EXPECT_EQ(Selected(xml, "//a", {.MaxTextBytes = 7999}), "(much)");
  EXPECT_EQ(Selected(xml, "//a", {.MaxNodes = 1000, .MaxTextBytes = 8000}).size(), 8999u);
}

TEST(XPath, RefusesWhatCouldTakeForEver) {
  const std::string page = "<html><body><table>" + Repeated("<tr><th id='x'>a</th><td>1</td><td>2</td></tr>", 3000) +
                           "</table></body></html>";
  for (const char* xpath : {
           "//td[2]",
           "/html/body/table/tr[th='a']/td[1]",
           "//tr[.//td[contains(., '1') and not(@id)]]/th[@id='x']",
           "//th[@id='x']/following-sibling::td[1]",
           "//table/tr/td/../th[normalize-space(.)='a']",
           "//*[local-name()='td' or local-name()='th']",
       })
    EXPECT_GE(Selected(page, xpath).size(), 3000u) << xpath;
  for (const char* xpath : {
           "//*[//*[//*]]",
           "//td[preceding::td[following::td]]",
           "//td[. = //th]",
           "//td = //th",
           "//*/following::*/preceding::*",
           "//*[count(/*//*) > 1]",
           "//tr[../tr/td[../../tr/td]]",
       })
    EXPECT_EQ(Selected(page, xpath), "(costly)") << xpath;
}
