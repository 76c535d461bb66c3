#pragma once

#include <string>

namespace tessarine {
class TPageSetup;
}

namespace tessarine::detail {

/// Appends the elements of a sheet part that govern printing, from the print options to the breaks.
void AppendXlsxPageSetup(const TPageSetup& APageSetup, std::string& AOut);

}  // namespace tessarine::detail
