#include <tessarine/core/format/ReadingOrder.h>

#include <algorithm>

namespace tessarine {

namespace {

constexpr bool IsStrongLtrChar(char16_t AChar) {
  return (AChar >= u'A' && AChar <= u'Z') || (AChar >= u'a' && AChar <= u'z') || (AChar >= u'0' && AChar <= u'9') ||
         (AChar >= 192 && AChar <= 591);
}

}  // namespace

bool TextHasStrongRtl(std::u16string_view AText) { return std::any_of(AText.begin(), AText.end(), IsStrongRtlChar); }

TReadingOrder ResolveReadingOrder(std::u16string_view AText, TReadingOrder AOrder) {
  if (AOrder != roContext) return AOrder;
  for (const char16_t unit : AText) {
    if (IsStrongRtlChar(unit)) return roRTL;
    if (IsStrongLtrChar(unit)) return roLTR;
  }
  return roLTR;
}

}  // namespace tessarine
