#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace tessarine::test {

/// A web server on a free port of the loopback interface, as long as it lives. It serves one connection after another,
/// one request each. Paths without an answer are 404.
class TLoopbackServer {
 public:
  /// Sends a piece; false when the client is gone.
  using TSend = std::function<bool(std::string_view APiece)>;
  using THandler = std::function<void(const TSend& ASend)>;

  TLoopbackServer();
  ~TLoopbackServer();
  TLoopbackServer(const TLoopbackServer&) = delete;
  TLoopbackServer& operator=(const TLoopbackServer&) = delete;

  /// "http://127.0.0.1:port" and the path.
  std::string Url(std::string_view APath = {}) const;

  /// Paths count with their queries ("/a?b=1").
  void Reply(const std::string& APath, std::string_view ABody, std::string_view AContentType = "text/plain",
             int AStatus = 200);
  void Redirect(const std::string& APath, const std::string& ATarget);
  void Handle(const std::string& APath, THandler AHandler);
  /// Accepts requests for the path and answers nothing until the client goes.
  void Hang(const std::string& APath);

  /// How often a path was asked for.
  int Count(const std::string& APath) const;
  /// The request that came last, with its headers.
  std::string LastRequest() const;

 private:
  void Serve();
  void Answer(int AClient);

  int FListener = -1;
  int FPort = 0;
  mutable std::mutex FMutex;
  std::map<std::string, THandler> FHandlers;
  std::map<std::string, int> FCounts;
  std::string FLastRequest;
  int FClient = -1;
  bool FIsStopping = false;
  std::thread FThread;
};

}  // namespace tessarine::test
