#include <tessarine/platform/JsonReader.h>

#include <algorithm>
#include <limits>
#include <utility>

#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

bool IsDigitByte(char AByte) { return AByte >= '0' && AByte <= '9'; }

void AppendCodePoint(char32_t ACodePoint, std::string& AOut) {
  char16_t units[2] = {static_cast<char16_t>(ACodePoint), 0};
  size_t count = 1;
  if (ACodePoint > 0xFFFF) {
    units[0] = static_cast<char16_t>(0xD800 + ((ACodePoint - 0x10000) >> 10));
    units[1] = static_cast<char16_t>(0xDC00 + ((ACodePoint - 0x10000) & 0x3FF));
    count = 2;
  }
  AppendUtf16AsUtf8({units, count}, AOut);  // half of a pair becomes U+FFFD there
}

}  // namespace

TJsonReader::TJsonReader(std::string_view AText, std::string ASource, size_t AMaxDepth)
    : FInput(AText), FSource(std::move(ASource)), FMaxDepth(AMaxDepth) {
  if (FInput.starts_with("\xEF\xBB\xBF")) FAt = 3;
}

std::string TJsonReader::Where() const {
  const std::string_view before = FInput.substr(0, FAt);
  const auto line = std::count(before.begin(), before.end(), '\n') + 1;
  const size_t lineStart = before.rfind('\n') == std::string_view::npos ? 0 : before.rfind('\n') + 1;
  std::string where = FSource.empty() ? "" : FSource + ", ";
  where += "line " + std::to_string(line) + ", column " + std::to_string(FAt - lineStart + 1);
  return where;
}

void TJsonReader::Fail(std::string_view AWhat) const { throw EFileFormat(Where() + ": " + std::string(AWhat)); }

/// What stands at the present place, for messages.
std::string TJsonReader::FoundText() const {
  if (FAt >= FInput.size()) return "the end of the text";
  const auto byte = static_cast<unsigned char>(FInput[FAt]);
  if (byte < 0x20 || byte >= 0x7F) return "a character that does not belong there";
  return std::string("\"") + FInput[FAt] + "\"";
}

void TJsonReader::SkipBlanks() {
  while (FAt < FInput.size() &&
         (FInput[FAt] == ' ' || FInput[FAt] == '\n' || FInput[FAt] == '\r' || FInput[FAt] == '\t'))
    ++FAt;
}

TJsonEvent TJsonReader::Next() { return FEvent = ReadEvent(); }

void TJsonReader::Skip() {
  if (FEvent == jeName) Next();
  if (FEvent != jeBeginObject && FEvent != jeBeginArray) return;
  const size_t outside = FOpen.size() - 1;
  while (FOpen.size() > outside) Next();
}

TJsonEvent TJsonReader::ReadEvent() {
  SkipBlanks();
  if (FExpect == TExpect::exAfterValue) {
    if (FOpen.empty()) {
      if (FAt < FInput.size()) Fail("found " + FoundText() + " behind the end of the document");
      return jeEnd;
    }
    const bool isObject = FOpen.back() == '{';
    if (FAt < FInput.size() && FInput[FAt] == (isObject ? '}' : ']')) return Close(FInput[FAt]);
    if (FAt >= FInput.size() || FInput[FAt] != ',')
      Fail(std::string("expected \",\" or \"") + (isObject ? "}" : "]") + "\", found " + FoundText());
    ++FAt;
    SkipBlanks();
    return isObject ? ReadName() : ReadValue();
  }
  if (FExpect == TExpect::exFirstName) {
    if (FAt < FInput.size() && FInput[FAt] == '}') return Close('}');
    return ReadName();
  }
  if (FExpect == TExpect::exFirstValue && FAt < FInput.size() && FInput[FAt] == ']') return Close(']');
  return ReadValue();
}

TJsonEvent TJsonReader::Open(char ABracket) {
  if (FOpen.size() >= FMaxDepth)
    throw ELimit(Where() + ": nested deeper than the limit of " + std::to_string(FMaxDepth) + " levels");
  ++FAt;
  FOpen.push_back(ABracket);
  FExpect = ABracket == '{' ? TExpect::exFirstName : TExpect::exFirstValue;
  return ABracket == '{' ? jeBeginObject : jeBeginArray;
}

TJsonEvent TJsonReader::Close(char ABracket) {
  ++FAt;
  FOpen.pop_back();
  FExpect = TExpect::exAfterValue;
  return ABracket == '}' ? jeEndObject : jeEndArray;
}

TJsonEvent TJsonReader::ReadName() {
  if (FAt >= FInput.size() || FInput[FAt] != '"') Fail("expected a name in quotes, found " + FoundText());
  ReadString();
  SkipBlanks();
  if (FAt >= FInput.size() || FInput[FAt] != ':') Fail("expected \":\" behind a name, found " + FoundText());
  ++FAt;
  FExpect = TExpect::exValue;
  return jeName;
}

TJsonEvent TJsonReader::ReadValue() {
  if (FAt >= FInput.size()) Fail("expected a value, found the end of the text");
  switch (FInput[FAt]) {
    case '{':
    case '[': return Open(FInput[FAt]);
    case '"':
      ReadString();
      FExpect = TExpect::exAfterValue;
      return jeText;
    case 't': FBoolean = true; return Word("true", jeBoolean);
    case 'f': FBoolean = false; return Word("false", jeBoolean);
    case 'n': return Word("null", jeNull);
    default: return ReadNumber();
  }
}

TJsonEvent TJsonReader::Word(std::string_view AWord, TJsonEvent AEvent) {
  if (FInput.substr(FAt, AWord.size()) != AWord) Fail("expected a value, found " + FoundText());
  FAt += AWord.size();
  FExpect = TExpect::exAfterValue;
  return AEvent;
}

TJsonEvent TJsonReader::ReadNumber() {
  const size_t start = FAt;
  size_t at = FAt;
  const auto skipDigits = [&] {
    const size_t from = at;
    while (at < FInput.size() && IsDigitByte(FInput[at])) ++at;
    return at - from;
  };
  const bool isNegative = FInput[at] == '-';
  if (isNegative) ++at;
  const bool hasLeadingZero = at < FInput.size() && FInput[at] == '0';
  const size_t whole = skipDigits();
  if (whole == 0) Fail("expected a value, found " + FoundText());
  if (hasLeadingZero && whole > 1) Fail("a number must not begin with 0");
  if (at < FInput.size() && FInput[at] == '.') {
    ++at;
    if (skipDigits() == 0) Fail("a number needs a digit behind its decimal point");
  }
  if (at < FInput.size() && (FInput[at] == 'e' || FInput[at] == 'E')) {
    ++at;
    if (at < FInput.size() && (FInput[at] == '+' || FInput[at] == '-')) ++at;
    if (skipDigits() == 0) Fail("a number needs a digit in its exponent");
  }
  FAt = at;
  // The grammar above is a part of what a file number may be, so only the range can make this fail.
  if (!TryParseFileNumber(FInput.substr(start, at - start), FNumber)) {
    constexpr double kLargest = std::numeric_limits<double>::max();
    FNumber = isNegative ? -kLargest : kLargest;
  }
  FExpect = TExpect::exAfterValue;
  return jeNumber;
}

void TJsonReader::ReadString() {
  const size_t start = ++FAt;
  FScratch.clear();
  size_t from = start;
  for (;; ++FAt) {
    if (FAt >= FInput.size()) Fail("a text is not closed");
    const char byte = FInput[FAt];
    if (byte == '"') break;
    if (static_cast<unsigned char>(byte) < 0x20) Fail("a text holds a control character that is not escaped");
    if (byte != '\\') continue;
    FScratch += FInput.substr(from, FAt - from);
    AppendEscape();
    from = FAt + 1;
  }
  FText = FInput.substr(from, FAt - from);
  if (from != start) FText = FScratch += FText;
  ++FAt;
  if (IsValidUtf8(FText)) return;
  FScratch = Utf16ToUtf8(Utf8ToUtf16(FText));
  FText = FScratch;
}

/// Reads the escape at the backslash under FAt and leaves FAt on its last byte.
void TJsonReader::AppendEscape() {
  ++FAt;
  if (FAt >= FInput.size()) Fail("a text is not closed");
  switch (FInput[FAt]) {
    case '"':
    case '\\':
    case '/': FScratch += FInput[FAt]; return;
    case 'b': FScratch += '\b'; return;
    case 'f': FScratch += '\f'; return;
    case 'n': FScratch += '\n'; return;
    case 'r': FScratch += '\r'; return;
    case 't': FScratch += '\t'; return;
    case 'u': break;
    default: Fail("there is no escape \"\\" + std::string(1, FInput[FAt]) + "\"");
  }
  char32_t unit = ReadHex4();
  if ((unit & 0xFC00) == 0xD800 && FInput.substr(FAt + 1, 2) == "\\u") {
    const size_t before = FAt;
    FAt += 2;
    const char32_t second = ReadHex4();
    if ((second & 0xFC00) == 0xDC00) {
      unit = 0x10000 + ((unit & 0x3FF) << 10) + (second & 0x3FF);
    } else {
      FAt = before;  // the second escape stands for itself
    }
  }
  AppendCodePoint(unit, FScratch);
}

/// The four digits behind the "u" under FAt; leaves FAt on the last of them.
uint32_t TJsonReader::ReadHex4() {
  uint32_t value = 0;
  for (int i = 0; i < 4; ++i) {
    const char byte = ++FAt < FInput.size() ? FInput[FAt] : '\0';
    const char lower = static_cast<char>(byte | 0x20);
    if (IsDigitByte(byte)) {
      value = value * 16 + static_cast<uint32_t>(byte - '0');
    } else if (lower >= 'a' && lower <= 'f') {
      value = value * 16 + static_cast<uint32_t>(lower - 'a' + 10);
    } else {
      Fail("\"\\u\" needs four hexadecimal digits");
    }
  }
  return value;
}

}  // namespace tessarine
