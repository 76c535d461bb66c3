#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include <tessarine/core/reference/FormulaTokenizer.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/Evaluator.h>
#include <tessarine/formula/FunctionTable.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

using TJson = nlohmann::json;

/// Records of a file; tests/data/README.md tells their form. Empty when there is no such file.
std::vector<TJson> RecordsOf(const std::string& APath) {
  std::ifstream file(std::string(TESS_SOURCE_DIR) + "/" + APath);
  if (!file) return {};
  return TJson::parse(file).get<std::vector<TJson>>();
}

std::string FormulaOf(const TJson& ARecord) { return ARecord.at("f").get<std::string>(); }
TJson CellsOf(const TJson& ARecord) { return ARecord.value("cells", TJson::object()); }

TCellValue ContentOf(const TJson& AContent) {
  if (AContent.is_boolean()) return TCellValue::FromBoolean(AContent.get<bool>());
  if (AContent.is_number()) return TCellValue::FromNumber(AContent.get<double>());
  const std::u16string text = Utf8ToUtf16(AContent.get<std::string>());
  return text.starts_with(u'=') ? TCellValue::FromFormula(text) : TCellValue::FromText(text);
}

/// Which functions a formula calls.
void CollectCalls(const std::string& AFormula, std::set<std::u16string>& ANames) {
  const std::u16string text = Utf8ToUtf16(AFormula);
  const std::vector<TFormulaToken> tokens = TokenizeFormula(text);
  for (size_t i = 0; i + 1 < tokens.size(); ++i) {
    if (tokens[i].Kind == ftFunction && tokens[i + 1].Kind == ftLParen) {
      ANames.insert(CanonicalFunctionName(tokens[i].Text));
    }
  }
}

/// Whether the table has a working function behind each call of the record.
bool KnowsCalls(const TJson& ARecord) {
  std::set<std::u16string> names;
  CollectCalls(FormulaOf(ARecord), names);
  for (const TJson& content : CellsOf(ARecord)) {
    if (content.is_string()) CollectCalls(content.get<std::string>(), names);
  }
  return std::all_of(names.begin(), names.end(), [](const std::u16string& AName) {
    const TFunctionDef* row = FindFunction(AName);
    return row && row->Tier != ftrUnsupported;
  });
}

/// The result of a record's formula, put to the right of and below its cells.
TFormulaArg ResultOf(const TJson& ARecord) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  TCellAddress free{1, 1};
  const TJson cells = CellsOf(ARecord);
  for (const auto& [address, content] : cells.items()) {
    const TCellAddress place = TCellAddress::FromA1(Utf8ToUtf16(address));
    sheet.SetValue(place, ContentOf(content));
    free = {std::max(free.Col, place.Col + 2), std::max(free.Row, place.Row + 2)};
  }
  TFormulaEvaluator evaluator(book);
  evaluator.RecalculateAll();
  TFormulaArg result = evaluator.EvaluateAt(FormulaOf(ARecord), 0, free.Col, free.Row);
  result.Materialize();
  return result;
}

TJson JsonOf(const TCellValue& AValue) {
  switch (AValue.Kind) {
    case cvkNumber: return AValue.Number;
    case cvkBoolean: return AValue.BooleanValue;
    default: return AValue.ToDisplayString().ToUtf8();
  }
}

/// A value, or rows of values for a rectangle of more than one cell.
TJson JsonOf(const TFormulaArg& AResult, bool AIsArray) {
  if (!AIsArray || !AResult.IsRange || AResult.CellCount() <= 1) return JsonOf(AResult.First());
  TJson rows = TJson::array();
  for (int32_t row = 0; row < AResult.RowCount; ++row) {
    TJson cells = TJson::array();
    for (int32_t col = 0; col < AResult.ColCount; ++col) cells.push_back(JsonOf(AResult.CellAt(row, col)));
    rows.push_back(std::move(cells));
  }
  return rows;
}

bool IsAsWanted(const TJson& AGot, const TJson& AWant, double ATolerance) {
  if (AGot.is_array() && AWant.is_array()) {
    return std::equal(AGot.begin(), AGot.end(), AWant.begin(), AWant.end(),
                      [&](const TJson& ALeft, const TJson& ARight) { return IsAsWanted(ALeft, ARight, ATolerance); });
  }
  if (!AGot.is_number() || !AWant.is_number()) return AGot == AWant;
  const double want = AWant.get<double>();
  return std::fabs(AGot.get<double>() - want) <= std::max(ATolerance, 1e-9 * std::fabs(want));
}

struct TOutcome {
  bool IsRight = false;
  TJson Got;
};

TOutcome OutcomeOf(const TJson& ARecord) {
  const TJson got = JsonOf(ResultOf(ARecord), ARecord.value("array", false));
  return {IsAsWanted(got, ARecord.at("want"), ARecord.value("tol", 0.0)), got};
}

TEST(FunctionVectors, SelectedRecordsAgree) {
  const std::vector<TJson> records = RecordsOf("tests/data/function_vectors.json");
  ASSERT_GE(records.size(), 100u);
  for (const TJson& record : records) {
    EXPECT_TRUE(KnowsCalls(record)) << record;
    const TOutcome outcome = OutcomeOf(record);
    EXPECT_TRUE(outcome.IsRight) << record << " gave " << outcome.Got;
  }
}

/// What names an exception: the formula and what the record expects of it, as JSON.
using TExceptionKey = std::pair<std::string, std::string>;

/// The lines of a table in tests/data/vector_exceptions, cut at tabs.
std::vector<std::vector<std::string>> LinesOf(const std::filesystem::path& APath) {
  std::vector<std::vector<std::string>> lines;
  std::ifstream file(APath);
  for (std::string line; std::getline(file, line);) {
    std::vector<std::string> fields(1);
    for (const char unit : line) {
      if (unit == '\t') {
        fields.emplace_back();
      } else {
        fields.back() += unit;
      }
    }
    lines.push_back(std::move(fields));
  }
  return lines;
}

/// The records that the engine answers otherwise on purpose, each under a rule that tells why; the value is whether the
/// record was met. One file a family of functions.
std::map<TExceptionKey, bool> KnownExceptions() {
  const std::filesystem::path folder = std::string(TESS_SOURCE_DIR) + "/tests/data/vector_exceptions";
  std::set<std::string> rules;
  for (const auto& line : LinesOf(folder / "rules.tsv")) {
    EXPECT_TRUE(line.size() == 2 && rules.insert(line[0]).second) << line[0];
  }
  std::map<TExceptionKey, bool> exceptions;
  for (const auto& file : std::filesystem::directory_iterator(folder)) {
    if (file.path().filename() == "rules.tsv") continue;
    for (const auto& line : LinesOf(file.path())) {
      EXPECT_TRUE(line.size() == 3 && rules.contains(line[2])) << file.path() << ": " << line[0];
      EXPECT_TRUE(exceptions.emplace(TExceptionKey(line[0], TJson::parse(line[1]).dump()), false).second) << line[0];
    }
  }
  return exceptions;
}

TEST(FunctionVectors, SharedRecordsAgreeButForKnownDifferences) {
  const std::vector<TJson> records = RecordsOf("../shared/vectors/functions.json");
  if (records.empty()) GTEST_SKIP() << "no shared vectors beside the source tree";
  std::map<TExceptionKey, bool> exceptions = KnownExceptions();
  size_t agreed = 0;
  for (const TJson& record : records) {
    if (!KnowsCalls(record)) continue;
    const TOutcome outcome = OutcomeOf(record);
    if (outcome.IsRight) {
      ++agreed;
      continue;
    }
    const auto known = exceptions.find({FormulaOf(record), record.at("want").dump()});
    if (known == exceptions.end()) {
      ADD_FAILURE() << record << " gave " << outcome.Got;
    } else {
      known->second = true;
    }
  }
  EXPECT_GT(agreed, 1000u);
  for (const auto& [key, isMet] : exceptions) EXPECT_TRUE(isMet) << key.first << " agrees now or is gone";
}

}  // namespace

}  // namespace tessarine
