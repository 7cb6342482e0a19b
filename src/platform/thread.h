// A worker thread with the phone platform's priority values.
//
// Priority values run from 0 (time critical) to 7 (idle); 3 is normal. On
// Linux they become nice values of the thread; raising a priority above normal
// needs a privilege that a desktop user seldom has, and a refusal is ignored,
// as the system asks ("best effort").
//
// Threads: Start, Join and SetPriority are called by the owner's thread; the
// body runs on the new thread.
#pragma once

#include <atomic>
#include <functional>
#include <thread>

namespace platform {

inline constexpr int kPriorityTimeCritical = 0;
inline constexpr int kPriorityNormal = 3;
inline constexpr int kPriorityIdle = 7;

// Nice value for a platform priority value; values out of range are clamped.
int NiceValueForPriority(int priority);

// Applies a priority to the calling thread. False if the system refused.
bool SetCurrentThreadPriority(int priority);

class Thread {
 public:
  Thread() = default;
  ~Thread();  // joins a thread that is still running
  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;

  // Starts `body` at `priority`. False if a thread is already running or the
  // system can't make one.
  bool Start(std::function<void()> body, int priority = kPriorityNormal);
  // Waits for the thread to end; does nothing when none was started.
  void Join();
  // Lets a running thread go on by itself and frees the object for a new
  // Start. Only for a body that touches nothing its owner may destroy (a
  // worker that gave up waiting for a slow read, for instance).
  void Detach();
  bool Joinable() const { return thread_.joinable(); }
  // True when called from this thread itself.
  bool IsCurrent() const;
  // Applies a priority to the running thread; false if none runs or the system refused.
  bool SetPriority(int priority);

 private:
  std::thread thread_;
  std::atomic<int> nativeId_{0};  // kernel thread id once the body has begun
};

}  // namespace platform
