#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include <tessarine/core/values/CellValue.h>

namespace tessarine {
class TWorkbook;
struct TWorkControl;
}  // namespace tessarine

namespace tessarine::cli {

/// One side of a difference: a cell's value, or a text that tells what is there; nothing where nothing is.
using TDiffSide = std::optional<TCellValue>;

struct TDifference {
  std::string Sheet;  // empty for what belongs to the workbook
  std::string What;   // "value", "formula", "format", or the kind of a feature
  std::string Name;   // the cell, or the feature's name
  TDiffSide First;
  TDiffSide Second;
};

struct TDiffCounts {
  int64_t Cells = 0;     // cells that differ in something
  int64_t Features = 0;  // other differences
};

/// Compares two workbooks: sheet by sheet (by their names; two that are alone in their workbooks are compared
/// whatever they are called), cell by cell, and feature by feature. ATell is called for each difference in the order
/// of the first workbook's sheets.
TDiffCounts DiffWorkbooks(const TWorkbook& AFirst, const TWorkbook& ASecond, const TWorkControl& AControl,
                          const std::function<void(const TDifference& ADifference)>& ATell);

}  // namespace tessarine::cli
