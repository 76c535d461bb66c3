#include <tessarine/platform/TextEncoding.h>

#include <algorithm>
#include <array>

#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/Xml.h>

namespace tessarine {

namespace {

constexpr std::array<char16_t, 32> kWindows1252 = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                   0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                                   0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                   0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

enum class TEncoding : uint8_t { enUtf8, enUtf16Little, enUtf16Big, enWindows1252 };

struct TEncodingName {
  std::string_view Name;
  TEncoding Encoding;
};

constexpr TEncodingName kEncodings[] = {
    {"utf-16", TEncoding::enUtf16Little},    {"utf-16le", TEncoding::enUtf16Little},
    {"utf-16be", TEncoding::enUtf16Big},     {"windows-1252", TEncoding::enWindows1252},
    {"cp1252", TEncoding::enWindows1252},    {"iso-8859-1", TEncoding::enWindows1252},
    {"iso8859-1", TEncoding::enWindows1252}, {"iso_8859-1", TEncoding::enWindows1252},
    {"latin1", TEncoding::enWindows1252},    {"us-ascii", TEncoding::enWindows1252},
    {"ascii", TEncoding::enWindows1252},
};

TEncoding EncodingOf(std::string_view AName) {
  for (const TEncodingName& known : kEncodings) {
    if (EqualXmlNames(known.Name, AName)) return known.Encoding;
  }
  return TEncoding::enUtf8;
}

std::u16string DecodeUtf16(std::string_view ABytes, bool AIsBig) {
  // The decoder of files does the rest once a mark tells the order.
  return DecodeTextBytes((AIsBig ? std::string("\xFE\xFF") : std::string("\xFF\xFE")).append(ABytes));
}

bool HasByteOrderMark(std::string_view ABytes) {
  return ABytes.starts_with("\xEF\xBB\xBF") || ABytes.starts_with("\xFE\xFF") || ABytes.starts_with("\xFF\xFE");
}

std::string_view Trimmed(std::string_view AText) {
  const auto isBlank = [](char AByte) { return AByte == ' ' || AByte == '\t'; };
  while (!AText.empty() && isBlank(AText.front())) AText.remove_prefix(1);
  while (!AText.empty() && isBlank(AText.back())) AText.remove_suffix(1);
  return AText;
}

}  // namespace

char16_t Windows1252Unit(uint8_t AByte) { return AByte >= 0x80 && AByte <= 0x9F ? kWindows1252[AByte - 0x80u] : AByte; }

std::u16string DecodeNamedText(std::string_view ABytes, std::string_view AEncoding) {
  if (HasByteOrderMark(ABytes)) return DecodeTextBytes(ABytes);
  switch (EncodingOf(AEncoding)) {
    case TEncoding::enUtf16Little: return DecodeUtf16(ABytes, false);
    case TEncoding::enUtf16Big: return DecodeUtf16(ABytes, true);
    case TEncoding::enUtf8: return Utf8ToUtf16(ABytes);
    case TEncoding::enWindows1252: break;
  }
  std::u16string text(ABytes.size(), u'\0');
  std::transform(ABytes.begin(), ABytes.end(), text.begin(),
                 [](char AByte) { return Windows1252Unit(static_cast<uint8_t>(AByte)); });
  return text;
}

std::string_view CharsetOfContentType(std::string_view AContentType) {
  constexpr std::string_view kCharset = "charset=";
  while (true) {
    const size_t end = AContentType.find(';');
    if (end == std::string_view::npos) return {};
    AContentType.remove_prefix(end + 1);
    std::string_view part = Trimmed(AContentType.substr(0, AContentType.find(';')));
    if (!EqualXmlNames(part.substr(0, kCharset.size()), kCharset)) continue;
    part = Trimmed(part.substr(kCharset.size()));
    if (part.size() >= 2 && part.front() == '"' && part.back() == '"') part = part.substr(1, part.size() - 2);
    return part;
  }
}

}  // namespace tessarine
