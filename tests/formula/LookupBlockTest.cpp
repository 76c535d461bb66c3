#include <gtest/gtest.h>

#include <iterator>
#include <memory>
#include <random>
#include <string>

#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/formula/detail/Interpreter.h>
#include <tessarine/formula/detail/LookupBlocks.h>
#include <tessarine/formula/detail/Program.h>
#include <tessarine/platform/Unicode.h>

#include "../support/CaseTable.h"
#include "../support/SheetFixture.h"

namespace tessarine::testing {
namespace {

constexpr int32_t kTable = 300;  // rows of the table in columns A to C
constexpr int32_t kKeys = 700;   // rows with a key in column E and a formula in G

std::string RandomContent(std::mt19937& ARandom) {
  static const char* const shown[] = {"_",   "'",    "TRUE", "'TRUE", "'true", "FALSE", "#N/A", "'#n/a", "#REF!",
                                      "0.5", "'0.5", "-0",   "0",     "'0",    "'abcd", "ABCD", "1e308", "'1E2"};
  const uint32_t pick = ARandom() % 60;
  if (pick < std::size(shown)) return shown[pick];
  return (pick < 30 ? "item " : "") + std::to_string(ARandom() % 80);
}

/// A table, keys, and a formula filled down beside them; some of both are results of formulas.
void FillLookups(TSheetFixture& AFixture, uint32_t ASeed) {
  static const char* const forms[] = {"VLOOKUP(E#,A$1:C$300,3,FALSE)",   "VLOOKUP(E#,$A$1:$C$300,2,0)",
                                      "VLOOKUP(E$7,A$300:C$1,1,FALSE)",  "MATCH(E#,B$1:B$300,0)",
                                      "MATCH(E#,A$1:C$300,0)",           "XLOOKUP(E#,A$1:A$300,C$1:C$300)",
                                      "XLOOKUP(E#,A$1:A$300,A$1:B$300)", "XLOOKUP(E#,A$1:A$300,C$1:C$90)",
                                      "VLOOKUP(Keys!E#,A$1:C$300,4,0)",  "VLOOKUP(E#,Keys!A$1:C$300,2,FALSE)",
                                      "VLOOKUP(E#,A$1:C$300,3,TRUE)",    "MATCH(E#,A$1:A$300)",
                                      "VLOOKUP(G#,A$1:C$300,2,0)"};
  std::mt19937 random(ASeed);
  AFixture.Workbook.AddSheet("Keys");
  const bool hasFormulas = random() % 2 == 0;
  const bool isNumeric = random() % 3 == 0;
  const auto content = [&] {
    const std::string text = isNumeric ? std::to_string(random() % 250) : RandomContent(random);
    const bool isFormula = hasFormulas && random() % 4 == 0 && text[0] != '\'' && text[0] != '_' && text[0] != 'i';
    return isFormula ? "=0+" + text : text;
  };
  for (const char* sheet : {"", "Keys!"}) {
    for (int32_t row = 1; row <= kKeys; ++row) {
      const std::string at = std::to_string(row);
      for (const char* col : {"A", "B", "C"}) {
        if (row <= kTable) AFixture.Set(sheet + std::string(col) + at, content());
      }
      AFixture.Set(sheet + ("E" + at), content());
    }
  }
  const std::string form = forms[ASeed % std::size(forms)];
  for (int32_t row = 1; row <= kKeys; ++row) {
    const size_t place = form.find('#');
    std::string text = form;
    if (place != form.npos) text.replace(place, 1, std::to_string(row));
    AFixture.Set("G" + std::to_string(row), "=" + text);
  }
}

std::string LookupsPlayed(uint32_t ASeed, bool ABlocks) {
  TSheetFixture fixture;
  fixture.Evaluator.Options().BlockEvaluation = ABlocks;
  FillLookups(fixture, ASeed);
  std::mt19937 random(ASeed);
  std::string dump;
  for (int round = 0; round < 3; ++round) {
    if (round == 0) fixture.Evaluator.RecalculateAll();
    for (int32_t row = 1; row <= kKeys; ++row) dump += fixture.Show("G" + std::to_string(row)) + " ";
    const std::string at = std::string(1, "ACE"[round]) + std::to_string(1 + random() % kTable);
    fixture.Set(at, RandomContent(random));
    fixture.Evaluator.NotifyCellChanged(0, at[0] - 'A' + 1, std::stoi(at.substr(1)));
    dump += fixture.Eval("=ROW()&\",\"&COLUMN()") + "\n";
  }
  return dump;
}

TEST(LookupBlock, GivesWhatTheFunctionsGiveCellByCell) {
  for (uint32_t seed = 0; seed < 13 * 2; ++seed)
    ASSERT_EQ(LookupsPlayed(seed, true), LookupsPlayed(seed, false)) << seed;
}

/// How many of the rows 1 to 300 a block takes; -1 when it takes none of these formulas.
int32_t RowsTaken(TSheetFixture& AFixture, detail::TInterpreter& AInterpreter) {
  std::unique_ptr<detail::TProgram> owned;
  const detail::TFormulaRecord* const record = AFixture.Sheet().Store().FindRecord(7, 1);
  const detail::TProgram& program = detail::ProgramOf(*record->Template, 7, 1, owned);
  auto block = detail::TLookupBlock::Compile(program, AFixture.Workbook, AInterpreter, 0, 7);
  return block ? block->EvaluateRows({1, 300}) : -1;
}

TEST(LookupBlock, TakesExactLookupsInSettledTablesAndNoOthers) {
  for (const test::TCase& row : test::CasesOf("formula/lookup_blocks.tsv", 2)) {
    const std::string& formula = row[0];
    TSheetFixture fixture;
    detail::TInterpreter interpreter(fixture.Workbook);
    for (int32_t i = 1; i <= 300; ++i) {
      const std::string at = std::to_string(i);
      fixture.Set({{("A" + at).c_str(), at.c_str()}, {("B" + at).c_str(), at.c_str()}, {("E" + at).c_str(), "77"}});
      fixture.Sheet().SetValue({7, i}, TCellValue::FromFormula(Utf8ToUtf16(formula)));
    }
    EXPECT_EQ(RowsTaken(fixture, interpreter), row.Integer(1)) << formula;
    if (row.Integer(1) < 0) continue;
    EXPECT_EQ(fixture.Show("G1 G300"), "77 77") << formula;
    fixture.Set("E200", "=1");  // has no result yet
    EXPECT_EQ(RowsTaken(fixture, interpreter), formula.find("E$1") != formula.npos ? 300 : 199) << formula;
    fixture.Set("A50", "=1");
    EXPECT_EQ(RowsTaken(fixture, interpreter), -1) << formula;
    fixture.Set("A50", "50");
    fixture.Sheet().Spills().SetSpill(30, 1, 2, 1, {});
    EXPECT_EQ(RowsTaken(fixture, interpreter), -1) << formula;
  }
}

}  // namespace
}  // namespace tessarine::testing
