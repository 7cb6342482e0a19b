// The main window's timers over QTimer, keyed by the system's timer ids.
// Each period delivers the timer message (kMessageTimer, wParam the id) to
// the handler, on the window thread.
//
// Threads: the thread of Qt's event loop only.
#pragma once

#include <map>
#include <memory>

#include "platform/message_target.h"
#include "platform/timers.h"

class QTimer;

namespace platform::qt {

class QtTimers : public Timers {
 public:
  explicit QtTimers(MessageHandler& handler);
  ~QtTimers() override;

  void Set(std::uint32_t id, std::uint32_t periodMs) override;
  bool Kill(std::uint32_t id) override;
  bool IsRunning(std::uint32_t id) const;

 private:
  MessageHandler& handler;
  // A killed timer is stopped, not freed, so that a handler may kill the
  // timer whose period it is handling.
  std::map<std::uint32_t, std::unique_ptr<QTimer>> timers;
};

}  // namespace platform::qt
