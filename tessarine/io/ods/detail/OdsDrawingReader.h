#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/io/ods/detail/OdsReadContext.h>
#include <tessarine/platform/ReadLimits.h>

namespace tessarine {
class TWorksheet;
class TXmlReader;
struct TXmlNode;
}  // namespace tessarine

namespace tessarine::detail {

class TXlsxPackage;

/// Collects what floats over the sheets while they are read, and gives it to them when all of them stand: pictures and
/// charts have parts of their own.
class TOdsDrawingReader {
 public:
  explicit TOdsDrawingReader(const TOdsReadContext& AContext) : FContext(AContext) {}

  /// Whether an element of that local name is one for Read.
  static bool IsDrawing(std::string_view ALocalName);

  /// Called at the start event of a drawing, or of a group or link around some: goes on to its end event. Its position
  /// counts from the cell ACell, or from the sheet's corner when that is no valid address.
  void Read(TXmlReader& AReader, TWorksheet& ASheet, TCellAddress ACell);

  /// Reads the parts of pictures and charts and adds all drawings to their sheets, the lowest first. A part that is
  /// missing leaves its drawing out. Throws as the package does and for charts that are no well-formed XML.
  void Apply(const TXlsxPackage& APackage);

 private:
  /// A drawing and the part that it is waiting for.
  struct TPending {
    TWorksheet* Sheet = nullptr;
    std::unique_ptr<TSheetDrawing> Drawing;
    std::string ImagePart;
    std::string ObjectPart;
  };

  void ReadNode(const TXmlNode* ANode, TWorksheet& ASheet, TCellAddress ACell);
  void ReadFrame(const TXmlNode* ANode, TPending& APending) const;
  void ReadShape(const TXmlNode* ANode, TPending& APending) const;
  bool Complete(const TXlsxPackage& APackage, TPending& APending);

  const TOdsReadContext& FContext;
  std::vector<TPending> FPending;
};

}  // namespace tessarine::detail
