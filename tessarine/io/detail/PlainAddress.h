#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include <tessarine/core/values/Address.h>

namespace tessarine::detail {

/// Reads "C7" in capital letters without anything else, as files have it. False for all other texts, of which
/// TCellAddress::FromA1 may still make something, and for places outside the sheet.
inline bool TryReadPlainAddress(std::string_view AText, TCellAddress& AAddress) {
  size_t at = 0;
  int32_t col = 0;
  for (; at < AText.size() && at < 3 && AText[at] >= 'A' && AText[at] <= 'Z'; ++at)
    col = col * 26 + (AText[at] - 'A' + 1);
  if (at == 0 || AText.size() - at > 7) return false;
  int32_t row = 0;
  for (const char digit : AText.substr(at)) {
    if (digit < '0' || digit > '9') return false;
    row = row * 10 + (digit - '0');
  }
  AAddress = {col, row};
  return AAddress.IsValid();
}

}  // namespace tessarine::detail
