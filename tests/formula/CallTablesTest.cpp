#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <tessarine/formula/detail/Interpreter.h>

#include "../support/CaseTable.h"
#include "../support/LocaleGuard.h"
#include "../support/SheetFixture.h"
#include "CallNotation.h"

namespace tessarine::testing {
namespace {

using TStrings = std::vector<std::string>;
using TPairs = std::vector<std::pair<std::string, std::string>>;

constexpr const char* kTables[] = {
    "aggregates",    "arrays",      "calendars",  "complex",    "criteria", "database",    "dates",
    "distributions", "engineering", "evaluation", "finance",    "integers", "lambdas",     "loans",
    "logic",         "lookups",     "matrices",   "names",      "numbers",  "references",  "regex",
    "regression",    "securities",  "statistics", "text_parts", "texts",    "trigonometry"};

/// "A1: text" and its like cut at the colon.
TPairs PairsOf(const TStrings& AFields) {
  TPairs pairs;
  for (const std::string& field : AFields) {
    const size_t mark = field.find(": ");
    if (mark == field.npos) throw std::invalid_argument("no colon in " + field);
    pairs.emplace_back(field.substr(0, mark), field.substr(mark + 2));
  }
  return pairs;
}

bool IsDate(const std::string& AText) { return AText.size() == 10 && AText[4] == '-' && AText[7] == '-'; }

/// Reads a table of examples line by line; tests/data/calls/README.md tells the notation.
class TCallTable {
 public:
  void Read(const test::TCase& ALine) {
    TStrings fields;
    for (size_t i = 0; i < ALine.Count(); ++i) {
      if (!ALine[i].empty() && !ALine[i].starts_with("# ")) fields.push_back(ALine[i]);
    }
    if (fields.empty()) throw std::invalid_argument("nothing but a remark");
    const std::string first = fields[0];
    fields.erase(fields.begin());
    if (first.starts_with('@')) {
      Direct(first, fields);
    } else {
      Expect(ALine.Place(), first, fields);
    }
  }

  int Examples = 0;

 private:
  void Direct(const std::string& ADirective, const TStrings& AFields) {
    if (ADirective == "@for") {
      FFunctions = AFields;
    } else if (ADirective == "@let") {
      for (const auto& [name, text] : PairsOf(AFields)) FTexts["$" + name] = text;
    } else if (ADirective == "@cells") {
      FCells = PairsOf(AFields);
      FNames.clear();
    } else if (ADirective == "@names") {
      FNames = PairsOf(AFields);
    } else if (ADirective == "@at" || ADirective == "@in") {
      FPlace = AFields.empty() ? "" : AFields[0];
      FIsEntered = ADirective == "@in";
    } else if (ADirective == "@show") {
      FShown = AFields.empty() ? "" : AFields[0];
    } else if (ADirective == "@tolerance") {
      FTolerance = AFields.empty() ? 0 : ValueOf(AFields[0]).Number;
    } else if (ADirective == "@locale") {
      SetLocale(PairsOf(AFields));
    } else {
      throw std::invalid_argument("no such directive");
    }
  }

  static void SetLocale(const TPairs& AParts) {
    TFormatSettings settings;
    for (const auto& [part, value] : AParts) {
      if (part == "decimal") settings.DecimalSeparator = static_cast<char16_t>(value[0]);
      if (part == "group") settings.GroupSeparator = static_cast<char16_t>(value[0]);
      if (part == "dates") settings.DateOrder = value == "DMY" ? doDMY : value == "YMD" ? doYMD : doMDY;
    }
    SetDefaultFormatSettings(settings);
  }

  void Expect(const std::string& APlace, const std::string& AExample, TStrings AWanted) {
    const size_t mark = AExample.find(": =");
    const bool isFormula = AExample.starts_with('=') || mark < AExample.find_first_of("(\"'");
    const std::string place = AExample.starts_with('=') ? FPlace : AExample.substr(0, mark);
    for (const bool isFast : {true, false}) {
      const TStrings got =
          isFormula ? Evaluated(place, AExample.substr(AExample.find('=')), isFast) : Results(AExample);
      if (!isFormula && AWanted.size() == 1) AWanted.resize(got.size(), AWanted[0]);
      if (AWanted.size() != got.size()) throw std::invalid_argument("a wrong count of results");
      for (size_t i = 0; i < got.size(); ++i) {
        EXPECT_TRUE(Agree(got[i], AWanted[i])) << APlace << ": " << AExample << "\n  gives " << got[i] << "\n  wanted "
                                               << AWanted[i] << (isFast ? "" : "\n  with all fast ways off");
      }
      if (!isFormula) break;
    }
    Examples += static_cast<int>(AWanted.size());
  }

  /// What a formula gives at a place, or without one as a text, and which results its workbook has then.
  TStrings Evaluated(const std::string& APlace, const std::string& AFormula, bool AIsFast) const {
    TSheetFixture sheet;
    if (!AIsFast) sheet.Evaluator.Options() = {false, false, false, false, false, false, false};
    for (const auto& [address, content] : FCells) sheet.Set(address, content);
    for (const auto& [name, formula] : FNames) sheet.Workbook.SetNamedFormula(name, formula);
    if (FIsEntered) sheet.Set(APlace, AFormula);
    TStrings results{FIsEntered       ? sheet.Run(APlace)
                     : APlace.empty() ? sheet.Eval(AFormula)
                                      : sheet.EvalAt(APlace, AFormula)};
    if (!FShown.empty()) results.push_back(sheet.Show(FShown));
    EXPECT_EQ(sheet.Eval("=x"), "#NAME?") << "left bound by " << AFormula;
    return results;
  }

  /// What a call gives, or for "*" the call of each function of the last @for.
  TStrings Results(std::string ACall) const {
    for (const auto& [name, text] : FTexts) {
      if (const size_t at = ACall.find(name); at != ACall.npos) ACall.replace(at, name.size(), text);
    }
    const size_t open = ACall.find('(');
    if (open == ACall.npos || !ACall.ends_with(')')) throw std::invalid_argument("no call");
    const std::string name = ACall.substr(0, open);
    const std::string args = ACall.substr(open + 1, ACall.size() - open - 2);
    TStrings results;
    for (const std::string& function : name == "*" ? FFunctions : TStrings{name}) {
      const TFormulaArg result = ResultOf(function, ArgsOf(args));
      EXPECT_FALSE(result.HasOrigin || result.IsView()) << ACall;
      results.push_back(Shown(result));
    }
    if (results.empty()) throw std::invalid_argument("no @for above");
    return results;
  }

  bool Agree(const std::string& AGot, const std::string& AWanted) const {
    if (AGot == AWanted) return true;
    const auto isNumber = [](const std::string& AText, double& ANumber) {
      char* end = nullptr;
      ANumber = std::strtod(AText.c_str(), &end);
      return *end == '\0';
    };
    double got = 0;
    double wanted = 0;
    if (!isNumber(AGot, got)) return false;
    if (!isNumber(AWanted, wanted)) return IsDate(AWanted) && AGot == Shown(ValueOf(AWanted));
    return std::fabs(got - wanted) <= FTolerance * (wanted == 0 ? 1 : std::fabs(wanted));
  }

  test::TLocaleGuard FLocale;
  TStrings FFunctions;
  std::map<std::string, std::string> FTexts;
  TPairs FCells;
  TPairs FNames;
  std::string FPlace;  // of formulas without one of their own; empty for texts that stand in no cell
  bool FIsEntered = false;
  std::string FShown;
  double FTolerance = 0;
};

class CallTables : public ::testing::TestWithParam<const char*> {};

TEST_P(CallTables, GiveTheResultsWritten) {
  TCallTable table;
  for (const test::TCase& line : test::CasesOf("calls/" + std::string(GetParam()) + ".tsv", 1, 64)) {
    try {
      table.Read(line);
    } catch (const std::invalid_argument& error) {
      ADD_FAILURE() << line.Place() << ": " << error.what();
    }
  }
  EXPECT_GT(table.Examples, 0);
  RecordProperty("examples", table.Examples);
}

INSTANTIATE_TEST_SUITE_P(Data, CallTables, ::testing::ValuesIn(kTables),
                         [](const ::testing::TestParamInfo<const char*>& AInfo) { return std::string(AInfo.param); });

TEST(CallTableFiles, AreAllRun) {
  std::set<std::string> files;
  for (const auto& file : std::filesystem::directory_iterator(TESS_SOURCE_DIR "/tests/data/calls")) {
    if (file.path().extension() == ".tsv") files.insert(file.path().stem().string());
  }
  EXPECT_EQ(files, (std::set<std::string>(std::begin(kTables), std::end(kTables))));
}

}  // namespace
}  // namespace tessarine::testing
