#include <tessarine/core/lists/Drawings.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include <tessarine/core/reference/ReferenceRewrite.h>

namespace tessarine {

namespace {

constexpr int64_t kEmuPerInch = 914400;
constexpr int32_t kDefaultDpi = 96;

int32_t DpiOrDefault(int32_t ADpi) { return ADpi < 1 ? kDefaultDpi : ADpi; }

int32_t AsLine(int64_t ALine) {
  return static_cast<int32_t>(
      std::clamp<int64_t>(ALine, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()));
}

/// The first and the last line of an anchor on one axis.
struct TEdges {
  int32_t& From;
  int32_t& To;
};

TEdges EdgesOf(TDrawingAnchor& AAnchor, TShiftAxis AAxis) {
  if (AAxis == saRows) return {AAnchor.FromRow, AAnchor.ToRow};
  return {AAnchor.FromCol, AAnchor.ToCol};
}

/// False when nothing of the drawing is left; AAnchor is unchanged then.
bool ShiftAnchor(TDrawingAnchor& AAnchor, TShiftAxis AAxis, int64_t AStart, int64_t ADelta) {
  if (AAnchor.Kind == dakAbsolute) return true;
  const bool twoCell = AAnchor.Kind == dakTwoCell;
  const TEdges edges = EdgesOf(AAnchor, AAxis);
  const std::optional<int64_t> newFrom = ShiftIndex(edges.From, AStart, ADelta);
  const std::optional<int64_t> newTo =
      twoCell ? ShiftIndex(edges.To, AStart, ADelta) : std::optional<int64_t>(edges.To);
  if (!newFrom && (!twoCell || !newTo)) return false;
  const int64_t from = newFrom.value_or(AStart);
  const int64_t to = newTo.value_or(AStart - 1);
  if (twoCell && (!newFrom || !newTo) && to < from) return false;
  edges.From = AsLine(from);
  edges.To = AsLine(to);
  return true;
}

void MoveAnchor(TDrawingAnchor& AAnchor, TShiftAxis AAxis, int64_t AStart, int64_t ACount, int64_t ADest) {
  if (AAnchor.Kind == dakAbsolute) return;
  const TEdges edges = EdgesOf(AAnchor, AAxis);
  edges.From = AsLine(MoveIndex(edges.From, AStart, ACount, ADest));
  if (AAnchor.Kind != dakTwoCell) return;
  edges.To = AsLine(MoveIndex(edges.To, AStart, ACount, ADest));
  if (edges.To < edges.From) std::swap(edges.To, edges.From);
}

TDrawingBytes CopyOf(std::span<const std::byte> ABytes) { return {ABytes.begin(), ABytes.end()}; }

}  // namespace

float EmuToPixels(int64_t AEmu, int32_t ADpi) {
  const auto scaled = static_cast<int64_t>(static_cast<uint64_t>(AEmu) * static_cast<uint64_t>(DpiOrDefault(ADpi)));
  return static_cast<float>(scaled) / static_cast<float>(kEmuPerInch);
}

int64_t PixelsToEmu(float APixels, int32_t ADpi) {
  const double emu =
      std::nearbyint(static_cast<double>(APixels) * static_cast<double>(kEmuPerInch) / DpiOrDefault(ADpi));
  if (std::isnan(emu)) return 0;
  if (emu >= 0x1p63) return std::numeric_limits<int64_t>::max();
  if (emu < -0x1p63) return std::numeric_limits<int64_t>::min();
  return static_cast<int64_t>(emu);
}

void TSheetDrawing::SetImage(std::span<const std::byte> ABytes, TText AContentType) {
  ImageBytes = CopyOf(ABytes);
  ContentType = std::move(AContentType);
}

void TSheetDrawingBag::SetDrawingPart(TText APath, std::span<const std::byte> ABytes) {
  FDrawingPartPath = std::move(APath);
  FDrawingXml = CopyOf(ABytes);
}

void TSheetDrawingBag::SetDrawingRels(TText APath, std::span<const std::byte> ABytes) {
  FDrawingRelsPath = std::move(APath);
  FDrawingRelsXml = CopyOf(ABytes);
}

void TSheetDrawingBag::AddPart(TText APath, std::span<const std::byte> ABytes) {
  if (!APath.IsEmpty()) FParts.insert_or_assign(std::move(APath), CopyOf(ABytes));
}

int32_t TSheetDrawingList::Add(std::unique_ptr<TSheetDrawing> ADrawing) {
  if (!ADrawing) return -1;
  FItems.push_back(std::move(ADrawing));
  return Count() - 1;
}

void TSheetDrawingList::Insert(int32_t AIndex, std::unique_ptr<TSheetDrawing> ADrawing) {
  if (ADrawing) FItems.insert(FItems.begin() + std::clamp(AIndex, 0, Count()), std::move(ADrawing));
}

std::unique_ptr<TSheetDrawing> TSheetDrawingList::Extract(int32_t AIndex) {
  if (!IsIndex(AIndex)) return nullptr;
  std::unique_ptr<TSheetDrawing> drawing = std::move(FItems[static_cast<size_t>(AIndex)]);
  FItems.erase(FItems.begin() + AIndex);
  return drawing;
}

void TSheetDrawingList::Delete(int32_t AIndex) {
  if (Extract(AIndex) && FItems.empty()) FBag.Clear();
}

void TSheetDrawingList::Clear() {
  FItems.clear();
  FBag.Clear();
}

TSheetDrawing* TSheetDrawingList::GetItem(int32_t AIndex) const {
  return IsIndex(AIndex) ? FItems[static_cast<size_t>(AIndex)].get() : nullptr;
}

int32_t TSheetDrawingList::IndexOf(const TSheetDrawing* ADrawing) const {
  const auto found =
      std::find_if(FItems.begin(), FItems.end(), [&](const auto& AItem) { return AItem.get() == ADrawing; });
  return found == FItems.end() ? -1 : static_cast<int32_t>(found - FItems.begin());
}

template <class TRewrite>
void TSheetDrawingList::RewriteFormulas(TRewrite&& ARewrite) {
  for (const auto& drawing : FItems) {
    drawing->ForEachSeries([&](TSheetChartSeries& ASeries) {
      for (TText* formula :
           {&ASeries.ValuesFormula, &ASeries.CategoriesFormula, &ASeries.XValuesFormula, &ASeries.SizesFormula})
        if (!formula->IsEmpty()) *formula = ARewrite(formula->View());
    });
  }
}

void TSheetDrawingList::AdjustFormulas(std::u16string_view ASheetName, bool AOnSheet, bool ARows, int64_t AStart,
                                       int64_t ADelta) {
  RewriteFormulas([&](std::u16string_view AText) {
    return AdjustFormula(AText, ASheetName, AOnSheet, ARows ? saRows : saColumns, AStart, ADelta);
  });
}

void TSheetDrawingList::AdjustFormulasForMove(std::u16string_view ASheetName, bool AOnSheet, bool ARows, int64_t AStart,
                                              int64_t ACount, int64_t ADest) {
  RewriteFormulas([&](std::u16string_view AText) {
    return AdjustFormulaForMove(AText, ASheetName, AOnSheet, ARows ? saRows : saColumns, AStart, ACount, ADest);
  });
}

void TSheetDrawingList::Shift(TShiftAxis AAxis, int64_t AStart, int64_t ADelta) {
  if (ADelta == 0) return;
  std::erase_if(FItems, [&](const auto& AItem) { return !ShiftAnchor(AItem->Anchor, AAxis, AStart, ADelta); });
}

void TSheetDrawingList::Move(TShiftAxis AAxis, int64_t AStart, int64_t ACount, int64_t ADest) {
  if (ACount < 1 || AStart == ADest) return;
  for (const auto& drawing : FItems) MoveAnchor(drawing->Anchor, AAxis, AStart, ACount, ADest);
}

}  // namespace tessarine
