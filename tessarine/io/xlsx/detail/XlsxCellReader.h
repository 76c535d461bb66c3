#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/sheet/Cell.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/io/xlsx/detail/XlsxFormulas.h>
#include <tessarine/io/xlsx/detail/XlsxStringItems.h>
#include <tessarine/platform/Xml.h>

namespace tessarine {
class TSharedStringTable;
class TTessarineStyleSheet;
class TWorksheet;
}  // namespace tessarine

namespace tessarine::detail {

class TCellStore;
struct TXlsxBudget;

/// What the cells of all sheets refer to.
struct TXlsxCellContext {
  const TSharedStringTable& Strings;
  const TTessarineStyleSheet& StyleSheet;
  TXlsxBudget& Budget;
};

/// What cells say in a way that is not kept.
struct TXlsxCellLosses {
  size_t Constants = 0;   // values of errors, dates and texts that are no number
  size_t Texts = 0;       // references past the string table
  size_t Formulas = 0;    // formulas of cells that refer to the string table
  size_t DataTables = 0;  // what-if tables; their values are kept
};

/// Reads the cells of one sheet part straight into the sheet's store, without events. Cells may come in any order; of
/// several for one place the last counts.
class TXlsxCellReader {
 public:
  /// All arguments outlive the reader.
  TXlsxCellReader(TXmlReader& AReader, TWorksheet& ASheet, const TXlsxCellContext& AContext);

  /// Called at the start event of a cell: goes on to its end event.
  void ReadCell();

  /// To be called behind the last cell: array formulas get their blocks, the sheet its bounds.
  void Finish();

  /// Cells at valid places so far.
  size_t CellCount() const { return FCellCount; }
  const TXlsxCellLosses& Losses() const { return FLosses; }

 private:
  enum class TCellType : uint8_t { ctOther, ctSharedString, ctBoolean, ctText, ctInlineText };

  /// An array formula over several cells, and what the file says of those beside the formula's own.
  struct TBlock {
    TCellRange Range;
    std::vector<TCellValue> Values;  // row by row; empty until a value is met
  };

  bool ReadAttributes();
  bool ReadAttributesPlain();
  bool TryReadAttributes();
  void SetType(std::string_view AType);
  bool TryReadLeafChild();
  void ReadChild();
  void SetFormulaDefaults();
  void ReadFormulaElement();
  void StoreCell(std::u16string_view AFormula);
  void StoreShared();
  void StoreFormula(std::u16string_view AFormula);
  void StoreValue();
  void StoreInline();
  void StoreText(TText AText, TRichTextRuns ARuns);
  TCellValue ResultValue() const;
  std::optional<double> TryNumber() const;
  bool IsTrue() const;
  TText ValueText() const;
  void OpenBlock();
  bool TryStoreInBlock();
  std::string Place() const;

  TXmlReader& FReader;
  TWorksheet& FSheet;
  TCellStore& FStore;
  const TXlsxCellContext& FContext;
  TXlsxFormulas FFormulas;
  TXlsxStringItemReader FInline;

  // The cell that is being read.
  TCellAddress FAddress;
  int32_t FStyle = 0;
  TCellType FType = TCellType::ctOther;
  bool FHasValue = false;
  bool FHasFormula = false;
  bool FHasInline = false;
  std::string FValue;
  TXlsxFormulaElement FFormula;

  std::vector<TBlock> FBlocks;
  boost::unordered_flat_map<uint64_t, size_t> FBlockByAnchor;  // the sheet's spill map finds the anchor of a cell
  TXlsxCellLosses FLosses;
  size_t FCellCount = 0;
  int32_t FMaxCol = 0;
  int32_t FMaxRow = 0;
};

}  // namespace tessarine::detail
