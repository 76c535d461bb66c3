#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/format/CellFormat.h>
#include <tessarine/core/sheet/Cell.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/CellValue.h>

namespace tessarine {

class TWorkbook;
class TWorksheet;
class TMergedCellList;
class TSpillMap;
class TRowColSizing;
class TSheetTableList;
class THyperlinkList;
class TDataValidationList;
class TConditionalFormatList;
class TSheetAutoFilter;
class TCellCommentList;
class TSheetPivotTableList;
class TSheetSlicerList;
class TSheetDrawingList;
class TPageSetup;
struct TSheetSavedView;
class TTessarineStyleSheet;

namespace detail {
class TCellStore;
class TFormulaPool;
struct TCellSlot;
struct TLineEdit;
}  // namespace detail

/// A change of one cell: the sheet, the address, the cell before and the cell now.
using TWorksheetChangeEvent =
    std::function<void(TWorksheet& ASender, TCellAddress AAddress, const TCell& AOldCell, const TCell& ANewCell)>;

/// How a sheet is shown; plain settings without rules of their own (frozen counts are clamped by their setters).
struct TSheetViewOptions {
  bool ShowGridLines = true;
  bool ShowHeaders = true;
  bool ShowFormulas = false;
  bool ShowZeros = true;
  bool R1C1 = false;
  int32_t Zoom = 100;  // percent
  bool RightToLeft = false;

  friend bool operator==(const TSheetViewOptions&, const TSheetViewOptions&) = default;
};

/// One sheet of a workbook: its cells, the sizes of rows and columns, merged areas, spilled blocks and the lists of
/// what else lives on it. Not synchronised: a sheet is used on the thread that owns its workbook.
///
/// Invariants:
/// 1. Only cells that are not empty in the sense of TCell::IsEmpty are stored.
/// 2. The used bounds are at least 1 and never shrink but in RecalcUsedBounds; they are stored, not computed.
class TESSARINE_API TWorksheet {
 public:
  /// AOwner may be null for a sheet that stands alone; APool is the owner's (it outlives the sheet).
  TWorksheet(TText AName, TWorkbook* AOwner, detail::TFormulaPool& APool);
  ~TWorksheet();
  TWorksheet(const TWorksheet&) = delete;
  TWorksheet& operator=(const TWorksheet&) = delete;

  const TText& Name() const { return FName; }
  /// Stores the name as given; whether it is free and well formed is for the caller to test.
  void SetName(TTextArg AName);
  TWorkbook* Owner() const { return FOwner; }

  // ---- reading
  /// The cell at AAddress, built from the store; an empty cell for an address that is free or invalid.
  TCell GetCell(TCellAddress AAddress) const;
  TCell GetCellAt(int32_t ACol, int32_t ARow) const { return GetCell({ACol, ARow}); }
  bool HasCell(TCellAddress AAddress) const;

  /// What formulas and features see: a formula's cached result (empty without one), the value that a spill lays over
  /// an empty cell, else the stored value. Nothing is evaluated.
  TCellValue GetEffectiveValue(TCellAddress AAddress) const;

  /// The same without a copy; valid until the sheet changes.
  TValueView EffectiveView(int32_t ACol, int32_t ARow) const;

  /// The format that applies to a cell, conditional formats laid over it. Without a style sheet, cells without an
  /// override have the default format.
  TCellFormat ResolveFormat(TCellAddress AAddress, const TTessarineStyleSheet* AStyleSheet) const;

  /// The text shown in the cell, number formats applied. A formula without a result shows its source.
  TText GetDisplayText(TCellAddress AAddress, const TTessarineStyleSheet* AStyleSheet) const;
  /// Appends the same text to one that is being built.
  void AppendDisplayText(TCellAddress AAddress, const TTessarineStyleSheet* AStyleSheet, std::u16string& AText) const;

  bool IsVisible() const { return FVisibility == svVisible; }

  /// The key of an address in the told form ("C7").
  static std::u16string CellKey(TCellAddress AAddress) { return AAddress.ToKey(); }

  // ---- writing
  /// Stores ACell whole, a number that is not finite as #NUM!: an invalid address is ignored, an empty cell frees its
  /// place. Raises the used bounds in any case, and fires the change event with the old and the new cell.
  void SetCell(TCellAddress AAddress, const TCell& ACell);

  /// SetCell with an empty cell: value and format go.
  void ClearCell(TCellAddress AAddress) { SetCell(AAddress, TCell::CreateEmpty()); }

  /// SetCell with a cell that has this value and nothing else; the short way for programs that fill sheets.
  void SetValue(TCellAddress AAddress, const TCellValue& AValue);

  /// Removes all cells without events; bounds stay until RecalcUsedBounds.
  void ClearCells();

  /// The handler of changes. A workbook sets its own, which marks it modified; a host that sets another one calls
  /// TWorkbook::SheetChanged itself. An empty function gives the workbook's handler back.
  void SetOnChange(TWorksheetChangeEvent AHandler);
  /// Sets no handler at all: changes are not told to anybody until SetOnChange.
  void MuteOnChange();
  /// True when changes need no event: the handler is the workbook's own (or none) and nobody listens to it.
  /// Bulk writers may then skip the building of old and new cells and call NoteBulkChange once.
  bool ChangesAreUnobserved() const;
  void NoteBulkChange();
  /// Fires the change event for a cell that is written already; it had no content before, or is told as it is now.
  void TellChange(TCellAddress AAddress, bool AWasEmpty);

  // ---- bounds
  int32_t UsedMaxCol() const { return FUsedMaxCol; }
  int32_t UsedMaxRow() const { return FUsedMaxRow; }
  void UpdateUsedBounds(TCellAddress AAddress);
  void ExpandUsedBounds(int32_t ACol, int32_t ARow) { UpdateUsedBounds({ACol, ARow}); }
  void RecalcUsedBounds();
  /// Puts bounds back that stood before; clamped to the sheet.
  void RestoreUsedBounds(int32_t AMaxCol, int32_t AMaxRow);

  // ---- view
  const TSheetViewOptions& View() const { return FView; }
  void SetView(const TSheetViewOptions& AView) { FView = AView; }
  int32_t FrozenRows() const { return FFrozenRows; }
  int32_t FrozenCols() const { return FFrozenCols; }
  void SetFrozenRows(int32_t AValue);  // clamped to 0 through 1048575
  void SetFrozenCols(int32_t AValue);  // clamped to 0 through 16383
  bool IsProtected() const { return FProtected; }
  void SetProtected(bool AValue) { FProtected = AValue; }
  TSheetVisibility Visibility() const { return FVisibility; }
  /// Only stores the state; TWorkbook::SetSheetVisibility keeps one sheet visible.
  void SetVisibility(TSheetVisibility AVisibility) { FVisibility = AVisibility; }

  // ---- links (kept apart from the cells; the address is not validated)
  /// A blank target clears the link; any other is stored untrimmed.
  void SetHyperlink(int32_t ACol, int32_t ARow, TTextArg ATarget);
  /// The link's target, or nothing.
  std::optional<TText> FindHyperlink(int32_t ACol, int32_t ARow) const;
  void ClearHyperlink(int32_t ACol, int32_t ARow);

  // ---- merges
  void MergeRange(const TCellRange& ARange);
  /// Removes the merge that contains the cell, if any.
  void UnmergeAt(int32_t ACol, int32_t ARow);
  struct TMergeSpan {
    bool IsAnchor = false;  // the cell is the top left one of a merge of more than one cell
    int32_t RowSpan = 1;
    int32_t ColSpan = 1;
  };
  TMergeSpan GetMergeSpan(int32_t ACol, int32_t ARow) const;

  /// Widths from character counts, for every used column; limits that are not positive mean the column default
  /// (at least 8.43) and 48 characters.
  void AutoFitColumns(const TTessarineStyleSheet* AStyleSheet, double AMinChars, double AMaxChars);
  /// The same for one column, used or not; one outside the sheet is ignored.
  void AutoFitColumn(int32_t ACol, const TTessarineStyleSheet* AStyleSheet, double AMinChars, double AMaxChars);

  /// The items that a validation's list source offers: those of a literal list, or the stored values, as texts, of a
  /// range on this sheet (a formula gives its source). None for a range on another sheet.
  std::vector<TText> ResolveValidationListItems(std::u16string_view AListSource) const;

  /// Reads the header rows of all tables into their column names; an empty header gives "Column" and its position.
  void RefreshTableColumnNames();

  // ---- structure: this sheet alone; references to it are the workbook's business (TWorkbook::InsertRows ...)
  /// Carries cells and everything that has a place on the sheet along. What leaves the sheet is gone, and so are all
  /// cached results. Links stay where they are. Nothing happens for a start outside the sheet or a count below 1. No
  /// events.
  void InsertRows(int32_t AStart, int32_t ACount);
  void DeleteRows(int32_t AStart, int32_t ACount);
  void InsertColumns(int32_t AStart, int32_t ACount);
  void DeleteColumns(int32_t AStart, int32_t ACount);
  /// Puts ACount lines from AStart before the line ADest of the old numbering; links go along, slicers do not.
  void MoveRows(int32_t AStart, int32_t ACount, int32_t ADest);
  void MoveColumns(int32_t AStart, int32_t ACount, int32_t ADest);

  /// Rewrites the formulas of cells, validations and charts after an edit of the sheet ASheetName (see AdjustFormula);
  /// a formula whose text changes loses its result. AOnSheet: references without a sheet mean that one. No events.
  void AdjustFormulas(TTextArg ASheetName, bool AOnSheet, bool ARows, int64_t AStart, int64_t ADelta);
  /// The same for a move; ADest is the block's new first line.
  void AdjustFormulasForMove(TTextArg ASheetName, bool AOnSheet, bool ARows, int64_t AStart, int64_t ACount,
                             int64_t ADest);
  /// Lets inserted lines inside tables take over formats, and rows also formulas, from the line before the insert, or
  /// behind it where there is none before. Fires the change event for each cell that changes.
  void PropagateTableInsert(bool ARows, int32_t AStart, int32_t ACount);

  TMergedCellList& Merges() { return *FMerges; }
  const TMergedCellList& Merges() const { return *FMerges; }
  TSpillMap& Spills() { return *FSpills; }
  const TSpillMap& Spills() const { return *FSpills; }
  TRowColSizing& Sizing() { return *FSizing; }
  const TRowColSizing& Sizing() const { return *FSizing; }
  TSheetTableList& Tables() { return *FTables; }
  const TSheetTableList& Tables() const { return *FTables; }
  THyperlinkList& Hyperlinks() { return *FHyperlinks; }
  const THyperlinkList& Hyperlinks() const { return *FHyperlinks; }
  TDataValidationList& Validations() { return *FValidations; }
  const TDataValidationList& Validations() const { return *FValidations; }
  TConditionalFormatList& ConditionalFormats() { return *FConditionalFormats; }
  const TConditionalFormatList& ConditionalFormats() const { return *FConditionalFormats; }
  TSheetAutoFilter& AutoFilter() { return *FAutoFilter; }
  const TSheetAutoFilter& AutoFilter() const { return *FAutoFilter; }
  TCellCommentList& Comments() { return *FComments; }
  const TCellCommentList& Comments() const { return *FComments; }
  TSheetSlicerList& Slicers() { return *FSlicers; }
  const TSheetSlicerList& Slicers() const { return *FSlicers; }
  TSheetDrawingList& Drawings() { return *FDrawings; }
  const TSheetDrawingList& Drawings() const { return *FDrawings; }
  TSheetPivotTableList& Pivots() { return *FPivots; }
  const TSheetPivotTableList& Pivots() const { return *FPivots; }
  TPageSetup& PageSetup() { return *FPageSetup; }
  const TPageSetup& PageSetup() const { return *FPageSetup; }
  TSheetSavedView& SavedView() { return *FSavedView; }
  const TSheetSavedView& SavedView() const { return *FSavedView; }

  // ---- for the engine's own floors
  detail::TCellStore& Store() { return *FStore; }
  const detail::TCellStore& Store() const { return *FStore; }

  /// Carries out an edit of this sheet; its formulas keep their texts, or follow the edit in the same pass.
  void EditLines(const detail::TLineEdit& AEdit, bool ARewritesFormulas);
  /// Cells and lists after an edit of the sheet ASheetName, this one's own lines staying in place.
  void RewriteCells(const detail::TLineEdit& AEdit, std::u16string_view ASheetName, bool AOnSheet);
  void RewriteLists(const detail::TLineEdit& AEdit, std::u16string_view ASheetName, bool AOnSheet);

  /// Stores the result of the formula in a cell and tells the change; no effect when the cell is no formula.
  void StoreCachedResult(TCellAddress AAddress, const TCellValue& AResult);

  /// Raised by every change of the used bounds.
  uint64_t BoundsVersion() const { return FBoundsVersion; }

 private:
  void FireChange(TCellAddress AAddress, const TCell& AOldCell, const TCell& ANewCell);
  const detail::TCellSlot* FindSlot(TCellAddress AAddress) const;
  const TCellFormat& FormatOf(TCellAddress AAddress, const detail::TCellSlot* ASlot,
                              const TTessarineStyleSheet* AStyleSheet) const;
  const TRichTextRuns* RunsOf(TCellAddress AAddress, const detail::TCellSlot& ASlot) const;
  void AppendShownValue(const TValueView& AValue, const TCellFormat& AFormat, std::u16string& AText) const;
  void ShiftLists(const detail::TLineEdit& AEdit);
  void MoveLists(const detail::TLineEdit& AEdit);
  double FittingWidth(int32_t ACol, const TTessarineStyleSheet* AStyleSheet, double AMinChars) const;

  enum class TChangeTarget : uint8_t { ctNone, ctWorkbook, ctForeign };

  TText FName;
  TWorkbook* FOwner;  // outlives the sheet
  std::unique_ptr<detail::TCellStore> FStore;
  std::unique_ptr<TMergedCellList> FMerges;
  std::unique_ptr<TSpillMap> FSpills;
  std::unique_ptr<TRowColSizing> FSizing;
  std::unique_ptr<TSheetTableList> FTables;
  std::unique_ptr<THyperlinkList> FHyperlinks;
  std::unique_ptr<TDataValidationList> FValidations;
  std::unique_ptr<TConditionalFormatList> FConditionalFormats;
  std::unique_ptr<TSheetAutoFilter> FAutoFilter;
  std::unique_ptr<TCellCommentList> FComments;
  std::unique_ptr<TSheetSlicerList> FSlicers;
  std::unique_ptr<TSheetDrawingList> FDrawings;
  std::unique_ptr<TSheetPivotTableList> FPivots;
  std::unique_ptr<TPageSetup> FPageSetup;
  std::unique_ptr<TSheetSavedView> FSavedView;
  int32_t FUsedMaxCol = 1;
  int32_t FUsedMaxRow = 1;
  uint64_t FBoundsVersion = 1;
  TSheetViewOptions FView;
  int32_t FFrozenRows = 0;
  int32_t FFrozenCols = 0;
  bool FProtected = false;
  TSheetVisibility FVisibility = svVisible;
  TChangeTarget FChangeTarget;
  std::shared_ptr<const TWorksheetChangeEvent> FOnChange;  // set exactly when FChangeTarget is ctForeign
};

}  // namespace tessarine
