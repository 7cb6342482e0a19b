// A small HTTP server on 127.0.0.1 that misbehaves on purpose: it stalls,
// closes halfway, sends endless or enormous headers, redirects in circles,
// or plays a well-behaved radio server when a test needs one it controls
// byte for byte.
//
// The server accepts one connection at a time on its own thread and runs
// the test's script on it. Every wait of a script ends when the client goes
// away or the server stops, so a test can't hang on its server.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "net/socket_io.h"
#include "net/stop_signal.h"
#include "platform/event.h"

namespace net_testing {

class FaultConnection {
 public:
  FaultConnection(int descriptor, net::StopSignal& serverStop) : fd(descriptor), stop(serverStop) {}

  // Reads the request up to its empty line (at most 64 KiB, 5 s). False
  // when the client left first.
  bool ReadRequest();
  const std::string& Request() const { return request; }
  // The target of the request line ("/path").
  std::string Target() const;

  // Sends everything; false once the client has gone or the server stops.
  bool Send(std::string_view bytes);
  // Sends in pieces of `piece` bytes with `pauseMs` between them.
  bool SendSlowly(std::string_view bytes, std::size_t piece, int pauseMs);
  // Holds the connection open, silent, until the client closes it or the
  // server stops. Returns true if the client closed it.
  bool StallUntilClosed();
  // Waits for `event`; false if the client closed or the server stopped first.
  bool WaitFor(platform::Event& event);

 private:
  bool ClientClosed();

  int fd;
  net::StopSignal& stop;
  std::string request;
};

// A socket listening on 127.0.0.1 at a free port (invalid on failure).
net::Socket ListenOnLoopback(int backlog, std::uint16_t& port);
// Connects to 127.0.0.1:`port` within `timeoutMs`.
bool ConnectToLoopback(std::uint16_t port, net::Socket& socket, int timeoutMs);

class FaultServer {
 public:
  using Script = std::function<void(FaultConnection&)>;

  explicit FaultServer(Script script);
  ~FaultServer();
  FaultServer(const FaultServer&) = delete;
  FaultServer& operator=(const FaultServer&) = delete;

  bool Valid() const { return listener.Valid(); }
  std::uint16_t Port() const { return port; }
  std::string Url(std::string_view path = "/") const;
  // The requests of the connections whose scripts have returned, oldest first.
  std::vector<std::string> Requests() const;
  int Connections() const { return connections.load(); }
  // Waits until `count` scripts have returned.
  bool WaitForScripts(int count, int timeoutMs);

 private:
  void Serve();

  Script script;
  std::uint16_t port = 0;  // before the listener, which sets it
  net::Socket listener;
  net::StopSignal stop;
  std::atomic<int> connections{0};
  std::atomic<int> scriptsDone{0};
  platform::Event scriptDone{false, false};
  mutable std::mutex lock;
  std::vector<std::string> requests;  // guarded by lock
  std::thread thread;
};

// A header of a well-behaved radio server.
std::string RadioHeader(std::uint32_t metaInterval = 0, std::string_view extra = "");

}  // namespace net_testing
