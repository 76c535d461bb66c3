#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/Export.h>

namespace tessarine {

/// A text in UTF-16, the lower byte of a unit first, with a zero unit behind it. Windows has no name for this format
/// but the number 13 (CF_UNICODETEXT).
inline constexpr std::string_view kClipboardText = "Unicode text";
/// The bytes of ToClipboardHtml with a zero byte behind them, under the name that Windows programs register.
inline constexpr std::string_view kClipboardHtml = "HTML Format";

/// One of the forms in which what was copied is on offer.
struct TClipboardItem {
  std::string Format;
  std::vector<std::byte> Bytes;
};

/// The clipboard of the system, which the host fills in: bytes under the names of formats. Used on the host's thread.
class TESSARINE_API IClipboard {
 public:
  virtual ~IClipboard();

  /// Replaces all that the clipboard holds by the items, in their order. False when the clipboard cannot be
  /// had, because another program has it open; it is then as it was.
  [[nodiscard]] virtual bool Replace(std::span<const TClipboardItem> AItems) = 0;

  /// The bytes of a format; more may stand behind their terminator. Nothing when the clipboard does not hold the
  /// format or cannot be had.
  virtual std::optional<std::vector<std::byte>> Find(std::string_view AFormat) = 0;
};

/// A clipboard inside the process: for hosts without a system's, and for tests.
class TESSARINE_API TMemoryClipboard final : public IClipboard {
 public:
  bool Replace(std::span<const TClipboardItem> AItems) override;
  std::optional<std::vector<std::byte>> Find(std::string_view AFormat) override;

 private:
  std::vector<TClipboardItem> FItems;
};

/// Puts a text and the same as HTML, a fragment without a header, on the clipboard. False when it cannot be had.
[[nodiscard]] TESSARINE_API bool CopyTextAndHtmlToClipboard(IClipboard& AClipboard, std::u16string_view AText,
                                                            std::u16string_view AHtml);

/// The clipboard's HTML with its header, for TryParseHtmlClipboard, and its text. Nothing when it holds none or cannot
/// be had.
TESSARINE_API std::optional<std::u16string> TryGetHtmlFromClipboard(IClipboard& AClipboard);
TESSARINE_API std::optional<std::u16string> TryGetTextFromClipboard(IClipboard& AClipboard);

}  // namespace tessarine
