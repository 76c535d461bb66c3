#include <tessarine/core/html/detail/HtmlText.h>

#include <tessarine/core/html/Html.h>
#include <tessarine/core/html/detail/HtmlScan.h>

namespace tessarine::detail {

namespace {

bool IsFoldedBlank(char16_t AUnit) { return AUnit == u' ' || AUnit == u'\t' || AUnit == u'\r' || AUnit == u'\n'; }

void CutBlanks(std::u16string& AText) {
  while (!AText.empty() && AText.back() == u' ') AText.pop_back();
}

}  // namespace

std::u16string FoldHtmlText(std::u16string_view AText) {
  // Resolving entities drops line ends, which are to stay as blanks.
  std::u16string spaced(AText);
  for (char16_t& unit : spaced) unit = IsFoldedBlank(unit) ? u' ' : unit;
  const std::u16string text = HtmlUnescape(spaced);
  std::u16string out;
  out.reserve(text.size());
  for (const char16_t unit : text) {
    if (!IsFoldedBlank(unit)) {
      out += unit;
    } else if (out.empty() || out.back() != u' ') {
      out += u' ';
    }
  }
  return out;
}

std::u16string HtmlCellText(std::u16string_view AHtml) {
  std::u16string out;
  THtmlScanner html(AHtml, kHtmlUnreadable);
  for (auto piece = html.Next(); piece != hpEnd; piece = html.Next()) {
    if (piece == hpText) {
      std::u16string text = FoldHtmlText(html.Text());
      const bool isLineStart = out.empty() || out.back() == u' ' || out.back() == u'\n';
      if (isLineStart && text.starts_with(u' ')) text.erase(0, 1);
      out += text;
    } else if (html.NameIs(u"br") || (html.IsClosing() && html.NameIsAnyOf(kHtmlBlocks))) {
      CutBlanks(out);
      out += u'\n';
    }
  }
  CutBlanks(out);
  while (!out.empty() && out.back() == u'\n') out.pop_back();
  out.erase(0, out.find_first_not_of(u'\n'));
  return out;
}

}  // namespace tessarine::detail
