#include "shell/process_start.h"

#include <sys/stat.h>
#include <unistd.h>

#include "platform/local_time.h"
#include "platform/paths.h"
#include "platform/registry.h"
#include "platform/text.h"
#include "shell/main_window.h"
#include "shell/player_app.h"
#include "shell/registry_key.h"

namespace shell {

bool IsStaleAlarm(RegistryKey& settingsKey, std::uint64_t now) {
  unsigned char bytes[8] = {};
  std::size_t size = sizeof bytes;
  if (!settingsKey.ReadBinary("Alarm", bytes, size)) return false;
  std::uint64_t alarm = 0;
  for (int k = 7; k >= 0; --k) alarm = alarm << 8 | bytes[k];
  const std::uint64_t distance = alarm > now ? alarm - now : now - alarm;
  return distance >= kAlarmWindow;
}

std::string CommandLineFromArguments(const std::vector<std::string>& arguments) {
  std::string line;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (i != 0) line += ' ';
    line += arguments[i];
  }
  if (line.empty() || line[0] == '/' || platform::EqualsIgnoreCase(line, "TSAlarm")) return line;
  struct stat info {};
  if (::stat(line.c_str(), &info) != 0) return line;
  char folder[4096];
  if (::getcwd(folder, sizeof folder) == nullptr) return line;
  return platform::JoinPath(folder, line);
}

int RunProcess(const std::string& commandLine, const ProcessServices& process) {
  const Rect workArea = process.windows.WorkArea();

  auto settingsKey = std::make_unique<RegistryKey>(process.registry);
  if (!settingsKey->Bind(platform::RegistryRoot::LocalMachine, kSettingsKeyPath)) return 0;

  if (platform::EqualsIgnoreCase(commandLine, "TSAlarm")) {
    const std::uint64_t now = process.localTimeNow ? process.localTimeNow() : platform::LocalFileTimeNow();
    if (IsStaleAlarm(*settingsKey, now)) return 0;
  }

  const ShellServices services{process.registry,  *settingsKey,        process.windows,
                               process.instances, process.packReader,  process.nativeLanguageNames,
                               process.formats,   process.deviceVolume};
  std::unique_ptr<PlayerApp> app =
      process.makeApp ? process.makeApp(services) : std::make_unique<PlayerApp>(services);
  if (!app) return 0;
  if (app->HandOffToRunningInstance(commandLine)) return 0;
  if (!app->Init()) return 0;
  if (!app->CreateMainWindow(workArea.x, workArea.y, workArea.width, workArea.height)) return 0;

  MainWindow* window = app->Window();
  window->Show();
  window->BringToForeground();
  window->Redraw();
  std::unique_ptr<RemotePresence> presence = process.publish ? process.publish(*app) : nullptr;
  app->OpenMedia(commandLine, true);
  app->StartOfPlaybackDecision();
  app->Run();
  presence.reset();
  app.reset();
  settingsKey.reset();
  return 0;
}

}  // namespace shell
