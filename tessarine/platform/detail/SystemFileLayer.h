#pragma once

namespace tessarine {
class IFileLayer;
}

namespace tessarine::detail {

/// The layer of the operating system: POSIX calls where there are any, else what standard C and C++ offer. One object
/// for the process that is never destroyed.
IFileLayer& SystemFileLayer();

}  // namespace tessarine::detail
