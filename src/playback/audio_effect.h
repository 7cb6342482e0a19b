// The hook through which the output engine runs effects over a mixed block.
//
// The mixing thread calls Process and then ApplyBass on each mixed block of
// 16-bit interleaved stereo, in place. Both receive a pointer to the block
// pointer and the block's length in bytes (16384), as the equalizer expects.
#pragma once

#include <cstddef>
#include <cstdint>

namespace playback {

class AudioEffect {
 public:
  virtual ~AudioEffect() = default;
  // Mixing thread. Filters the block in place; returns 0 when disabled.
  virtual int Process(std::int16_t** block, std::size_t bytes) = 0;
  // Mixing thread. Runs the extra-bass stage over the block in place.
  virtual int ApplyBass(std::int16_t** block, std::size_t bytes) = 0;
};

}  // namespace playback
