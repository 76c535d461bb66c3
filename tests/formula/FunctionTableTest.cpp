#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/platform/Unicode.h>

#include "../support/CaseTable.h"
#include "CallNotation.h"

namespace tessarine {

namespace {

std::string NameOf(const TFunctionDef& ARow) { return Utf16ToUtf8(ARow.Name); }

TEST(FunctionTable, FamiliesAreSortedAndNamesUnique) {
  size_t count = 0;
  for (const TFunctionFamily& family : FunctionFamilies()) {
    const auto rows = family.Functions;
    count += rows.size();
    for (size_t i = 1; i < rows.size(); ++i) EXPECT_LT(rows[i - 1].Name, rows[i].Name) << NameOf(rows[i]);
  }
  const auto all = AllFunctions();
  EXPECT_EQ(all.size(), count);
  for (size_t i = 1; i < all.size(); ++i) EXPECT_LT(all[i - 1]->Name, all[i]->Name) << NameOf(*all[i]);
}

/// A function's first name and its other spellings.
std::vector<std::u16string> NamesOf(const TFunctionDef& ARow) {
  std::vector<std::u16string> names{std::u16string(ARow.Name)};
  std::u16string_view rest = ARow.Spellings;
  while (!rest.empty()) {
    names.emplace_back(rest.substr(0, rest.find(u' ')));
    rest.remove_prefix(std::min(names.back().size() + 1, rest.size()));
  }
  return names;
}

TEST(FunctionTable, RowsAreComplete) {
  for (const TFunctionDef* row : AllFunctions()) {
    for (const std::u16string& name : NamesOf(*row)) {
      EXPECT_EQ(FindFunction(name), row) << Utf16ToUtf8(name);
      EXPECT_EQ(CanonicalFunctionName(name), name);
    }
    EXPECT_FALSE(row->Description.empty()) << NameOf(*row);
    EXPECT_EQ(row->Description.find(u'\n'), row->Description.npos) << NameOf(*row);
    EXPECT_TRUE(row->MaxArgs == -1 || row->MaxArgs >= row->MinArgs) << NameOf(*row);
    EXPECT_EQ(row->Arguments.empty(), row->MaxArgs == 0) << NameOf(*row);
    EXPECT_EQ(row->Body != nullptr, row->Tier == ftrBasic || row->Tier == ftrExtra) << NameOf(*row);
    EXPECT_EQ(row->ArrayBody != nullptr, row->Tier == ftrArray) << NameOf(*row);
  }
}

/// Whether a result may stand in a cell.
void ExpectSound(const TCellValue& AValue, const TFunctionDef& ARow, const std::string& AArgs) {
  EXPECT_TRUE(AValue.Kind != cvkNumber || std::isfinite(AValue.Number)) << NameOf(ARow) << "(" << AArgs << ")";
  EXPECT_NE(AValue.Kind, cvkFormula) << NameOf(ARow) << "(" << AArgs << ")";
}

void CallSoundly(const TFunctionDef& ARow, const std::string& AArgs, const TFormulaContext& AContext) {
  const std::vector<TFormulaArg> args = testing::ArgsOf(AArgs);
  if (ARow.Body) ExpectSound(ARow.Body(args, AContext), ARow, AArgs);
  if (!ARow.ArrayBody) return;
  const TFormulaArg result = ARow.ArrayBody(args, AContext);
  for (int64_t i = 0; i < result.CellCount(); ++i) ExpectSound(TCellValue::FromView(result.ViewAt(i)), ARow, AArgs);
  ExpectSound(result.First(), ARow, AArgs);
}

TEST(FunctionTable, EveryRowStandsArgumentsOfEveryKindAndCount) {
  TWorkbook book;
  book.SetNetworkAllowed(false);
  TFormulaContext context;
  context.Workbook = &book;
  context.Sheet = book.GetSheet(0);
  context.SheetIndex = 0;
  const char* const values[] = {"_",    "''",    "'text'",          "'-7.5'", "0",   "1",   "-1",
                                "2.5",  "1e300", "-1e300",          "1e-300", "2e9", "5e9", "TRUE",
                                "#N/A", "[]",    "[1 2;'x' #REF!]", "[_;-3]", "fn"};
  for (const TFunctionDef* row : AllFunctions()) {
    CallSoundly(*row, "", context);
    const int most = std::max<int>(row->MinArgs, row->MaxArgs < 0 ? row->MinArgs + 2 : row->MaxArgs);
    for (int count = 1; count <= most + 1; ++count) {
      for (const char* value : values) {
        std::string same;
        std::string mixed = "2";
        for (int i = 0; i < count; ++i) same += std::string(value) + ' ';
        for (int i = 1; i < count; ++i) mixed += std::string(" ") + (i % 2 ? value : "[3 1;2 4]");
        CallSoundly(*row, same, context);
        CallSoundly(*row, mixed, context);
      }
    }
  }
}

TEST(FunctionTable, DispatchByTier) {
  TCellValue value;
  EXPECT_EQ(testing::Shown(EvaluateFunction(u"SUM", {}, {})), "0");
  EXPECT_FALSE(TryEvaluateExtra(u"SUM", {}, {}, value));
  for (const std::u16string_view name : {u"NOSUCHNAME", u"sum", u"", u"OFFSET", u"INDIRECT", u"ISOMITTED", u"CELL"}) {
    EXPECT_EQ(testing::Shown(EvaluateFunction(name, {}, {})), "#NAME?") << Utf16ToUtf8(name);
  }
  EXPECT_FALSE(TryEvaluateExtra(u"OFFSET", {}, {}, value));
  EXPECT_FALSE(TryEvaluateExtra(u"NOSUCHNAME", {}, {}, value));
  ASSERT_TRUE(TryEvaluateExtra(u"CELL", {}, {}, value));
  EXPECT_EQ(testing::Shown(value), "#N/A");
  EXPECT_TRUE(IsUnsupportedFunction(u"F.INV.RT"));
  EXPECT_FALSE(IsUnsupportedFunction(u"SUM"));
  EXPECT_FALSE(IsUnsupportedFunction(u"NOSUCHNAME"));
}

TEST(FunctionTable, NamesAsTheyAreWritten) {
  using test::TCase;
  test::ExpectCases("formula/function_names.tsv",
                    {{"canonical", [](const TCase& ACase) { return CanonicalFunctionName(ACase.Text(1)); }},
                     {"spills", [](const TCase& ACase) { return IsDynamicArraySpillFormulaText(ACase.Text(1)); }}});
  EXPECT_TRUE(IsDynamicArraySpillFunction(u"array_constrain"));
  EXPECT_TRUE(IsDynamicArraySpillFunction(u"WRAPROWS"));
  EXPECT_FALSE(IsDynamicArraySpillFunction(u"OFFSET"));
}

TEST(FunctionTable, RangesStandAndScalarsBecomeOneCell) {
  const TFormulaArg scalar = AsRangeArg(testing::ArgsOf("7")[0]);
  EXPECT_TRUE(scalar.IsRange);
  EXPECT_EQ(scalar.CellCount(), 1);
  EXPECT_EQ(testing::Shown(scalar.CellAt(0, 0)), "7");
  EXPECT_EQ(AsRangeArg(testing::ArgsOf("[1 2;3 4]")[0]).CellCount(), 4);
  EXPECT_EQ(AsRangeArg(testing::ArgsOf("[]")[0]).CellCount(), 0);
}

}  // namespace

}  // namespace tessarine
