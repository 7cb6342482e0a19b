// A PlayerApp in the test process, with the real Qt window, the real
// instance link and the real pack reader, in an isolated environment.
#pragma once

#include <cstdlib>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/device_volume.h"
#include "platform/registry.h"
#include "shell/language_pack.h"
#include "shell/player_app.h"
#include "shell/registry_key.h"
#include "shell/ui/local_instance_link.h"
#include "shell/ui/main_window_widget.h"
#include "shell/ui/qt_language.h"
#include "shell/ui/qt_window_system.h"
#include "support/test_environment.h"

namespace testing_support {

// Records what the tests look for, and does what PlayerApp does.
class SpyApp : public shell::PlayerApp {
 public:
  using PlayerApp::PlayerApp;
  void OpenMedia(const std::string& path, bool atStartup) override {
    opened.push_back(path + (atStartup ? " at start" : ""));
    PlayerApp::OpenMedia(path, atStartup);
  }
  void OnAlarm() override { ++alarms; }
  // Records each message the window procedure takes; those in `recordOnly`
  // go no further.
  std::intptr_t HandleMessage(const platform::Message& message) override {
    handled.push_back(message.id);
    if (recordOnly.count(message.id) != 0) return 0;
    return PlayerApp::HandleMessage(message);
  }
  void KeyDown(std::uint32_t key) override {
    keys.push_back("down " + std::to_string(key));
    PlayerApp::KeyDown(key);
  }
  void KeyUp(std::uint32_t key) override {
    keys.push_back("up " + std::to_string(key));
    PlayerApp::KeyUp(key);
  }
  void ShowPlaylist() override {
    ++playlists;
    PlayerApp::ShowPlaylist();
  }

  std::vector<std::string> opened;
  std::vector<std::string> keys;
  std::vector<std::uint32_t> handled;
  std::set<std::uint32_t> recordOnly;
  int alarms = 0;
  int playlists = 0;
};

class GuiAppTest : public IsolatedEnvironmentTest {
 protected:
  void SetUp() override;
  void TearDown() override;

  // Claims the running instance's name, then Init and the main window.
  SpyApp& Start();
  ui::MainWindowWidget& Window() {
    shell::MainWindow* window = app->Window();
    if (window == nullptr) std::abort();  // Start() made it
    return static_cast<ui::MainWindowWidget&>(*window);
  }
  bool Stored(const char* name);

  std::unique_ptr<platform::Registry> registry;
  std::unique_ptr<platform::DeviceVolume> deviceVolume;
  std::unique_ptr<shell::RegistryKey> settingsKey;
  std::unique_ptr<ui::QtWindowSystem> windows;
  std::unique_ptr<ui::LocalInstanceLink> link;
  shell::TranslationFileReader packReader;
  std::unique_ptr<SpyApp> app;
};

}  // namespace testing_support
