#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include <tessarine/Export.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

/// The link targets of a sheet's cells, apart from the cells. Behaves as one link per cell; a link over a range is one
/// record however many cells it covers. Places are not validated.
class TESSARINE_API THyperlinkList {
 public:
  THyperlinkList();
  ~THyperlinkList();
  THyperlinkList(const THyperlinkList& AOther);
  THyperlinkList& operator=(const THyperlinkList& AOther);

  void Clear();

  /// The target is kept as given, blanks around it included; one of nothing but blanks clears the link.
  void SetHyperlink(int32_t ACol, int32_t ARow, const TText& ATarget);

  /// The same for every cell of a range; earlier links below it are replaced.
  void SetHyperlinkRange(const TCellRange& ARange, const TText& ATarget);

  void ClearHyperlink(int32_t ACol, int32_t ARow);
  void ClearHyperlinkRange(const TCellRange& ARange);

  /// The target of a cell's link, nothing when it has none.
  std::optional<TText> FindHyperlink(int32_t ACol, int32_t ARow) const;

  /// Linked cells.
  int64_t Count() const;
  bool IsEmpty() const;

  /// All links as ranges that do not overlap and each have one target, in an order that the history decides.
  void ForEach(const std::function<void(const TCellRange& ARange, const TText& ATarget)>& AVisit) const;

  /// Carries the links along with ACount lines that go from AStart to ADest (the block's new first line).
  void MoveRows(int64_t AStart, int64_t ACount, int64_t ADest);
  void MoveColumns(int64_t AStart, int64_t ACount, int64_t ADest);

 private:
  struct TState;

  std::unique_ptr<TState> FState;  // never null
};

}  // namespace tessarine
