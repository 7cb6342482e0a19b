// The feed gate of an unpaced capture device: the device plays a buffer only
// once the writer has written one since the last it played, and while the
// gate agrees.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "platform/wave_out_capture.h"
#include "wave_returns.h"

namespace {

using platform::CaptureDriver;
using platform::CaptureOptions;
using platform::CapturePace;
using platform::WaveBuffer;
using wave_testing::Returns;

constexpr std::size_t kSamples = 8192;  // one engine block: the pump takes one at a time

struct Gate {
  std::atomic<bool> open{false};
  std::atomic<int> asked{0};
  std::atomic<int> shortestWait{1 << 30};
  // As the contract asks: a no comes only after the wait it was given.
  bool Ready(int waitMs) {
    ++asked;
    if (waitMs < shortestWait.load()) shortestWait = waitMs;
    if (open.load()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(waitMs));
    return open.load();
  }
};

TEST(WaveFeedTest, AGatedDeviceWaitsForTheGateAndForEachNewBuffer) {
  Gate gate;
  CaptureOptions options{CapturePace::kUnpaced, false};
  options.feedReady = [&gate](int waitMs) { return gate.Ready(waitMs); };
  CaptureDriver driver(options);
  Returns returns;
  std::vector<std::vector<std::int16_t>> data(3, std::vector<std::int16_t>(kSamples));
  std::vector<WaveBuffer> headers(3);
  for (std::uint32_t i = 0; i < 3; ++i) {
    data[i].assign(kSamples, static_cast<std::int16_t>(i + 1));
    headers[i] = WaveBuffer{data[i].data(), static_cast<std::uint32_t>(kSamples * 2), i};
  }
  auto device = driver.Create();
  ASSERT_TRUE(device->Open(0, 44100, 2, &Returns::Done, &returns));

  // Written, but the gate says no: nothing plays.
  ASSERT_TRUE(device->Write(&headers[0]));
  ASSERT_TRUE(device->Write(&headers[1]));
  EXPECT_FALSE(returns.WaitFor(1, 100));
  EXPECT_GT(gate.asked.load(), 0);
  EXPECT_GE(gate.shortestWait.load(), 1);

  // The gate opens: one buffer plays. The second was written before that
  // take, not since, so it waits for the next write.
  gate.open = true;
  ASSERT_TRUE(returns.WaitFor(1));
  EXPECT_FALSE(returns.WaitFor(2, 100));
  ASSERT_TRUE(device->Write(&headers[2]));
  ASSERT_TRUE(returns.WaitFor(2));
  device->Close();
  EXPECT_EQ(returns.Order(), (std::vector<std::uint32_t>{0, 1, 2}));
  const std::vector<std::int16_t> played = driver.Tap(0)->Samples();
  ASSERT_EQ(played.size(), 2 * kSamples);
  EXPECT_EQ(played.front(), 1);
  EXPECT_EQ(played.back(), 2);
}

}  // namespace
