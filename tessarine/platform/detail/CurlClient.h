#pragma once

#include <memory>

namespace tessarine {
class IHttpClient;
}

namespace tessarine::detail {

/// The library's own client.
std::shared_ptr<IHttpClient> MakeCurlClient();

}  // namespace tessarine::detail
