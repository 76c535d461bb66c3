#include <tessarine/io/ods/detail/OdsArrayBlocks.h>

#include <utility>

#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/formula/FunctionTable.h>
#include <tessarine/io/xlsx/detail/XlsxBudget.h>

namespace tessarine::detail {

namespace {

constexpr uint64_t AnchorKey(int32_t ACol, int32_t ARow) {
  return uint64_t{static_cast<uint32_t>(ACol)} << 32 | static_cast<uint32_t>(ARow);
}

}  // namespace

void TOdsArrayBlocks::Open(const TCellRange& ARange) {
  const int64_t area = int64_t{ARange.Width()} * ARange.Height();
  if (area < 2 || area > kMaxGeneratedCells) return;
  if (FSheet.Spills().IntersectsOther(ARange, ARange.StartCol, ARange.StartRow)) return;
  FSheet.Spills().SetSpill(ARange.StartCol, ARange.StartRow, ARange.Height(), ARange.Width(), {});
  FByAnchor[AnchorKey(ARange.StartCol, ARange.StartRow)] = FBlocks.size();
  FBlocks.push_back({ARange, {}});
}

bool TOdsArrayBlocks::TryStore(int32_t ACol, int32_t ARow, const TCellValue& AValue, const std::string& APartName) {
  if (FBlocks.empty()) return false;
  const TSpillRange* const spill = FSheet.Spills().FindChildBlock(ACol, ARow);
  if (!spill) return false;
  TBlock& block = FBlocks[FByAnchor.at(AnchorKey(spill->AnchorCol, spill->AnchorRow))];
  const auto width = static_cast<size_t>(block.Range.Width());
  if (block.Values.empty() && !AValue.IsEmpty()) {
    const size_t area = width * static_cast<size_t>(block.Range.Height());
    TXlsxBudget::Take(
        FValuesLeft, area, [&] { return APartName; }, "the cells of array formulas");
    block.Values.resize(area);
  }
  if (!block.Values.empty()) {
    const auto row = static_cast<size_t>(ARow - block.Range.StartRow);
    block.Values[row * width + static_cast<size_t>(ACol - block.Range.StartCol)] = AValue;
  }
  return true;
}

void TOdsArrayBlocks::Finish() {
  for (TBlock& block : FBlocks) {
    const TCellRange& range = block.Range;
    const TFormulaRecord* const anchor = FSheet.Store().FindRecord(range.StartCol, range.StartRow);
    if (!anchor || block.Values.empty()) {
      FSheet.Spills().ClearAnchor(range.StartCol, range.StartRow);
      continue;
    }
    block.Values.front() = TCellValue::FromView(anchor->CachedView());
    FSheet.Spills().SetSpill(range.StartCol, range.StartRow, range.Height(), range.Width(), std::move(block.Values));
  }
}

}  // namespace tessarine::detail
