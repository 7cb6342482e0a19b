// Window timers by id, as the platform's SetTimer and KillTimer.
//
// A timer belongs to a window and is named by a number the system chooses
// (33 for the status line, 138 for the alarm's fade-in...). Setting a timer
// that runs restarts it with the new period. Each period that passes delivers
// one timer message (WM_TIMER, wParam the id) to the window's handler, on the
// window thread; a timer that is killed delivers nothing more.
//
// The Qt window implements this over QTimer; ManualTimers is the plain
// implementation for tests, fired by hand.
//
// Threads: window thread only.
#pragma once

#include <cstdint>
#include <map>

#include "platform/message_target.h"

namespace platform {

inline constexpr std::uint32_t kMessageTimer = 0x0113;  // WM_TIMER

class Timers {
 public:
  virtual ~Timers() = default;
  // Starts (or restarts) timer `id` with a period of `periodMs` (at least 1).
  virtual void Set(std::uint32_t id, std::uint32_t periodMs) = 0;
  // Stops timer `id`; false when it wasn't running.
  virtual bool Kill(std::uint32_t id) = 0;
};

// Timers that fire only when a test says so.
class ManualTimers : public Timers {
 public:
  explicit ManualTimers(MessageHandler* target = nullptr) : handler(target) {}
  void SetHandler(MessageHandler* newHandler) { handler = newHandler; }

  void Set(std::uint32_t id, std::uint32_t periodMs) override;
  bool Kill(std::uint32_t id) override;

  bool IsRunning(std::uint32_t id) const { return running.count(id) != 0; }
  // Period of a running timer, 0 when it doesn't run.
  std::uint32_t Period(std::uint32_t id) const;
  // Delivers one period of a running timer; false (and nothing delivered)
  // when it doesn't run.
  bool Fire(std::uint32_t id);

 private:
  MessageHandler* handler;
  std::map<std::uint32_t, std::uint32_t> running;  // id to period
};

}  // namespace platform
