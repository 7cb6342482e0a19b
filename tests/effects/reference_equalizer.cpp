#include "reference_equalizer.h"

#include "effects/filter_tables.h"
#include "effects/slider_gain.h"

namespace effects::test_support {
namespace {

std::int32_t Clip(std::int64_t v) { return v < -32768 ? -32768 : v > 32767 ? 32767 : static_cast<std::int32_t>(v); }

// y = (alpha * (x[n] - x[n-2]) + gamma * y[n-1] - beta * y[n-2]) >> 28 in
// 64 bits; x[n] - x[n-2] is a 32-bit difference, y keeps its low 32 bits.
std::int32_t Q28(const BandCoefficients& k, std::int32_t xn, std::int32_t xn2, std::int32_t yn1,
                 std::int32_t yn2) {
  const auto difference = static_cast<std::int32_t>(static_cast<std::uint32_t>(xn) - static_cast<std::uint32_t>(xn2));
  const std::int64_t sum = std::int64_t{k.alpha} * difference + std::int64_t{k.gamma} * yn1 - std::int64_t{k.beta} * yn2;
  return static_cast<std::int32_t>(sum >> 28);
}

}  // namespace

void ReferenceEqualizer::SetBands(std::int32_t preampSlider, const std::array<std::int32_t, 10>& bands) {
  flat = true;
  for (int b = 0; b < 10; ++b) {
    if (bands[b] != 14) flat = false;
    gainQ14[b] = GainForSlider(bands[b]).q14;
    gainQ28[b] = GainForSlider(bands[b]).q28;
  }
  preamp = PreampForSlider(preampSlider);
}

std::int32_t ReferenceEqualizer::PreciseSample(int c, std::int16_t sample) {
  const std::int32_t x = sample * 2048;
  std::uint32_t acc = 0;
  const Index& i = eqIndex;
  for (int b = 0; b < 10; ++b) {
    Slots& h = stage1[b][c];
    h.x[i.n] = x;
    h.y[i.n] = Q28(kCoefficientsQ28[b], h.x[i.n], h.x[i.n2], h.y[i.n1], h.y[i.n2]);
    acc += static_cast<std::uint32_t>((std::int64_t{gainQ28[b]} * h.y[i.n]) >> 28);
  }
  for (int b = 0; b < 10; ++b) {
    Slots& h = stage2[b][c];
    h.x[i.n] = static_cast<std::int32_t>(acc);
    h.y[i.n] = Q28(kCoefficientsQ28[b], h.x[i.n], h.x[i.n2], h.y[i.n1], h.y[i.n2]);
    acc += static_cast<std::uint32_t>((std::int64_t{gainQ28[b]} * h.y[i.n]) >> 28);
  }
  std::int32_t out = static_cast<std::int32_t>(acc + static_cast<std::uint32_t>(x)) >> 12;
  if (preamp != 14) out = (out * (preamp + 2)) >> 4;
  if (unclipped != nullptr) unclipped->push_back(out);
  return Clip(out);
}

std::int32_t ReferenceEqualizer::PlainSample(int c, std::int16_t& sample) {
  if (preamp != 14) sample = static_cast<std::int16_t>((sample * (preamp + 2)) >> 4);
  std::int64_t acc = 0;
  const Index& i = eqIndex;
  for (int b = 0; b < 10; ++b) {
    const BandCoefficients& k = kCoefficientsQ14[b];
    Slots& h = plainBank[b][c];
    h.x[i.n] = sample;
    const std::uint32_t sum = static_cast<std::uint32_t>(k.alpha) * static_cast<std::uint32_t>(h.x[i.n] - h.x[i.n2]) -
                              static_cast<std::uint32_t>(k.beta) * static_cast<std::uint32_t>(h.y[i.n2]) +
                              static_cast<std::uint32_t>(k.gamma) * static_cast<std::uint32_t>(h.y[i.n1]);
    h.y[i.n] = static_cast<std::int32_t>(sum) >> 14;
    acc += static_cast<std::int32_t>(static_cast<std::uint32_t>(h.y[i.n]) * static_cast<std::uint32_t>(gainQ14[b]));
  }
  return Clip((acc >> 12) + (sample >> 2) + 12500);
}

int ReferenceEqualizer::Process(std::int16_t* samples, std::size_t bytes) {
  if (!enabled) return 0;
  if (precise && flat) {
    if (preamp == 14) return static_cast<int>(bytes);
    for (std::size_t s = 0; s < bytes / 2; ++s) samples[s] = static_cast<std::int16_t>(Clip((samples[s] * (preamp + 2)) >> 4));
    return static_cast<int>(bytes);
  }
  for (std::size_t f = 0; f < bytes / 4; ++f) {
    for (int c = 0; c < 2; ++c) {
      std::int16_t& sample = samples[2 * f + c];
      sample = static_cast<std::int16_t>(precise ? PreciseSample(c, sample) : PlainSample(c, sample));
    }
    eqIndex.Rotate();
  }
  return static_cast<int>(bytes);
}

void ReferenceEqualizer::ApplyBass(std::int16_t* samples, std::size_t bytes) {
  const BandCoefficients& k = kCoefficientsQ28[0];
  const Index& i = bassIndex;
  for (std::size_t f = 0; f < bytes / 4; ++f) {
    for (int c = 0; c < 2; ++c) {
      std::int16_t& sample = samples[2 * f + c];
      const std::int32_t x = sample * 2048;
      Slots& h1 = bass1[c];
      h1.x[i.n] = x;
      h1.y[i.n] = Q28(k, h1.x[i.n], h1.x[i.n2], h1.y[i.n1], h1.y[i.n2]);
      const auto z = static_cast<std::int32_t>((std::int64_t{bassGain} * h1.y[i.n]) >> 28);
      Slots& h2 = bass2[c];
      h2.x[i.n] = z;
      h2.y[i.n] = Q28(k, h2.x[i.n], h2.x[i.n2], h2.y[i.n1], h2.y[i.n2]);
      const auto z2 = static_cast<std::int32_t>((std::int64_t{bassGain} * h2.y[i.n]) >> 28);
      const std::uint32_t sum = static_cast<std::uint32_t>(z) + static_cast<std::uint32_t>(z2) + static_cast<std::uint32_t>(x);
      sample = static_cast<std::int16_t>(Clip(static_cast<std::int32_t>(sum) >> 12));
    }
    bassIndex.Rotate();
  }
}

}  // namespace effects::test_support
