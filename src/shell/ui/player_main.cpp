// The player's entry point. For now it binds the settings key, loads the
// settings and saves them again, so that a start leaves a complete, clean
// registry file behind.
#include <cstdio>

#include "effects/equalizer_values.h"
#include "platform/paths.h"
#include "platform/registry.h"
#include "playback/playback_settings.h"
#include "playlist/playlist_settings.h"
#include "shell/app_settings.h"
#include "shell/registry_key.h"
#include "shell/settings_store.h"
#include "skin/skin_action_table.h"

int main() {
  platform::Registry& registry = platform::Registry::Process();
  shell::RegistryKey settingsKey(registry);
  if (!settingsKey.Bind(platform::RegistryRoot::LocalMachine, shell::kSettingsKeyPath)) return 0;

  platform::EnsureInstalled(registry, platform::ResourceDirectory());

  shell::AppSettings app;
  app.loadPath = platform::HomeDirectory();
  playlist::PlaylistSettings playlistSettings;
  effects::EqualizerValues equalizer;
  const shell::SettingsTargets targets{app, playlistSettings, equalizer, playback::Playback(),
                                       skin::Actions()};
  shell::LoadSettings(registry, targets);
  shell::SaveSettings(registry, targets);
  std::printf("Tavrinsonic: settings loaded and saved in %s\n", registry.FilePath().c_str());
  return 0;
}
