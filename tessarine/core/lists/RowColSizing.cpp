#include <tessarine/core/lists/RowColSizing.h>

#include <algorithm>
#include <mutex>
#include <utility>

#include <tessarine/core/lists/detail/AxisSizing.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

constexpr double kStandardColWidth = 8.43;  // characters
constexpr double kStandardRowHeight = 15;   // points
constexpr double kStandardDigitWidth = 7;   // pixels at 96 dots per inch

detail::TPixelScale RowScale(int32_t ADpi) { return {false, kStandardDigitWidth, ADpi}; }

struct TDigitMeasurerSlot {
  std::mutex Mutex;
  std::shared_ptr<IDigitMeasurer> Measurer;
};

TDigitMeasurerSlot& DigitMeasurerSlot() {
  static TDigitMeasurerSlot slot;
  return slot;
}

}  // namespace

TRowColSizing::TRowColSizing()
    : FRows(std::make_unique<detail::TAxisSizing>(kMaxRow, kStandardRowHeight)),
      FCols(std::make_unique<detail::TAxisSizing>(kMaxCol, kStandardColWidth)),
      FMaxDigitWidth(kStandardDigitWidth) {}
TRowColSizing::~TRowColSizing() = default;
TRowColSizing::TRowColSizing(const TRowColSizing& AOther)
    : FRows(std::make_unique<detail::TAxisSizing>(*AOther.FRows)),
      FCols(std::make_unique<detail::TAxisSizing>(*AOther.FCols)),
      FMaxDigitWidth(AOther.FMaxDigitWidth) {}
TRowColSizing& TRowColSizing::operator=(const TRowColSizing& AOther) {
  *FRows = *AOther.FRows;
  *FCols = *AOther.FCols;
  FMaxDigitWidth = AOther.FMaxDigitWidth;
  return *this;
}

void TRowColSizing::Clear() {
  FRows->Clear();
  FCols->Clear();
}

double TRowColSizing::DefaultColWidth() const { return FCols->DefaultSize(); }
void TRowColSizing::SetDefaultColWidth(double AWidthChars) { FCols->SetDefaultSize(AWidthChars); }
double TRowColSizing::DefaultRowHeight() const { return FRows->DefaultSize(); }
void TRowColSizing::SetDefaultRowHeight(double AHeightPt) { FRows->SetDefaultSize(AHeightPt); }
void TRowColSizing::SetMaxDigitWidth(double AWidthPixels) { FMaxDigitWidth = AWidthPixels; }

double TRowColSizing::GetColWidthChars(int32_t ACol) const { return FCols->Size(ACol); }
void TRowColSizing::SetColWidthChars(int32_t ACol, double AWidthChars) { FCols->SetSize(ACol, AWidthChars); }
bool TRowColSizing::HasCustomColWidth(int32_t ACol) const { return FCols->HasCustomSize(ACol); }
double TRowColSizing::GetRowHeightPt(int32_t ARow) const { return FRows->Size(ARow); }
void TRowColSizing::SetRowHeightPt(int32_t ARow, double AHeightPt) { FRows->SetSize(ARow, AHeightPt); }
bool TRowColSizing::HasCustomRowHeight(int32_t ARow) const { return FRows->HasCustomSize(ARow); }
void TRowColSizing::SetAutoRowHeightPt(int32_t ARow, double AHeightPt) { FRows->SetAutoSize(ARow, AHeightPt); }
void TRowColSizing::ClearAutoRowHeight(int32_t ARow) { FRows->ClearAutoSize(ARow); }
void TRowColSizing::ClearAutoRowHeights() { FRows->ClearAutoSizes(); }

int32_t TRowColSizing::ColWidthToPixels(double AWidthChars, int32_t ADpi) const {
  return ColScale(ADpi).ToPixels(AWidthChars);
}
int32_t TRowColSizing::RowHeightToPixels(double AHeightPt, int32_t ADpi) { return RowScale(ADpi).ToPixels(AHeightPt); }
int32_t TRowColSizing::GetColWidthPixels(int32_t ACol, int32_t ADpi) const {
  return FCols->Pixels(ACol, ColScale(ADpi));
}
int32_t TRowColSizing::GetRowHeightPixels(int32_t ARow, int32_t ADpi) const {
  return FRows->Pixels(ARow, RowScale(ADpi));
}
int64_t TRowColSizing::GetCumulativeColWidthBefore(int32_t ACol, int32_t ADpi) const {
  return FCols->CumulativeBefore(ACol, ColScale(ADpi));
}
int64_t TRowColSizing::GetCumulativeRowHeightBefore(int32_t ARow, int32_t ADpi) const {
  return FRows->CumulativeBefore(ARow, RowScale(ADpi));
}
int32_t TRowColSizing::FindRowAtOffset(int64_t AOffset, int32_t ADpi) const {
  return FRows->FindAtOffset(AOffset, RowScale(ADpi));
}
int32_t TRowColSizing::FindColAtOffset(int64_t AOffset, int32_t ADpi) const {
  return FCols->FindAtOffset(AOffset, ColScale(ADpi));
}
int64_t TRowColSizing::GetCumulativeColWidthBeforePlain(int32_t ACol, int32_t ADpi) const {
  return FCols->CumulativeBeforePlain(ACol, ColScale(ADpi));
}
int64_t TRowColSizing::GetCumulativeRowHeightBeforePlain(int32_t ARow, int32_t ADpi) const {
  return FRows->CumulativeBeforePlain(ARow, RowScale(ADpi));
}
int32_t TRowColSizing::FindRowAtOffsetPlain(int64_t AOffset, int32_t ADpi) const {
  return FRows->FindAtOffsetPlain(AOffset, RowScale(ADpi));
}
int32_t TRowColSizing::FindColAtOffsetPlain(int64_t AOffset, int32_t ADpi) const {
  return FCols->FindAtOffsetPlain(AOffset, ColScale(ADpi));
}
detail::TPixelScale TRowColSizing::ColScale(int32_t ADpi) const { return {true, FMaxDigitWidth, ADpi}; }

void TRowColSizing::SetColHidden(int32_t ACol, bool AHidden) { FCols->SetHidden(ACol, AHidden); }
void TRowColSizing::SetRowHidden(int32_t ARow, bool AHidden) { FRows->SetHidden(ARow, AHidden); }
bool TRowColSizing::IsColHidden(int32_t ACol) const { return FCols->IsHidden(ACol); }
bool TRowColSizing::IsRowHidden(int32_t ARow) const { return FRows->IsHidden(ARow); }
int32_t TRowColSizing::LastSpecialCol() const { return FCols->LastSpecialLine(); }
int32_t TRowColSizing::LastSpecialRow() const { return FRows->LastSpecialLine(); }
std::vector<int32_t> TRowColSizing::MarkedCols(bool AAnywhere) const { return FCols->MarkedLines(AAnywhere); }
std::vector<int32_t> TRowColSizing::MarkedRows(bool AAnywhere) const { return FRows->MarkedLines(AAnywhere); }

int32_t TRowColSizing::OutlineLevelPitch(int32_t ADpi) { return std::max(detail::RoundToPixels(ADpi * 18.0 / 96), 1); }

bool TRowColSizing::OutlineSummaryBelow() const { return FRows->SummaryBehind(); }
void TRowColSizing::SetOutlineSummaryBelow(bool ABelow) { FRows->SetSummaryBehind(ABelow); }
int32_t TRowColSizing::GetRowOutlineLevel(int32_t ARow) const { return FRows->Level(ARow); }
void TRowColSizing::SetRowOutlineLevel(int32_t ARow, int32_t ALevel) { FRows->SetLevel(ARow, ALevel); }
bool TRowColSizing::IsRowCollapsed(int32_t ARow) const { return FRows->IsCollapsed(ARow); }
void TRowColSizing::SetRowCollapsed(int32_t ARow, bool ACollapsed) { FRows->SetCollapsed(ARow, ACollapsed); }
int32_t TRowColSizing::MaxRowOutlineLevel() const { return FRows->MaxLevel(); }
int32_t TRowColSizing::OutlineLevelButtonCount() const { return FRows->LevelButtonCount(); }
int32_t TRowColSizing::OutlineGutterPixels(int32_t ADpi) const { return FRows->GutterPixels(ADpi); }
double TRowColSizing::OutlineLevelCenterX(int32_t ALevel, double AOrigin, int32_t ADpi, bool AForward) const {
  return FRows->LevelCenter(ALevel, AOrigin, ADpi, AForward);
}
std::optional<TOutlineGroup> TRowColSizing::FindRowGroupDetails(int32_t ASummaryRow) const {
  return FRows->FindGroup(ASummaryRow);
}
int32_t TRowColSizing::FindOwningSummaryRow(int32_t ARow) const { return FRows->FindOwningSummary(ARow); }
int32_t TRowColSizing::RowGroupLevel(int32_t ASummaryRow) const { return FRows->GroupLevel(ASummaryRow); }
bool TRowColSizing::ToggleRowGroup(int32_t ASummaryRow) { return FRows->ToggleGroup(ASummaryRow); }
bool TRowColSizing::ShowRowOutlineLevel(int32_t ALevel) { return FRows->ShowLevel(ALevel); }

bool TRowColSizing::OutlineSummaryRight() const { return FCols->SummaryBehind(); }
void TRowColSizing::SetOutlineSummaryRight(bool ARight) { FCols->SetSummaryBehind(ARight); }
int32_t TRowColSizing::GetColOutlineLevel(int32_t ACol) const { return FCols->Level(ACol); }
void TRowColSizing::SetColOutlineLevel(int32_t ACol, int32_t ALevel) { FCols->SetLevel(ACol, ALevel); }
bool TRowColSizing::IsColCollapsed(int32_t ACol) const { return FCols->IsCollapsed(ACol); }
void TRowColSizing::SetColCollapsed(int32_t ACol, bool ACollapsed) { FCols->SetCollapsed(ACol, ACollapsed); }
int32_t TRowColSizing::MaxColOutlineLevel() const { return FCols->MaxLevel(); }
int32_t TRowColSizing::OutlineColLevelButtonCount() const { return FCols->LevelButtonCount(); }
int32_t TRowColSizing::OutlineColGutterPixels(int32_t ADpi) const { return FCols->GutterPixels(ADpi); }
double TRowColSizing::OutlineLevelCenterY(int32_t ALevel, double AOrigin, int32_t ADpi, bool AForward) const {
  return FCols->LevelCenter(ALevel, AOrigin, ADpi, AForward);
}
std::optional<TOutlineGroup> TRowColSizing::FindColGroupDetails(int32_t ASummaryCol) const {
  return FCols->FindGroup(ASummaryCol);
}
int32_t TRowColSizing::FindOwningSummaryCol(int32_t ACol) const { return FCols->FindOwningSummary(ACol); }
int32_t TRowColSizing::ColGroupLevel(int32_t ASummaryCol) const { return FCols->GroupLevel(ASummaryCol); }
bool TRowColSizing::ToggleColGroup(int32_t ASummaryCol) { return FCols->ToggleGroup(ASummaryCol); }
bool TRowColSizing::ShowColOutlineLevel(int32_t ALevel) { return FCols->ShowLevel(ALevel); }

void TRowColSizing::ShiftRows(int64_t AStart, int64_t ADelta) { FRows->Shift(AStart, ADelta); }
void TRowColSizing::ShiftColumns(int64_t AStart, int64_t ADelta) { FCols->Shift(AStart, ADelta); }
void TRowColSizing::MoveRows(int64_t AStart, int64_t ACount, int64_t ADest) { FRows->Move(AStart, ACount, ADest); }
void TRowColSizing::MoveColumns(int64_t AStart, int64_t ACount, int64_t ADest) { FCols->Move(AStart, ACount, ADest); }

double TRowColSizing::MeasureMaxDigitWidth(std::u16string_view AFontName, double ASizePt, int32_t ADpi) {
  std::shared_ptr<IDigitMeasurer> measurer;
  {
    TDigitMeasurerSlot& slot = DigitMeasurerSlot();
    const std::lock_guard lock(slot.Mutex);
    measurer = slot.Measurer;
  }
  if (!measurer) return kStandardDigitWidth;
  const std::u16string_view trimmed = TrimSpaces(AFontName);
  const std::u16string_view name = trimmed.empty() ? u"Calibri" : trimmed;
  const int32_t size = std::max(detail::RoundToPixels(ASizePt > 0 ? ASizePt : 11), 1);
  const auto width = measurer->WidestDigitPixels(name, size, ADpi < 1 ? 96 : ADpi);
  return width && *width > 0 ? *width : kStandardDigitWidth;
}

void TRowColSizing::SetDigitMeasurer(std::shared_ptr<IDigitMeasurer> AMeasurer) {
  TDigitMeasurerSlot& slot = DigitMeasurerSlot();
  const std::lock_guard lock(slot.Mutex);
  slot.Measurer.swap(AMeasurer);
}

}  // namespace tessarine
