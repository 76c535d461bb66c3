#pragma once

#include <cstdint>

namespace tessarine::zip {

// Signatures and words of the ZIP format: PKWARE APPNOTE.TXT 6.3.10, section 4.3.
inline constexpr uint32_t kLocalHeader = 0x04034b50;
inline constexpr uint32_t kDirectoryHeader = 0x02014b50;
inline constexpr uint32_t kEndRecord = 0x06054b50;
inline constexpr uint32_t kZip64EndRecord = 0x06064b50;
inline constexpr uint32_t kZip64Locator = 0x07064b50;
inline constexpr uint16_t kStored = 0;
inline constexpr uint16_t kDeflated = 8;
inline constexpr uint16_t kZip64ExtraId = 1;

}  // namespace tessarine::zip
