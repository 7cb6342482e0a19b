// Texts that the file decoders make alike from their tags: the bounded
// title texts, the name of a file without its folder and extension, and the
// information text's "<b>Label:</b> value<br>" lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "playback/format_summary.h"

namespace decoders {

// Texts go into buffers of 260 UTF-16 units with their terminator.
inline constexpr std::size_t kTrackTextUnits = 259;
// The information text's block: 1024 UTF-16 units with the terminator.
inline constexpr std::size_t kInfoTextUnits = 1023;

// `text` cut to `units` UTF-16 units at a whole character.
std::string CutText(std::string_view text, std::size_t units = kTrackTextUnits);
// The name of a path without its folder, cut to 260 units and then at its
// last dot.
std::string FileNameOf(const std::string& path);
// "first - second", cut to 259 units.
std::string JoinedTitle(const std::string& first, const std::string& second);

// "<b>Label:</b> value<br>" lines in a block of bounded length; a line that
// doesn't fit is cut in its value, and nothing follows it. The labels are
// the player's fixed English texts.
class InfoText {
 public:
  void Line(const char* label, std::string_view value);
  void LineIf(const char* label, const std::optional<std::string>& value) {
    if (value) Line(label, *value);
  }
  // The line only when the value isn't empty.
  void LineIfAny(const char* label, std::string_view value) {
    if (!value.empty()) Line(label, value);
  }
  void Number(const char* label, long long value, const char* unit = "");
  // Play time, bitrate, sampling rate and channels (`channelCount`, or 2
  // for stereo and 1 otherwise when it is 0).
  void Format(std::uint32_t durationMs, const playback::FormatSummary& summary,
              std::uint32_t channelCount = 0);
  std::string Take() { return std::move(text); }

 private:
  std::string text;
  std::size_t units = 0;
  bool full = false;
};

}  // namespace decoders
