#pragma once

#include <string>
#include <string_view>

/// Reading of HTML as bare text.
namespace tessarine::detail {

inline constexpr std::u16string_view kHtmlBlocks[] = {u"p",  u"div", u"li", u"tr",         u"h1",
                                                      u"h2", u"h3",  u"h4", u"blockquote", u"pre"};

/// Text as it stands between tags: entities resolved, blanks, tabs and line ends folded to one blank.
std::u16string FoldHtmlText(std::u16string_view AText);

/// The text of a table's cell: a line end for each "br" and each block that ends, without blanks around lines and
/// without empty lines at both ends.
std::u16string HtmlCellText(std::u16string_view AHtml);

}  // namespace tessarine::detail
