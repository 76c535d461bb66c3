#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tessarine::fuzz {

/// Writes archives of uncompressed entries, so that mutated contents get past checksums.
class TStoredZip {
 public:
  void Add(std::string_view AName, std::string_view AContent) {
    const size_t offset = FBytes.size();
    const std::string head = Head(AName, AContent);
    Put(FBytes, 0x04034b50, 4);
    ((FBytes += head) += AName) += AContent;
    Put(FDirectory, 0x02014b50, 4);
    Put(FDirectory, 20, 2);
    FDirectory += head;
    FDirectory.append(10, '\0');  // no comment, first disk, no attributes
    Put(FDirectory, offset, 4);
    FDirectory += AName;
    ++FCount;
  }

  std::vector<std::byte> Finish() const {
    std::string bytes = FBytes + FDirectory;
    Put(bytes, 0x06054b50, 4);
    Put(bytes, 0, 4);
    Put(bytes, FCount, 2);
    Put(bytes, FCount, 2);
    Put(bytes, FDirectory.size(), 4);
    Put(bytes, FBytes.size(), 4);
    Put(bytes, 0, 2);
    const auto* const start = reinterpret_cast<const std::byte*>(bytes.data());
    return {start, start + bytes.size()};
  }

 private:
  static void Put(std::string& AOut, uint64_t AValue, size_t ABytes) {
    for (size_t i = 0; i < ABytes; ++i) AOut += static_cast<char>(AValue >> (8 * i) & 0xff);
  }

  /// What the entry and its directory record have in common, from the version needed to the extra field's length.
  static std::string Head(std::string_view AName, std::string_view AContent) {
    std::string head;
    Put(head, 20, 2);
    Put(head, 0, 4);           // no flags, stored
    Put(head, 0x00210000, 4);  // 1980-01-01
    Put(head, Crc(AContent), 4);
    Put(head, AContent.size(), 4);
    Put(head, AContent.size(), 4);
    Put(head, AName.size(), 2);
    Put(head, 0, 2);
    return head;
  }

  static uint32_t Crc(std::string_view AContent) {
    uint32_t crc = 0xffffffff;
    for (const char unit : AContent) {
      crc ^= static_cast<unsigned char>(unit);
      for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xedb88320 : 0);
    }
    return ~crc;
  }

  std::string FBytes;
  std::string FDirectory;
  uint64_t FCount = 0;
};

/// An input is a package as it stands, or a text that a package is made of: each part begins with a line "=== NAME".
inline std::vector<std::byte> PackageOf(std::string_view AInput) {
  constexpr std::string_view kMark = "=== ";
  if (!AInput.starts_with(kMark)) {
    const auto* const start = reinterpret_cast<const std::byte*>(AInput.data());
    return {start, start + AInput.size()};
  }
  TStoredZip zip;
  while (!AInput.empty()) {
    const size_t end = std::min(AInput.find("\n=== ", 1), AInput.size());
    const std::string_view part = AInput.substr(kMark.size(), end - kMark.size());
    AInput.remove_prefix(std::min(end + 1, AInput.size()));
    const size_t line = std::min(part.find('\n'), part.size());
    if (line < 0x10000) zip.Add(part.substr(0, line), part.substr(std::min(line + 1, part.size())));
    if (AInput.size() < kMark.size()) break;
  }
  return zip.Finish();
}

}  // namespace tessarine::fuzz
