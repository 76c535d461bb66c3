#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include <tessarine/core/values/Text.h>

/// Tables and lists of pages.
namespace tessarine::detail {

/// The n-th element (1-based, in the order of the document, inner ones counted) of one of some names, from its tag to
/// its end; to the end of the page when it has none. Nothing when there are fewer.
std::optional<std::u16string_view> TryExtractNthHtmlTable(std::u16string_view AHtml, int64_t AIndex);
/// The same for lists, numbered and not.
std::optional<std::u16string_view> TryExtractNthHtmlList(std::u16string_view AHtml, int64_t AIndex);

/// The texts of a table's or list's cells. Rows may differ in length.
struct THtmlGrid {
  std::vector<std::vector<TText>> Rows;
  int32_t HeaderRows = 0;  // at the top, of nothing but header cells
};

/// The n-th table or list of a page; nothing when there is none or it has no cell or item.
std::optional<THtmlGrid> TryParseImportHtmlTable(std::u16string_view AHtml, int64_t AIndex);
std::optional<THtmlGrid> TryParseImportHtmlList(std::u16string_view AHtml, int64_t AIndex);

}  // namespace tessarine::detail
