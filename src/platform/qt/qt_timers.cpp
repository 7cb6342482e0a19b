#include "platform/qt/qt_timers.h"

#include <QTimer>
#include <algorithm>
#include <limits>

namespace platform::qt {

QtTimers::QtTimers(MessageHandler& target) : handler(target) {}

QtTimers::~QtTimers() = default;

void QtTimers::Set(std::uint32_t id, std::uint32_t periodMs) {
  std::unique_ptr<QTimer>& timer = timers[id];
  if (!timer) {
    timer = std::make_unique<QTimer>();
    timer->setTimerType(Qt::PreciseTimer);
    QObject::connect(timer.get(), &QTimer::timeout, [this, id] {
      handler.HandleMessage(Message{kMessageTimer, id, 0, nullptr});
    });
  }
  const auto interval = std::min<std::uint32_t>(std::max<std::uint32_t>(periodMs, 1),
                                                static_cast<std::uint32_t>(std::numeric_limits<int>::max()));
  timer->start(static_cast<int>(interval));
}

bool QtTimers::Kill(std::uint32_t id) {
  const auto found = timers.find(id);
  if (found == timers.end() || !found->second->isActive()) return false;
  found->second->stop();
  return true;
}

bool QtTimers::IsRunning(std::uint32_t id) const {
  const auto found = timers.find(id);
  return found != timers.end() && found->second->isActive();
}

}  // namespace platform::qt
