#include <tessarine/platform/JsonWriter.h>

#include <charconv>
#include <cmath>

#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

bool NeedsEscape(char AByte) { return static_cast<unsigned char>(AByte) < 0x20 || AByte == '"' || AByte == '\\'; }

void AppendEscape(char AByte, std::string& AOut) {
  constexpr char kDigits[] = "0123456789abcdef";
  switch (AByte) {
    case '"': AOut += "\\\""; return;
    case '\\': AOut += "\\\\"; return;
    case '\b': AOut += "\\b"; return;
    case '\f': AOut += "\\f"; return;
    case '\n': AOut += "\\n"; return;
    case '\r': AOut += "\\r"; return;
    case '\t': AOut += "\\t"; return;
    default: break;
  }
  const auto byte = static_cast<unsigned char>(AByte);
  AOut += "\\u00";
  AOut += kDigits[byte >> 4];
  AOut += kDigits[byte & 15];
}

}  // namespace

void AppendJsonEscaped(std::string_view AText, std::string& AOut) {
  size_t from = 0;
  for (size_t at = 0; at < AText.size(); ++at) {
    if (!NeedsEscape(AText[at])) continue;
    AOut += AText.substr(from, at - from);
    AppendEscape(AText[at], AOut);
    from = at + 1;
  }
  AOut += AText.substr(from);
}

void TJsonWriter::Separate() {
  if (FNeedsComma) FOut += ',';
  FNeedsComma = true;
}

void TJsonWriter::Begin(char ABracket) {
  Separate();
  FOut += ABracket;
  FNeedsComma = false;
}

void TJsonWriter::End(char ABracket) {
  FOut += ABracket;
  FNeedsComma = true;
}

void TJsonWriter::Word(std::string_view AWord) {
  Separate();
  FOut += AWord;
}

void TJsonWriter::Name(std::string_view AName) {
  Text(AName);
  FOut += ':';
  FNeedsComma = false;
}

void TJsonWriter::Text(std::u16string_view AText) { Text(std::string_view(Utf16ToUtf8(AText))); }

void TJsonWriter::Text(std::string_view AText) {
  Separate();
  FOut += '"';
  if (IsValidUtf8(AText)) {
    AppendJsonEscaped(AText, FOut);
  } else {
    AppendJsonEscaped(Utf16ToUtf8(Utf8ToUtf16(AText)), FOut);
  }
  FOut += '"';
}

void TJsonWriter::Number(double AValue) {
  if (!std::isfinite(AValue)) return Null();
  Separate();
  AppendFileNumber(AValue, FOut);
}

void TJsonWriter::Integer(int64_t AValue) {
  char buffer[24];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, AValue);
  Word({buffer, static_cast<size_t>(result.ptr - buffer)});
}

}  // namespace tessarine
