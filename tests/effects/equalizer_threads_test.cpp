// The equalizer shared by several mixing threads while the window thread
// changes its settings: no block is torn, and nothing races (this suite
// also runs under ThreadSanitizer).
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

#include "effects/equalizer.h"
#include "reference_equalizer.h"
#include "test_signals.h"

namespace effects {
namespace {

constexpr std::size_t kBlockBytes = 16384;
constexpr std::size_t kBlockSamples = kBlockBytes / 2;
constexpr std::size_t kBlocksPerEngine = 16;

struct EngineRun {
  std::vector<std::vector<std::int16_t>> input;
  std::vector<std::vector<std::int16_t>> output;
};

EngineRun MakeRun(std::uint32_t seed) {
  EngineRun run;
  const std::vector<std::int16_t> signal =
      seed % 2 == 0 ? test_support::MusicLike(kBlocksPerEngine * kBlockSamples / 2, seed)
                    : test_support::WhiteNoise(kBlocksPerEngine * kBlockSamples / 2, seed);
  for (std::size_t b = 0; b < kBlocksPerEngine; ++b) {
    run.input.emplace_back(signal.begin() + static_cast<std::ptrdiff_t>(b * kBlockSamples),
                           signal.begin() + static_cast<std::ptrdiff_t>((b + 1) * kBlockSamples));
  }
  return run;
}

void RunEngine(Equalizer& equalizer, EngineRun& run, bool bass) {
  for (const auto& input : run.input) {
    std::vector<std::int16_t> block = input;
    std::int16_t* data = block.data();
    const int result = equalizer.Process(&data, kBlockBytes);
    EXPECT_TRUE(result == 0 || result == static_cast<int>(kBlockBytes));
    if (bass) equalizer.ApplyBass(&data, kBlockBytes);
    run.output.push_back(std::move(block));
  }
}

// Two engines' blocks went through one object in some order. Finds that
// order with the reference: each block must be the reference's output for
// the filters as the blocks before it left them, so a block that another
// thread cut into would match no order.
bool OutputsFormOneSequence(test_support::ReferenceEqualizer reference, const EngineRun& a, const EngineRun& b) {
  std::size_t nextA = 0;
  std::size_t nextB = 0;
  while (nextA < a.input.size() || nextB < b.input.size()) {
    bool advanced = false;
    for (auto [run, next] : {std::pair{&a, &nextA}, std::pair{&b, &nextB}}) {
      if (*next >= run->input.size()) continue;
      test_support::ReferenceEqualizer trial = reference;
      std::vector<std::int16_t> block = run->input[*next];
      trial.Process(block.data(), kBlockBytes);
      if (block == run->output[*next]) {
        reference = trial;
        ++*next;
        advanced = true;
        break;
      }
    }
    if (!advanced) return false;
  }
  return true;
}

TEST(EqualizerThreadsTest, BlocksFromTwoEnginesPassWholeThroughTheSharedFilters) {
  for (FilterPath path : {FilterPath::kPrecise, FilterPath::kPlain}) {
    const std::array<std::int32_t, kBandCount> bands = {2, 25, 9, 14, 0, 18, 7, 27, 3, 12};
    Equalizer equalizer(path);
    equalizer.SetBands(12, bands);
    test_support::ReferenceEqualizer reference(path == FilterPath::kPrecise);
    reference.SetBands(12, bands);
    EngineRun a = MakeRun(1);
    EngineRun b = MakeRun(2);
    std::thread first([&] { RunEngine(equalizer, a, false); });
    std::thread second([&] { RunEngine(equalizer, b, false); });
    first.join();
    second.join();
    EXPECT_TRUE(OutputsFormOneSequence(reference, a, b));
  }
}

TEST(EqualizerThreadsTest, SettingsChangeWhileEnginesFilter) {
  for (FilterPath path : {FilterPath::kPrecise, FilterPath::kPlain}) {
    Equalizer equalizer(path);
    equalizer.SetBassMode(3);
    std::atomic<bool> done{false};
    std::thread window([&] {
      std::array<std::int32_t, kBandCount> bands = {};
      for (std::int32_t turn = 0; !done.load(); ++turn) {
        bands.fill(turn % 28);
        bands[static_cast<std::size_t>(turn) % kBandCount] = 14;
        equalizer.SetBands(turn % 30 - 1, bands);
        equalizer.SetEnabled(turn % 5 != 0 ? 1 : 0);
        equalizer.SetBassMode(turn % 6);
        std::this_thread::yield();
      }
    });
    EngineRun a = MakeRun(3);
    EngineRun b = MakeRun(4);
    std::thread first([&] { RunEngine(equalizer, a, true); });
    std::thread second([&] { RunEngine(equalizer, b, true); });
    first.join();
    second.join();
    done = true;
    window.join();
    EXPECT_EQ(a.output.size(), kBlocksPerEngine);
    EXPECT_EQ(b.output.size(), kBlocksPerEngine);
  }
}

}  // namespace
}  // namespace effects
