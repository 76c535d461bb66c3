#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace tessarine::detail {

/// Memory for the blocks of one cell store: a few fixed sizes, each with a free list, cut from chunks that grow with
/// the store. Nothing goes back to the system before Reset.
class TTileArena {
 public:
  static constexpr size_t kClassCount = 9;

  /// AClassBytes: the block sizes, rising, each a multiple of 8 and at least 16.
  explicit TTileArena(const std::array<size_t, kClassCount>& AClassBytes) : FClassBytes(AClassBytes) {}
  ~TTileArena() { Reset(); }
  TTileArena(const TTileArena&) = delete;
  TTileArena& operator=(const TTileArena&) = delete;

  /// A block of a class; its bytes are not set.
  void* Allocate(size_t AClass) {
    if (TFreeBlock* block = FFree[AClass]) {
      Unpoison(block, FClassBytes[AClass]);
      FFree[AClass] = block->Next;
      return block;
    }
    return Carve(FClassBytes[AClass]);
  }

  void Free(void* ABlock, size_t AClass) noexcept {
    auto* block = static_cast<TFreeBlock*>(ABlock);
    block->Next = FFree[AClass];
    FFree[AClass] = block;
    Poison(block, FClassBytes[AClass]);
  }

  /// A piece of any size (a multiple of 8) that stays until Reset.
  void* Carve(size_t ABytes) {
    if (static_cast<size_t>(FEnd - FAt) < ABytes) Refill(ABytes);
    char* const piece = FAt;
    FAt += ABytes;
    return piece;
  }

  /// Gives all memory back; every block ends here.
  void Reset() noexcept;

  /// The bytes taken from the system.
  size_t BytesReserved() const { return FBytesReserved; }

 private:
  struct TFreeBlock {
    TFreeBlock* Next;
  };
  struct TChunk {
    void* Memory;
    size_t Bytes;
  };

  void Refill(size_t ABytes);
  void ShareOutRest() noexcept;
  bool TakeFreeBlock(size_t ABytes) noexcept;
  static void Poison(void* ABlock, size_t ABytes) noexcept;
  static void Unpoison(void* ABlock, size_t ABytes) noexcept;

  std::array<size_t, kClassCount> FClassBytes;
  std::array<TFreeBlock*, kClassCount> FFree{};
  char* FAt = nullptr;  // the unused part of the piece that is being cut
  char* FEnd = nullptr;
  std::vector<TChunk> FChunks;
  size_t FBytesReserved = 0;
};

#if defined(__SANITIZE_ADDRESS__)
#define TESS_ARENA_POISON 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TESS_ARENA_POISON 1
#endif
#endif

#if defined(TESS_ARENA_POISON)
extern "C" void __asan_poison_memory_region(void const volatile*, size_t);
extern "C" void __asan_unpoison_memory_region(void const volatile*, size_t);
inline void TTileArena::Poison(void* ABlock, size_t ABytes) noexcept { __asan_poison_memory_region(ABlock, ABytes); }
inline void TTileArena::Unpoison(void* ABlock, size_t ABytes) noexcept {
  __asan_unpoison_memory_region(ABlock, ABytes);
}
#else
inline void TTileArena::Poison(void*, size_t) noexcept {}
inline void TTileArena::Unpoison(void*, size_t) noexcept {}
#endif

}  // namespace tessarine::detail
