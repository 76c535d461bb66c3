#include <tessarine/core/html/HtmlTable.h>

#include <algorithm>
#include <string>
#include <unordered_map>
#include <utility>

#include <tessarine/core/html/Html.h>
#include <tessarine/core/html/HtmlRichText.h>
#include <tessarine/core/html/detail/HtmlScan.h>
#include <tessarine/core/html/detail/HtmlText.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

using detail::THtmlScanner;

// Every cell may repeat the style of its class, so that the styles together could outgrow the text by far.
constexpr size_t kMaxStyleTexts = size_t{1} << 24;

constexpr std::u16string_view kCellTags[] = {u"td", u"th"};

/// The style texts of classes, by names in lower case, from all "style" blocks of a document.
class TClassStyles {
 public:
  explicit TClassStyles(std::u16string_view AHtml) {
    THtmlScanner html(AHtml, {});
    for (auto piece = html.Next(); piece != detail::hpEnd; piece = html.Next()) {
      if (piece != detail::hpTag || !html.IsOpening() || !html.NameIs(u"style")) continue;
      // What the block holds may look like tags and comments, so it is found by its end alone.
      const size_t begin = html.End();
      size_t end = AHtml.find(u"</", begin);
      while (end < AHtml.size() && !EqualAsciiNoCase(AHtml.substr(end + 2, 5), u"style"))
        end = AHtml.find(u"</", end + 2);
      end = std::min(end, AHtml.size());
      ReadRules(AHtml.substr(begin, end - begin));
      html.GoOnAt(end);
    }
  }

  /// Null for a class without style.
  const TText* Find(std::u16string_view AClass) const {
    const auto found = FStyles.find(ToAsciiLower(AClass));
    return found == FStyles.end() ? nullptr : &found->second;
  }

 private:
  void ReadRules(std::u16string_view ACss) {
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

  void AddRule(std::u16string_view AHeads, const TText& AStyle) {
    while (!AHeads.empty()) {
      const std::u16string_view part = AHeads.substr(0, AHeads.find(u','));
      AHeads.remove_prefix(std::min(part.size() + 1, AHeads.size()));
      const std::u16string_view head = TrimSpaces(part);
      if (head.size() > 1 && head[0] == u'.') FStyles[ToAsciiLower(head.substr(1))] = AStyle;
    }
  }

  std::unordered_map<std::u16string, TText> FStyles;
};

/// Where the first table lies: from its tag to its end, tables inside of it being balanced.
std::u16string_view FirstTable(std::u16string_view AHtml) {
  THtmlScanner html(AHtml, detail::kHtmlForeign);
  size_t begin = 0;
  size_t depth = 0;
  for (auto piece = html.Next(); piece != detail::hpEnd; piece = html.Next()) {
    if (piece != detail::hpTag || html.IsSelfClosing() || !html.NameIs(u"table")) continue;
    if (!html.IsClosing()) {
      if (depth++ == 0) begin = html.Begin();
    } else if (depth > 0 && --depth == 0) {
      return AHtml.substr(begin, html.End() - begin);
    }
  }
  return AHtml.substr(depth > 0 ? begin : 0);
}

class TTableReader {
 public:
  explicit TTableReader(std::u16string_view AHtml) : FTable(FirstTable(AHtml)), FStyles(AHtml) {}

  THtmlPastedCells Read() {
    THtmlScanner html(FTable, detail::kHtmlForeign);
    for (auto piece = html.Next(); piece != detail::hpEnd; piece = html.Next()) {
      if (piece != detail::hpTag) continue;
      const bool isCell = html.NameIsAnyOf(kCellTags);
      const bool isRow = html.NameIs(u"tr");
      if (isCell || isRow) EndCell(html.Begin());
      if (html.IsClosing()) continue;
      if (isRow) FIsInRow = FIsNewRow = true;
      if (isCell && FIsInRow) BeginCell(html);
    }
    EndCell(FTable.size());
    return std::move(FRows);
  }

 private:
  void BeginCell(const THtmlScanner& ATag) {
    if (FIsNewRow) FRows.emplace_back();
    FIsNewRow = false;
    THtmlPastedCell& cell = FRows.back().emplace_back();
    cell.IsHeader = ATag.NameIs(u"th");
    cell.Style = StyleOf(ATag.Attribute(u"class"), ATag.Attribute(u"style"));
    FContentBegin = ATag.End();
    FIsInCell = true;
  }

  void EndCell(size_t AEnd) {
    if (!std::exchange(FIsInCell, false)) return;
    const std::u16string_view content = FTable.substr(FContentBegin, AEnd - FContentBegin);
    THtmlPastedCell& cell = FRows.back().back();
    cell.Text = TText(detail::HtmlCellText(content));
    cell.Runs = HtmlToRichText(content);
    cell.HasRichText = RichTextHasFormatting(cell.Runs, {});
  }

  TText StyleOf(std::u16string_view AClasses, std::u16string_view AInline) {
    const std::u16string own = HtmlUnescape(AInline);
    std::u16string style;
    for (std::u16string_view rest = TrimSpaces(AClasses); !rest.empty(); rest = TrimSpaces(rest)) {
      const std::u16string_view name = rest.substr(0, rest.find_first_of(u" \t\r\n"));
      rest.remove_prefix(name.size());
      const TText* rule = FStyles.Find(name);
      if (!rule || rule->IsEmpty()) continue;
      if (style.empty() && rest.empty() && own.empty()) return *rule;  // shared by the cells of a class
      if (FStyleTexts + style.size() + rule->Length() + 1 > kMaxStyleTexts) break;
      style += rule->View();
      if (!style.ends_with(u';')) style += u';';
    }
    FStyleTexts += style.size();
    return TText(style + own);
  }

  std::u16string_view FTable;
  TClassStyles FStyles;
  THtmlPastedCells FRows;
  size_t FStyleTexts = 0;
  size_t FContentBegin = 0;
  bool FIsInRow = false;
  bool FIsNewRow = false;
  bool FIsInCell = false;
};

}  // namespace

std::optional<THtmlPastedCells> TryParseHtmlTable(std::u16string_view AHtml) {
  THtmlPastedCells rows = TTableReader(AHtml).Read();
  if (rows.empty()) return std::nullopt;
  return rows;
}

}  // namespace tessarine
