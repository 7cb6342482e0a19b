// The equalizer's and extra bass's behaviour as the application and the
// mixer see it: settings, the two paths' exact arithmetic on chosen inputs,
// the on/off switch, clipping, and the histories that outlive a block.
#include "effects/equalizer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <map>
#include <set>
#include <vector>

#include "effects/slider_gain.h"
#include "reference_equalizer.h"
#include "test_signals.h"

namespace effects {
namespace {

using Bands = std::array<std::int32_t, kBandCount>;
constexpr Bands kCentred = {14, 14, 14, 14, 14, 14, 14, 14, 14, 14};
constexpr Bands kAllStrongest = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
constexpr Bands kAllWeakest = {27, 27, 27, 27, 27, 27, 27, 27, 27, 27};
constexpr std::size_t kBlockBytes = 16384;
constexpr std::size_t kBlockFrames = kBlockBytes / 4;

// Runs `samples` through Process (and ApplyBass when asked) in mixer blocks.
void RunBlocks(Equalizer& equalizer, std::vector<std::int16_t>& samples, bool bass = false) {
  for (std::size_t offset = 0; offset < samples.size(); offset += kBlockBytes / 2) {
    std::int16_t* block = samples.data() + offset;
    const std::size_t bytes = std::min(kBlockBytes, (samples.size() - offset) * 2);
    equalizer.Process(&block, bytes);
    if (bass) equalizer.ApplyBass(&block, bytes);
  }
}

std::vector<std::int16_t> LeftImpulse(std::int16_t height, std::size_t frames = kBlockFrames) {
  std::vector<std::int16_t> samples(frames * 2, 0);
  samples[0] = height;
  return samples;
}

std::vector<std::int16_t> LeftChannel(const std::vector<std::int16_t>& samples, std::size_t frames) {
  std::vector<std::int16_t> left;
  for (std::size_t n = 0; n < frames; ++n) left.push_back(samples[2 * n]);
  return left;
}

TEST(SliderGainTest, GainsRunFromOneToMinusOneFifthThroughSinglePrecision) {
  // Pinned: the centre, both ends, and the rounding that single precision
  // leaves in them (position 14 is 0.37777779... before truncation).
  EXPECT_EQ(GainForSlider(14).q14, 6189);
  EXPECT_EQ(GainForSlider(14).q28, 101408952);
  EXPECT_EQ(GainForSlider(0).q14, 16384);
  EXPECT_EQ(GainForSlider(0).q28, 268435456);
  EXPECT_EQ(GainForSlider(27).q14, -3276);
  EXPECT_EQ(GainForSlider(27).q28, -53687092);
  EXPECT_EQ(GainForSlider(12).q28, 125269880);
  for (std::int32_t position = 1; position <= 27; ++position) {
    EXPECT_LT(GainForSlider(position).q28, GainForSlider(position - 1).q28) << position;
  }
}

TEST(SliderGainTest, PositionsOutsideTheSliderCountAsTheNearestEnd) {
  for (std::int32_t position : {-1, -27, INT_MIN}) EXPECT_EQ(GainForSlider(position).q28, GainForSlider(0).q28);
  for (std::int32_t position : {28, 1000, INT_MAX}) EXPECT_EQ(GainForSlider(position).q14, GainForSlider(27).q14);
}

TEST(SliderGainTest, PreampIsTwentySevenLessTheSliderClipped) {
  // Unity (14) sits one step off the centre.
  for (const auto& [slider, preamp] : std::map<std::int32_t, std::int32_t>{
           {13, 14}, {14, 13}, {-3, 27}, {40, 0}, {INT_MIN, 27}, {INT_MAX, 0}}) {
    EXPECT_EQ(PreampForSlider(slider), preamp) << slider;
  }
}

TEST(EqualizerSettingsTest, SetBandsStoresGainsPreampAndFlatness) {
  Equalizer equalizer(FilterPath::kPrecise);
  EXPECT_TRUE(equalizer.Flat());
  Bands bands = kCentred;
  bands[4] = 3;
  equalizer.SetBands(20, bands);
  EXPECT_FALSE(equalizer.Flat());
  EXPECT_EQ(equalizer.Preamp(), 7);
  EXPECT_EQ(equalizer.GainQ28(4), GainForSlider(3).q28);
  equalizer.SetBands(-50, kCentred);
  EXPECT_TRUE(equalizer.Flat());
  // A band beyond the end gives the end's gain but is not centred.
  bands = kCentred;
  bands[9] = 14 + 28;
  equalizer.SetBands(13, bands);
  EXPECT_FALSE(equalizer.Flat());
  EXPECT_EQ(equalizer.GainQ28(9), GainForSlider(27).q28);
  equalizer.SetBands(0, nullptr);  // changes nothing
  EXPECT_EQ(equalizer.Preamp(), 14);
  EXPECT_FALSE(equalizer.Flat());
}

TEST(PrecisePathTest, CentredBandsAtUnityPreampLeaveEverySampleAlone) {
  Equalizer equalizer(FilterPath::kPrecise);
  equalizer.SetBands(13, kCentred);
  const std::vector<std::int16_t> music = test_support::MusicLike(20000, 4);
  std::vector<std::int16_t> samples = music;
  std::int16_t* block = samples.data();
  EXPECT_EQ(equalizer.Process(&block, samples.size() * 2), static_cast<int>(samples.size() * 2));
  EXPECT_EQ(samples, music);
}

TEST(PrecisePathTest, CentredBandsScaleByThePreampAndClip) {
  Equalizer equalizer(FilterPath::kPrecise);
  // Slider 0: factor 29/16, shifted down (towards minus infinity) and clipped.
  equalizer.SetBands(0, kCentred);
  std::vector<std::int16_t> samples = {1000, -1000, 32767, -32768, 16, -1, 18078, 18079};
  std::int16_t* block = samples.data();
  equalizer.Process(&block, 14);  // the last sample lies outside the block
  EXPECT_EQ(samples, (std::vector<std::int16_t>{1812, -1813, 32767, -32768, 29, -2, 32766, 18079}));
  // Slider 14, the centre: 15/16.
  equalizer.SetBands(14, kCentred);
  samples = {1600, -1600, 32767};
  equalizer.Process(&block, 6);
  EXPECT_EQ(samples, (std::vector<std::int16_t>{1500, -1500, 30719}));
}

TEST(PrecisePathTest, FullScaleSquareIsClippedNotWrapped) {
  // Centred bands, slider 0: the square is lifted to 29/16 and held at the rails.
  Equalizer flat(FilterPath::kPrecise);
  flat.SetBands(0, kCentred);
  const std::vector<std::int16_t> square = test_support::FullScaleSquare(kBlockFrames, 100);
  std::vector<std::int16_t> samples = square;
  RunBlocks(flat, samples);
  EXPECT_EQ(samples, square);

  // Every band at its strongest: the filters' output before clipping runs
  // far past 16 bits, and the stored sample is that value clipped.
  for (std::size_t period : {4u, 100u, 441u, 2000u}) {
    Equalizer equalizer(FilterPath::kPrecise);
    equalizer.SetBands(0, kAllStrongest);
    test_support::ReferenceEqualizer reference(true);
    reference.SetBands(0, kAllStrongest);
    std::vector<std::int32_t> unclipped;
    reference.unclipped = &unclipped;
    samples = test_support::FullScaleSquare(kBlockFrames * 2, period);
    std::vector<std::int16_t> ignored = samples;
    reference.Process(ignored.data(), ignored.size() * 2);
    RunBlocks(equalizer, samples);
    ASSERT_EQ(unclipped.size(), samples.size());
    std::size_t beyond = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
      if (unclipped[i] > 32767 || unclipped[i] < -32768) ++beyond;
      ASSERT_EQ(samples[i], std::clamp(unclipped[i], -32768, 32767)) << "period " << period << " sample " << i;
    }
    EXPECT_GT(beyond, samples.size() / 10) << "period " << period;
  }
}

// Pinned outputs of the left channel for a left impulse on fresh filters.
// They were taken from the frame-by-frame reference; any change to the
// arithmetic moves them. The silent right channel stays at 0, or at the
// plain path's offset of 12500.
//
// The plain path's first frame by hand: each band's first output is
// (alpha * 1024) >> 14, alpha / 16 rounded down: 2, 8, 15, 29, 48, 133, 231,
// 353, 375, 388, which sum to 1582; times the centre's gain 6189 is 9790998,
// >> 12 gives 2390, plus the dry quarter 256 and the offset: 15146.
//
// Extra bass by hand (mode 2, gain 0x16666666 = 375809638, band 0 with
// alpha 776442, gamma 535298466, beta 266882570): frame 0: x = 16384 << 11
// = 2^25, y = (776442 * 2^25) >> 28 = 97055, z = (375809638 * 97055) >> 28
// = 135876; stage two: y2 = 393, z2 = 550; out = (135876 + 550 + 2^25) >> 12
// = 8225. Frame 1: y = (535298466 * 97055) >> 28 = 193541, z = 270957;
// y2 = (776442 * 270957 + 535298466 * 393) >> 28 = 1567, z2 = 2193;
// out = (270957 + 2193) >> 12 = 66.
struct Pinned {
  FilterPath path;
  std::int32_t preampSlider;
  Bands bands;
  std::int32_t bassMode;  // not 0: only the extra bass runs
  std::int16_t impulse;
  std::array<std::int16_t, 12> first;
  std::int16_t at100, at1000, at4000, right;
};

TEST(EqualizerTest, ImpulseResponsesArePinned) {
  const std::array<Pinned, 5> pins = {{
      {FilterPath::kPrecise, 13, kAllStrongest, 0, 2048,
       {7198, 1248, -7408, 2599, 2690, -3383, 818, 1598, -506, -99, 251, 86}, -28, -1, -4, 0},
      {FilterPath::kPrecise, 20, {6, 9, 12, 14, 16, 17, 15, 12, 9, 7}, 0, 16384,
       {12092, -2133, -8127, 6548, 700, -3457, 2183, 756, -458, 227, 218, 127}, -44, -5, -2, 0},
      {FilterPath::kPrecise, 13, kAllWeakest, 0, -20000,
       {-7749, 87, -842, 515, -369, 196, -145, 111, 38, 43, 16, 16}, -10, 0, 0, 0},
      // Centred bands still filter on the plain path.
      {FilterPath::kPlain, 13, kCentred, 0, 1024,
       {15146, 12593, 11129, 13258, 12184, 12311, 12456, 12501, 12451, 12380, 12367, 12365}, 11309, 6060, -3006,
       12500},
      {FilterPath::kPrecise, 13, kCentred, 2, 16384, {8225, 66, 66, 66, 67, 67, 67, 67, 67, 67, 67, 67}, 42, -17,
       -10, 0},
  }};
  for (const Pinned& pin : pins) {
    SCOPED_TRACE(pin.impulse);
    Equalizer equalizer(pin.path);
    std::vector<std::int16_t> samples = LeftImpulse(pin.impulse);
    std::int16_t* block = samples.data();
    if (pin.bassMode != 0) {
      equalizer.SetBassMode(pin.bassMode);
      EXPECT_EQ(equalizer.ApplyBass(&block, kBlockBytes), static_cast<int>(kBlockBytes));
    } else {
      equalizer.SetBands(pin.preampSlider, pin.bands);
      EXPECT_EQ(equalizer.Process(&block, kBlockBytes), static_cast<int>(kBlockBytes));
    }
    const std::vector<std::int16_t> left = LeftChannel(samples, 12);
    EXPECT_TRUE(std::equal(left.begin(), left.end(), pin.first.begin()));
    EXPECT_EQ(samples[200], pin.at100);
    EXPECT_EQ(samples[2000], pin.at1000);
    EXPECT_EQ(samples[8000], pin.at4000);
    for (std::size_t n = 0; n < kBlockFrames; ++n) ASSERT_EQ(samples[2 * n + 1], pin.right);
  }
}

TEST(PlainPathTest, PreampComesFirstAndWrapsToSixteenBits) {
  // Slider 0 lifts 32767 to 59390, which the plain path truncates to -6146
  // before filtering: the result is that of -6146 at unity.
  Equalizer lifted(FilterPath::kPlain);
  lifted.SetBands(0, kCentred);
  Equalizer unity(FilterPath::kPlain);
  unity.SetBands(13, kCentred);
  std::vector<std::int16_t> full = {32767, 32767, 1000, -1000};
  std::vector<std::int16_t> wrapped = {-6146, -6146, 1812, -1813};
  std::int16_t* block = full.data();
  lifted.Process(&block, 8);
  block = wrapped.data();
  unity.Process(&block, 8);
  EXPECT_EQ(full, wrapped);
  EXPECT_LT(full[0], 12500);  // a positive sample would have landed above the offset
}

TEST(EqualizerSwitchTest, DisabledOrMissingOrTinyBlocksAreLeftAlone) {
  for (FilterPath path : {FilterPath::kPrecise, FilterPath::kPlain}) {
    Equalizer equalizer(path);
    equalizer.SetBands(0, kAllStrongest);
    equalizer.SetBassMode(4);
    EXPECT_EQ(equalizer.Process(nullptr, kBlockBytes), 0);
    std::int16_t* none = nullptr;
    EXPECT_EQ(equalizer.Process(&none, kBlockBytes), 0);
    EXPECT_EQ(equalizer.ApplyBass(nullptr, kBlockBytes), 0);
    EXPECT_EQ(equalizer.ApplyBass(&none, kBlockBytes), 0);
    // Fewer bytes than a frame: nothing is filtered.
    std::int16_t lone[2] = {1234, 4321};
    std::int16_t* block = lone;
    EXPECT_EQ(equalizer.Process(&block, 3), 3);
    EXPECT_EQ(equalizer.ApplyBass(&block, 3), 3);
    EXPECT_EQ(lone[0], 1234);
    EXPECT_EQ(lone[1], 4321);

    equalizer.SetEnabled(0);
    const std::vector<std::int16_t> music = test_support::MusicLike(kBlockFrames, 2);
    std::vector<std::int16_t> samples = music;
    block = samples.data();
    EXPECT_EQ(equalizer.Process(&block, kBlockBytes), 0);
    EXPECT_EQ(samples, music);
    equalizer.SetEnabled(1);
    EXPECT_EQ(equalizer.Process(&block, kBlockBytes), static_cast<int>(kBlockBytes));
    EXPECT_NE(samples, music);
  }
}

TEST(ExtraBassTest, ModeZeroLeavesTheBlockAndUnknownModesKeepTheLastStrength) {
  Equalizer equalizer(FilterPath::kPrecise);
  const std::vector<std::int16_t> music = test_support::MusicLike(kBlockFrames, 6);
  std::vector<std::int16_t> samples = music;
  std::int16_t* block = samples.data();
  EXPECT_EQ(equalizer.ApplyBass(&block, kBlockBytes), 0);
  EXPECT_EQ(samples, music);
  // A fresh object has strength 0: an unknown mode runs the stage with no
  // boost, which leaves exactly the dry half.
  equalizer.SetBassMode(9);
  EXPECT_EQ(equalizer.ApplyBass(&block, kBlockBytes), static_cast<int>(kBlockBytes));
  for (std::size_t i = 0; i < samples.size(); ++i) ASSERT_EQ(samples[i], music[i] >> 1);

  equalizer.SetBassMode(2);
  const std::int32_t strength = equalizer.BassGain();
  EXPECT_NE(strength, 0);
  for (std::int32_t unknown : {5, -1, INT_MIN}) {
    equalizer.SetBassMode(unknown);
    EXPECT_EQ(equalizer.BassGain(), strength) << unknown;
    EXPECT_EQ(equalizer.BassGainSpare(), 0x13333333) << "the spare strength is set to the strongest modes'";
  }
}

TEST(ExtraBassTest, SilenceStaysSilentAndLoudMaterialLeavesOnlyATinyOffset) {
  for (std::int32_t mode = 1; mode <= 4; ++mode) {
    Equalizer equalizer(FilterPath::kPrecise);
    equalizer.SetBassMode(mode);
    std::vector<std::int16_t> silence(kBlockFrames * 4, 0);
    RunBlocks(equalizer, silence, true);
    EXPECT_TRUE(std::all_of(silence.begin(), silence.end(), [](std::int16_t s) { return s == 0; }));

    // The filters shift towards minus infinity, and band 0 has (gamma -
    // beta) = 2^28 - 19560, so a filter resting at -k with k below 13717
    // maps -k to -k: it never decays to zero. Two such stages with gain
    // 2.2 leave at most (2.2 * 13716 * 2) >> 12, 15 steps below zero, as a
    // constant offset per channel; no tone, and no growth.
    std::vector<std::int16_t> samples = test_support::WhiteNoise(44100, static_cast<std::uint32_t>(mode));
    samples.resize(samples.size() + 44100 * 2 * 4, 0);
    RunBlocks(equalizer, samples, true);
    for (int channel = 0; channel < 2; ++channel) {
      std::set<std::int16_t> tail;
      for (std::size_t n = samples.size() / 2 - 44100; n < samples.size() / 2; ++n) {
        tail.insert(samples[2 * n + static_cast<std::size_t>(channel)]);
      }
      ASSERT_EQ(tail.size(), 1u) << "mode " << mode;
      EXPECT_LE(*tail.begin(), 0);
      EXPECT_GE(*tail.begin(), -15);
    }
  }
}

}  // namespace
}  // namespace effects
