// Technical values of a track, as the skin and the playlist show them.
#pragma once

#include <cstdint>
#include <string>

namespace playback {

inline constexpr std::uint32_t kUnknownTrackNumber = 100000;
inline constexpr std::size_t kGenreUnits = 32;  // UTF-16 units, terminator included

// A plain record; callers clear it before use.
struct FormatSummary {
  std::string genre;              // at most kGenreUnits - 1 UTF-16 units, may be empty
  std::uint32_t sampleRate = 0;   // Hz
  std::uint32_t bitRate = 0;      // kbit/s from GetFormatSummary; see GetFileDetails
  std::uint32_t stereo = 0;       // non-zero for more than one channel
  std::uint32_t trackNumber = 0;  // kUnknownTrackNumber when unknown

  void Clear() { *this = FormatSummary{}; }
};

}  // namespace playback
