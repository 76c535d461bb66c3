#pragma once

#include <string>
#include <vector>

namespace tessarine {
class TWorkbook;
class TWorksheet;
}  // namespace tessarine

namespace tessarine::cli {

/// Something that a workbook or a sheet holds beside its cells, told for people.
struct TFeature {
  std::string Kind;  // "merged area"
  std::string Name;  // what tells it from others of its kind: a name or a place
  std::string Text;  // what it is; equal things have equal texts

  friend bool operator==(const TFeature&, const TFeature&) = default;
};

/// Defined names, sources of pivot tables, connections to cubes.
std::vector<TFeature> FeaturesOf(const TWorkbook& AWorkbook);

/// Tables, merged areas, notes, links, validations, conditional formats, filter, pivot tables, slicers, drawings and
/// the print area, in this order.
std::vector<TFeature> FeaturesOf(const TWorkbook& AWorkbook, const TWorksheet& ASheet);

/// How a sheet is shown and printed, and the sizes of its rows and columns.
std::vector<TFeature> SettingsOf(const TWorksheet& ASheet);

}  // namespace tessarine::cli
