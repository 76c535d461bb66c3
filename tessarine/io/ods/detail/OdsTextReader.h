#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/core/sheet/Cell.h>

namespace tessarine {
class TXmlReader;
}

namespace tessarine::detail {

struct TOdsReadContext;

/// Collects the paragraphs of one cell: joined by CR LF, with blanks, tabs and line breaks in place of their elements.
/// White space that holds a line end or a tab comes from the layout of the file: it is one blank, and nothing at the
/// ends of a paragraph.
class TOdsTextReader {
 public:
  explicit TOdsTextReader(const TOdsReadContext& AContext) : FContext(AContext) {}

  void Clear();

  /// Called at the start event of a paragraph: goes on to its end event.
  void AddParagraph(TXmlReader& AReader);

  /// Adds a paragraph of nothing but text.
  void AddPlainParagraph(std::string_view AText);

  bool HasParagraphs() const { return FHasParagraphs; }
  const std::string& Text() const { return FText; }  // UTF-8

  /// The target of the first link; empty without one.
  const std::string& Link() const { return FLink; }

  /// The stretches of text by font, in a cell of that font: one for each span with a style and what is between them.
  /// None without such a span.
  TRichTextRuns Runs(const TCellFontInfo& ACellFont) const;

 private:
  struct TRun {
    size_t Start = 0;  // in FText
    int32_t Style = -1;
  };

  void BeginParagraph();
  void EndParagraph();
  bool OpenElement(TXmlReader& AReader);
  void Append(std::string_view AText);
  void AppendBlanks(TXmlReader& AReader);
  void OpenRun(int32_t AStyle);
  void BeginRun();
  void AddRun(int32_t AStyle);
  int32_t StyleId(std::string_view AName);

  const TOdsReadContext& FContext;
  std::string FText;
  std::string FLink;
  bool FHasParagraphs = false;
  size_t FParagraphStart = 0;
  bool FEndsInLayout = false;  // the last blank stands for layout
  bool FHasSpan = false;       // the paragraph has one with a style
  std::vector<TRun> FRuns;
  std::vector<std::string> FStyles;
  std::vector<int32_t> FOpen;  // the style in force inside each open element
};

/// Gives the texts of runs the line ends that AText has where they have CR LF. False, with ARuns spoilt, when the texts
/// differ in more than that.
bool OdsTakeLineEnds(std::u16string_view AText, TRichTextRuns& ARuns);

}  // namespace tessarine::detail
