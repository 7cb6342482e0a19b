// Test material for the filters: deterministic signals of 16-bit
// interleaved stereo, and level measurement.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace effects::test_support {

// Uniform noise over the full 16-bit range, both channels independent.
std::vector<std::int16_t> WhiteNoise(std::size_t frames, std::uint32_t seed);
// Music-like: a bass line, chords and hi-hat noise with a swelling envelope
// that reaches full scale, left and right different.
std::vector<std::int16_t> MusicLike(std::size_t frames, std::uint32_t seed);
// A sine at `hz` and 44100 Hz with `amplitude`, the same on both channels.
std::vector<std::int16_t> Tone(std::size_t frames, double hz, double amplitude);
// A square wave of `period` frames swinging between -32768 and 32767.
std::vector<std::int16_t> FullScaleSquare(std::size_t frames, std::size_t period);

// Amplitude of the component at `hz` in one channel over frames [from, to),
// by correlation with a sine and a cosine (any DC offset cancels out over
// whole periods).
double ToneAmplitude(const std::vector<std::int16_t>& samples, int channel, double hz, std::size_t from,
                     std::size_t to);

}  // namespace effects::test_support
