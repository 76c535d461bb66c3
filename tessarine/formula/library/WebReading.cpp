#include <tessarine/formula/library/detail/WebReading.h>

#include <algorithm>
#include <utility>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/formula/FunctionTable.h>
#include <tessarine/platform/Http.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

constexpr size_t kMaxUrl = 2048;

bool IsUnreserved(char AByte) {
  const auto unit = static_cast<char16_t>(static_cast<unsigned char>(AByte));
  return IsAsciiDigit(unit) || IsAsciiLetter(unit) || AByte == '-' || AByte == '.' || AByte == '_' || AByte == '~';
}

TCellValue PlainValue(TCellValue AValue) {
  if (AValue.Kind == cvkNumber) return NumberOrError(AValue.Number);
  if (AValue.Kind == cvkFormula) return TextOf(std::move(AValue.Text));
  return AValue;
}

}  // namespace

std::optional<TFormulaArg> ErrorOfArgs(TFormulaArgs AArgs, size_t AMinArgs) {
  for (const TFormulaArg& arg : AArgs) {
    if (arg.FirstView().IsError()) return TFormulaArg::FromScalar(arg.First());
  }
  if (AArgs.size() < AMinArgs) return TFormulaArg::FromError(ceValue);
  return std::nullopt;
}

std::u16string TrimmedArg(TFormulaArgs AArgs, size_t AIndex) {
  if (AIndex >= AArgs.size()) return {};
  std::u16string buffer;
  return std::u16string(TrimSpaces(ArgTextView(AArgs[AIndex], buffer)));
}

bool IsGiven(TFormulaArgs AArgs, size_t AIndex) {
  return AIndex < AArgs.size() && !AArgs[AIndex].FirstView().IsEmpty();
}

std::optional<bool> TryArgAsBool(TFormulaArgs AArgs, size_t AIndex) {
  if (!IsGiven(AArgs, AIndex)) return std::nullopt;
  const TValueView value = AArgs[AIndex].FirstView();
  if (value.Kind == cvkBoolean) return value.BooleanValue;
  if (value.Kind == cvkNumber) return value.Number != 0;
  if (value.Kind != cvkText) return std::nullopt;
  const std::u16string_view text = TrimSpaces(value.Text());
  if (EqualAsciiNoCase(text, u"TRUE")) return true;
  if (EqualAsciiNoCase(text, u"FALSE")) return false;
  return std::nullopt;
}

std::optional<int64_t> WholeArgOr(TFormulaArgs AArgs, size_t AIndex, int64_t ADefault) {
  if (!IsGiven(AArgs, AIndex)) return ADefault;
  int64_t number = 0;
  if (!ArgAsInt64(AArgs[AIndex], number)) return std::nullopt;
  return number;
}

bool IsWebUrl(std::u16string_view AUrl) {
  if (AUrl.size() > kMaxUrl) return false;
  return EqualAsciiNoCase(AUrl.substr(0, 7), u"http://") || EqualAsciiNoCase(AUrl.substr(0, 8), u"https://");
}

std::optional<TText> FetchCached(const TFormulaContext& AContext, std::u16string_view AUrl, size_t AMaxUnits) {
  TWorkbook* workbook = AContext.Workbook;
  if (!workbook) return std::nullopt;
  if (auto cached = workbook->TryGetWebCache(AUrl)) {
    if (cached->Length() > AMaxUnits) return std::nullopt;
    return cached;
  }
  if (!workbook->NetworkAllowed()) return std::nullopt;
  const std::shared_ptr<IHttpClient> client = workbook->HttpClient;
  const THttpText answer = TTessarineHttp::GetText(AUrl, kFetchTimeoutMs, AMaxUnits, client.get());
  if (!answer.IsGood) return std::nullopt;
  TText text(answer.Text);
  workbook->PutWebCache(AUrl, text);
  return text;
}

std::string PercentEncoded(std::u16string_view AText) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string out;
  for (const char byte : Utf16ToUtf8(AText)) {
    const auto code = static_cast<unsigned char>(byte);
    if (IsUnreserved(byte)) {
      out += byte;
    } else {
      ((out += '%') += kDigits[code >> 4]) += kDigits[code & 0xF];
    }
  }
  return out;
}

TCellValue TypedCell(TText AText) {
  double number = 0;
  if (TextAsNumber(AText, number)) return NumberOrError(number);
  return TextOf(std::move(AText));
}

TFormulaArg RectangleOf(TValueRows ARows) {
  size_t cols = 0;
  for (const auto& row : ARows) cols = std::max(cols, row.size());
  if (cols == 0) return TFormulaArg::FromError(ceNA);
  if (ARows.size() > static_cast<size_t>(kMaxGeneratedCells) / cols) return TFormulaArg::FromError(ceNum);
  std::vector<TCellValue> cells;
  cells.reserve(ARows.size() * cols);
  for (auto& row : ARows) {
    row.resize(cols, TextOf({}));
    std::move(row.begin(), row.end(), std::back_inserter(cells));
  }
  return TFormulaArg::FromRange(std::move(cells), static_cast<int32_t>(ARows.size()), static_cast<int32_t>(cols));
}

TFormulaArg ColumnOf(std::vector<TCellValue> AValues) {
  if (AValues.empty()) return TFormulaArg::FromError(ceNA);
  if (AValues.size() == 1) return TFormulaArg::FromScalar(std::move(AValues[0]));
  if (AValues.size() > static_cast<size_t>(kMaxGeneratedCells)) return TFormulaArg::FromError(ceNum);
  const auto rows = static_cast<int32_t>(AValues.size());
  return TFormulaArg::FromRange(std::move(AValues), rows, 1);
}

TFormulaArg BlockOf(TProviderBlock ABlock) {
  const bool isShaped = ABlock.Rows > 0 && ABlock.Cols > 0 &&
                        static_cast<uint64_t>(ABlock.Rows) * static_cast<uint64_t>(ABlock.Cols) == ABlock.Values.size();
  if (!isShaped) return TFormulaArg::FromError(ceNA);
  for (TCellValue& value : ABlock.Values) value = PlainValue(std::move(value));
  if (ABlock.Values.size() == 1) return TFormulaArg::FromScalar(std::move(ABlock.Values[0]));
  return TFormulaArg::FromRange(std::move(ABlock.Values), ABlock.Rows, ABlock.Cols);
}

}  // namespace tessarine::detail
