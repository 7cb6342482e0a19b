// The equalizer and extra bass: fixed-point filters on each mixed block.
//
// One Equalizer serves every engine of the output (AudioOutput::SetEffect):
// the mixing thread of each engine calls Process and then ApplyBass on its
// mixed block of 16-bit interleaved stereo, in place, 16384 bytes at a time.
// Engines share the one set of filter histories, so two sample rates playing
// at once pass their blocks through the same filters in turn, and the filters
// ring on across a change of track.
//
// The equalizer is a bank of ten band-pass filters (see filter_tables.h) with
// two implementations, chosen at construction:
//   precise  two banks in cascade with 28 fractional bits and 64-bit
//            products; the second bank's bands each filter the sum so far.
//            The dry signal enters at half level. When all ten bands sit at
//            their centre the filters are skipped and only the preamp acts.
//   plain    one bank with 14 fractional bits and 32-bit products; it always
//            filters and adds a fixed offset of 12500 to every sample.
// They sound different; the precise one is what the gains were tuned with,
// and it runs on every processor with a fast 32x32 to 64-bit multiply.
//
// Extra bass runs band 0 twice in cascade with the strength of SetBassMode
// and adds both to the dry signal at half level.
//
// Threads: SetBands, SetEnabled and SetBassMode come from the window thread;
// Process and ApplyBass from any number of mixing threads at once. Settings
// are relaxed atomic words that a mixing thread reads once per block; each
// set of histories has a lock that a block holds from its first frame to its
// last, so blocks of different engines pass through the filters one after
// the other. The plain path also holds `gainLock` for its whole block, so a
// block never mixes old and new gains there; the precise path doesn't, and a
// block that overlaps SetBands may see some bands' new gains and some old.
// Lock order: gainLock, then historyLock.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>

#include "effects/equalizer_values.h"
#include "effects/filter_history.h"
#include "effects/filter_kernels.h"
#include "playback/audio_effect.h"

namespace effects {

enum class FilterPath { kPrecise, kPlain };

// The path for the processor this build runs on: precise where the processor
// multiplies 32 by 32 bits into 64 quickly (x86-64 and AArch64), else plain.
FilterPath PathForThisProcessor();

class Equalizer final : public playback::AudioEffect {
 public:
  // The path for this processor and the fastest loops it runs.
  Equalizer();
  // A given path; `kernels` chooses the loops (all sets give the same bits).
  explicit Equalizer(FilterPath path, const FilterKernels& kernels = FastestKernels());
  Equalizer(const Equalizer&) = delete;
  Equalizer& operator=(const Equalizer&) = delete;
  ~Equalizer() override = default;

  // Window thread. Extra bass strength: 0 off, 1 to 4 from mild to strong.
  // Any other value is kept as the mode and runs with the previous strength.
  void SetBassMode(std::int32_t mode);
  // Mixing thread. Boosts band 0 of the block in place. Returns `bytes`, or
  // 0 when extra bass is off or there is no block.
  int ApplyBass(std::int16_t** block, std::size_t bytes) override;

  // Window thread. Zero makes Process leave blocks alone and return 0.
  void SetEnabled(std::uint32_t flag);
  // Window thread. The preamp slider and ten band sliders, each 0 (strongest)
  // to 27, 14 the centre. Null `bands` is ignored. Positions outside 0 to 27
  // count as the nearest end; a band counts as centred only at exactly 14.
  void SetBands(std::int32_t preampSlider, const std::int32_t* bands);
  void SetBands(std::int32_t preampSlider, const std::array<std::int32_t, kBandCount>& bands) {
    SetBands(preampSlider, bands.data());
  }

  // Mixing thread. Filters the block in place; `bytes` counts bytes of 16-bit
  // interleaved stereo (whole frames are filtered; a lone trailing sample is
  // left as it is). Returns `bytes`, or 0 when disabled or there is no block.
  int Process(std::int16_t** block, std::size_t bytes) override;

  FilterPath Path() const { return path; }
  const FilterKernels& Kernels() const { return kernels; }
  std::int32_t GainQ14(int band) const;
  std::int32_t GainQ28(int band) const;
  std::int32_t Preamp() const { return preamp.load(std::memory_order_relaxed); }
  bool Flat() const { return flat.load(std::memory_order_relaxed) != 0; }
  std::uint32_t BassMode() const { return bassMode.load(std::memory_order_relaxed); }
  std::int32_t BassGain() const { return bassGain.load(std::memory_order_relaxed); }
  std::int32_t BassGainSpare() const { return bassGainSpare.load(std::memory_order_relaxed); }

 private:
  int ProcessPrecise(std::int16_t* samples, std::size_t bytes);
  int ProcessPlain(std::int16_t* samples, std::size_t bytes);

  const FilterPath path;
  const FilterKernels& kernels;

  // Guarded by historyLock: the equalizer's filter memories.
  std::mutex historyLock;
  BankHistory plainBank{};
  BankHistory preciseStage1{};
  BankHistory preciseStage2{};
  HistoryIndex eqIndex;

  // Guarded by bassLock: the memories of extra bass.
  std::mutex bassLock;
  std::array<FilterHistory, kChannelCount> bassStage1{};
  std::array<FilterHistory, kChannelCount> bassStage2{};
  HistoryIndex bassIndex;

  // Written under gainLock by SetBands; the plain path holds it for a block.
  std::mutex gainLock;
  std::array<std::atomic<std::int32_t>, kBandCount> gainQ14{};
  std::array<std::atomic<std::int32_t>, kBandCount> gainQ28{};
  // A new object counts as flat, so it passes sound unchanged on the precise
  // path until the application first sets the bands.
  std::atomic<std::uint32_t> flat{1};
  std::atomic<std::int32_t> preamp{14};

  // Plain words, written by the window thread, read once per block.
  std::atomic<std::uint32_t> enabled{1};
  std::atomic<std::uint32_t> bassMode{0};
  std::atomic<std::int32_t> bassGain{0};
  std::atomic<std::int32_t> bassGainSpare{0};
};

}  // namespace effects
