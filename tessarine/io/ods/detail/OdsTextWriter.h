#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace tessarine::detail {

/// A stretch of a cell's text in one text style ("TN"; 0 for none).
struct TOdsTextPiece {
  std::u16string_view Text;
  int32_t TextStyle = 0;
};

/// Appends a text as "text:p", one for each line (CR LF, LF or CR). Blanks that a parser would fold are "text:s", tabs
/// "text:tab". With AHref the text is a link. Characters that XML cannot carry are left out; returns how many.
size_t AppendOdsParagraphs(std::u16string_view AText, std::u16string_view AHref, std::string& AOut);
size_t AppendOdsParagraphs(std::span<const TOdsTextPiece> APieces, std::u16string_view AHref, std::string& AOut);

/// Whether paragraphs, read back with CR LF between them, give the text again.
bool OdsLineEndsComeBack(std::u16string_view AText);

}  // namespace tessarine::detail
