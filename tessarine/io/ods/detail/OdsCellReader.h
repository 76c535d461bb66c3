#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <tessarine/core/values/CellValue.h>
#include <tessarine/io/ods/detail/OdsArrayBlocks.h>
#include <tessarine/io/ods/detail/OdsReadContext.h>
#include <tessarine/io/ods/detail/OdsTextReader.h>
#include <tessarine/platform/Xml.h>

namespace tessarine {
class TWorksheet;
}

namespace tessarine::detail {

class TCellStore;
class TOdsDrawingReader;
class TOdsValidationReader;

/// A count that a file repeats something by: at least 1, at most all that fits.
int32_t OdsRepeatCount(std::string_view AText);

/// Reads the cells of one sheet straight into its store, without events.
class TOdsCellReader {
 public:
  /// All arguments outlive the reader.
  TOdsCellReader(TXmlReader& AReader, TWorksheet& ASheet, const TOdsReadContext& AContext,
                 TOdsValidationReader& AValidations, TOdsDrawingReader& ADrawings);

  /// Begins the row ARow that stands ARepeat times.
  void BeginRow(int32_t ARow, int32_t ARepeat) {
    FRow = ARow;
    FRowRepeat = ARepeat;
  }

  /// Called at the start event of a cell in column ACol, which may lie beyond the sheet: goes on to its end event and
  /// returns how many columns the cell stands for. ADefault is the style of a cell without one.
  int32_t ReadCell(int32_t ACol, TOdsCellStyle* ADefault);

  /// To be called behind the last cell: array formulas get their blocks, the sheet its bounds.
  void Finish();

  /// Cells stored so far.
  size_t CellCount() const { return FCellCount; }
  size_t CommentCount() const { return FComments; }

 private:
  enum class TType : uint8_t { ctNone, ctFloat, ctPercentage, ctDate, ctTime, ctBoolean, ctText };

  /// What the attributes of a cell say; the views are valid until the next event.
  struct TAttributes {
    TType Type = TType::ctNone;
    bool IsError = false;
    bool HasValue = false;
    bool HasText = false;
    std::string_view StyleName;
    std::string_view Validation;
    int32_t Repeat = 1;
    int32_t ColSpan = 1;
    int32_t RowSpan = 1;
    int32_t MatrixCols = 0;
    int32_t MatrixRows = 0;
  };

  void ReadAttributes();
  bool TryReadValueAttribute(std::string_view AName, std::string_view AValue);
  void ReadPlaceAttribute(std::string_view AName, std::string_view AValue);
  static TType TypeOf(std::string_view AText);
  void ReadContent();
  void ReadChild();
  void PlaceCell();
  bool HasContent() const;
  TCellValue Value();
  TCellValue TextValue() const;
  TCellValue FormulaResult();
  TCellValue ErrorResult() const;
  int32_t StyleIndex();
  void TakeRepeats(size_t ACount);
  void Store(const TCellRange& ARange);
  void StoreAt(int32_t ACol, int32_t ARow, const TCellValue& AValue, int32_t AStyle);
  void StoreRich(const TCellRange& ARange, const TCellValue& AValue, int32_t AStyle, TRichTextRuns ARuns);
  void StoreFormulas(const TCellRange& ARange, const TCellValue& AResult, int32_t AStyle);
  void MergeCells(const TCellRange& ARange);
  std::string CellPlace() const;

  TXmlReader& FReader;
  TWorksheet& FSheet;
  TCellStore& FStore;
  const TOdsReadContext& FContext;
  TOdsValidationReader& FValidations;
  TOdsDrawingReader& FDrawings;
  TOdsArrayBlocks FBlocks;
  TOdsTextReader FText;

  int32_t FRow = 1;
  int32_t FRowRepeat = 1;

  // The cell that is being read.
  int32_t FCol = 1;
  TAttributes FCell;
  TOdsCellStyle* FStyle = nullptr;
  bool FHasOwnStyle = false;
  std::string FFormula;
  std::string FStringValue;
  std::string FNumberText;  // of the value, whatever its type
  std::u16string FFormulaText;

  std::string FLastStyleName;  // styles mostly come in stretches
  TOdsCellStyle* FLastStyle = nullptr;
  size_t FCellCount = 0;
  size_t FComments = 0;
  int32_t FMaxCol = 0;
  int32_t FMaxRow = 0;
};

}  // namespace tessarine::detail
