#include "platform/qt/termination_signals.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <atomic>
#include <cerrno>

namespace platform::qt {
namespace {

constexpr int kSignals[] = {SIGTERM, SIGINT, SIGHUP};

std::atomic<int> writeEnd{-1};

void OnSignal(int /*signal*/) {
  const int savedErrno = errno;
  const int end = writeEnd.load();
  if (end >= 0) {
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = ::write(end, &byte, 1);
  }
  errno = savedErrno;
}

}  // namespace

TerminationSignals::TerminationSignals(std::function<void()> callback) : onSignal(std::move(callback)) {
  if (::pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0) return;
  writeEnd.store(pipeEnds[1]);
  notifier = std::make_unique<QSocketNotifier>(pipeEnds[0], QSocketNotifier::Read);
  QObject::connect(notifier.get(), &QSocketNotifier::activated, [this] { Drain(); });
  struct sigaction action {};
  action.sa_handler = OnSignal;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  for (const int signalNumber : kSignals) ::sigaction(signalNumber, &action, nullptr);
}

TerminationSignals::~TerminationSignals() {
  struct sigaction action {};
  action.sa_handler = SIG_DFL;
  sigemptyset(&action.sa_mask);
  for (const int signalNumber : kSignals) ::sigaction(signalNumber, &action, nullptr);
  writeEnd.store(-1);
  notifier.reset();
  for (int& end : pipeEnds) {
    if (end >= 0) ::close(end);
    end = -1;
  }
}

void TerminationSignals::Drain() {
  char bytes[64];
  bool any = false;
  while (::read(pipeEnds[0], bytes, sizeof bytes) > 0) any = true;
  if (any && onSignal) onSignal();
}

}  // namespace platform::qt
