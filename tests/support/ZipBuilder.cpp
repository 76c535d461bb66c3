#include "ZipBuilder.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

#include <libdeflate.h>

namespace tessarine::test {
namespace {

void Put(std::string& AOut, uint64_t AValue, size_t ABytes) {
  for (size_t i = 0; i < ABytes; ++i) AOut += static_cast<char>((AValue >> (8 * i)) & 0xff);
}

struct TPlaced {
  uint64_t Offset = 0;
  uint64_t PackedSize = 0;
  uint32_t Crc = 0;
};

uint16_t FlagsOf(const TZipBuilderEntry& AEntry) {
  return static_cast<uint16_t>(AEntry.Flags | (AEntry.HasDataDescriptor ? 1 << 3 : 0));
}

TPlaced AppendLocal(const TZipBuilderEntry& AEntry, std::string& AOut) {
  const std::string packed = AEntry.Packed                ? *AEntry.Packed
                             : AEntry.Method == zmDeflate ? Deflate(AEntry.Content)
                                                          : AEntry.Content;
  const TPlaced placed{AOut.size(), packed.size(), libdeflate_crc32(0, AEntry.Content.data(), AEntry.Content.size())};
  const bool isLate = AEntry.HasDataDescriptor;
  const bool is64 = AEntry.IsZip64 && !isLate;
  Put(AOut, 0x04034b50, 4);
  Put(AOut, AEntry.IsZip64 ? 45 : 20, 2);
  Put(AOut, FlagsOf(AEntry), 2);
  Put(AOut, static_cast<uint64_t>(AEntry.Method), 2);
  Put(AOut, 0x00210000, 4);  // 1980-01-01
  Put(AOut, isLate ? 0 : placed.Crc, 4);
  Put(AOut, isLate ? 0 : is64 ? 0xffffffff : packed.size(), 4);
  Put(AOut, isLate ? 0 : is64 ? 0xffffffff : AEntry.Content.size(), 4);
  Put(AOut, AEntry.Name.size(), 2);
  Put(AOut, is64 ? 20 : 0, 2);
  AOut += AEntry.Name;
  if (is64) {
    Put(AOut, 1, 2);
    Put(AOut, 16, 2);
    Put(AOut, AEntry.Content.size(), 8);
    Put(AOut, packed.size(), 8);
  }
  AOut += packed;
  if (isLate) {
    Put(AOut, 0x08074b50, 4);
    Put(AOut, placed.Crc, 4);
    Put(AOut, packed.size(), 4);
    Put(AOut, AEntry.Content.size(), 4);
  }
  return placed;
}

void AppendDirectoryEntry(const TZipBuilderEntry& AEntry, const TPlaced& APlaced, std::string& AOut) {
  const uint64_t packedSize = AEntry.DirectoryPackedSize.value_or(APlaced.PackedSize);
  const uint64_t size = AEntry.DirectorySize.value_or(AEntry.Content.size());
  const uint64_t offset = AEntry.DirectoryOffset.value_or(APlaced.Offset);
  const bool is64 = AEntry.IsZip64;
  Put(AOut, 0x02014b50, 4);
  Put(AOut, is64 ? 45 : 20, 2);
  Put(AOut, is64 ? 45 : 20, 2);
  Put(AOut, FlagsOf(AEntry), 2);
  Put(AOut, AEntry.DirectoryMethod.value_or(static_cast<uint16_t>(AEntry.Method)), 2);
  Put(AOut, 0x00210000, 4);
  Put(AOut, AEntry.DirectoryCrc.value_or(APlaced.Crc), 4);
  Put(AOut, is64 ? 0xffffffff : packedSize, 4);
  Put(AOut, is64 ? 0xffffffff : size, 4);
  Put(AOut, AEntry.Name.size(), 2);
  Put(AOut, is64 ? 28 : 0, 2);
  Put(AOut, 0, 6);  // comment size, disk, internal attributes
  Put(AOut, 0, 4);  // external attributes
  Put(AOut, is64 ? 0xffffffff : offset, 4);
  AOut += AEntry.Name;
  if (is64) {
    Put(AOut, 1, 2);
    Put(AOut, 24, 2);
    Put(AOut, size, 8);
    Put(AOut, packedSize, 8);
    Put(AOut, offset, 8);
  }
}

void AppendZip64End(uint64_t ACount, uint64_t ADirectorySize, uint64_t ADirectoryOffset, std::string& AOut) {
  const uint64_t record = AOut.size();
  Put(AOut, 0x06064b50, 4);
  Put(AOut, 44, 8);
  Put(AOut, 45, 2);
  Put(AOut, 45, 2);
  Put(AOut, 0, 8);  // disks
  Put(AOut, ACount, 8);
  Put(AOut, ACount, 8);
  Put(AOut, ADirectorySize, 8);
  Put(AOut, ADirectoryOffset, 8);
  Put(AOut, 0x07064b50, 4);
  Put(AOut, 0, 4);
  Put(AOut, record, 8);
  Put(AOut, 1, 4);
}

}  // namespace

TZipBuilderEntry& TZipBuilder::Add(std::string_view AName, std::string_view AContent, TZipMethod AMethod) {
  auto& entry = FEntries.emplace_back();
  entry.Name = AName;
  entry.Content = AContent;
  entry.Method = AMethod;
  return entry;
}

std::vector<std::byte> TZipBuilder::Finish() const {
  std::string zip;
  std::vector<TPlaced> places;
  for (const auto& entry : FEntries) places.push_back(AppendLocal(entry, zip));
  const uint64_t directory = zip.size();
  for (size_t i = 0; i < FEntries.size(); ++i) AppendDirectoryEntry(FEntries[i], places[i], zip);
  const uint64_t size = zip.size() - directory;
  const uint64_t count = EndCount.value_or(FEntries.size());
  const uint64_t offset = EndDirectoryOffset.value_or(directory);
  if (HasZip64End) AppendZip64End(count, size, offset, zip);
  Put(zip, 0x06054b50, 4);
  Put(zip, 0, 4);  // disks
  Put(zip, HasZip64End ? 0xffff : count, 2);
  Put(zip, HasZip64End ? 0xffff : count, 2);
  Put(zip, HasZip64End ? 0xffffffff : size, 4);
  Put(zip, HasZip64End ? 0xffffffff : offset, 4);
  Put(zip, Comment.size(), 2);
  return ToBytes(Prefix + zip + Comment + Suffix);
}

std::string Deflate(std::string_view AContent, int ALevel) {
  const std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor*)> packer(
      libdeflate_alloc_compressor(ALevel), libdeflate_free_compressor);
  std::string packed(libdeflate_deflate_compress_bound(packer.get(), AContent.size()), '\0');
  packed.resize(
      libdeflate_deflate_compress(packer.get(), AContent.data(), AContent.size(), packed.data(), packed.size()));
  if (packed.empty()) throw std::logic_error("deflate gave nothing");
  return packed;
}

std::vector<std::byte> ToBytes(std::string_view AText) {
  const auto* const data = reinterpret_cast<const std::byte*>(AText.data());
  return {data, data + AText.size()};
}

}  // namespace tessarine::test
