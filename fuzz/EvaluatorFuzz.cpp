// A small sheet from the input, one cell a line, evaluated with all fast paths and with none: nothing may crash, and
// both must show the same.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/Evaluator.h>
#include <tessarine/formula/detail/Interpreter.h>
#include <tessarine/platform/Numbers.h>

namespace {

using namespace tessarine;

constexpr int32_t kCols = 4;
constexpr size_t kMaxCells = 48;

TCellValue ValueOf(std::string_view ALine) {
  const TText text = TText::FromUtf8(ALine);
  double number = 0;
  if (ALine.front() == '=') return TCellValue::FromFormula(text);
  if (TryParseFileNumber(ALine, number)) return TCellValue::FromNumber(number);
  if (ALine == "TRUE") return TCellValue::FromBoolean(true);
  return TCellValue::FromText(text);
}

void Fill(TWorkbook& ABook, std::string_view AInput) {
  TWorksheet& sheet = *ABook.GetSheet(0);
  for (size_t i = 0; i < kMaxCells && !AInput.empty(); ++i) {
    const size_t end = AInput.find('\n');
    const std::string_view line = AInput.substr(0, end);
    AInput = end == AInput.npos ? std::string_view() : AInput.substr(end + 1);
    const auto place = static_cast<int32_t>(i);
    if (!line.empty()) sheet.SetValue({place % kCols + 1, place / kCols + 1}, ValueOf(line));
  }
}

/// Functions whose results differ from one evaluation to the next.
bool IsRepeatable(std::string_view AInput) {
  std::string upper(AInput);
  for (char& unit : upper) unit = unit >= 'a' && unit <= 'z' ? static_cast<char>(unit - 32) : unit;
  return upper.find("RAND") == upper.npos && upper.find("NOW") == upper.npos && upper.find("TODAY") == upper.npos;
}

std::vector<TText> Shown(const TWorkbook& ABook) {
  std::vector<TText> texts;
  const TWorksheet& sheet = *ABook.GetSheet(0);
  for (int32_t row = 1; row <= 24; ++row) {
    for (int32_t col = 1; col <= 12; ++col) texts.push_back(sheet.GetEffectiveValue({col, row}).ToDisplayString());
  }
  return texts;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  const std::string_view input(reinterpret_cast<const char*>(AData), ASize);
  TWorkbook fast;
  TWorkbook plain;
  Fill(fast, input);
  Fill(plain, input);
  TFormulaEvaluator fastEvaluator(fast);
  TFormulaEvaluator plainEvaluator(plain);
  plainEvaluator.Options() = {false, false, false, false, false};
  for (const bool again : {false, true}) {
    if (again) {
      const TCellValue edited = TCellValue::FromNumber(7.25);
      fast.GetSheet(0)->SetValue({1, 1}, edited);
      plain.GetSheet(0)->SetValue({1, 1}, edited);
      fastEvaluator.NotifyCellChanged(0, 1, 1);
      plainEvaluator.NotifyCellChanged(0, 1, 1);
    } else {
      fastEvaluator.RecalculateAll();
      plainEvaluator.RecalculateAll();
    }
    if (IsRepeatable(input) && Shown(fast) != Shown(plain)) std::abort();
  }
  return 0;
}
