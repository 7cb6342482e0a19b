#include "child_process.h"

#include <fcntl.h>
#include <grp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <sstream>
#include <thread>

namespace net_testing {

std::optional<std::string> FindProgram(const std::string& program) {
  const char* path = std::getenv("PATH");
  std::istringstream folders(path != nullptr ? path : "/usr/bin:/bin");
  std::string folder;
  while (std::getline(folders, folder, ':')) {
    const std::string candidate = (folder.empty() ? "." : folder) + "/" + program;
    if (::access(candidate.c_str(), X_OK) == 0) return candidate;
  }
  return std::nullopt;
}

bool ChildProcess::Start(const std::vector<std::string>& argv, const std::string& logPath,
                         std::optional<std::pair<uid_t, gid_t>> user) {
  if (pid > 0 || argv.empty()) return false;
  std::vector<char*> arguments;
  for (const std::string& argument : argv) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  const int log = ::open(logPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (log < 0) return false;
  const pid_t parent = ::getpid();
  pid = ::fork();
  if (pid == 0) {
    // Only system calls from here to exec: the parent has threads.
    if (user) {
      if (::setgroups(0, nullptr) != 0 || ::setgid(user->second) != 0 || ::setuid(user->first) != 0)
        ::_exit(126);
    }
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(125);
    const int input = ::open("/dev/null", O_RDONLY);
    if (input < 0 || ::dup2(input, 0) < 0 || ::dup2(log, 1) < 0 || ::dup2(log, 2) < 0) ::_exit(124);
    ::execv(arguments[0], arguments.data());
    ::_exit(127);
  }
  ::close(log);
  return pid > 0;
}

bool ChildProcess::Running() {
  if (pid <= 0) return false;
  int status = 0;
  if (::waitpid(pid, &status, WNOHANG) == pid) {
    pid = -1;
    return false;
  }
  return true;
}

void ChildProcess::Terminate(int graceMs) {
  if (!Running()) return;
  ::kill(pid, SIGTERM);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(graceMs);
  while (std::chrono::steady_clock::now() < deadline) {
    if (!Running()) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  ::kill(pid, SIGKILL);
  int status = 0;
  ::waitpid(pid, &status, 0);
  pid = -1;
}

}  // namespace net_testing
