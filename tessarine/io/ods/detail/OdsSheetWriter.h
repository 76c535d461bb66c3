#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/io/ods/detail/OdsCellLayers.h>
#include <tessarine/io/ods/detail/OdsLineWriter.h>

namespace tessarine {
struct TOdsWriteOptions;
}

namespace tessarine::detail {

class TOdsStyleWriter;
struct TCellSlot;
struct TFormulaRecord;

/// What the sheets of one file share while they are written.
struct TOdsSheetContext {
  const TWorkbook& Workbook;
  const TOdsWriteOptions& Options;
  TOdsStyleWriter& Styles;
  std::string& Out;  // content.xml as it grows
};

/// Writes one sheet as "table:table" to the end of the content. Cells come from the store row by row; what lies over
/// them (merges, validations, links) from layers that are asked for each row. Empty cells that are alike, and rows
/// without cells that are alike, are folded to repeats, of at most kOdsMaxRepeat where readers store something.
class TOdsSheetWriter {
 public:
  /// AIndex is 0-based. ARuleNames are those of the sheet's validations; AShapes is what "table:shapes" holds.
  TOdsSheetWriter(const TOdsSheetContext& AContext, const TWorksheet& ASheet, int32_t AIndex,
                  const std::vector<std::string>& ARuleNames, std::string_view AShapes);

  void Run();

 private:
  static constexpr uint32_t kNone = UINT32_MAX;
  enum TLayerNumber { lnMerges, lnRules, lnLinks, lnCount };

  /// What is over a cell.
  struct TOver {
    bool IsCovered = false;
    uint32_t Merge = kNone;  // of its anchor only
    uint32_t Rule = kNone;
    uint32_t Link = kNone;

    friend bool operator==(const TOver&, const TOver&) = default;
  };
  /// A cell without content.
  struct TBlank {
    int32_t Style = 0;
    TOver Over;

    bool IsPlain() const { return Style == 0 && Over == TOver(); }
    /// Readers store nothing for it, however often it is repeated.
    bool IsSmall() const { return Style == 0 && Over.Link == kNone; }
    friend bool operator==(const TBlank&, const TBlank&) = default;
  };
  struct TLink {
    TText Target;
    bool OnEmptyCells = true;
  };

  void BuildMerges();
  void BuildRules();
  void BuildLinks();
  std::vector<uint64_t> SpillPlaces() const;

  void AppendStart();
  void StepTo(int32_t ACol, int32_t ARow);
  void BeginRow(int32_t ARow, int32_t ACount);
  void EndRow();
  void PutEmptyRowsBefore(int32_t ARow);
  int32_t EnterRow(int32_t ARow);

  void MoveTo(int32_t ACol);
  TOver OverAt(int32_t ACol, int32_t& ALast);
  void PutBlanks(const TBlank& ABlank, int32_t ACount);
  void FlushBlanks();
  void AppendBlankCell(int32_t ACount);
  void OpenCell(int32_t AStyle, const TOver& AOver);
  void CloseCell(const TOver& AOver);

  void PutCell(int32_t ACol, int32_t ARow, const TCellSlot& ASlot);
  void PutSpilled(uint64_t APlace);
  void AppendValue(const TValueView& AValue, const TOver& AOver, bool AIsResult);
  void AppendNumberValue(double ANumber);
  void AppendRuns(const TRichTextRuns& ARuns, const TOver& AOver);
  void AppendFormula(int32_t ACol, int32_t ARow, const TFormulaRecord& ARecord);
  void AppendText(std::u16string_view AText, const TOver& AOver, bool AIsResult);
  void AppendStringType(std::u16string_view AText, bool AIsResult);
  std::u16string_view HrefOf(const TOver& AOver) const;
  void CountCell();
  void Check();

  const TOdsSheetContext& FContext;
  const TWorksheet& FSheet;
  int32_t FIndex;
  const std::vector<std::string>& FRuleNames;
  std::string_view FShapes;
  std::string& FOut;
  std::string FSheetName;
  TOdsLineWriter FLines;

  TOdsLayer FLayers[lnCount];
  std::vector<TCellRange> FMerges;  // by id
  std::vector<TLink> FLinks;        // by id
  const std::vector<TOdsSpan>* FSpans[lnCount] = {};
  size_t FSpanAt[lnCount] = {};
  bool FHasOver = false;  // anything lies over the open row

  int32_t FRow = 0;  // the row that is open, or the last one that is written
  bool FRowIsOpen = false;
  bool FRowHasCell = false;
  int32_t FCol = 1;  // the next column of the open row
  TBlank FBlank;
  int32_t FBlankCount = 0;
  std::u16string FText;
  size_t FCellsDone = 0;
  size_t FLeftOut = 0;  // characters that XML cannot carry
};

}  // namespace tessarine::detail
