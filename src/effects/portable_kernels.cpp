// The filter loops in plain C++: one filter at a time over a stretch of
// frames, left and right as two independent chains in the same loop.
#include <cstddef>
#include <cstdint>

#include "effects/filter_arithmetic.h"
#include "effects/filter_kernels.h"

namespace effects {
namespace {

// Frames per stretch: the working arrays stay in the first-level cache.
constexpr std::size_t kStretchFrames = 512;
constexpr std::size_t kStretchSamples = kStretchFrames * kChannelCount;

// Adds gain * band(dry) to `sum` for one band of the first stage.
void RunFirstStageBand(const BandCoefficients& k, std::int32_t gain, ChannelPairState& state,
                       const std::int32_t* dry, std::int32_t* sum, std::size_t frameCount) {
  BiquadState left = state[0];
  BiquadState right = state[1];
  for (std::size_t i = 0; i < frameCount * 2; i += 2) {
    sum[i] = WrapAdd(sum[i], MultiplyQ28(gain, StepQ28(k, left, dry[i])));
    sum[i + 1] = WrapAdd(sum[i + 1], MultiplyQ28(gain, StepQ28(k, right, dry[i + 1])));
  }
  state = {left, right};
}

// One band of the second stage: it filters the running sum and adds to it.
void RunSecondStageBand(const BandCoefficients& k, std::int32_t gain, ChannelPairState& state,
                        std::int32_t* sum, std::size_t frameCount) {
  BiquadState left = state[0];
  BiquadState right = state[1];
  for (std::size_t i = 0; i < frameCount * 2; i += 2) {
    sum[i] = WrapAdd(sum[i], MultiplyQ28(gain, StepQ28(k, left, sum[i])));
    sum[i + 1] = WrapAdd(sum[i + 1], MultiplyQ28(gain, StepQ28(k, right, sum[i + 1])));
  }
  state = {left, right};
}

void PreciseStretch(const PreciseSettings& settings, BankState& stage1, BankState& stage2,
                    std::int16_t* samples, std::size_t frameCount) {
  std::int32_t dry[kStretchSamples];
  std::int32_t sum[kStretchSamples];
  const std::size_t count = frameCount * 2;
  for (std::size_t i = 0; i < count; ++i) {
    dry[i] = samples[i] * 2048;
    sum[i] = 0;
  }
  for (int band = 0; band < kBandCount; ++band) {
    RunFirstStageBand(kCoefficientsQ28[band], settings.gainQ28[band], stage1[band], dry, sum, frameCount);
  }
  for (int band = 0; band < kBandCount; ++band) {
    RunSecondStageBand(kCoefficientsQ28[band], settings.gainQ28[band], stage2[band], sum, frameCount);
  }
  for (std::size_t i = 0; i < count; ++i) {
    samples[i] = ClipToSample(ApplyPreamp(WrapAdd(sum[i], dry[i]) >> 12, settings.preamp));
  }
}

void PlainStretch(const PlainSettings& settings, BankState& bank, std::int16_t* samples,
                  std::size_t frameCount) {
  std::int32_t input[kStretchSamples];
  std::int64_t sum[kStretchSamples];
  const std::size_t count = frameCount * 2;
  for (std::size_t i = 0; i < count; ++i) {
    // The preamp comes first here, truncated to 16 bits rather than clipped,
    // and the scaled sample is written back.
    if (settings.preamp != kUnityPreamp) {
      samples[i] = static_cast<std::int16_t>((samples[i] * (settings.preamp + 2)) >> 4);
    }
    input[i] = samples[i];
    sum[i] = 0;
  }
  for (int band = 0; band < kBandCount; ++band) {
    const BandCoefficients& k = kCoefficientsQ14[band];
    const std::int32_t gain = settings.gainQ14[band];
    BiquadState left = bank[band][0];
    BiquadState right = bank[band][1];
    for (std::size_t i = 0; i < count; i += 2) {
      sum[i] += WrapMultiply(StepQ14(k, left, input[i]), gain);
      sum[i + 1] += WrapMultiply(StepQ14(k, right, input[i + 1]), gain);
    }
    bank[band] = {left, right};
  }
  for (std::size_t i = 0; i < count; ++i) {
    samples[i] = ClipToSample((sum[i] >> 12) + (input[i] >> 2) + kPlainOffset);
  }
}

void Precise(const PreciseSettings& settings, BankState& stage1, BankState& stage2, std::int16_t* frames,
             std::size_t frameCount) {
  for (std::size_t done = 0; done < frameCount; done += kStretchFrames) {
    const std::size_t stretch = std::min(kStretchFrames, frameCount - done);
    PreciseStretch(settings, stage1, stage2, frames + done * 2, stretch);
  }
}

void Plain(const PlainSettings& settings, BankState& bank, std::int16_t* frames, std::size_t frameCount) {
  for (std::size_t done = 0; done < frameCount; done += kStretchFrames) {
    const std::size_t stretch = std::min(kStretchFrames, frameCount - done);
    PlainStretch(settings, bank, frames + done * 2, stretch);
  }
}

void Bass(std::int32_t bassGain, ChannelPairState& stage1, ChannelPairState& stage2, std::int16_t* frames,
          std::size_t frameCount) {
  const BandCoefficients& k = kCoefficientsQ28[0];
  for (std::size_t i = 0; i < frameCount * 2; ++i) {
    const std::size_t channel = i & 1;
    const std::int32_t dry = frames[i] * 2048;
    const std::int32_t boost = MultiplyQ28(bassGain, StepQ28(k, stage1[channel], dry));
    const std::int32_t boostAgain = MultiplyQ28(bassGain, StepQ28(k, stage2[channel], boost));
    frames[i] = ClipToSample(WrapAdd(WrapAdd(boost, boostAgain), dry) >> 12);
  }
}

}  // namespace

const FilterKernels& PortableKernels() {
  static constexpr FilterKernels kernels = {"portable", Precise, Plain, Bass};
  return kernels;
}

}  // namespace effects
