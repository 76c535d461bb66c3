#include <algorithm>
#include <vector>

#include <hosts/cli/EditLine.h>
#include <hosts/cli/Ranges.h>
#include <tessarine/core/lists/CellComments.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/options/NamedRanges.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/features/Fill.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::cli {

namespace {

std::string A1Of(const TCellRange& ARange) { return Utf16ToUtf8(ARange.ToA1()); }

/// A value as a script gives it; a text that begins with "=" is a formula.
TCellValue ContentOf(const TJsonValue& AValue, std::string_view AKey) {
  switch (AValue.Kind) {
    case jkNull: return {};
    case jkBoolean: return TCellValue::FromBoolean(AValue.Boolean);
    case jkNumber: return TCellValue::FromNumber(AValue.Number);
    case jkText:
      if (AValue.Text.size() > 1 && AValue.Text.starts_with('='))
        return TCellValue::FromFormula(Utf8ToUtf16(AValue.Text));
      return TCellValue::FromText(TText::FromUtf8(AValue.Text));
    case jkArray:
    case jkObject: break;
  }
  FailEdit("\"" + std::string(AKey) + "\" is a number, a text, true, false or null");
}

/// Another value; the format stays.
void PutValue(TWorksheet& ASheet, TCellAddress AAddress, const TCellValue& AValue) {
  TCell cell = ASheet.GetCell(AAddress);
  cell.Value = AValue;
  cell.RichText.clear();
  cell.ClearCachedResult();
  StoreCell(ASheet, AAddress, cell);
}

void PutRows(const TEditLine& ALine, TCellAddress ACorner, const TJsonValue& ARows) {
  constexpr const char* kShape = "\"values\" is an array of rows, and each row an array of values";
  if (ARows.Kind != jkArray) FailEdit(kShape);
  int32_t row = ACorner.Row;
  for (const TJsonValue& values : ARows.Items) {
    if (values.Kind != jkArray) FailEdit(kShape);
    int32_t col = ACorner.Col;
    for (const TJsonValue& value : values.Items) {
      const TCellAddress address{col++, row};
      if (!address.IsValid()) FailEdit("\"values\" reach beyond the end of the sheet");
      PutValue(ALine.Sheet(), address, ContentOf(value, "values"));
    }
    ++row;
  }
}

/// The stored cells of a range.
std::vector<TCellAddress> CellsIn(const TWorksheet& ASheet, const TCellRange& ARange) {
  std::vector<TCellAddress> cells;
  ASheet.Store().ForEachByRow(ARange, [&](int32_t ACol, int32_t ARow, const detail::TCellSlot&) {
    cells.push_back({ACol, ARow});
  });
  return cells;
}

/// Letters, digits, "_", "." and "\", not a digit or a point in front, and nothing that reads as a cell.
void CheckName(const std::string& AName) {
  const std::u16string name = TWorkbook::NormalizeName(Utf8ToUtf16(AName));
  const auto isPart = [](char16_t AUnit) {
    return IsAsciiLetter(AUnit) || IsAsciiDigit(AUnit) || AUnit == u'_' || AUnit == u'.' || AUnit == u'\\' ||
           AUnit >= 0x80;
  };
  const bool isWord =
      !name.empty() && std::all_of(name.begin(), name.end(), isPart) && !IsAsciiDigit(name[0]) && name[0] != u'.';
  const bool isCell = std::all_of(name.begin(), name.end(),
                                  [](char16_t AUnit) { return IsAsciiLetter(AUnit) || IsAsciiDigit(AUnit); }) &&
                      TCellAddress::FromA1(name).IsValid();
  if (!isWord || isCell) FailEdit("\"" + AName + "\" can be no name; write for example Total_2024");
}

}  // namespace

void EditSet(const TEditLine& ALine) {
  const TCellAddress cell = ALine.Cell("cell");
  int given = 0;
  if (const TJsonValue* value = ALine.Find("value"); value && ++given)
    PutValue(ALine.Sheet(), cell, ContentOf(*value, "value"));
  if (const auto formula = ALine.FindText("formula"); formula && ++given)
    PutValue(ALine.Sheet(), cell, TCellValue::FromFormula(Utf8ToUtf16(*formula)));
  if (const auto text = ALine.FindText("text"); text && ++given)
    PutValue(ALine.Sheet(), cell, TCellValue::FromText(TText::FromUtf8(*text)));
  if (const TJsonValue* values = ALine.Find("values"); values && ++given) PutRows(ALine, cell, *values);
  if (given != 1) FailEdit("give one of \"value\", \"formula\", \"text\" and \"values\"");
}

void EditClear(const TEditLine& ALine) {
  enum class TWhat { wAll, wValues, wFormats };
  const TWhat what = WordOf<TWhat>({{"all", TWhat::wAll}, {"values", TWhat::wValues}, {"formats", TWhat::wFormats}},
                                   ALine.FindText("what").value_or("all"), "what");
  TWorksheet& sheet = ALine.Sheet();
  for (const TCellAddress address : CellsIn(sheet, ALine.Range("range"))) {
    if (what == TWhat::wValues) {
      PutValue(sheet, address, {});
      continue;
    }
    TCell cell;
    if (what == TWhat::wFormats) {
      cell = sheet.GetCell(address);
      cell.StyleIndex = 0;
      cell.HasFormatOverride = false;
      cell.FormatOverride = {};
      cell.RichText.clear();
      sheet.SetCell(address, cell);
    } else {
      StoreCell(sheet, address, cell);
    }
  }
}

void EditInsert(const TEditLine& ALine) {
  const TLines lines = ALine.Lines();
  const auto insert = lines.IsRows ? &TWorkbook::InsertRows : &TWorkbook::InsertColumns;
  (ALine.Workbook().*insert)(ALine.SheetIndex(), lines.Start, lines.Count);
}

void EditDelete(const TEditLine& ALine) {
  const TLines lines = ALine.Lines();
  const auto remove = lines.IsRows ? &TWorkbook::DeleteRows : &TWorkbook::DeleteColumns;
  (ALine.Workbook().*remove)(ALine.SheetIndex(), lines.Start, lines.Count);
}

void EditMove(const TEditLine& ALine) {
  const TLines lines = ALine.Lines();
  const int32_t before = ALine.Line("before", lines.IsRows);
  const auto move = lines.IsRows ? &TWorkbook::MoveRows : &TWorkbook::MoveColumns;
  (ALine.Workbook().*move)(ALine.SheetIndex(), lines.Start, lines.Count, before);
}

void EditFill(const TEditLine& ALine) {
  const TCellRange source = ALine.Range("from");
  const TCellRange dest = ALine.Range("to");
  if (!TessarineApplyFill(&ALine.Workbook(), ALine.SheetIndex(), &ALine.Sheet(), source, dest,
                          ALine.Flag("copy", false), u"Fill"))
    FailEdit(A1Of(source) + " cannot fill " + A1Of(dest) +
             ": \"to\" extends \"from\" down, up, to the right or to the " + "left, by no more than " +
             std::to_string(kMaxFillCells) + " cells");
}

void EditMerge(const TEditLine& ALine) {
  const TCellRange range = ALine.Range("range");
  TMergedCellList& merges = ALine.Sheet().Merges();
  const bool isMerging = ALine.Flag("merged", true);
  if (isMerging && range.Width() == 1 && range.Height() == 1) FailEdit(A1Of(range) + " is one cell; merge a range");
  for (size_t i = merges.Count(); i-- > 0;) {
    const TCellRange other = merges.GetItem(i).AsRange();
    if (!other.Intersects(range)) continue;
    if (isMerging) FailEdit(A1Of(range) + " meets the merged area " + A1Of(other) + "; take that apart first");
    merges.RemoveAt(i);
  }
  if (isMerging) ALine.Sheet().MergeRange(range);
}

void EditName(const TEditLine& ALine) {
  const std::string name = ALine.Text("name");
  CheckName(name);
  const TJsonValue& formula = ALine.Get("formula");
  if (formula.Kind == jkNull)
    TTessarineNamedRanges(&ALine.Workbook()).Remove(name);
  else
    ALine.Workbook().SetNamedFormula(name, JsonTextOf(formula, "formula"));
}

void EditNote(const TEditLine& ALine) {
  const TCellAddress cell = ALine.Cell("cell");
  const TJsonValue& text = ALine.Get("text");
  const std::string content = text.Kind == jkNull ? std::string() : JsonTextOf(text, "text");
  ALine.Sheet().Comments().SetComment(cell.Col, cell.Row, TText::FromUtf8(ALine.FindText("author").value_or("")),
                                      TText::FromUtf8(content));
}

}  // namespace tessarine::cli
