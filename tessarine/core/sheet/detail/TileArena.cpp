#include <tessarine/core/sheet/detail/TileArena.h>

#include <algorithm>
#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace tessarine::detail {

namespace {

// Chunks double from the first to the last size, so that a sheet of three cells takes two KB and one of millions wastes
// less than a huge page.
constexpr size_t kFirstChunk = size_t{2} << 10;
constexpr size_t kHugePage = size_t{2} << 20;

bool IsHugeChunk(size_t ABytes) { return ABytes >= kHugePage; }

void* NewChunk(size_t ABytes) {
  if (!IsHugeChunk(ABytes)) return ::operator new(ABytes);
  void* const memory = ::operator new (ABytes, std::align_val_t{kHugePage});
#if defined(__linux__) && defined(MADV_HUGEPAGE)
  // Only a hint: without it the chunk works in small pages.
  static_cast<void>(madvise(memory, ABytes, MADV_HUGEPAGE));
#endif
  return memory;
}

void FreeChunk(void* AMemory, size_t ABytes) noexcept {
  if (IsHugeChunk(ABytes)) {
    ::operator delete (AMemory, std::align_val_t{kHugePage});
  } else {
    ::operator delete(AMemory);
  }
}

}  // namespace

void TTileArena::Refill(size_t ABytes) {
  ShareOutRest();
  if (TakeFreeBlock(ABytes)) return;
  const size_t doubled = std::clamp(FBytesReserved, kFirstChunk, kHugePage);
  size_t bytes = kFirstChunk;
  while (bytes < doubled || bytes < ABytes) bytes *= 2;
  FChunks.reserve(FChunks.size() + 1);
  FAt = static_cast<char*>(NewChunk(bytes));
  FEnd = FAt + bytes;
  FChunks.push_back({FAt, bytes});
  FBytesReserved += bytes;
}

/// Puts what is left of the current piece into the free lists, largest blocks first.
void TTileArena::ShareOutRest() noexcept {
  for (size_t index = kClassCount; index-- > 0;) {
    while (static_cast<size_t>(FEnd - FAt) >= FClassBytes[index]) {
      char* const block = FAt;
      FAt += FClassBytes[index];
      Free(block, index);
    }
  }
  FAt = FEnd = nullptr;
}

/// Makes a free block of a larger class the piece that is cut next.
bool TTileArena::TakeFreeBlock(size_t ABytes) noexcept {
  for (size_t index = kClassCount; index-- > 0 && FClassBytes[index] > ABytes;) {
    TFreeBlock* const block = FFree[index];
    if (!block) continue;
    Unpoison(block, FClassBytes[index]);
    FFree[index] = block->Next;
    FAt = reinterpret_cast<char*>(block);
    FEnd = FAt + FClassBytes[index];
    return true;
  }
  return false;
}

void TTileArena::Reset() noexcept {
  for (const TChunk& chunk : FChunks) {
    Unpoison(chunk.Memory, chunk.Bytes);
    FreeChunk(chunk.Memory, chunk.Bytes);
  }
  FChunks.clear();
  FChunks.shrink_to_fit();
  FFree.fill(nullptr);
  FAt = FEnd = nullptr;
  FBytesReserved = 0;
}

}  // namespace tessarine::detail
