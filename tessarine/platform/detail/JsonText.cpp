#include <tessarine/platform/detail/JsonText.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <optional>
#include <span>
#include <vector>

#include <tessarine/platform/Files.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/detail/Surrogates.h>

namespace tessarine::detail {

namespace {

bool IsDigitAt(TJsonPlace AAt) { return *AAt >= '0' && *AAt <= '9'; }

/// The bytes at which the scan of a text has to stop and look.
constexpr std::array<bool, 256> MakeStopTable() {
  std::array<bool, 256> table{};
  for (size_t control = 0; control < 0x20; ++control) table[control] = true;
  table['"'] = table['\\'] = true;
  return table;
}
constexpr std::array<bool, 256> kStopsText = MakeStopTable();

/// The value of a hexadecimal digit, or -1.
int HexDigit(char AByte) {
  if (AByte >= '0' && AByte <= '9') return AByte - '0';
  const char lower = static_cast<char>(AByte | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// The unit of the four digits at AAt, or -1.
int HexUnit(TJsonPlace AAt) {
  int unit = 0;
  for (int i = 0; i < 4; ++i) {
    const int digit = HexDigit(AAt[i]);
    if (digit < 0) return -1;
    unit = unit * 16 + digit;
  }
  return unit;
}

/// Behind the closing quote of a sound text whose first character is at AAt, or null.
TJsonPlace CheckText(TJsonPlace AAt) {
  for (;;) {
    while (!kStopsText[static_cast<unsigned char>(*AAt)]) ++AAt;
    if (*AAt == '"') return AAt + 1;
    if (*AAt != '\\') return nullptr;
    ++AAt;
    if (*AAt == 'u') {
      if (HexUnit(AAt + 1) < 0) return nullptr;
      AAt += 5;
    } else {
      if (*AAt == '\0' || !std::strchr("\"\\/bfnrt", *AAt)) return nullptr;
      ++AAt;
    }
  }
}

TJsonPlace CheckWord(TJsonPlace AAt, std::string_view AWord) {
  return std::memcmp(AAt, AWord.data(), AWord.size()) == 0 ? AAt + AWord.size() : nullptr;
}

/// Behind a sound value that is no object nor array, or null.
TJsonPlace CheckScalar(TJsonPlace AAt) {
  switch (*AAt) {
    case '"': return CheckText(AAt + 1);
    case 't': return CheckWord(AAt, "true");
    case 'f': return CheckWord(AAt, "false");
    case 'n': return CheckWord(AAt, "null");
    default: return JsonNumberEnd(AAt);
  }
}

/// Behind a sound name and its colon, at the value; null for anything else.
TJsonPlace CheckName(TJsonPlace AAt) {
  if (*AAt != '"') return nullptr;
  AAt = CheckText(AAt + 1);
  if (!AAt) return nullptr;
  AAt = TJsonText::SkipBlanks(AAt);
  return *AAt == ':' ? TJsonText::SkipBlanks(AAt + 1) : nullptr;
}

char16_t SimpleEscape(char AByte) {
  switch (AByte) {
    case 'b': return u'\b';
    case 'f': return u'\f';
    case 'n': return u'\n';
    case 'r': return u'\r';
    case 't': return u'\t';
    default: return static_cast<char16_t>(AByte);
  }
}

}  // namespace

TJsonPlace JsonNumberEnd(TJsonPlace AAt) {
  if (*AAt == '-') ++AAt;
  if (!IsDigitAt(AAt)) return nullptr;
  if (*AAt++ != '0') {
    while (IsDigitAt(AAt)) ++AAt;
  }
  if (*AAt == '.') {
    if (!IsDigitAt(++AAt)) return nullptr;
    while (IsDigitAt(AAt)) ++AAt;
  }
  if (*AAt != 'e' && *AAt != 'E') return AAt;
  ++AAt;
  if (*AAt == '+' || *AAt == '-') ++AAt;
  if (!IsDigitAt(AAt)) return nullptr;
  while (IsDigitAt(AAt)) ++AAt;
  return AAt;
}

TJsonPlace PlainJsonTextEnd(TJsonPlace AAt) {
  while (!kStopsText[static_cast<unsigned char>(*AAt)]) ++AAt;
  return *AAt == '"' ? AAt : nullptr;
}

// ---- making

TJsonText TJsonText::FromBytes(std::string_view ABytes) {
  TByteBuffer buffer(ABytes.size() + kPadding);
  if (!ABytes.empty()) std::memcpy(buffer.Data(), ABytes.data(), ABytes.size());
  return FromPadded(std::move(buffer), ABytes.size());
}

TJsonText TJsonText::FromStream(IReadStream& AStream, uint64_t ALimit) {
  const std::optional<uint64_t> told = AStream.Size();
  if (!told || *told > ALimit) {
    const std::vector<std::byte> bytes = ReadAllBytes(AStream, ALimit);
    return FromBytes({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  }
  const auto size = static_cast<size_t>(*told);
  TByteBuffer buffer(size + kPadding);
  size_t read = 0;
  while (read <= size) {  // one byte more than is told, so that the end shows
    const size_t count = AStream.Read({buffer.Data() + read, size + 1 - read});
    if (count == 0) return FromPadded(std::move(buffer), read);
    read += count;
  }
  const std::vector<std::byte> rest = ReadAllBytes(AStream, ALimit - std::min<uint64_t>(read, ALimit));
  std::string bytes(reinterpret_cast<const char*>(buffer.Data()), read);
  bytes.append(reinterpret_cast<const char*>(rest.data()), rest.size());
  return FromBytes(bytes);
}

/// Of a buffer that is ASize bytes and room for the padding.
TJsonText TJsonText::FromPadded(TByteBuffer ABuffer, size_t ASize) {
  std::memset(ABuffer.Data() + ASize, 0, ABuffer.Size() - ASize);
  std::string_view text = ABuffer.Text().substr(0, ASize);
  if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) {
    const std::string decoded = Utf16ToUtf8(DecodeTextBytes(text));
    return FromBytes(decoded);
  }
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  if (!IsValidUtf8(text)) return FromBytes(Utf16ToUtf8(Utf8ToUtf16(text)));
  return TJsonText(std::move(ABuffer), text);
}

// ---- checking

bool TJsonText::IsSound(TShortcut AShortcut) {
  std::string open;  // the brackets of the objects and arrays around
  std::array<TJsonPlace, kIndexedDepth> starts{};
  TJsonPlace at = Root();
  for (;;) {
    // At a value.
    if (*at == '{' || *at == '[') {
      const bool isObject = *at == '{';
      const TJsonPlace known = isObject && AShortcut ? AShortcut(at) : nullptr;
      if (known) {
        at = known;
      } else {
        if (open.size() < kIndexedDepth) starts[open.size()] = at;
        open += *at;
        at = SkipBlanks(at + 1);
        if (*at != (isObject ? '}' : ']')) {
          at = isObject ? CheckName(at) : at;
          if (!at) return false;
          continue;
        }
      }
    } else {
      at = CheckScalar(at);
      if (!at) return false;
    }
    // Behind a value, or at the end of an empty object or array.
    for (;;) {
      at = SkipBlanks(at);
      if (open.empty()) return at == FText.data() + FText.size();
      const bool isObject = open.back() == '{';
      if (*at == ',') {
        at = SkipBlanks(at + 1);
        if (isObject) at = CheckName(at);
        if (!at) return false;
        break;
      }
      if (*at != (isObject ? '}' : ']')) return false;
      ++at;
      open.pop_back();
      if (open.size() >= kIndexedDepth) continue;
      const TJsonPlace start = starts[open.size()];
      if (static_cast<size_t>(at - start) >= kIndexedSize) FEnds[start] = at;
    }
  }
}

// ---- reading

TJsonKind TJsonText::KindOf(TJsonPlace AValue) {
  switch (*AValue) {
    case '{': return jkObject;
    case '[': return jkArray;
    case '"': return jkText;
    case 't': return jkTrue;
    case 'f': return jkFalse;
    case 'n': return jkNull;
    default: return jkNumber;
  }
}

TJsonPlace TJsonText::EndOf(TJsonPlace AValue) const {
  if (*AValue == '"') return QuoteBehind(AValue + 1) + 1;
  if (*AValue != '{' && *AValue != '[') {
    TJsonPlace at = AValue;
    while (*at != ',' && *at != '}' && *at != ']' && *at > ' ') ++at;
    return at;
  }
  if (const auto found = FEnds.find(AValue); found != FEnds.end()) return found->second;
  size_t depth = 0;
  for (TJsonPlace at = AValue;; ++at) {
    if (*at == '"') {
      at = QuoteBehind(at + 1);
    } else if (*at == '{' || *at == '[') {
      ++depth;
    } else if ((*at == '}' || *at == ']') && --depth == 0) {
      return at + 1;
    }
  }
}

void TJsonText::AppendDecoded(std::string_view ARaw, std::u16string& AOut) {
  size_t from = 0;
  for (size_t at = ARaw.find('\\'); at != ARaw.npos; at = ARaw.find('\\', from)) {
    AppendUtf8AsUtf16(ARaw.substr(from, at - from), AOut);
    if (ARaw[at + 1] != 'u') {
      AOut += SimpleEscape(ARaw[at + 1]);
      from = at + 2;
      continue;
    }
    const auto unit = static_cast<char16_t>(HexUnit(ARaw.data() + at + 2));
    from = at + 6;
    if (!IsHighSurrogate(unit) && !IsLowSurrogate(unit)) {
      AOut += unit;
      continue;
    }
    const bool hasNext = IsHighSurrogate(unit) && ARaw.substr(from, 2) == "\\u";
    const auto next = hasNext ? static_cast<char16_t>(HexUnit(ARaw.data() + from + 2)) : u'\0';
    if (IsLowSurrogate(next)) {
      AOut += unit;
      AOut += next;
      from += 6;
    } else {
      AOut += u'\uFFFD';
    }
  }
  AppendUtf8AsUtf16(ARaw.substr(from), AOut);
}

std::string TJsonText::SpellingOf(TJsonPlace AValue) const {
  switch (KindOf(AValue)) {
    case jkObject:
    case jkArray: return {};
    case jkText: {
      std::u16string text;
      AppendDecoded(RawText(AValue), text);
      return Utf16ToUtf8(text);
    }
    case jkNumber:
    case jkTrue:
    case jkFalse:
    case jkNull: break;
  }
  return std::string(AValue, EndOf(AValue));
}

double TJsonText::Number(TJsonPlace ANumber) {
  const TJsonPlace end = JsonNumberEnd(ANumber);
  double number = 0;
  // The grammar is a part of what a file number may be, so only the range can make this fail.
  if (TryParseFileNumber(std::string_view(ANumber, static_cast<size_t>(end - ANumber)), number)) return number;
  constexpr double kLargest = std::numeric_limits<double>::max();
  return *ANumber == '-' ? -kLargest : kLargest;
}

std::string TJsonText::Describe(TJsonPlace APlace) const {
  constexpr int kMostLevels = 16;
  std::string path;
  TJsonPlace value = Root();
  for (int level = 0; level < kMostLevels && value != APlace; ++level) {
    TJsonPlace inner = nullptr;
    const auto choose = [&](TJsonPlace AItem, const auto& AAppend) {
      const TJsonPlace end = EndOf(AItem);
      if (!inner && AItem <= APlace && APlace < end) {
        inner = AItem;
        AAppend();
      }
      return end;
    };
    if (*value == '{') {
      ForEachMember(value, [&](std::string_view AName, TJsonPlace AItem) {
        return choose(AItem, [&] { path += (path.empty() ? "" : ".") + std::string(AName); });
      });
    } else if (*value == '[') {
      size_t index = 0;
      ForEachElement(value, [&](TJsonPlace AItem) {
        choose(AItem, [&] { path += '[' + std::to_string(index) + ']'; });
        ++index;
      });
    }
    if (!inner) break;
    value = inner;
  }
  const std::string_view before = FText.substr(0, OffsetOf(APlace));
  const auto line = std::count(before.begin(), before.end(), '\n') + 1;
  const size_t lineStart = before.rfind('\n') == before.npos ? 0 : before.rfind('\n') + 1;
  const std::string spot = "line " + std::to_string(line) + ", column " + std::to_string(before.size() - lineStart + 1);
  return path.empty() ? spot : path + " (" + spot + ")";
}

}  // namespace tessarine::detail
