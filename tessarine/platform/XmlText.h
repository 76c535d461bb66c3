#pragma once

#include <string>
#include <string_view>

namespace tessarine {

/// Appends AText in UTF-8 to XML that is being built, as the content of an element: "&", "<", ">" and the double quote
/// are written as entities (in that order, so nothing is escaped twice). A lone surrogate becomes U+FFFD; units that
/// XML cannot carry at all are left out.
void AppendXmlText(std::u16string_view AText, std::string& AOut);
void AppendXmlText(std::string_view AText, std::string& AOut);

/// The same between double quotes: tab, line feed and carriage return are written as numbers, because a parser would
/// make blanks of them.
void AppendXmlAttribute(std::u16string_view AText, std::string& AOut);
void AppendXmlAttribute(std::string_view AText, std::string& AOut);

/// The content of an element with the escapes of UnescapeXlsxText for the units that XML cannot carry, for a carriage
/// return, which a parser would make a line feed, and for an underscore that would begin such an escape.
void AppendXlsxText(std::u16string_view AText, std::string& AOut);

/// The same between double quotes. Tab, line feed and carriage return are written as numbers there.
void AppendXlsxAttribute(std::u16string_view AText, std::string& AOut);

}  // namespace tessarine
