#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/io/ods/detail/OdsReadContext.h>

namespace tessarine {
class TWorkbook;
struct TXmlNode;
}  // namespace tessarine

namespace tessarine::detail {

/// The rules for entries of a document, and the cells that name them. Rules may come before or behind the cells.
class TOdsValidationReader {
 public:
  explicit TOdsValidationReader(const TOdsReadContext& AContext) : FContext(AContext) {}

  /// Reads the element that holds the rules.
  void ReadRules(const TXmlNode* ANode);

  /// From here on Bind means the sheet of that index.
  void BeginSheet(int32_t AIndex) { FSheet = AIndex; }

  /// Notes that cells of the present sheet have the rule of a name. Neighbours that come in row order become one
  /// range; what lies beyond the sheet is cut off.
  void Bind(std::string_view AName, const TCellRange& ARange);

  /// Gives each sheet the rules that its cells name, in the order of the document. The range that begins at the cell
  /// which a rule is based on comes first.
  void Apply(TWorkbook& AWorkbook);

 private:
  struct TBinding {
    int32_t Sheet = 0;
    TCellRange Range;
  };
  struct TRule {
    std::string Name;  // by which cells name it
    TCellRange Base;   // where it counts from; zeros when the file does not say
    TDataValidationRule Rule;
  };
  struct TName {
    std::vector<TBinding> Bindings;
    boost::unordered_flat_map<uint64_t, size_t> ByColumns;  // the last binding that has just these columns
  };

  const TOdsReadContext& FContext;
  int32_t FSheet = 0;
  std::vector<TRule> FRules;
  TOdsByName<TName> FNames;
};

/// Reads the condition of a rule ("of:cell-content-is-in-list(...)") into its type, operator and operands. False for a
/// kind of condition that has no counterpart here. AStandardArrays as OdsFormulaToExcel has it.
bool OdsParseValidationCondition(std::string_view ACondition, TDataValidationRule& ARule, bool AStandardArrays = false);

}  // namespace tessarine::detail
