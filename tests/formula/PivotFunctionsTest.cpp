#include <gtest/gtest.h>

#include <string>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/Evaluator.h>
#include <tessarine/formula/PivotData.h>

#include "../support/CaseTable.h"
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

TEST(PivotFunctions, AnswerByTheSourceOfTheHost) {
  TWorkbook book;
  book.AddSheet(u"Sheet2");
  TFormulaEvaluator evaluator(book);
  const TPivots pivots;
  const auto* const before = PivotDataSource();  // the pivot engine's where that is linked
  const auto answer = [&](const TPivots* APivots, const test::TCase& ACase) {
    SetPivotDataSource(APivots);
    const std::string shown = testing::Shown(evaluator.Evaluate(ACase[1]));
    SetPivotDataSource(before);
    return shown;
  };
  test::ExpectCases("formula/pivots.tsv",
                    {{"without", [&](const test::TCase& ACase) { return answer(nullptr, ACase); }},
                     {"with", [&](const test::TCase& ACase) { return answer(&pivots, ACase); }}});
  EXPECT_EQ(pivots.Asked, "1010101") << "the sheet of the reference first, then from the last to the first";
}

}  // namespace

}  // namespace tessarine
