#include <gtest/gtest.h>

#include <algorithm>

#include <tessarine/core/html/Clipboard.h>
#include <tessarine/core/html/Html.h>
#include <tessarine/core/html/HtmlClipboard.h>
#include <tessarine/core/html/HtmlTable.h>
#include <tessarine/platform/Unicode.h>

using namespace tessarine;

namespace {

/// Rows as "text<style>" with "*" for rich ones, cells behind "|", a ";" behind each row, line feeds as "/".
std::string Shown(const std::optional<THtmlPastedCells>& ARows) {
  if (!ARows) return "none";
  std::string text;
  for (const auto& row : *ARows) {
    for (const THtmlPastedCell& cell : row) {
      if (&cell != row.data()) text += "|";
      text += cell.Text.ToUtf8();
      if (!cell.Style.IsEmpty()) text += "<" + cell.Style.ToUtf8() + ">";
      if (cell.HasRichText) text += "*";
    }
    text += ";";
  }
  std::replace(text.begin(), text.end(), '\n', '/');
  return text;
}

/// What stands at the header's offset AName, up to the offset AEnd.
std::string Between(const std::string& AHtml, const std::string& AName, const std::string& AEnd) {
  const auto offset = [&](const std::string& AOf) {
    const size_t at = AHtml.find(AOf + ":") + AOf.size() + 1;
    EXPECT_EQ(AHtml.substr(at + 10, 2), "\r\n") << AOf;
    return std::stoull(AHtml.substr(at, 10));
  };
  return AHtml.substr(offset(AName), offset(AEnd) - offset(AName));
}

/// A clipboard that another program has open.
class TBusyClipboard final : public IClipboard {
 public:
  bool Replace(std::span<const TClipboardItem>) override { return false; }
  std::optional<std::vector<std::byte>> Find(std::string_view) override { return std::nullopt; }
};

}  // namespace

TEST(HtmlClipboard, TheHeaderTellsOffsetsInBytes) {
  for (const std::u16string fragment : {u"", u"<b>x</b>", u"\u00FC\u20AC\U0001F600 y"}) {
    const std::string html = ToClipboardHtml(fragment);
    EXPECT_EQ(html.substr(0, 33), "Version:0.9\r\nStartHTML:0000000105") << html;
    EXPECT_EQ(Between(html, "StartFragment", "EndFragment"), Utf16ToUtf8(fragment));
    EXPECT_EQ(Between(html, "StartHTML", "EndHTML"),
              "<html><body>\r\n<!--StartFragment-->" + Utf16ToUtf8(fragment) + "<!--EndFragment-->\r\n</body></html>");
    EXPECT_EQ(html.size(), html.find("</html>") + 7);
    std::u16string unmarked = FromClipboardHtml(html + '\0' + "rest");
    EXPECT_EQ(ExtractHtmlFragment(unmarked), fragment);
    for (const char16_t* mark : {u"<!--Start", u"<!--End"}) unmarked[unmarked.find(mark) + 4] = u'x';
    EXPECT_EQ(ExtractHtmlFragment(unmarked), fragment.empty() ? unmarked : fragment);
  }
  EXPECT_EQ(ExtractHtmlFragment(FromClipboardHtml(ToClipboardHtml(std::u16string(u"a\0b", 3)))), u"ab");
}

TEST(HtmlClipboard, FragmentsOfForeignHeadersAreFound) {
  const struct {
    const char* Html;
    const char* Fragment;
  } cases[] = {
      {"", ""},
      {"no header", "no header"},
      {"a<!--StartFragment-->b<!--EndFragment-->c<!--EndFragment-->", "b"},
      {"<!--EndFragment-->a<!--StartFragment-->b", "<!--EndFragment-->a<!--StartFragment-->b"},
      {"EndFragment:40\nStartFragment:000038\n\xC3\xBCxyz", "xy"},
      {"EndFragment:40\nStartFragment: 35\n12345", "EndFragment:40\nStartFragment: 35\n12345"},
      {"StartFragment:0\nEndFragment:15\nx", "StartFragment:0"},
      {"StartFragment:4\nEndFragment:99999999999999999999999\n", "tFragment:4\nEndFragment:99999999999999999999999\n"},
      {"StartFragment:-1\nEndFragment:5\n", "StartFragment:-1\nEndFragment:5\n"},
      {"StartFragment:7\nEndFragment:7\n", "StartFragment:7\nEndFragment:7\n"},
      {"StartFragment:500\nEndFragment:600\n", ""},
  };
  for (const auto& row : cases)
    EXPECT_EQ(Utf16ToUtf8(ExtractHtmlFragment(Utf8ToUtf16(row.Html))), row.Fragment) << row.Html;
}

TEST(HtmlClipboard, BlocksBecomeRows) {
  const struct {
    const char* Html;
    const char* Rows;
  } cases[] = {
      {"", "none"},
      {" \r\n<b></b> ", "none"},
      {"one <i>cell</i>", "one cell*;"},
      {"<p>a</p><p></p><p>b<br>c</p>", "a;;b/c;"},
      {"<ul>\r\n<li>a</li>\r\n<li>b</ul>", "a;b;"},
      {"x<div>y<p>a</p>z</div> ", "x;y;a;z;"},
      {"<div><div><p></p></div></div>", ";"},
      {"<h1>a</h1><h4>b</h4><blockquote>c</blockquote>", "a*;b;c;"},
      {"<style>.m{color:red}</style><p class=m style='font-weight:bold'>a</p>b", "a<color:red;font-weight:bold>*;b;"},
      {"<script>'<p>x</p>'</script><p>a<!-- </p> --></P ><p/>b", "a;b;"},
      {"<p>a<p>b</p", "a;b;"},
  };
  for (const auto& row : cases) EXPECT_EQ(Shown(TryParseHtmlBlocks(Utf8ToUtf16(row.Html))), row.Rows) << row.Html;
}

TEST(HtmlClipboard, TablesComeBeforeBlocksAndKnowTheDocumentsStyles) {
  const std::string head = "Version:0.9\r\n<html><style>.x{color:red}</style><p>before</p><table>";
  const struct {
    const char* Fragment;
    const char* Rows;
  } cases[] = {
      {"<tr><td class=x>1</td><td><p>2</p><p>3</p></td></tr><tr><td>4</td></tr>", "1<color:red>|2/3;4;"},
      {"<p class=x>a</p><div>b</div>", "a<color:red>;b;"},
      {"<table></table><p>a</p>", "a;"},
      {"", "none"},
  };
  for (const auto& row : cases) {
    const std::string html = head + "<!--StartFragment-->" + row.Fragment + "<!--EndFragment--></table><p>behind</p>";
    EXPECT_EQ(Shown(TryParseHtmlClipboard(Utf8ToUtf16(html))), row.Rows) << row.Fragment;
  }
  EXPECT_EQ(Shown(TryParseHtmlClipboard(u"x<tr><td>1</td></tr>")), "1;");
}

TEST(HtmlClipboard, StylesAreLaidOverFormats) {
  const struct {
    const char16_t* Css;
    uint32_t Fill;  // 0: as it was
  } cases[] = {
      {u"BACKGROUND-COLOR : #ff0", 0xFFFFFF00},
      {u"background:white;background-color:rgb(1, 2, 3)", 0xFF010203},
      {u"background:#abc none repeat", 0xFFAABBCC},
      {u"background:Red url(x.png)", 0xFFFF0000},
      {u"background:transparent;background-color:none", 0},
      {u"background:url(x.png);background-color:;color:red", 0},
  };
  for (const auto& row : cases) {
    TCellFormat format;
    format.Fill = TCellFillInfo::Gradient({}, {}, 45);
    ApplyCssToFormat(std::u16string(row.Css) + u";font-weight:bold", format);
    const auto fill =
        row.Fill ? TCellFillInfo::Solid(TColorRef::FromARGB(row.Fill)) : TCellFillInfo::Gradient({}, {}, 45);
    EXPECT_EQ(format.Fill, fill) << Utf16ToUtf8(row.Css);
    EXPECT_TRUE(format.Font.Bold);
  }
}

TEST(HtmlClipboard, TheBridgeCarriesTextAndHtml) {
  TMemoryClipboard clipboard;
  EXPECT_FALSE(TryGetHtmlFromClipboard(clipboard) || TryGetTextFromClipboard(clipboard));
  ASSERT_TRUE(CopyTextAndHtmlToClipboard(clipboard, u"a\tb\r\n\U0001F600", u"<table><tr><td>a<td>\u00FC</table>"));
  EXPECT_EQ(TryGetTextFromClipboard(clipboard), u"a\tb\r\n\U0001F600");
  EXPECT_EQ(Shown(TryParseHtmlClipboard(*TryGetHtmlFromClipboard(clipboard))), "a|\u00FC;");
  const auto text = clipboard.Find(kClipboardText);
  ASSERT_EQ(text->size(), 16u);
  EXPECT_TRUE(text->at(0) == std::byte{'a'} && text->at(1) == std::byte{0} && text->back() == std::byte{0});
  EXPECT_EQ(clipboard.Find(kClipboardHtml)->back(), std::byte{0});

  // Another program's items: an odd byte at the end, no terminator; what stood before is gone.
  ASSERT_TRUE(clipboard.Replace(
      std::vector<TClipboardItem>{{std::string(kClipboardText), {std::byte{0xFC}, std::byte{0}, std::byte{'x'}}}}));
  EXPECT_EQ(TryGetTextFromClipboard(clipboard), u"\u00FC");
  EXPECT_EQ(TryGetHtmlFromClipboard(clipboard), std::nullopt);

  TBusyClipboard busy;
  EXPECT_FALSE(CopyTextAndHtmlToClipboard(busy, u"a", u"a"));
  EXPECT_FALSE(TryGetHtmlFromClipboard(busy) || TryGetTextFromClipboard(busy));
}
