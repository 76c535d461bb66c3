#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/values/Address.h>

namespace tessarine {

/// A sheet's view as a document had it, kept so that saving a loaded document writes it back.
struct TESSARINE_API TSheetSavedView {
  bool HasView = false;  // the other fields were set
  int32_t ActiveCol = 1;
  int32_t ActiveRow = 1;
  int32_t TopLeftCol = 0;  // first visible column, 0 when none was saved
  int32_t TopLeftRow = 0;
  bool TabSelected = false;
  std::vector<TCellRange> SelectionRanges;

  void Clear();

  /// Sets every field, HasView included.
  void AssignFrom(std::vector<TCellRange> ASelectionRanges, int32_t AActiveCol, int32_t AActiveRow, int32_t ATopLeftCol,
                  int32_t ATopLeftRow, bool ATabSelected);

  /// The ranges of "A1 B2:C9"; pieces that cannot be read are left out.
  static std::vector<TCellRange> ParseSqref(std::u16string_view AText);

  /// The normalized ranges' texts, joined with one blank.
  static std::u16string FormatSqref(const std::vector<TCellRange>& ARanges);

  friend bool operator==(const TSheetSavedView&, const TSheetSavedView&) = default;
};

}  // namespace tessarine
