#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include <tessarine/core/html/Clipboard.h>
#include <tessarine/core/html/Html.h>
#include <tessarine/core/html/HtmlClipboard.h>
#include <tessarine/core/html/HtmlRichText.h>
#include <tessarine/core/html/HtmlTable.h>
#include <tessarine/formula/library/detail/HtmlExtraction.h>
#include <tessarine/platform/Unicode.h>

using namespace tessarine;

namespace {

void Require(bool AHolds) {
  if (!AHolds) std::abort();
}

void CheckRuns(std::u16string_view AHtml) {
  const TRichTextRuns runs = HtmlToRichText(AHtml);
  for (size_t i = 0; i < runs.size(); ++i) {
    Require(!runs[i].Text.IsEmpty());
    Require(i == 0 || !(runs[i].Font == runs[i - 1].Font));
  }
  const std::u16string plain = RichTextToPlain(runs);
  Require(plain.size() <= AHtml.size() && plain == HtmlToPlain(AHtml));
  static_cast<void>(RichTextToHtml(runs));
}

void CheckRows(const std::optional<THtmlPastedCells>& ARows) {
  if (!ARows) return;
  Require(!ARows->empty());
  for (const auto& row : *ARows) {
    Require(!row.empty());
    for (const THtmlPastedCell& cell : row) Require(cell.HasRichText == RichTextHasFormatting(cell.Runs, {}));
  }
}

/// A fragment comes back from the clipboard by its comments, and by the header's offsets when these are not known.
void CheckClipboard(std::u16string_view AHtml) {
  const std::u16string_view found = ExtractHtmlFragment(AHtml);
  Require(found.empty() ||
          (found.data() >= AHtml.data() && found.data() + found.size() <= AHtml.data() + AHtml.size()));
  TMemoryClipboard clipboard;
  Require(CopyTextAndHtmlToClipboard(clipboard, AHtml, AHtml));
  std::u16string fragment(AHtml);
  const std::u16string_view text = AHtml.substr(0, AHtml.find(u'\0'));
  Require(TryGetTextFromClipboard(clipboard) == text);
  std::erase(fragment, u'\0');
  std::u16string html = *TryGetHtmlFromClipboard(clipboard);
  if (fragment.find(u"Fragment-->") != std::u16string::npos) return;
  Require(ExtractHtmlFragment(html) == fragment);
  html[html.find(u"<!--EndFragment", html.size() - 40) + 4] = u'x';
  if (!fragment.empty()) Require(ExtractHtmlFragment(html) == fragment);
}

void CheckExtraction(std::u16string_view AHtml) {
  for (int64_t index = 1; index <= 3; ++index) {
    const auto table = detail::TryExtractNthHtmlTable(AHtml, index);
    Require(!table || (EqualAsciiNoCase(table->substr(0, 6), u"<table") && table->size() <= AHtml.size()));
    static_cast<void>(detail::TryParseImportHtmlTable(AHtml, index));
    const auto list = detail::TryParseImportHtmlList(AHtml, index);
    Require(!list || !list->Rows.empty());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  const std::u16string text = Utf8ToUtf16({reinterpret_cast<const char*>(AData), ASize});
  CheckRuns(text);
  CheckRows(TryParseHtmlTable(text));
  CheckRows(TryParseHtmlBlocks(text));
  CheckRows(TryParseHtmlClipboard(text));
  CheckClipboard(text);
  CheckExtraction(text);
  Require((CssColorToARGB(text) & kOpaqueBlack) == kOpaqueBlack);
  TCellFontInfo font;
  ApplyCssToFont(text, font);
  TCellFormat format;
  ApplyCssToFormat(text, format);
  Require(format.Font == font);
  Require(HtmlUnescape(text).size() <= text.size());
  // Escaping is undone but for line ends, which become tags and vanish.
  std::u16string flat = text;
  std::erase_if(flat, [](char16_t AUnit) { return AUnit == u'\n' || AUnit == u'\r'; });
  Require(HtmlUnescape(HtmlEscape(flat)) == flat);
  return 0;
}
