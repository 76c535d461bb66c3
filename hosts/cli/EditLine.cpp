#include <hosts/cli/EditLine.h>

#include <algorithm>
#include <cmath>

#include <hosts/cli/Cli.h>
#include <hosts/cli/Ranges.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::cli {

namespace {

std::string Quoted(std::string_view AKey) { return "\"" + std::string(AKey) + "\""; }

}  // namespace

void FailEdit(const std::string& AMessage) { throw ECli(ecInput, AMessage); }

bool EqualWords(std::string_view ALeft, std::string_view ARight) {
  return EqualAsciiNoCase(Utf8ToUtf16(ALeft), Utf8ToUtf16(ARight));
}

std::string JsonTextOf(const TJsonValue& AValue, std::string_view AKey) {
  if (AValue.Kind != jkText) FailEdit(Quoted(AKey) + " is a text");
  return AValue.Text;
}

double JsonNumberOf(const TJsonValue& AValue, std::string_view AKey) {
  if (AValue.Kind != jkNumber) FailEdit(Quoted(AKey) + " is a number");
  return AValue.Number;
}

bool JsonFlagOf(const TJsonValue& AValue, std::string_view AKey) {
  if (AValue.Kind != jkBoolean) FailEdit(Quoted(AKey) + " is true or false");
  return AValue.Boolean;
}

int32_t JsonIntegerOf(const TJsonValue& AValue, std::string_view AKey, int32_t ALeast, int32_t AMost) {
  const double number = JsonNumberOf(AValue, AKey);
  if (!(number >= ALeast && number <= AMost) || std::floor(number) != number)
    FailEdit(Quoted(AKey) + " is a whole number from " + std::to_string(ALeast) + " to " + std::to_string(AMost));
  return static_cast<int32_t>(number);
}

TWorksheet& TEditLine::Sheet() const { return *FWorkbook.GetSheet(FSheetIndex); }

const TJsonValue& TEditLine::Get(std::string_view AKey) const {
  const TJsonValue* value = Find(AKey);
  if (!value) FailEdit("the key " + Quoted(AKey) + " is missing");
  return *value;
}

std::string TEditLine::Text(std::string_view AKey) const { return JsonTextOf(Get(AKey), AKey); }

std::optional<std::string> TEditLine::FindText(std::string_view AKey) const {
  const TJsonValue* value = Find(AKey);
  return value ? std::optional(JsonTextOf(*value, AKey)) : std::nullopt;
}

bool TEditLine::Flag(std::string_view AKey, bool ADefault) const {
  const TJsonValue* value = Find(AKey);
  return value ? JsonFlagOf(*value, AKey) : ADefault;
}

TCellRange TEditLine::Range(std::string_view AKey) const { return ParseRange(Text(AKey)).Normalize(); }

TCellAddress TEditLine::Cell(std::string_view AKey) const { return ParseCell(Text(AKey)); }

TLines TEditLine::Lines() const {
  const TJsonValue* rows = Find("rows");
  if ((rows != nullptr) == (Find("columns") != nullptr)) FailEdit("give either \"rows\" or \"columns\"");
  if (rows && rows->Kind == jkNumber) return {true, JsonIntegerOf(*rows, "rows", 1, kMaxRow), 1};
  std::string text = Text(rows ? "rows" : "columns");
  if (text.find(':') == text.npos) text += ":" + text;
  const TCellRange range = ParseRange(text);
  const bool areRows = range.Width() == kMaxCol;
  const bool areColumns = range.Height() == kMaxRow;
  if (rows ? !areRows : !areColumns)
    FailEdit(rows ? "\"rows\" is a number, or a text such as \"5:7\""
                  : "\"columns\" is a text such as \"B\" or \"B:D\"");
  return rows ? TLines{true, range.StartRow, range.Height()} : TLines{false, range.StartCol, range.Width()};
}

int32_t TEditLine::Line(std::string_view AKey, bool AIsRow) const {
  const TJsonValue& value = Get(AKey);
  if (AIsRow) return JsonIntegerOf(value, AKey, 1, kMaxRow + 1);
  const int32_t col = LettersToCol(Utf8ToUtf16(JsonTextOf(value, AKey)));
  if (col < 1) FailEdit(Quoted(AKey) + " is a column's letters");
  return col;
}

void StoreCell(TWorksheet& ASheet, TCellAddress AAddress, const TCell& ACell) {
  ASheet.SetCell(AAddress, ACell);
  ASheet.Spills().ClearAnchor(AAddress.Col, AAddress.Row);
}

}  // namespace tessarine::cli
