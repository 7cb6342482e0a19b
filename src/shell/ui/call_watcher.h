// Phone calls from ModemManager, as the messages 10053 and 10054.
//
// On a Linux phone the modem service, org.freedesktop.ModemManager1 on the
// system bus, lists each modem's calls (interface ...Modem.Voice, property
// Calls) and each call's State (interface ...Call). The watcher reads them
// when the service appears, when it signals a change (a call added or
// deleted, a state changed, properties changed) and every few seconds
// besides, and gives what it reads to a shell::CallTracker, whose messages
// it posts to the main window (see call_tracker.h for which).
//
// Without the service (a desktop) nothing is read and nothing is said; when
// the service appears later (its name gets an owner) it is picked up, and
// when it goes away its calls are forgotten. Each read waits at most half a
// second for the service.
//
// Threads: the thread of the Qt event loop; posting is thread-safe.
#pragma once

#include <QDBusConnection>
#include <QTimer>
#include <map>
#include <memory>
#include <string>

#include "shell/call_tracker.h"

class QDBusServiceWatcher;

namespace platform {
class MessageTarget;
}

namespace ui {

class CallWatcher {
 public:
  CallWatcher(platform::MessageTarget& target, const QDBusConnection& bus);
  ~CallWatcher();
  CallWatcher(const CallWatcher&) = delete;
  CallWatcher& operator=(const CallWatcher&) = delete;

  // True while ModemManager is on the bus.
  bool ServicePresent() const { return present; }

 private:
  void Appeared();
  void Vanished();
  void Refresh();
  // The calls of every modem with their states; false when the service
  // didn't answer.
  bool ReadCalls(std::map<std::string, int>& calls);

  platform::MessageTarget& target;
  QDBusConnection bus;
  std::unique_ptr<QDBusServiceWatcher> service;
  QTimer changed;  // a signal came: read soon, once for a burst
  QTimer poll;
  shell::CallTracker tracker;
  bool present = false;
};

// A watcher on the system bus; null when there is no system bus.
std::unique_ptr<CallWatcher> WatchCallsOnSystemBus(platform::MessageTarget& target);

}  // namespace ui
