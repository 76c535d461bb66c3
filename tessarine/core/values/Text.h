#pragma once

#include <atomic>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include <tessarine/Export.h>

namespace tessarine {

namespace detail {

/// The shared block behind a TText: a small head and the UTF-16 units right behind it.
/// A count of kImmortal marks texts that belong to no workbook: they are never counted nor freed.
struct TTextBlock {
  static constexpr uint32_t kImmortal = 0xFFFFFFFFu;

  mutable std::atomic<uint32_t> RefCount;
  uint32_t Length;

  const char16_t* Data() const { return reinterpret_cast<const char16_t*>(this + 1); }
  std::u16string_view View() const { return {Data(), Length}; }
};

/// Takes one more reference; a null block and an immortal one are left alone.
inline void RetainText(const TTextBlock* ABlock) noexcept {
  if (ABlock && ABlock->RefCount.load(std::memory_order_relaxed) != TTextBlock::kImmortal)
    ABlock->RefCount.fetch_add(1, std::memory_order_relaxed);
}

TESSARINE_API void FreeTextBlock(const TTextBlock* ABlock) noexcept;

/// Gives one reference back and frees the block with the last one.
inline void ReleaseText(const TTextBlock* ABlock) noexcept {
  if (!ABlock || ABlock->RefCount.load(std::memory_order_relaxed) == TTextBlock::kImmortal) return;
  if (ABlock->RefCount.fetch_sub(1, std::memory_order_acq_rel) == 1) FreeTextBlock(ABlock);
}

}  // namespace detail

/// An immutable UTF-16 text of one pointer, shared between all its copies. The empty text has no block.
/// Copying never allocates. Copies may be used on different threads.
class TESSARINE_API TText {
 public:
  TText() noexcept = default;
  TText(std::u16string_view AText);                                          // NOLINT(google-explicit-constructor)
  TText(const char16_t* AText) : TText(std::u16string_view(AText)) {}        // NOLINT(google-explicit-constructor)
  TText(const std::u16string& AText) : TText(std::u16string_view(AText)) {}  // NOLINT(google-explicit-constructor)
  TText(const TText& AOther) noexcept : FBlock(AOther.FBlock) { detail::RetainText(FBlock); }
  TText(TText&& AOther) noexcept : FBlock(std::exchange(AOther.FBlock, nullptr)) {}
  ~TText() { detail::ReleaseText(FBlock); }

  TText& operator=(const TText& AOther) noexcept {
    detail::RetainText(AOther.FBlock);
    detail::ReleaseText(std::exchange(FBlock, AOther.FBlock));
    return *this;
  }
  TText& operator=(TText&& AOther) noexcept {
    if (this != &AOther) detail::ReleaseText(std::exchange(FBlock, std::exchange(AOther.FBlock, nullptr)));
    return *this;
  }

  /// From UTF-8; what is no valid UTF-8 becomes U+FFFD.
  static TText FromUtf8(std::string_view AText);

  /// A text that lives as long as the process and is never counted; for constants.
  static TText Immortal(std::u16string_view AText);

  /// A text of ALength units, filled by AFill(char16_t*); one allocation, no copy.
  template <class TFill>
  static TText Build(size_t ALength, TFill&& AFill) {
    TText result;
    if (ALength == 0) return result;
    char16_t* data = result.Allocate(ALength);
    AFill(data);
    return result;
  }

  std::u16string_view View() const noexcept { return FBlock ? FBlock->View() : std::u16string_view(); }
  operator std::u16string_view() const noexcept { return View(); }  // NOLINT(google-explicit-constructor)
  std::u16string ToString() const { return std::u16string(View()); }
  std::string ToUtf8() const;

  bool IsEmpty() const noexcept { return FBlock == nullptr; }
  size_t Length() const noexcept { return FBlock ? FBlock->Length : 0; }

  /// Ordinal comparison by code unit.
  friend bool operator==(const TText& ALeft, const TText& ARight) noexcept {
    return ALeft.FBlock == ARight.FBlock || ALeft.View() == ARight.View();
  }
  friend bool operator==(const TText& ALeft, std::u16string_view ARight) noexcept { return ALeft.View() == ARight; }
  friend bool operator==(const TText& ALeft, const char16_t* ARight) noexcept { return ALeft.View() == ARight; }
  friend std::strong_ordering operator<=>(const TText& ALeft, const TText& ARight) noexcept {
    return ALeft.View().compare(ARight.View()) <=> 0;
  }

  /// The block without a change of its count; null for the empty text. For stores that count on their own.
  const detail::TTextBlock* Block() const noexcept { return FBlock; }

  /// Hands the reference out; this text is empty afterwards.
  const detail::TTextBlock* Detach() noexcept { return std::exchange(FBlock, nullptr); }

  /// Takes over a reference that Detach() handed out.
  static TText Adopt(const detail::TTextBlock* ABlock) noexcept {
    TText result;
    result.FBlock = ABlock;
    return result;
  }

  /// A text that shares ABlock with its holder (one reference more).
  static TText Share(const detail::TTextBlock* ABlock) noexcept {
    detail::RetainText(ABlock);
    return Adopt(ABlock);
  }

 private:
  char16_t* Allocate(size_t ALength);

  const detail::TTextBlock* FBlock = nullptr;
};

static_assert(sizeof(TText) == sizeof(void*));

/// A text argument of host-facing operations: takes UTF-16 and UTF-8 alike. Lives for one call.
class TTextArg {
 public:
  TTextArg(std::u16string_view AText) : FView(AText) {}                                       // NOLINT
  TTextArg(const char16_t* AText) : FView(AText) {}                                           // NOLINT
  TTextArg(const std::u16string& AText) : FView(AText) {}                                     // NOLINT
  TTextArg(const TText& AText) : FView(AText.View()) {}                                       // NOLINT
  TTextArg(std::string_view AText) : FOwned(TText::FromUtf8(AText)), FView(FOwned.View()) {}  // NOLINT
  TTextArg(const char* AText) : TTextArg(std::string_view(AText)) {}                          // NOLINT
  TTextArg(const std::string& AText) : TTextArg(std::string_view(AText)) {}                   // NOLINT
  TTextArg(const TTextArg&) = delete;
  TTextArg& operator=(const TTextArg&) = delete;

  std::u16string_view View() const { return FView; }
  operator std::u16string_view() const { return FView; }  // NOLINT(google-explicit-constructor)

 private:
  TText FOwned;
  std::u16string_view FView;
};

}  // namespace tessarine
