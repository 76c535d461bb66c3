#include "LoopbackServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace tessarine::test {

namespace {

bool SendAll(int ASocket, std::string_view ABytes) {
  while (!ABytes.empty()) {
    const ssize_t sent = ::send(ASocket, ABytes.data(), ABytes.size(), MSG_NOSIGNAL);
    if (sent <= 0) return false;
    ABytes.remove_prefix(static_cast<size_t>(sent));
  }
  return true;
}

std::string ReceiveRequest(int ASocket) {
  std::string request;
  char buffer[4096];
  while (request.find("\r\n\r\n") == std::string::npos) {
    const ssize_t received = ::recv(ASocket, buffer, sizeof buffer, 0);
    if (received <= 0) break;
    request.append(buffer, static_cast<size_t>(received));
  }
  return request;
}

/// The target of a request's first line.
std::string TargetOf(const std::string& ARequest) {
  const size_t begin = ARequest.find(' ');
  if (begin == std::string::npos) return {};
  return ARequest.substr(begin + 1, ARequest.find(' ', begin + 1) - begin - 1);
}

}  // namespace

TLoopbackServer::TLoopbackServer() {
  ::setenv("no_proxy", "127.0.0.1", 1);
  FListener = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  if (FListener < 0 || ::bind(FListener, generic, length) != 0 || ::listen(FListener, 16) != 0 ||
      ::getsockname(FListener, generic, &length) != 0)
    throw std::runtime_error("no loopback port");
  FPort = ntohs(address.sin_port);
  FThread = std::thread([this] { Serve(); });
}

TLoopbackServer::~TLoopbackServer() {
  {
    const std::lock_guard lock(FMutex);
    FIsStopping = true;
    ::shutdown(FListener, SHUT_RDWR);
    if (FClient >= 0) ::shutdown(FClient, SHUT_RDWR);
  }
  FThread.join();
  ::close(FListener);
}

std::string TLoopbackServer::Url(std::string_view APath) const {
  return "http://127.0.0.1:" + std::to_string(FPort) + std::string(APath);
}

void TLoopbackServer::Handle(const std::string& APath, THandler AHandler) {
  const std::lock_guard lock(FMutex);
  FHandlers[APath] = std::move(AHandler);
}

void TLoopbackServer::Reply(const std::string& APath, std::string_view ABody, std::string_view AContentType,
                            int AStatus) {
  std::string answer = "HTTP/1.1 " + std::to_string(AStatus) +
                       " X\r\nConnection: close\r\nContent-Length: " + std::to_string(ABody.size()) + "\r\n";
  if (!AContentType.empty()) answer += "Content-Type: " + std::string(AContentType) + "\r\n";
  answer += "\r\n" + std::string(ABody);
  Handle(APath, [answer](const TSend& ASend) { ASend(answer); });
}

void TLoopbackServer::Redirect(const std::string& APath, const std::string& ATarget) {
  const std::string answer =
      "HTTP/1.1 302 X\r\nConnection: close\r\nContent-Length: 0\r\nLocation: " + ATarget + "\r\n\r\n";
  Handle(APath, [answer](const TSend& ASend) { ASend(answer); });
}

void TLoopbackServer::Hang(const std::string& APath) {
  Handle(APath, [this](const TSend&) {
    char byte = 0;
    while (::recv(FClient, &byte, 1, 0) > 0) continue;
  });
}

int TLoopbackServer::Count(const std::string& APath) const {
  const std::lock_guard lock(FMutex);
  const auto found = FCounts.find(APath);
  return found == FCounts.end() ? 0 : found->second;
}

std::string TLoopbackServer::LastRequest() const {
  const std::lock_guard lock(FMutex);
  return FLastRequest;
}

void TLoopbackServer::Serve() {
  while (true) {
    const int client = ::accept(FListener, nullptr, nullptr);
    {
      const std::lock_guard lock(FMutex);
      if (FIsStopping || client < 0) {
        if (client >= 0) ::close(client);
        return;
      }
      FClient = client;
    }
    Answer(client);
    const std::lock_guard lock(FMutex);
    FClient = -1;
    ::close(client);
  }
}

void TLoopbackServer::Answer(int AClient) {
  const std::string request = ReceiveRequest(AClient);
  const std::string target = TargetOf(request);
  THandler handler;
  {
    const std::lock_guard lock(FMutex);
    ++FCounts[target];
    FLastRequest = request;
    const auto found = FHandlers.find(target);
    if (found != FHandlers.end()) handler = found->second;
  }
  const auto send = [AClient](std::string_view APiece) { return SendAll(AClient, APiece); };
  if (handler) {
    handler(send);
  } else {
    send("HTTP/1.1 404 X\r\nConnection: close\r\nContent-Length: 0\r\n\r\n");
  }
  ::shutdown(AClient, SHUT_WR);
}

}  // namespace tessarine::test
