#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/formula/FunctionTable.h>
#include <tessarine/formula/library/detail/ExternalAnswers.h>
#include <tessarine/formula/library/detail/WebBodies.h>
#include <tessarine/formula/library/detail/WebReading.h>
#include <tessarine/platform/XPath.h>

namespace tessarine {

namespace {

using namespace detail;

constexpr size_t kMaxServiceText = 32767;

TCellValue EncodeUrl(TFormulaArgs AArgs, const TFormulaContext&) {
  if (const auto error = ErrorOfArgs(AArgs, 1)) return error->Scalar;
  const std::u16string text = TrimmedArg(AArgs, 0);
  if (text.size() > kMaxGeneratedText) return ValueError();
  const std::string encoded = PercentEncoded(text);
  return encoded.size() > kMaxGeneratedText ? ValueError() : TextOf(TText::FromUtf8(encoded));
}

TFormulaArg WebService(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (auto error = ErrorOfArgs(AArgs, 1)) return *error;
  const std::u16string url = TrimmedArg(AArgs, 0);
  if (!IsWebUrl(url)) return TFormulaArg::FromError(ceValue);
  const auto text = FetchCached(AContext, url, kMaxServiceText);
  return text ? TFormulaArg::FromScalar(TextOf(*text)) : TFormulaArg::FromError(ceValue);
}

/// The texts that an expression selects from a document, each made a value by AMake.
TFormulaArg SelectTexts(std::u16string_view AXml, std::u16string_view AXPath, TCellValue (*AMake)(TText AText)) {
  const auto document = TXPathDocument::TryLoad(AXml);
  if (!document) return TFormulaArg::FromError(ceValue);
  const TXPathSelection selection = document->Select(AXPath, {.MaxNodes = static_cast<size_t>(kMaxGeneratedCells)});
  if (selection.Outcome != xoDone || selection.Texts.empty()) return TFormulaArg::FromError(ceValue);
  std::vector<TCellValue> values;
  values.reserve(selection.Texts.size());
  for (const std::u16string& text : selection.Texts) values.push_back(AMake(TText(text)));
  return ColumnOf(std::move(values));
}

TFormulaArg FilterXml(TFormulaArgs AArgs, const TFormulaContext&) {
  if (auto error = ErrorOfArgs(AArgs, 2)) return *error;
  const std::u16string xml = TrimmedArg(AArgs, 0);
  const std::u16string xpath = TrimmedArg(AArgs, 1);
  if (xml.empty() || xpath.empty()) return TFormulaArg::FromError(ceValue);
  return SelectTexts(xml, xpath, TextOf);
}

TFormulaArg ImportXml(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (auto error = ErrorOfArgs(AArgs, 2)) return *error;
  const std::u16string url = TrimmedArg(AArgs, 0);
  const std::u16string xpath = TrimmedArg(AArgs, 1);
  if (!IsWebUrl(url) || xpath.empty()) return TFormulaArg::FromError(ceValue);
  const auto text = FetchCached(AContext, url);
  return text ? SelectTexts(*text, xpath, TypedCell) : TFormulaArg::FromError(ceValue);
}

TFormulaArg ImportRange(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (auto error = ErrorOfArgs(AArgs, 2)) return *error;
  const TText url(TrimmedArg(AArgs, 0));
  const TText range(TrimmedArg(AArgs, 1));
  if (url.IsEmpty() || range.IsEmpty()) return TFormulaArg::FromError(ceValue);
  const auto provider = AContext.Workbook ? AContext.Workbook->ImportRangeProvider : nullptr;
  TProviderBlock block;
  if (!provider || !AskProvider([&] { return provider->ImportRange(url, range, block); }))
    return TFormulaArg::FromError(ceNA);
  return BlockOf(std::move(block));
}

/// A provider's text as a cell's value.
TFormulaArg GeneratedText(TText AText) {
  return TFormulaArg::FromScalar(AText.Length() > kMaxGeneratedText ? ValueError() : TextOf(std::move(AText)));
}

TFormulaArg Translate(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (auto error = ErrorOfArgs(AArgs, 1)) return *error;
  const TText text(TrimmedArg(AArgs, 0));
  TText source(TrimmedArg(AArgs, 1));
  TText target(TrimmedArg(AArgs, 2));
  if (source.IsEmpty()) source = u"auto";
  if (target.IsEmpty()) target = u"en";
  const auto provider = AContext.Workbook ? AContext.Workbook->TranslateProvider : nullptr;
  TText result;
  if (!provider || !AskProvider([&] { return provider->Translate(text, source, target, result); }))
    return TFormulaArg::FromError(ceNA);
  return GeneratedText(std::move(result));
}

TFormulaArg DetectLanguage(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (auto error = ErrorOfArgs(AArgs, 1)) return *error;
  const TText text(TrimmedArg(AArgs, 0));
  const auto provider = AContext.Workbook ? AContext.Workbook->TranslateProvider : nullptr;
  TText language;
  if (!provider || !AskProvider([&] { return provider->DetectLanguage(text, language); }))
    return TFormulaArg::FromError(ceNA);
  return GeneratedText(std::move(language));
}

constexpr TFunctionDef kWeb[] = {
    {.Name = u"DETECTLANGUAGE",
     .MinArgs = 1,
     .MaxArgs = 1,
     .Tier = ftrExtra,
     .Body = AskOnceForValue<DetectLanguage>,
     .Arguments = u"text",
     .Description = u"The language of a text, as the host's translator tells it."},
    {.Name = u"ENCODEURL",
     .MinArgs = 1,
     .MaxArgs = 1,
     .Tier = ftrExtra,
     .Body = EncodeUrl,
     .Arguments = u"text",
     .Description = u"A text with escapes in place of what a web address cannot hold."},
    {.Name = u"FILTERXML",
     .MinArgs = 2,
     .MaxArgs = 2,
     .Tier = ftrArray,
     .ArrayBody = FilterXml,
     .ArrayMinArgs = 2,
     .Arguments = u"xml, xpath",
     .Description = u"The texts that an XPath expression selects from XML."},
    {.Name = u"GOOGLEFINANCE",
     .MinArgs = 1,
     .MaxArgs = 5,
     .Tier = ftrArray,
     .ArrayBody = AskOnce<CallGoogleFinance>,
     .ArrayMinArgs = 1,
     .Arguments = u"ticker, [attribute], [start], [end], [interval]",
     .Description = u"A security's present value, or its values over days."},
    {.Name = u"IMPORTDATA",
     .MinArgs = 1,
     .Tier = ftrArray,
     .ArrayBody = AskOnce<CallImportData>,
     .ArrayMinArgs = 1,
     .Arguments = u"url, [query], [as_table]",
     .Description = u"The fields of a delimited text on the web."},
    {.Name = u"IMPORTFEED",
     .MinArgs = 1,
     .MaxArgs = 4,
     .Tier = ftrArray,
     .ArrayBody = AskOnce<CallImportFeed>,
     .ArrayMinArgs = 1,
     .Arguments = u"url, [query], [headers], [num_items]",
     .Description = u"The entries of a news feed, or its title and address."},
    {.Name = u"IMPORTHTML",
     .MinArgs = 3,
     .Tier = ftrArray,
     .ArrayBody = AskOnce<CallImportHtml>,
     .ArrayMinArgs = 3,
     .Arguments = u"url, kind, index, [query], [as_table]",
     .Description = u"A table or a list of a web page."},
    {.Name = u"IMPORTRANGE",
     .MinArgs = 2,
     .MaxArgs = 2,
     .Tier = ftrArray,
     .ArrayBody = AskOnce<ImportRange>,
     .ArrayMinArgs = 2,
     .Arguments = u"url, range",
     .Description = u"A range of another document, as the host provides it."},
    {.Name = u"IMPORTXML",
     .MinArgs = 2,
     .Tier = ftrArray,
     .ArrayBody = AskOnce<ImportXml>,
     .ArrayMinArgs = 2,
     .Arguments = u"url, xpath",
     .Description = u"What an XPath expression selects from XML on the web."},
    {.Name = u"STOCKHISTORY",
     .MinArgs = 2,
     .Tier = ftrArray,
     .ArrayBody = AskOnce<CallStockHistory>,
     .ArrayMinArgs = 2,
     .Arguments = u"stock, start, [end], [interval], [headers], [property], ...",
     .Description = u"The history of a security by days, weeks or months."},
    {.Name = u"TRANSLATE",
     .Spellings = u"GOOGLETRANSLATE",
     .MinArgs = 1,
     .MaxArgs = 3,
     .Tier = ftrExtra,
     .Body = AskOnceForValue<Translate>,
     .Arguments = u"text, [source], [target]",
     .Description = u"A text in another language, as the host's translator has it."},
    {.Name = u"WEBSERVICE",
     .MinArgs = 1,
     .MaxArgs = 1,
     .Tier = ftrExtra,
     .Body = AskOnceForValue<WebService>,
     .Arguments = u"url",
     .Description = u"The text at a web address."},
};

}  // namespace

std::span<const TFunctionDef> WebFunctions() { return kWeb; }

}  // namespace tessarine
