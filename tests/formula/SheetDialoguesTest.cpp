#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/platform/Unicode.h>

#include "../support/CaseTable.h"
#include "../support/SheetFixture.h"

namespace tessarine::testing {
namespace {

using test::TCase;

TCellAddress AddressIn(const TCase& ACase) { return TCellAddress::FromA1(ACase.Text(1)); }

/// Calls AVisit for each field "A1: content" behind the name of the step.
template <class TVisit>
void ForEachPair(const TCase& ACase, TVisit AVisit) {
  for (size_t i = 1; i < ACase.Count(); ++i) {
    const size_t mark = ACase[i].find(": ");
    if (mark == std::string::npos) throw std::invalid_argument("no colon in " + ACase[i]);
    AVisit(ACase[i].substr(0, mark), ACase[i].substr(mark + 2));
  }
}

TEST(SheetDialogues, GoAsTheyAreWritten) {
  using T = TSheetFixture;
  test::ExpectDialogues<T>(
      "formula/dialogues.tsv",
      {{"set",
        [](T& A, const TCase& ACase) {
          ForEachPair(ACase,
                      [&](const std::string& AAddress, const std::string& AContent) { A.Set(AAddress, AContent); });
        }},
       {"name",
        [](T& A, const TCase& ACase) {
          ForEachPair(ACase, [&](const std::string& AName, const std::string& AFormula) {
            A.Workbook.SetNamedFormula(AName, AFormula);
          });
        }},
       {"run", [](T& A, const TCase& ACase) { return A.Run(ACase[1]); }},
       {"show", [](T& A, const TCase& ACase) { return A.Show(ACase[1]); }},
       {"eval", [](T& A, const TCase& ACase) { return A.Eval(ACase[1]); }},
       {"at", [](T& A, const TCase& ACase) { return A.EvalAt(ACase[1], ACase[2]); }},
       {"recalculate", [](T& A, const TCase&) { A.Evaluator.RecalculateAll(); }},
       {"rebuild", [](T& A, const TCase&) { A.Evaluator.RebuildAllDependencies(); }},
       {"reset", [](T& A, const TCase&) { A.Evaluator.Reset(); }},
       {"notify",
        [](T& A, const TCase& ACase) { A.Evaluator.NotifyCellChanged(0, AddressIn(ACase).Col, AddressIn(ACase).Row); }},
       {"rename", [](T& A, const TCase& ACase) { A.Sheet(ACase.Int(1)).SetName(ACase.Text(2)); }},
       {"remove", [](T& A, const TCase& ACase) { A.Workbook.RemoveSheet(ACase.Int(1)); }},
       {"clean", [](T& A, const TCase&) { A.Workbook.ClearModified(); }},
       {"modified", [](T& A, const TCase&) { return A.Workbook.IsModified(); }},
       {"stored", [](T& A, const TCase& ACase) { return A.Sheet().HasCell(AddressIn(ACase)); }},
       {"cached", [](T& A, const TCase& ACase) { return A.Sheet().GetCell(AddressIn(ACase)).HasCachedValue; }},
       {"blocks", [](T& A, const TCase&) { return A.Sheet().Spills().Count(); }}});
}

}  // namespace
}  // namespace tessarine::testing
