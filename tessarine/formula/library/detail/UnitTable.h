#pragma once

#include <optional>
#include <string_view>

/// Units of measurement.
namespace tessarine::detail {

/// A of one unit in another. Names are case-sensitive; units that allow it take a metric prefix from "y" to "Y" ("da"
/// or "e" for ten), bit and byte also a binary one from "ki" to "Yi"; the prefix of an area or volume is raised with
/// it, so that "cm2" is a square centimetre. Nothing when a unit is unknown or the two measure different things.
std::optional<double> ConvertUnit(double A, std::u16string_view AFrom, std::u16string_view ATo);

}  // namespace tessarine::detail
