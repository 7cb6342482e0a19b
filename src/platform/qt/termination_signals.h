// SIGTERM, SIGINT and SIGHUP as a request to close.
//
// A signal handler may do almost nothing, so it only writes a byte into a
// pipe (the self-pipe); a QSocketNotifier on the other end calls `onSignal`
// on the thread of Qt's event loop, where the program closes as it does for
// any close (its persist sequence runs). A second signal while the first is
// being handled calls `onSignal` again.
//
// Threads: made and destroyed on the thread of Qt's event loop. One object
// at a time per process.
#pragma once

#include <functional>
#include <memory>

class QSocketNotifier;

namespace platform::qt {

class TerminationSignals {
 public:
  explicit TerminationSignals(std::function<void()> onSignal);
  // Gives the three signals back their default action.
  ~TerminationSignals();
  TerminationSignals(const TerminationSignals&) = delete;
  TerminationSignals& operator=(const TerminationSignals&) = delete;

  bool Installed() const { return notifier != nullptr; }

 private:
  void Drain();

  std::function<void()> onSignal;
  int pipeEnds[2] = {-1, -1};
  std::unique_ptr<QSocketNotifier> notifier;
};

}  // namespace platform::qt
