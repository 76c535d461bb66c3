#pragma once

#include <cstdint>
#include <functional>

#include <tessarine/core/values/Text.h>

namespace tessarine {

struct TSheetDrawing;

enum class THostMouseButton : uint8_t { hmbLeft, hmbRight, hmbMiddle };
using enum THostMouseButton;

struct THostKeys {
  bool Shift = false;
  bool Ctrl = false;
  bool Alt = false;

  friend bool operator==(const THostKeys&, const THostKeys&) = default;
};

// What a host may be told. ASender is the object that the host set the handler on. Rows and columns are 1-based, sheet
// and drawing indexes 0-based. A handler sets AAllow to false to forbid what is about to happen, and AHandled to true
// when it has done all there is to do.

using TTessarineActiveCellChangingEvent = std::function<void(void* ASender, int32_t ACol, int32_t ARow, bool& AAllow)>;
using TTessarineBeforeEditEvent = std::function<void(void* ASender, int32_t ACol, int32_t ARow, bool& AAllowed)>;
using TTessarineHyperlinkClickEvent = std::function<void(void* ASender, const TText& ATarget, bool& AHandled)>;
/// Progress from 0 to 100; TTessarineProgressEvent is what the engine's own long work reports.
using TTessarineHostProgressEvent = std::function<void(void* ASender, int32_t APercent, const TText& AStatus)>;
using TTessarineSheetTabClickEvent = std::function<void(void* ASender, int32_t ASheetIndex)>;
using TTessarineCellClickEvent = std::function<void(void* ASender, int32_t ASheetIndex, int32_t ACol, int32_t ARow,
                                                    THostMouseButton AButton, const THostKeys& AKeys)>;
using TTessarinePivotCellEvent =
    std::function<void(void* ASender, int32_t ASheetIndex, const TText& APivotName, int32_t ACol, int32_t ARow)>;
using TTessarineDrawingClickEvent =
    std::function<void(void* ASender, int32_t ASheetIndex, int32_t ADrawingIndex, TSheetDrawing& ADrawing,
                       THostMouseButton AButton, const THostKeys& AKeys, bool& AAllow)>;
using TTessarineBeforeColResizeEvent =
    std::function<void(void* ASender, int32_t ASheetIndex, int32_t ACol, double AOldWidthChars, bool& AAllow)>;
using TTessarineColResizedEvent =
    std::function<void(void* ASender, int32_t ASheetIndex, int32_t ACol, double AOldWidthChars, double ANewWidthChars)>;
using TTessarineBeforeRowResizeEvent =
    std::function<void(void* ASender, int32_t ASheetIndex, int32_t ARow, double AOldHeightPt, bool& AAllow)>;
using TTessarineRowResizedEvent =
    std::function<void(void* ASender, int32_t ASheetIndex, int32_t ARow, double AOldHeightPt, double ANewHeightPt)>;

}  // namespace tessarine
