#include <tessarine/core/values/Text.h>

#include <cstring>
#include <new>
#include <stdexcept>

#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace detail {

void FreeTextBlock(const TTextBlock* ABlock) noexcept {
  ABlock->~TTextBlock();
  ::operator delete(const_cast<TTextBlock*>(ABlock));
}

}  // namespace detail

char16_t* TText::Allocate(size_t ALength) {
  if (ALength > 0x7FFFFFFFu) throw std::length_error("text too long");
  void* memory = ::operator new(sizeof(detail::TTextBlock) + ALength * sizeof(char16_t));
  auto* block = new (memory) detail::TTextBlock{1, static_cast<uint32_t>(ALength)};
  FBlock = block;
  return reinterpret_cast<char16_t*>(block + 1);
}

TText::TText(std::u16string_view AText) {
  if (!AText.empty()) std::memcpy(Allocate(AText.size()), AText.data(), AText.size() * sizeof(char16_t));
}

TText TText::FromUtf8(std::string_view AText) {
  bool ascii = true;
  for (const char unit : AText) ascii = ascii && static_cast<unsigned char>(unit) < 0x80;
  if (!ascii) return TText(Utf8ToUtf16(AText));
  return Build(AText.size(), [&](char16_t* AData) {
    for (size_t i = 0; i < AText.size(); ++i) AData[i] = static_cast<unsigned char>(AText[i]);
  });
}

TText TText::Immortal(std::u16string_view AText) {
  TText result(AText);
  if (result.FBlock) result.FBlock->RefCount.store(detail::TTextBlock::kImmortal, std::memory_order_relaxed);
  return result;
}

std::string TText::ToUtf8() const { return Utf16ToUtf8(View()); }

}  // namespace tessarine
