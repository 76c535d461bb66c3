#include <tessarine/platform/ByteBuffer.h>

#include <cstdlib>
#include <limits>
#include <new>
#include <utility>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace tessarine {
namespace {

#if defined(__linux__)
constexpr size_t kHugePageBytes = size_t{2} << 20;

/// Fresh 4 KB pages are a real cost (256 MB: 152 ms against 23 ms in huge ones). The hint may be refused; the memory
/// is good in either case.
void* AllocateForHugePages(size_t ASize) {
  if (ASize > std::numeric_limits<size_t>::max() - kHugePageBytes) return nullptr;
  const size_t whole = (ASize + kHugePageBytes - 1) / kHugePageBytes * kHugePageBytes;
  void* data = std::aligned_alloc(kHugePageBytes, whole);
  if (data != nullptr) static_cast<void>(madvise(data, ASize, MADV_HUGEPAGE));
  return data;
}
#endif

std::byte* AllocateBytes(size_t ASize) {
  void* data = nullptr;
#if defined(__linux__)
  if (ASize >= 2 * kHugePageBytes) data = AllocateForHugePages(ASize);
#endif
  if (data == nullptr) data = std::malloc(ASize);
  if (data == nullptr) throw std::bad_alloc();
  return static_cast<std::byte*>(data);
}

}  // namespace

TByteBuffer::TByteBuffer(size_t ASize) : FData(ASize == 0 ? nullptr : AllocateBytes(ASize)), FSize(ASize) {}

TByteBuffer::~TByteBuffer() { std::free(FData); }

TByteBuffer::TByteBuffer(TByteBuffer&& AOther) noexcept
    : FData(std::exchange(AOther.FData, nullptr)), FSize(std::exchange(AOther.FSize, 0)) {}

TByteBuffer& TByteBuffer::operator=(TByteBuffer&& AOther) noexcept {
  std::swap(FData, AOther.FData);
  std::swap(FSize, AOther.FSize);
  return *this;
}

}  // namespace tessarine
