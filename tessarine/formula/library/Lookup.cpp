#include <tessarine/formula/FunctionTable.h>

#include <algorithm>
#include <cstdint>

#include <tessarine/formula/library/detail/ArgReading.h>
#include <tessarine/formula/library/detail/Criteria.h>
#include <tessarine/formula/library/detail/Search.h>

namespace tessarine {

namespace {

using namespace detail;

/// VLOOKUP and HLOOKUP: AArgs are key, table, column or row, [approximate].
TCellValue LookUpInTable(TFormulaArgs AArgs, const TFormulaContext& AContext, bool ADown) {
  if (AArgs.size() < 3) return ValueError();
  const TFormulaArg& table = AArgs[1];
  const int32_t width = ADown ? table.ColCount : table.RowCount;
  if (!table.IsRange || width < 1) return RefError();
  int64_t place = 0;
  if (!ArgAsInt64(AArgs[2], place)) return ValueError();
  if (place < 1 || place > width) return RefError();
  const bool approximate = AArgs.size() < 4 || ArgIsTrue(AArgs[3]);
  const TSearchLine line = ADown ? TSearchLine::FirstColumn(table) : TSearchLine::FirstRow(table);
  const TMatchKey key(AArgs[0].FirstView());
  const int64_t found =
      approximate ? FindEqualOrBelow(line, key, AContext.Indexes) : FindEqual(line, key, AContext.Indexes);
  if (found < 0) return NotAvailable();
  const auto along = static_cast<int32_t>(found);
  const auto across = static_cast<int32_t>(place - 1);
  return ADown ? table.CellAt(along, across) : table.CellAt(across, along);
}

TCellValue CallVLookup(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  return LookUpInTable(AArgs, AContext, true);
}

TCellValue CallHLookup(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  return LookUpInTable(AArgs, AContext, false);
}

TCellValue CallMatch(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (AArgs.size() < 2) return ValueError();
  int64_t type = 1;
  if (AArgs.size() > 2 && !ArgAsInt64(AArgs[2], type)) type = 1;
  const TFormulaArg one = AArgs[1].IsRange ? TFormulaArg() : AsRangeArg(AArgs[1]);
  const TSearchLine line = TSearchLine::All(AArgs[1].IsRange ? AArgs[1] : one);
  int64_t found = -1;
  double number = 0;
  if (type == 0) {
    found = FindEqual(line, TMatchKey(AArgs[0].FirstView()), AContext.Indexes);
  } else if (ArgAsNumber(AArgs[0], number)) {
    found = FindNearest(line, number, type == 1, AContext.Indexes);
  }
  return found < 0 ? NotAvailable() : TCellValue::FromNumber(static_cast<double>(found + 1));
}

TCellValue CallXLookup(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (AArgs.size() < 3) return ValueError();
  const TFormulaArg one = AArgs[1].IsRange ? TFormulaArg() : AsRangeArg(AArgs[1]);
  const TSearchLine line = TSearchLine::All(AArgs[1].IsRange ? AArgs[1] : one);
  const int64_t found = FindEqual(line, TMatchKey(AArgs[0].FirstView()), AContext.Indexes);
  if (found < 0) return AArgs.size() > 3 ? AArgs[3].First() : NotAvailable();
  const TFormulaArg& results = AArgs[2];
  if (!results.IsRange) return found == 0 ? results.First() : RefError();
  return found < results.CellCount() ? TCellValue::FromView(results.ViewAt(found)) : RefError();
}

/// The row or column argument of INDEX; 0 means the first.
bool ReadIndex(TFormulaArgs AArgs, size_t AArg, int64_t& AIndex) {
  AIndex = 1;
  if (AArg < AArgs.size() && !ArgAsInt64(AArgs[AArg], AIndex)) return false;
  return true;
}

TCellValue CallIndex(TFormulaArgs AArgs, const TFormulaContext&) {
  int64_t row = 0;
  int64_t col = 0;
  if (AArgs.size() < 2 || !ReadIndex(AArgs, 1, row) || !ReadIndex(AArgs, 2, col)) return ValueError();
  const TFormulaArg& array = AArgs[0];
  if (!array.IsRange) return row < 2 && col < 2 ? array.First() : RefError();
  if (row == 0) row = 1;
  if (col == 0) col = 1;
  if (row < 1 || row > array.RowCount || col < 1 || col > array.ColCount) return RefError();
  return array.CellAt(static_cast<int32_t>(row - 1), static_cast<int32_t>(col - 1));
}

TCellValue CallRows(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  return TCellValue::FromNumber(AArgs[0].IsRange ? AArgs[0].RowCount : 1);
}

TCellValue CallColumns(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  return TCellValue::FromNumber(AArgs[0].IsRange ? AArgs[0].ColCount : 1);
}

// ROW and COLUMN of a reference that stands in the formula are answered by the evaluator; here the values have been
// read already.

TCellValue CallRow(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (AArgs.empty()) return TCellValue::FromNumber(std::max(AContext.EvalRow, 1));
  return TCellValue::FromNumber(AArgs[0].HasOrigin ? AArgs[0].OriginRow : 1);
}

TCellValue CallColumn(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (AArgs.empty()) return TCellValue::FromNumber(std::max(AContext.EvalCol, 1));
  return TCellValue::FromNumber(AArgs[0].HasOrigin ? AArgs[0].OriginCol : 1);
}

/// The cell of a rectangle that lies in the row or column of the cell entered last.
TCellValue CallSingle(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (AArgs.empty()) return ValueError();
  const TFormulaArg& arg = AArgs[0];
  if (!arg.IsRange || !arg.HasOrigin) return arg.First();
  const int64_t row = arg.RowCount == 1 ? 0 : int64_t{AContext.EvalRow} - arg.OriginRow;
  const int64_t col = arg.ColCount == 1 ? 0 : int64_t{AContext.EvalCol} - arg.OriginCol;
  if (row < 0 || row >= arg.RowCount || col < 0 || col >= arg.ColCount) return ValueError();
  return arg.CellAt(static_cast<int32_t>(row), static_cast<int32_t>(col));
}

// clang-format off
constexpr TFunctionDef kLookupFunctions[] = {
    {.Name = u"COLUMN", .MinArgs = 0, .MaxArgs = 1, .Body = CallColumn, .InCompletion = true,
     .Arguments = u"[reference]", .Description = u"Column number of a reference, or of the formula's own cell."},
    {.Name = u"COLUMNS", .MinArgs = 1, .MaxArgs = 1, .Body = CallColumns, .InCompletion = true,
     .Arguments = u"array", .Description = u"How many columns a rectangle has."},
    {.Name = u"HLOOKUP", .MinArgs = 3, .MaxArgs = 4, .Body = CallHLookup, .InCompletion = true,
     .Arguments = u"key, table, row, [approximate]",
     .Description = u"Looks for a key in the first row of a table and answers from another row of that column."},
    {.Name = u"INDEX", .MinArgs = 2, .MaxArgs = 3, .Body = CallIndex, .InCompletion = true,
     .Arguments = u"array, row, [column]", .Description = u"The cell of a rectangle at a row and column."},
    {.Name = u"MATCH", .MinArgs = 2, .MaxArgs = 3, .Body = CallMatch, .InCompletion = true,
     .Arguments = u"key, range, [type]",
     .Description = u"Position of a key in a range: equal (0), the largest not above (1), the smallest not below (-1)."},
    {.Name = u"ROW", .MinArgs = 0, .MaxArgs = 1, .Body = CallRow, .InCompletion = true,
     .Arguments = u"[reference]", .Description = u"Row number of a reference, or of the formula's own cell."},
    {.Name = u"ROWS", .MinArgs = 1, .MaxArgs = 1, .Body = CallRows, .InCompletion = true,
     .Arguments = u"array", .Description = u"How many rows a rectangle has."},
    {.Name = u"SINGLE", .MinArgs = 1, .MaxArgs = 1, .Body = CallSingle,
     .Arguments = u"value", .Description = u"The one value of a range that lies in the formula's row or column."},
    {.Name = u"VLOOKUP", .MinArgs = 3, .MaxArgs = 4, .Body = CallVLookup, .InCompletion = true,
     .Arguments = u"key, table, column, [approximate]",
     .Description = u"Looks for a key in the first column of a table and answers from another column of that row."},
    {.Name = u"XLOOKUP", .MinArgs = 3, .MaxArgs = 6, .Body = CallXLookup, .InCompletion = true,
     .Arguments = u"key, lookup, return, [if_not_found]",
     .Description = u"Looks for a key in one range and answers from the same place of another."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> LookupFunctions() { return kLookupFunctions; }

}  // namespace tessarine
