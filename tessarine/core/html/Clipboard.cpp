#include <tessarine/core/html/Clipboard.h>

#include <algorithm>

#include <tessarine/core/html/HtmlClipboard.h>

namespace tessarine {

namespace {

std::vector<std::byte> TextBytes(std::u16string_view AText) {
  std::vector<std::byte> bytes;
  bytes.reserve((AText.size() + 1) * 2);
  const auto put = [&](char16_t AUnit) {
    bytes.push_back(static_cast<std::byte>(AUnit & 0xFF));
    bytes.push_back(static_cast<std::byte>(AUnit >> 8));
  };
  for (const char16_t unit : AText) put(unit);
  put(0);
  return bytes;
}

std::vector<std::byte> HtmlBytes(std::u16string_view AHtml) {
  const std::string html = ToClipboardHtml(AHtml);
  const auto bytes = std::as_bytes(std::span(html.c_str(), html.size() + 1));
  return {bytes.begin(), bytes.end()};
}

}  // namespace

IClipboard::~IClipboard() = default;

bool TMemoryClipboard::Replace(std::span<const TClipboardItem> AItems) {
  FItems.assign(AItems.begin(), AItems.end());
  return true;
}

std::optional<std::vector<std::byte>> TMemoryClipboard::Find(std::string_view AFormat) {
  const auto found =
      std::find_if(FItems.begin(), FItems.end(), [&](const TClipboardItem& AItem) { return AItem.Format == AFormat; });
  if (found == FItems.end()) return std::nullopt;
  return found->Bytes;
}

bool CopyTextAndHtmlToClipboard(IClipboard& AClipboard, std::u16string_view AText, std::u16string_view AHtml) {
  const TClipboardItem items[] = {{std::string(kClipboardText), TextBytes(AText)},
                                  {std::string(kClipboardHtml), HtmlBytes(AHtml)}};
  return AClipboard.Replace(items);
}

std::optional<std::u16string> TryGetHtmlFromClipboard(IClipboard& AClipboard) {
  const auto bytes = AClipboard.Find(kClipboardHtml);
  if (!bytes) return std::nullopt;
  return FromClipboardHtml({reinterpret_cast<const char*>(bytes->data()), bytes->size()});
}

std::optional<std::u16string> TryGetTextFromClipboard(IClipboard& AClipboard) {
  const auto bytes = AClipboard.Find(kClipboardText);
  if (!bytes) return std::nullopt;
  std::u16string text;
  for (size_t at = 0; at + 1 < bytes->size(); at += 2) {
    const unsigned unit = std::to_integer<unsigned>((*bytes)[at]) | std::to_integer<unsigned>((*bytes)[at + 1]) << 8;
    if (unit == 0) break;
    text += static_cast<char16_t>(unit);
  }
  return text;
}

}  // namespace tessarine
