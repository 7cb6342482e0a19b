#include "platform/event.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace platform {
namespace {

std::mutex& SharedLock() {
  static std::mutex lock;
  return lock;
}

std::condition_variable& SharedCondition() {
  static std::condition_variable condition;
  return condition;
}

}  // namespace

Event::Event(bool manualReset, bool initiallySet) : manualReset_(manualReset), set_(initiallySet) {}

void Event::Set() {
  {
    std::lock_guard guard(SharedLock());
    set_ = true;
  }
  SharedCondition().notify_all();
}

void Event::Reset() {
  std::lock_guard guard(SharedLock());
  set_ = false;
}

bool Event::IsSet() const {
  std::lock_guard guard(SharedLock());
  return set_;
}

bool Event::TakeLocked() {
  if (!set_) return false;
  if (!manualReset_) set_ = false;
  return true;
}

bool Event::Wait(int timeoutMs) {
  Event* self = this;
  return WaitForAny(&self, 1, timeoutMs) == 0;
}

int WaitForAny(Event* const* events, std::size_t count, int timeoutMs) {
  std::unique_lock lock(SharedLock());
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  for (;;) {
    for (std::size_t i = 0; i < count; ++i) {
      if (events[i]->TakeLocked()) return static_cast<int>(i);
    }
    if (timeoutMs == kInfinite) {
      SharedCondition().wait(lock);
    } else if (SharedCondition().wait_until(lock, deadline) == std::cv_status::timeout) {
      for (std::size_t i = 0; i < count; ++i) {
        if (events[i]->TakeLocked()) return static_cast<int>(i);
      }
      return -1;
    }
  }
}

int WaitForAny(std::initializer_list<Event*> events, int timeoutMs) {
  return WaitForAny(events.begin(), events.size(), timeoutMs);
}

void SleepMs(int milliseconds) {
  if (milliseconds > 0) std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
  else std::this_thread::yield();
}

}  // namespace platform
