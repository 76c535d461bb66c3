#include <tessarine/core/html/HtmlTable.h>

#include <utility>

#include <tessarine/core/html/HtmlClipboard.h>
#include <tessarine/core/html/HtmlRichText.h>
#include <tessarine/core/html/detail/HtmlClassStyles.h>
#include <tessarine/core/html/detail/HtmlScan.h>
#include <tessarine/core/html/detail/HtmlText.h>

namespace tessarine {

namespace {

using detail::THtmlClassStyles;
using detail::THtmlScanner;

constexpr std::u16string_view kCellTags[] = {u"td", u"th"};
/// What makes rows where there is no table.
constexpr std::u16string_view kRowTags[] = {u"p", u"div", u"li", u"h1", u"h2", u"h3", u"h4", u"tr"};

void FillCell(std::u16string_view AContent, THtmlPastedCell& ACell) {
  ACell.Text = TText(detail::HtmlCellText(AContent));
  ACell.Runs = HtmlToRichText(AContent);
  ACell.HasRichText = RichTextHasFormatting(ACell.Runs, {});
}

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
  TTableReader(std::u16string_view AHtml, THtmlClassStyles& AStyles) : FTable(FirstTable(AHtml)), FStyles(AStyles) {}

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
    cell.Style = FStyles.StyleOf(ATag);
    FContentBegin = ATag.End();
    FIsInCell = true;
  }

  void EndCell(size_t AEnd) {
    if (!std::exchange(FIsInCell, false)) return;
    FillCell(FTable.substr(FContentBegin, AEnd - FContentBegin), FRows.back().back());
  }

  std::u16string_view FTable;
  THtmlClassStyles& FStyles;
  THtmlPastedCells FRows;
  size_t FContentBegin = 0;
  bool FIsInRow = false;
  bool FIsNewRow = false;
  bool FIsInCell = false;
};

/// Cuts a text at the tags of its blocks. A block that ends right behind another one holds nothing of its own.
class TBlockReader {
 public:
  TBlockReader(std::u16string_view AHtml, THtmlClassStyles& AStyles) : FHtml(AHtml), FStyles(AStyles) {}

  THtmlPastedCells Read() {
    THtmlScanner html(FHtml, detail::kHtmlUnreadable);
    for (auto piece = html.Next(); piece != detail::hpEnd; piece = html.Next()) {
      if (piece != detail::hpTag || html.IsSelfClosing() || !html.NameIsAnyOf(kRowTags)) continue;
      EndPart(html.Begin(), html.IsClosing() && FIsInBlock);
      FIsInBlock = !html.IsClosing();
      FStyle = FIsInBlock ? FStyles.StyleOf(html) : TText();
      FBegin = FIsInBlock ? html.Begin() : html.End();  // the block's own tag makes its font
    }
    EndPart(FHtml.size(), false);
    return std::move(FRows);
  }

 private:
  void EndPart(size_t AEnd, bool AMayBeEmpty) {
    THtmlPastedCell cell;
    FillCell(FHtml.substr(FBegin, AEnd - FBegin), cell);
    if (cell.Text.IsEmpty() && !AMayBeEmpty) return;
    cell.Style = std::move(FStyle);
    FRows.emplace_back().push_back(std::move(cell));
  }

  std::u16string_view FHtml;
  THtmlClassStyles& FStyles;
  THtmlPastedCells FRows;
  TText FStyle;
  size_t FBegin = 0;
  bool FIsInBlock = false;
};

std::optional<THtmlPastedCells> AnyRows(THtmlPastedCells ARows) {
  if (ARows.empty()) return std::nullopt;
  return ARows;
}

}  // namespace

std::optional<THtmlPastedCells> TryParseHtmlTable(std::u16string_view AHtml) {
  THtmlClassStyles styles(AHtml);
  return AnyRows(TTableReader(AHtml, styles).Read());
}

std::optional<THtmlPastedCells> TryParseHtmlBlocks(std::u16string_view AHtml) {
  THtmlClassStyles styles(AHtml);
  return AnyRows(TBlockReader(AHtml, styles).Read());
}

std::optional<THtmlPastedCells> TryParseHtmlClipboard(std::u16string_view AHtml) {
  THtmlClassStyles styles(AHtml);
  const std::u16string_view fragment = ExtractHtmlFragment(AHtml);
  if (auto rows = AnyRows(TTableReader(fragment, styles).Read())) return rows;
  return AnyRows(TBlockReader(fragment, styles).Read());
}

}  // namespace tessarine
