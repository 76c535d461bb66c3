#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include <tessarine/formula/FormulaArg.h>
#include <tessarine/formula/FunctionTable.h>
#include <tessarine/formula/library/detail/ArgReading.h>

/// The functions that make rectangles, and what they share. Each body answers a call with too few arguments itself.
namespace tessarine::detail {

/// The most cells of an array that is made of cells that were given; more is #NUM!. They would take 1.5 GB.
constexpr int64_t kMaxArrangedCells = int64_t{1} << 26;

inline TFormulaArg ErrorArg(TCellErrorCode ACode) { return TFormulaArg::FromError(ACode); }
inline bool FitsArranged(int64_t ARows, int64_t ACols) {
  return ACols == 0 || (ARows <= kMaxArrangedCells && ACols <= kMaxArrangedCells && ARows * ACols <= kMaxArrangedCells);
}

/// Whether a result of ARows by ACols may be made of AGiven cells: what is added stays below the limit on generated
/// cells, and so does all of it unless more were given.
bool MayGenerate(int64_t ARows, int64_t ACols, int64_t AGiven);

/// A rectangle or a scalar as one of a single cell; references to AArg where it is a rectangle already.
class TAsRectangle {
 public:
  explicit TAsRectangle(const TFormulaArg& AArg) : FArg(&AArg) {
    if (AArg.IsRange) return;
    FMade = AsRangeArg(AArg);
    FArg = &FMade;
  }
  TAsRectangle(const TAsRectangle&) = delete;
  TAsRectangle& operator=(const TAsRectangle&) = delete;

  const TFormulaArg& operator*() const { return *FArg; }
  const TFormulaArg* operator->() const { return FArg; }

 private:
  const TFormulaArg* FArg;
  TFormulaArg FMade;
};

/// The values of one column of a rectangle (0-based), borrowed; read in one go, which for views is the fast way.
std::vector<TValueView> ReadColumn(const TFormulaArg& ARectangle, int32_t ACol);

/// The rows (columns) of a rectangle with these 0-based numbers, in this order; #NUM! when they are too many cells.
TFormulaArg PickRows(const TFormulaArg& ARectangle, std::span<const uint32_t> ARows);
TFormulaArg PickCols(const TFormulaArg& ARectangle, std::span<const uint32_t> ACols);

/// All cells of a rectangle row by row; nothing when they are too many.
std::optional<std::vector<TCellValue>> AllCells(const TFormulaArg& ARectangle);

/// An optional argument: its integer, or ADefault when it is missing or no number.
int64_t IntegerOr(TFormulaArgs AArgs, size_t AIndex, int64_t ADefault);
double NumberOr(TFormulaArgs AArgs, size_t AIndex, double ADefault);
/// A flag is true when it is a number other than 0.
bool FlagOf(TFormulaArgs AArgs, size_t AIndex);

/// The rows (columns) that UNIQUE keeps. Two are the same when their cells have the same kinds and, by kind, the same
/// text (case matters), number to 15 digits, Boolean or error.
std::vector<uint32_t> UniqueLines(const TFormulaArg& ARectangle, bool AByCol, bool AExactlyOnce);
std::vector<uint32_t> UniqueLinesPlain(const TFormulaArg& ARectangle, bool AByCol, bool AExactlyOnce);

// The bodies, by source file.

TFormulaArg CallSequence(TFormulaArgs AArgs, const TFormulaContext& AContext);  // ArraysMade.cpp
TFormulaArg CallRandArray(TFormulaArgs AArgs, const TFormulaContext& AContext);

TFormulaArg CallFilter(TFormulaArgs AArgs, const TFormulaContext& AContext);  // ArraysPicked.cpp
TFormulaArg CallUnique(TFormulaArgs AArgs, const TFormulaContext& AContext);
TFormulaArg CallSort(TFormulaArgs AArgs, const TFormulaContext& AContext);
TFormulaArg CallSortBy(TFormulaArgs AArgs, const TFormulaContext& AContext);
TFormulaArg CallChooseRows(TFormulaArgs AArgs, const TFormulaContext& AContext);
TFormulaArg CallChooseCols(TFormulaArgs AArgs, const TFormulaContext& AContext);

TFormulaArg CallTranspose(TFormulaArgs AArgs, const TFormulaContext& AContext);  // ArraysShaped.cpp
TFormulaArg CallHStack(TFormulaArgs AArgs, const TFormulaContext& AContext);
TFormulaArg CallVStack(TFormulaArgs AArgs, const TFormulaContext& AContext);
TFormulaArg CallToRow(TFormulaArgs AArgs, const TFormulaContext& AContext);
TFormulaArg CallToCol(TFormulaArgs AArgs, const TFormulaContext& AContext);
TFormulaArg CallTake(TFormulaArgs AArgs, const TFormulaContext& AContext);
TFormulaArg CallDrop(TFormulaArgs AArgs, const TFormulaContext& AContext);
TFormulaArg CallExpand(TFormulaArgs AArgs, const TFormulaContext& AContext);
TFormulaArg CallWrapRows(TFormulaArgs AArgs, const TFormulaContext& AContext);
TFormulaArg CallWrapCols(TFormulaArgs AArgs, const TFormulaContext& AContext);

TFormulaArg CallGroupBy(TFormulaArgs AArgs, const TFormulaContext& AContext);  // ArraysGrouped.cpp
TFormulaArg CallPivotBy(TFormulaArgs AArgs, const TFormulaContext& AContext);

}  // namespace tessarine::detail
