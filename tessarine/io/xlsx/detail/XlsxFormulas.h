#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/reference/detail/FormulaTemplate.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/io/xlsx/detail/XlsxSharedFormula.h>

namespace tessarine::detail {

struct TXlsxBudget;

/// What a cell of a sheet part says about its formula.
struct TXlsxFormulaElement {
  std::string Text;          // as it stands in the file, UTF-8
  bool IsShared = false;     // of the kind "shared"
  bool IsArray = false;      // of the kind "array"
  bool HasCellMeta = false;  // the cell refers to metadata: a formula that may spill
  int32_t SharedIndex = -1;
  TCellRange ArrayRange;  // the range of an array formula; (0, 0, 0, 0) when there is none
};

/// Turns the formulas of one sheet part into those of the model: shared ones get a text of their own, and what stands
/// for other workbooks, placeholder calls and implicit intersection is put into our words.
class TXlsxFormulas {
 public:
  /// ABudget outlives the object.
  explicit TXlsxFormulas(TXlsxBudget& ABudget) : FBudget(ABudget) {}

  /// The formula of the cell AAddress with its "="; empty when it has none. Valid until the next call. Keeps the text
  /// of a shared formula for those that follow. APartName is for messages.
  std::u16string_view Resolve(const TXlsxFormulaElement& AElement, TCellAddress AAddress, std::string_view APartName);

 private:
  bool TakeShared(const TXlsxFormulaElement& AElement, TCellAddress AAddress, std::string_view APartName);

  TXlsxBudget& FBudget;
  TFormulaPool FTemplates;
  boost::unordered_flat_map<int32_t, TXlsxSharedFormula> FShared;  // by index
  std::u16string FText;
};

/// AText without the "[12]" that stand for other workbooks, at its start and just behind an apostrophe.
void StripXlsxWorkbookIndexes(std::u16string& AText);

/// AText without the "_xlpm." that files put in front of the names which LET and LAMBDA bind; texts and names in
/// quotes stay as they are.
void StripXlsxParameterPrefixes(std::u16string& AText);

}  // namespace tessarine::detail
