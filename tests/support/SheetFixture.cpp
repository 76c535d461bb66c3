#include "SheetFixture.h"

#include <algorithm>
#include <stdexcept>

#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::testing {

TCellValue ContentOf(std::string_view AContent) {
  const std::u16string text = Utf8ToUtf16(AContent);
  if (text == u"_") return {};
  if (text.starts_with(u'=')) return TCellValue::FromFormula(text);
  if (text.starts_with(u'\'')) return TCellValue::FromText(TText(text.substr(1)));
  if (text == u"TRUE" || text == u"FALSE") return TCellValue::FromBoolean(text == u"TRUE");
  for (int code = static_cast<int>(ceDiv0); code <= static_cast<int>(ceSpill); ++code) {
    const auto error = static_cast<TCellErrorCode>(code);
    if (ErrorCodeToString(error) == std::u16string_view(text)) return TCellValue::FromError(error);
  }
  double number = 0;
  if (TryParseFileNumber(text, number)) return TCellValue::FromNumber(number);
  return TCellValue::FromText(TText(text));
}

std::string NotationOf(const TCellValue& AValue) {
  if (AValue.Kind == cvkEmpty) return "_";
  const std::string text = AValue.ToDisplayString().ToUtf8();
  return AValue.Kind == cvkText ? "'" + text + "'" : text;
}

std::string NotationOf(const TFormulaArg& AArg) {
  if (AArg.IsLambda) return "fn";
  if (!AArg.IsRange) return NotationOf(AArg.Scalar);
  std::string shown = "{";
  for (int32_t row = 0; row < AArg.RowCount; ++row) {
    if (row > 0) shown += ";";
    for (int32_t col = 0; col < AArg.ColCount; ++col) shown += (col > 0 ? "," : "") + NotationOf(AArg.CellAt(row, col));
  }
  return shown + "}";
}

TSheetFixture::TPlace TSheetFixture::PlaceOf(std::string_view AAddress) const {
  TPlace place;
  if (const size_t mark = AAddress.find('!'); mark != std::string_view::npos) {
    place.Sheet = Workbook.FindSheetIndex(Utf8ToUtf16(AAddress.substr(0, mark)));
    AAddress.remove_prefix(mark + 1);
  }
  place.Address = TCellAddress::FromA1(Utf8ToUtf16(AAddress));
  if (place.Sheet < 0 || !place.Address.IsValid()) throw std::invalid_argument(std::string(AAddress));
  return place;
}

void TSheetFixture::Set(std::string_view AAddress, std::string_view AContent) {
  if (const size_t mark = AAddress.find('!'); mark != std::string_view::npos) {
    const std::u16string name = Utf8ToUtf16(AAddress.substr(0, mark));
    if (Workbook.FindSheetIndex(name) < 0) Workbook.AddSheet(name);
  }
  const TPlace place = PlaceOf(AAddress);
  Sheet(place.Sheet).SetValue(place.Address, ContentOf(AContent));
}

void TSheetFixture::SetCells(std::string_view ACells) {
  while (!ACells.empty()) {
    const std::string_view cell = ACells.substr(0, ACells.find(' '));
    const size_t sign = cell.find('=');
    if (sign == std::string_view::npos) throw std::invalid_argument(std::string(cell));
    Set(cell.substr(0, sign), cell.substr(sign + 1));
    ACells.remove_prefix(std::min(cell.size() + 1, ACells.size()));
  }
}

template <class TShow>
std::string TSheetFixture::ShowEach(std::string_view AAddresses, TShow AShow) const {
  std::string shown;
  while (!AAddresses.empty()) {
    const size_t end = std::min(AAddresses.find(' '), AAddresses.size());
    const TPlace place = PlaceOf(AAddresses.substr(0, end));
    AAddresses.remove_prefix(std::min(end + 1, AAddresses.size()));
    if (!shown.empty()) shown += " ";
    shown += NotationOf(AShow(place));
  }
  return shown;
}

std::string TSheetFixture::Show(std::string_view AAddresses) const {
  return ShowEach(AAddresses, [this](const TPlace& APlace) {
    return Workbook.GetSheet(APlace.Sheet)->GetEffectiveValue(APlace.Address);
  });
}

std::string TSheetFixture::Run(std::string_view AAddresses) {
  return ShowEach(AAddresses, [this](const TPlace& APlace) {
    return Evaluator.EvaluateCell(APlace.Sheet, APlace.Address.Col, APlace.Address.Row);
  });
}

std::string TSheetFixture::Eval(std::string_view AFormula, int32_t ASheetIndex) {
  return NotationOf(Evaluator.Evaluate(AFormula, ASheetIndex));
}

std::string TSheetFixture::EvalAt(std::string_view AAddress, std::string_view AFormula) {
  const TPlace place = PlaceOf(AAddress);
  return NotationOf(Evaluator.EvaluateAt(AFormula, place.Sheet, place.Address.Col, place.Address.Row));
}

}  // namespace tessarine::testing
