#include <tessarine/platform/Zip.h>

#include <algorithm>
#include <memory>
#include <new>
#include <numeric>
#include <utility>

#include <libdeflate.h>

#include <tessarine/platform/Errors.h>
#include <tessarine/platform/detail/MessageText.h>
#include <tessarine/platform/detail/ZipFormat.h>
#include <tessarine/platform/detail/ZipNames.h>

namespace tessarine {
namespace {

using namespace zip;

// Sizes of fixed parts and flags: PKWARE APPNOTE.TXT 6.3.10, section 4.3.
constexpr size_t kLocalHeaderSize = 30;
constexpr size_t kDirectoryHeaderSize = 46;
constexpr size_t kEndRecordSize = 22;
constexpr size_t kZip64EndRecordSize = 56;
constexpr size_t kZip64LocatorSize = 20;
constexpr size_t kMaxCommentSize = 0xffff;

constexpr uint16_t kFlagEncrypted = 1 << 0;
constexpr uint16_t kFlagStrongEncryption = 1 << 6;

/// No deflate stream gives more: 258 bytes for two bits.
constexpr uint64_t kMostInflatedPerByte = 1032;

template <typename T>
T LittleEndian(std::span<const std::byte> ABytes, size_t AAt) {
  T value = 0;
  for (size_t i = sizeof(T); i-- > 0;)
    value = static_cast<T>((uint64_t{value} << 8) | std::to_integer<T>(ABytes[AAt + i]));
  return value;
}
uint16_t U16(std::span<const std::byte> ABytes, size_t AAt) { return LittleEndian<uint16_t>(ABytes, AAt); }
uint32_t U32(std::span<const std::byte> ABytes, size_t AAt) { return LittleEndian<uint32_t>(ABytes, AAt); }
uint64_t U64(std::span<const std::byte> ABytes, size_t AAt) {
  return uint64_t{U32(ABytes, AAt)} | (uint64_t{U32(ABytes, AAt + 4)} << 32);
}

/// Whether ALength bytes at AAt lie within ASize; safe for any values.
bool Fits(uint64_t AAt, uint64_t ALength, uint64_t ASize) { return AAt <= ASize && ALength <= ASize - AAt; }

bool HasSignature(std::span<const std::byte> ABytes, uint64_t AAt, uint32_t ASignature) {
  return Fits(AAt, 4, ABytes.size()) && U32(ABytes, static_cast<size_t>(AAt)) == ASignature;
}

/// Adds to the count of bytes read, and takes that back unless the reading succeeds.
class TReservation {
 public:
  TReservation(std::atomic<uint64_t>& ACounter, uint64_t ASize)
      : FCounter(ACounter), FSize(ASize), FTotal(ACounter.fetch_add(ASize) + ASize) {}
  TReservation(const TReservation&) = delete;
  TReservation& operator=(const TReservation&) = delete;
  ~TReservation() { FCounter.fetch_sub(FSize); }

  uint64_t Total() const { return FTotal; }
  void Keep() { FSize = 0; }

 private:
  std::atomic<uint64_t>& FCounter;
  uint64_t FSize;
  const uint64_t FTotal;
};

struct TDecompressorDeleter {
  void operator()(libdeflate_decompressor* AIt) const { libdeflate_free_decompressor(AIt); }
};

}  // namespace

TZipReader::TZipReader(std::vector<std::byte> ABytes, const TReadLimits& ALimits)
    : FBytes(std::move(ABytes)), FLimits(ALimits.Clamped()) {
  ReadDirectory(FindDirectory());
  BuildIndexes();
}

/// The record whose comment ends with the file; where there is none, the last one whose comment fits (rubbish behind).
size_t TZipReader::FindEndRecord() const {
  const size_t size = FBytes.size();
  std::optional<size_t> loose;
  if (size >= kEndRecordSize) {
    const size_t last = size - kEndRecordSize;
    const size_t first = last > kMaxCommentSize ? last - kMaxCommentSize : 0;
    for (size_t at = last + 1; at-- > first;) {
      if (!HasSignature(FBytes, at, kEndRecord)) continue;
      const size_t commentSize = U16(FBytes, at + 20);
      if (commentSize == last - at) return at;
      if (commentSize < last - at && !loose) loose = at;
    }
  }
  if (loose) return *loose;
  throw EFileFormat(size == 0 ? "not a ZIP archive: the file is empty"
                              : "not a ZIP archive, or one that was cut off: its end record is missing");
}

TZipReader::TDirectory TZipReader::FindDirectory() const {
  const size_t endRecord = FindEndRecord();
  TDirectory directory{.Start = U32(FBytes, endRecord + 16),
                       .Size = U32(FBytes, endRecord + 12),
                       .Count = U16(FBytes, endRecord + 10),
                       .Base = 0};
  const uint16_t disk = U16(FBytes, endRecord + 4);
  size_t directoryEnd = endRecord;
  ApplyZip64(endRecord, directory, directoryEnd);
  if (disk != 0 && disk != 0xffff) throw EFileFormat("ZIP archive: it is one volume of several");

  const auto isDirectoryAt = [&](uint64_t AAt) {
    return Fits(AAt, directory.Size, directoryEnd) &&
           (directory.Count == 0 || HasSignature(FBytes, AAt, kDirectoryHeader));
  };
  const uint64_t stated = directory.Start;
  if (directory.Size <= directoryEnd && stated <= directoryEnd - directory.Size &&
      isDirectoryAt(directoryEnd - directory.Size)) {
    directory.Start = directoryEnd - directory.Size;
    directory.Base = directory.Start - stated;
  } else if (!isDirectoryAt(stated)) {
    throw EFileFormat("ZIP archive: the directory is not where the end record says");
  }
  return directory;
}

/// Takes from the 64-bit end record what the plain one has no room for, and moves the directory's end before it.
void TZipReader::ApplyZip64(size_t AEndRecord, TDirectory& ADirectory, size_t& ADirectoryEnd) const {
  if (ADirectory.Start != 0xffffffff && ADirectory.Size != 0xffffffff && ADirectory.Count != 0xffff) return;
  if (AEndRecord < kZip64LocatorSize + kZip64EndRecordSize) return;
  const size_t locator = AEndRecord - kZip64LocatorSize;
  if (!HasSignature(FBytes, locator, kZip64Locator)) return;

  uint64_t record = U64(FBytes, locator + 8);
  if (!Fits(record, kZip64EndRecordSize, locator) || !HasSignature(FBytes, record, kZip64EndRecord)) {
    record = locator - kZip64EndRecordSize;  // the stated place is off when data stands in front of the archive
    if (!HasSignature(FBytes, record, kZip64EndRecord))
      throw EFileFormat("ZIP archive: its 64-bit end record is missing");
  }
  const auto at = static_cast<size_t>(record);
  if (ADirectory.Count == 0xffff) ADirectory.Count = U64(FBytes, at + 32);
  if (ADirectory.Size == 0xffffffff) ADirectory.Size = U64(FBytes, at + 40);
  if (ADirectory.Start == 0xffffffff) ADirectory.Start = U64(FBytes, at + 48);
  ADirectoryEnd = at;
}

void TZipReader::ReadDirectory(const TDirectory& ADirectory) {
  if (ADirectory.Count > FLimits.MaxEntries) {
    throw ELimit("ZIP archive: it has " + std::to_string(ADirectory.Count) + " entries, the limit is " +
                 std::to_string(FLimits.MaxEntries));
  }
  if (ADirectory.Count > ADirectory.Size / kDirectoryHeaderSize) {
    throw EFileFormat("ZIP archive: the directory is too small for its " + std::to_string(ADirectory.Count) +
                      " entries");
  }
  FDirectoryStart = ADirectory.Start;
  FEntries.reserve(static_cast<size_t>(ADirectory.Count));
  auto at = static_cast<size_t>(ADirectory.Start);
  for (uint64_t i = 0; i < ADirectory.Count; ++i) at = ReadDirectoryEntry(at, ADirectory);
}

/// Reads the entry at AAt and returns where the next one begins.
size_t TZipReader::ReadDirectoryEntry(size_t AAt, const TDirectory& ADirectory) {
  const std::span<const std::byte> bytes = FBytes;
  const uint64_t end = ADirectory.Start + ADirectory.Size;
  const auto fail = [&] {
    throw EFileFormat("ZIP archive: entry " + std::to_string(FEntries.size() + 1) +
                      " of the directory is damaged; get or save the file again");
  };
  if (!Fits(AAt, kDirectoryHeaderSize, end) || !HasSignature(bytes, AAt, kDirectoryHeader)) fail();
  const size_t nameSize = U16(bytes, AAt + 28);
  const size_t extraSize = U16(bytes, AAt + 30);
  const size_t commentSize = U16(bytes, AAt + 32);
  const size_t nameAt = AAt + kDirectoryHeaderSize;
  if (!Fits(nameAt, nameSize + extraSize + commentSize, end)) fail();

  TEntry entry;
  entry.Flags = U16(bytes, AAt + 8);
  entry.Method = U16(bytes, AAt + 10);
  entry.Crc = U32(bytes, AAt + 16);
  entry.PackedSize = U32(bytes, AAt + 20);
  entry.Size = U32(bytes, AAt + 24);
  entry.LocalOffset = U32(bytes, AAt + 42);
  entry.NameOffset = FNames.size();
  AppendZipName(bytes.subspan(nameAt, nameSize), FNames);
  entry.NameLength = static_cast<uint32_t>(FNames.size() - entry.NameOffset);
  ApplyZip64Extra(bytes.subspan(nameAt + nameSize, extraSize), entry);
  // An absurd place stays as it is and is refused when the part is read.
  entry.LocalOffset = entry.LocalOffset > FBytes.size() ? entry.LocalOffset : entry.LocalOffset + ADirectory.Base;
  FEntries.push_back(entry);
  return nameAt + nameSize + extraSize + commentSize;
}

/// The extra field holds, in this order, 64-bit values for those fields that are saturated in the entry.
void TZipReader::ApplyZip64Extra(std::span<const std::byte> AExtra, TEntry& AEntry) const {
  while (AExtra.size() >= 4) {
    const uint16_t id = U16(AExtra, 0);
    const size_t size = std::min<size_t>(U16(AExtra, 2), AExtra.size() - 4);
    if (id == kZip64ExtraId) {
      auto values = AExtra.subspan(4, size);
      for (uint64_t* field : {&AEntry.Size, &AEntry.PackedSize, &AEntry.LocalOffset}) {
        if (*field != 0xffffffff || values.size() < 8) continue;
        *field = U64(values, 0);
        values = values.subspan(8);
      }
      return;
    }
    AExtra = AExtra.subspan(4 + size);
  }
}

/// Sorted rather than hashed: names come from the file, and no choice of names makes a sort slow.
void TZipReader::BuildIndexes() {
  FByName.resize(FEntries.size());
  std::iota(FByName.begin(), FByName.end(), 0u);
  std::sort(FByName.begin(), FByName.end(), [this](uint32_t ALeft, uint32_t ARight) {
    const int order = CompareZipNames(NameOf(FEntries[ALeft]), NameOf(FEntries[ARight]));
    return order != 0 ? order < 0 : ALeft < ARight;
  });
  FLocalOffsets.reserve(FEntries.size() + 1);
  for (const TEntry& entry : FEntries) FLocalOffsets.push_back(entry.LocalOffset);
  FLocalOffsets.push_back(FDirectoryStart);
  std::sort(FLocalOffsets.begin(), FLocalOffsets.end());
}

std::string_view TZipReader::NameOf(const TEntry& AEntry) const {
  return std::string_view(FNames).substr(AEntry.NameOffset, AEntry.NameLength);
}

std::string_view TZipReader::Name(size_t AIndex) const { return NameOf(FEntries[AIndex]); }

std::optional<size_t> TZipReader::Find(std::string_view AName) const {
  const auto found = std::lower_bound(
      FByName.begin(), FByName.end(), AName,
      [this](uint32_t AIndex, std::string_view AText) { return CompareZipNames(NameOf(FEntries[AIndex]), AText) < 0; });
  if (found == FByName.end() || CompareZipNames(NameOf(FEntries[*found]), AName) != 0) return std::nullopt;
  return *found;
}

std::optional<TByteBuffer> TZipReader::Read(std::string_view AName) const {
  const auto index = Find(AName);
  if (!index) return std::nullopt;
  return Read(*index);
}

TByteBuffer TZipReader::Read(size_t AIndex) const {
  const TEntry& entry = FEntries[AIndex];
  CheckEntry(entry);
  TReservation reservation(FTotalRead, entry.Size);
  if (reservation.Total() > FLimits.MaxTotalBytes) {
    throw ELimit(ForMessage(NameOf(entry)) + ": with this part the archive inflates to " +
                 std::to_string(reservation.Total()) + " bytes, the limit is " + std::to_string(FLimits.MaxTotalBytes));
  }
  try {
    TByteBuffer buffer(static_cast<size_t>(entry.Size));
    Unpack(entry, buffer);
    reservation.Keep();
    return buffer;
  } catch (const std::bad_alloc&) {
    throw ELimit(ForMessage(NameOf(entry)) + ": there is no memory for its " + std::to_string(entry.Size) + " bytes");
  }
}

/// What can be said from the directory alone, before anything is allocated.
void TZipReader::CheckEntry(const TEntry& AEntry) const {
  if ((AEntry.Flags & (kFlagEncrypted | kFlagStrongEncryption)) != 0) FailPart(AEntry, "the part is encrypted");
  if (AEntry.Method != kStored && AEntry.Method != kDeflated) {
    FailPart(AEntry, "the part is packed by method " + std::to_string(AEntry.Method) +
                         ", known are 0 (stored) and 8 (deflate)");
  }
  if (AEntry.Size > FLimits.MaxPartBytes) {
    throw ELimit(ForMessage(NameOf(AEntry)) + ": the part inflates to " + std::to_string(AEntry.Size) +
                 " bytes, the limit is " + std::to_string(FLimits.MaxPartBytes));
  }
  if (AEntry.Method == kStored && AEntry.Size != AEntry.PackedSize) {
    FailPart(AEntry, "the part is stored, but its two sizes differ");
  }
  const uint64_t ratio = AEntry.Size / std::max<uint64_t>(AEntry.PackedSize, 1);
  if (AEntry.Size > FLimits.RatioFreeBytes && ratio > FLimits.MaxRatio) {
    throw ELimit(ForMessage(NameOf(AEntry)) + ": the part inflates " + std::to_string(ratio) + "-fold to " +
                 std::to_string(AEntry.Size) + " bytes, the limit is " + std::to_string(FLimits.MaxRatio) +
                 "-fold for parts above " + std::to_string(FLimits.RatioFreeBytes) + " bytes");
  }
  if (ratio > kMostInflatedPerByte) {
    FailPart(AEntry, "the part is damaged: " + std::to_string(AEntry.PackedSize) + " packed bytes cannot give " +
                         std::to_string(AEntry.Size));
  }
}

std::span<const std::byte> TZipReader::PackedBytes(const TEntry& AEntry) const {
  const std::span<const std::byte> bytes = FBytes;
  const uint64_t header = AEntry.LocalOffset;
  if (!Fits(header, kLocalHeaderSize, FDirectoryStart) || !HasSignature(bytes, header, kLocalHeader)) {
    FailPart(AEntry, "the directory gives a wrong place for the part");
  }
  const auto at = static_cast<size_t>(header);
  const uint64_t dataAt = header + kLocalHeaderSize + U16(bytes, at + 26) + U16(bytes, at + 28);
  const auto [own, next] = std::equal_range(FLocalOffsets.begin(), FLocalOffsets.end(), header);
  if (!Fits(dataAt, AEntry.PackedSize, FDirectoryStart))
    FailPart(AEntry, "the part goes beyond the end of the archive");
  if (next - own > 1 || !Fits(dataAt, AEntry.PackedSize, *next)) FailPart(AEntry, "the part overlaps another one");
  return bytes.subspan(static_cast<size_t>(dataAt), static_cast<size_t>(AEntry.PackedSize));
}

void TZipReader::Unpack(const TEntry& AEntry, TByteBuffer& ABuffer) const {
  const auto packed = PackedBytes(AEntry);
  if (AEntry.Method == kStored) {
    std::copy(packed.begin(), packed.end(), ABuffer.Data());
  } else {
    const std::unique_ptr<libdeflate_decompressor, TDecompressorDeleter> inflater(libdeflate_alloc_decompressor());
    if (!inflater) throw std::bad_alloc();
    std::byte none{};  // libdeflate wants a place even for nothing
    std::byte* target = ABuffer.IsEmpty() ? &none : ABuffer.Data();
    // Without a place for the actual size the call succeeds for exactly the declared size only.
    const auto result =
        libdeflate_deflate_decompress(inflater.get(), packed.data(), packed.size(), target, ABuffer.Size(), nullptr);
    switch (result) {
      case LIBDEFLATE_SUCCESS: break;
      case LIBDEFLATE_BAD_DATA: FailPart(AEntry, "the part is damaged: its packed data cannot be inflated");
      case LIBDEFLATE_SHORT_OUTPUT:
      case LIBDEFLATE_INSUFFICIENT_SPACE:
        FailPart(AEntry, "the part is damaged: it does not inflate to the " + std::to_string(AEntry.Size) +
                             " bytes that the directory states");
    }
  }
  if (libdeflate_crc32(0, ABuffer.Data(), ABuffer.Size()) != AEntry.Crc) {
    FailPart(AEntry, "the part is damaged: its checksum does not match");
  }
}

void TZipReader::FailPart(const TEntry& AEntry, std::string_view AFinding) const {
  throw EFileFormat(ForMessage(NameOf(AEntry)) + ": " + std::string(AFinding));
}

}  // namespace tessarine
