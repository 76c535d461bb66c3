#include <tessarine/core/html/HtmlClipboard.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <optional>

#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

constexpr std::string_view kBefore = "<html><body>\r\n<!--StartFragment-->";
constexpr std::string_view kBehind = "<!--EndFragment-->\r\n</body></html>";
constexpr std::u16string_view kStartMark = u"<!--StartFragment-->";
constexpr std::u16string_view kEndMark = u"<!--EndFragment-->";

/// Offsets in bytes from the beginning of the header.
struct TOffsets {
  uint64_t StartHtml = 0;
  uint64_t EndHtml = 0;
  uint64_t StartFragment = 0;
  uint64_t EndFragment = 0;
};

std::string HeaderOf(const TOffsets& AOffsets) {
  char text[160];
  const int size = std::snprintf(
      text, sizeof text,
      "Version:0.9\r\nStartHTML:%.10llu\r\nEndHTML:%.10llu\r\nStartFragment:%.10llu\r\nEndFragment:%.10llu\r\n",
      static_cast<unsigned long long>(AOffsets.StartHtml), static_cast<unsigned long long>(AOffsets.EndHtml),
      static_cast<unsigned long long>(AOffsets.StartFragment), static_cast<unsigned long long>(AOffsets.EndFragment));
  return {text, static_cast<size_t>(size)};
}

/// The decimal number behind the first AName; one that is too large is the largest there is.
std::optional<uint64_t> OffsetBehind(std::u16string_view AText, std::u16string_view AName) {
  constexpr uint64_t kMost = std::numeric_limits<uint64_t>::max();
  const size_t found = AText.find(AName);
  if (found == std::u16string_view::npos) return std::nullopt;
  std::optional<uint64_t> offset;
  for (size_t at = found + AName.size(); at < AText.size() && IsAsciiDigit(AText[at]); ++at) {
    const uint64_t before = offset.value_or(0);
    offset = before > kMost / 10 - 1 ? kMost : before * 10 + (AText[at] - u'0');
  }
  return offset;
}

/// The place of the first unit that does not lie before AOffset bytes of the text in UTF-8.
size_t PlaceOfByte(std::u16string_view AText, uint64_t AOffset) {
  uint64_t bytes = 0;
  size_t at = 0;
  while (at < AText.size() && bytes < AOffset) {
    const char16_t unit = AText[at];
    const bool isPair = (unit & 0xFC00) == 0xD800 && at + 1 < AText.size() && (AText[at + 1] & 0xFC00) == 0xDC00;
    bytes += isPair ? 4 : unit < 0x80 ? 1 : unit < 0x800 ? 2 : 3;
    at += isPair ? 2 : 1;
  }
  return at;
}

}  // namespace

std::string ToClipboardHtml(std::u16string_view AFragment) {
  std::string fragment = Utf16ToUtf8(AFragment);
  std::erase(fragment, '\0');
  TOffsets offsets;
  offsets.StartHtml = HeaderOf({}).size();
  offsets.StartFragment = offsets.StartHtml + kBefore.size();
  offsets.EndFragment = offsets.StartFragment + fragment.size();
  offsets.EndHtml = offsets.EndFragment + kBehind.size();
  std::string html = HeaderOf(offsets);
  html += kBefore;
  html += fragment;
  html += kBehind;
  return html;
}

std::u16string FromClipboardHtml(std::string_view ABytes) { return Utf8ToUtf16(ABytes.substr(0, ABytes.find('\0'))); }

std::u16string_view ExtractHtmlFragment(std::u16string_view AClipboardHtml) {
  const size_t mark = AClipboardHtml.find(kStartMark);
  if (mark != std::u16string_view::npos) {
    const size_t begin = mark + kStartMark.size();
    const size_t end = AClipboardHtml.find(kEndMark, begin);
    if (end != std::u16string_view::npos) return AClipboardHtml.substr(begin, end - begin);
  }
  const auto start = OffsetBehind(AClipboardHtml, u"StartFragment:");
  const auto end = OffsetBehind(AClipboardHtml, u"EndFragment:");
  if (!start || !end || *start >= *end) return AClipboardHtml;
  const size_t first = PlaceOfByte(AClipboardHtml, *start);
  return AClipboardHtml.substr(first, PlaceOfByte(AClipboardHtml, *end) - first);
}

}  // namespace tessarine
