// Plain stand-ins for what the window system, the other instances and the
// language packs give PlayerApp, so that the shell runs in a test without Qt.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/message_queue.h"
#include "platform/timers.h"
#include "playlist/playlist_dialogs.h"
#include "playlist/playlist_view.h"
#include "shell/bookmark_store.h"
#include "shell/dialogs.h"
#include "shell/instance_link.h"
#include "shell/language_pack.h"
#include "shell/main_window.h"
#include "shell/menu.h"
#include "shell/skin_display.h"

namespace testing_support {

class FakeSkin : public shell::SkinDisplay {
 public:
  void SetTitle(const std::string& text) override { title = text; }
  void SetMessage(const std::string& text) override { message = text; }
  void SetTrackFigures(std::uint32_t lengthMs, std::uint32_t bits, std::uint32_t rate) override {
    length = lengthMs;
    bitRate = bits;
    sampleRate = rate;
  }
  void SetVolume(int value) override { volume = value; }
  void SetShuffle(bool on) override { shuffle = on; }
  void SetRepeat(bool on) override { repeat = on; }
  void SetEqualizer(bool on) override { equalizer = on; }
  void SetExtraBass(bool on) override { extraBass = on; }
  void SetPaused(bool on) override { paused = on; }
  void KeyFeedback(std::uint16_t key, bool down) override { feedback.emplace_back(key, down); }

  std::string title, message;
  std::uint32_t length = 0, bitRate = 0, sampleRate = 0;
  int volume = -1;
  bool shuffle = false, repeat = false, equalizer = false, extraBass = false, paused = false;
  std::vector<std::pair<std::uint16_t, bool>> feedback;  // keys down (true) and up, in order
};

class FakeDialogs : public shell::Dialogs {
 public:
  void About() override { opened.push_back("About"); }
  void Equalizer() override { opened.push_back("Equalizer"); }
  void Playlist() override { opened.push_back("Playlist"); }
  void Bookmarks() override { opened.push_back("Bookmarks"); }
  void SleepTimer() override { opened.push_back("SleepTimer"); }
  void KeyMapping() override { opened.push_back("KeyMapping"); }
  void GeneralOptions() override { opened.push_back("GeneralOptions"); }
  void PlaylistOptions() override { opened.push_back("PlaylistOptions"); }
  void FileTypes() override { opened.push_back("FileTypes"); }
  void SetAlarm() override { opened.push_back("SetAlarm"); }
  void Effects() override { opened.push_back("Effects"); }
  std::vector<std::string> opened;
};

// The picker and boxes of the list's fills: they record what was asked and
// add the paths a test gives them.
class FakeListDialogs : public playlist::PlaylistDialogs {
 public:
  int RunPicker(PickerMode mode, bool replace, playlist::PlaylistView& view) override;
  void ScanFolder(const std::string& folder, playlist::PlaylistView& view) override;
  std::optional<std::string> EditText(int, const std::string&) override { return std::nullopt; }
  std::optional<std::string> AskSavePath() override { return std::nullopt; }

  std::vector<std::string> asked;
  std::vector<std::string> picked;  // what the picker delivers
};

class FakeMainWindow : public shell::MainWindow {
 public:
  explicit FakeMainWindow(platform::MessageHandler& handler)
      : procedure(handler), queue(&handler), timers(&handler) {}

  platform::MessageTarget& Messages() override { return queue; }
  platform::Timers& Timers() override { return timers; }
  bool AttachMenuBar(shell::MenuBar& menuBar) override {
    bar = &menuBar;
    return attachSucceeds;
  }
  shell::SkinDisplay* CreateSkin(int width, int height, const std::string& /*directory*/) override {
    skinWidth = width;
    skinHeight = height;
    return skinSucceeds ? &skin : nullptr;
  }
  shell::Dialogs& DialogLauncher() override { return dialogs; }
  playlist::PlaylistDialogs* PlaylistBoxes() override { return &listDialogs; }
  void Show() override { events.push_back("Show"); }
  void BringToForeground() override { events.push_back("BringToForeground"); }
  void Redraw() override { events.push_back("Redraw"); }
  bool ActivateWindowBelow() override {
    events.push_back("ActivateWindowBelow");
    return true;
  }

  platform::MessageHandler& procedure;
  platform::MessageQueue queue;
  platform::ManualTimers timers;
  FakeSkin skin;
  FakeDialogs dialogs;
  FakeListDialogs listDialogs;
  shell::MenuBar* bar = nullptr;
  int skinWidth = 0, skinHeight = 0;
  bool attachSucceeds = true, skinSucceeds = true;
  std::vector<std::string> events;
};

// The message loop dispatches what is queued until a quit, or until the
// queue runs dry (then it returns -1, so a test can't hang).
class FakeWindowSystem : public shell::WindowSystem {
 public:
  shell::Rect WorkArea() override { return workArea; }
  std::unique_ptr<shell::MainWindow> CreateMainWindow(const shell::Rect& area,
                                                      shell::PlayerApp& app) override;
  int RunMessageLoop() override;
  void PostQuit(int exitCode) override {
    quit = true;
    quitCode = exitCode;
  }

  shell::Rect workArea{0, 0, 480, 640};
  shell::Rect createdAt;
  FakeMainWindow* window = nullptr;  // owned by the application
  bool failCreation = false;
  bool failMenuBar = false, failSkin = false;  // what the next window's calls answer
  bool quit = false;
  int quitCode = 0;
  int loops = 0;
  // Posted to the window when the loop starts, as the user or the system would.
  std::vector<std::uint32_t> postedAtStart;
  // What the window had seen when the loop started.
  std::vector<std::string> eventsAtLoop, listDialogsAtLoop, openedAtLoop;
  // Called when the loop starts, for what a test wants to look at then.
  std::function<void()> onLoop;
};

class FakeRunningInstance : public shell::RunningInstance {
 public:
  explicit FakeRunningInstance(std::vector<std::string>& log) : record(log) {}
  bool Post(std::uint32_t message, const std::string& text) override {
    record.push_back("Post " + std::to_string(message) + (text.empty() ? "" : " " + text));
    return true;
  }
  bool BringToForeground() override {
    record.push_back("BringToForeground");
    return true;
  }

 private:
  std::vector<std::string>& record;
};

class FakeInstanceLink : public shell::InstanceLink {
 public:
  std::unique_ptr<shell::RunningInstance> FindOrBecomeRunning() override {
    ++searches;
    if (!anotherRuns) return nullptr;
    return std::make_unique<FakeRunningInstance>(handedOver);
  }
  void Serve(platform::MessageTarget& window, std::function<void()> raise) override {
    served = &window;
    bringToForeground = std::move(raise);
  }
  void StopServing() override {
    served = nullptr;
    bringToForeground = nullptr;
  }

  bool anotherRuns = false;
  int searches = 0;
  std::vector<std::string> handedOver;
  platform::MessageTarget* served = nullptr;
  std::function<void()> bringToForeground;
};

// Packs by file name; a name mapped to nullopt is a damaged file.
class FakePackReader : public shell::LanguagePackReader {
 public:
  using Texts = std::map<std::string, std::string, std::less<>>;
  std::optional<Texts> Read(const std::string& path, const std::vector<std::string>& keys) override;

  std::map<std::string, std::optional<Texts>> packs;
  std::vector<std::string> reads;
};

class FakeBookmarkStore : public shell::BookmarkStore {
 public:
  void Replace(int, const std::string&, std::int32_t, const std::string&) override {}
  void Add(const std::string&, std::int32_t, const std::string&) override {}
  bool Get(int, std::string*, std::string*, std::int32_t*) override { return false; }
  int Load() override { return count; }
  void SetLastPlayed(const std::string& path, std::int32_t seconds, const std::string& title) override {
    lastPlayed.push_back(path + " " + std::to_string(seconds) + " " + title);
  }
  bool TakeLastPlayed(std::string& path, std::int32_t& seconds) override {
    ++takes;
    if (!hasLastPlayed) return false;
    path = "/music/last.mp3";
    seconds = 42;
    return true;
  }

  int count = 0;
  bool hasLastPlayed = false;
  int takes = 0;
  std::vector<std::string> lastPlayed;
};

}  // namespace testing_support
