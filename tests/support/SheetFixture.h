#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/Evaluator.h>

namespace tessarine::testing {

/// A small workbook that is written and read in short texts.
///
/// Contents: "=..." is a formula, "_" nothing, TRUE, FALSE and errors such as "#N/A" are themselves, what reads as a
/// number is one, and anything else is a text; a leading "'" makes a text of the rest ("'5", "'" for the empty one).
/// Values are shown the same way: numbers with 15 digits, 'texts', TRUE, #N/A, _ for a blank.
/// Addresses are "B2", or "Other!B2" for the sheet "Other", which is added when it does not exist.
class TSheetFixture {
 public:
  using TCells = std::initializer_list<std::pair<const char*, const char*>>;

  TSheetFixture() : Evaluator(Workbook) {}
  explicit TSheetFixture(TCells ACells) : TSheetFixture() { Set(ACells); }

  void Set(std::string_view AAddress, std::string_view AContent);
  void Set(TCells ACells) {
    for (const auto& [address, content] : ACells) Set(address, content);
  }

  /// The same from one text, "A1=1 A2='x B2==A1": contents have no blanks.
  void SetCells(std::string_view ACells);

  /// What a formula would read in the cell; cells separated by blanks are shown so.
  std::string Show(std::string_view AAddresses) const;

  /// A text evaluated as a scalar, and as the formula of a cell: rows separated by ";", columns by ",".
  std::string Eval(std::string_view AFormula, int32_t ASheetIndex = 0);
  std::string EvalAt(std::string_view AAddress, std::string_view AFormula);

  /// Evaluates the formulas in cells one after another, whatever they have as results, and shows the new ones.
  std::string Run(std::string_view AAddresses);

  TWorksheet& Sheet(int32_t AIndex = 0) { return *Workbook.GetSheet(AIndex); }

  TWorkbook Workbook;
  TFormulaEvaluator Evaluator;

 private:
  struct TPlace {
    int32_t Sheet = 0;
    TCellAddress Address;
  };
  TPlace PlaceOf(std::string_view AAddress) const;
  /// What AShow gives for each of some addresses.
  template <class TShow>
  std::string ShowEach(std::string_view AAddresses, TShow AShow) const;
};

/// A cell's content read, one value, and a whole argument, in the notation above.
TCellValue ContentOf(std::string_view AContent);
std::string NotationOf(const TCellValue& AValue);
std::string NotationOf(const TFormulaArg& AArg);

}  // namespace tessarine::testing
