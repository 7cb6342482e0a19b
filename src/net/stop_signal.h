// The one signal that ends a connection, whatever it is waiting for.
//
// The receive thread waits in poll() on its socket, in platform events (room
// in the buffer, a host lookup), and in a short sleep; a reader waits in
// platform events. Raise reaches all of them at once: it sets a flag, writes
// an eventfd that every poll() also watches, and sets a manual-reset event
// that every event wait also watches. A raised signal stays raised.
//
// Threads: Raise from any thread; the rest from any thread as well.
#pragma once

#include <atomic>

#include "platform/event.h"

namespace net {

class StopSignal {
 public:
  StopSignal();
  ~StopSignal();
  StopSignal(const StopSignal&) = delete;
  StopSignal& operator=(const StopSignal&) = delete;

  // False when the system had no eventfd to give; such a signal can't be used.
  bool Valid() const { return fd >= 0; }
  void Raise();
  bool Raised() const { return raised.load(std::memory_order_acquire); }
  // Readable once raised.
  int Descriptor() const { return fd; }
  platform::Event& Event() { return event; }

 private:
  int fd = -1;
  std::atomic<bool> raised{false};
  platform::Event event;
};

}  // namespace net
