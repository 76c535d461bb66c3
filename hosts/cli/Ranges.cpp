#include <hosts/cli/Ranges.h>

#include <algorithm>

#include <hosts/cli/Cli.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::cli {

namespace {

/// "B:D" and "2:5": whole columns or rows; a range that is not valid for anything else.
TCellRange ParseLines(std::u16string_view AText) {
  const size_t colon = AText.find(u':');
  if (colon == AText.npos) return {0, 0, 0, 0};
  const std::u16string_view first = AText.substr(0, colon);
  const std::u16string_view last = AText.substr(colon + 1);
  const auto areAll = [&](bool (*AIsPart)(char16_t)) {
    return !first.empty() && !last.empty() && std::all_of(first.begin(), first.end(), AIsPart) &&
           std::all_of(last.begin(), last.end(), AIsPart);
  };
  if (areAll(IsAsciiLetter)) return TCellRange{LettersToCol(first), 1, LettersToCol(last), kMaxRow}.Normalize();
  if (areAll(IsAsciiDigit)) {
    const auto rowOf = [](std::u16string_view ADigits) {
      return TCellAddress::FromA1(u"A" + std::u16string(ADigits)).Row;
    };
    return TCellRange{1, rowOf(first), kMaxCol, rowOf(last)}.Normalize();
  }
  return {0, 0, 0, 0};
}

}  // namespace

TCellRange ParseRange(const std::string& AText) {
  std::u16string text = ToAsciiUpper(Utf8ToUtf16(AText));
  std::erase(text, u'$');
  const auto isValid = [](const TCellRange& ARange) {
    return TCellAddress{ARange.StartCol, ARange.StartRow}.IsValid() &&
           TCellAddress{ARange.EndCol, ARange.EndRow}.IsValid();
  };
  const TCellRange lines = ParseLines(text);
  if (isValid(lines)) return lines;
  const TCellRange range = TCellRange::FromA1(text);
  const bool isPlain = std::all_of(text.begin(), text.end(), [](char16_t AUnit) {
    return IsAsciiLetter(AUnit) || IsAsciiDigit(AUnit) || AUnit == u':';
  });
  if (!isPlain || !isValid(range))
    throw ECli(ecUsage, "\"" + AText + "\" is no range of cells; write for example A1:H20, B:D or 2:5");
  return range;
}

TCellAddress ParseCell(const std::string& AText) {
  const TCellRange range = ParseRange(AText);
  if (range.Width() != 1 || range.Height() != 1)
    throw ECli(ecUsage, "\"" + AText + "\" is more than one cell; write for example B2");
  return {range.StartCol, range.StartRow};
}

int32_t ColumnIn(const TCellRange& ARange, const std::string& ALetters) {
  const int32_t col = LettersToCol(Utf8ToUtf16(ALetters));
  if (col < 1) throw ECli(ecUsage, "\"" + ALetters + "\" is no column; write its letters, for example C");
  if (col < ARange.StartCol || col > ARange.EndCol)
    throw ECli(ecUsage, "column " + ALetters + " lies outside the range " + Utf16ToUtf8(ARange.ToA1()));
  return col;
}

TCellRange UsedPartOf(const TCellRange& ARange, const TWorksheet& ASheet) {
  return {ARange.StartCol, ARange.StartRow, std::max(ARange.StartCol, std::min(ARange.EndCol, ASheet.UsedMaxCol())),
          std::max(ARange.StartRow, std::min(ARange.EndRow, ASheet.UsedMaxRow()))};
}

}  // namespace tessarine::cli
