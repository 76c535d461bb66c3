#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tessarine::detail {

/// A part of the package beside the fixed ones.
struct TOdsZipPart {
  std::string Path;  // one that ends in "/" stands in the manifest only
  std::string Bytes;
  std::string MediaType;
};

/// The parts that drawings bring along.
class TOdsWriteBag {
 public:
  void AddPart(std::string APath, std::string ABytes, std::string AMediaType) {
    FParts.push_back({std::move(APath), std::move(ABytes), std::move(AMediaType)});
  }
  /// Adds "Pictures/imageN.EXT" and returns its path.
  std::string AddPicture(std::span<const std::byte> ABytes, std::string_view AContentType);
  /// The folder of the next chart, "Object N".
  std::string NextObject() { return "Object " + std::to_string(++FObjects); }

  std::vector<TOdsZipPart>& Parts() { return FParts; }
  const std::vector<TOdsZipPart>& Parts() const { return FParts; }

 private:
  std::vector<TOdsZipPart> FParts;
  int32_t FPictures = 0;
  int32_t FObjects = 0;
};

/// The declarations that the root of every document part carries, each with a blank in front.
std::string_view OdsNamespaces();

std::string OdsManifest(const TOdsWriteBag& ABag);
std::string OdsMeta();
/// A part of styles that holds AStyles and no more.
std::string OdsStyles(std::string_view AStyles);

}  // namespace tessarine::detail
