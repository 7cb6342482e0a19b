// The command line of tavrinsonic-render.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace render {

inline constexpr int kEqualizerSliders = 11;  // ten bands, then the preamp

struct RenderOptions {
  std::string input;   // a media file, a playlist or an http:// address
  std::string output;  // the WAV file to write
  // Each set option replaces the stored setting for this run only.
  std::optional<bool> crossfade;
  std::optional<bool> gapless;
  std::optional<bool> trimSilence;
  std::optional<bool> equalizer;
  std::optional<std::array<std::int32_t, kEqualizerSliders>> equalizerSliders;
  std::optional<std::int32_t> extraBass;  // 0 off, 1 to 4 the strength
  std::optional<double> seconds;          // stop after this much audio
  bool help = false;
};

// The usage text of --help.
extern const char* const kUsage;

// Reads the arguments (without the program's name). On a mistake returns
// nullopt and says what was wrong in `error`.
std::optional<RenderOptions> ParseRenderOptions(const std::vector<std::string>& arguments,
                                                std::string& error);

}  // namespace render
