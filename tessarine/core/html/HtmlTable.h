#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/sheet/Cell.h>

namespace tessarine {

/// A cell that was read from HTML.
struct THtmlPastedCell {
  TText Text;                // plain, without blanks at both ends; "br" and the ends of blocks are line feeds
  TText Style;               // CSS of its classes, then of its style attribute
  TRichTextRuns Runs;        // what HtmlToRichText gives
  bool HasRichText = false;  // Runs has another font than the default one
  bool IsHeader = false;     // a "th"
};

/// Rows of cells; they may differ in length, and none is empty.
using THtmlPastedCells = std::vector<std::vector<THtmlPastedCell>>;

/// The cells of the first table, or of the whole text when the tag of a table is missing; nothing without a cell. Rows
/// begin at "tr" and cells at "td" and "th"; a cell ends with its tag, or where the next one begins. The rows of a
/// table inside a cell count as rows of the table around it. Classes get their style from the document's "style"
/// blocks, in which rules whose heads are names of classes (".a") are read. Styles beyond 16 million units together,
/// which only a hostile text has, are left out. Takes time in proportion to the text.
TESSARINE_API std::optional<THtmlPastedCells> TryParseHtmlTable(std::u16string_view AHtml);

/// One row of a single cell for each block (paragraph, division, list item, heading, table row), which may be empty,
/// and for each text between blocks; nothing for a text without either. A block that holds blocks is no row but for
/// the text of its own. Style and the font of the runs are those of the block's tag. Linear as above.
TESSARINE_API std::optional<THtmlPastedCells> TryParseHtmlBlocks(std::u16string_view AHtml);

/// What a clipboard's HTML, with its header or without, pastes: the cells of the table in its fragment
/// (ExtractHtmlFragment), else its blocks. Classes have the styles of the whole document.
TESSARINE_API std::optional<THtmlPastedCells> TryParseHtmlClipboard(std::u16string_view AHtml);

}  // namespace tessarine
