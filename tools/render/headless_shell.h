// The shell's window interfaces without any window system, for running the
// real PlayerApp in a program that shows nothing (the render tool).
//
// The main window is a plain message queue with timers that fire by the
// clock; the face records the figures and titles the application gives it;
// there are no dialogs, no menus to draw, no language packs and no other
// instances. The message loop dispatches what is posted and, between
// messages, asks the owner whether to go on.
//
// Threads: window thread only, except Messages().Post, which any thread may
// call.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/message_queue.h"
#include "platform/timers.h"
#include "shell/dialogs.h"
#include "shell/instance_link.h"
#include "shell/language_pack.h"
#include "shell/main_window.h"
#include "shell/skin_display.h"

namespace render {

// Timers that fire by the steady clock when the loop looks at them.
class ClockTimers : public platform::Timers {
 public:
  explicit ClockTimers(platform::MessageHandler& handler) : procedure(handler) {}
  void Set(std::uint32_t id, std::uint32_t periodMs) override;
  bool Kill(std::uint32_t id) override;
  // Delivers one timer message for every timer whose period has passed.
  void FireDue();

 private:
  using Clock = std::chrono::steady_clock;
  struct Running {
    std::chrono::milliseconds period;
    Clock::time_point due;
  };
  platform::MessageHandler& procedure;
  std::map<std::uint32_t, Running> running;
};

// The face: what the application shows, kept for the owner to read.
class HeadlessSkin : public shell::SkinDisplay {
 public:
  // Called after the application gave a track's figures: a track started.
  std::function<void(std::uint32_t lengthMs, std::uint32_t bitRate, std::uint32_t sampleRate)> onTrackFigures;

  void SetTitle(const std::string& text) override { title = text; }
  void SetMessage(const std::string& text) override { message = text; }
  void SetTrackFigures(std::uint32_t lengthMs, std::uint32_t bitRate, std::uint32_t sampleRate) override {
    if (onTrackFigures) onTrackFigures(lengthMs, bitRate, sampleRate);
  }
  void SetVolume(int) override {}
  void SetShuffle(bool) override {}
  void SetRepeat(bool) override {}
  void SetEqualizer(bool) override {}
  void SetExtraBass(bool) override {}
  void SetPaused(bool) override {}
  void KeyFeedback(std::uint16_t, bool) override {}

  std::string title;
  std::string message;
};

class NoDialogs : public shell::Dialogs {
 public:
  void About() override {}
  void Equalizer() override {}
  void Playlist() override {}
  void Bookmarks() override {}
  void SleepTimer() override {}
  void KeyMapping() override {}
  void GeneralOptions() override {}
  void PlaylistOptions() override {}
  void FileTypes() override {}
  void SetAlarm() override {}
  void Effects() override {}
};

// No other instance is ever found, and none is served.
class NoInstanceLink : public shell::InstanceLink {
 public:
  std::unique_ptr<shell::RunningInstance> FindOrBecomeRunning() override { return nullptr; }
  void Serve(platform::MessageTarget&, std::function<void()>) override {}
  void StopServing() override {}
};

// Every text is the built-in English one.
class NoLanguagePacks : public shell::LanguagePackReader {
 public:
  std::optional<std::map<std::string, std::string, std::less<>>> Read(
      const std::string&, const std::vector<std::string>&) override {
    return std::nullopt;
  }
};

class HeadlessWindow : public shell::MainWindow {
 public:
  explicit HeadlessWindow(platform::MessageHandler& procedure) : queue(&procedure), timers(procedure) {}

  platform::MessageTarget& Messages() override { return queue; }
  platform::Timers& Timers() override { return timers; }
  bool AttachMenuBar(shell::MenuBar&) override { return true; }
  shell::SkinDisplay* CreateSkin(int, int, const std::string&) override { return &skin; }
  shell::Dialogs& DialogLauncher() override { return dialogs; }
  playlist::PlaylistDialogs* PlaylistBoxes() override { return nullptr; }
  void Show() override {}
  void BringToForeground() override {}
  void Redraw() override {}
  bool ActivateWindowBelow() override { return false; }

  platform::MessageQueue queue;
  ClockTimers timers;
  HeadlessSkin skin;
  NoDialogs dialogs;
};

class HeadlessWindowSystem : public shell::WindowSystem {
 public:
  // Asked between messages, at least every kPollMs: true ends the loop.
  std::function<bool()> finished;
  static constexpr int kPollMs = 5;

  shell::Rect WorkArea() override { return shell::Rect{0, 0, 176, 180}; }
  std::unique_ptr<shell::MainWindow> CreateMainWindow(const shell::Rect& area,
                                                      shell::PlayerApp& app) override;
  int RunMessageLoop() override;
  void PostQuit(int exitCode) override;

  HeadlessWindow* Window() { return window; }

 private:
  HeadlessWindow* window = nullptr;  // owned by the application
  bool quit = false;
  int quitCode = 0;
};

}  // namespace render
