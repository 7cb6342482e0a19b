// What the filters do to sound: the coefficient tables against the design
// they come from, and tones through the equalizer and extra bass measured
// against the frequency response of the same filter structure computed in
// double precision.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdint>
#include <numbers>
#include <vector>

#include "effects/equalizer.h"
#include "effects/filter_tables.h"
#include "effects/slider_gain.h"
#include "test_signals.h"

namespace effects {
namespace {

using Complex = std::complex<double>;
using Bands = std::array<std::int32_t, kBandCount>;

constexpr double kQ28 = 268435456.0;
constexpr double kQ14 = 16384.0;
// One second after a second of settling: whole periods of every integer
// frequency, so the correlation sees no leakage (nor the plain path's offset).
constexpr std::size_t kSettleFrames = 44100;
constexpr std::size_t kMeasureFrames = 44100;

double Radians(double hz) { return 2.0 * std::numbers::pi * hz / 44100.0; }

// alpha (1 - z^-2) / (1 - gamma z^-1 + beta z^-2) at frequency w.
Complex BandResponse(const BandCoefficients& k, double scale, double w) {
  const Complex z1 = std::polar(1.0, -w);
  return (k.alpha / scale) * (1.0 - z1 * z1) / (1.0 - (k.gamma / scale) * z1 + (k.beta / scale) * z1 * z1);
}

// Precise path: the first bank's gained sum, passed through the second bank
// where each band adds gain * band(sum so far), plus the dry signal, all
// halved, then the preamp.
double PreciseResponse(const Bands& bands, std::int32_t preampSlider, double hz) {
  const double w = Radians(hz);
  Complex sum = 0.0;
  for (int b = 0; b < kBandCount; ++b) {
    sum += GainForSlider(bands[b]).q28 / kQ28 * BandResponse(kCoefficientsQ28[b], kQ28, w);
  }
  for (int b = 0; b < kBandCount; ++b) {
    sum *= 1.0 + GainForSlider(bands[b]).q28 / kQ28 * BandResponse(kCoefficientsQ28[b], kQ28, w);
  }
  const double preamp = PreampForSlider(preampSlider);
  return std::abs(0.5 * (1.0 + sum)) * (preamp + 2.0) / 16.0;
}

// Plain path: (sum of gain * band) / 4096 with 14-bit gains, plus a quarter of the dry signal.
double PlainResponse(const Bands& bands, double hz) {
  const double w = Radians(hz);
  Complex sum = 0.25;
  for (int b = 0; b < kBandCount; ++b) {
    sum += GainForSlider(bands[b]).q14 / 4096.0 * BandResponse(kCoefficientsQ14[b], kQ14, w);
  }
  return std::abs(sum);
}

double MeasureGain(Equalizer& equalizer, double hz, double amplitude, bool bass) {
  std::vector<std::int16_t> samples = test_support::Tone(kSettleFrames + kMeasureFrames, hz, amplitude);
  const std::vector<std::int16_t> dry = samples;
  for (std::size_t offset = 0; offset < samples.size(); offset += 8192) {
    std::int16_t* block = samples.data() + offset;
    const std::size_t bytes = std::min<std::size_t>(16384, (samples.size() - offset) * 2);
    if (bass) {
      equalizer.ApplyBass(&block, bytes);
    } else {
      equalizer.Process(&block, bytes);
    }
  }
  const std::size_t end = kSettleFrames + kMeasureFrames;
  return test_support::ToneAmplitude(samples, 0, hz, kSettleFrames, end) /
         test_support::ToneAmplitude(dry, 0, hz, kSettleFrames, end);
}

TEST(CoefficientTableTest, TablesAreTheBandPassDesignAtTheirCentres) {
  // alpha = (1 - beta) / 2 and gamma = (1 + beta) cos(2 pi f / 44100), each
  // rounded to the nearest unit of its table.
  for (int b = 0; b < kBandCount; ++b) {
    const double w = Radians(kBandCentreHz[b]);
    for (const auto& [table, scale] : {std::pair{&kCoefficientsQ28, kQ28}, std::pair{&kCoefficientsQ14, kQ14}}) {
      const BandCoefficients& k = (*table)[b];
      EXPECT_NEAR(k.alpha, (scale - k.beta) / 2.0, 1.0) << "band " << b;
      EXPECT_NEAR(k.gamma, (scale + k.beta) * std::cos(w), 1.0) << "band " << b;
      // Unity at the centre; rounding to 14 bits costs the narrow low bands up to 4 %.
      EXPECT_NEAR(std::abs(BandResponse(k, scale, w)), 1.0, scale == kQ28 ? 0.0001 : 0.04) << "band " << b;
    }
    EXPECT_NEAR(kCoefficientsQ14[b].beta, kCoefficientsQ28[b].beta / kQ14, 1.0) << "band " << b;
  }
}

TEST(ToneResponseTest, PreciseBandSliderRaisesOrLowersItsCentreTone) {
  for (int b = 0; b < kBandCount; ++b) {
    for (std::int32_t position : {0, 27}) {
      Bands bands = {14, 14, 14, 14, 14, 14, 14, 14, 14, 14};
      bands[b] = position;
      Equalizer equalizer(FilterPath::kPrecise);
      equalizer.SetBands(13, bands);
      const double hz = kBandCentreHz[b];
      const double measured = MeasureGain(equalizer, hz, 3000.0, false);
      const double expected = PreciseResponse(bands, 13, hz);
      EXPECT_NEAR(measured, expected, expected * 0.01) << "band " << b << " at " << position;
      // The strongest position lifts the band's tone by 3.5 dB or more, the
      // weakest lowers it by 1.5 dB or more.
      if (position == 0) {
        EXPECT_GT(20 * std::log10(measured), 3.5) << "band " << b;
      } else {
        EXPECT_LT(20 * std::log10(measured), -1.5) << "band " << b;
      }
    }
  }
}

TEST(ToneResponseTest, PreciseResponseHoldsAcrossTheSpectrumForACurve) {
  const Bands smile = {4, 8, 12, 14, 18, 20, 16, 12, 8, 5};
  for (double hz : {40.0, 100.0, 440.0, 2000.0, 8000.0, 18000.0}) {
    Equalizer equalizer(FilterPath::kPrecise);
    equalizer.SetBands(16, smile);
    const double measured = MeasureGain(equalizer, hz, 3000.0, false);
    const double expected = PreciseResponse(smile, 16, hz);
    EXPECT_NEAR(measured, expected, expected * 0.01) << hz << " Hz";
  }
}

// Only the bands from 1 kHz up: the 14-bit low bands are so narrow that
// their own rounding, which their resonance lifts by a factor of thousands,
// outweighs a tone of moderate level; that is the plain path's sound.
TEST(ToneResponseTest, PlainBandSliderFollowsItsResponse) {
  for (int b = 4; b < kBandCount; ++b) {
    for (std::int32_t position : {0, 14, 27}) {
      Bands bands = {14, 14, 14, 14, 14, 14, 14, 14, 14, 14};
      bands[b] = position;
      Equalizer equalizer(FilterPath::kPlain);
      equalizer.SetBands(13, bands);
      const double hz = kBandCentreHz[b];
      const double measured = MeasureGain(equalizer, hz, 1000.0, false);
      const double expected = PlainResponse(bands, hz);
      EXPECT_NEAR(measured, expected, expected * 0.02) << "band " << b << " at " << position;
    }
  }
}

TEST(ToneResponseTest, ExtraBassHalvesHighTonesAndLiftsTheLowestBand) {
  const std::array<double, 5> strength = {0.0, 0.95, 1.4, 1.7, 2.2};
  for (std::int32_t mode = 1; mode <= 4; ++mode) {
    Equalizer high(FilterPath::kPrecise);
    high.SetBassMode(mode);
    EXPECT_NEAR(MeasureGain(high, 16000.0, 8000.0, true), 0.5, 0.005) << "mode " << mode;

    // At 60 Hz: half of (1 + g H + (g H)^2), band 0's H being 1 there.
    Equalizer low(FilterPath::kPrecise);
    low.SetBassMode(mode);
    const Complex gh = strength[mode] * BandResponse(kCoefficientsQ28[0], kQ28, Radians(60.0));
    const double expected = std::abs(0.5 * (1.0 + gh + gh * gh));
    EXPECT_NEAR(MeasureGain(low, 60.0, 2000.0, true), expected, expected * 0.01) << "mode " << mode;
  }
}

}  // namespace
}  // namespace effects
