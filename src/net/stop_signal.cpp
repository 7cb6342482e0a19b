#include "net/stop_signal.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>

namespace net {

StopSignal::StopSignal() : fd(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

StopSignal::~StopSignal() {
  if (fd >= 0) ::close(fd);
}

void StopSignal::Raise() {
  raised.store(true, std::memory_order_release);
  if (fd >= 0) {
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(fd, &one, sizeof one);
  }
  event.Set();
}

}  // namespace net
