#include <tessarine/platform/detail/CurlClient.h>

#include <mutex>
#include <new>

#include <curl/curl.h>

#include <tessarine/platform/Http.h>

namespace tessarine::detail {

namespace {

constexpr size_t kMaxHeaderBytes = size_t{1} << 20;
constexpr const char* kProtocols = "http,https";

struct TCurlDeleter {
  void operator()(CURL* AHandle) const { curl_easy_cleanup(AHandle); }
};
using TCurlHandle = std::unique_ptr<CURL, TCurlDeleter>;

/// What a transfer has received; called from C, so nothing is thrown out of it.
struct TReceiver {
  size_t MaxBytes = 0;
  size_t HeaderBytes = 0;
  std::string Body;

  // A count that differs from what came ends the transfer.
  static size_t TakeBody(char* ABytes, size_t, size_t ACount, void* AReceiver) {
    auto& receiver = *static_cast<TReceiver*>(AReceiver);
    if (ACount > receiver.MaxBytes - receiver.Body.size()) return 0;
    try {
      receiver.Body.append(ABytes, ACount);
    } catch (const std::bad_alloc&) {
      return 0;
    }
    return ACount;
  }

  static size_t TakeHeader(char*, size_t, size_t ACount, void* AReceiver) {
    auto& receiver = *static_cast<TReceiver*>(AReceiver);
    receiver.HeaderBytes += ACount;
    return receiver.HeaderBytes <= kMaxHeaderBytes ? ACount : 0;
  }
};

bool InitCurlOnce() {
  static std::once_flag once;
  static bool isGood = false;
  std::call_once(once, [] { isGood = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK; });
  return isGood;
}

/// Sets options one after another and remembers whether all were accepted.
class TOptionSetter {
 public:
  explicit TOptionSetter(CURL* AHandle) : FHandle(AHandle) {}
  template <class T>
  void Set(CURLoption AOption, T AValue) {
    FIsGood = FIsGood && curl_easy_setopt(FHandle, AOption, AValue) == CURLE_OK;
  }
  bool IsGood() const { return FIsGood; }

 private:
  CURL* FHandle;
  bool FIsGood = true;
};

bool Prepare(CURL* AHandle, const THttpRequest& ARequest, TReceiver& AReceiver) {
  TOptionSetter options(AHandle);
  options.Set(CURLOPT_URL, ARequest.Url.c_str());
  options.Set(CURLOPT_PROTOCOLS_STR, kProtocols);
  options.Set(CURLOPT_REDIR_PROTOCOLS_STR, kProtocols);
  options.Set(CURLOPT_FOLLOWLOCATION, 1L);
  options.Set(CURLOPT_MAXREDIRS, long{kMaxHttpRedirects});
  options.Set(CURLOPT_CONNECTTIMEOUT_MS, long{ARequest.TimeoutMs});
  options.Set(CURLOPT_TIMEOUT_MS, long{ARequest.TimeoutMs});
  options.Set(CURLOPT_NOSIGNAL, 1L);
  options.Set(CURLOPT_SSL_VERIFYPEER, 1L);
  options.Set(CURLOPT_SSL_VERIFYHOST, 2L);
  options.Set(CURLOPT_USERAGENT, ARequest.UserAgent.c_str());
  options.Set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(ARequest.MaxBytes));
  options.Set(CURLOPT_WRITEFUNCTION, &TReceiver::TakeBody);
  options.Set(CURLOPT_WRITEDATA, static_cast<void*>(&AReceiver));
  options.Set(CURLOPT_HEADERFUNCTION, &TReceiver::TakeHeader);
  options.Set(CURLOPT_HEADERDATA, static_cast<void*>(&AReceiver));
  return options.IsGood();
}

class TCurlClient final : public IHttpClient {
 public:
  std::optional<THttpResponse> Get(const THttpRequest& ARequest) override {
    if (!InitCurlOnce()) return std::nullopt;
    const TCurlHandle handle(curl_easy_init());
    TReceiver receiver;
    receiver.MaxBytes = ARequest.MaxBytes;
    if (!handle || !Prepare(handle.get(), ARequest, receiver)) return std::nullopt;
    if (curl_easy_perform(handle.get()) != CURLE_OK) return std::nullopt;
    long status = 0;
    const char* type = nullptr;
    if (curl_easy_getinfo(handle.get(), CURLINFO_RESPONSE_CODE, &status) != CURLE_OK) return std::nullopt;
    if (curl_easy_getinfo(handle.get(), CURLINFO_CONTENT_TYPE, &type) != CURLE_OK) return std::nullopt;
    return THttpResponse{static_cast<int32_t>(status), type ? type : "", std::move(receiver.Body)};
  }
};

}  // namespace

std::shared_ptr<IHttpClient> MakeCurlClient() { return std::make_shared<TCurlClient>(); }

}  // namespace tessarine::detail
