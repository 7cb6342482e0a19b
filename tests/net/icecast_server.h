// A real Icecast 2 server for the tests, on a free loopback port.
//
// Start writes a configuration into a temporary folder (its own log and pid
// files; nothing under /etc or /var), starts icecast2 there, and waits until
// it accepts connections. Run as root, the server runs as "nobody", since
// Icecast refuses to run as root. The mounts /test.mp3 and /live.mp3 insert
// their titles every kMetaInterval bytes. Stop, or the destructor, ends it.
//
// IcecastSource is a source client that speaks Icecast's SOURCE method, so
// a test knows every byte that the server received.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "net/socket_io.h"

namespace net_testing {

// A program that a test starts and is sure to end: Terminate (or the
// destructor) sends SIGTERM, waits, then SIGKILL; the kernel kills the child
// with the test's thread, so a test that crashes leaves no server behind.
// The full path of `program` on PATH, or nullopt.
std::optional<std::string> FindProgram(const std::string& program);

class ChildProcess {
 public:
  ChildProcess() = default;
  ~ChildProcess() { Terminate(); }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  // Starts `argv` with standard output and error going to `logPath`. With
  // `user` set, the child runs as that user (the caller must be root).
  bool Start(const std::vector<std::string>& argv, const std::string& logPath,
             std::optional<std::pair<uid_t, gid_t>> user = std::nullopt);
  bool Running();
  // Ends the child: SIGTERM, up to `graceMs` for it to leave, then SIGKILL.
  void Terminate(int graceMs = 2000);
  pid_t Pid() const { return pid; }

 private:
  pid_t pid = -1;
};

class IcecastServer {
 public:
  static constexpr std::uint32_t kMetaInterval = 4096;
  static constexpr const char* kSourcePassword = "sourcepass";
  static constexpr const char* kAdminPassword = "adminpass";

  // Why the server can't be run here (icecast2 missing), or "" when it can.
  static std::string WhyUnavailable();

  IcecastServer() = default;
  ~IcecastServer() { Stop(); }

  // False with `error` set when the server didn't come up.
  bool Start(std::string& error);
  void Stop();

  std::uint16_t Port() const { return port; }
  std::string Url(std::string_view mount) const;
  // Sets the title of an MP3 mount through the admin interface.
  bool UpdateTitle(std::string_view mount, std::string_view title, std::string& error);
  // Polls until `mount` answers a listener with status 200.
  bool WaitForMount(std::string_view mount, int timeoutMs);
  std::string Log() const;

 private:
  bool WriteConfiguration();
  bool WaitUntilListening(int timeoutMs);

  // A folder of its own; under /tmp when the server runs as "nobody" and
  // the usual temporary folder is closed to other users.
  class ServerFolder {
   public:
    ServerFolder();
    ~ServerFolder();
    const std::string& Path() const { return path; }
    std::string File(const std::string& name) const { return path + "/" + name; }

   private:
    std::string path;
  };

  ServerFolder folder;
  ChildProcess process;
  std::uint16_t port = 0;
};

class IcecastSource {
 public:
  // Connects as the source of `mount`; false when the server refused it.
  bool Connect(std::uint16_t port, std::string_view mount, std::string_view contentType);
  bool Send(std::string_view bytes);
  // Sends in pieces with a pause between them, as a live encoder would.
  bool SendPaced(std::string_view bytes, std::size_t piece, int pauseMs);
  void Close() { socket.Close(); }

 private:
  net::Socket socket;
  net::StopSignal stop;
};

std::string Base64(std::string_view bytes);
std::string UrlEncode(std::string_view text);
// One HTTP exchange on 127.0.0.1: sends `request`, returns all that came back.
std::string HttpExchange(std::uint16_t port, const std::string& request, int timeoutMs);

}  // namespace net_testing
