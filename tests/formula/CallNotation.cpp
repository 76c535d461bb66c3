#include "CallNotation.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <stdexcept>

#include <tessarine/platform/Dates.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::testing {

namespace {

/// "2024-02-29" as its serial number.
bool TryDate(std::string_view AWord, double& ASerial) {
  if (AWord.size() != 10 || AWord[4] != '-' || AWord[7] != '-') return false;
  int parts[3] = {};
  for (const auto& [index, at, count] : {std::tuple{0, 0, 4}, {1, 5, 2}, {2, 8, 2}}) {
    const char* const end = AWord.data() + at + count;
    if (std::from_chars(AWord.data() + at, end, parts[index]).ptr != end) return false;
  }
  return TryEncodeDate(parts[0], parts[1], parts[2], ASerial);
}

class TNotationReader {
 public:
  explicit TNotationReader(std::string_view AText) : FText(AText) {}

  std::vector<TFormulaArg> Args() {
    std::vector<TFormulaArg> args;
    for (SkipBlanks(); !FText.empty(); SkipBlanks()) args.push_back(Arg());
    return args;
  }

 private:
  void SkipBlanks() { FText.remove_prefix(std::min(FText.find_first_not_of(' '), FText.size())); }

  bool Take(char AUnit) {
    if (FText.empty() || FText.front() != AUnit) return false;
    FText.remove_prefix(1);
    return true;
  }

  TFormulaArg Arg() {
    if (FText.starts_with("fn")) {
      FText.remove_prefix(2);
      return TFormulaArg::FromLambda(nullptr);
    }
    return Take('[') ? Rectangle() : TFormulaArg::FromScalar(Value());
  }

  TFormulaArg Rectangle() {
    std::vector<TCellValue> cells;
    int32_t rows = 1;
    for (SkipBlanks(); !Take(']'); SkipBlanks()) {
      if (FText.empty()) throw std::invalid_argument("no ]");
      if (Take(';')) {
        ++rows;
      } else {
        cells.push_back(Value());
      }
    }
    if (cells.empty()) return TFormulaArg::FromRange({}, 0, 0);
    const auto cols = static_cast<int32_t>(cells.size()) / rows;
    if (static_cast<int32_t>(cells.size()) != rows * cols) throw std::invalid_argument("rows of different lengths");
    return TFormulaArg::FromRange(std::move(cells), rows, cols);
  }

  TCellValue Value() {
    if (FText.starts_with('\'')) return TCellValue::FromText(TText::FromUtf8(QuotedText()));
    const std::string_view word = FText.substr(0, FText.find_first_of(" ;]"));
    FText.remove_prefix(word.size());
    return ValueOf(word);
  }

  std::string QuotedText() {
    std::string text;
    for (FText.remove_prefix(1); !Take('\'') || FText.starts_with('\''); FText.remove_prefix(1)) {
      if (FText.empty()) throw std::invalid_argument("a text without its end");
      text += FText.front();
    }
    return text;
  }

  std::string_view FText;
};

}  // namespace

std::vector<TFormulaArg> ArgsOf(std::string_view ANotation) { return TNotationReader(ANotation).Args(); }

TCellValue ValueOf(std::string_view ANotation) {
  if (ANotation == "_") return {};
  if (ANotation == "TRUE") return TCellValue::FromBoolean(true);
  if (ANotation == "FALSE") return TCellValue::FromBoolean(false);
  for (int code = 0; code <= static_cast<int>(ceSpill); ++code) {
    const auto error = static_cast<TCellErrorCode>(code);
    if (ErrorCodeToString(error).ToUtf8() == ANotation) return TCellValue::FromError(error);
  }
  double number = 0;
  if (!TryDate(ANotation, number) && !TryParseFileNumber(ANotation, number)) {
    throw std::invalid_argument("no value: " + std::string(ANotation));
  }
  return TCellValue::FromNumber(number);
}

std::string Shown(const TCellValue& AValue) {
  switch (AValue.Kind) {
    case cvkEmpty: return "_";
    case cvkText: return "'" + AValue.Text.ToUtf8() + "'";
    case cvkFormula: return "formula " + AValue.Text.ToUtf8();
    case cvkNumber: return Utf16ToUtf8(GeneralNumberText(AValue.Number));
    case cvkBoolean:
    case cvkError: break;
  }
  return AValue.ToDisplayString().ToUtf8();
}

std::string Shown(const TFormulaArg& AArg) {
  if (!AArg.IsRange) return Shown(AArg.Scalar);
  std::string shown = "[";
  for (int32_t row = 0; row < AArg.RowCount; ++row) {
    if (row > 0) shown += ";";
    for (int32_t col = 0; col < AArg.ColCount; ++col) shown += (col > 0 ? " " : "") + Shown(AArg.CellAt(row, col));
  }
  return shown + "]";
}

TFormulaArg ResultOf(std::string_view AName, const std::vector<TFormulaArg>& AArgs) {
  const std::u16string name = Utf8ToUtf16(AName);
  const TFunctionDef* const row = FindFunction(name);
  if (row && row->ArrayBody) return row->ArrayBody(AArgs, {});
  TCellValue value;
  if (!TryEvaluateExtra(name, AArgs, {}, value)) value = EvaluateFunction(name, AArgs, {});
  return TFormulaArg::FromScalar(std::move(value));
}

std::string Called(std::string_view AName, std::string_view AArgs) { return Shown(ResultOf(AName, ArgsOf(AArgs))); }

double NumberCalled(std::string_view AName, std::string_view AArgs) {
  const TCellValue value = ResultOf(AName, ArgsOf(AArgs)).First();
  return value.Kind == cvkNumber ? value.Number : std::nan("");
}

}  // namespace tessarine::testing
