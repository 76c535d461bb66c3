#include <gtest/gtest.h>

#include <algorithm>

#include <tessarine/core/html/Clipboard.h>
#include <tessarine/core/html/Html.h>
#include <tessarine/core/html/HtmlClipboard.h>
#include <tessarine/core/html/HtmlTable.h>
#include <tessarine/platform/Unicode.h>

#include "../support/CaseTable.h"

using namespace tessarine;
using test::ExpectCases;
using test::TCase;

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

TEST(HtmlClipboard, ExamplesHold) {
  const auto fragment = [](const TCase& ACase) {
    const std::u16string html = ACase.Text(1);
    return std::u16string(ExtractHtmlFragment(html));
  };
  const auto pasted = [](const TCase& ACase) {
    const std::string html =
        "Version:0.9\r\n<html><style>.x{color:red}</style><p>before</p><table><!--StartFragment-->" + ACase[1] +
        "<!--EndFragment--></table><p>behind</p>";
    return Shown(TryParseHtmlClipboard(Utf8ToUtf16(html)));
  };
  const auto fill = [](const TCase& ACase) {
    TCellFormat format;
    format.Fill = TCellFillInfo::Gradient({}, {}, 45);
    ApplyCssToFormat(ACase.Text(1) + u";font-weight:bold", format);
    EXPECT_TRUE(format.Font.Bold) << ACase.Place();
    if (format.Fill == TCellFillInfo::Gradient({}, {}, 45)) return std::string("as it was");
    EXPECT_EQ(format.Fill, TCellFillInfo::Solid(format.Fill.ForegroundColor)) << ACase.Place();
    return test::ShownColor(format.Fill.ForegroundColor.ARGB);
  };
  ExpectCases("core/html_clipboard.tsv", {{"fragment", fragment}, {"pasted", pasted}, {"fill", fill}});
  EXPECT_EQ(Shown(TryParseHtmlClipboard(u"x<tr><td>1</td></tr>")), "1;");
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
