// The application under test with the plain fakes of shell_fakes.h: a
// private registry, device volume and format registry, and the start as the
// process makes it. Shared by the shell's test programs.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/device_volume.h"
#include "platform/registry.h"
#include "playback/format_registry.h"
#include "playback/playback_settings.h"
#include "shell/player_app.h"
#include "shell/registry_key.h"
#include "shell/window_messages.h"
#include "shell_fakes.h"
#include "support/test_environment.h"

namespace shell_testing {

inline constexpr platform::RegistryRoot kMachine = platform::RegistryRoot::LocalMachine;

// An application whose OpenMedia and handled messages are visible.
class SpyApp : public shell::PlayerApp {
 public:
  using PlayerApp::PlayerApp;
  void OpenMedia(const std::string& path, bool atStartup) override {
    opened.push_back(path + (atStartup ? " at start" : ""));
    PlayerApp::OpenMedia(path, atStartup);
  }
  std::intptr_t HandleMessage(const platform::Message& message) override {
    handled.push_back(message.id);
    return PlayerApp::HandleMessage(message);
  }
  std::vector<std::string> opened;
  std::vector<std::uint32_t> handled;  // ids, in the order the window procedure took them
};

class PlayerAppTest : public testing_support::IsolatedEnvironmentTest {
 protected:
  void SetUp() override {
    IsolatedEnvironmentTest::SetUp();
    registry = std::make_unique<platform::Registry>(Root().File("config/tavrinsonic/registry.reg"));
    deviceVolume = std::make_unique<platform::DeviceVolume>(*registry);
    settingsKey = std::make_unique<shell::RegistryKey>(*registry);
    ASSERT_TRUE(settingsKey->Bind(kMachine, shell::kSettingsKeyPath));
    names = [](std::uint32_t id) -> std::optional<std::string> {
      if (id == 0x407) return "Deutsch";
      return std::nullopt;
    };
  }
  void TearDown() override {
    app.reset();
    playback::PlaybackSettings::Write(playback::Playback().startOnLaunch, false);
    playback::PlaybackSettings::Write(playback::Playback().continueFromLastPosition, false);
    IsolatedEnvironmentTest::TearDown();
  }

  shell::ShellServices Services() {
    return shell::ShellServices{*registry, *settingsKey, windows,  link,
                                packs,     names,        &formats, deviceVolume.get()};
  }
  // Init and the main window, as the process start makes them.
  SpyApp& Start() {
    app = std::make_unique<SpyApp>(Services());
    EXPECT_TRUE(app->Init());
    EXPECT_TRUE(app->CreateMainWindow(0, 0, 480, 640));
    return *app;
  }
  testing_support::FakeMainWindow& Window() { return *windows.window; }
  std::intptr_t Send(std::uint32_t id, std::uintptr_t wParam = 0, std::intptr_t lParam = 0) {
    return app->HandleMessage(platform::Message{id, wParam, lParam, nullptr});
  }
  std::intptr_t Command(std::uint32_t id) { return Send(shell::kMessageCommand, id); }
  bool Stored(const char* name) {
    return registry->GetValue(kMachine, shell::kSettingsKeyPath, name).has_value();
  }
  std::uint32_t StoredDword(const char* name) {
    std::uint32_t value = 0xDEADBEEF;
    settingsKey->ReadDword(name, value);
    return value;
  }
  shell::MenuItem& MainMenu() { return *app->Menu().Popup(shell::kPopupMainMenu); }
  std::string InstallDirectory() { return Root().File("data/tavrinsonic"); }
  void MakeInstallFile(const std::string& name) {
    std::filesystem::create_directories(InstallDirectory());
    testing_support::WriteFile(InstallDirectory() + "/" + name, "pack");
  }

  std::unique_ptr<platform::Registry> registry;
  std::unique_ptr<platform::DeviceVolume> deviceVolume;
  std::unique_ptr<shell::RegistryKey> settingsKey;
  testing_support::FakeWindowSystem windows;
  testing_support::FakeInstanceLink link;
  testing_support::FakePackReader packs;
  shell::NativeLanguageNames names;
  playback::FormatRegistry formats;
  std::unique_ptr<SpyApp> app;
};

}  // namespace shell_testing
