#include <tessarine/api/AuthoringSheet.h>

#include <algorithm>
#include <cmath>
#include <string>

#include <tessarine/api/detail/CellEdits.h>
#include <tessarine/core/lists/CellComments.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/PageSetup.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/platform/Errors.h>

namespace tessarine {

namespace {

constexpr int32_t kLeastZoom = 10;
constexpr int32_t kMostZoom = 400;

/// The lines of a sheet from AFirst on.
struct TLines {
  int32_t First;
  int32_t Last;  // below First for none
};

TLines LinesOf(const char* AKind, int32_t AFirst, int32_t ACount, int32_t AMost) {
  if (AFirst < 1 || AFirst > AMost) throw EArgument("Invalid " + std::string(AKind) + ": " + std::to_string(AFirst));
  return {AFirst, ACount < 1 ? AFirst - 1 : AFirst + std::min(ACount - 1, AMost - AFirst)};
}

TLines RowsOf(int32_t AFirst, int32_t ACount = 1) { return LinesOf("row", AFirst, ACount, kMaxRow); }
TLines ColsOf(int32_t AFirst, int32_t ACount = 1) { return LinesOf("column", AFirst, ACount, kMaxCol); }

void CheckSize(double ASize) {
  if (!std::isfinite(ASize) || ASize < 0) throw EArgument("Invalid size: " + std::to_string(ASize));
}

// ---- heights of rows

/// A line of text is as high as the default row is for the default font.
double LineHeight(const TRowColSizing& ASizing, float ASizePt) {
  return ASizing.DefaultRowHeight() * std::max(1.0, static_cast<double>(ASizePt) / TCellFontInfo::Default().Size);
}

/// Lines that a text takes: its own, and where it is wrapped those that its width makes of them.
double LineCount(std::u16string_view AText, const TCellFormat& AFormat, double AWidthChars) {
  const double scale = static_cast<double>(AFormat.Font.Size) / TCellFontInfo::Default().Size;
  const double perLine = std::max(1.0, std::floor(AWidthChars / std::max(scale, 0.1)));
  double lines = 0;
  for (size_t start = 0; start <= AText.size();) {
    const size_t end = std::min(AText.find(u'\n', start), AText.size());
    lines += AFormat.Alignment.WrapText ? std::max(1.0, std::ceil(static_cast<double>(end - start) / perLine)) : 1;
    start = end + 1;
  }
  return lines;
}

/// The height that a stored cell asks for.
double CellHeight(TWorksheet& ASheet, TCellAddress AAddress) {
  const TRowColSizing& sizing = ASheet.Sizing();
  if (ASheet.Merges().IsInsideMerge(AAddress.Col, AAddress.Row)) return 0;
  const TText text = TSheetCellRef(ASheet, AAddress).DisplayText();
  if (text.IsEmpty()) return 0;
  const TCellFormat format = detail::FormatOf(ASheet, ASheet.GetCell(AAddress));
  return LineCount(text, format, sizing.GetColWidthChars(AAddress.Col)) * LineHeight(sizing, format.Font.Size);
}

}  // namespace

TAuthoringSheet::TAuthoringSheet(TWorkbook* AWorkbook, TWorksheet* ASheet) : FWorkbook(AWorkbook), FSheet(ASheet) {
  if (TessarineSheetIndexOf(AWorkbook, ASheet) < 0) throw EArgument("AuthoringSheet: missing workbook/sheet");
}

int32_t TAuthoringSheet::SheetIndex() const { return FWorkbook->IndexOfSheet(FSheet); }

void TAuthoringSheet::Changed() const { FWorkbook->MarkModified(); }

// ---- links and notes

void TAuthoringSheet::SetHyperlink(TTextArg ACellA1, TTextArg ATarget) const {
  const TCellAddress cell = detail::CellOfText(ACellA1);
  FSheet->SetHyperlink(cell.Col, cell.Row, ATarget.View());
  Changed();
}

void TAuthoringSheet::ClearHyperlink(TTextArg ACellA1) const { SetHyperlink(ACellA1.View(), u""); }

std::optional<TText> TAuthoringSheet::TryGetHyperlink(TTextArg ACellA1) const {
  const TCellAddress cell = detail::CellOfText(ACellA1);
  return FSheet->FindHyperlink(cell.Col, cell.Row);
}

void TAuthoringSheet::SetComment(TTextArg ACellA1, TTextArg AText, TTextArg AAuthor) const {
  const TCellAddress cell = detail::CellOfText(ACellA1);
  FSheet->Comments().SetComment(cell.Col, cell.Row, TText(AAuthor.View()), TText(AText.View()));
  Changed();
}

void TAuthoringSheet::ClearComment(TTextArg ACellA1) const { SetComment(ACellA1.View(), u""); }

// ---- view

void TAuthoringSheet::Freeze(int32_t ARows, int32_t ACols) const {
  FSheet->SetFrozenRows(ARows);
  FSheet->SetFrozenCols(ACols);
  Changed();
}

void TAuthoringSheet::SetZoom(int32_t APercent) const {
  TSheetViewOptions view = FSheet->View();
  view.Zoom = std::clamp(APercent, kLeastZoom, kMostZoom);
  FSheet->SetView(view);
  Changed();
}

void TAuthoringSheet::SetRtl(bool AValue) const {
  TSheetViewOptions view = FSheet->View();
  view.RightToLeft = AValue;
  FSheet->SetView(view);
  Changed();
}

void TAuthoringSheet::SetVisibility(TSheetVisibility AVisibility) const {
  FWorkbook->SetSheetVisibility(SheetIndex(), AVisibility);
  Changed();
}

TSheetVisibility TAuthoringSheet::Visibility() const { return FSheet->Visibility(); }

void TAuthoringSheet::SetPrintArea(TTextArg ARangeA1) const {
  FSheet->PageSetup().SetPrintArea(detail::RangeOfText(ARangeA1));
  Changed();
}

void TAuthoringSheet::ClearPrintArea() const {
  FSheet->PageSetup().ClearPrintArea();
  Changed();
}

// ---- structure

void TAuthoringSheet::InsertRows(int32_t AStart, int32_t ACount) const {
  FWorkbook->InsertRows(SheetIndex(), AStart, ACount);
}

void TAuthoringSheet::DeleteRows(int32_t AStart, int32_t ACount) const {
  FWorkbook->DeleteRows(SheetIndex(), AStart, ACount);
}

void TAuthoringSheet::InsertColumns(int32_t AStart, int32_t ACount) const {
  FWorkbook->InsertColumns(SheetIndex(), AStart, ACount);
}

void TAuthoringSheet::DeleteColumns(int32_t AStart, int32_t ACount) const {
  FWorkbook->DeleteColumns(SheetIndex(), AStart, ACount);
}

// ---- sizes

void TAuthoringSheet::HideRows(int32_t AFirst, int32_t ACount, bool AHidden) const {
  const TLines rows = RowsOf(AFirst, ACount);
  for (int32_t row = rows.First; row <= rows.Last; ++row) FSheet->Sizing().SetRowHidden(row, AHidden);
  Changed();
}

void TAuthoringSheet::HideColumns(int32_t AFirst, int32_t ACount, bool AHidden) const {
  const TLines cols = ColsOf(AFirst, ACount);
  for (int32_t col = cols.First; col <= cols.Last; ++col) FSheet->Sizing().SetColHidden(col, AHidden);
  Changed();
}

void TAuthoringSheet::SetRowOutlineLevel(int32_t AFirst, int32_t ACount, int32_t ALevel) const {
  const TLines rows = RowsOf(AFirst, ACount);
  for (int32_t row = rows.First; row <= rows.Last; ++row) FSheet->Sizing().SetRowOutlineLevel(row, ALevel);
  Changed();
}

void TAuthoringSheet::SetColOutlineLevel(int32_t AFirst, int32_t ACount, int32_t ALevel) const {
  const TLines cols = ColsOf(AFirst, ACount);
  for (int32_t col = cols.First; col <= cols.Last; ++col) FSheet->Sizing().SetColOutlineLevel(col, ALevel);
  Changed();
}

void TAuthoringSheet::SetColWidthChars(int32_t ACol, double AWidthChars) const {
  ColsOf(ACol);
  CheckSize(AWidthChars);
  FSheet->Sizing().SetColWidthChars(ACol, AWidthChars);
  Changed();
}

void TAuthoringSheet::SetRowHeightPt(int32_t ARow, double AHeightPt) const {
  RowsOf(ARow);
  CheckSize(AHeightPt);
  FSheet->Sizing().SetRowHeightPt(ARow, AHeightPt);
  Changed();
}

double TAuthoringSheet::GetColWidthChars(int32_t ACol) const {
  return FSheet->Sizing().GetColWidthChars(ColsOf(ACol).First);
}

double TAuthoringSheet::GetRowHeightPt(int32_t ARow) const {
  return FSheet->Sizing().GetRowHeightPt(RowsOf(ARow).First);
}

void TAuthoringSheet::AutoFitColumn(int32_t ACol) const {
  FSheet->AutoFitColumn(ColsOf(ACol).First, &FWorkbook->StyleSheet(), 0, 0);
  Changed();
}

void TAuthoringSheet::AutoFitColumns() const {
  FSheet->AutoFitColumns(&FWorkbook->StyleSheet(), 0, 0);
  Changed();
}

/// Rows without cells get the default height back.
void TAuthoringSheet::FitRows(int32_t AFirst, int32_t ALast) const {
  TRowColSizing& sizing = FSheet->Sizing();
  std::vector<double> heights(static_cast<size_t>(ALast - AFirst + 1), sizing.DefaultRowHeight());
  FSheet->Store().ForEachByRow({1, AFirst, kMaxCol, ALast}, [&](int32_t ACol, int32_t ARow, const detail::TCellSlot&) {
    double& height = heights[static_cast<size_t>(ARow - AFirst)];
    height = std::min(std::max(height, CellHeight(*FSheet, {ACol, ARow})), kMaxRowHeightPt);
  });
  for (int32_t row = AFirst; row <= ALast; ++row) {
    const double height = heights[static_cast<size_t>(row - AFirst)];
    if (sizing.HasCustomRowHeight(row)) {
      sizing.SetRowHeightPt(row, height);
    } else {
      sizing.SetAutoRowHeightPt(row, height);
    }
  }
  Changed();
}

void TAuthoringSheet::AutoFitRow(int32_t ARow) const { FitRows(RowsOf(ARow).First, ARow); }

void TAuthoringSheet::AutoFitRows() const { FitRows(1, FSheet->UsedMaxRow()); }

}  // namespace tessarine
