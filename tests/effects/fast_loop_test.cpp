// The equalizer's fast loops against the frame-by-frame reference: every
// loop set, both paths, many settings, long random and musical inputs in
// blocks of the mixer's size and of awkward sizes, with settings changed
// between blocks. Any difference in any bit fails.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "effects/equalizer.h"
#include "reference_equalizer.h"
#include "test_signals.h"

namespace effects {
namespace {

using test_support::ReferenceEqualizer;
using Bands = std::array<std::int32_t, kBandCount>;

struct Setting {
  std::int32_t preamp;
  Bands bands;
};

// Extremes, curves, single bands, out-of-range values and a few that a
// listener would choose.
const std::vector<Setting> kSettings = {
    {0, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
    {27, {27, 27, 27, 27, 27, 27, 27, 27, 27, 27}},
    {13, {0, 27, 0, 27, 0, 27, 0, 27, 0, 27}},
    {14, {6, 9, 12, 14, 16, 17, 15, 12, 9, 7}},
    {20, {14, 14, 14, 14, 14, 14, 14, 14, 14, 13}},
    {13, {0, 14, 14, 14, 14, 14, 14, 14, 14, 14}},
    {5, {14, 14, 14, 14, 14, 14, 14, 14, 14, 0}},
    {-40, {-5, 99, 14, 3, 28, -1, 27, 0, 1 << 30, -(1 << 30)}},
    {13, {14, 14, 14, 14, 14, 14, 14, 14, 14, 14}},
    {0, {14, 14, 14, 14, 14, 14, 14, 14, 14, 14}},
    {27, {14, 14, 14, 14, 14, 14, 14, 14, 14, 14}},
};

// Byte lengths: the mixer's block, whole and partial stretches, the
// pipelines' fill depths and the smallest cases, odd lengths included.
const std::vector<std::size_t> kBlockBytes = {16384, 4, 0, 1, 2, 3, 6, 8, 12, 72, 76, 80, 100, 8192,
                                              8196, 8188, 4100, 16385, 16386, 16387, 40000};

std::vector<const FilterKernels*> AllKernels() {
  std::vector<const FilterKernels*> all = {&PortableKernels()};
  if (Avx2Kernels() != nullptr) all.push_back(Avx2Kernels());
  return all;
}

class FastLoopTest : public ::testing::TestWithParam<const FilterKernels*> {
 protected:
  // Runs `signal` through a fresh Equalizer and a fresh reference with the
  // same calls, block by block, switching settings and bass every few
  // blocks, and compares every block.
  void CompareOver(FilterPath path, const std::vector<std::int16_t>& signal, std::size_t settingOffset) {
    Equalizer equalizer(path, *GetParam());
    ReferenceEqualizer reference(path == FilterPath::kPrecise);
    std::vector<std::int16_t> fast = signal;
    std::vector<std::int16_t> slow = signal;
    const std::size_t totalBytes = signal.size() * 2;
    std::size_t offset = 0;
    for (std::size_t block = 0; offset < totalBytes; ++block) {
      if (block % 3 == 0) {
        const Setting& setting = kSettings[(settingOffset + block / 3) % kSettings.size()];
        equalizer.SetBands(setting.preamp, setting.bands);
        reference.SetBands(setting.preamp, setting.bands);
        const auto bassMode = static_cast<std::int32_t>((block / 3 + settingOffset) % 5);
        equalizer.SetBassMode(bassMode);
        reference.SetBassGain(equalizer.BassGain());
      }
      const std::size_t bytes = std::min(kBlockBytes[block % kBlockBytes.size()], totalBytes - offset);
      std::int16_t* fastBlock = fast.data() + offset / 2;
      ASSERT_EQ(equalizer.Process(&fastBlock, bytes), reference.Process(slow.data() + offset / 2, bytes));
      if (equalizer.BassMode() != 0) {
        equalizer.ApplyBass(&fastBlock, bytes);
        reference.ApplyBass(slow.data() + offset / 2, bytes);
      }
      for (std::size_t i = offset / 2; i < (offset + bytes) / 2; ++i) {
        ASSERT_EQ(fast[i], slow[i]) << "block " << block << " of " << bytes << " bytes, sample " << i - offset / 2;
      }
      offset += std::max<std::size_t>(bytes, 2);
    }
  }
};

TEST_P(FastLoopTest, BothPathsMatchTheReference) {
  for (std::uint32_t run = 0; run < 3; ++run) {
    SCOPED_TRACE("run " + std::to_string(run));
    CompareOver(FilterPath::kPrecise, test_support::WhiteNoise(60000, run), run * 4);
    CompareOver(FilterPath::kPrecise, test_support::MusicLike(80000, run), run * 5 + 1);
    CompareOver(FilterPath::kPlain, test_support::WhiteNoise(50000, run + 7), run * 3);
    CompareOver(FilterPath::kPlain, test_support::MusicLike(50000, run + 3), run * 3 + 5);
  }
  CompareOver(FilterPath::kPrecise, test_support::FullScaleSquare(50000, 37), 0);
  CompareOver(FilterPath::kPrecise, test_support::FullScaleSquare(50000, 2), 2);
  CompareOver(FilterPath::kPlain, test_support::FullScaleSquare(30000, 11), 1);
}

INSTANTIATE_TEST_SUITE_P(AllLoopSets, FastLoopTest, ::testing::ValuesIn(AllKernels()),
                         [](const ::testing::TestParamInfo<const FilterKernels*>& param) {
                           return std::string(param.param->name);
                         });

}  // namespace
}  // namespace effects
