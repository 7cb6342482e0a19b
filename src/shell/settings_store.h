// The bulk load and save of the settings key.
//
// All persistent settings live in HKEY_LOCAL_MACHINE\SOFTWARE\Halvorkeep\Tavrinsonic.
// LoadSettings reads them once, when the main window is made; SaveSettings
// writes every value, at exit and after most dialogs. Failures are never
// shown: a value that can't be read keeps its default, a write that fails is
// ignored. The values and their bit layouts are in settings_store.cpp.
//
// Threads: window thread only.
#pragma once

#include <string_view>

#include "effects/equalizer_settings.h"
#include "platform/registry.h"
#include "playback/playback_settings.h"
#include "playlist/playlist_settings.h"
#include "shell/app_settings.h"
#include "skin/skin_action_table.h"

namespace shell {

// The objects whose fields the settings fill.
struct SettingsTargets {
  AppSettings& app;
  playlist::PlaylistSettings& playlist;
  effects::EqualizerSettings& equalizer;
  playback::PlaybackSettings& playback;
  skin::SkinActionTable& actions;
};

// What a load does besides reading values: the file associations.
class SettingsHooks {
 public:
  virtual ~SettingsHooks() = default;
  // On every start: the media classes are registered.
  virtual void RegisterMediaClasses() {}
  // On the first run: an extension is associated with the program.
  virtual void AssociateExtension(std::string_view /*extension*/) {}
};

// Reads every value; returns false only when the key can't be created or opened.
bool LoadSettings(platform::Registry& registry, const SettingsTargets& targets,
                  SettingsHooks* hooks = nullptr);
// Writes every value; returns false only when the key can't be created or opened.
bool SaveSettings(platform::Registry& registry, const SettingsTargets& targets);

// WndSettings packing, exposed for tests of the bit layout.
struct WindowFlags {
  std::uint32_t flags = 0;
  std::uint32_t flags2 = 0;
};
WindowFlags PackWindowFlags(const SettingsTargets& targets);
void UnpackWindowFlags(const WindowFlags& packed, const SettingsTargets& targets,
                       std::uint32_t& equalizerEnabled);
void ApplyFirstRunValues(const SettingsTargets& targets);

}  // namespace shell
