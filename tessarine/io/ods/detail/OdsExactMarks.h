#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <tessarine/core/format/CellFormat.h>

namespace tessarine::detail {

// Attributes of this system's own namespace stand beside standard ones that cannot say all that the model holds: a slot
// of the theme behind a colour, a width with more than three digits, a number format code in its own spelling. Other
// programs pass over them. A reader takes a mark only while it agrees with what the standard attributes say, so that
// one which outlived a change elsewhere does no harm.

/// The part with the theme that colours by slot refer to.
inline constexpr std::string_view kOdsThemePart = "Tessarine/theme.xml";

/// The value of a mark of a line that has the default size.
inline constexpr std::string_view kOdsDefaultSizeMark = "default";

/// The width of one step of indentation: ten points.
inline constexpr double kOdsIndentCm = 0.353;

/// The rotation that means text set letter below letter.
inline constexpr int32_t kOdsStackedRotation = 255;

/// Degrees from 0 to 359, counted against the clock; 91 to 180 go the other way in the model.
int32_t OdsRotationAngle(int32_t ARotation);

/// "0.05cm solid #ff0000"; empty for no line.
std::string OdsBorderText(TBorderLineStyle AStyle, uint32_t ARGB);

/// "#ff123456", "theme:4:0.4".
std::string OdsColorMark(const TColorRef& AColor);
std::optional<TColorRef> OdsParseColorMark(std::string_view AText);

/// The number of the line style and the colour: "7 theme:4:0.4".
std::string OdsBorderMark(const TBorderSide& ASide);
std::optional<TBorderSide> OdsParseBorderMark(std::string_view AText);

/// The number of the pattern, both colours and the angle: "1 theme:4:0 #ff000000 90".
std::string OdsFillMark(const TCellFillInfo& AFill);
std::optional<TCellFillInfo> OdsParseFillMark(std::string_view AText);

}  // namespace tessarine::detail
