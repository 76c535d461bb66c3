#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/core/sheet/Cell.h>
#include <tessarine/io/xlsx/SharedStrings.h>
#include <tessarine/platform/Progress.h>
#include <tessarine/platform/ReadLimits.h>
#include <tessarine/platform/Xml.h>

namespace tessarine::detail {

struct TXlsxBudget;

/// Reads the content of a string item (ECMA-376-1 §18.4.8), which an entry of the string table and an inline string
/// have in common: one text, or runs of text.
class TXlsxStringItemReader {
 public:
  /// The arguments outlive the reader.
  TXlsxStringItemReader(TXmlReader& AReader, TXlsxBudget& ABudget) : FReader(AReader), FBudget(ABudget) {}

  /// Called at the start event of the item: goes on to its end event.
  void Read();

  /// The item's whole text; to be taken once.
  TText TakeText() { return std::move(FText); }
  /// Runs with text; empty for an item that has a plain text.
  std::vector<TRichStringRun>& Runs() { return FRuns; }
  bool HasFont() const;

 private:
  void ReadRun();
  void ReadRunFont(TRichStringRun& ARun);
  void JoinRuns();

  TXmlReader& FReader;
  TXlsxBudget& FBudget;
  TText FText;
  std::vector<TRichStringRun> FRuns;
  std::string FBuffer;
};

/// The runs as a cell shows them: each starts as ABase and takes what it states.
TRichTextRuns XlsxCellRuns(std::span<const TRichStringRun> ARuns, const TCellFontInfo& ABase);

/// Reads a string table part (ECMA-376-1 §18.4.9) to its end and appends its items to ATable. Throws as TXmlReader
/// does.
void ReadXlsxSharedStrings(TXmlReader& AReader, const TWorkControl& AControl, TXlsxBudget& ABudget,
                           TSharedStringTable& ATable);

}  // namespace tessarine::detail
