#pragma once

#include <cstddef>
#include <string>

#include <tessarine/platform/Errors.h>

namespace tessarine::detail {

/// What one load may build out of few bytes, beyond what honest files need: a small file can name the same big thing
/// in every cell. The limits of the package and its parts cannot see this.
struct TXlsxBudget {
  size_t RichRuns = 4'000'000;                    // formatted runs, in the string table and in cells
  size_t SharedFormulaUnits = size_t{256} << 20;  // UTF-16 units of long formulas that a cell takes from another
  size_t SpilledValues = 4'000'000;               // cells of array formulas beside the formula's own
  size_t TableColumns = 1'000'000;                // columns of all tables together
  size_t RepeatedBytes = size_t{64} << 20;        // of parts that are sheets or tables once more
  size_t BlockProbes = 100'000'000;               // blocks looked at to see whether array formulas meet

  /// Takes ACount off ALeft. Throws ELimit when that is not left; APlace() and AWhat make the message.
  template <class TPlace>
  static void Take(size_t& ALeft, size_t ACount, TPlace&& APlace, const char* AWhat) {
    if (ACount > ALeft) throw ELimit(APlace() + ": " + AWhat + " of the workbook exceed the limit of the reader");
    ALeft -= ACount;
  }
};

}  // namespace tessarine::detail
