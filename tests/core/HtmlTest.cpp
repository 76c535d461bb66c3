#include <gtest/gtest.h>

#include <algorithm>

#include <tessarine/core/html/Html.h>
#include <tessarine/core/html/HtmlRichText.h>
#include <tessarine/core/html/HtmlTable.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

using namespace tessarine;

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
std::string ShownTable(std::string_view AHtml) {
  const auto rows = TryParseHtmlTable(Utf8ToUtf16(AHtml));
  if (!rows) return "none";
  std::string text;
  for (const auto& row : *rows) {
    for (const THtmlPastedCell& cell : row) {
      text += cell.Text.ToUtf8();
      if (!cell.Style.IsEmpty()) text += "<" + cell.Style.ToUtf8() + ">";
      if (cell.IsHeader) text += "!";
      if (cell.HasRichText) text += "*";
      text += ",";
    }
    text.back() = ';';
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

TEST(Html, EscapesAndUnescapes) {
  EXPECT_EQ(HtmlEscape(u"a<b>&\"c\"\r\nd'"), u"a&lt;b&gt;&amp;&quot;c&quot;<br>d'");
  const struct {
    const char16_t* Html;
    const char16_t* Text;
  } cases[] = {
      {u"&amp;&lt;&gt;&quot;&apos;&nbsp;|", u"&<>\"' |"},
      {u"a\r\nb", u"ab"},
      {u"&#65;&#x42;&#X63;&#8364;&#x1F600;", u"ABc\u20AC\U0001F600"},
      {u"&#160;&#128;&#x99;", u" \u20AC\u2122"},
      {u"&#0;&#xD800;&#x110000;&#;&#x;&#1a;", u"&#0;&#xD800;&#x110000;&#;&#x;&#1a;"},
      {u"&copy;&AMP; & &;", u"&copy;&AMP; & &;"},
      {u"&#00000065;&#000000065;", u"A&#000000065;"},  // the ";" is out of reach
      {u"&&amp;amp;&", u"&&amp;&"},
  };
  for (const auto& row : cases) EXPECT_EQ(HtmlUnescape(row.Html), row.Text) << Utf16ToUtf8(row.Html);
}

TEST(Html, ReadsCssColors) {
  const struct {
    const char16_t* Text;
    uint32_t Color;
  } cases[] = {
      {u" Red ", 0xFFFF0000},
      {u"WindowText", 0xFF000000},
      {u"GREEN", 0xFF008000},
      {u"grey", 0xFF808080},
      {u"#abc", 0xFFAABBCC},
      {u"#0a1B2c", 0xFF0A1B2C},
      {u"#0a1B2cff", 0xFF0A1B2C},
      {u"#ab", 0xFF000000},
      {u"#abcde", 0xFF000000},
      {u"#ggg", 0xFF000000},
      {u"RGB( 1, 2 ,300 )", 0xFF0102FF},
      {u"rgb(1,2,3", 0xFF010203},
      {u"rgb(1,2,3,0)", 0xFF010203},
      {u"rgb(1,2)", 0xFF000000},
      {u"rgb(a,2,3)", 0xFF000000},
      {u"tomato", 0xFF000000},
      {u"", 0xFF000000},
      {u"rgba(9,9,9,1)", 0xFF000000},
  };
  for (const auto& row : cases) EXPECT_EQ(CssColorToARGB(row.Text), row.Color) << Utf16ToUtf8(row.Text);
}

TEST(Html, LaysStylesOverFonts) {
  const struct {
    const char16_t* Css;
    const char* Font;
  } cases[] = {
      {u"font-weight:bold; FONT-STYLE : Oblique", "B I"},
      {u"font-family: 'Times New Roman' , serif;color:#f00", "Times New Roman #ff0000"},
      {u"font-size:12px", "12"},
      {u"font-size: 1.5em", "1.5"},
      {u"font-size: 9 PT", "9"},
      {u"font-size: 2rem", ""},
      {u"font-size:1e300", ""},
      {u"font-size:large;font-weight:600;font-family:", ""},
      {u"text-decoration: underline line-through", "U S"},
      {u"text-decoration:underline;text-decoration:none", ""},
      {u"vertical-align:super", "^"},
      {u"vertical-align:subscript;color", "v"},
      {u";;:;bold;font-weight:bold:x", ""},
  };
  for (const auto& row : cases) {
    TCellFontInfo font;
    ApplyCssToFont(row.Css, font);
    EXPECT_EQ(ShownFont(font), row.Font) << Utf16ToUtf8(row.Css);
  }
}

TEST(Html, BecomesRuns) {
  const struct {
    const char* Html;
    const char* Runs;
  } cases[] = {
      {"", ""},
      {"a<b>b<i>c</i></b>d", "a{}b{B}c{B I}d{}"},
      {"<strong>a</strong><em>b</em><u>c</u><del>d</del>", "a{B}b{I}c{U}d{S}"},
      {"x<sup>2</sup>y<sub>1</sub>", "x{}2{^}y{}1{v}"},
      {"<h1>a</h1><h4>b</h4>", "a{B 24}/b{}"},
      {"<p>a</p><p>b<br/>c</p>", "a/b/c{}"},
      {"a<span style=\"color:&quot;x;font-weight:bold\">b</span>", "a{}b{B}"},
      {"<font color=#0000ff face='Arial, x' size=7>a</font><font size=\"9\">b</font>", "a{Arial 36 #0000ff}b{12}"},
      {"<b style='font-size:8pt'>a</b>", "a{B 8}"},
      {"a<script>if (1<2) x('</b>')</script>b<!-- <b> -->c", "abc{}"},
      {"<head><title>t</title></head>a<style/>b", "ab{}"},
      {"a  \r\n\t b&nbsp;&nbsp;c", "a b c{}"},
      {"a</b></i>b<unknown>c</unknown>", "abc{}"},
      {"a<b>b</i>c", "a{}b{B}c{}"},
      {"a<img>b<hr>c<", "abc<{}"},
      {"a<b", "a{}"},
      {"a<!-- b", "a{}"},
  };
  for (const auto& row : cases) EXPECT_EQ(ShownRuns(row.Html), row.Runs) << row.Html;
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

TEST(Html, TablesBecomeCells) {
  const struct {
    const char* Html;
    const char* Cells;
  } cases[] = {
      {"", "none"},
      {"<table><tr></tr></table>", "none"},
      {"<td>a</td>", "none"},
      {"x<TABLE><thead><TR><TH> A </TH><th>B</th></TR></thead><tr><td>1<td>2</table>y", "A!,B!;1,2;"},
      {"<tr><td>no table</td></tr>", "no table;"},
      {"<table><tr><td>a<br>b</td><td><p>c </p>\n<p> d</p></td><td>&nbsp;</td></tr></table>", "a/b,c/d,;"},
      {"<table><tr><td>a<table><tr><td>b</td></tr></table></td></tr><tr><td>c</td></tr></table><table><tr><td>d",
       "a;b;c;"},
      {"<table><!-- <tr><td>x</td></tr> --><tr><td>a</td></tr></table>", "a;"},
      {"<table><tr><td><b>a</b></td><td><script>'<td>'</script>b</td></tr></table>", "a*,b;"},
      {"<style><!-- .x{color:red} /* c */ .Y, td {font-weight:bold} --></style><table><tr><td class=\"X y\" "
       "style='a:b'>1</td><td class=x>2</td><td class=z>3</td></tr></table>",
       "1<color:red;font-weight:bold;a:b>,2<color:red>,3;"},
      {"<style>.x{color:red<table><tr><td class=x>1</td></tr></table>", "none"},
  };
  for (const auto& row : cases) EXPECT_EQ(ShownTable(row.Html), row.Cells) << row.Html;
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
