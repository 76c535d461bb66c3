#include "CallNotation.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::testing {

namespace {

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
      if (Take(';')) {
        ++rows;
      } else {
        cells.push_back(Value());
      }
    }
    if (cells.empty()) return TFormulaArg::FromRange({}, 0, 0);
    const auto cols = static_cast<int32_t>(cells.size()) / rows;
    return TFormulaArg::FromRange(std::move(cells), rows, cols);
  }

  TCellValue Value() {
    if (Take('\'')) {
      const size_t end = FText.find('\'');
      const TText text = TText::FromUtf8(FText.substr(0, end));
      FText.remove_prefix(end + 1);
      return TCellValue::FromText(text);
    }
    const std::string_view word = FText.substr(0, FText.find_first_of(" ;]"));
    FText.remove_prefix(word.size());
    return ValueOf(word);
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
  if (!TryParseFileNumber(ANotation, number)) throw std::invalid_argument("no value: " + std::string(ANotation));
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

std::string Called(std::string_view AName, std::string_view AArgs) {
  const std::u16string name = Utf8ToUtf16(AName);
  const std::vector<TFormulaArg> args = ArgsOf(AArgs);
  TCellValue value;
  if (TryEvaluateExtra(name, args, {}, value)) return Shown(value);
  return Shown(EvaluateFunction(name, args, {}));
}

void ExpectCalls(std::initializer_list<TCallCase> ACases) {
  for (const TCallCase& row : ACases) {
    EXPECT_EQ(Called(row.Name, row.Args), row.Result) << row.Name << "(" << row.Args << ")";
  }
}

}  // namespace tessarine::testing
