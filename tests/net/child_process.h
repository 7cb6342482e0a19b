// A program that a test starts and is sure to end: Terminate (or the
// destructor) sends SIGTERM, waits, then SIGKILL; and the child is told by
// the kernel to die with the test's main thread, so a test that crashes
// leaves no server behind.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace net_testing {

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

}  // namespace net_testing
