#include <tessarine/io/xlsx/detail/XlsxStringsWriter.h>

#include <charconv>
#include <cmath>
#include <iterator>

#include <tessarine/core/format/Theme.h>
#include <tessarine/io/xlsx/detail/XlsxMarkupWriter.h>
#include <tessarine/platform/Progress.h>

namespace tessarine::detail {

namespace {

constexpr int32_t kItemsPerReport = 8192;
constexpr size_t kBytesPerItem = 48;  // about; once some are written, these tell

/// A size with the fewest digits that read back to it.
void AppendSize(float ASize, std::string& AOut) {
  char text[64];
  AOut.append(text, std::to_chars(std::begin(text), std::end(text), ASize).ptr);
}

void AppendSwitch(std::string_view AName, bool AHas, bool AIsOn, std::string& AOut) {
  if (!AHas) return;
  ((AOut += '<') += AName) += AIsOn ? "/>" : " val=\"0\"/>";
}

void AppendUnderline(TUnderlineStyle AStyle, std::string& AOut) {
  switch (AStyle) {
    case usNone: AOut += "<u val=\"none\"/>"; break;
    case usSingle: AOut += "<u/>"; break;
    case usDouble: AOut += "<u val=\"double\"/>"; break;
  }
}

void AppendScript(TScriptPosition AScript, std::string& AOut) {
  switch (AScript) {
    case spNormal: AOut += "<vertAlign val=\"baseline\"/>"; break;
    case spSuperscript: AOut += "<vertAlign val=\"superscript\"/>"; break;
    case spSubscript: AOut += "<vertAlign val=\"subscript\"/>"; break;
  }
}

void AppendRunFont(const TRichStringRun& ARun, std::string& AOut) {
  AOut += "<rPr>";
  AppendSwitch("b", ARun.HasBold, ARun.Font.Bold, AOut);
  AppendSwitch("i", ARun.HasItalic, ARun.Font.Italic, AOut);
  AppendSwitch("strike", ARun.HasStrike, ARun.Font.Strikethrough, AOut);
  if (ARun.HasUnderline) AppendUnderline(ARun.Font.Underline, AOut);
  if (ARun.HasSize) {
    AOut += "<sz val=\"";
    AppendSize(ARun.Font.Size, AOut);
    AOut += "\"/>";
  }
  if (ARun.HasColor) {
    AOut += "<color rgb=\"";
    AppendXlsxRgb(ARun.Font.Color.ARGB, AOut);
    AOut += "\"/>";
  }
  if (ARun.HasName) {
    AOut += "<rFont";
    AppendXlsxTextAttr("val", ARun.Font.Name, AOut);
    AOut += "/>";
  }
  if (ARun.HasScript) AppendScript(ARun.Font.Script, AOut);
  AOut += "</rPr>";
}

void AppendItem(const TSharedStringItem& AItem, std::string& AOut) {
  AOut += "<si>";
  if (!AItem.IsRich) AppendXlsxSpacedElement("t", AItem.Text, AOut);
  for (const TRichStringRun& run : AItem.Runs) {
    AOut += "<r>";
    if (run.HasFont) AppendRunFont(run, AOut);
    AppendXlsxSpacedElement("t", run.Text, AOut);
    AOut += "</r>";
  }
  AOut += "</si>";
}

TRichStringRun StringRun(const TRichTextRun& ARun, const TCellFontInfo& ABase, const TTessarineTheme& ATheme,
                         bool AIsLiteral) {
  TRichStringRun run;
  run.Text = ARun.Text;
  run.Font = ARun.Font;
  const bool isThemed = run.Font.Color.IsThemeColor();
  if (isThemed) run.Font.Color = TColorRef::FromARGB(kOpaqueBlack | ResolveColor(run.Font.Color, &ATheme));
  const TCellFontInfo& font = run.Font;
  const TCellFontInfo base = AIsLiteral ? TCellFontInfo() : ABase;
  run.HasName = !font.Name.IsEmpty();
  run.HasSize = font.Size > 0 && std::isfinite(font.Size);
  run.HasBold = font.Bold || base.Bold;
  run.HasItalic = font.Italic || base.Italic;
  run.HasStrike = font.Strikethrough || base.Strikethrough;
  run.HasUnderline = font.Underline != usNone || base.Underline != usNone;
  run.HasScript = font.Script != spNormal || base.Script != spNormal;
  run.HasColor = isThemed || font.Color.ARGB != 0;
  run.HasFont = run.HasName || run.HasSize || run.HasBold || run.HasItalic || run.HasStrike || run.HasUnderline ||
                run.HasScript || run.HasColor;
  return run;
}

}  // namespace

std::vector<TRichStringRun> XlsxStringRuns(const TRichTextRuns& ARuns, const TCellFontInfo& ABase,
                                           const TTessarineTheme& ATheme, bool AIsLiteral) {
  std::vector<TRichStringRun> runs;
  runs.reserve(ARuns.size());
  for (const TRichTextRun& run : ARuns) {
    if (!run.Text.IsEmpty()) runs.push_back(StringRun(run, ABase, ATheme, AIsLiteral));
  }
  return runs;
}

std::string XlsxStringsPart(const TSharedStringTable& ATable, const TWorkControl& AControl) {
  std::string out(kXmlHead);
  ((out += "<sst xmlns=\"") += kXlsxMainNamespace) += '"';
  AppendXlsxInt("count", ATable.Count(), out);
  AppendXlsxInt("uniqueCount", ATable.Count(), out);
  out += '>';
  const auto count = static_cast<size_t>(ATable.Count());
  for (int32_t index = 0; index < ATable.Count(); ++index) {
    if (index % kItemsPerReport == 0) {
      AControl.CheckStop();
      ReserveForRest(static_cast<size_t>(index), count, out.size(), kBytesPerItem, out);
    }
    AppendItem(ATable.GetItem(index), out);
  }
  out += "</sst>";
  return out;
}

}  // namespace tessarine::detail
