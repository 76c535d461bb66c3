// A call of one function: its name in the first line, its arguments in the second, by blanks. Any name and any argument
// stands for something, see TArguments. No call may crash, take long, or yield what may not stand in a cell.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/Evaluator.h>
#include <tessarine/formula/FunctionTable.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace {

using namespace tessarine;

constexpr size_t kMostArguments = 8;

/// A sheet with values of all kinds in A1:C8, a column of numbers in E and dates in F.
struct TGround {
  TGround() {
    Book.SetNetworkAllowed(false);
    TWorksheet& sheet = *Book.GetSheet(0);
    const TCellValue values[] = {
        TCellValue::FromText(u"Name"), TCellValue::FromText(u"Sum"),  TCellValue::FromText(u"Date"),
        TCellValue::FromText(u"b"),    TCellValue::FromNumber(-2.5),  TCellValue::FromNumber(45000),
        TCellValue::FromText(u""),     TCellValue::FromNumber(1e300), TCellValue::FromBoolean(true),
        TCellValue::FromText(u"12"),   TCellValue::FromNumber(0),     TCellValue::FromError(ceDiv0),
        TCellValue::FromText(u"b"),    TCellValue::FromNumber(7),     {},
        TCellValue::FromText(u"1+2i"), TCellValue::FromNumber(1e-9),  TCellValue::FromError(ceNA),
    };
    for (size_t i = 0; i < std::size(values); ++i) {
      if (!values[i].IsEmpty())
        sheet.SetValue({static_cast<int32_t>(i % 3) + 1, static_cast<int32_t>(i / 3) + 1}, values[i]);
    }
    for (int32_t row = 1; row <= 300; ++row) {
      sheet.SetValue({5, row}, TCellValue::FromNumber(row * 37 % 101 - 20.5));
      sheet.SetValue({6, row}, TCellValue::FromNumber(44000 + row * 91));
    }
    sheet.SetValue({8, 8}, TCellValue::FromFormula(u"=1"));
  }

  TWorkbook Book;
};

/// Values that functions are known to mind.
constexpr double kNumbers[] = {0,    1,     -1,     2,   0.5,   -0.5,   3,     10,     1e300, -1e300,     1e-300,
                               1e15, -1e15, 1e308,  255, 45000, 2.9e6,  1e9,   1e6,    -1e6,  2147483648, -2147483649.,
                               9e18, -1e19, 0.9999, 100, 36525, 1.5e-5, 1e-15, 1048576};
constexpr std::u16string_view kTexts[] = {u"",
                                          u"a",
                                          u"12",
                                          u"-7.5",
                                          u"1e999",
                                          u"TRUE",
                                          u"2024-02-29",
                                          u"3:45 PM",
                                          u">5",
                                          u"<>",
                                          u"[a-z]+(b|c)*",
                                          u"(((a+)+)+)+$",
                                          u"{\"a\":[1]}",
                                          u"<a><b/></a>",
                                          u"//b",
                                          u"select A, sum(B) group by A",
                                          u"0.00",
                                          u"km",
                                          u"3+4i",
                                          u"XIV",
                                          u"http://127.0.0.1:9/x"};

/// What a word of the second line stands for: a number as written, 'text', "#" and a digit for an error, T or F, "_"
/// for a blank, "r" and two digits for a rectangle of that shape, "v" and a digit for cells of the sheet, "n" or "t"
/// and any character for one of the values above; anything else is a text of its own.
class TArguments {
 public:
  TArguments(std::string_view ALine, const TWorksheet& ASheet) : FSheet(ASheet) {
    while (!ALine.empty() && Values.size() < kMostArguments) {
      const size_t end = ALine.find(' ');
      Add(ALine.substr(0, end));
      ALine = end == ALine.npos ? std::string_view() : ALine.substr(end + 1);
    }
  }

  std::vector<TFormulaArg> Values;
  std::u16string Formula;  // the same as the arguments of a formula's text

 private:
  static size_t Digit(std::string_view AWord, size_t AAt) {
    return AAt < AWord.size() ? static_cast<unsigned char>(AWord[AAt]) : 0;
  }

  TCellValue ScalarOf(std::string_view AWord) const {
    double number = 0;
    if (AWord.empty() || AWord == "_") return {};
    if (AWord == "T" || AWord == "F") return TCellValue::FromBoolean(AWord == "T");
    if (TryParseFileNumber(AWord, number) && std::isfinite(number)) return TCellValue::FromNumber(number);
    const size_t digit = Digit(AWord, 1);
    if (AWord[0] == '#') return TCellValue::FromError(static_cast<TCellErrorCode>(1 + digit % 9));
    if (AWord[0] == 'n') return TCellValue::FromNumber(kNumbers[digit % std::size(kNumbers)]);
    if (AWord[0] == 't') return TCellValue::FromText(kTexts[digit % std::size(kTexts)]);
    if (AWord[0] == '\'') AWord.remove_prefix(1);
    return TCellValue::FromText(TText::FromUtf8(AWord));
  }

  void Add(std::string_view AWord) {
    if (!Formula.empty()) Formula += u',';
    const size_t digit = Digit(AWord, 1);
    if (AWord.starts_with('r') && AWord.size() > 2) {
      AddRectangle(AWord);
    } else if (AWord.starts_with('v') && AWord.size() > 1) {
      constexpr TCellRange kAreas[] = {{1, 1, 3, 6},   {2, 2, 2, 6}, {5, 1, 5, 300},     {6, 1, 6, 300}, {1, 1, 1, 1},
                                       {5, 1, 6, 300}, {3, 4, 3, 4}, {1, 1, 1, kMaxRow}, {1, 1, 9, 9},   {5, 1, 5, 6}};
      const TCellRange area = kAreas[digit % std::size(kAreas)];
      Values.push_back(TFormulaArg::FromView(FSheet, 0, area.StartCol, area.StartRow, area.Height(), area.Width()));
      Formula += area.ToA1();
    } else {
      const TCellValue value = ScalarOf(AWord);
      Values.push_back(TFormulaArg::FromScalar(value));
      if (value.Kind == cvkText) {
        Formula += u'"';
        for (const char16_t unit : value.Text.View()) Formula.append(unit == u'"' ? 2 : 1, unit);
        Formula += u'"';
      } else {
        Formula += value.Kind == cvkEmpty ? u"H20" : value.Kind == cvkError ? u"C4" : value.ToDisplayString().View();
      }
    }
  }

  void AddRectangle(std::string_view AWord) {
    const auto rows = static_cast<int32_t>(Digit(AWord, 1) % 10);
    const auto cols = static_cast<int32_t>(Digit(AWord, 2) % 10);
    std::vector<TCellValue> cells;
    for (size_t i = 0; i < static_cast<size_t>(rows) * static_cast<size_t>(cols); ++i) {
      const size_t unit = Digit(AWord, 3 + i);
      if (unit == 0) {
        cells.push_back(TCellValue::FromNumber(static_cast<double>(i) - 2.0));
      } else {
        const char word[] = {"n#t_'"[unit % 5], static_cast<char>(unit / 5 + 1)};
        cells.push_back(ScalarOf(std::string_view(word, 2)));
      }
    }
    Values.push_back(TFormulaArg::FromRange(std::move(cells), rows, cols));
    Formula += rows % 2 ? u"{1,2;3,4}" : u"LAMBDA(a,b,a*2&b)";
  }

  const TWorksheet& FSheet;
};

void CheckCell(const TValueView& AValue) {
  if (AValue.Kind == cvkNumber && !std::isfinite(AValue.Number)) std::abort();
  if (AValue.Kind == cvkFormula) std::abort();
  if (AValue.Kind == cvkError && (AValue.ErrorCode == ceNone || AValue.ErrorCode > ceSpill)) std::abort();
  if (AValue.Kind == cvkText && AValue.Text().size() > kMaxGeneratedText) std::abort();
}

void CheckResult(const TFormulaArg& AResult) {
  CheckCell(AResult.FirstView());
  const int64_t count = AResult.CellCount();
  if (!AResult.IsView() && static_cast<int64_t>(AResult.Cells().size()) != count) std::abort();
  if (AResult.IsView() && count > 10'000) return;
  for (int64_t i = 0; i < count; ++i) CheckCell(AResult.ViewAt(i));
}

/// The function of a name, or for any other text some function.
const TFunctionDef& FunctionOf(std::string_view AName) {
  const std::u16string name = CanonicalFunctionName(Utf8ToUtf16(AName));
  if (const TFunctionDef* found = FindFunction(name)) return *found;
  size_t hash = 0;
  for (const char16_t unit : name) hash = hash * 31 + unit;
  return *AllFunctions()[hash % AllFunctions().size()];
}

void Call(const TFunctionDef& AFunction, std::string_view ALine, TGround& AGround) {
  const TArguments arguments(ALine, *AGround.Book.GetSheet(0));
  TFormulaContext context;
  context.Workbook = &AGround.Book;
  context.Sheet = AGround.Book.GetSheet(0);
  context.SheetIndex = 0;
  context.StyleSheet = &AGround.Book.StyleSheet();
  context.EvalCol = 8;
  context.EvalRow = 8;
  if (AFunction.Body) CheckResult(TFormulaArg::FromScalar(AFunction.Body(arguments.Values, context)));
  if (AFunction.ArrayBody) CheckResult(AFunction.ArrayBody(arguments.Values, context));
  if (AFunction.Body || AFunction.ArrayBody) return;
  TFormulaEvaluator evaluator(AGround.Book);
  CheckResult(evaluator.EvaluateAt(u"=" + std::u16string(AFunction.Name) + u"(" + arguments.Formula + u")", 0, 8, 8));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  const std::string_view input(reinterpret_cast<const char*>(AData), ASize);
  const std::string_view name = input.substr(0, input.find('\n'));
  const TFunctionDef& function = FunctionOf(name);
  const std::clock_t start = std::clock();
  TGround ground;
  Call(function, input.substr(std::min(name.size() + 1, input.size())), ground);
  constexpr std::clock_t kLongest = 20 * CLOCKS_PER_SEC;  // of processor time; some two seconds in an ordinary build
  if (std::clock() - start > kLongest) {
    std::fprintf(stderr, "%s takes too long\n", Utf16ToUtf8(function.Name).c_str());
    std::abort();
  }
  return 0;
}
