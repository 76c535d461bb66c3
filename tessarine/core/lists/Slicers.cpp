#include <tessarine/core/lists/Slicers.h>

#include <algorithm>
#include <utility>

#include <tessarine/core/lists/detail/SlidLine.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

using detail::SlidLine;

}  // namespace

TSheetSlicer::TSheetSlicer(TText AName, TSlicerKind AKind, int32_t ACacheId, int32_t AFieldIndex, TCellAddress AAnchor)
    : Name(std::move(AName)), Kind(AKind), CacheId(ACacheId), FieldIndex(AFieldIndex), Anchor(AAnchor) {}

bool TSheetSlicer::IsItemSelected(std::u16string_view AItem) const {
  return FSelected.empty() || std::any_of(FSelected.begin(), FSelected.end(),
                                          [&](const TText& AText) { return EqualAsciiNoCase(AText, AItem); });
}

void TSheetSlicer::ToggleItem(std::u16string_view AItem) {
  if (AItem.empty()) return;
  const auto found = std::find_if(FSelected.begin(), FSelected.end(),
                                  [&](const TText& AText) { return EqualAsciiNoCase(AText, AItem); });
  if (found != FSelected.end()) {
    FSelected.erase(found);
  } else {
    FSelected.emplace_back(AItem);
  }
}

TSheetSlicer& TSheetSlicerList::Add(std::unique_ptr<TSheetSlicer> ASlicer) {
  FItems.push_back(std::move(ASlicer));
  return *FItems.back();
}

TSheetSlicer* TSheetSlicerList::FindByName(std::u16string_view AName) const {
  for (const auto& slicer : FItems)
    if (EqualAsciiNoCase(slicer->Name, AName)) return slicer.get();
  return nullptr;
}

void TSheetSlicerList::ShiftRows(int64_t AStart, int64_t ADelta) {
  for (const auto& slicer : FItems) slicer->Anchor.Row = SlidLine(slicer->Anchor.Row, AStart, ADelta);
}

void TSheetSlicerList::ShiftColumns(int64_t AStart, int64_t ADelta) {
  for (const auto& slicer : FItems) slicer->Anchor.Col = SlidLine(slicer->Anchor.Col, AStart, ADelta);
}

}  // namespace tessarine
