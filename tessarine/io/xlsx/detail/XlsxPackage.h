#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/platform/ByteBuffer.h>
#include <tessarine/platform/ReadLimits.h>
#include <tessarine/platform/Zip.h>

namespace tessarine::detail {

struct TXlsxRelationship {
  std::string Id;
  std::string Type;
  std::string Target;  // as the file has it
};

/// The relationships of one part in file order.
class TXlsxRelationships {
 public:
  void Add(TXlsxRelationship ARelationship);

  /// The first one of that id, or null.
  const TXlsxRelationship* Find(std::string_view AId) const;

  auto begin() const { return FItems.begin(); }
  auto end() const { return FItems.end(); }

 private:
  std::vector<TXlsxRelationship> FItems;
  boost::unordered_flat_map<std::string, size_t> FById;
};

/// The parts of a package by name. Names are matched without regard to case; no name leads out of the package.
class TXlsxPackage {
 public:
  /// Takes the archive. Throws as TZipReader does.
  TXlsxPackage(std::vector<std::byte> ABytes, const TReadLimits& ALimits)
      : FZip(std::move(ABytes), ALimits), FLimits(ALimits), FIsRead(FZip.EntryCount()), FIsUsed(FZip.EntryCount()) {}

  /// The content of a part; no bytes when it is missing.
  TByteBuffer ReadPart(std::string_view AName) const;

  /// The size that a part claims to have; 0 when it is missing.
  uint64_t DeclaredSize(std::string_view AName) const;

  /// Whether ABytes more can be read without coming near the limit on all parts together: half of it stays free.
  bool HasRoomFor(uint64_t ABytes) const;

  /// HasRoomFor, and when there is room counts ABytes as read: for what a reader builds beyond the bytes of the parts,
  /// so that few bytes which name one big part many times stay bounded too.
  bool TryTakeRoom(uint64_t ABytes) const;

  /// Tells that something is made of a part. The size that the part claims when that was told before, else 0: few bytes
  /// can name one big part many times. Not to be called by several threads.
  uint64_t NoteUse(std::string_view AName) const;

  /// The relationships that stand beside a part ("xl/_rels/workbook.xml.rels"); none when there is no such part.
  TXlsxRelationships ReadRelationships(std::string_view APartName) const;

  /// Calls AVisit(name) for each part that was never read, in the order of the archive.
  template <class TVisit>
  void ForEachUnreadPart(TVisit&& AVisit) const {
    for (size_t index = 0; index < FIsRead.size(); ++index) {
      if (!FIsRead[index]) AVisit(FZip.Name(index));
    }
  }

  const TReadLimits& Limits() const { return FLimits; }

 private:
  mutable std::atomic<uint64_t> FBytesRead{0};
  TZipReader FZip;
  TReadLimits FLimits;
  mutable std::vector<std::atomic<bool>> FIsRead;  // by entry
  mutable std::vector<bool> FIsUsed;               // by entry
};

/// The name of the part with the relationships of APartName: "xl/_rels/workbook.xml.rels" for "xl/workbook.xml".
std::string XlsxRelationshipsPart(std::string_view APartName);

/// The relationships in the part AName. Throws as TXmlReader does.
TXlsxRelationships XlsxParseRelationships(std::string_view ABytes, std::string_view AName, const TReadLimits& ALimits);

/// The name of a part that the workbook refers to by ATarget.
std::string XlsxWorkbookTarget(std::string_view ATarget);

/// The name of a part that ASourcePart refers to by ATarget: relative to its folder, or to the package with a leading
/// "/"; "." and ".." are resolved and never lead above the package.
std::string XlsxResolveTarget(std::string_view ASourcePart, std::string_view ATarget);

}  // namespace tessarine::detail
