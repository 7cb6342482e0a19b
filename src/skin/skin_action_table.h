// The table of actions that skin controls and keys trigger.
//
// 28 rows in a fixed order. Each row names a control (the name a skin's
// layout uses), the private message that is posted to the main window when it
// fires (0: no action), the id of its text for the key mapping dialog, and the
// key bound to it (0: none). The key column is the user's mapping: it is kept
// in the settings (value Keys, 28 u16 in row order) and edited by the key
// mapping dialog; everything else is fixed.
//
// Threads: window thread only.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace skin {

inline constexpr int kActionRowCount = 28;

struct SkinAction {
  std::uint32_t message;
  std::uint32_t enabled;  // 1 in every row
  std::uint32_t textId;
  std::uint16_t key;
  std::string_view name;
};

// Row indices the program addresses directly.
enum ActionRow : int {
  kRowPlayPause = 0,
  kRowNext = 1,
  kRowPrevious = 2,
  kRowVolumeUp = 3,
  kRowVolumeDown = 4,
  kRowRepeat = 5,
  kRowShuffle = 6,
  kRowExtraBass = 7,
  kRowEqualizer = 8,
  kRowPlay = 9,
  kRowStop = 10,
  kRowPause = 11,
  kRowMute = 12,
  kRowLoadFiles = 13,
  kRowAddFiles = 14,
  kRowFastForward = 15,
  kRowRewind = 16,
  kRowSamplingRate = 23,
  kRowBitRate = 24,
  kRowSeekBar = 25,
  kRowVolume = 26,
  kRowSetBookmark = 27,
};

using SkinActionTable = std::array<SkinAction, kActionRowCount>;

// The process-wide table, with the user's keys.
SkinActionTable& Actions();

// The rows as shipped, with their default keys.
const SkinActionTable& DefaultActions();

// The first row whose name equals `name` in any case, as skins name their
// controls, or -1; rows without a name never match.
int FindActionRow(std::string_view name);

}  // namespace skin
