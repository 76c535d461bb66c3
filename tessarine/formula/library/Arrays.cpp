#include <tessarine/formula/FunctionTable.h>

#include <tessarine/formula/library/detail/ArrayBodies.h>

namespace tessarine {

namespace detail {

bool MayGenerate(int64_t ARows, int64_t ACols, int64_t AGiven) {
  if (!FitsArranged(ARows, ACols)) return false;
  const int64_t cells = ARows * ACols;
  return cells - AGiven <= kMaxGeneratedCells && (cells <= kMaxGeneratedCells || AGiven > kMaxGeneratedCells);
}

std::vector<TValueView> ReadColumn(const TFormulaArg& ARectangle, int32_t ACol) {
  std::vector<TValueView> values(static_cast<size_t>(ARectangle.RowCount));
  if (ARectangle.IsView()) {
    const TFormulaArg column =
        TFormulaArg::FromView(*ARectangle.ViewSheet(), ARectangle.OriginSheetIndex, ARectangle.OriginCol + ACol,
                              ARectangle.OriginRow, ARectangle.RowCount, 1);
    ForEachNonBlank(column,
                    [&](int64_t AIndex, const TValueView& AValue) { values[static_cast<size_t>(AIndex)] = AValue; });
  } else {
    for (int32_t row = 0; row < ARectangle.RowCount; ++row)
      values[static_cast<size_t>(row)] = ARectangle.ViewAt(row, ACol);
  }
  return values;
}

namespace {

/// Whether so many rows of a view are picked that whole columns are read faster than their cells one by one.
bool PicksMuchOf(const TFormulaArg& ARectangle, size_t ARows) {
  constexpr size_t kFewRows = 64;
  return ARectangle.IsView() && ARows > kFewRows && ARows > static_cast<size_t>(ARectangle.RowCount) / 8;
}

/// Column by column. The texts are met in any order; what will be counted up soon is fetched ahead.
TFormulaArg PickRowsByColumn(const TFormulaArg& ARectangle, std::span<const uint32_t> ARows) {
  constexpr size_t kAhead = 16;
  const auto cols = static_cast<size_t>(ARectangle.ColCount);
  std::vector<TCellValue> cells(ARows.size() * cols);
  for (size_t col = 0; col < cols; ++col) {
    const std::vector<TValueView> values = ReadColumn(ARectangle, static_cast<int32_t>(col));
    for (size_t i = 0; i < ARows.size(); ++i) {
      if (i + kAhead < ARows.size()) {
        const TValueView& next = values[ARows[i + kAhead]];
        if (next.Kind == cvkText) __builtin_prefetch(next.Block);
      }
      const TValueView& value = values[ARows[i]];
      if (!value.IsEmpty()) cells[i * cols + col] = TCellValue::FromView(value);
    }
  }
  return TFormulaArg::FromRange(std::move(cells), static_cast<int32_t>(ARows.size()), ARectangle.ColCount);
}

}  // namespace

TFormulaArg PickRows(const TFormulaArg& ARectangle, std::span<const uint32_t> ARows) {
  const auto rows = static_cast<int64_t>(ARows.size());
  if (!FitsArranged(rows, ARectangle.ColCount)) return ErrorArg(ceNum);
  if (PicksMuchOf(ARectangle, ARows.size())) return PickRowsByColumn(ARectangle, ARows);
  std::vector<TCellValue> cells;
  cells.reserve(static_cast<size_t>(rows * ARectangle.ColCount));
  for (const uint32_t row : ARows) {
    for (int32_t col = 0; col < ARectangle.ColCount; ++col) {
      cells.push_back(TCellValue::FromView(ARectangle.ViewAt(static_cast<int32_t>(row), col)));
    }
  }
  return TFormulaArg::FromRange(std::move(cells), static_cast<int32_t>(rows), ARectangle.ColCount);
}

TFormulaArg PickCols(const TFormulaArg& ARectangle, std::span<const uint32_t> ACols) {
  const auto cols = static_cast<int64_t>(ACols.size());
  if (!FitsArranged(ARectangle.RowCount, cols)) return ErrorArg(ceNum);
  std::vector<TCellValue> cells;
  cells.reserve(static_cast<size_t>(ARectangle.RowCount * cols));
  for (int32_t row = 0; row < ARectangle.RowCount; ++row) {
    for (const uint32_t col : ACols) {
      cells.push_back(TCellValue::FromView(ARectangle.ViewAt(row, static_cast<int32_t>(col))));
    }
  }
  return TFormulaArg::FromRange(std::move(cells), ARectangle.RowCount, static_cast<int32_t>(cols));
}

std::optional<std::vector<TCellValue>> AllCells(const TFormulaArg& ARectangle) {
  if (ARectangle.CellCount() > kMaxArrangedCells) return std::nullopt;
  TFormulaArg own = ARectangle;
  own.Materialize();
  return own.TakeCells();
}

int64_t IntegerOr(TFormulaArgs AArgs, size_t AIndex, int64_t ADefault) {
  int64_t number = 0;
  return AIndex < AArgs.size() && ArgAsInt64(AArgs[AIndex], number) ? number : ADefault;
}

double NumberOr(TFormulaArgs AArgs, size_t AIndex, double ADefault) {
  double number = 0;
  return AIndex < AArgs.size() && ArgAsNumber(AArgs[AIndex], number) ? number : ADefault;
}

bool FlagOf(TFormulaArgs AArgs, size_t AIndex) { return NumberOr(AArgs, AIndex, 0) != 0; }

}  // namespace detail

namespace {

using namespace detail;

TCellValue CallFirstRandom(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  return CallRandArray(AArgs, AContext).First();
}

// clang-format off
constexpr TFunctionDef kArrayFunctions[] = {
    {.Name = u"CHOOSECOLS", .MinArgs = 2, .Tier = ftrArray, .ArrayBody = CallChooseCols, .ArrayMinArgs = 2,
     .InCompletion = true, .Arguments = u"array, column1, [column2], ...",
     .Description = u"The named columns of a rectangle; negative numbers count from the end."},
    {.Name = u"CHOOSEROWS", .MinArgs = 2, .Tier = ftrArray, .ArrayBody = CallChooseRows, .ArrayMinArgs = 2,
     .InCompletion = true, .Arguments = u"array, row1, [row2], ...",
     .Description = u"The named rows of a rectangle; negative numbers count from the end."},
    {.Name = u"DROP", .MinArgs = 2, .MaxArgs = 3, .Tier = ftrArray, .ArrayBody = CallDrop, .ArrayMinArgs = 2,
     .InCompletion = true, .Arguments = u"array, rows, [columns]",
     .Description = u"A rectangle without its first rows and columns, or for negative counts the last ones."},
    {.Name = u"EXPAND", .MinArgs = 3, .MaxArgs = 4, .Tier = ftrArray, .ArrayBody = CallExpand, .ArrayMinArgs = 2,
     .InCompletion = true, .Arguments = u"array, rows, columns, [pad]",
     .Description = u"A rectangle made larger, new cells filled with a value."},
    {.Name = u"FILTER", .MinArgs = 2, .MaxArgs = 3, .Tier = ftrArray, .ArrayBody = CallFilter, .ArrayMinArgs = 2,
     .InCompletion = true, .Arguments = u"array, include, [if_empty]",
     .Description = u"The rows of a rectangle whose condition is true."},
    {.Name = u"GROUPBY", .MinArgs = 3, .Tier = ftrArray, .ArrayBody = CallGroupBy, .ArrayMinArgs = 3,
     .InCompletion = true, .Arguments = u"row_fields, values, function",
     .Description = u"Sums of values by the text of a field, in order of first appearance."},
    {.Name = u"HSTACK", .MinArgs = 1, .Tier = ftrArray, .ArrayBody = CallHStack, .ArrayMinArgs = 1,
     .InCompletion = true, .Arguments = u"array1, [array2], ...",
     .Description = u"Rectangles side by side; shorter ones are filled up with #N/A."},
    {.Name = u"PIVOTBY", .MinArgs = 4, .Tier = ftrArray, .ArrayBody = CallPivotBy, .ArrayMinArgs = 4,
     .InCompletion = true, .Arguments = u"row_fields, column_fields, values, function",
     .Description = u"Sums of values in a table of two fields, both in order of first appearance."},
    {.Name = u"RANDARRA", .MinArgs = 0, .MaxArgs = 5, .Tier = ftrExtra, .Body = CallFirstRandom,
     .Arguments = u"[rows], [columns], [min], [max], [integer]",
     .Description = u"The first number of RANDARRAY, by a name that some files misspell."},
    {.Name = u"RANDARRAY", .MinArgs = 0, .MaxArgs = 5, .Tier = ftrArray, .ArrayBody = CallRandArray,
     .ArrayMinArgs = 1, .InCompletion = true, .Arguments = u"[rows], [columns], [min], [max], [integer]",
     .Description = u"A rectangle of random numbers."},
    {.Name = u"SEQUENCE", .MinArgs = 1, .MaxArgs = 4, .Tier = ftrArray, .ArrayBody = CallSequence,
     .ArrayMinArgs = 1, .InCompletion = true, .Arguments = u"rows, [columns], [start], [step]",
     .Description = u"A rectangle of numbers that grow by a step, row by row."},
    {.Name = u"SORT", .MinArgs = 1, .MaxArgs = 4, .Tier = ftrArray, .ArrayBody = CallSort, .ArrayMinArgs = 1,
     .InCompletion = true, .Arguments = u"array, [index], [order], [by_column]",
     .Description = u"A rectangle sorted by one of its columns; a negative order sorts downward."},
    {.Name = u"SORTBY", .MinArgs = 2, .MaxArgs = 3, .Tier = ftrArray, .ArrayBody = CallSortBy, .ArrayMinArgs = 2,
     .InCompletion = true, .Arguments = u"array, by, [order]",
     .Description = u"A rectangle sorted by another column of keys; a negative order sorts downward."},
    {.Name = u"TAKE", .MinArgs = 2, .MaxArgs = 3, .Tier = ftrArray, .ArrayBody = CallTake, .ArrayMinArgs = 2,
     .InCompletion = true, .Arguments = u"array, rows, [columns]",
     .Description = u"The first rows and columns of a rectangle, or for negative counts the last ones."},
    {.Name = u"TOCOL", .MinArgs = 1, .MaxArgs = 3, .Tier = ftrArray, .ArrayBody = CallToCol, .ArrayMinArgs = 1,
     .InCompletion = true, .Arguments = u"array",
     .Description = u"All cells of a rectangle, row by row, as one column."},
    {.Name = u"TOROW", .MinArgs = 1, .MaxArgs = 3, .Tier = ftrArray, .ArrayBody = CallToRow, .ArrayMinArgs = 1,
     .InCompletion = true, .Arguments = u"array", .Description = u"All cells of a rectangle, row by row, as one row."},
    {.Name = u"TRANSPOSE", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrArray, .ArrayBody = CallTranspose,
     .ArrayMinArgs = 1, .InCompletion = true, .Arguments = u"array",
     .Description = u"A rectangle with rows and columns exchanged."},
    {.Name = u"UNIQUE", .MinArgs = 1, .MaxArgs = 3, .Tier = ftrArray, .ArrayBody = CallUnique, .ArrayMinArgs = 1,
     .InCompletion = true, .Arguments = u"array, [by_column], [exactly_once]",
     .Description = u"The different rows of a rectangle, or those that occur only once."},
    {.Name = u"VSTACK", .MinArgs = 1, .Tier = ftrArray, .ArrayBody = CallVStack, .ArrayMinArgs = 1,
     .InCompletion = true, .Arguments = u"array1, [array2], ...",
     .Description = u"Rectangles below one another; narrower ones are filled up with #N/A."},
    {.Name = u"WRAPCOLS", .MinArgs = 2, .MaxArgs = 3, .Tier = ftrArray, .ArrayBody = CallWrapCols, .ArrayMinArgs = 2,
     .InCompletion = true, .Arguments = u"vector, rows, [pad]",
     .Description = u"Cells laid out in a given number of rows; values run along the rows."},
    {.Name = u"WRAPROWS", .MinArgs = 2, .MaxArgs = 3, .Tier = ftrArray, .ArrayBody = CallWrapRows, .ArrayMinArgs = 2,
     .InCompletion = true, .Arguments = u"vector, columns, [pad]",
     .Description = u"Cells laid out in rows of a given length."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> ArrayFunctions() { return kArrayFunctions; }

}  // namespace tessarine
