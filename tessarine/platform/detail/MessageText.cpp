#include <tessarine/platform/detail/MessageText.h>

#include <tessarine/platform/detail/XmlScan.h>

namespace tessarine {

std::string ForMessage(std::string_view AText, size_t AMaxBytes) {
  const bool isCut = AText.size() > AMaxBytes;
  const std::string_view shown = AText.substr(0, AMaxBytes);
  std::string text;
  const char* at = shown.data();
  const char* const end = at + shown.size();
  while (at < end) {
    const size_t length = static_cast<unsigned char>(*at) < 0x20 ? 0 : XmlCharLength(at, end);
    if (length != 0) {
      text.append(at, length);
    } else if (!isCut || end - at >= 4) {
      text += '?';  // where the cut went through a character nothing is shown
    }
    at += length == 0 ? 1 : length;
  }
  if (isCut) text += "...";
  return text;
}

}  // namespace tessarine
