#pragma once

#include <cstdint>
#include <optional>

#include <tessarine/Export.h>
#include <tessarine/api/AuthoringSheet.h>
#include <tessarine/core/format/CellFormat.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

/// The defined names of a workbook. Names count trimmed, without "$" and in upper case.
class TESSARINE_API TWorkbookNamesFacade {
 public:
  explicit TWorkbookNamesFacade(TWorkbook& AWorkbook) : FWorkbook(&AWorkbook) {}

  /// Adds or replaces; a formula without a leading "=" gets one. Throws EArgument "Invalid name: TEXT" for a blank
  /// name.
  void Define(TTextArg AName, TTextArg AFormula) const;
  /// False when there is no such name.
  bool Delete(TTextArg AName) const;
  /// The formula, with its "=".
  std::optional<TText> TryGet(TTextArg AName) const;

 private:
  TWorkbook* FWorkbook;
};

/// The formats of a workbook by index.
class TESSARINE_API TWorkbookStylesFacade {
 public:
  explicit TWorkbookStylesFacade(TWorkbook& AWorkbook) : FWorkbook(&AWorkbook) {}

  /// The index for TSheetCellRef::SetStyleIndex. A new one every time: add a format once and use it often.
  int32_t Add(const TCellFormat& AFormat) const;
  /// The default format for an index that does not exist.
  TCellFormat Resolve(int32_t AStyleIndex) const;

 private:
  TWorkbook* FWorkbook;
};

/// A workbook as host programs write to it:
/// `TAuthoringWorkbook book(workbook); book.UseSheet(0).GetCellRef("A1").SetValue("Hello");`
/// A value of one pointer; the workbook must outlive it.
class TESSARINE_API TAuthoringWorkbook {
 public:
  explicit TAuthoringWorkbook(TWorkbook& AWorkbook) : FWorkbook(&AWorkbook) {}

  TWorkbook& Workbook() const { return *FWorkbook; }

  /// The sheet of a name, without regard to ASCII case. Throws EArgument "Sheet not found: NAME".
  TWorksheet& GetSheetByName(TTextArg AName) const;
  TAuthoringSheet UseSheet(TTextArg AName) const;
  /// 0-based. Throws EArgument "Sheet not found: INDEX".
  TAuthoringSheet UseSheet(int32_t AIndex) const;
  /// Throws EArgument "AuthoringSheet: missing workbook/sheet" in a workbook without sheets.
  TAuthoringSheet UseActiveSheet() const;
  /// Appends a sheet and marks the workbook modified. An empty name is the first free one of "Sheet1", "Sheet2" and so
  /// on. Throws EArgument "Sheet name already exists: NAME".
  TAuthoringSheet AddWorksheet(TTextArg AName = u"") const;

  TWorkbookNamesFacade Names() const { return TWorkbookNamesFacade(*FWorkbook); }
  TWorkbookStylesFacade Styles() const { return TWorkbookStylesFacade(*FWorkbook); }

 private:
  TWorkbook* FWorkbook;
};

}  // namespace tessarine
