#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/platform/ByteBuffer.h>
#include <tessarine/platform/ReadLimits.h>

namespace tessarine {

/// Reads the parts of a ZIP archive that stands whole in memory. Opening looks at the directory only; a part that is
/// never asked for is never touched, however damaged it is. Names are just names: nothing here knows a file system.
///
/// Read() may be called from several threads at a time, everything else is const as well.
class TZipReader {
 public:
  /// Takes the archive and reads its directory: zip64, a comment, and data in front of the archive are accepted.
  /// Throws EFileFormat for bytes that are no ZIP archive or have a damaged directory, ELimit for too many entries.
  explicit TZipReader(std::vector<std::byte> ABytes, const TReadLimits& ALimits = {});

  size_t EntryCount() const { return FEntries.size(); }

  /// The name of entry AIndex (0-based, directory order) in UTF-8, with "/" for every "\"; may occur twice.
  std::string_view Name(size_t AIndex) const;

  /// The size after inflation that the directory states for entry AIndex. It is a claim until Read() has proved it.
  uint64_t DeclaredSize(size_t AIndex) const { return FEntries[AIndex].Size; }

  /// The first entry in directory order whose name equals AName but for ASCII case.
  std::optional<size_t> Find(std::string_view AName) const;

  /// The content of entry AIndex, its size and checksum proved. Throws EFileFormat naming the part when it is
  /// encrypted, packed in an unknown way, damaged or misplaced, ELimit when it is larger than the limits allow; the
  /// declared size is judged before memory is taken for it.
  TByteBuffer Read(size_t AIndex) const;

  /// The content of the entry that Find() gives; nothing when there is none.
  std::optional<TByteBuffer> Read(std::string_view AName) const;

 private:
  struct TEntry {
    uint64_t LocalOffset = 0;  // of the local header, from the start of FBytes
    uint64_t PackedSize = 0;
    uint64_t Size = 0;
    size_t NameOffset = 0;  // into FNames
    uint32_t NameLength = 0;
    uint32_t Crc = 0;
    uint16_t Flags = 0;
    uint16_t Method = 0;
  };
  struct TDirectory {
    uint64_t Start = 0;  // from the start of FBytes
    uint64_t Size = 0;
    uint64_t Count = 0;
    uint64_t Base = 0;  // bytes in front of the archive, to be added to its offsets
  };

  TDirectory FindDirectory() const;
  size_t FindEndRecord() const;
  void ApplyZip64(size_t AEndRecord, TDirectory& ADirectory, size_t& ADirectoryEnd) const;
  void ReadDirectory(const TDirectory& ADirectory);
  size_t ReadDirectoryEntry(size_t AAt, const TDirectory& ADirectory);
  void ApplyZip64Extra(std::span<const std::byte> AExtra, TEntry& AEntry) const;
  void BuildIndexes();
  void CheckEntry(const TEntry& AEntry) const;
  std::span<const std::byte> PackedBytes(const TEntry& AEntry) const;
  void Unpack(const TEntry& AEntry, TByteBuffer& ABuffer) const;
  std::string_view NameOf(const TEntry& AEntry) const;
  [[noreturn]] void FailPart(const TEntry& AEntry, std::string_view AFinding) const;

  const std::vector<std::byte> FBytes;
  const TReadLimits FLimits;
  std::vector<TEntry> FEntries;
  std::string FNames;
  std::vector<uint32_t> FByName;        // entry indexes by folded name, equal names in directory order
  std::vector<uint64_t> FLocalOffsets;  // ascending, with FDirectoryStart at the end
  uint64_t FDirectoryStart = 0;
  mutable std::atomic<uint64_t> FTotalRead{0};  // bytes that readings gave out or are about to
};

}  // namespace tessarine
