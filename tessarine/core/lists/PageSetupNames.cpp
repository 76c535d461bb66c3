#include <tessarine/core/lists/PageSetupNames.h>

#include <algorithm>
#include <vector>

#include <tessarine/core/lists/PageSetup.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

std::u16string SheetPrefix(std::u16string_view ASheet) {
  if (ASheet.find_first_of(u" '") == ASheet.npos) return std::u16string(ASheet) + u'!';
  std::u16string quoted = u"'";
  for (const char16_t unit : ASheet) quoted.append(unit == u'\'' ? 2 : 1, unit);
  return quoted + u"'!";
}

std::u16string AbsoluteCorner(int32_t ACol, int32_t ARow) {
  return u'$' + ColToLetters(ACol) + u'$' + GeneralNumberText(ARow);
}

/// The place of the "!" behind the sheet: the first one outside quotes.
size_t EndOfSheet(std::u16string_view AText) {
  bool isQuoted = false;
  for (size_t i = 0; i < AText.size(); ++i) {
    if (AText[i] == u'\'') isQuoted = !isQuoted;
    if (AText[i] == u'!' && !isQuoted) return i;
  }
  return AText.find(u'!');  // a quote stood alone
}

/// The sheet in front of the "!", quotes undone; AText keeps what stands behind it.
std::u16string TakeSheet(std::u16string_view& AText) {
  const size_t mark = EndOfSheet(AText);
  if (mark == AText.npos) return {};
  std::u16string_view name = AText.substr(0, mark);
  AText.remove_prefix(mark + 1);
  if (name.size() < 2 || name.front() != u'\'' || name.back() != u'\'') return std::u16string(name);
  name = name.substr(1, name.size() - 2);
  std::u16string sheet;
  for (size_t i = 0; i < name.size(); ++i) {
    sheet += name[i];
    if (name[i] == u'\'' && i + 1 < name.size() && name[i + 1] == u'\'') ++i;
  }
  return sheet;
}

TCellRange ParseCorners(std::u16string_view AFirst, std::u16string_view ASecond) {
  const int32_t firstCol = LettersToCol(AFirst);
  const int32_t secondCol = LettersToCol(ASecond);
  if (firstCol > 0 && secondCol > 0) return {firstCol, 1, secondCol, kMaxRow};
  int32_t firstRow = 0;
  int32_t secondRow = 0;
  if (TryParseInt32(AFirst, firstRow) && TryParseInt32(ASecond, secondRow)) return {1, firstRow, kMaxCol, secondRow};
  const TCellAddress first = TCellAddress::FromA1(AFirst);
  const TCellAddress second = TCellAddress::FromA1(ASecond);
  return {first.Col, first.Row, second.Col, second.Row};
}

/// The references of an expression that name the sheet.
std::vector<TCellRange> RangesOf(std::u16string_view AExpr, std::u16string_view ASheetName) {
  std::vector<TCellRange> ranges;
  while (!AExpr.empty()) {
    const auto parsed = TryParseSheetRange(TakePrintReference(AExpr));
    if (parsed && (ASheetName.empty() || EqualAsciiNoCase(parsed->Sheet, ASheetName))) ranges.push_back(parsed->Range);
  }
  return ranges;
}

}  // namespace

std::u16string FormatPrintAreaExpr(std::u16string_view ASheet, const TCellRange& ARange) {
  const TCellRange range = ARange.Normalize();
  return SheetPrefix(ASheet) + AbsoluteCorner(range.StartCol, range.StartRow) + u':' +
         AbsoluteCorner(range.EndCol, range.EndRow);
}

std::u16string FormatPrintTitlesExpr(std::u16string_view ASheet, bool AHasCols, const TCellRange& ACols, bool AHasRows,
                                     const TCellRange& ARows) {
  std::u16string text;
  const std::u16string prefix = SheetPrefix(ASheet);
  if (AHasCols) {
    const TCellRange cols = ACols.Normalize();
    text += prefix + u'$' + ColToLetters(cols.StartCol) + u":$" + ColToLetters(cols.EndCol);
  }
  if (AHasRows) {
    const TCellRange rows = ARows.Normalize();
    if (AHasCols) text += u',';
    text += prefix + u'$' + GeneralNumberText(rows.StartRow) + u":$" + GeneralNumberText(rows.EndRow);
  }
  return text;
}

std::optional<TSheetRangeText> TryParseSheetRange(std::u16string_view AText) {
  TSheetRangeText result;
  result.Sheet = TakeSheet(AText);
  std::u16string reference(AText);
  std::erase(reference, u'$');
  const size_t colon = reference.find(u':');
  const std::u16string_view view = reference;
  result.Range = colon == view.npos ? TCellRange::FromA1(view)
                                    : ParseCorners(view.substr(0, colon), view.substr(colon + 1)).Normalize();
  const bool isValid = TCellAddress{result.Range.StartCol, result.Range.StartRow}.IsValid() &&
                       TCellAddress{result.Range.EndCol, result.Range.EndRow}.IsValid();
  return isValid ? std::optional(std::move(result)) : std::nullopt;
}

std::u16string_view TakePrintReference(std::u16string_view& AExpr) {
  bool isQuoted = false;
  size_t end = 0;
  for (; end < AExpr.size() && (isQuoted || AExpr[end] != u','); ++end) {
    if (AExpr[end] == u'\'') isQuoted = !isQuoted;
  }
  const std::u16string_view reference = TrimSpaces(AExpr.substr(0, end));
  AExpr.remove_prefix(std::min(end + 1, AExpr.size()));
  return reference;
}

void ApplyPrintAreaExpr(TPageSetup& APageSetup, std::u16string_view AExpr, std::u16string_view ASheetName) {
  const std::vector<TCellRange> ranges = RangesOf(AExpr, ASheetName);
  if (ranges.empty()) return;
  TCellRange all = ranges.front();
  for (const TCellRange& range : ranges) {
    all = {std::min(all.StartCol, range.StartCol), std::min(all.StartRow, range.StartRow),
           std::max(all.EndCol, range.EndCol), std::max(all.EndRow, range.EndRow)};
  }
  APageSetup.SetPrintArea(all);
}

void ApplyPrintTitlesExpr(TPageSetup& APageSetup, std::u16string_view AExpr, std::u16string_view ASheetName) {
  for (const TCellRange& range : RangesOf(AExpr, ASheetName)) {
    if (range.StartRow == 1 && range.EndRow == kMaxRow) {
      APageSetup.SetTitleCols(range.StartCol, range.EndCol);
    } else if (range.StartCol == 1 && range.EndCol == kMaxCol) {
      APageSetup.SetTitleRows(range.StartRow, range.EndRow);
    }
  }
}

}  // namespace tessarine
