// Any text as a query, over a small rectangle that stands in a sheet and one that is an array: nothing may crash, and
// the fast way must show what the plain one does.
//
// The input: a byte whose bits 0 and 1 are the header rows and whose others turn the data, then the query in UTF-8.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/library/detail/Query.h>

namespace {

using namespace tessarine;

constexpr int32_t kRows = 24;
constexpr int32_t kCols = 4;

TCellValue CellOf(uint32_t AIndex) {
  static const char16_t* const kTexts[] = {u"a", u"A", u"b", u"10", u"", u"a\u0001", u"TRUE", u"\xD800"};
  switch (AIndex % 5) {
    case 0: return TCellValue::FromNumber(AIndex % 7 / 2.0);
    case 1: return TCellValue::FromText(kTexts[AIndex / 5 % 8]);
    case 2: return AIndex % 3 == 0 ? TCellValue() : TCellValue::FromBoolean(AIndex % 2 == 0);
    case 3: return AIndex % 11 == 0 ? TCellValue::FromError(ceNA) : TCellValue::FromNumber(AIndex);
    default: return TCellValue::FromText(kTexts[AIndex / 5 % 3]);
  }
}

void RequireEqual(const TFormulaArg& ALeft, const TFormulaArg& ARight) {
  if (ALeft.IsRange != ARight.IsRange || ALeft.RowCount != ARight.RowCount || ALeft.ColCount != ARight.ColCount ||
      ALeft.Scalar != ARight.Scalar || ALeft.Cells() != ARight.Cells()) {
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  if (ASize == 0) return 0;
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  std::vector<TCellValue> cells;
  for (int32_t place = 0; place < kRows * kCols; ++place) {
    cells.push_back(CellOf(static_cast<uint32_t>(place) * 7 + (AData[0] >> 2)));
    if (!cells.back().IsEmpty()) sheet.SetValue({place % kCols + 1, place / kCols + 1}, cells.back());
  }
  const std::string_view text(reinterpret_cast<const char*>(AData + 1), ASize - 1);
  std::vector<TFormulaArg> args = {TFormulaArg::FromRange(cells, kRows, kCols),
                                   TFormulaArg::FromScalar(TCellValue::FromText(TText::FromUtf8(text))),
                                   TFormulaArg::FromScalar(TCellValue::FromNumber(AData[0] & 3))};
  const TFormulaArg plain = detail::EvalQueryPlain(args);
  RequireEqual(detail::EvalQuery(args), plain);
  args[0] = TFormulaArg::FromView(sheet, 0, 1, 1, kRows, kCols);
  RequireEqual(detail::EvalQuery(args), plain);
  return 0;
}
