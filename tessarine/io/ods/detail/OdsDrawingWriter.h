#pragma once

#include <string>

namespace tessarine {
class TWorksheet;
struct TOdsWriteOptions;
}  // namespace tessarine

namespace tessarine::detail {

class TOdsStyleWriter;
class TOdsWriteBag;

/// The pictures, charts and shapes of a sheet as children of "table:shapes", placed by their distance from the sheet's
/// corner. The parts that they need go to the bag, their looks to the styles.
std::string OdsShapes(const TWorksheet& ASheet, const TOdsWriteOptions& AOptions, TOdsStyleWriter& AStyles,
                      TOdsWriteBag& ABag);

}  // namespace tessarine::detail
