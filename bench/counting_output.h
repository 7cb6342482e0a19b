// An output for measuring a decoder by itself: its one stream takes every
// block at once and counts the samples.
#pragma once

#include <atomic>
#include <cstdint>

#include "playback/audio_output.h"

namespace bench_support {

class CountingOutput final : public playback::AudioOutput {
 public:
  std::uint32_t OpenStream(int, int, std::uint32_t rate, int channels, std::uint32_t) override {
    capacity = rate * static_cast<std::uint32_t>(channels) * 2;
    return 1;
  }
  int WriteStream(std::uint32_t, const std::int16_t* samples, std::uint32_t count) override {
    if (samples != nullptr) written.fetch_add(count, std::memory_order_relaxed);
    return 1;
  }
  std::uint32_t QueuedSamples(std::uint32_t) override { return 0; }
  std::uint32_t QueueCapacity(std::uint32_t) override { return capacity; }
  void ControlStream(std::uint32_t, int, std::uint32_t) override {}
  void SetStreamParam(std::uint32_t, int, std::uint32_t) override {}
  void FlushStream(std::uint32_t, std::uint32_t) override {}
  std::uint32_t GetPlayedSamples(std::uint32_t) override { return 0; }

  std::atomic<std::uint64_t> written{0};

 private:
  std::uint32_t capacity = 0;
};

}  // namespace bench_support
