#include <tessarine/Version.h>

namespace tessarine {

std::string_view Version() { return TESS_VERSION; }

}  // namespace tessarine
