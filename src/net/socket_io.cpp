#include "net/socket_io.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

namespace net {
namespace {

using Clock = std::chrono::steady_clock;

int MillisecondsUntil(Clock::time_point deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
  return left > 0 ? static_cast<int>(left) : 0;
}

}  // namespace

Socket& Socket::operator=(Socket&& other) noexcept {
  if (this != &other) {
    Close();
    fd = other.fd;
    other.fd = -1;
  }
  return *this;
}

void Socket::Close() {
  if (fd < 0) return;
  ::shutdown(fd, SHUT_RDWR);
  ::close(fd);
  fd = -1;
}

WaitResult WaitForSocket(int fd, short events, const StopSignal& stop, int timeoutMs) {
  const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
  for (;;) {
    if (stop.Raised()) return WaitResult::kStopped;
    pollfd watched[2] = {{fd, events, 0}, {stop.Descriptor(), POLLIN, 0}};
    const int ready = ::poll(watched, 2, MillisecondsUntil(deadline));
    if (ready < 0) {
      if (errno == EINTR) continue;
      return WaitResult::kFailed;
    }
    if (stop.Raised() || watched[1].revents != 0) return WaitResult::kStopped;
    if (watched[0].revents & POLLNVAL) return WaitResult::kFailed;
    if (watched[0].revents != 0) return WaitResult::kReady;
    if (ready == 0 && MillisecondsUntil(deadline) == 0) return WaitResult::kTimeout;
  }
}

ConnectResult ConnectSocket(const SocketAddress& address, const StopSignal& stop, int timeoutMs,
                            Socket& socket) {
  Socket candidate(::socket(address.storage.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!candidate.Valid()) return ConnectResult::kFailed;
  if (::connect(candidate.Descriptor(), reinterpret_cast<const sockaddr*>(&address.storage),
                address.length) != 0) {
    if (errno != EINPROGRESS && errno != EINTR) return ConnectResult::kFailed;
    switch (WaitForSocket(candidate.Descriptor(), POLLOUT, stop, timeoutMs)) {
      case WaitResult::kReady:
        break;
      case WaitResult::kStopped:
        return ConnectResult::kStopped;
      case WaitResult::kTimeout:
      case WaitResult::kFailed:
        return ConnectResult::kFailed;
    }
    int error = 0;
    socklen_t size = sizeof error;
    if (::getsockopt(candidate.Descriptor(), SOL_SOCKET, SO_ERROR, &error, &size) != 0 || error != 0) {
      return ConnectResult::kFailed;
    }
  }
  socket = std::move(candidate);
  return ConnectResult::kConnected;
}

bool SendAll(int fd, std::string_view data, const StopSignal& stop, int timeoutMs) {
  while (!data.empty()) {
    const ssize_t sent = ::send(fd, data.data(), data.size(), MSG_NOSIGNAL);
    if (sent > 0) {
      data.remove_prefix(static_cast<std::size_t>(sent));
      continue;
    }
    if (sent < 0 && errno == EINTR) continue;
    if (sent < 0 && errno != EAGAIN && errno != EWOULDBLOCK) return false;
    if (WaitForSocket(fd, POLLOUT, stop, timeoutMs) != WaitResult::kReady) return false;
  }
  return !stop.Raised();
}

}  // namespace net
