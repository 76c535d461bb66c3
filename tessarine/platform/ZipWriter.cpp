#include <tessarine/platform/ZipWriter.h>

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

#include <libdeflate.h>

#include <tessarine/platform/Dates.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Files.h>
#include <tessarine/platform/detail/MessageText.h>
#include <tessarine/platform/detail/ZipFormat.h>

namespace tessarine {

namespace {

using namespace zip;

constexpr uint16_t kVersion = 20;
constexpr uint16_t kVersionZip64 = 45;
constexpr uint16_t kUtf8Names = 1 << 11;
constexpr uint32_t kIn64Bits = 0xffffffffu;
constexpr size_t kMaxNameSize = 0xffff;

/// 1980-01-01 00:00.
constexpr uint32_t kFirstTime = (1u << 5 | 1u) << 16;

/// Smaller contents are packed at once: a thread would cost more.
constexpr size_t kWorthAThread = 64 * 1024;

template <typename T>
void Put(std::string& AOut, T AValue) {
  for (size_t i = 0; i < sizeof(T); ++i) AOut.push_back(static_cast<char>(uint64_t{AValue} >> (8 * i) & 0xff));
}
void Put16(std::string& AOut, uint64_t AValue) { Put(AOut, static_cast<uint16_t>(AValue)); }
void Put32(std::string& AOut, uint64_t AValue) { Put(AOut, static_cast<uint32_t>(AValue)); }
void Put64(std::string& AOut, uint64_t AValue) { Put(AOut, AValue); }

uint32_t Low32(uint64_t AValue) { return static_cast<uint32_t>(std::min<uint64_t>(AValue, kIn64Bits)); }

uint32_t TimeField(std::optional<double> ASerial) {
  if (!ASerial) return kFirstTime;
  const TDateParts date = DecodeDate(*ASerial);
  if (date.Year < 1980 || date.Year > 2107) return kFirstTime;
  const TTimeParts time = DecodeTime(*ASerial);
  return static_cast<uint32_t>((date.Year - 1980) << 25 | date.Month << 21 | date.Day << 16 | time.Hour << 11 |
                               time.Minute << 5 | time.Second / 2);
}

std::string Folded(std::string_view AName) {
  std::string result(AName);
  for (char& unit : result)
    if (unit >= 'A' && unit <= 'Z') unit = static_cast<char>(unit + ('a' - 'A'));
  return result;
}

std::shared_ptr<void> NewCompressor(int ALevel) {
  libdeflate_compressor* compressor = libdeflate_alloc_compressor(std::clamp(ALevel, 1, 12));
  if (!compressor) throw std::bad_alloc();
  return {compressor, [](void* AMemory) { libdeflate_free_compressor(static_cast<libdeflate_compressor*>(AMemory)); }};
}

}  // namespace

TZipWriter::TPacked TZipWriter::Pack(std::string AContent, bool ADeflates) const {
  TPacked result;
  result.Size = result.PackedSize = AContent.size();
  result.Crc = libdeflate_crc32(0, AContent.data(), AContent.size());
  if (ADeflates && !AContent.empty()) {
    TByteBuffer buffer(AContent.size());
    const size_t size = libdeflate_deflate_compress(static_cast<libdeflate_compressor*>(FCompressor.get()),
                                                    AContent.data(), AContent.size(), buffer.Data(), buffer.Size());
    if (size > 0) {
      result.Deflated = std::move(buffer);
      result.PackedSize = size;
      result.Method = kDeflated;
      return result;
    }
  }
  result.Stored = std::move(AContent);
  return result;
}

TZipWriter::TZipWriter(IWriteStream& AStream, const TZipWriteOptions& AOptions)
    : FStream(AStream), FCompressor(NewCompressor(AOptions.Level)), FTime(TimeField(AOptions.Time)) {}

TZipWriter::~TZipWriter() = default;

void TZipWriter::Add(std::string_view AName, std::string AContent) { AddEntry(AName, std::move(AContent), true); }

void TZipWriter::Add(std::string_view AName, std::span<const std::byte> AContent) {
  AddEntry(AName, std::string(reinterpret_cast<const char*>(AContent.data()), AContent.size()), true);
}

void TZipWriter::AddStored(std::string_view AName, std::string_view AContent) {
  AddEntry(AName, std::string(AContent), false);
}

bool TZipWriter::Contains(std::string_view AName) const { return FNames.contains(Folded(AName)); }

void TZipWriter::AddEntry(std::string_view AName, std::string AContent, bool ADeflates) {
  if (AName.empty() || AName.size() > kMaxNameSize)
    throw EArgument("ZIP archive: an entry's name must have 1 to 65,535 bytes");
  if (!FNames.insert(Folded(AName)).second)
    throw EArgument("ZIP archive: two entries would be named " + ForMessage(AName));
  WriteWaiting();
  FEntries.push_back({.Name = std::string(AName)});
  const bool waits = ADeflates && AContent.size() >= kWorthAThread;
  FWaiting = std::async(
      waits ? std::launch::async : std::launch::deferred,
      [this, ADeflates, content = std::move(AContent)]() mutable { return Pack(std::move(content), ADeflates); });
}

void TZipWriter::WriteWaiting() {
  if (FWaiting.valid()) WriteEntry(FWaiting.get());
}

void TZipWriter::WriteEntry(const TPacked& APacked) {
  TEntry& entry = FEntries.back();
  entry.Offset = FPosition;
  entry.Size = APacked.Size;
  entry.PackedSize = APacked.PackedSize;
  entry.Crc = APacked.Crc;
  entry.Method = APacked.Method;

  std::string header;
  Put32(header, kLocalHeader);
  Put16(header, entry.IsLarge() ? kVersionZip64 : kVersion);
  Put16(header, kUtf8Names);
  Put16(header, entry.Method);
  Put32(header, FTime);
  Put32(header, entry.Crc);
  Put32(header, entry.IsLarge() ? kIn64Bits : entry.PackedSize);
  Put32(header, entry.IsLarge() ? kIn64Bits : entry.Size);
  Put16(header, entry.Name.size());
  Put16(header, entry.IsLarge() ? 20 : 0);
  header += entry.Name;
  if (entry.IsLarge()) {
    Put16(header, kZip64ExtraId);
    Put16(header, 16);
    Put64(header, entry.Size);
    Put64(header, entry.PackedSize);
  }
  Write(header);
  Write(entry.Method == kDeflated ? APacked.Deflated.Text().substr(0, APacked.PackedSize)
                                  : std::string_view(APacked.Stored));
}

void TZipWriter::Finish() {
  WriteWaiting();
  const uint64_t start = FPosition;
  std::string directory;
  for (const TEntry& entry : FEntries) {
    const bool isLarge = entry.IsLarge() || entry.Offset >= kIn64Bits;
    Put32(directory, kDirectoryHeader);
    Put16(directory, isLarge ? kVersionZip64 : kVersion);  // made by: no system in particular
    Put16(directory, isLarge ? kVersionZip64 : kVersion);
    Put16(directory, kUtf8Names);
    Put16(directory, entry.Method);
    Put32(directory, FTime);
    Put32(directory, entry.Crc);
    Put32(directory, isLarge ? kIn64Bits : entry.PackedSize);
    Put32(directory, isLarge ? kIn64Bits : entry.Size);
    Put16(directory, entry.Name.size());
    Put16(directory, isLarge ? 28 : 0);
    Put16(directory, 0);  // comment
    Put16(directory, 0);  // volume
    Put16(directory, 0);  // internal attributes
    Put32(directory, 0);  // external attributes
    Put32(directory, isLarge ? kIn64Bits : entry.Offset);
    directory += entry.Name;
    if (!isLarge) continue;
    Put16(directory, kZip64ExtraId);
    Put16(directory, 24);
    Put64(directory, entry.Size);
    Put64(directory, entry.PackedSize);
    Put64(directory, entry.Offset);
  }
  Write(directory);

  const uint64_t count = FEntries.size();
  const uint64_t size = directory.size();
  std::string end;
  if (count >= 0xffff || size >= kIn64Bits || start >= kIn64Bits) {
    const uint64_t at = FPosition;
    Put32(end, kZip64EndRecord);
    Put64(end, 44);  // of what follows
    Put16(end, kVersionZip64);
    Put16(end, kVersionZip64);
    Put32(end, 0);
    Put32(end, 0);
    Put64(end, count);
    Put64(end, count);
    Put64(end, size);
    Put64(end, start);
    Put32(end, kZip64Locator);
    Put32(end, 0);
    Put64(end, at);
    Put32(end, 1);
  }
  Put32(end, kEndRecord);
  Put16(end, 0);
  Put16(end, 0);
  Put16(end, std::min<uint64_t>(count, 0xffff));
  Put16(end, std::min<uint64_t>(count, 0xffff));
  Put32(end, Low32(size));
  Put32(end, Low32(start));
  Put16(end, 0);
  Write(end);
}

void TZipWriter::Write(std::string_view ABytes) {
  FStream.Write(std::as_bytes(std::span(ABytes)));
  FPosition += ABytes.size();
}

}  // namespace tessarine
