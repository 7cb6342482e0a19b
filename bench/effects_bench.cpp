// Speed of the equalizer and extra bass on the output's 16384-byte blocks.
//
// Counters: samples_per_second counts 16-bit values; x_realtime is how many
// times faster than 44.1 kHz stereo (88200 values a second) one core runs.
// The reference loop is the straightforward frame-by-frame form of the same
// arithmetic, for comparison.
#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "../tests/effects/reference_equalizer.h"
#include "effects/equalizer.h"

namespace {

using effects::Equalizer;
using effects::FilterKernels;
using effects::FilterPath;

constexpr std::size_t kBlockBytes = 16384;
constexpr std::size_t kBlockSamples = kBlockBytes / 2;
constexpr double kRealTimeSamplesPerSecond = 44100.0 * 2;
// A setting that runs every filter: a smile curve with a little preamp.
constexpr std::array<std::int32_t, 10> kBands = {6, 9, 12, 14, 16, 17, 15, 12, 9, 7};
constexpr std::int32_t kPreampSlider = 15;

// Music-like material: two tones and a little noise, at about -6 dBFS.
std::vector<std::int16_t> MakeSignal(std::size_t samples) {
  std::vector<std::int16_t> signal(samples);
  std::uint32_t noise = 12345;
  for (std::size_t i = 0; i < samples; ++i) {
    noise = noise * 1664525u + 1013904223u;
    const double t = static_cast<double>(i / 2) / 44100.0;
    const double value = 9000.0 * std::sin(2 * M_PI * 110.0 * t) + 5000.0 * std::sin(2 * M_PI * 2500.0 * t) +
                         static_cast<double>(static_cast<std::int32_t>(noise >> 20) - 2048);
    signal[i] = static_cast<std::int16_t>(value);
  }
  return signal;
}

void SetCounters(benchmark::State& state) {
  const double samples = static_cast<double>(state.iterations()) * kBlockSamples;
  state.counters["samples_per_second"] = benchmark::Counter(samples, benchmark::Counter::kIsRate);
  state.counters["x_realtime"] =
      benchmark::Counter(samples / kRealTimeSamplesPerSecond, benchmark::Counter::kIsRate);
}

// Each iteration filters a fresh copy of one of a few blocks, as the mixer does.
template <typename Filter>
void RunBlocks(benchmark::State& state, Filter&& filter) {
  const std::vector<std::int16_t> source = MakeSignal(kBlockSamples * 8);
  std::vector<std::int16_t> block(kBlockSamples);
  std::size_t next = 0;
  for (auto _ : state) {
    std::copy_n(source.begin() + static_cast<std::ptrdiff_t>(next * kBlockSamples), kBlockSamples, block.begin());
    next = (next + 1) % 8;
    filter(block.data());
    benchmark::DoNotOptimize(block.data());
    benchmark::ClobberMemory();
  }
  SetCounters(state);
}

const FilterKernels& KernelsFor(benchmark::State& state) {
  return state.range(0) == 1 && effects::Avx2Kernels() != nullptr ? *effects::Avx2Kernels()
                                                                   : effects::PortableKernels();
}

void Label(benchmark::State& state, const FilterKernels& kernels) { state.SetLabel(kernels.name); }

void BM_Precise(benchmark::State& state) {
  Equalizer equalizer(FilterPath::kPrecise, KernelsFor(state));
  Label(state, equalizer.Kernels());
  equalizer.SetBands(kPreampSlider, kBands);
  RunBlocks(state, [&](std::int16_t* block) { equalizer.Process(&block, kBlockBytes); });
}

void BM_PreciseWithBass(benchmark::State& state) {
  Equalizer equalizer(FilterPath::kPrecise, KernelsFor(state));
  Label(state, equalizer.Kernels());
  equalizer.SetBands(kPreampSlider, kBands);
  equalizer.SetBassMode(3);
  RunBlocks(state, [&](std::int16_t* block) {
    equalizer.Process(&block, kBlockBytes);
    equalizer.ApplyBass(&block, kBlockBytes);
  });
}

void BM_Plain(benchmark::State& state) {
  Equalizer equalizer(FilterPath::kPlain, KernelsFor(state));
  Label(state, equalizer.Kernels());
  equalizer.SetBands(kPreampSlider, kBands);
  RunBlocks(state, [&](std::int16_t* block) { equalizer.Process(&block, kBlockBytes); });
}

void BM_Bass(benchmark::State& state) {
  Equalizer equalizer(FilterPath::kPrecise, KernelsFor(state));
  Label(state, equalizer.Kernels());
  equalizer.SetBassMode(3);
  RunBlocks(state, [&](std::int16_t* block) { equalizer.ApplyBass(&block, kBlockBytes); });
}

void BM_ReferencePreciseWithBass(benchmark::State& state) {
  effects::test_support::ReferenceEqualizer reference(true);
  state.SetLabel("frame by frame");
  reference.SetBands(kPreampSlider, kBands);
  reference.SetBassGain(0x1B333333);
  RunBlocks(state, [&](std::int16_t* block) {
    reference.Process(block, kBlockBytes);
    reference.ApplyBass(block, kBlockBytes);
  });
}

void BM_ReferencePlain(benchmark::State& state) {
  effects::test_support::ReferenceEqualizer reference(false);
  state.SetLabel("frame by frame");
  reference.SetBands(kPreampSlider, kBands);
  RunBlocks(state, [&](std::int16_t* block) { reference.Process(block, kBlockBytes); });
}

// Argument 0: portable loops; 1: AVX2 loops where the processor has them.
BENCHMARK(BM_Precise)->Arg(0)->Arg(1);
BENCHMARK(BM_PreciseWithBass)->Arg(0)->Arg(1);
BENCHMARK(BM_Plain)->Arg(0)->Arg(1);
BENCHMARK(BM_Bass)->Arg(0)->Arg(1);
BENCHMARK(BM_ReferencePreciseWithBass);
BENCHMARK(BM_ReferencePlain);

}  // namespace

BENCHMARK_MAIN();
