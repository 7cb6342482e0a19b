#include "fault_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

namespace net_testing {
namespace {

constexpr std::size_t kMaxRequestBytes = 64 * 1024;
constexpr int kRequestTimeoutMs = 5000;

}  // namespace

bool FaultConnection::ReadRequest() {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kRequestTimeoutMs);
  char chunk[1024];
  while (request.find("\r\n\r\n") == std::string::npos && request.size() < kMaxRequestBytes) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) return false;
    if (net::WaitForSocket(fd, POLLIN, stop, static_cast<int>(left.count())) != net::WaitResult::kReady)
      return false;
    const ssize_t got = ::recv(fd, chunk, sizeof chunk, MSG_DONTWAIT);
    if (got < 0 && (errno == EAGAIN || errno == EINTR)) continue;
    if (got <= 0) return false;
    request.append(chunk, static_cast<std::size_t>(got));
  }
  return request.find("\r\n\r\n") != std::string::npos;
}

std::string FaultConnection::Target() const {
  const std::size_t start = request.find(' ');
  if (start == std::string::npos) return "";
  const std::size_t end = request.find(' ', start + 1);
  return request.substr(start + 1, end == std::string::npos ? std::string::npos : end - start - 1);
}

bool FaultConnection::Send(std::string_view bytes) {
  return net::SendAll(fd, bytes, stop, 5000);
}

bool FaultConnection::SendSlowly(std::string_view bytes, std::size_t piece, int pauseMs) {
  while (!bytes.empty()) {
    const std::size_t now = std::min(piece, bytes.size());
    if (!Send(bytes.substr(0, now))) return false;
    bytes.remove_prefix(now);
    if (!bytes.empty() && (stop.Event().Wait(pauseMs) || ClientClosed())) return false;
  }
  return true;
}

bool FaultConnection::ClientClosed() {
  pollfd watched{fd, POLLIN, 0};
  if (::poll(&watched, 1, 0) <= 0) return false;
  char byte;
  const ssize_t got = ::recv(fd, &byte, 1, MSG_PEEK | MSG_DONTWAIT);
  return got == 0 || (got < 0 && errno != EAGAIN && errno != EINTR);
}

bool FaultConnection::StallUntilClosed() {
  for (;;) {
    switch (net::WaitForSocket(fd, POLLIN, stop, 60000)) {
      case net::WaitResult::kReady:
        if (ClientClosed()) return true;
        {
          char sink[4096];
          if (::recv(fd, sink, sizeof sink, MSG_DONTWAIT) == 0) return true;
        }
        break;
      case net::WaitResult::kTimeout:
        break;
      case net::WaitResult::kStopped:
      case net::WaitResult::kFailed:
        return false;
    }
  }
}

bool FaultConnection::WaitFor(platform::Event& event) {
  for (;;) {
    if (platform::WaitForAny({&event, &stop.Event()}, 20) == 0) return true;
    if (stop.Raised() || ClientClosed()) return false;
  }
}

net::Socket ListenOnLoopback(int backlog, std::uint16_t& port) {
  net::Socket listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  if (!listener.Valid() || ::bind(listener.Descriptor(), reinterpret_cast<sockaddr*>(&address), size) != 0 ||
      ::listen(listener.Descriptor(), backlog) != 0 ||
      ::getsockname(listener.Descriptor(), reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    return net::Socket();
  }
  port = ntohs(address.sin_port);
  return listener;
}

bool ConnectToLoopback(std::uint16_t port, net::Socket& socket, int timeoutMs) {
  net::SocketAddress address;
  auto* inet = reinterpret_cast<sockaddr_in*>(&address.storage);
  inet->sin_family = AF_INET;
  inet->sin_port = htons(port);
  inet->sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.length = sizeof(sockaddr_in);
  net::StopSignal never;
  return net::ConnectSocket(address, never, timeoutMs, socket) == net::ConnectResult::kConnected;
}

FaultServer::FaultServer(Script run) : script(std::move(run)), listener(ListenOnLoopback(16, port)) {
  if (listener.Valid()) thread = std::thread([this] { Serve(); });
}

FaultServer::~FaultServer() {
  stop.Raise();
  if (thread.joinable()) thread.join();
}

std::string FaultServer::Url(std::string_view path) const {
  return "http://127.0.0.1:" + std::to_string(port) + std::string(path);
}

std::vector<std::string> FaultServer::Requests() const {
  std::lock_guard guard(lock);
  return requests;
}

bool FaultServer::WaitForScripts(int count, int timeoutMs) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  while (scriptsDone.load() < count) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) return false;
    scriptDone.Wait(static_cast<int>(std::min<long long>(left.count(), 50)));
  }
  return true;
}

void FaultServer::Serve() {
  while (!stop.Raised()) {
    if (net::WaitForSocket(listener.Descriptor(), POLLIN, stop, 60000) != net::WaitResult::kReady) continue;
    net::Socket client(::accept4(listener.Descriptor(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!client.Valid()) continue;
    ++connections;
    FaultConnection connection(client.Descriptor(), stop);
    script(connection);
    {
      std::lock_guard guard(lock);
      requests.push_back(connection.Request());
    }
    client.Close();
    ++scriptsDone;
    scriptDone.Set();
  }
}

std::string RadioHeader(std::uint32_t metaInterval, std::string_view extra) {
  std::string header =
      "ICY 200 OK\r\nicy-name:Fault Radio\r\nicy-genre:Test\r\nicy-url:http://fault.example/\r\n";
  if (metaInterval != 0) header += "icy-metaint:" + std::to_string(metaInterval) + "\r\n";
  header += extra;
  header += "\r\n";
  return header;
}

}  // namespace net_testing
