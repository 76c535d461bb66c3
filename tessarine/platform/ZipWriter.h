#pragma once

#include <cstddef>
#include <cstdint>
#include <future>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/platform/ByteBuffer.h>

namespace tessarine {

class IWriteStream;

/// How a ZIP archive is written.
struct TZipWriteOptions {
  int Level = 1;  ///< of deflate, 1 (fast) to 12 (small)
  /// The time of all entries as a serial number. Without it they carry 1980-01-01 00:00, so that the same content gives
  /// the same bytes; so do they for a time that the format cannot tell (years 1980 to 2107).
  std::optional<double> Time = {};
};

/// Writes a ZIP archive front to back, entry by entry. Large contents are packed on a second thread while the caller
/// builds the next one; the bytes of the archive do not depend on that. Entries or archives beyond 4 GiB are written
/// with the 64-bit extensions.
class TZipWriter {
 public:
  /// The stream outlives the writer.
  TZipWriter(IWriteStream& AStream, const TZipWriteOptions& AOptions);
  TZipWriter(const TZipWriter&) = delete;
  TZipWriter& operator=(const TZipWriter&) = delete;
  ~TZipWriter();

  /// Appends an entry of that name (UTF-8, "/" between folders) that holds AContent packed. A name may come once only:
  /// throws EArgument for a second entry of the same name but for ASCII case. What the stream throws goes to the
  /// caller, from this call or from a later one.
  void Add(std::string_view AName, std::string AContent);
  void Add(std::string_view AName, std::span<const std::byte> AContent);

  /// The same, not packed.
  void AddStored(std::string_view AName, std::string_view AContent);

  /// Whether there is an entry of that name but for ASCII case.
  bool Contains(std::string_view AName) const;

  /// Writes what waits and the directory. The archive is complete then, and not before.
  void Finish();

 private:
  struct TEntry {
    std::string Name;
    uint64_t Offset = 0;
    uint64_t Size = 0;
    uint64_t PackedSize = 0;
    uint32_t Crc = 0;
    uint16_t Method = 0;

    bool IsLarge() const { return Size >= 0xffffffffu || PackedSize >= 0xffffffffu; }
  };
  /// What one entry holds, packed if that made it smaller.
  struct TPacked {
    std::string Stored;    // the content itself, or
    TByteBuffer Deflated;  // what stands for it, PackedSize bytes of it
    size_t PackedSize = 0;
    uint64_t Size = 0;
    uint32_t Crc = 0;
    uint16_t Method = 0;
  };

  TPacked Pack(std::string AContent, bool ADeflates) const;
  void AddEntry(std::string_view AName, std::string AContent, bool ADeflates);
  void WriteWaiting();
  void WriteEntry(const TPacked& APacked);
  void Write(std::string_view ABytes);

  IWriteStream& FStream;
  std::shared_ptr<void> FCompressor;  // one at a time uses it
  uint32_t FTime = 0;                 // date and time as the format has them
  uint64_t FPosition = 0;
  std::vector<TEntry> FEntries;
  std::set<std::string> FNames;   // folded to lower case
  std::future<TPacked> FWaiting;  // the content of the entry that was added last
};

}  // namespace tessarine
