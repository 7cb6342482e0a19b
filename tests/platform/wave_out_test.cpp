#include "platform/wave_out.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <vector>

#include "platform/device_volume.h"
#include "platform/registry.h"
#include "platform/wave_out_capture.h"
#include "support/test_environment.h"
#include "wave_returns.h"

namespace {

using platform::CaptureDriver;
using platform::CaptureOptions;
using platform::CapturePace;
using platform::WaveBuffer;
using wave_testing::Returns;

struct Buffers {
  explicit Buffers(std::size_t count, std::size_t samples = 1000) : data(count), headers(count) {
    for (std::size_t i = 0; i < count; ++i) {
      data[i].resize(samples);
      for (std::size_t j = 0; j < samples; ++j) data[i][j] = static_cast<std::int16_t>(1000 * i + j % 1000 + 1);
      headers[i] = WaveBuffer{data[i].data(), static_cast<std::uint32_t>(samples * 2), static_cast<std::uint32_t>(i)};
    }
  }
  std::vector<std::int16_t> Joined(std::size_t from, std::size_t to) const {
    std::vector<std::int16_t> all;
    for (std::size_t i = from; i < to; ++i) all.insert(all.end(), data[i].begin(), data[i].end());
    return all;
  }
  std::vector<std::vector<std::int16_t>> data;
  std::vector<WaveBuffer> headers;
};

TEST(WaveOutTest, BuffersComeBackOnceEachInOrderFromTheDevicesThread) {
  CaptureDriver driver(CaptureOptions{CapturePace::kUnpaced, false});
  Returns returns;
  Buffers buffers(10);
  {
    auto device = driver.Create();
    ASSERT_TRUE(device->Open(0, 44100, 2, &Returns::Done, &returns));
    for (auto& header : buffers.headers) ASSERT_TRUE(device->Write(&header));
    ASSERT_TRUE(returns.WaitFor(10));
    device->Close();
  }
  EXPECT_EQ(returns.Order(), (std::vector<std::uint32_t>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
  EXPECT_FALSE(returns.fromWriter);
  EXPECT_EQ(driver.Tap(0)->Samples(), buffers.Joined(0, 10));
}

TEST(WaveOutTest, ResetAndCloseReturnEverythingQueuedUnplayed) {
  CaptureDriver driver(CaptureOptions{CapturePace::kStepped, false});
  Returns returns;
  Buffers buffers(6);
  auto device = driver.Create();
  ASSERT_TRUE(device->Open(0, 22050, 1, &Returns::Done, &returns));
  for (std::size_t i = 0; i < 4; ++i) ASSERT_TRUE(device->Write(&buffers.headers[i]));
  auto tap = driver.Tap(0);
  EXPECT_EQ(tap->Advance(1), 1u);
  device->Reset();
  ASSERT_TRUE(returns.WaitFor(4));
  EXPECT_EQ(tap->Samples(), buffers.Joined(0, 1));
  EXPECT_EQ(tap->Resets(), 1);

  ASSERT_TRUE(device->Write(&buffers.headers[4]));
  ASSERT_TRUE(device->Write(&buffers.headers[5]));
  device->Close();
  EXPECT_EQ(returns.Order(), (std::vector<std::uint32_t>{0, 1, 2, 3, 4, 5})) << "all back when Close returns";
  EXPECT_FALSE(device->Write(&buffers.headers[0])) << "a closed device takes nothing";
}

// The pump hands buffers back on its own thread while a Reset hands back the
// rest on the return thread: however the two meet, every buffer comes back
// once and in the order written. Slow call-backs keep the pump inside its
// hand-back when the Reset comes.
TEST(WaveOutTest, AResetWhileTheDevicePlaysKeepsEveryReturnInOrder) {
  const auto slowDone = [](void* context, WaveBuffer* buffer) {
    std::this_thread::sleep_for(std::chrono::microseconds(300));
    Returns::Done(context, buffer);
  };
  CaptureDriver driver(CaptureOptions{CapturePace::kRealTime, false});
  Buffers buffers(40, 16);  // 1 ms each of 8000 Hz stereo
  for (int round = 0; round < 10; ++round) {
    SCOPED_TRACE(round);
    Returns returns;
    auto device = driver.Create();
    ASSERT_TRUE(device->Open(0, 8000, 2, slowDone, &returns));
    for (auto& header : buffers.headers) ASSERT_TRUE(device->Write(&header));
    ASSERT_TRUE(returns.WaitFor(static_cast<std::size_t>(1 + round)));
    device->Reset();
    ASSERT_TRUE(returns.WaitFor(buffers.headers.size()));
    device->Close();
    std::vector<std::uint32_t> expected(buffers.headers.size());
    for (std::uint32_t i = 0; i < expected.size(); ++i) expected[i] = i;
    EXPECT_EQ(returns.Order(), expected);
  }
}

TEST(WaveOutTest, APausedDevicePlaysNothingAndRestartsWhereItStopped) {
  CaptureDriver driver(CaptureOptions{CapturePace::kUnpaced, false});
  Returns returns;
  Buffers buffers(3);
  auto device = driver.Create();
  ASSERT_TRUE(device->Open(0, 44100, 2, &Returns::Done, &returns));
  device->Pause();
  for (auto& header : buffers.headers) ASSERT_TRUE(device->Write(&header));
  EXPECT_FALSE(returns.WaitFor(1, 50));
  EXPECT_EQ(driver.Tap(0)->SampleCount(), 0u);
  device->Restart();
  ASSERT_TRUE(returns.WaitFor(3));
  EXPECT_EQ(driver.Tap(0)->Samples(), buffers.Joined(0, 3));
}

TEST(WaveOutTest, BadOpensFailAndADriverWithoutDevicesSaysSo) {
  CaptureDriver driver;
  Returns returns;
  EXPECT_FALSE(driver.Create()->Open(0, 0, 2, &Returns::Done, &returns));
  EXPECT_FALSE(driver.Create()->Open(0, 44100, 3, &Returns::Done, &returns));
  EXPECT_FALSE(driver.Create()->Open(0, 44100, 2, nullptr, &returns));
  EXPECT_FALSE(driver.Create()->Open(1, 44100, 2, &Returns::Done, &returns));
  EXPECT_TRUE(driver.Taps().empty());

  CaptureDriver silentMachine(CaptureOptions{CapturePace::kUnpaced, true, 0});
  EXPECT_EQ(silentMachine.DeviceCount(), 0);
  EXPECT_FALSE(silentMachine.Create()->Open(0, 44100, 2, &Returns::Done, &returns));
}

// Pacing is behaviour, not speed: a paced device must not play a second of
// audio in much less than a second. Only lower bounds are checked.
TEST(WaveOutTest, PacedDevicesPlayAtTheSampleRate) {
  for (bool null : {true, false}) {
    SCOPED_TRACE(null ? "null" : "capture");
    auto driver = null ? platform::MakeNullWaveOutDriver()
                       : std::make_shared<CaptureDriver>(CaptureOptions{CapturePace::kRealTime, false});
    EXPECT_EQ(driver->DeviceCount(), 1);
    Returns returns;
    Buffers buffers(4, 1600);  // 100 ms each of 8000 Hz stereo
    auto device = driver->Create();
    ASSERT_TRUE(device->Open(0, 8000, 2, &Returns::Done, &returns));
    const auto start = std::chrono::steady_clock::now();
    for (auto& header : buffers.headers) ASSERT_TRUE(device->Write(&header));
    ASSERT_TRUE(returns.WaitFor(4));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(350));
    if (!null) {
      EXPECT_EQ(static_cast<CaptureDriver&>(*driver).Tap(0)->Samples(), buffers.Joined(0, 4));
    }
  }
}

class DeviceVolumeTest : public testing_support::IsolatedEnvironmentTest {};

TEST_F(DeviceVolumeTest, TheVolumeIsKeptInTheRegistryAcrossRuns) {
  platform::Registry registry(Root().File("config/registry.reg"));
  platform::DeviceVolume volume(registry);
  EXPECT_EQ(volume.Get(), platform::kFullVolume) << "nothing kept yet";
  EXPECT_TRUE(volume.Set(0x12345678));
  EXPECT_EQ(volume.Get(), 0x12345678u);

  std::uint32_t type = 0;
  std::uint32_t kept = 0;
  std::size_t size = sizeof(kept);
  ASSERT_TRUE(registry.QueryValue(platform::RegistryRoot::LocalMachine, "Platform", "WaveVolume", &type,
                                  &kept, &size));
  EXPECT_EQ(type, 4u);
  EXPECT_EQ(kept, 0x12345678u);
  EXPECT_EQ(platform::DeviceVolume(registry).Get(), 0x12345678u) << "the next run";

  registry.SetString(platform::RegistryRoot::LocalMachine, "Platform", "WaveVolume", "loud");
  volume.Reload();
  EXPECT_EQ(volume.Get(), platform::kFullVolume) << "a damaged value means full volume";
}

TEST_F(DeviceVolumeTest, TheDeviceAndTheProcessVolumeScaleEachChannel) {
  platform::ProcessDeviceVolume().Reload();
  CaptureDriver driver(CaptureOptions{CapturePace::kUnpaced, true});
  Returns returns;
  std::vector<std::int16_t> samples = {1000, 1000, -1000, -1000, 32767, 32767, -32768, -32768};
  std::vector<WaveBuffer> headers(3, WaveBuffer{samples.data(), 16, 0});
  auto device = driver.Create();
  ASSERT_TRUE(device->Open(0, 44100, 2, &Returns::Done, &returns));

  ASSERT_TRUE(device->Write(&headers[0]));  // both at full volume: untouched
  ASSERT_TRUE(returns.WaitFor(1));
  device->SetVolume(0x8000FFFF);  // right at half
  ASSERT_TRUE(device->Write(&headers[1]));
  ASSERT_TRUE(returns.WaitFor(2));
  platform::ProcessDeviceVolume().Set(0xFFFF0000);  // and the left channel muted for the process
  ASSERT_TRUE(device->Write(&headers[2]));
  ASSERT_TRUE(returns.WaitFor(3));
  platform::ProcessDeviceVolume().Set(platform::kFullVolume);

  const std::vector<std::int16_t> played = driver.Tap(0)->Samples();
  ASSERT_EQ(played.size(), 24u);
  EXPECT_EQ(std::vector<std::int16_t>(played.begin(), played.begin() + 8), samples);
  EXPECT_EQ(std::vector<std::int16_t>(played.begin() + 8, played.begin() + 16),
            (std::vector<std::int16_t>{1000, 500, -1000, -501, 32767, 16383, -32768, -16385}));
  EXPECT_EQ(std::vector<std::int16_t>(played.begin() + 16, played.end()),
            (std::vector<std::int16_t>{0, 500, 0, -501, 0, 16383, 0, -16385}));
}

}  // namespace
