#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/core/sheet/Cell.h>
#include <tessarine/core/values/Text.h>
#include <tessarine/io/native/detail/NativeCells.h>
#include <tessarine/io/native/detail/NativeFieldReader.h>
#include <tessarine/platform/Progress.h>

namespace tessarine {
class TWorksheet;
}

namespace tessarine::detail {

class TCellStore;

/// Reads the "cells" of one sheet straight into the sheet's store, without an event for each. Every member is applied,
/// so of several for one place the last counts; one whose key is no place of the sheet is passed over.
class TNativeCellReader {
 public:
  /// All arguments outlive the reader.
  TNativeCellReader(TNativeDocument& ADocument, TWorksheet& ASheet, const TWorkControl& AControl);

  /// ACells is an object. Whether it returns or throws, the sheet has its bounds and has told that it changed.
  void Read(TJsonPlace ACells);

  /// Read with ReadCellPlain for every cell: the definition of the result.
  void ReadPlain(TJsonPlace ACells);

 private:
  template <class TReadOne>
  void ReadEach(TJsonPlace ACells, TReadOne&& AReadOne);
  void Finish();
  TJsonPlace TryReadCell(TCellAddress AAddress, TJsonPlace ACell);
  void ReadCellPlain(TCellAddress AAddress, TJsonPlace ACell);
  TCellValue ReadValue(TJsonPlace AValue);
  TCellValue ValueOf(const TNativeValueSpelling& AValue);
  TText TextOf(const TNativeValueSpelling& AValue);
  std::u16string_view FormulaOf(const TNativeValueSpelling& AValue);
  void Poll(TJsonPlace AAt);

  /// A text that was read not long ago, so that cells with equal texts share one.
  struct TKnownText {
    std::string_view Raw;
    TText Text;
  };
  static constexpr size_t kKnownTexts = 4096;

  TNativeDocument& FDocument;
  TWorksheet& FSheet;
  TCellStore& FStore;
  const TWorkControl& FControl;
  std::string FSheetName;
  std::vector<TKnownText> FKnown;  // by hash; empty before the first text
  std::u16string FFormula;
  size_t FCellCount = 0;
  int32_t FMaxCol = 0;
  int32_t FMaxRow = 0;
};

}  // namespace tessarine::detail
