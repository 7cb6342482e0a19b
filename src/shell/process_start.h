// The process start, in its fixed order:
//   1. the work area;
//   2. the settings key (a failure ends the process silently, with 0);
//   3. for the command line "TSAlarm": the stale-alarm test, which ends the
//      process silently when the stored alarm is 60 seconds or more away
//      from now;
//   4. PlayerApp;
//   5. the hand-off: a later process gives its command line to the running
//      one and ends;
//   6. Init, 7. CreateMainWindow at the work area (a failure ends silently);
//   8. show, bring to the front, redraw;
//   9. OpenMedia with the command line;
//  10. the start-of-playback decision;
//  11. the message loop; then PlayerApp goes, then the settings key.
// The process always ends with 0: no start-up failure shows anything.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "shell/language_menu.h"
#include "shell/remote_status.h"

namespace platform {
class DeviceVolume;
class Registry;
}  // namespace platform

namespace playback {
class FormatRegistry;
}

namespace shell {

class InstanceLink;
class LanguagePackReader;
class PlayerApp;
class RegistryKey;
class WindowSystem;
struct ShellServices;

struct ProcessServices {
  platform::Registry& registry;
  WindowSystem& windows;
  InstanceLink& instances;
  LanguagePackReader& packReader;
  NativeLanguageNames nativeLanguageNames;
  // The format registry to fill; null for the process's own.
  playback::FormatRegistry* formats = nullptr;
  // The local time as a FILETIME; tests set their own clock.
  std::function<std::uint64_t()> localTimeNow;
  // Makes the application object; tests observe it through a subclass.
  std::function<std::unique_ptr<PlayerApp>(const ShellServices&)> makeApp;
  // The wave device's volume; null for the process's own.
  platform::DeviceVolume* deviceVolume = nullptr;
  // Shows the running player to other programs once its window is up (MPRIS
  // on the session bus); what it returns lives until the message loop ends.
  std::function<std::unique_ptr<RemotePresence>(PlayerApp&)> publish;
};

// Half-width of the window in which a TSAlarm start counts: 60 s in 100 ns units.
inline constexpr std::uint64_t kAlarmWindow = 600000000;

// True when the stored Alarm (8 bytes, a local FILETIME) can be read and lies
// kAlarmWindow or more from `now`: such a wake-up is stale.
bool IsStaleAlarm(RegistryKey& settingsKey, std::uint64_t now);

// The command line from the program's arguments: joined by spaces, unparsed.
// A relative path that names something from the working folder is made
// absolute, since the running instance may have another working folder.
std::string CommandLineFromArguments(const std::vector<std::string>& arguments);

int RunProcess(const std::string& commandLine, const ProcessServices& services);

}  // namespace shell
