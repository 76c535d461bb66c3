#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <boost/unordered/unordered_flat_set.hpp>

namespace tessarine {
class TSheetDrawingBag;
class TText;
}  // namespace tessarine

namespace tessarine::detail {

inline constexpr std::string_view kXlsxTypeStem = "application/vnd.openxmlformats-officedocument.spreadsheetml.";

/// The parts of a sheet's drawing as they go into the package.
struct TXlsxBagParts {
  struct TPart {
    std::string Name;
    std::span<const std::byte> Content;
  };
  std::string Drawing;       // the drawing part's name; empty for a sheet without one
  std::vector<TPart> Parts;  // that this sheet writes, in order; they belong to the bag
  uint64_t LeftOut = 0;      // parts whose names are another one's, or none
};

/// Decides which parts of the sheets' drawing bags are written: every name once in the package, and none that leads
/// out of it or is that of a part which the writer makes.
class TXlsxBagPlan {
 public:
  /// Names of other parts, before the first bag.
  void Reserve(std::string_view AName) { FNames.insert(Folded(AName)); }

  TXlsxBagParts Next(const TSheetDrawingBag& ABag);

 private:
  static std::string Folded(std::string_view AName);
  bool TryAdd(const TText& APath, std::span<const std::byte> AContent, TXlsxBagParts& AParts);

  boost::unordered_flat_set<std::string> FNames;     // in small letters, of all parts
  boost::unordered_flat_set<std::string> FDrawings;  // the same, of drawing parts alone
};

/// Builds the part that gives all others their types (ECMA-376-2 §7.2.3).
class TXlsxContentTypes {
 public:
  /// Types of the whole package by extension; an extension counts once.
  void AddDefault(std::string_view AExtension, std::string_view AType);
  /// ATypeTail goes behind kXlsxTypeStem unless it is a whole type.
  void AddOverride(std::string_view AName, std::string_view ATypeTail);
  /// The types of a drawing's parts, each by its place and extension.
  void AddBag(const TXlsxBagParts& AParts);

  std::string Part() const;

 private:
  boost::unordered_flat_set<std::string> FExtensions;
  std::string FDefaults;
  std::string FOverrides;
};

}  // namespace tessarine::detail
