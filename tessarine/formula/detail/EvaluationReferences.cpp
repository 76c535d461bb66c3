#include <tessarine/formula/detail/Evaluation.h>

#include <algorithm>
#include <cmath>

#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

/// An argument as a whole number, cut toward zero; false when it is no number.
bool WholeArg(const TFormulaArg& AArg, double& ANumber) {
  double number = 0;
  if (!AsNumber(AArg.FirstView(), number)) return false;
  ANumber = std::trunc(number);
  return true;
}

/// The rectangle that OFFSET names; false when it does not lie on the sheet.
bool OffsetRange(const TFormulaArg& AFrom, double ARows, double ACols, double AHeight, double AWidth,
                 TCellRange& ARange) {
  if (!(AHeight >= 1) || !(AWidth >= 1)) return false;
  const double col = AFrom.OriginCol + ACols;
  const double row = AFrom.OriginRow + ARows;
  if (!(col >= 1) || !(row >= 1) || !(col + AWidth - 1 <= kMaxCol) || !(row + AHeight - 1 <= kMaxRow)) return false;
  ARange.StartCol = static_cast<int32_t>(col);
  ARange.StartRow = static_cast<int32_t>(row);
  ARange.EndCol = static_cast<int32_t>(col + AWidth - 1);
  ARange.EndRow = static_cast<int32_t>(row + AHeight - 1);
  return true;
}

}  // namespace

TCellValue TEvaluation::EvalTableRef(const TProgramFrame& AFrame, const TProgramNode& ANode) {
  const auto area = ResolveTableColumn(AFrame.SheetIndex, ANode.Text, ANode.ColumnName);
  return area.Found ? IntersectCells(area.SheetIndex, area.Range) : TCellValue::FromError(ceRef);
}

/// The data of a table as an argument: it knows its corner, but not its sheet.
TFormulaArg TEvaluation::EvalTableArg(const TProgramFrame& AFrame, std::u16string_view ATable,
                                      std::u16string_view AColumn) {
  const auto area = ResolveTableColumn(AFrame.SheetIndex, ATable, AColumn);
  if (!area.Found) return TFormulaArg::FromError(ceRef);
  TFormulaArg result = ReadRectangle(area.SheetIndex, area.Range);
  result.OriginSheetIndex = -1;
  return result;
}

/// One cell by the text of a reference. Of a column it is the cell in the row entered last, of a row that in the
/// column, of any other rectangle the top left one.
TCellValue TEvaluation::EvalIndirect(std::u16string_view AText, int32_t ASheetIndex) {
  std::u16string text(TrimSpaces(AText));
  std::erase(text, u'$');
  if (text.empty()) return TCellValue::FromError(ceRef);
  std::u16string_view reference = text;
  int32_t sheet = ResolveSheetIndex(ASheetIndex, {});
  if (const size_t mark = text.find(u'!'); mark != std::u16string::npos) {
    std::u16string_view name = reference.substr(0, mark);
    if (name.size() >= 2 && name.front() == u'\'' && name.back() == u'\'') name = name.substr(1, name.size() - 2);
    reference.remove_prefix(mark + 1);
    sheet = ResolveSheetIndex(ASheetIndex, name);
  }
  if (sheet < 0) return TCellValue::FromError(ceRef);
  if (reference.find(u':') == std::u16string_view::npos) {
    const TCellAddress at = TCellAddress::FromA1(reference);
    if (at.Col < 1 || at.Row < 1) return TCellValue::FromError(ceRef);
    return TCellValue::FromView(ReadCell(sheet, at.Col, at.Row));
  }
  const TCellRange range = TCellRange::FromA1(reference).Normalize();
  if (range.StartCol < 1 || range.StartRow < 1) return TCellValue::FromError(ceRef);
  int32_t col = range.StartCol;
  int32_t row = range.StartRow;
  if (range.StartCol == range.EndCol && range.Contains(col, EvalRow)) {
    row = EvalRow;
  } else if (range.StartRow == range.EndRow && range.Contains(EvalCol, row)) {
    col = EvalCol;
  }
  return TCellValue::FromView(ReadCell(sheet, col, row));
}

/// Reads from the sheet of the formula, whichever sheet the first argument lies on.
TFormulaArg TEvaluation::EvalOffset(const TProgramFrame& AFrame, const TProgramNode& ANode) {
  TArgFrame frame(FArgs, ANode.ChildCount);
  EvalArgs(AFrame, ANode, frame);
  const auto args = frame.Values();
  const TFormulaArg& from = args[0];
  if (!from.HasOrigin) return TFormulaArg::FromError(ceValue);
  double rows = 0;
  double cols = 0;
  if (!WholeArg(args[1], rows) || !WholeArg(args[2], cols)) return TFormulaArg::FromError(ceValue);
  double height = std::max(from.RowCount, 1);
  double width = std::max(from.ColCount, 1);
  if (args.size() > 3) WholeArg(args[3], height);
  if (args.size() > 4) WholeArg(args[4], width);
  TCellRange range;
  if (!OffsetRange(from, rows, cols, height, width, range)) return TFormulaArg::FromError(ceRef);
  return ReadRectangle(AFrame.SheetIndex, range);
}

}  // namespace tessarine::detail
