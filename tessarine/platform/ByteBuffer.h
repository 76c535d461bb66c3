#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include <tessarine/Export.h>

namespace tessarine {

/// A block of bytes of fixed size that is handed over uninitialised (for an inflated part of an archive, for a stream
/// in memory). Large blocks are aligned for huge pages where the system offers them.
class TESSARINE_API TByteBuffer {
 public:
  TByteBuffer() = default;

  /// Throws std::bad_alloc when the memory is not there. A size of 0 allocates nothing.
  explicit TByteBuffer(size_t ASize);
  ~TByteBuffer();

  TByteBuffer(TByteBuffer&& AOther) noexcept;
  TByteBuffer& operator=(TByteBuffer&& AOther) noexcept;
  TByteBuffer(const TByteBuffer&) = delete;
  TByteBuffer& operator=(const TByteBuffer&) = delete;

  std::byte* Data() { return FData; }
  const std::byte* Data() const { return FData; }
  size_t Size() const { return FSize; }
  bool IsEmpty() const { return FSize == 0; }

  std::span<const std::byte> Bytes() const { return {FData, FSize}; }

  /// The bytes as characters; valid as long as the buffer.
  std::string_view Text() const { return {reinterpret_cast<const char*>(FData), FSize}; }

 private:
  std::byte* FData = nullptr;  // from malloc or its aligned kin, null for size 0
  size_t FSize = 0;
};

}  // namespace tessarine
