#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/core/values/Address.h>

namespace tessarine::detail {

class TFormulaTemplate;

/// AFormula with "_xlpm." in front of the names that LET and LAMBDA bind, where they are bound and where they are used:
/// so files name them. StripXlsxParameterPrefixes gives AFormula back; a text for which it would not stays as it is.
std::u16string MarkXlsxParameters(std::u16string_view AFormula);

/// AFormula as files spell it: with these, and with the prefixes of functions that came later ("_xlfn.") in small
/// letters, because other programs know them only so. Shared formulas, and those that were moved, have them in
/// capitals. Texts, names in quotes and columns of tables stay.
std::u16string XlsxFormulaText(std::u16string_view AFormula);

/// Writes the formulas of a sheet. The reader puts an "@" before formulas that spill unless they stand as array
/// formulas, and takes it off nowhere: where it would put one there, ours is left out, and a formula that spills but
/// has no block at present is written as an array formula of its own cell.
class TXlsxFormulaWriter {
 public:
  explicit TXlsxFormulaWriter(bool AIsLiteral) : FIsLiteral(AIsLiteral) {}

  /// Appends the element of a formula in the cell (ACol, ARow). ABlock is what the formula lays over the sheet, null
  /// when it does not; it stays inside the sheet. A formula without a text has no element, unless it is literal.
  void Append(const TFormulaTemplate& ATemplate, int32_t ACol, int32_t ARow, const TCellRange* ABlock,
              std::string& AOut);

 private:
  /// What the formulas of one template have in common.
  struct TShape {
    const TFormulaTemplate* Template = nullptr;
    bool DropsSign = false;       // the "@" in front comes back by itself
    bool IsArrayOfOne = false;    // would get an "@" that it does not have
    bool MayBeRespelled = false;  // XlsxFormulaText may change them
  };

  const TShape& ShapeOf(const TFormulaTemplate& ATemplate, int32_t ACol);

  bool FIsLiteral;
  std::u16string FText;
  std::vector<TShape> FShapes;  // of the last formula in each column
};

}  // namespace tessarine::detail
