#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <tessarine/Export.h>

namespace tessarine {

/// What a client is asked for.
struct THttpRequest {
  std::string Url;  // absolute, http or https, in ASCII
  int32_t TimeoutMs = 10'000;
  size_t MaxBytes = size_t{16} << 20;  // a longer body is a failure
  std::string UserAgent;
};

/// What a server answered, whatever its status is.
struct THttpResponse {
  int32_t Status = 0;
  std::string ContentType;  // as the server wrote it; may be empty
  std::string Body;
};

/// Fetches documents. A host may give its own: to go through its own network code, to answer from a store, to allow
/// some addresses only, or to forbid everything. Called on the threads that evaluate, by several at a time when the
/// client is shared.
class TESSARINE_API IHttpClient {
 public:
  virtual ~IHttpClient() = default;
  /// The answer to a GET, redirects followed; nothing when there is none within the time and the size. What it throws
  /// counts as no answer.
  virtual std::optional<THttpResponse> Get(const THttpRequest& ARequest) = 0;
};

/// The client of the process, which workbooks without a client of their own use. The library's own follows at most
/// kMaxHttpRedirects redirects and only to http and https, verifies certificates, ends a transfer at its time or as
/// soon as its body exceeds the limit, and goes through the proxy that the environment names. May be used by several
/// threads.
TESSARINE_API std::shared_ptr<IHttpClient> ProcessHttpClient();
/// Null puts the library's own client back. Safe at any time; transfers under way end with the client they have.
TESSARINE_API void SetProcessHttpClient(std::shared_ptr<IHttpClient> AClient);

inline constexpr int32_t kMaxHttpRedirects = 10;

/// Addresses that the web functions name, for the whole process.
struct TWebSettings {
  std::string ProjectAddress = "https://tessarine.example";    // told to servers, in the user agent
  std::string FinanceHost = "https://query1.finance.example";  // answers for histories of securities
};
/// Safe at any time.
TESSARINE_API TWebSettings WebSettings();
TESSARINE_API void SetWebSettings(TWebSettings ASettings);

/// A fetched text. Status is 0 without an answer, and there is no text unless IsGood.
struct THttpText {
  bool IsGood = false;  // the status was 200 to 299, and the text is no longer than was allowed
  int32_t Status = 0;
  std::u16string Text;
};

/// The one way to the network of all functions.
class TESSARINE_API TTessarineHttp {
 public:
  /// Fetches AUrl as a text of at most AMaxUnits UTF-16 units through AClient, or the client of the process for null.
  /// A time not above 0 is 10,000 milliseconds. The encoding is that of the byte-order mark, else of the Content-Type,
  /// else UTF-8. Never throws.
  static THttpText GetText(std::u16string_view AUrl, int32_t ATimeoutMs, size_t AMaxUnits,
                           IHttpClient* AClient = nullptr);
};

}  // namespace tessarine
