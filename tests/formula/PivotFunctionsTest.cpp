#include <gtest/gtest.h>

#include <map>
#include <string>
#include <string_view>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/Evaluator.h>
#include <tessarine/formula/PivotData.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

/// One pivot table, at B2 of the second sheet, which answers with what it was asked; and a cube of two sets.
class TPivots final : public IPivotDataSource {
 public:
  TCellValue GetPivotData(TWorkbook&, int32_t ASheetIndex, TCellAddress AAddress, const TText& AField,
                          std::span<const TPivotItemPair> APairs) const override {
    Asked += std::to_string(ASheetIndex);
    if (ASheetIndex != 1 || AAddress != TCellAddress{2, 2}) return TCellValue::FromError(ceRef);
    std::string text = AField.ToUtf8();
    for (const TPivotItemPair& pair : APairs) text += " " + pair.Field.ToUtf8() + "=" + testing::Shown(pair.Item);
    return TCellValue::FromText(TText::FromUtf8(text));
  }
  std::optional<TText> ResolveMember(const TWorkbook&, const TText& AExpression) const override {
    if (AExpression == u"none") return std::nullopt;
    return AExpression;
  }
  TCellValue EvaluateCubeValue(const TWorkbook&, std::span<const TText> AMembers) const override {
    std::string key;
    for (const TText& member : AMembers) key += member.ToUtf8() + "|";
    return key == "sales|" || key == "sales|2024|" ? TCellValue::FromNumber(static_cast<double>(key.size()))
                                                   : TCellValue::FromError(ceNA);
  }
  std::optional<std::vector<TText>> SetMembers(const TWorkbook&, const TText& ASetName) const override {
    if (ASetName == u"years") return std::vector<TText>{u"2023", u"2024"};
    return std::nullopt;
  }

  mutable std::string Asked;
};

struct TPivotCase {
  const char* Formula;
  const char* Result;
};

void ExpectFormulas(std::initializer_list<TPivotCase> ACases) {
  TWorkbook book;
  book.AddSheet(u"Sheet2");
  TFormulaEvaluator evaluator(book);
  for (const TPivotCase& row : ACases)
    EXPECT_EQ(testing::Shown(evaluator.Evaluate(row.Formula)), row.Result) << row.Formula;
}

TEST(PivotFunctions, WithoutPivotTablesNothingIsFound) {
  ASSERT_EQ(PivotDataSource(), nullptr);
  ExpectFormulas({{"=GETPIVOTDATA(\"f\",A1)", "#REF!"},
                  {"=GETPIVOTDATA(\"f\")", "#VALUE!"},
                  {"=GETPIVOTDATA(1/0,A1)", "#DIV/0!"},
                  {"=FIELDVALUE({7,8},\"x\")", "7"},
                  {"=CUBEVALUE(\"c\")", "#N/A"},
                  {"=CUBEVALUE(\"c\",\"sales\")", "#N/A"},
                  {"=CUBEMEMBER(\"c\",\"m\")", "#N/A"},
                  {"=CUBEKPIMEMBER(\"c\",\"k\",1)", "#N/A"},
                  {"=CUBEMEMBERPROPERTY(\"c\",\"m\",\"p\")", "#N/A"},
                  {"=CUBERANKEDMEMBER(\"c\",\"years\",1)", "#N/A"},
                  {"=CUBESET(\"c\",\"years\")", "#N/A"},
                  {"=CUBESETCOUNT(\"years\")", "#N/A"}});
}

TEST(PivotFunctions, PivotTablesAndCubesAnswer) {
  const TPivots pivots;
  SetPivotDataSource(&pivots);
  ExpectFormulas({{"=GETPIVOTDATA(\"Sum\",Sheet2!B2,\"Year\",2024,\"City\",\"Bonn\")", "'Sum Year=2024 City='Bonn''"},
                  {"=GETPIVOTDATA(\"Sum\",B2)", "'Sum'"},  // found on another sheet
                  {"=GETPIVOTDATA(\"Sum\",\"$B$2\")", "'Sum'"},
                  {"=GETPIVOTDATA(\"Sum\",C2)", "#REF!"},
                  {"=GETPIVOTDATA(\"Sum\",\"nowhere\")", "#REF!"},
                  {"=GETPIVOTDATA(\"Sum\",B2,\"Year\")", "#REF!"},
                  {"=GETPIVOTDATA(\"Sum\",B2,\"Year\",1/0)", "#DIV/0!"},
                  {"=CUBEVALUE(\"c\",\"sales\",\"2024\")", "11"},
                  {"=CUBEVALUE(\"c\",\"sales\",\"1999\")", "#N/A"},
                  {"=CUBEVALUE(\"c\",\"none\")", "#N/A"},
                  {"=CUBEVALUE(\"c\",1/0)", "#DIV/0!"},
                  {"=CUBEMEMBER(\"c\",\"m\")", "'m'"},
                  {"=CUBEMEMBER(\"c\",\"m\",\"shown\")", "'shown'"},
                  {"=CUBEMEMBER(\"c\",\"none\")", "#N/A"},
                  {"=CUBEKPIMEMBER(\"c\",\"sales\",1)", "'sales'"},
                  {"=CUBEKPIMEMBER(\"c\",\"profit\",1)", "#N/A"},
                  {"=CUBEMEMBERPROPERTY(\"c\",\"m\",\"p\")", "#N/A"},
                  {"=CUBERANKEDMEMBER(\"c\",CUBESET(\"c\",\"years\"),2)", "'2024'"},
                  {"=CUBERANKEDMEMBER(\"c\",\"years\",3)", "#N/A"},
                  {"=CUBERANKEDMEMBER(\"c\",\"years\",\"x\")", "#VALUE!"},
                  {"=CUBESET(\"c\",\"years\",\"All years\")", "'All years'"},
                  {"=CUBESET(\"c\",\"days\")", "#N/A"},
                  {"=CUBESETCOUNT(\"years\")", "2"}});
  EXPECT_EQ(pivots.Asked,
            "1"
            "01"
            "01"
            "01")
      << "the sheet of the reference first, then from the last to the first";
  SetPivotDataSource(nullptr);
}

}  // namespace

}  // namespace tessarine
