#include <tessarine/formula/library/detail/HtmlExtraction.h>

#include <algorithm>
#include <span>

#include <tessarine/core/html/HtmlRichText.h>
#include <tessarine/core/html/HtmlTable.h>
#include <tessarine/core/html/detail/HtmlScan.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

constexpr std::u16string_view kTableTags[] = {u"table"};
constexpr std::u16string_view kListTags[] = {u"ul", u"ol"};

std::optional<std::u16string_view> NthElement(std::u16string_view AHtml, int64_t AIndex,
                                              std::span<const std::u16string_view> ANames) {
  THtmlScanner html(AHtml, kHtmlForeign);
  int64_t count = 0;
  int64_t depth = 0;
  size_t begin = 0;
  std::u16string_view name;  // of the element, once it is found
  for (auto piece = html.Next(); piece != hpEnd; piece = html.Next()) {
    if (piece != hpTag || html.IsSelfClosing()) continue;
    if (depth > 0) {
      if (!html.NameIs(name)) continue;
      depth += html.IsClosing() ? -1 : 1;
      if (depth == 0) return AHtml.substr(begin, html.End() - begin);
    } else if (!html.IsClosing() && html.NameIsAnyOf(ANames) && ++count == AIndex) {
      begin = html.Begin();
      name = html.Name();
      depth = 1;
    }
  }
  if (depth == 0) return std::nullopt;
  return AHtml.substr(begin);
}

/// Collects the items of a list; items of lists inside of it are part of the item around them.
class TListReader {
 public:
  explicit TListReader(std::u16string_view AList) : FList(AList) {}

  std::vector<std::vector<TText>> Read() {
    THtmlScanner html(FList, kHtmlForeign);
    int64_t depth = 0;
    for (auto piece = html.Next(); piece != hpEnd; piece = html.Next()) {
      if (piece != hpTag || html.IsSelfClosing()) continue;
      if (html.NameIsAnyOf(kListTags)) {
        depth += html.IsClosing() ? -1 : 1;
        if (depth == 0) EndItem(html.Begin());
      } else if (depth == 1 && html.NameIs(u"li")) {
        EndItem(html.Begin());
        if (!html.IsClosing()) FBegin = html.End();
      }
    }
    EndItem(FList.size());
    return std::move(FRows);
  }

 private:
  void EndItem(size_t AEnd) {
    if (!FBegin) return;
    const std::u16string text = HtmlToPlain(FList.substr(*FBegin, AEnd - *FBegin));
    FRows.push_back({TText(TrimSpaces(text))});
    FBegin.reset();
  }

  std::u16string_view FList;
  std::optional<size_t> FBegin;  // of the content of the open item
  std::vector<std::vector<TText>> FRows;
};

bool IsHeaderRow(const std::vector<THtmlPastedCell>& ARow) {
  return std::all_of(ARow.begin(), ARow.end(), [](const THtmlPastedCell& ACell) { return ACell.IsHeader; });
}

}  // namespace

std::optional<std::u16string_view> TryExtractNthHtmlTable(std::u16string_view AHtml, int64_t AIndex) {
  return NthElement(AHtml, AIndex, kTableTags);
}

std::optional<std::u16string_view> TryExtractNthHtmlList(std::u16string_view AHtml, int64_t AIndex) {
  return NthElement(AHtml, AIndex, kListTags);
}

std::optional<THtmlGrid> TryParseImportHtmlTable(std::u16string_view AHtml, int64_t AIndex) {
  const auto table = TryExtractNthHtmlTable(AHtml, AIndex);
  if (!table) return std::nullopt;
  const auto rows = TryParseHtmlTable(*table);
  if (!rows) return std::nullopt;
  THtmlGrid grid;
  const auto firstBody = std::find_if_not(rows->begin(), rows->end(), IsHeaderRow);
  grid.HeaderRows = static_cast<int32_t>(firstBody - rows->begin());
  for (const auto& row : *rows) {
    auto& texts = grid.Rows.emplace_back();
    for (const THtmlPastedCell& cell : row) texts.push_back(cell.Text);
  }
  return grid;
}

std::optional<THtmlGrid> TryParseImportHtmlList(std::u16string_view AHtml, int64_t AIndex) {
  const auto list = TryExtractNthHtmlList(AHtml, AIndex);
  if (!list) return std::nullopt;
  THtmlGrid grid{TListReader(*list).Read(), 0};
  if (grid.Rows.empty()) return std::nullopt;
  return grid;
}

}  // namespace tessarine::detail
