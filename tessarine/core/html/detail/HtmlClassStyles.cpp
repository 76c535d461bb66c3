#include <tessarine/core/html/detail/HtmlClassStyles.h>

#include <algorithm>

#include <tessarine/core/html/Html.h>
#include <tessarine/core/html/detail/HtmlScan.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

constexpr size_t kMaxStyleTexts = size_t{1} << 24;

}  // namespace

THtmlClassStyles::THtmlClassStyles(std::u16string_view ADocument) {
  THtmlScanner html(ADocument, {});
  for (auto piece = html.Next(); piece != hpEnd; piece = html.Next()) {
    if (piece != hpTag || !html.IsOpening() || !html.NameIs(u"style")) continue;
    // What the block holds may look like tags and comments, so it is found by its end alone.
    const size_t begin = html.End();
    size_t end = ADocument.find(u"</", begin);
    while (end < ADocument.size() && !EqualAsciiNoCase(ADocument.substr(end + 2, 5), u"style"))
      end = ADocument.find(u"</", end + 2);
    end = std::min(end, ADocument.size());
    ReadRules(ADocument.substr(begin, end - begin));
    html.GoOnAt(end);
  }
}

void THtmlClassStyles::ReadRules(std::u16string_view ACss) {
  while (true) {
    const size_t open = ACss.find(u'{');
    if (open == std::u16string_view::npos) return;
    std::u16string_view heads = ACss.substr(0, open);
    ACss.remove_prefix(open + 1);
    const std::u16string_view body = ACss.substr(0, ACss.find(u'}'));
    ACss.remove_prefix(std::min(body.size() + 1, ACss.size()));
    if (const size_t comment = heads.rfind(u"<!--"); comment != std::u16string_view::npos)
      heads.remove_prefix(comment + 4);
    if (const size_t comment = heads.rfind(u"*/"); comment != std::u16string_view::npos)
      heads.remove_prefix(comment + 2);
    AddRule(heads, TText(TrimSpaces(body)));
  }
}

void THtmlClassStyles::AddRule(std::u16string_view AHeads, const TText& AStyle) {
  while (!AHeads.empty()) {
    const std::u16string_view part = AHeads.substr(0, AHeads.find(u','));
    AHeads.remove_prefix(std::min(part.size() + 1, AHeads.size()));
    const std::u16string_view head = TrimSpaces(part);
    if (head.size() > 1 && head[0] == u'.') FStyles[ToAsciiLower(head.substr(1))] = AStyle;
  }
}

TText THtmlClassStyles::StyleOf(const THtmlScanner& ATag) {
  const std::u16string own = HtmlUnescape(ATag.Attribute(u"style"));
  std::u16string style;
  for (std::u16string_view rest = TrimSpaces(ATag.Attribute(u"class")); !rest.empty(); rest = TrimSpaces(rest)) {
    const std::u16string_view name = rest.substr(0, rest.find_first_of(u" \t\r\n"));
    rest.remove_prefix(name.size());
    const auto rule = FStyles.find(ToAsciiLower(name));
    if (rule == FStyles.end() || rule->second.IsEmpty()) continue;
    if (style.empty() && rest.empty() && own.empty()) return rule->second;  // shared by the cells of a class
    if (FStyleTexts + style.size() + rule->second.Length() + 1 > kMaxStyleTexts) break;
    style += rule->second.View();
    if (!style.ends_with(u';')) style += u';';
  }
  FStyleTexts += style.size();
  return TText(style + own);
}

}  // namespace tessarine::detail
