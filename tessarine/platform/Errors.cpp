#include <tessarine/platform/Errors.h>

namespace tessarine {

// Defined here so that each class has one home for its type information, which catching across libraries relies on.
ETessarineError::~ETessarineError() = default;
EArgument::~EArgument() = default;
EState::~EState() = default;
EFileAccess::~EFileAccess() = default;
EFileFormat::~EFileFormat() = default;
ELimit::~ELimit() = default;
ENetwork::~ENetwork() = default;
ECancelled::~ECancelled() = default;

}  // namespace tessarine
