// A decoder's worker thread, with the handshake of Play: the window thread
// starts the worker and waits until playback has begun, or the worker has
// given up, whichever comes first.
//
// The worker calls Begun() once its output stream is open (a network
// stream's worker calls it at once, so that Play never waits for the
// network); a worker that ends without it makes Start fail. The wait has no
// time limit: the worker's own steps are bounded, and its end always
// releases the wait.
//
// Threads: Start, Join, Running and SetPriority on the owner's (window)
// thread; Begun on the worker.
#pragma once

#include <functional>

#include "platform/event.h"
#include "platform/thread.h"

namespace playback {

class DecodeThread {
 public:
  DecodeThread() = default;
  DecodeThread(const DecodeThread&) = delete;
  DecodeThread& operator=(const DecodeThread&) = delete;
  ~DecodeThread() { Join(); }

  // Joins a worker left over from before, starts `body` at `priority` and
  // waits for Begun or the body's end. True only when Begun came first.
  bool Start(std::function<void()> body, int priority);
  // On the worker: playback has begun.
  void Begun() { begunEvent.Set(); }
  void Join() { thread.Join(); }
  bool Joinable() const { return thread.Joinable(); }
  // A worker that has been started and hasn't ended yet.
  bool Running() const { return thread.Joinable() && !endedEvent.IsSet(); }
  // Applied to a running worker; false when none runs.
  bool SetPriority(int priority) { return Running() && thread.SetPriority(priority); }

 private:
  platform::Thread thread;
  platform::Event begunEvent{true};
  platform::Event endedEvent{true};
};

}  // namespace playback
