#include "platform/timers.h"

#include <algorithm>

namespace platform {

void ManualTimers::Set(std::uint32_t id, std::uint32_t periodMs) {
  running[id] = std::max<std::uint32_t>(periodMs, 1);
}

bool ManualTimers::Kill(std::uint32_t id) {
  return running.erase(id) != 0;
}

std::uint32_t ManualTimers::Period(std::uint32_t id) const {
  const auto found = running.find(id);
  return found == running.end() ? 0 : found->second;
}

bool ManualTimers::Fire(std::uint32_t id) {
  if (!IsRunning(id)) return false;
  if (handler != nullptr) handler->HandleMessage(Message{kMessageTimer, id, 0, nullptr});
  return true;
}

}  // namespace platform
