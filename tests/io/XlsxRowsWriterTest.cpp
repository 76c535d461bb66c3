#include <tessarine/io/xlsx/detail/XlsxRowsWriter.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/xlsx/detail/XlsxPlanWriter.h>
#include <tessarine/platform/Progress.h>

namespace tessarine::detail {
namespace {

/// ACount cells of all kinds in rows up to ARows, rows with sizes among, above and below them, and a block that spills.
void Fill(TWorksheet& ASheet, int32_t ACount, int32_t ARows, uint32_t ASeed) {
  std::mt19937 random(ASeed);
  const auto below = [&](int32_t ALimit) { return static_cast<int32_t>(random() % static_cast<uint32_t>(ALimit)); };
  TCellStore& store = ASheet.Store();
  for (int32_t i = 0; i < ACount; ++i) {
    const int32_t col = below(8) == 0 ? 1 + below(kMaxCol) : 1 + below(30);
    const int32_t row = 1 + below(ARows);
    const int32_t style = below(4) == 0 ? below(3) : 0;
    switch (below(6)) {
      case 0: store.SetText(col, row, TText(u"t<" + std::u16string(1 + random() % 50, u'x')), style); break;
      case 1: store.SetFormula(col, row, u"=SUM(A1:B" + std::u16string(1, u"123"[random() % 3]) + u")", style); break;
      case 2: store.SetValue(col, row, TCellValue::FromBoolean(row % 2 == 0), style); break;
      case 3: store.SetValue(col, row, TCellValue::FromError(ceNA), style); break;
      default: store.SetNumber(col, row, below(100000) / 8.0 - 1000, style);
    }
  }
  for (int32_t i = 0; i < 40; ++i) ASheet.Sizing().SetRowHeightPt(1 + below(ARows + 20), 20 + below(9));
  ASheet.Sizing().SetRowHidden(kMaxRow, true);
  store.SetFormula(1, ARows, u"=SEQUENCE(3)", 0);
  ASheet.Spills().SetSpill(1, ARows, 3, 1, std::vector<TCellValue>(3, TCellValue::FromNumber(1)));
}

/// What a sheet's rows become, in pieces and in one.
struct TRowTexts {
  explicit TRowTexts(TWorkbook& ABook) : Sheet(*ABook.GetSheet(0)), Marked(Sheet.Sizing().MarkedRows()) {
    Plan = TXlsxPlanWriter(ABook, Table, false).Run(Sheet, {});
  }
  TXlsxCellOptions Options() const { return {.Strings = Plan.Strings, .MarkedRows = Marked, .StyleCount = 3}; }
  std::string Parted(const std::vector<TXlsxRowCut>& ACuts, const std::function<void(double)>& AProgress = {}) const {
    std::string text = "before";
    AppendXlsxRows(Sheet, Options(), ACuts, AProgress, text);
    return text;
  }
  std::string Plain() const {
    std::string text = "before";
    AppendXlsxRowsPlain(Sheet, Options(), text);
    return text;
  }

  TWorksheet& Sheet;
  std::vector<int32_t> Marked;
  TSharedStringTable Table;
  TXlsxSheetPlan Plan;
};

/// A cut before every AStep-th row, rows without cells among them.
std::vector<TXlsxRowCut> CutsEvery(const TWorksheet& ASheet, int32_t AStep, int32_t ALastRow) {
  std::vector<TXlsxRowCut> cuts;
  for (int32_t row = 1 + AStep; row <= ALastRow; row += AStep) {
    cuts.push_back({.Row = row});
    ASheet.Store().ForEachByRow({1, 1, kMaxCol, row - 1}, [&](int32_t, int32_t, const TCellSlot& ASlot) {
      ++cuts.back().Cells;
      cuts.back().Strings += ASlot.Kind == cvkText ? 1 : 0;
    });
  }
  return cuts;
}

TEST(XlsxRows, PiecesAndThreadsGiveThePlainText) {
  for (uint32_t seed = 1; seed <= 12; ++seed) {
    TWorkbook book;
    Fill(*book.GetSheet(0), 400, 60, seed);
    const TRowTexts texts(book);
    const std::string plain = texts.Plain();
    EXPECT_TRUE(plain.starts_with("before<sheetData><row r=\"") && plain.ends_with("</sheetData>"));
    EXPECT_NE(plain.find("<row r=\"1048576\" hidden=\"1\"/>"), std::string::npos);
    for (const int32_t step : {1, 2, 7, 25}) EXPECT_EQ(texts.Parted(CutsEvery(texts.Sheet, step, 70)), plain) << step;
  }
  TWorkbook none;
  EXPECT_EQ(TRowTexts(none).Parted({}), "before<sheetData/>");
  EXPECT_EQ(TRowTexts(none).Plain(), "before<sheetData/>");
}

TEST(XlsxRows, ALargeSheetIsPartedByItsPlan) {
  TWorkbook book;
  Fill(*book.GetSheet(0), 120000, 5000, 5);
  const TRowTexts texts(book);
  ASSERT_GE(texts.Plan.Cuts.size(), 4u);
  double last = 0;
  const std::string parted = texts.Parted(texts.Plan.Cuts, [&](double AFraction) {
    EXPECT_GE(AFraction, last);
    last = AFraction;
  });
  EXPECT_EQ(parted, texts.Plain());
  EXPECT_LE(last, 1);
  int calls = 0;
  EXPECT_THROW(texts.Parted(texts.Plan.Cuts,
                            [&](double) {
                              if (++calls == 2) throw std::runtime_error("enough");
                            }),
               std::runtime_error);
  EXPECT_EQ(calls, 2);
}

}  // namespace
}  // namespace tessarine::detail
