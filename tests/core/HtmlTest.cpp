#include <gtest/gtest.h>

#include <algorithm>

#include <tessarine/core/html/Html.h>
#include <tessarine/core/html/HtmlRichText.h>
#include <tessarine/core/html/HtmlTable.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

#include "../support/CaseTable.h"

using namespace tessarine;
using test::ExpectCases;
using test::TCase;

namespace {

/// What of a font differs from the default one: "B I U S ^ v Arial 12 FF0000".
std::string ShownFont(const TCellFontInfo& AFont) {
  const TCellFontInfo base;
  std::string text;
  const auto add = [&](bool AIsDifferent, const std::string& AWord) {
    if (AIsDifferent) text += (text.empty() ? "" : " ") + AWord;
  };
  add(AFont.Bold, "B");
  add(AFont.Italic, "I");
  add(AFont.Underline != usNone, "U");
  add(AFont.Strikethrough, "S");
  add(AFont.Script != spNormal, AFont.Script == spSuperscript ? "^" : "v");
  add(AFont.Name != base.Name, AFont.Name.ToUtf8());
  add(AFont.Size != base.Size, Utf16ToUtf8(GeneralNumberText(static_cast<double>(AFont.Size))));
  add(!(AFont.Color == base.Color), Utf16ToUtf8(ColorRefToCssHex(AFont.Color)));
  return text;
}

/// Runs as "text{font}", line feeds as "/".
std::string ShownRuns(std::string_view AHtml) {
  std::string text;
  for (const TRichTextRun& run : HtmlToRichText(Utf8ToUtf16(AHtml)))
    text += run.Text.ToUtf8() + "{" + ShownFont(run.Font) + "}";
  std::replace(text.begin(), text.end(), '\n', '/');
  return text;
}

/// Cells as "text", "text<style>" or "text*" (rich) or "text!" (header), in rows: "a,b;c".
std::string ShownTable(const std::optional<THtmlPastedCells>& ARows) {
  if (!ARows) return "none";
  std::string text;
  for (const auto& row : *ARows) {
    for (const THtmlPastedCell& cell : row) {
      text += cell.Text.ToUtf8();
      if (!cell.Style.IsEmpty()) text += "<" + cell.Style.ToUtf8() + ">";
      if (cell.IsHeader) text += "!";
      if (cell.HasRichText) text += "*";
      text += ",";
    }
    if (text.ends_with(',')) text.pop_back();
    text += ";";
  }
  std::replace(text.begin(), text.end(), '\n', '/');
  return text;
}

std::u16string Repeated(std::u16string_view APiece, size_t ACount) {
  std::u16string text;
  for (size_t i = 0; i < ACount; ++i) text += APiece;
  return text;
}

}  // namespace

TEST(Html, ExamplesHold) {
  const auto font = [](const TCase& ACase) {
    TCellFontInfo info;
    ApplyCssToFont(ACase.Text(1), info);
    return ShownFont(info);
  };
  ExpectCases("core/html.tsv",
              {{"unescape", [](const TCase& ACase) { return HtmlUnescape(ACase.Text(1)); }},
               {"colour", [](const TCase& ACase) { return test::ShownColor(CssColorToARGB(ACase.Text(1))); }},
               {"font", font},
               {"runs", [](const TCase& ACase) { return ShownRuns(ACase[1]); }},
               {"table", [](const TCase& ACase) { return ShownTable(TryParseHtmlTable(ACase.Text(1))); }},
               {"blocks", [](const TCase& ACase) { return ShownTable(TryParseHtmlBlocks(ACase.Text(1))); }}});
  EXPECT_EQ(HtmlEscape(u"a<b>&\"c\"\r\nd'"), u"a&lt;b&gt;&amp;&quot;c&quot;<br>d'");
  EXPECT_EQ(HtmlToPlain(u"<b>x</b> &lt;y"), u"x <y");
}

TEST(Html, IsWrittenFromRunsAndReadBack) {
  TCellFontInfo font;
  font.Bold = font.Italic = font.Strikethrough = true;
  font.Underline = usSingle;
  font.Script = spSubscript;
  font.Name = u"A\"B";
  font.Size = 10.5F;
  font.Color = TColorRef::FromARGB(0xFF12ABEF);
  const TRichTextRuns runs = {{u"a<", {}}, {u"b", font}};
  EXPECT_EQ(RichTextToHtml(runs),
            u"a&lt;<span style=\"font-family:A&quot;B;font-size:10pt;color:#12abef;\"><sub><s><u><i><b>b</b></i></u>"
            u"</s></sub></span>");
  EXPECT_EQ(RichTextToHtml(runs, font), RichTextToHtml({{u"a<", {}}}, font) + u"b");
  EXPECT_TRUE(RichTextHasFormatting(runs, {}));
  EXPECT_EQ(RichTextToPlain(runs), u"a<b");
  font.Name = u"Arial";
  font.Size = 10;
  const TRichTextRuns plain = {{u"x & y\nz", {}}, {u"b", font}};
  EXPECT_EQ(HtmlToRichText(RichTextToHtml(plain)), plain);
}

TEST(Html, HostileTextsTakeNoMoreThanTheirLength) {
  for (const char16_t* piece : {u"<b>", u"<!--", u"<script>", u"<style>", u"<style>.a{", u"&", u"<td>", u"<tr><td>",
                                u"<table>", u"</b>", u"<script><", u"<b class='", u"<", u"<p>x", u"<div></p>"}) {
    const std::u16string html = Repeated(piece, 100'000);
    EXPECT_LE(HtmlToPlain(html).size(), html.size());
    static_cast<void>(TryParseHtmlTable(html));
    static_cast<void>(TryParseHtmlBlocks(html));
  }
  const std::u16string style(200'000, u's');
  const auto rows = TryParseHtmlTable(u"<style>.a{" + style + u"}</style><tr>" + Repeated(u"<td class='a a'>", 1000));
  ASSERT_TRUE(rows);
  size_t total = 0;
  for (const THtmlPastedCell& cell : rows->front()) total += cell.Style.Length();
  EXPECT_GT(total, style.size());
  EXPECT_LE(total, size_t{1} << 25);
}
