#pragma once

namespace tessarine {

constexpr bool IsHighSurrogate(char16_t AUnit) { return (AUnit & 0xFC00) == 0xD800; }
constexpr bool IsLowSurrogate(char16_t AUnit) { return (AUnit & 0xFC00) == 0xDC00; }

}  // namespace tessarine
