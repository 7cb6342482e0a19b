// The sample loops of the equalizer and extra bass.
//
// The integer arithmetic of each filter is fixed; the order in which the
// loops visit it is not. Each filter depends only on its own history and on
// the sequence of its inputs, so these loops run one filter (both channels as
// two chains) over a whole stretch of frames before the next, which gives
// the same bits as sending each frame through all filters in turn and keeps
// the hot loop free of memory traffic. The portable set is plain C++; the
// AVX2 set, used when the processor has it, runs the independent first-stage
// bands side by side and pipelines the cascaded ones.
//
// All loops work on interleaved stereo 16-bit frames in place and never
// allocate; their working arrays live on the stack (at most 16 KB). Threads:
// whoever holds the lock of the histories passed in.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "effects/filter_history.h"

namespace effects {

// The state of one filter bank: [band][channel].
using BankState = std::array<std::array<BiquadState, kChannelCount>, kBandCount>;
// The state of one filter on both channels.
using ChannelPairState = std::array<BiquadState, kChannelCount>;

// What the precise bank needs besides its state, read once per pass.
struct PreciseSettings {
  std::array<std::int32_t, kBandCount> gainQ28{};
  std::int32_t preamp = 14;  // 0 to 27, 14 being unity
};

struct PlainSettings {
  std::array<std::int32_t, kBandCount> gainQ14{};
  std::int32_t preamp = 14;
};

struct FilterKernels {
  const char* name;
  // Two cascaded banks with 28 fractional bits; the dry signal enters at half level.
  void (*precise)(const PreciseSettings& settings, BankState& stage1, BankState& stage2,
                  std::int16_t* frames, std::size_t frameCount);
  // One bank with 14 fractional bits, 32-bit products and a fixed offset.
  void (*plain)(const PlainSettings& settings, BankState& bank, std::int16_t* frames,
                std::size_t frameCount);
  // Band 0 twice in cascade with the gain `bassGain` (28 fractional bits).
  void (*bass)(std::int32_t bassGain, ChannelPairState& stage1, ChannelPairState& stage2,
               std::int16_t* frames, std::size_t frameCount);
};

// Plain C++, for every processor.
const FilterKernels& PortableKernels();
// The AVX2 loops, or null when the processor (or the build) has none.
const FilterKernels* Avx2Kernels();
// The fastest set this processor runs.
const FilterKernels& FastestKernels();

}  // namespace effects
