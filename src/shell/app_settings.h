// The application's persistent fields, with the values PlayerApp's constructor
// gives them before the settings are loaded.
#pragma once

#include <cstdint>
#include <string>

namespace shell {

struct AppSettings {
  std::int32_t skipSeconds = 60;         // FFSkipTime
  std::string loadPath;                  // Load: folder for "Load folder contents on start:"
  std::int32_t extraBassStrength = 3;    // XBS
  bool shuffleEnabled = false;           // Shuffle
  std::int32_t decodePriority = 1;       // Priority: platform priority of decode threads
  std::uint64_t alarmTime = 0;           // Alarm: local FILETIME
  std::uint32_t repeatMode = 1;          // Repeat: 1 all, 2 one, 3 selected
  bool repeatEnabled = false;
  std::uint32_t language = 0;            // Language: locale id, 0 or 1033 built-in English

  // Flags kept in WndSettings. The spare flags have no effect; they are only
  // kept, and some messages flip them.
  bool spareFlagA = false;
  bool spareFlagB = false;               // not stored
  bool spareFlagC = false;
  bool spareFlagD = false;
  bool spareFlagE = false;
  bool keepKeysWhenInactive = false;
  bool keepDisplayOn = false;
  bool enqueueOnOpen = false;
  bool lockKeepsDisplayKey = false;
  bool extraBassEnabled = false;
  bool loadLocalContent = false;
  bool loadFolderContents = false;
  bool disableEqForWmaOgg = false;
  bool alarmEnabled = false;
};

}  // namespace shell
