// One player per user, over a local socket.
//
// The running instance listens on a socket in the user's runtime folder
// ($XDG_RUNTIME_DIR/tavrinsonic/instance). A later process connects and sends
// requests, each a frame of
//   u32 message number (little endian), u32 length, `length` bytes of text;
// message 0 asks the running window to come forward, any other is posted to
// it with the text as its owned text. Only the messages a later process or
// the desktop may send are taken (2646 with a path, 2690, 10053, 10054). The
// running instance answers each frame it has handled with one byte.
//
// Bounds, so that nobody hangs: a later process waits at most 1 s for the
// connection and 2 s for each answer, then goes its way (a request that
// isn't answered yet is handled when the running instance gets to it). A
// frame of more than 64 KiB, or a connection quiet for 10 s, is dropped.
// Who claims the name is decided under a lock file beside the socket, held
// for at most 3 s, so that two starts at once can't both become the running
// instance; a socket that nobody answers on (left by a killed instance) is
// removed and taken over.
//
// Threads: the thread of Qt's event loop.
#pragma once

#include <QLocalServer>
#include <functional>
#include <memory>
#include <string>

#include "shell/instance_link.h"

namespace ui {

inline constexpr std::uint32_t kRaiseRequest = 0;

class LocalInstanceLink : public shell::InstanceLink {
 public:
  explicit LocalInstanceLink(std::string socketPath);
  ~LocalInstanceLink() override;

  std::unique_ptr<shell::RunningInstance> FindOrBecomeRunning() override;
  void Serve(platform::MessageTarget& window, std::function<void()> bringToForeground) override;
  void StopServing() override;

  bool Listening() const { return server.isListening(); }
  const std::string& SocketPath() const { return socketPath; }

 private:
  void AcceptPending();

  std::string socketPath;
  QLocalServer server;
  platform::MessageTarget* window = nullptr;
  std::function<void()> bringToForeground;
};

// The request to the running instance at `socketPath` as a later process
// sends it: each call one frame, then a bounded wait for the answer.
class LocalRunningInstance : public shell::RunningInstance {
 public:
  static std::unique_ptr<LocalRunningInstance> Connect(const std::string& socketPath);
  ~LocalRunningInstance() override;

  bool Post(std::uint32_t message, const std::string& text) override;
  bool BringToForeground() override;

 private:
  class Connection;
  explicit LocalRunningInstance(std::unique_ptr<Connection> connection);
  bool Send(std::uint32_t message, const std::string& text);

  std::unique_ptr<Connection> connection;
};

}  // namespace ui
