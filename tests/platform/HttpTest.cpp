#include <gtest/gtest.h>

#include <stdexcept>

#include <tessarine/platform/Http.h>
#include <tessarine/platform/TextEncoding.h>
#include <tessarine/platform/Unicode.h>

#include "../support/LoopbackServer.h"

using namespace tessarine;
using tessarine::test::TLoopbackServer;

namespace {

constexpr size_t kMaxUnits = 1000;

/// "200 text" of a good answer, else "404 -".
std::string Got(const std::string& AUrl, int32_t ATimeoutMs = 10'000, IHttpClient* AClient = nullptr) {
  const THttpText answer = TTessarineHttp::GetText(Utf8ToUtf16(AUrl), ATimeoutMs, kMaxUnits, AClient);
  return std::to_string(answer.Status) + " " + (answer.IsGood ? Utf16ToUtf8(answer.Text) : "-");
}

}  // namespace

TEST(Http, AnswersAreGoodByStatusAndSize) {
  TLoopbackServer server;
  server.Reply("/ok?a=%20%C3%A4", "hello");
  server.Reply("/created", "made", "text/plain", 201);
  server.Reply("/gone", "body", "text/plain", 410);
  server.Reply("/fits", std::string(kMaxUnits, 'x'));
  server.Reply("/long", std::string(kMaxUnits + 1, 'x'));
  server.Reply("/huge", std::string(kMaxUnits * 3 + 4, 'x'));
  EXPECT_EQ(Got(server.Url("/ok?a= \xC3\xA4")), "200 hello") << "what a URL cannot hold is escaped";
  EXPECT_NE(server.LastRequest().find("User-Agent: Mozilla/5.0 (compatible; Tessarine/1.0; +" +
                                      WebSettings().ProjectAddress + ")\r\n"),
            std::string::npos);
  EXPECT_EQ(Got(server.Url("/ok HTTP/1.1\r\nX-Own: 1")), "404 -");
  EXPECT_NE(server.LastRequest().find("GET /ok%20HTTP/1.1%0D%0AX-Own:%201 HTTP/1.1\r\n"), std::string::npos);
  EXPECT_EQ(Got(server.Url("/created")), "201 made");
  EXPECT_EQ(Got(server.Url("/gone")), "410 -");
  EXPECT_EQ(Got(server.Url("/none")), "404 -");
  EXPECT_EQ(Got(server.Url("/fits")).size(), 4 + kMaxUnits);
  EXPECT_EQ(Got(server.Url("/long")), "200 -");
  EXPECT_EQ(Got(server.Url("/huge")), "0 -");
  for (const char* url : {"", "ftp://127.0.0.1/x", "file:///etc/passwd", "http://", "nonsense", "http://127.0.0.1:1/"})
    EXPECT_EQ(Got(url), "0 -") << url;
}

TEST(Http, RedirectsAreBoundedAndStayOnTheWeb) {
  TLoopbackServer server;
  server.Reply("/end", "end");
  for (int hop = 0; hop < kMaxHttpRedirects + 1; ++hop)
    server.Redirect("/" + std::to_string(hop), hop == 0 ? "/end" : "/" + std::to_string(hop - 1));
  server.Redirect("/loop", server.Url("/loop"));
  server.Redirect("/file", "file:///etc/passwd");
  server.Redirect("/ftp", "ftp://127.0.0.1/x");
  EXPECT_EQ(Got(server.Url("/9")), "200 end");
  EXPECT_EQ(Got(server.Url("/10")), "0 -");
  EXPECT_EQ(Got(server.Url("/loop")), "0 -");
  EXPECT_EQ(server.Count("/loop"), kMaxHttpRedirects + 1);
  EXPECT_EQ(Got(server.Url("/file")), "0 -");
  EXPECT_EQ(Got(server.Url("/ftp")), "0 -");
}

TEST(Http, SlowAndEndlessAnswersEnd) {
  TLoopbackServer server;
  bool wasCut = false;
  server.Hang("/hang");
  server.Handle("/endless", [&](const TLoopbackServer::TSend& ASend) {
    ASend("HTTP/1.1 200 X\r\nConnection: close\r\n\r\n");
    const std::string piece(4096, 'x');
    for (int i = 0; i < 100'000 && !wasCut; ++i) wasCut = !ASend(piece);
  });
  server.Handle("/headers", [&](const TLoopbackServer::TSend& ASend) {
    ASend("HTTP/1.1 200 X\r\n");
    for (int i = 0; i < 100'000; ++i) {
      if (!ASend("X: " + std::string(1000, 'x') + "\r\n")) return;
    }
  });
  server.Handle("/cut", [](const TLoopbackServer::TSend& ASend) {
    ASend("HTTP/1.1 200 X\r\nConnection: close\r\nContent-Length: 100\r\n\r\nhalf");
  });
  EXPECT_EQ(Got(server.Url("/hang"), 50), "0 -");
  EXPECT_EQ(Got(server.Url("/endless")), "0 -");
  EXPECT_EQ(Got(server.Url("/headers")), "0 -");
  EXPECT_TRUE(wasCut) << "the transfer ended while the body came";
  EXPECT_EQ(Got(server.Url("/cut")), "0 -");
}

TEST(Http, EncodingsAreThoseOfTheMarkThenOfTheHeader) {
  TLoopbackServer server;
  const struct {
    std::string Body;
    const char* Type;
    const char* Text;
  } cases[] = {
      {"\xC3\xA4", "", "ä"},
      {"\xC3\xA4", "text/html; charset=\"UTF-8\"", "ä"},
      {"\xEF\xBB\xBF\xC3\xA4", "text/html; charset=iso-8859-1", "ä"},
      {"\xE4\x80\x81", "text/html;Charset=ISO-8859-1", "ä€\xC2\x81"},
      {"\xE4!", "text/html", "\xEF\xBF\xBD!"},
      {"\xE4!", "text/html; charset=klingon", "\xEF\xBF\xBD!"},
      {std::string("\xE4\0\xAC\x20", 4), "text/plain; charset=utf-16", "ä€"},
      {std::string("\0\xE4\x20\xAC\x20", 5), "text/plain; a=b; charset=UTF-16BE", "ä€\xEF\xBF\xBD"},
      {std::string("\xFE\xFF\0\xE4", 4), "text/plain", "ä"},
  };
  for (const auto& row : cases) {
    server.Reply("/x", row.Body, row.Type);
    EXPECT_EQ(Got(server.Url("/x")), std::string("200 ") + row.Text) << row.Type;
  }
}

TEST(Http, HostsReplaceTheClient) {
  class TOwnClient final : public IHttpClient {
   public:
    std::optional<THttpResponse> Get(const THttpRequest& ARequest) override {
      if (ARequest.Url == "throw") throw std::runtime_error("x");
      if (ARequest.Url == "none") return std::nullopt;
      if (ARequest.Url == "big") return THttpResponse{200, "", std::string(ARequest.MaxBytes + 1, 'x')};
      return THttpResponse{200, "", ARequest.Url + " " + std::to_string(ARequest.TimeoutMs)};
    }
  };
  TOwnClient own;
  EXPECT_EQ(Got("a b", -1, &own), "200 a%20b 10000");
  for (const char* url : {"throw", "none"}) EXPECT_EQ(Got(url, 1, &own), "0 -");
  EXPECT_EQ(Got("big", 1, &own), "200 -");
  SetProcessHttpClient(std::make_shared<TOwnClient>());
  EXPECT_EQ(Got("x", 7), "200 x 7");
  SetProcessHttpClient(nullptr);
  EXPECT_EQ(Got("x", 7), "0 -");
}
