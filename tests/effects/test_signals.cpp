#include "test_signals.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace effects::test_support {
namespace {

class Random {
 public:
  explicit Random(std::uint32_t seed) : state(seed * 2654435761u + 1) {}
  std::uint32_t Next() {
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    return state;
  }
  double Unit() { return static_cast<double>(Next()) / 4294967296.0 * 2.0 - 1.0; }

 private:
  std::uint32_t state;
};

std::int16_t Saturate(double value) {
  return static_cast<std::int16_t>(std::clamp(std::lround(value), -32768L, 32767L));
}

constexpr double kTwoPi = 2.0 * std::numbers::pi;

}  // namespace

std::vector<std::int16_t> WhiteNoise(std::size_t frames, std::uint32_t seed) {
  Random random(seed);
  std::vector<std::int16_t> samples(frames * 2);
  for (auto& sample : samples) sample = static_cast<std::int16_t>(random.Next() >> 16);
  return samples;
}

std::vector<std::int16_t> MusicLike(std::size_t frames, std::uint32_t seed) {
  Random random(seed);
  std::vector<std::int16_t> samples(frames * 2);
  const double root = 55.0 * (1.0 + (seed % 7) / 7.0);
  for (std::size_t n = 0; n < frames; ++n) {
    const double t = static_cast<double>(n) / 44100.0;
    const double swell = 0.3 + 0.8 * std::fabs(std::sin(kTwoPi * 0.7 * t));
    const double bass = 0.5 * std::sin(kTwoPi * root * t);
    const double chord = 0.2 * (std::sin(kTwoPi * root * 4 * t) + std::sin(kTwoPi * root * 5 * t) +
                                std::sin(kTwoPi * root * 6 * t));
    const double hat = (n % 5512 < 600) ? 0.15 * random.Unit() : 0.0;
    const double left = swell * (bass + chord + hat);
    const double right = swell * (bass + 0.8 * chord - hat + 0.05 * std::sin(kTwoPi * 9000.0 * t));
    samples[2 * n] = Saturate(left * 32767.0);
    samples[2 * n + 1] = Saturate(right * 32767.0);
  }
  return samples;
}

std::vector<std::int16_t> Tone(std::size_t frames, double hz, double amplitude) {
  std::vector<std::int16_t> samples(frames * 2);
  for (std::size_t n = 0; n < frames; ++n) {
    const std::int16_t value = Saturate(amplitude * std::sin(kTwoPi * hz * static_cast<double>(n) / 44100.0));
    samples[2 * n] = value;
    samples[2 * n + 1] = value;
  }
  return samples;
}

std::vector<std::int16_t> FullScaleSquare(std::size_t frames, std::size_t period) {
  std::vector<std::int16_t> samples(frames * 2);
  for (std::size_t n = 0; n < frames; ++n) {
    const std::int16_t value = (n % period) < period / 2 ? 32767 : -32768;
    samples[2 * n] = value;
    samples[2 * n + 1] = value;
  }
  return samples;
}

double ToneAmplitude(const std::vector<std::int16_t>& samples, int channel, double hz, std::size_t from,
                     std::size_t to) {
  double sine = 0;
  double cosine = 0;
  for (std::size_t n = from; n < to; ++n) {
    const double phase = kTwoPi * hz * static_cast<double>(n) / 44100.0;
    const double value = samples[2 * n + static_cast<std::size_t>(channel)];
    sine += value * std::sin(phase);
    cosine += value * std::cos(phase);
  }
  const double count = static_cast<double>(to - from);
  return 2.0 * std::hypot(sine, cosine) / count;
}

}  // namespace effects::test_support
