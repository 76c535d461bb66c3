#include <tessarine/formula/library/detail/WebBodies.h>

#include <algorithm>
#include <utility>

#include <tessarine/core/values/DelimitedText.h>
#include <tessarine/formula/library/detail/HtmlExtraction.h>
#include <tessarine/formula/library/detail/Query.h>
#include <tessarine/formula/library/detail/WebReading.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

/// The arguments behind the address: [query], [as_table], or [as_table] alone.
struct TImportOptions {
  std::u16string Query;  // empty: none
  bool AsTable = false;
};

std::optional<TImportOptions> ReadImportOptions(TFormulaArgs AArgs, size_t AIndex) {
  TImportOptions options;
  size_t tableIndex = AIndex;
  if (!TryArgAsBool(AArgs, AIndex)) {
    options.Query = TrimmedArg(AArgs, AIndex);
    tableIndex = AIndex + 1;
  }
  if (!IsGiven(AArgs, tableIndex)) return options;
  const auto asTable = TryArgAsBool(AArgs, tableIndex);
  if (!asTable) return std::nullopt;
  options.AsTable = *asTable;
  return options;
}

/// The cells of a grid, or what a query makes of them, marked as the options have it.
TFormulaArg ImportGrid(THtmlGrid AGrid, const TImportOptions& AOptions) {
  TValueRows rows;
  rows.reserve(AGrid.Rows.size());
  for (auto& texts : AGrid.Rows) {
    auto& row = rows.emplace_back();
    for (TText& text : texts) row.push_back(TypedCell(std::move(text)));
  }
  TFormulaArg result = RectangleOf(std::move(rows));
  if (result.IsRange && !AOptions.Query.empty()) {
    const TFormulaArg args[] = {std::move(result), TFormulaArg::FromScalar(TextOf(AOptions.Query)),
                                TFormulaArg::FromScalar(TCellValue::FromNumber(1))};
    result = EvalQuery(args);
    AGrid.HeaderRows = 1;
  }
  if (!result.IsRange && result.Scalar.IsError()) return result;
  result.AsTable = AOptions.AsTable;
  result.AsTableHasHeader = AOptions.AsTable && AGrid.HeaderRows >= 1;
  return result;
}

/// Nothing in delimited text tells a header. A first row of texts, none empty, above another row is taken for one.
int32_t HeaderRowsOf(const std::vector<std::vector<TText>>& ARows) {
  if (ARows.size() < 2) return 0;
  const bool isHeader = std::all_of(ARows[0].begin(), ARows[0].end(), [](const TText& AText) {
    double number = 0;
    return !AText.IsEmpty() && !TextAsNumber(AText, number);
  });
  return isHeader ? 1 : 0;
}

}  // namespace

/// IMPORTHTML(url, kind, index, [query], [as_table])
TFormulaArg CallImportHtml(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (auto error = ErrorOfArgs(AArgs, 3)) return *error;
  const std::u16string url = TrimmedArg(AArgs, 0);
  const std::u16string kind = ToAsciiLower(TrimmedArg(AArgs, 1));
  const bool isTable = kind == u"table";
  int64_t index = 0;
  if (!IsWebUrl(url) || (!isTable && kind != u"list") || !ArgAsInt64(AArgs[2], index) || index < 1)
    return TFormulaArg::FromError(ceValue);
  const auto options = ReadImportOptions(AArgs, 3);
  if (!options) return TFormulaArg::FromError(ceValue);
  const auto page = FetchCached(AContext, url);
  if (!page) return TFormulaArg::FromError(ceValue);
  auto grid = isTable ? TryParseImportHtmlTable(*page, index) : TryParseImportHtmlList(*page, index);
  if (!grid) return TFormulaArg::FromError(ceNA);
  return ImportGrid(std::move(*grid), *options);
}

/// IMPORTDATA(url, [query], [as_table])
TFormulaArg CallImportData(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (auto error = ErrorOfArgs(AArgs, 1)) return *error;
  const std::u16string url = TrimmedArg(AArgs, 0);
  const auto options = ReadImportOptions(AArgs, 1);
  if (!IsWebUrl(url) || !options) return TFormulaArg::FromError(ceValue);
  const auto text = FetchCached(AContext, url);
  if (!text) return TFormulaArg::FromError(ceValue);
  auto rows = ParseDelimitedBody(*text, DetectTextDelimiter(*text));
  if (!rows || rows->empty()) return TFormulaArg::FromError(ceNA);
  const int32_t headerRows = HeaderRowsOf(*rows);
  return ImportGrid({std::move(*rows), headerRows}, *options);
}

}  // namespace tessarine::detail
