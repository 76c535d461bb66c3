#include <tessarine/platform/Http.h>

#include <algorithm>
#include <exception>
#include <mutex>
#include <utility>

#include <tessarine/platform/TextEncoding.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/detail/CurlClient.h>

namespace tessarine {

namespace {

constexpr int32_t kDefaultTimeoutMs = 10'000;

/// What is process-wide; locked.
struct TProcessState {
  std::mutex Mutex;
  std::shared_ptr<IHttpClient> Client;
  TWebSettings Settings;
};

TProcessState& ProcessState() {
  static TProcessState state;
  return state;
}

/// The URL in ASCII: what cannot stand in a URL as it is becomes an escape. So no line end of a URL ever ends a line of
/// a request.
std::string AsciiUrl(std::u16string_view AUrl) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string url;
  for (const char byte : Utf16ToUtf8(AUrl)) {
    const auto code = static_cast<uint8_t>(byte);
    if (code > 0x20 && code < 0x7F) {
      url += byte;
    } else {
      ((url += '%') += kDigits[code >> 4]) += kDigits[code & 0xF];
    }
  }
  return url;
}

std::optional<THttpResponse> Ask(IHttpClient& AClient, const THttpRequest& ARequest) {
  try {
    return AClient.Get(ARequest);
  } catch (const std::exception&) {
    return std::nullopt;  // a host's client may throw what it likes; told as "no answer"
  }
}

}  // namespace

std::shared_ptr<IHttpClient> ProcessHttpClient() {
  TProcessState& state = ProcessState();
  const std::lock_guard lock(state.Mutex);
  if (!state.Client) state.Client = detail::MakeCurlClient();
  return state.Client;
}

void SetProcessHttpClient(std::shared_ptr<IHttpClient> AClient) {
  TProcessState& state = ProcessState();
  const std::lock_guard lock(state.Mutex);
  state.Client.swap(AClient);
}

TWebSettings WebSettings() {
  TProcessState& state = ProcessState();
  const std::lock_guard lock(state.Mutex);
  return state.Settings;
}

void SetWebSettings(TWebSettings ASettings) {
  TProcessState& state = ProcessState();
  const std::lock_guard lock(state.Mutex);
  state.Settings = std::move(ASettings);
}

THttpText TTessarineHttp::GetText(std::u16string_view AUrl, int32_t ATimeoutMs, size_t AMaxUnits,
                                  IHttpClient* AClient) {
  THttpRequest request;
  request.Url = AsciiUrl(AUrl);
  request.TimeoutMs = ATimeoutMs > 0 ? ATimeoutMs : kDefaultTimeoutMs;
  request.MaxBytes = AMaxUnits * 3 + 3;  // UTF-8 takes the most bytes a unit; and a byte-order mark
  request.UserAgent = "Mozilla/5.0 (compatible; Tessarine/1.0; +" + WebSettings().ProjectAddress + ")";
  const std::shared_ptr<IHttpClient> shared = AClient ? nullptr : ProcessHttpClient();
  const auto response = Ask(AClient ? *AClient : *shared, request);
  THttpText result;
  if (!response) return result;
  result.Status = response->Status;
  if (response->Status < 200 || response->Status > 299 || response->Body.size() > request.MaxBytes) return result;
  result.Text = DecodeNamedText(response->Body, CharsetOfContentType(response->ContentType));
  result.IsGood = result.Text.size() <= AMaxUnits;
  if (!result.IsGood) result.Text.clear();
  return result;
}

}  // namespace tessarine
