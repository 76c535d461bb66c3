#include <gtest/gtest.h>

#include <tessarine/formula/FormulaDialect.h>

#include "../support/CaseTable.h"

namespace tessarine {
namespace {

TEST(FormulaDialect, PlaceholdersAreUnwrappedAndSeparatorsMadeCommas) {
  using test::TCase;
  test::ExpectCases("formula/dialects.tsv",
                    {{"unwrap", [](const TCase& ACase) { return UnwrapXlUdfDummyFunction(ACase.Text(1)); }},
                     {"separators", [](const TCase& ACase) { return OdsSeparatorsToExcel(ACase.Text(1)); }}});
}

}  // namespace
}  // namespace tessarine
