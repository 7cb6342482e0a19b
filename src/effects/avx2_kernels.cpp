// The filter loops with AVX2, compiled for it function by function and used
// only when the processor has it.
//
// Each 256-bit vector holds four 64-bit lanes: (band a, left), (band a,
// right), (band b, left), (band b, right). vpmuldq multiplies the low 32 bits
// of two lanes into a full 64-bit product, which is the 32x32 to 64-bit
// multiply of the filters; shifting the 64-bit sum right by 28 leaves its
// low 32 bits, the filter's output, in the low half of the lane, which is all
// the next vpmuldq reads. Upper halves carry junk that nothing uses.
//
//   First stage   The ten bands share their input, so all ten (five vectors)
//                 take frame n at once and their gained outputs are summed.
//   Second stage  Band b filters the sum left by band b-1, so the bands run
//                 as a pipeline: at step t band b takes frame t - 2b, whose
//                 sum band b-1 wrote two steps before. Five vectors carry all
//                 ten bands, and no band waits for the one before it. The
//                 first and last 18 steps, where the pipeline fills and
//                 drains, run band by band in plain C++ on the same state.
//   Extra bass    The same pipeline with two filters in one vector: stage
//                 two takes frame t - 2 while stage one takes frame t.
//
// Every filter still sees its own inputs in order, so the bits are those of
// the frame-by-frame form.
#include "effects/filter_kernels.h"

#if defined(__x86_64__)

#include <immintrin.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "effects/filter_arithmetic.h"

#define TS_AVX2 __attribute__((target("avx2")))

namespace effects {
namespace {

constexpr int kVectorCount = kBandCount / 2;
// Steps between a band and the next in the second-stage pipeline.
constexpr std::size_t kLag = 2;
constexpr std::size_t kPipelineDepth = kLag * (kBandCount - 1);
constexpr std::size_t kStretchFrames = 2048;
constexpr std::size_t kBassStretchFrames = 1024;

// Coefficients of two bands, each repeated for both channels.
struct PairCoefficients {
  __m256i alpha;
  __m256i gamma;
  __m256i beta;
  __m256i gain;
};

TS_AVX2 __m256i PairLanes(std::int32_t low, std::int32_t high) {
  return _mm256_set_epi64x(high, high, low, low);
}

TS_AVX2 __m256i StateLanes(const BiquadState& a0, const BiquadState& a1, const BiquadState& b0,
                           const BiquadState& b1, std::int32_t BiquadState::*field) {
  return _mm256_set_epi64x(b1.*field, b0.*field, a1.*field, a0.*field);
}

TS_AVX2 void StoreLanes(__m256i lanes, BiquadState& a0, BiquadState& a1, BiquadState& b0, BiquadState& b1,
                        std::int32_t BiquadState::*field) {
  alignas(32) std::int64_t values[4];
  _mm256_storeu_si256(reinterpret_cast<__m256i_u*>(values), lanes);
  a0.*field = static_cast<std::int32_t>(values[0]);
  a1.*field = static_cast<std::int32_t>(values[1]);
  b0.*field = static_cast<std::int32_t>(values[2]);
  b1.*field = static_cast<std::int32_t>(values[3]);
}

// The filter output in the low half of each lane.
TS_AVX2 __m256i FilterLanes(const PairCoefficients& k, __m256i difference, __m256i y1, __m256i y2) {
  const __m256i sum = _mm256_sub_epi64(
      _mm256_add_epi64(_mm256_mul_epi32(k.alpha, difference), _mm256_mul_epi32(k.gamma, y1)),
      _mm256_mul_epi32(k.beta, y2));
  return _mm256_srli_epi64(sum, 28);
}

// (gain * y) >> 28, low 32 bits in the low half of each lane.
TS_AVX2 __m256i GainLanes(__m256i gain, __m256i y) { return _mm256_srli_epi64(_mm256_mul_epi32(gain, y), 28); }

// Two interleaved 32-bit values as the low halves of two 64-bit lanes.
TS_AVX2 __m128i LoadPair(const std::int32_t* pair) {
  return _mm_cvtepi32_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i_u*>(pair)));
}

TS_AVX2 void StorePair(std::int32_t* pair, __m128i lanes) {
  _mm_storel_epi64(reinterpret_cast<__m128i_u*>(pair), _mm_shuffle_epi32(lanes, _MM_SHUFFLE(3, 1, 2, 0)));
}

// One stereo frame of 16-bit samples as x = sample << 11 in two lanes.
TS_AVX2 __m128i LoadDryFrame(const std::int16_t* frame) {
  std::int32_t bits;
  __builtin_memcpy(&bits, frame, sizeof bits);
  return _mm_slli_epi64(_mm_cvtepi16_epi64(_mm_cvtsi32_si128(bits)), 11);
}

struct BankCoefficients {
  PairCoefficients pairs[kVectorCount];
};

TS_AVX2 void LoadCoefficients(const PreciseSettings& settings, BankCoefficients& bank) {
  for (int v = 0; v < kVectorCount; ++v) {
    const BandCoefficients& a = kCoefficientsQ28[2 * v];
    const BandCoefficients& b = kCoefficientsQ28[2 * v + 1];
    bank.pairs[v] = {PairLanes(a.alpha, b.alpha), PairLanes(a.gamma, b.gamma), PairLanes(a.beta, b.beta),
                     PairLanes(settings.gainQ28[2 * v], settings.gainQ28[2 * v + 1])};
  }
}

// First stage: sum[n] = the gained outputs of all ten bands for frame n. All
// bands are fed the same dry samples, so band 0's inputs stand for all.
TS_AVX2 void FirstStage(const BankCoefficients& k, BankState& state, const std::int16_t* samples,
                        std::int32_t* sum, std::size_t frameCount) {
  __m256i y1[kVectorCount];
  __m256i y2[kVectorCount];
  for (int v = 0; v < kVectorCount; ++v) {
    auto& a = state[2 * v];
    auto& b = state[2 * v + 1];
    y1[v] = StateLanes(a[0], a[1], b[0], b[1], &BiquadState::y1);
    y2[v] = StateLanes(a[0], a[1], b[0], b[1], &BiquadState::y2);
  }
  __m256i x1 = StateLanes(state[0][0], state[0][1], state[0][0], state[0][1], &BiquadState::x1);
  __m256i x2 = StateLanes(state[0][0], state[0][1], state[0][0], state[0][1], &BiquadState::x2);
  for (std::size_t n = 0; n < frameCount; ++n) {
    const __m256i x = _mm256_broadcastsi128_si256(LoadDryFrame(samples + 2 * n));
    const __m256i difference = _mm256_sub_epi64(x, x2);
    __m256i total = _mm256_setzero_si256();
    for (int v = 0; v < kVectorCount; ++v) {
      const __m256i y = FilterLanes(k.pairs[v], difference, y1[v], y2[v]);
      y2[v] = y1[v];
      y1[v] = y;
      total = _mm256_add_epi32(total, GainLanes(k.pairs[v].gain, y));
    }
    x2 = x1;
    x1 = x;
    StorePair(sum + 2 * n, _mm_add_epi32(_mm256_castsi256_si128(total), _mm256_extracti128_si256(total, 1)));
  }
  for (int v = 0; v < kVectorCount; ++v) {
    auto& a = state[2 * v];
    auto& b = state[2 * v + 1];
    StoreLanes(y1[v], a[0], a[1], b[0], b[1], &BiquadState::y1);
    StoreLanes(y2[v], a[0], a[1], b[0], b[1], &BiquadState::y2);
  }
  for (auto& band : state) {
    StoreLanes(x1, band[0], band[1], band[0], band[1], &BiquadState::x1);
    StoreLanes(x2, band[0], band[1], band[0], band[1], &BiquadState::x2);
  }
}

// Second stage, step t for the bands whose frame t - 2b lies in the stretch,
// one band at a time: the pipeline's filling and draining.
void SecondStageEdgeStep(const PreciseSettings& settings, BankState& state, std::int32_t* sum,
                         std::size_t frameCount, std::size_t step) {
  for (int band = 0; band < kBandCount; ++band) {
    const std::size_t lag = kLag * static_cast<std::size_t>(band);
    if (step < lag || step - lag >= frameCount) continue;
    std::int32_t* frame = sum + 2 * (step - lag);
    for (int channel = 0; channel < kChannelCount; ++channel) {
      const std::int32_t y = StepQ28(kCoefficientsQ28[band], state[band][channel], frame[channel]);
      frame[channel] = WrapAdd(frame[channel], MultiplyQ28(settings.gainQ28[band], y));
    }
  }
}

// Second stage, steps in which every band has a frame: band 2v in the low
// lanes of vector v takes frame t - 4v, band 2v + 1 frame t - 4v - 2.
TS_AVX2 void SecondStagePipeline(const BankCoefficients& k, BankState& state, std::int32_t* sum,
                                 std::size_t firstStep, std::size_t endStep) {
  __m256i x1[kVectorCount];
  __m256i x2[kVectorCount];
  __m256i y1[kVectorCount];
  __m256i y2[kVectorCount];
  for (int v = 0; v < kVectorCount; ++v) {
    auto& a = state[2 * v];
    auto& b = state[2 * v + 1];
    x1[v] = StateLanes(a[0], a[1], b[0], b[1], &BiquadState::x1);
    x2[v] = StateLanes(a[0], a[1], b[0], b[1], &BiquadState::x2);
    y1[v] = StateLanes(a[0], a[1], b[0], b[1], &BiquadState::y1);
    y2[v] = StateLanes(a[0], a[1], b[0], b[1], &BiquadState::y2);
  }
  for (std::size_t step = firstStep; step < endStep; ++step) {
    for (int v = 0; v < kVectorCount; ++v) {
      std::int32_t* low = sum + 2 * (step - 2 * kLag * static_cast<std::size_t>(v));
      std::int32_t* high = low - 2 * kLag;
      const __m256i input = _mm256_inserti128_si256(_mm256_castsi128_si256(LoadPair(low)), LoadPair(high), 1);
      const __m256i y = FilterLanes(k.pairs[v], _mm256_sub_epi64(input, x2[v]), y1[v], y2[v]);
      x2[v] = x1[v];
      x1[v] = input;
      y2[v] = y1[v];
      y1[v] = y;
      const __m256i output = _mm256_add_epi32(input, GainLanes(k.pairs[v].gain, y));
      StorePair(low, _mm256_castsi256_si128(output));
      StorePair(high, _mm256_extracti128_si256(output, 1));
    }
  }
  for (int v = 0; v < kVectorCount; ++v) {
    auto& a = state[2 * v];
    auto& b = state[2 * v + 1];
    StoreLanes(x1[v], a[0], a[1], b[0], b[1], &BiquadState::x1);
    StoreLanes(x2[v], a[0], a[1], b[0], b[1], &BiquadState::x2);
    StoreLanes(y1[v], a[0], a[1], b[0], b[1], &BiquadState::y1);
    StoreLanes(y2[v], a[0], a[1], b[0], b[1], &BiquadState::y2);
  }
}

TS_AVX2 void SecondStage(const PreciseSettings& settings, const BankCoefficients& k, BankState& state,
                         std::int32_t* sum, std::size_t frameCount) {
  const std::size_t endStep = frameCount + kPipelineDepth;
  // Steps from kPipelineDepth to frameCount - 1 have every band busy.
  const std::size_t fullFrom = std::min(kPipelineDepth, frameCount);
  const std::size_t fullTo = std::max(fullFrom, frameCount);
  for (std::size_t step = 0; step < fullFrom; ++step) SecondStageEdgeStep(settings, state, sum, frameCount, step);
  if (fullTo > fullFrom) SecondStagePipeline(k, state, sum, fullFrom, fullTo);
  for (std::size_t step = fullTo; step < endStep; ++step) SecondStageEdgeStep(settings, state, sum, frameCount, step);
}

TS_AVX2 void PreciseOutput(const std::int32_t* sum, std::int32_t preamp, std::int16_t* samples,
                           std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    samples[i] = ClipToSample(ApplyPreamp(WrapAdd(sum[i], samples[i] * 2048) >> 12, preamp));
  }
}

TS_AVX2 void Precise(const PreciseSettings& settings, BankState& stage1, BankState& stage2,
                     std::int16_t* frames, std::size_t frameCount) {
  BankCoefficients k;
  LoadCoefficients(settings, k);
  alignas(32) std::int32_t sum[kStretchFrames * 2];
  for (std::size_t done = 0; done < frameCount; done += kStretchFrames) {
    const std::size_t stretch = std::min(kStretchFrames, frameCount - done);
    std::int16_t* samples = frames + 2 * done;
    FirstStage(k, stage1, samples, sum, stretch);
    SecondStage(settings, k, stage2, sum, stretch);
    PreciseOutput(sum, settings.preamp, samples, stretch * 2);
  }
}

// Extra bass, step t outside the full pipeline: stage one on frame t and
// stage two on frame t - 2 where they lie in the stretch.
void BassEdgeStep(std::int32_t gain, ChannelPairState& stage1, ChannelPairState& stage2,
                  std::int16_t* samples, std::int32_t* boost, std::size_t frameCount, std::size_t step) {
  const BandCoefficients& k = kCoefficientsQ28[0];
  for (int channel = 0; channel < kChannelCount; ++channel) {
    if (step < frameCount) {
      const std::size_t i = 2 * step + static_cast<std::size_t>(channel);
      boost[i] = MultiplyQ28(gain, StepQ28(k, stage1[channel], samples[i] * 2048));
    }
    if (step >= kLag && step - kLag < frameCount) {
      const std::size_t i = 2 * (step - kLag) + static_cast<std::size_t>(channel);
      const std::int32_t boostAgain = MultiplyQ28(gain, StepQ28(k, stage2[channel], boost[i]));
      samples[i] = ClipToSample(WrapAdd(WrapAdd(boost[i], boostAgain), samples[i] * 2048) >> 12);
    }
  }
}

TS_AVX2 void BassPipeline(std::int32_t gain, ChannelPairState& stage1, ChannelPairState& stage2,
                          std::int16_t* samples, std::int32_t* boost, std::size_t firstStep,
                          std::size_t endStep) {
  const BandCoefficients& band0 = kCoefficientsQ28[0];
  const PairCoefficients k = {PairLanes(band0.alpha, band0.alpha), PairLanes(band0.gamma, band0.gamma),
                              PairLanes(band0.beta, band0.beta), PairLanes(gain, gain)};
  __m256i x1 = StateLanes(stage1[0], stage1[1], stage2[0], stage2[1], &BiquadState::x1);
  __m256i x2 = StateLanes(stage1[0], stage1[1], stage2[0], stage2[1], &BiquadState::x2);
  __m256i y1 = StateLanes(stage1[0], stage1[1], stage2[0], stage2[1], &BiquadState::y1);
  __m256i y2 = StateLanes(stage1[0], stage1[1], stage2[0], stage2[1], &BiquadState::y2);
  for (std::size_t step = firstStep; step < endStep; ++step) {
    // The dry frame t - 2 is still stage one's x[n-2].
    const __m128i dryBefore = _mm256_castsi256_si128(x2);
    std::int32_t* boosted = boost + 2 * (step - kLag);
    const __m256i input =
        _mm256_inserti128_si256(_mm256_castsi128_si256(LoadDryFrame(samples + 2 * step)), LoadPair(boosted), 1);
    const __m256i y = FilterLanes(k, _mm256_sub_epi64(input, x2), y1, y2);
    x2 = x1;
    x1 = input;
    y2 = y1;
    y1 = y;
    const __m256i gained = GainLanes(k.gain, y);
    StorePair(boost + 2 * step, _mm256_castsi256_si128(gained));
    const __m128i out = _mm_srai_epi32(
        _mm_add_epi32(_mm_add_epi32(_mm256_extracti128_si256(input, 1), _mm256_extracti128_si256(gained, 1)),
                      dryBefore),
        12);
    const __m128i packed = _mm_packs_epi32(_mm_shuffle_epi32(out, _MM_SHUFFLE(3, 1, 2, 0)), out);
    const std::int32_t bits = _mm_cvtsi128_si32(packed);
    __builtin_memcpy(samples + 2 * (step - kLag), &bits, sizeof bits);
  }
  StoreLanes(x1, stage1[0], stage1[1], stage2[0], stage2[1], &BiquadState::x1);
  StoreLanes(x2, stage1[0], stage1[1], stage2[0], stage2[1], &BiquadState::x2);
  StoreLanes(y1, stage1[0], stage1[1], stage2[0], stage2[1], &BiquadState::y1);
  StoreLanes(y2, stage1[0], stage1[1], stage2[0], stage2[1], &BiquadState::y2);
}

TS_AVX2 void Bass(std::int32_t gain, ChannelPairState& stage1, ChannelPairState& stage2, std::int16_t* frames,
                  std::size_t frameCount) {
  alignas(32) std::int32_t boost[kBassStretchFrames * 2];
  for (std::size_t done = 0; done < frameCount; done += kBassStretchFrames) {
    const std::size_t stretch = std::min(kBassStretchFrames, frameCount - done);
    std::int16_t* samples = frames + 2 * done;
    const std::size_t fullFrom = std::min(kLag, stretch);
    const std::size_t fullTo = std::max(fullFrom, stretch);
    for (std::size_t step = 0; step < fullFrom; ++step) {
      BassEdgeStep(gain, stage1, stage2, samples, boost, stretch, step);
    }
    if (fullTo > fullFrom) BassPipeline(gain, stage1, stage2, samples, boost, fullFrom, fullTo);
    for (std::size_t step = fullTo; step < stretch + kLag; ++step) {
      BassEdgeStep(gain, stage1, stage2, samples, boost, stretch, step);
    }
  }
}

bool ProcessorHasAvx2() {
  __builtin_cpu_init();
  return __builtin_cpu_supports("avx2");
}

}  // namespace

const FilterKernels* Avx2Kernels() {
  static const FilterKernels kernels = {"avx2", Precise, PortableKernels().plain, Bass};
  static const bool available = ProcessorHasAvx2();
  return available ? &kernels : nullptr;
}

}  // namespace effects

#else

namespace effects {

const FilterKernels* Avx2Kernels() { return nullptr; }

}  // namespace effects

#endif
