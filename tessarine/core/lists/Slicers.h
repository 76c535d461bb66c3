#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

enum class TSlicerKind : uint8_t { skSlicer, skTimeline };
using enum TSlicerKind;

enum class TSlicerTimelineLevel : uint8_t { stlNone, stlYears, stlQuarters, stlMonths, stlDays };
using enum TSlicerTimelineLevel;

/// A named filter of items that stands on the sheet and drives pivot tables through its selection.
class TESSARINE_API TSheetSlicer {
 public:
  TSheetSlicer(TText AName, TSlicerKind AKind, int32_t ACacheId, int32_t AFieldIndex, TCellAddress AAnchor);

  TText Name;
  TSlicerKind Kind;
  int32_t CacheId;      // the pivot cache whose field it filters
  int32_t FieldIndex;   // 0-based field of that cache
  TCellAddress Anchor;  // top left cell; edits may move it off the sheet
  int32_t WidthCols = 3;
  int32_t HeightRows = 8;
  std::vector<TText> PivotNames;  // the pivot tables that it drives
  TSlicerTimelineLevel TimelineLevel = stlMonths;

  /// The items left in; none means all.
  const std::vector<TText>& Selected() const { return FSelected; }
  void SetSelected(std::vector<TText> AItems) { FSelected = std::move(AItems); }
  void ClearSelection() { FSelected.clear(); }

  /// Without regard to ASCII case; true for any text when nothing is selected.
  bool IsItemSelected(std::u16string_view AItem) const;

  /// Takes an item out of the selection or appends it; on an empty selection it becomes the only item. An empty item
  /// does nothing.
  void ToggleItem(std::u16string_view AItem);

 private:
  std::vector<TText> FSelected;
};

/// The slicers of a sheet in order of creation; owns them.
class TESSARINE_API TSheetSlicerList {
 public:
  TSheetSlicerList() = default;
  TSheetSlicerList(const TSheetSlicerList&) = delete;
  TSheetSlicerList& operator=(const TSheetSlicerList&) = delete;

  void Clear() { FItems.clear(); }
  TSheetSlicer& Add(std::unique_ptr<TSheetSlicer> ASlicer);

  bool IsEmpty() const { return FItems.empty(); }
  size_t Count() const { return FItems.size(); }
  TSheetSlicer& GetItem(size_t AIndex) { return *FItems[AIndex]; }
  const TSheetSlicer& GetItem(size_t AIndex) const { return *FItems[AIndex]; }
  auto begin() const { return FItems.begin(); }
  auto end() const { return FItems.end(); }

  /// The first of that name without regard to ASCII case, or null.
  TSheetSlicer* FindByName(std::u16string_view AName) const;

  /// Anchors at or behind AStart move by ADelta, unchecked.
  void ShiftRows(int64_t AStart, int64_t ADelta);
  void ShiftColumns(int64_t AStart, int64_t ADelta);

 private:
  std::vector<std::unique_ptr<TSheetSlicer>> FItems;
};

}  // namespace tessarine
