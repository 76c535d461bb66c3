#include <tessarine/core/values/Address.h>

#include <algorithm>
#include <limits>

#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

void AppendRow(int32_t ARow, std::u16string& AText) {
  char16_t digits[12];
  size_t at = std::size(digits);
  const bool negative = ARow < 0;
  uint32_t rest = negative ? 0u - static_cast<uint32_t>(ARow) : static_cast<uint32_t>(ARow);
  do {
    digits[--at] = static_cast<char16_t>(u'0' + rest % 10);
    rest /= 10;
  } while (rest != 0);
  if (negative) digits[--at] = u'-';
  AText.append(digits + at, std::size(digits) - at);
}

/// Lines from AFirst to ALast, which is not before it; no more than 32 bits hold.
int32_t LineCount(int32_t AFirst, int32_t ALast) {
  return static_cast<int32_t>(std::min<int64_t>(int64_t{ALast} - AFirst + 1, std::numeric_limits<int32_t>::max()));
}

}  // namespace

void AppendColLetters(int32_t ACol, std::u16string& AText) {
  char16_t letters[8];
  size_t at = std::size(letters);
  while (ACol > 0) {
    const int32_t rest = ACol - 1;
    letters[--at] = static_cast<char16_t>(u'A' + rest % 26);
    ACol = rest / 26;
  }
  AText.append(letters + at, std::size(letters) - at);
}

std::u16string ColToLetters(int32_t ACol) {
  std::u16string text;
  AppendColLetters(ACol, text);
  return text;
}

int32_t LettersToCol(std::u16string_view ALetters) {
  if (ALetters.empty() || ALetters.size() > 3) return 0;
  int32_t col = 0;
  for (const char16_t unit : ALetters) {
    if (!IsAsciiLetter(unit)) return 0;
    col = col * 26 + (AsciiUpper(unit) - u'A' + 1);
    if (col > kMaxCol) return 0;
  }
  return col;
}

TCellAddress TCellAddress::FromA1(std::u16string_view ARef) {
  char16_t letters[4];
  size_t letterCount = 0;
  int64_t row = 0;
  bool hasDigit = false;
  for (const char16_t unit : ARef) {
    if (IsAsciiLetter(unit)) {
      if (hasDigit || letterCount == 3) return {};
      letters[letterCount++] = unit;
    } else if (unit >= u'0' && unit <= u'9') {
      hasDigit = true;
      row = std::min<int64_t>(row * 10 + (unit - u'0'), int64_t{kMaxRow} + 1);
    }
  }
  const TCellAddress address{LettersToCol({letters, letterCount}), static_cast<int32_t>(row)};
  return hasDigit && address.IsValid() ? address : TCellAddress{};
}

std::u16string TCellAddress::ToA1() const {
  std::u16string text;
  AppendColLetters(Col, text);
  AppendRow(Row, text);
  return text;
}

TCellRange TCellRange::FromA1(std::u16string_view ARef) {
  const std::u16string_view text = TrimSpaces(ARef);
  const size_t colon = text.find(u':');
  const TCellAddress first = TCellAddress::FromA1(text.substr(0, colon));
  const TCellAddress second = colon == text.npos ? first : TCellAddress::FromA1(text.substr(colon + 1));
  return TCellRange{first.Col, first.Row, second.Col, second.Row}.Normalize();
}

TCellRange TCellRange::Normalize() const {
  return {std::min(StartCol, EndCol), std::min(StartRow, EndRow), std::max(StartCol, EndCol),
          std::max(StartRow, EndRow)};
}

bool TCellRange::Contains(int32_t ACol, int32_t ARow) const {
  const TCellRange r = Normalize();
  return ACol >= r.StartCol && ACol <= r.EndCol && ARow >= r.StartRow && ARow <= r.EndRow;
}

bool TCellRange::Intersects(const TCellRange& AOther) const {
  const TCellRange a = Normalize();
  const TCellRange b = AOther.Normalize();
  return a.StartCol <= b.EndCol && b.StartCol <= a.EndCol && a.StartRow <= b.EndRow && b.StartRow <= a.EndRow;
}

int32_t TCellRange::Width() const {
  const TCellRange r = Normalize();
  return LineCount(r.StartCol, r.EndCol);
}

int32_t TCellRange::Height() const {
  const TCellRange r = Normalize();
  return LineCount(r.StartRow, r.EndRow);
}

std::u16string TCellRange::ToA1() const {
  const TCellRange r = Normalize();
  std::u16string text = TCellAddress{r.StartCol, r.StartRow}.ToA1();
  if (r.StartCol != r.EndCol || r.StartRow != r.EndRow) text += u":" + TCellAddress{r.EndCol, r.EndRow}.ToA1();
  return text;
}

}  // namespace tessarine
