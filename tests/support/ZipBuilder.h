#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessarine::test {

enum class TZipMethod : uint16_t { zmStore = 0, zmDeflate = 8 };
using enum TZipMethod;

/// One entry of an archive to be built. What is set below Method makes the archive odd or wrong on purpose.
struct TZipBuilderEntry {
  std::string Name;
  std::string Content;
  TZipMethod Method = zmDeflate;

  bool HasDataDescriptor = false;  ///< sizes and checksum behind the data, zeros in the local header
  bool IsZip64 = false;            ///< sizes and place in 64-bit extra fields
  uint16_t Flags = 0;              ///< added to the general purpose flags

  std::optional<std::string> Packed;  ///< stands in the archive instead of the packed content
  std::optional<uint16_t> DirectoryMethod;
  std::optional<uint32_t> DirectoryCrc;
  std::optional<uint64_t> DirectorySize;
  std::optional<uint64_t> DirectoryPackedSize;
  std::optional<uint64_t> DirectoryOffset;  ///< of the local header
};

/// Builds ZIP archives in memory, sound ones and damaged ones:
///
///   TZipBuilder zip;
///   zip.Add("xl/workbook.xml", "<workbook/>");
///   zip.Add("xl/styles.xml", "<styleSheet/>").HasDataDescriptor = true;
///   TZipReader reader(zip.Finish());
class TZipBuilder {
 public:
  /// Appends an entry. The reference stays good until the builder dies.
  TZipBuilderEntry& Add(std::string_view AName, std::string_view AContent, TZipMethod AMethod = zmDeflate);

  std::string Prefix;                          ///< bytes in front of the archive, which its offsets do not count
  std::string Comment;                         ///< of the archive
  std::string Suffix;                          ///< bytes behind the archive
  bool HasZip64End = false;                    ///< a 64-bit end record; the plain one is saturated
  std::optional<uint64_t> EndCount;            ///< the count of entries that the end record states
  std::optional<uint64_t> EndDirectoryOffset;  ///< the place of the directory that the end record states

  std::vector<std::byte> Finish() const;

 private:
  std::deque<TZipBuilderEntry> FEntries;
};

/// The deflate stream of AContent.
std::string Deflate(std::string_view AContent, int ALevel = 6);

std::vector<std::byte> ToBytes(std::string_view AText);

}  // namespace tessarine::test
