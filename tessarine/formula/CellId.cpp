#include <tessarine/formula/CellId.h>

#include <charconv>
#include <iterator>

#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

constexpr int32_t kMaxIdSheet = 0xFFFFFF;
constexpr int32_t kMaxIdCol = 0xFFFF;
constexpr int32_t kMaxIdRow = 0xFFFFFF;

/// A plain decimal number up to AMax; -1 for anything else.
int32_t KeyNumber(std::u16string_view AText, int32_t AMax) {
  int32_t number = AText.empty() ? -1 : 0;
  for (const char16_t unit : AText) {
    if (!IsAsciiDigit(unit)) return -1;
    number = number * 10 + (unit - u'0');
    if (number > AMax) return -1;
  }
  return number;
}

}  // namespace

TText CellKeyOf(TCellId AId) {
  char buffer[40];
  char* const end = std::end(buffer);
  char* at = std::to_chars(buffer, end, AId.Sheet()).ptr;
  *at++ = '!';
  at = std::to_chars(at, end, AId.Col()).ptr;
  *at++ = ',';
  at = std::to_chars(at, end, AId.Row()).ptr;
  return TText(std::u16string(buffer, at));
}

std::optional<TCellId> ParseCellKey(std::u16string_view AKey) {
  const size_t mark = AKey.find(u'!');
  const size_t comma = mark == AKey.npos ? mark : AKey.find(u',', mark);
  if (comma == AKey.npos) return std::nullopt;
  const int32_t sheet = KeyNumber(AKey.substr(0, mark), kMaxIdSheet);
  const int32_t col = KeyNumber(AKey.substr(mark + 1, comma - mark - 1), kMaxIdCol);
  const int32_t row = KeyNumber(AKey.substr(comma + 1), kMaxIdRow);
  if (sheet < 0 || col < 1 || row < 1) return std::nullopt;
  return TCellId::Of(sheet, col, row);
}

}  // namespace tessarine
