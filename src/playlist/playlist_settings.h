// The playlist's persistent fields, as the settings store loads and saves them.
// The PlaylistView holds one of these; the loader writes straight into it.
#pragma once

#include <cstdint>

namespace playlist {

struct PlaylistSettings {
  std::uint32_t pickerOption = 0;       // kept for the file picker
  std::int32_t currentIndex = 0;        // LastPos: the entry that plays; -1 none
  std::uint32_t showNumbers = 0;
  std::uint32_t displayMode = 1;        // 1 tags, 2 file name, 3 full path
  std::uint32_t sortByTrackNumber = 0;
  std::uint32_t sortOnLoad = 1;
  std::uint32_t fontSize = 2;           // PlPoint: 0 Tiny, 1 Small, 2 Normal, 3 Large (unchecked when loaded)
};

}  // namespace playlist
