#include <tessarine/io/xlsx/detail/XlsxStringItems.h>

#include <algorithm>
#include <utility>

#include <tessarine/io/xlsx/detail/XlsxBudget.h>
#include <tessarine/io/xlsx/detail/XlsxCommon.h>

namespace tessarine::detail {

namespace {

constexpr size_t kItemsPerPoll = 4096;

}  // namespace

void TXlsxStringItemReader::Read() {
  FRuns.clear();
  std::string_view text;
  bool hasText = FReader.TryReadLeaf("t", text);
  if (hasText) FText = XlsxText(text);
  for (TXmlEvent event = FReader.Next(); event != xeEndElement && event != xeEnd; event = FReader.Next()) {
    if (event != xeStartElement) continue;
    if (!hasText && XlsxIsElement(FReader, "t")) {
      hasText = true;
      ReadXlsxText(FReader, FBuffer);
      FText = XlsxText(FBuffer);
    } else if (!hasText && FReader.LocalNameIs("r")) {
      ReadRun();
    } else {
      FReader.SkipElement();
    }
  }
  if (hasText) {
    FRuns.clear();
  } else {
    JoinRuns();
  }
}

/// The text is that of the run's text element, without one all that stands in it.
void TXlsxStringItemReader::ReadRun() {
  TRichStringRun run;
  std::string loose;
  bool hasText = false;
  for (TXmlEvent event = FReader.Next(); event != xeEndElement && event != xeEnd; event = FReader.Next()) {
    if (event == xeText) {
      loose += FReader.Text();
    } else if (!hasText && FReader.LocalNameIs("t")) {
      hasText = true;
      ReadXlsxText(FReader, FBuffer);
    } else if (!run.HasFont && FReader.LocalNameIs("rPr")) {
      ReadRunFont(run);
    } else {
      AppendElementText(FReader, loose);
    }
  }
  run.Text = XlsxText(hasText ? FBuffer : loose);
  if (run.Text.IsEmpty()) return;
  TXlsxBudget::Take(
      FBudget.RichRuns, 1, [this] { return FReader.PartName(); }, "the formatted runs of text");
  FRuns.push_back(std::move(run));
}

void TXlsxStringItemReader::ReadRunFont(TRichStringRun& ARun) {
  ARun.HasFont = true;
  unsigned stated = 0;
  for (TXmlEvent event = FReader.Next(); event != xeEndElement && event != xeEnd; event = FReader.Next()) {
    if (event != xeStartElement) continue;
    stated |= XlsxApplyFontChild(FReader.LocalName(), FReader.Attributes(), ARun.Font);
    FReader.SkipElement();
  }
  ARun.HasName = (stated & xfpName) != 0;
  ARun.HasSize = (stated & xfpSize) != 0;
  ARun.HasBold = (stated & xfpBold) != 0;
  ARun.HasItalic = (stated & xfpItalic) != 0;
  ARun.HasUnderline = (stated & xfpUnderline) != 0;
  ARun.HasStrike = (stated & xfpStrike) != 0;
  ARun.HasColor = (stated & xfpColor) != 0;
  ARun.HasScript = (stated & xfpScript) != 0;
}

void TXlsxStringItemReader::JoinRuns() {
  if (FRuns.size() == 1) {
    FText = FRuns.front().Text;
    return;
  }
  std::u16string text;
  for (const TRichStringRun& run : FRuns) text += run.Text.View();
  FText = TText(text);
}

bool TXlsxStringItemReader::HasFont() const {
  return std::any_of(FRuns.begin(), FRuns.end(), [](const TRichStringRun& ARun) { return ARun.HasFont; });
}

TRichTextRuns XlsxCellRuns(std::span<const TRichStringRun> ARuns, const TCellFontInfo& ABase) {
  TRichTextRuns runs;
  runs.reserve(ARuns.size());
  for (const TRichStringRun& run : ARuns) {
    TCellFontInfo font = ABase;
    if (run.HasName) font.Name = run.Font.Name;
    if (run.HasSize) font.Size = run.Font.Size;
    if (run.HasBold) font.Bold = run.Font.Bold;
    if (run.HasItalic) font.Italic = run.Font.Italic;
    if (run.HasUnderline) font.Underline = run.Font.Underline;
    if (run.HasStrike) font.Strikethrough = run.Font.Strikethrough;
    if (run.HasColor) font.Color = run.Font.Color;
    if (run.HasScript) font.Script = run.Font.Script;
    runs.push_back({run.Text, std::move(font)});
  }
  return runs;
}

void ReadXlsxSharedStrings(TXmlReader& AReader, const TWorkControl& AControl, TXlsxBudget& ABudget,
                           TSharedStringTable& ATable) {
  TXlsxStringItemReader item(AReader, ABudget);
  size_t count = 0;
  for (TXmlEvent event = AReader.Next(); event != xeEnd; event = AReader.Next()) {
    if (event != xeStartElement || AReader.Depth() == 1) continue;
    if (!XlsxIsElement(AReader, "si")) {
      AReader.SkipElement();
      continue;
    }
    item.Read();
    const bool isRich = item.Runs().size() > 1 || item.HasFont();
    if (isRich) {
      std::vector<TRichStringRun> runs(std::make_move_iterator(item.Runs().begin()),
                                       std::make_move_iterator(item.Runs().end()));
      ATable.AddRich(std::move(runs), item.TakeText());
    } else {
      ATable.Add(item.TakeText());
    }
    if (++count % kItemsPerPoll == 0) AControl.CheckStop();
  }
}

}  // namespace tessarine::detail
