#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include <tessarine/core/html/Html.h>
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

void CheckTables(std::u16string_view AHtml) {
  const auto rows = TryParseHtmlTable(AHtml);
  if (!rows) return;
  Require(!rows->empty());
  for (const auto& row : *rows) {
    Require(!row.empty());
    for (const THtmlPastedCell& cell : row) Require(cell.HasRichText == RichTextHasFormatting(cell.Runs, {}));
  }
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
  CheckTables(text);
  CheckExtraction(text);
  Require((CssColorToARGB(text) & kOpaqueBlack) == kOpaqueBlack);
  TCellFontInfo font;
  ApplyCssToFont(text, font);
  Require(HtmlUnescape(text).size() <= text.size());
  // Escaping is undone but for line ends, which become tags and vanish.
  std::u16string flat = text;
  std::erase_if(flat, [](char16_t AUnit) { return AUnit == u'\n' || AUnit == u'\r'; });
  Require(HtmlUnescape(HtmlEscape(flat)) == flat);
  return 0;
}
