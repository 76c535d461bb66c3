#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <boost/unordered/unordered_flat_map.hpp>

namespace tessarine::detail {

struct TXlsxLink;

/// Builds the part of one source's relationships (ECMA-376-2 §6.5), in the order of addition.
class TXlsxRelationshipPart {
 public:
  TXlsxRelationshipPart();

  /// AType is what stands behind the last "/" of a relationship type of office documents, or a whole type.
  void Add(std::string_view AId, std::string_view AType, std::u16string_view ATarget, bool AIsExternal = false);
  bool IsEmpty() const { return FIsEmpty; }
  std::string Part() const;

 private:
  std::string FXml;
  bool FIsEmpty = true;
};

/// The relationships of a sheet part and their ids: its drawing, the targets outside of its links, its tables.
class TXlsxSheetRelationships {
 public:
  /// ADrawingPart is empty for a sheet without one. AKeptId, the drawing's id in the file that the sheet came from,
  /// stays when it is an id at all; the others are then numbered behind it.
  TXlsxSheetRelationships(std::u16string_view AKeptId, std::string_view ADrawingPart,
                          const std::vector<TXlsxLink>& ALinks, const std::vector<int32_t>& ATableNumbers);

  std::string_view DrawingId() const { return FDrawingId; }
  /// The id of an external target that the links have.
  std::string_view LinkId(std::u16string_view ATarget) const;
  const std::vector<std::string>& TableIds() const { return FTableIds; }

  bool IsEmpty() const { return FPart.IsEmpty(); }
  std::string Part() const { return FPart.Part(); }

 private:
  std::string NextId();

  int64_t FNext = 1;
  std::string FReserved;
  std::string FDrawingId;
  boost::unordered_flat_map<std::u16string, std::string> FLinkIds;  // by target in small letters
  std::vector<std::string> FTableIds;
  TXlsxRelationshipPart FPart;
};

}  // namespace tessarine::detail
