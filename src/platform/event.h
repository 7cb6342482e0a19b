// Events as the phone platform has them: a flag that threads wait on.
//
// A manual-reset event stays set until Reset; an auto-reset event lets one
// waiter through and clears itself. WaitForAny waits on several events at once
// and reports the first that is set, by its index.
//
// All events share one process-wide lock and condition variable. Waits are
// few and short-lived in this program (mixing threads and their streams), so
// a Set that wakes every waiter costs nothing that matters, and the design
// stays obviously correct.
#pragma once

#include <cstddef>
#include <initializer_list>

namespace platform {

inline constexpr int kInfinite = -1;

class Event {
 public:
  explicit Event(bool manualReset = true, bool initiallySet = false);
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;

  void Set();
  void Reset();
  bool IsSet() const;

  // Waits until the event is set or `timeoutMs` has passed (kInfinite waits for
  // ever). True if it was set; an auto-reset event is then cleared.
  bool Wait(int timeoutMs = kInfinite);

 private:
  friend int WaitForAny(Event* const* events, std::size_t count, int timeoutMs);
  bool TakeLocked();  // with the shared lock held

  const bool manualReset_;
  bool set_;  // guarded by the shared lock
};

// Index of the first set event in `events`, or -1 after `timeoutMs`. An
// auto-reset event that is reported is cleared; the others are left alone.
int WaitForAny(Event* const* events, std::size_t count, int timeoutMs = kInfinite);
int WaitForAny(std::initializer_list<Event*> events, int timeoutMs = kInfinite);

// Sleeps the calling thread, as the platform's Sleep.
void SleepMs(int milliseconds);

}  // namespace platform
