// The sound that the MP3 benchmarks decode: the 128 kbit/s stereo test
// file's frames (without its tags) repeated to about a minute, in memory.
#pragma once

#include <cstdint>
#include <vector>

namespace mp3_bench {

inline constexpr int kRepeats = 30;
inline constexpr double kSampleRate = 44100;

const std::vector<std::uint8_t>& RepeatedMp3();
// Seconds of sound in it: 1152 samples a frame.
double RepeatedMp3Seconds();

}  // namespace mp3_bench
