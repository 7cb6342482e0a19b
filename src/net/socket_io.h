// TCP sockets whose every wait can be cut short.
//
// Sockets here are non-blocking from birth. A wait is a poll() on the socket
// and on a StopSignal's eventfd together, with a deadline, so a stop reaches
// a thread in any of them at once: in a connect that the peer never answers,
// in a send to a full window, in a receive from a server that has gone quiet.
//
// Threads: a Socket belongs to one thread; StopSignal is the only thing that
// other threads touch.
#pragma once

#include <sys/socket.h>

#include <string_view>

#include "net/stop_signal.h"

namespace net {

struct SocketAddress {
  sockaddr_storage storage{};
  socklen_t length = 0;
};

class Socket {
 public:
  Socket() = default;
  explicit Socket(int descriptor) : fd(descriptor) {}
  ~Socket() { Close(); }
  Socket(Socket&& other) noexcept : fd(other.fd) { other.fd = -1; }
  Socket& operator=(Socket&& other) noexcept;
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  bool Valid() const { return fd >= 0; }
  int Descriptor() const { return fd; }
  // Shuts both directions down and closes; a closed socket stays closed.
  void Close();

 private:
  int fd = -1;
};

enum class WaitResult { kReady, kTimeout, kStopped, kFailed };

// Waits until `fd` has one of `events` (POLLIN, POLLOUT; an error or a hang-up
// counts as ready, so the next call reports it), `stop` is raised, or
// `timeoutMs` has passed.
WaitResult WaitForSocket(int fd, short events, const StopSignal& stop, int timeoutMs);

enum class ConnectResult { kConnected, kFailed, kStopped };

// Connects a new non-blocking socket to `address` within `timeoutMs`.
ConnectResult ConnectSocket(const SocketAddress& address, const StopSignal& stop, int timeoutMs,
                            Socket& socket);

// Sends all of `data`, waiting at most `timeoutMs` for room each time the
// socket is full. False on an error, a timeout or a stop.
bool SendAll(int fd, std::string_view data, const StopSignal& stop, int timeoutMs);

}  // namespace net
