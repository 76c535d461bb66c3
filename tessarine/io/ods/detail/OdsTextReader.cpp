#include <tessarine/io/ods/detail/OdsTextReader.h>

#include <algorithm>
#include <utility>

#include <tessarine/io/ods/detail/OdsReadContext.h>
#include <tessarine/io/xlsx/detail/XlsxBudget.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Xml.h>

namespace tessarine::detail {

namespace {

constexpr std::string_view kLineBreak = "\r\n";
constexpr int32_t kMaxBlanks = 65'535;  // of one element

bool IsLayoutUnit(char AUnit) { return AUnit == '\n' || AUnit == '\r' || AUnit == '\t'; }

}  // namespace

void TOdsTextReader::Clear() {
  FText.clear();
  FLink.clear();
  FHasParagraphs = false;
  FRuns.clear();
  FStyles.clear();
}

void TOdsTextReader::BeginParagraph() {
  if (FHasParagraphs) FText += kLineBreak;
  FHasParagraphs = true;
  FParagraphStart = FText.size();
  FEndsInLayout = false;
  FHasSpan = false;
}

void TOdsTextReader::EndParagraph() {
  if (FEndsInLayout && FText.size() > FParagraphStart) FText.pop_back();
}

void TOdsTextReader::AddPlainParagraph(std::string_view AText) {
  BeginParagraph();
  FOpen.assign(1, -1);
  Append(AText);
  EndParagraph();
}

void TOdsTextReader::AddParagraph(TXmlReader& AReader) {
  BeginParagraph();
  FOpen.assign(1, -1);
  while (!FOpen.empty()) {
    const TXmlEvent event = AReader.Next();
    if (event == xeEnd) break;
    if (event == xeText) Append(AReader.Text());
    if (event == xeEndElement) FOpen.pop_back();
    if (event == xeStartElement && !OpenElement(AReader)) AReader.SkipElement();
  }
  EndParagraph();
}

/// True when the element's content belongs to the text.
bool TOdsTextReader::OpenElement(TXmlReader& AReader) {
  if (AReader.LocalNameIs("s")) {
    AppendBlanks(AReader);
    return false;
  }
  if (AReader.LocalNameIs("tab") || AReader.LocalNameIs("line-break")) {
    BeginRun();
    FText += AReader.LocalNameIs("tab") ? "\t" : kLineBreak;
    FEndsInLayout = false;
    return false;
  }
  if (AReader.LocalNameIs("annotation") || AReader.LocalNameIs("note")) return false;
  int32_t style = FOpen.back();
  if (AReader.LocalNameIs("span")) {
    const std::string_view name = AReader.FindAttribute("style-name").value_or(std::string_view());
    if (!name.empty()) OpenRun(style = StyleId(name));
  } else if (AReader.LocalNameIs("a") && FLink.empty()) {
    FLink = AReader.FindAttribute("href").value_or(std::string_view());
  }
  FOpen.push_back(style);
  return true;
}

int32_t TOdsTextReader::StyleId(std::string_view AName) {
  const auto found = std::find(FStyles.rbegin(), FStyles.rend(), AName);
  if (found != FStyles.rend()) return static_cast<int32_t>(FStyles.rend() - found) - 1;
  // A cell with so many styles is no longer told apart by a search.
  constexpr size_t kMostStyles = 256;
  if (FStyles.size() == kMostStyles) return static_cast<int32_t>(kMostStyles) - 1;
  FStyles.emplace_back(AName);
  return static_cast<int32_t>(FStyles.size()) - 1;
}

void TOdsTextReader::AppendBlanks(TXmlReader& AReader) {
  int32_t count = 1;
  if (!TryParseInt32(AReader.FindAttribute("c").value_or("1"), count)) count = 1;
  const auto blanks = static_cast<size_t>(std::clamp(count, 1, kMaxBlanks));
  TXlsxBudget::Take(
      FContext.Budget.Blanks, blanks, [&] { return AReader.PartName(); }, "the repeated blanks");
  BeginRun();
  FText.append(blanks, ' ');
  FEndsInLayout = false;
}

/// Each span is a run, but for the first of a paragraph, which may go on with the run that the line end broke.
void TOdsTextReader::OpenRun(int32_t AStyle) {
  const bool goesOn = !std::exchange(FHasSpan, true) && !FRuns.empty() && FRuns.back().Style == AStyle;
  if (!goesOn) AddRun(AStyle);
}

/// What stands behind or between spans is a run of its own.
void TOdsTextReader::BeginRun() {
  if (FRuns.empty() ? FOpen.back() >= 0 : FRuns.back().Style != FOpen.back()) AddRun(FOpen.back());
}

void TOdsTextReader::AddRun(int32_t AStyle) {
  if (FRuns.empty() && !FText.empty()) FRuns.push_back({0, -1});
  if (!FRuns.empty() && FRuns.back().Start == FText.size()) FRuns.pop_back();
  FRuns.push_back({FText.size(), AStyle});
}

void TOdsTextReader::Append(std::string_view AText) {
  if (AText.empty()) return;
  BeginRun();
  if (std::none_of(AText.begin(), AText.end(), IsLayoutUnit)) {
    FText += AText;
    FEndsInLayout = false;
    return;
  }
  for (size_t at = 0; at < AText.size();) {
    const size_t blanks = std::min(AText.find_first_not_of(" \t\r\n", at), AText.size());
    const std::string_view gap = AText.substr(at, blanks - at);
    if (std::none_of(gap.begin(), gap.end(), IsLayoutUnit)) {
      FText += gap;
    } else if (FText.size() > FParagraphStart && !FEndsInLayout) {
      FText += ' ';
      FEndsInLayout = true;
    }
    const size_t end = std::min(AText.find_first_of(" \t\r\n", blanks), AText.size());
    if (end > blanks) {
      FText += AText.substr(blanks, end - blanks);
      FEndsInLayout = false;
    }
    at = end;
  }
}

TRichTextRuns TOdsTextReader::Runs(const TCellFontInfo& ACellFont) const {
  TRichTextRuns runs;
  bool hasStyle = false;
  for (size_t index = 0; index < FRuns.size(); ++index) {
    const size_t start = std::min(FRuns[index].Start, FText.size());
    const size_t end = std::min(index + 1 < FRuns.size() ? FRuns[index + 1].Start : FText.size(), FText.size());
    if (start >= end) continue;
    const int32_t style = FRuns[index].Style;
    hasStyle = hasStyle || style >= 0;
    runs.push_back(
        {TText::FromUtf8(std::string_view(FText).substr(start, end - start)),
         style < 0 ? ACellFont : FContext.Styles.GetTextFont(FStyles[static_cast<size_t>(style)], ACellFont)});
  }
  return hasStyle ? runs : TRichTextRuns();
}

bool OdsTakeLineEnds(std::u16string_view AText, TRichTextRuns& ARuns) {
  constexpr std::u16string_view kCrLf = u"\r\n";
  for (TRichTextRun& run : ARuns) {
    const std::u16string_view old = run.Text;
    std::u16string text;
    for (size_t at = 0; at < old.size();) {
      const bool isLineEnd = old.substr(at).starts_with(kCrLf);
      if (AText.empty() || (isLineEnd ? AText[0] != u'\r' && AText[0] != u'\n' : AText[0] != old[at])) return false;
      const size_t taken = isLineEnd && AText.starts_with(kCrLf) ? 2 : 1;
      text += AText.substr(0, taken);
      AText.remove_prefix(taken);
      at += isLineEnd ? 2 : 1;
    }
    run.Text = TText(text);
  }
  return AText.empty();
}

}  // namespace tessarine::detail
