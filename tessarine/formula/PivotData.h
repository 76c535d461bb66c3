#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/CellValue.h>

namespace tessarine {

class TWorkbook;

/// A field of a pivot table and the item that its records must have.
struct TPivotItemPair {
  TText Field;
  TCellValue Item;
};

/// What formulas ask of pivot tables and of the workbook's first cube connection.
class TESSARINE_API IPivotDataSource {
 public:
  virtual ~IPivotDataSource() = default;

  /// The value field AField, aggregated over the records of the pivot table at AAddress that have all items of APairs.
  /// #REF! when no table is there or it has no such field.
  virtual TCellValue GetPivotData(TWorkbook& AWorkbook, int32_t ASheetIndex, TCellAddress AAddress, const TText& AField,
                                  std::span<const TPivotItemPair> APairs) const = 0;

  /// A member as the connection writes it; nothing when there is no connection or no such member.
  virtual std::optional<TText> ResolveMember(const TWorkbook& AWorkbook, const TText& AExpression) const = 0;

  /// The value at the crossing of the members; #N/A when there is none.
  virtual TCellValue EvaluateCubeValue(const TWorkbook& AWorkbook, std::span<const TText> AMembers) const = 0;

  /// The members of a set in its order; nothing when there is no such set.
  virtual std::optional<std::vector<TText>> SetMembers(const TWorkbook& AWorkbook, const TText& ASetName) const = 0;
};

/// The source that the process uses, null at first. Set before use: it is not synchronised, and must outlive all
/// evaluations.
TESSARINE_API const IPivotDataSource* PivotDataSource();
TESSARINE_API void SetPivotDataSource(const IPivotDataSource* ASource);

}  // namespace tessarine
