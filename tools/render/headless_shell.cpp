#include "headless_shell.h"

#include <algorithm>
#include <vector>

#include "shell/player_app.h"

namespace render {

void ClockTimers::Set(std::uint32_t id, std::uint32_t periodMs) {
  const std::chrono::milliseconds period(std::max<std::uint32_t>(periodMs, 1));
  running[id] = Running{period, Clock::now() + period};
}

bool ClockTimers::Kill(std::uint32_t id) {
  return running.erase(id) != 0;
}

// A handler may set or kill timers, so the due ones are collected first and
// each is looked up again before it fires.
void ClockTimers::FireDue() {
  const Clock::time_point now = Clock::now();
  std::vector<std::uint32_t> due;
  for (const auto& [id, timer] : running) {
    if (timer.due <= now) due.push_back(id);
  }
  for (const std::uint32_t id : due) {
    const auto found = running.find(id);
    if (found == running.end() || found->second.due > now) continue;
    found->second.due = now + found->second.period;
    procedure.HandleMessage(platform::Message{platform::kMessageTimer, id, 0, nullptr});
  }
}

std::unique_ptr<shell::MainWindow> HeadlessWindowSystem::CreateMainWindow(const shell::Rect& /*area*/,
                                                                          shell::PlayerApp& app) {
  auto made = std::make_unique<HeadlessWindow>(app);
  window = made.get();
  return made;
}

int HeadlessWindowSystem::RunMessageLoop() {
  quit = false;
  while (!quit && window != nullptr) {
    window->queue.WaitAndDispatch(kPollMs);
    window->timers.FireDue();
    if (!quit && finished && finished()) quit = true;
  }
  return quitCode;
}

void HeadlessWindowSystem::PostQuit(int exitCode) {
  quit = true;
  quitCode = exitCode;
}

}  // namespace render
