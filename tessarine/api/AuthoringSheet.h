#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/api/SheetCell.h>
#include <tessarine/api/SheetDrawings.h>
#include <tessarine/api/SheetRange.h>
#include <tessarine/core/lists/ConditionalFormats.h>
#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/core/lists/PivotTables.h>
#include <tessarine/core/lists/Slicers.h>
#include <tessarine/features/Sorting.h>

namespace tessarine {

class TOlapConnection;
class TPivotCache;
class TSheetTable;

/// A sheet together with its workbook: everything that a host program does to a sheet, in one place and in the words
/// of a person who builds a document. A value of two pointers; workbook and sheet must outlive it.
///
/// Every address in text is read first: one that cannot be read throws EArgument ("Invalid cell address: TEXT",
/// "Invalid range: TEXT"), and nothing has been changed. Names are found without regard to ASCII case; one that does
/// not exist throws EArgument ("Table not found: NAME"). Every operation that changes the sheet marks the workbook
/// modified. Only Sort, the charts and the pictures can be taken back through the undo manager.
class TESSARINE_API TAuthoringSheet {
 public:
  /// Throws EArgument "AuthoringSheet: missing workbook/sheet" for null, and for a sheet of another workbook.
  TAuthoringSheet(TWorkbook* AWorkbook, TWorksheet* ASheet);
  static TAuthoringSheet Create(TWorkbook* AWorkbook, TWorksheet* ASheet) { return {AWorkbook, ASheet}; }

  TWorkbook& Workbook() const { return *FWorkbook; }
  TWorksheet& Sheet() const { return *FSheet; }

  TSheetCellRef GetCellRef(TTextArg AA1) const { return {*FSheet, AA1.View()}; }
  TSheetRangeRef Range(TTextArg AA1) const { return {*FSheet, AA1.View()}; }

  // ---- drawings. Indexes are 0-based and count the charts, or the pictures, of the sheet.
  /// See TessarineAddChart.
  TSheetDrawing& AddChart(TTextArg ATitle, TSheetChartType AChartType, std::vector<TSheetChartSeries> ASeries,
                          TTextArg AAnchorA1 = u"", int32_t AWidthCols = 8, int32_t AHeightRows = 12) const;
  TSheetDrawing& AddChart(TTextArg ATitle, TSheetChartType AChartType, TTextArg AValuesFormula,
                          TTextArg ACategoriesFormula, TTextArg AAnchorA1 = u"", int32_t AWidthCols = 8,
                          int32_t AHeightRows = 12) const;
  /// The path is UTF-8; its extension (jpg, jpeg, gif, bmp, else png) tells the content type. Throws EFileAccess "File
  /// not found: PATH" or for a file that cannot be read, ELimit for one of more than kMaxPictureBytes.
  TSheetDrawing& AddPictureFromFile(const std::string& AFilePath, TTextArg AAnchorA1 = u"", int32_t AWidthPx = 0,
                                    int32_t AHeightPx = 0) const;
  /// See TessarineAddPictureBytes.
  TSheetDrawing& AddPictureFromBytes(std::span<const std::byte> ABytes, TTextArg AContentType = u"",
                                     TTextArg AAnchorA1 = u"", int32_t AWidthPx = 0, int32_t AHeightPx = 0) const;
  static constexpr uint64_t kMaxPictureBytes = uint64_t{256} << 20;
  /// APresetGeom names the shape as office files do ("rect", "ellipse", "rightArrow"; empty is "rect"). A colour of 0
  /// is no fill, or no line. A size of 0 is 240 by 180 pixels.
  TSheetDrawing& AddShape(TTextArg APresetGeom, TTextArg AAnchorA1, int32_t AWidthPx, int32_t AHeightPx,
                          TSheetColor AFill = kOpaqueWhite, TSheetColor ALine = kOpaqueBlack) const;
  /// Strokes of a pen as InkML. Throws EArgument "AddInk: empty ink data".
  TSheetDrawing& AddInkFromInkML(std::span<const std::byte> ABytes, TTextArg AAnchorA1, int32_t AWidthPx,
                                 int32_t AHeightPx) const;
  int32_t ChartCount() const { return CountDrawings(sdkChart); }
  /// Null for an index out of range.
  TSheetDrawing* GetChart(int32_t AIndex) const { return FindDrawing(sdkChart, AIndex); }
  /// False for an index out of range.
  bool DeleteChart(int32_t AIndex) const { return DeleteDrawing(sdkChart, AIndex); }
  int32_t PictureCount() const { return CountDrawings(sdkPicture); }
  TSheetDrawing* GetPicture(int32_t AIndex) const { return FindDrawing(sdkPicture, AIndex); }
  bool DeletePicture(int32_t AIndex) const { return DeleteDrawing(sdkPicture, AIndex); }

  // ---- tables
  /// A table over a range; its columns take their names from the header, "Column" and a number where there is none. An
  /// empty name is "Table" and one more than the workbook's tables. Throws EArgument "Table name already exists: NAME"
  /// for a name that any table of the workbook has.
  TSheetTable& AddTable(TTextArg AName, TTextArg ARangeA1, bool AHasHeader = true, bool AShowFilter = true) const;
  /// Puts the values that the formula in a cell spills in place of the formula, and a table over them. An empty name is
  /// "Import_" and the cell's address. Throws EState for a cell that spills nothing.
  TSheetTable& MaterializeSpillAsTable(TTextArg AAnchorA1, TTextArg ATableName, bool AHasHeader = true) const;
  /// The table goes, its cells stay. Throws EArgument "Table not found: NAME".
  void DeleteTable(TTextArg AName) const;

  // ---- pivot tables, known by their names within the sheet. They are defined first, field by field, and write nothing
  // before RefreshPivotTable. An unknown name throws EArgument "PivotTable not found: NAME".
  /// A pivot table of the records in a range with a header row ("A1:F500", or "Data!A1:F500" for another sheet), whose
  /// output will begin in ADestA1. An empty name is "PivotTable" and one more than the sheet's pivot tables. Throws
  /// EArgument "PivotTable name already exists: NAME" and "Sheet not found: NAME", and ELimit for a source of too many
  /// values.
  TPivotTable& AddPivotTable(TTextArg AName, TTextArg ASourceRangeA1, TTextArg ADestA1) const;
  /// A pivot table that consolidates several ranges, each with labels in its first row and column. Its fields are
  /// "Page", "Row", "Column" and "Value".
  TPivotTable& AddPivotTableMulti(TTextArg AName, const std::vector<TText>& ARanges, TTextArg ADestA1) const;
  /// A pivot table of a connection of the workbook; its fields are "Member" and "Value". Throws EArgument "OLAP
  /// connection not found: ID".
  TPivotTable& AddPivotTableOlap(TTextArg AName, TTextArg AConnectionId, TTextArg ADestA1) const;
  /// Gives a field of the source a role in a pivot table; AAgg counts for values. Throws EArgument "Field not found:
  /// NAME" and EState "Pivot cache missing".
  void AddPivotField(TTextArg APivotName, TTextArg AFieldName, TPivotFieldRole ARole, TPivotAgg AAgg = paSum) const;
  /// Reads the source and writes the table; see TPivotEngine::Refresh.
  void RefreshPivotTable(TTextArg AName) const;
  /// Clears what its last refresh wrote. Its cache goes with the last table and slicer that use it.
  void DeletePivotTable(TTextArg AName) const;
  /// A column chart that follows a pivot table whenever that is refreshed. Throws EState "Refresh the PivotTable before
  /// adding a PivotChart" when the table shows no values.
  TSheetDrawing& AddPivotChart(TTextArg APivotName, TTextArg AAnchorA1 = u"", int32_t AWidthCols = 8,
                               int32_t AHeightRows = 12) const;
  /// AValueFieldIndex counts the table's value fields from 0. Throws EArgument "Value field index out of range".
  void SetPivotFieldShowAs(TTextArg APivotName, int32_t AValueFieldIndex, TPivotShowAs AShowAs) const;
  /// Adds a field that is computed for each record (see TPivotCalcField) and its sum as a value. Throws EState "Pivot
  /// cache missing".
  void AddPivotCalculatedField(TTextArg APivotName, TTextArg AFieldName, TTextArg AFormula) const;
  /// A connection of the workbook under an id; the one that has it already.
  TOlapConnection& AddOlapConnection(TTextArg AId) const;

  // ---- slicers. A change of a selection refreshes the pivot tables that the slicer drives. An unknown name throws
  // EArgument "Slicer not found: NAME".
  /// A slicer for a field of a pivot table; an empty name is the field's. Throws EArgument "PivotTable not found: NAME"
  /// and "Field not found: NAME", EState "Pivot cache missing".
  TSheetSlicer& AddSlicer(TTextArg AName, TTextArg APivotName, TTextArg AFieldName, TTextArg AAnchorA1) const;
  TSheetSlicer& AddTimeline(TTextArg AName, TTextArg APivotName, TTextArg AFieldName, TTextArg AAnchorA1,
                            TSlicerTimelineLevel ALevel = stlMonths) const;
  /// No items mean all.
  void SetSlicerSelection(TTextArg ASlicerName, std::vector<TText> AItems) const;
  void ToggleSlicerItem(TTextArg ASlicerName, TTextArg AItem) const;
  void ClearSlicerSelection(TTextArg ASlicerName) const;

  // ---- filter and sort
  /// Filters over a range with a header row, all rows shown; criteria: TSheetAutoFilter and ApplyAutoFilter.
  void EnableAutoFilter(TTextArg ARangeA1) const;
  /// Shows the rows that were filtered out.
  void ClearAutoFilter() const;
  /// See TessarineSortRange.
  void Sort(TTextArg ARangeA1, int32_t AKeyCol, bool AAscending = true, bool AHasHeader = false) const;
  void Sort(TTextArg ARangeA1, std::span<const TSheetSortKey> AKeys, bool AHasHeader = false) const;

  // ---- rules
  /// Formats the cells of a range whose value compares so with constants. AFill and AFont of 0 leave the fill and the
  /// font's colour alone, ABold of false its weight.
  void AddConditionalFormat(TTextArg ARangeA1, TCfOperator AOp, TTextArg AFormula1, TTextArg AFormula2 = u"",
                            TSheetColor AFill = 0, TSheetColor AFont = 0, bool ABold = false) const;
  void ClearConditionalFormats() const;
  /// Lets only the items of a list in: "Yes,No", or a range ("=$F$1:$F$9"). The prompt is shown at the cell, the error
  /// when an entry is refused; an empty one is the usual text.
  void AddListValidation(TTextArg ARangeA1, TTextArg AListOrFormula, TTextArg APrompt = u"",
                         TTextArg AError = u"") const;
  /// Lets only whole numbers in that compare so with the bounds.
  void AddWholeValidation(TTextArg ARangeA1, TDataValidationOperator AOp, TTextArg AFormula1,
                          TTextArg AFormula2 = u"") const;
  void ClearValidations() const;

  // ---- links and notes
  /// A blank target clears the link.
  void SetHyperlink(TTextArg ACellA1, TTextArg ATarget) const;
  void ClearHyperlink(TTextArg ACellA1) const;
  std::optional<TText> TryGetHyperlink(TTextArg ACellA1) const;
  /// A blank text clears the note.
  void SetComment(TTextArg ACellA1, TTextArg AText, TTextArg AAuthor = u"") const;
  void ClearComment(TTextArg ACellA1) const;

  // ---- view
  /// Rows and columns that stay at the top and at the left; counts below 0 are 0.
  void Freeze(int32_t ARows, int32_t ACols) const;
  /// Percent, clamped to 10 through 400.
  void SetZoom(int32_t APercent) const;
  void SetRtl(bool AValue) const;
  /// Throws EState "Cannot hide the only visible worksheet".
  void SetVisibility(TSheetVisibility AVisibility) const;
  void Hide(bool AVeryHidden = false) const { SetVisibility(AVeryHidden ? svVeryHidden : svHidden); }
  void Unhide() const { SetVisibility(svVisible); }
  TSheetVisibility Visibility() const;
  bool IsVisible() const { return Visibility() == svVisible; }
  void SetPrintArea(TTextArg ARangeA1) const;
  void ClearPrintArea() const;

  // ---- structure: as TWorkbook::InsertRows and the others; nothing happens for lines outside the sheet.
  void InsertRows(int32_t AStart, int32_t ACount = 1) const;
  void DeleteRows(int32_t AStart, int32_t ACount = 1) const;
  void InsertColumns(int32_t AStart, int32_t ACount = 1) const;
  void DeleteColumns(int32_t AStart, int32_t ACount = 1) const;

  // ---- sizes of lines, 1-based. A first line outside the sheet throws EArgument "Invalid row: N" or "Invalid column:
  // N"; a count that leaves the sheet ends with it. Sizes that are negative or no number throw EArgument.
  void HideRows(int32_t AFirst, int32_t ACount = 1, bool AHidden = true) const;
  void HideColumns(int32_t AFirst, int32_t ACount = 1, bool AHidden = true) const;
  /// 0 (none) through 7.
  void SetRowOutlineLevel(int32_t AFirst, int32_t ACount, int32_t ALevel) const;
  void SetColOutlineLevel(int32_t AFirst, int32_t ACount, int32_t ALevel) const;
  void SetColWidthChars(int32_t ACol, double AWidthChars) const;
  void SetRowHeightPt(int32_t ARow, double AHeightPt) const;
  double GetColWidthChars(int32_t ACol) const;
  double GetRowHeightPt(int32_t ARow) const;
  /// Widths from character counts, from the default width to 48 characters; see TWorksheet::AutoFitColumns.
  void AutoFitColumn(int32_t ACol) const;
  void AutoFitColumns() const;
  /// Heights from font sizes and counts of lines, as far as they can be told without a canvas: at least the default
  /// height, at most kMaxRowHeightPt. Merged cells do not count.
  void AutoFitRow(int32_t ARow) const;
  void AutoFitRows() const;
  static constexpr double kMaxRowHeightPt = 409;

 private:
  int32_t SheetIndex() const;
  void Changed() const;
  void FitRows(int32_t AFirst, int32_t ALast) const;
  int32_t CountDrawings(TSheetDrawingKind AKind) const;
  TSheetDrawing* FindDrawing(TSheetDrawingKind AKind, int32_t AIndex) const;
  bool DeleteDrawing(TSheetDrawingKind AKind, int32_t AIndex) const;
  TSheetTable& AddTableOver(TText AName, const TCellRange& ARange, bool AHasHeader, bool AShowFilter) const;
  TText FreeTableName(std::u16string_view AName) const;
  TText FreePivotName(std::u16string_view AName) const;
  TPivotTable& AddPivot(TText AName, TPivotCache& ACache, TCellAddress ADest) const;
  TPivotTable& PivotOf(std::u16string_view AName) const;
  TPivotCache& CacheOf(const TPivotTable& ATable) const;
  int32_t FieldOf(const TPivotTable& ATable, std::u16string_view AFieldName) const;
  TSheetSlicer& AddSlicerOfKind(TSlicerKind AKind, std::u16string_view AName, std::u16string_view APivotName,
                                std::u16string_view AFieldName, std::u16string_view AAnchorA1) const;
  TSheetSlicer& SlicerOf(std::u16string_view AName) const;
  void RefreshSliced(const TSheetSlicer& ASlicer) const;

  TWorkbook* FWorkbook;
  TWorksheet* FSheet;
};

}  // namespace tessarine
