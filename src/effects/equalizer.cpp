#include "effects/equalizer.h"

#include <algorithm>
#include <climits>

#include "effects/filter_arithmetic.h"
#include "effects/slider_gain.h"

namespace effects {
namespace {

constexpr std::size_t kFrameBytes = 4;

int ByteResult(std::size_t bytes) { return static_cast<int>(std::min<std::size_t>(bytes, INT_MAX)); }

// Extra bass strengths with 28 fractional bits: off, 0.95, 1.4, 1.7, 2.2.
struct BassStrength {
  std::int32_t gain;
  std::int32_t spare;
};
constexpr std::array<BassStrength, 5> kBassStrengths = {{
    {0, 0},
    {0x0F333333, 0x0B333333},
    {0x16666666, 0x10000000},
    {0x1B333333, 0x13333333},
    {0x23333333, 0x13333333},
}};
constexpr std::int32_t kUnknownModeSpare = 0x13333333;

void LoadBank(const BankHistory& history, const HistoryIndex& index, BankState& state) {
  for (int band = 0; band < kBandCount; ++band) {
    for (int channel = 0; channel < kChannelCount; ++channel) {
      state[band][channel] = LoadState(history[band][channel], index);
    }
  }
}

void StoreBank(BankHistory& history, const HistoryIndex& index, const BankState& state) {
  for (int band = 0; band < kBandCount; ++band) {
    for (int channel = 0; channel < kChannelCount; ++channel) {
      StoreState(history[band][channel], index, state[band][channel]);
    }
  }
}

}  // namespace

FilterPath PathForThisProcessor() {
#if defined(__x86_64__) || defined(__aarch64__)
  return FilterPath::kPrecise;
#else
  return FilterPath::kPlain;
#endif
}

Equalizer::Equalizer() : Equalizer(PathForThisProcessor()) {}

Equalizer::Equalizer(FilterPath chosenPath, const FilterKernels& chosenKernels)
    : path(chosenPath), kernels(chosenKernels) {
  SetBassMode(0);
}

void Equalizer::SetBassMode(std::int32_t mode) {
  const auto stored = static_cast<std::uint32_t>(mode);
  if (stored < kBassStrengths.size()) {
    bassGain.store(kBassStrengths[stored].gain, std::memory_order_relaxed);
    bassGainSpare.store(kBassStrengths[stored].spare, std::memory_order_relaxed);
  } else {
    bassGainSpare.store(kUnknownModeSpare, std::memory_order_relaxed);
  }
  bassMode.store(stored, std::memory_order_relaxed);
}

void Equalizer::SetEnabled(std::uint32_t flag) { enabled.store(flag, std::memory_order_relaxed); }

void Equalizer::SetBands(std::int32_t preampSlider, const std::int32_t* bands) {
  if (bands == nullptr) return;
  std::lock_guard<std::mutex> hold(gainLock);
  bool allCentred = true;
  for (int band = 0; band < kBandCount; ++band) {
    if (bands[band] != kSliderFlat) allCentred = false;
    const BandGain gain = GainForSlider(bands[band]);
    gainQ14[band].store(gain.q14, std::memory_order_relaxed);
    gainQ28[band].store(gain.q28, std::memory_order_relaxed);
  }
  flat.store(allCentred ? 1 : 0, std::memory_order_relaxed);
  preamp.store(PreampForSlider(preampSlider), std::memory_order_relaxed);
}

std::int32_t Equalizer::GainQ14(int band) const {
  return band >= 0 && band < kBandCount ? gainQ14[band].load(std::memory_order_relaxed) : 0;
}

std::int32_t Equalizer::GainQ28(int band) const {
  return band >= 0 && band < kBandCount ? gainQ28[band].load(std::memory_order_relaxed) : 0;
}

int Equalizer::Process(std::int16_t** block, std::size_t bytes) {
  if (enabled.load(std::memory_order_relaxed) == 0) return 0;
  if (block == nullptr || *block == nullptr) return 0;
  return path == FilterPath::kPrecise ? ProcessPrecise(*block, bytes) : ProcessPlain(*block, bytes);
}

int Equalizer::ProcessPrecise(std::int16_t* samples, std::size_t bytes) {
  const std::int32_t preampNow = preamp.load(std::memory_order_relaxed);
  if (flat.load(std::memory_order_relaxed) != 0) {
    // No filter runs: a flat equalizer costs nothing, and at unity nothing at all.
    if (preampNow == kUnityPreamp) return ByteResult(bytes);
    for (std::size_t i = 0; i < bytes / 2; ++i) {
      samples[i] = ClipToSample(ApplyPreamp(samples[i], preampNow));
    }
    return ByteResult(bytes);
  }
  if (bytes < 2) return ByteResult(bytes);
  PreciseSettings settings;
  settings.preamp = preampNow;
  for (int band = 0; band < kBandCount; ++band) {
    settings.gainQ28[band] = gainQ28[band].load(std::memory_order_relaxed);
  }
  const std::size_t frameCount = bytes / kFrameBytes;
  std::lock_guard<std::mutex> hold(historyLock);
  BankState stage1;
  BankState stage2;
  LoadBank(preciseStage1, eqIndex, stage1);
  LoadBank(preciseStage2, eqIndex, stage2);
  kernels.precise(settings, stage1, stage2, samples, frameCount);
  eqIndex.Advance(frameCount);
  StoreBank(preciseStage1, eqIndex, stage1);
  StoreBank(preciseStage2, eqIndex, stage2);
  return ByteResult(bytes);
}

int Equalizer::ProcessPlain(std::int16_t* samples, std::size_t bytes) {
  std::lock_guard<std::mutex> holdGains(gainLock);
  if (bytes < 2) return ByteResult(bytes);
  PlainSettings settings;
  settings.preamp = preamp.load(std::memory_order_relaxed);
  for (int band = 0; band < kBandCount; ++band) {
    settings.gainQ14[band] = gainQ14[band].load(std::memory_order_relaxed);
  }
  const std::size_t frameCount = bytes / kFrameBytes;
  std::lock_guard<std::mutex> holdHistory(historyLock);
  BankState bank;
  LoadBank(plainBank, eqIndex, bank);
  kernels.plain(settings, bank, samples, frameCount);
  eqIndex.Advance(frameCount);
  StoreBank(plainBank, eqIndex, bank);
  return ByteResult(bytes);
}

int Equalizer::ApplyBass(std::int16_t** block, std::size_t bytes) {
  if (bassMode.load(std::memory_order_relaxed) == 0) return 0;
  if (block == nullptr || *block == nullptr) return 0;
  if (bytes < 2) return ByteResult(bytes);
  const std::int32_t gain = bassGain.load(std::memory_order_relaxed);
  const std::size_t frameCount = bytes / kFrameBytes;
  std::lock_guard<std::mutex> hold(bassLock);
  ChannelPairState stage1;
  ChannelPairState stage2;
  for (int channel = 0; channel < kChannelCount; ++channel) {
    stage1[channel] = LoadState(bassStage1[channel], bassIndex);
    stage2[channel] = LoadState(bassStage2[channel], bassIndex);
  }
  kernels.bass(gain, stage1, stage2, *block, frameCount);
  bassIndex.Advance(frameCount);
  for (int channel = 0; channel < kChannelCount; ++channel) {
    StoreState(bassStage1[channel], bassIndex, stage1[channel]);
    StoreState(bassStage2[channel], bassIndex, stage2[channel]);
  }
  return ByteResult(bytes);
}

}  // namespace effects
