#include <hosts/cli/CellJson.h>

#include <algorithm>
#include <vector>

#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/platform/JsonWriter.h>

namespace tessarine::cli {

const char* TypeName(const TValueView& AValue) {
  switch (AValue.Kind) {
    case cvkEmpty: return "empty";
    case cvkNumber: return "number";
    case cvkText:
    case cvkFormula: return "text";
    case cvkBoolean: return "boolean";
    case cvkError: return "error";
  }
  return "empty";
}

void PutJsonValue(TJsonWriter& AJson, const TValueView& AValue) {
  switch (AValue.Kind) {
    case cvkEmpty: AJson.Null(); return;
    case cvkNumber: AJson.Number(AValue.Number); return;
    case cvkText:
    case cvkFormula: AJson.Text(AValue.Text()); return;
    case cvkBoolean: AJson.Boolean(AValue.BooleanValue); return;
    case cvkError: AJson.Text(ErrorCodeToString(AValue.ErrorCode).View()); return;
  }
}

void ForEachShownCell(const TWorksheet& ASheet, const TCellRange& ARange,
                      const std::function<void(TCellAddress AAddress)>& AVisit) {
  const auto place = [](int32_t ACol, int32_t ARow) {
    return static_cast<uint64_t>(ARow) << 32 | static_cast<uint32_t>(ACol);
  };
  std::vector<uint64_t> spilled;
  for (const TSpillRange* block : ASheet.Spills().BlocksIn(ARange)) {
    for (int32_t row = std::max(block->AnchorRow, ARange.StartRow); row <= std::min(block->EndRow, ARange.EndRow);
         ++row) {
      for (int32_t col = std::max(block->AnchorCol, ARange.StartCol); col <= std::min(block->EndCol, ARange.EndCol);
           ++col)
        spilled.push_back(place(col, row));
    }
  }
  std::sort(spilled.begin(), spilled.end());
  spilled.erase(std::unique(spilled.begin(), spilled.end()), spilled.end());
  auto next = spilled.begin();
  const auto visitUpTo = [&](uint64_t ALimit) {
    for (; next != spilled.end() && *next < ALimit; ++next)
      AVisit({static_cast<int32_t>(*next & 0xFFFFFFFFu), static_cast<int32_t>(*next >> 32)});
  };
  ASheet.Store().ForEachByRow(ARange, [&](int32_t ACol, int32_t ARow, const detail::TCellSlot&) {
    visitUpTo(place(ACol, ARow));
    if (next != spilled.end() && *next == place(ACol, ARow)) ++next;
    AVisit({ACol, ARow});
  });
  visitUpTo(~uint64_t{0});
}

}  // namespace tessarine::cli
