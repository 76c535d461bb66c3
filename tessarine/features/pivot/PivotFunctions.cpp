#include <tessarine/features/pivot/PivotFunctions.h>

#include <tessarine/core/lists/OlapConnections.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/features/pivot/PivotEngine.h>
#include <tessarine/formula/PivotData.h>
#include <tessarine/platform/Errors.h>

namespace tessarine {

namespace {

const TOlapConnection* FirstConnection(const TWorkbook& AWorkbook) {
  return AWorkbook.OlapConnections().IsEmpty() ? nullptr : &AWorkbook.OlapConnections().GetItem(0);
}

class TEnginePivotData final : public IPivotDataSource {
 public:
  TCellValue GetPivotData(TWorkbook& AWorkbook, int32_t ASheetIndex, TCellAddress AAddress, const TText& AField,
                          std::span<const TPivotItemPair> APairs) const override {
    TWorksheet* sheet = AWorkbook.GetSheet(ASheetIndex);
    if (!sheet) return TCellValue::FromError(ceRef);
    try {
      return TPivotEngine::GetPivotData(AWorkbook, *sheet, AField, AAddress, APairs);
    } catch (const ELimit&) {
      return TCellValue::FromError(ceNum);  // as every array that would be too large
    }
  }

  std::optional<TText> ResolveMember(const TWorkbook& AWorkbook, const TText& AExpression) const override {
    const TOlapConnection* connection = FirstConnection(AWorkbook);
    return connection ? std::optional(connection->ResolveMember(AExpression)) : std::nullopt;
  }

  TCellValue EvaluateCubeValue(const TWorkbook& AWorkbook, std::span<const TText> AMembers) const override {
    const TOlapConnection* connection = FirstConnection(AWorkbook);
    return connection ? connection->EvaluateCubeValue(AMembers) : TCellValue::FromError(ceNA);
  }

  std::optional<std::vector<TText>> SetMembers(const TWorkbook& AWorkbook, const TText& ASetName) const override {
    const TOlapConnection* connection = FirstConnection(AWorkbook);
    const std::vector<TText>* members = connection ? connection->FindMembers(ASetName) : nullptr;
    return members ? std::optional(*members) : std::nullopt;
  }
};

}  // namespace

void RegisterPivotFunctions() {
  static const TEnginePivotData source;
  if (!PivotDataSource()) SetPivotDataSource(&source);
}

}  // namespace tessarine
