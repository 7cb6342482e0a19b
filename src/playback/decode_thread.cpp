#include "playback/decode_thread.h"

#include <utility>

namespace playback {

bool DecodeThread::Start(std::function<void()> body, int priority) {
  thread.Join();
  begunEvent.Reset();
  endedEvent.Reset();
  const bool started = thread.Start(
      [this, work = std::move(body)] {
        work();
        endedEvent.Set();
      },
      priority);
  if (!started) {
    endedEvent.Set();
    return false;
  }
  if (platform::WaitForAny({&begunEvent, &endedEvent}) != 0) {
    thread.Join();
    return false;
  }
  return true;
}

}  // namespace playback
