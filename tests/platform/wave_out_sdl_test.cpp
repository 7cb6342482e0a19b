// The SDL wave device without a sound card: SDL's "disk" driver plays into a
// file at real time, which shows exactly what the device was given; a driver
// name SDL doesn't know acts out a machine without sound.
//
// SDL reads its driver choice when the audio subsystem starts, so each test
// sets the environment first and makes its own driver, which starts SDL's
// audio and stops it again when the last device is gone.
#include <SDL2/SDL.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <vector>

#include "platform/device_volume.h"
#include "platform/wave_out.h"
#include "support/test_environment.h"
#include "wave_returns.h"

namespace {

using wave_testing::Returns;

std::vector<std::int16_t> ReadSamples(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<char> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  std::vector<std::int16_t> samples(bytes.size() / 2);
  std::copy_n(bytes.data(), samples.size() * 2, reinterpret_cast<char*>(samples.data()));
  return samples;
}

class SdlWaveOutTest : public testing_support::IsolatedEnvironmentTest {
 protected:
  void TearDown() override {
    unsetenv("SDL_AUDIODRIVER");
    unsetenv("SDL_DISKAUDIOFILE");
    platform::SetWaveOutDriver(nullptr);
    IsolatedEnvironmentTest::TearDown();
  }
};

TEST_F(SdlWaveOutTest, TheDevicePlaysEveryBufferInOrderAndTellsSoundServersWhoItIs) {
  const std::string output = Root().File("disk-audio.raw");
  setenv("SDL_AUDIODRIVER", "disk", 1);
  setenv("SDL_DISKAUDIOFILE", output.c_str(), 1);
  platform::ProcessDeviceVolume().Reload();

  // Five buffers of 1000 frames: SDL asks in periods of 1024, so buffers
  // end in the middle of its periods.
  std::vector<std::vector<std::int16_t>> data(5, std::vector<std::int16_t>(2000));
  std::vector<platform::WaveBuffer> headers(5);
  std::vector<std::int16_t> all;
  for (std::uint32_t i = 0; i < 5; ++i) {
    for (std::size_t j = 0; j < 2000; ++j) data[i][j] = static_cast<std::int16_t>(i * 2000 + j + 1);
    headers[i] = platform::WaveBuffer{data[i].data(), 4000, i};
    all.insert(all.end(), data[i].begin(), data[i].end());
  }
  Returns returns;
  {
    auto driver = platform::MakeSdlWaveOutDriver();
    ASSERT_EQ(driver->DeviceCount(), 1);
    EXPECT_STREQ(SDL_GetHint(SDL_HINT_APP_NAME), "Tavrinsonic");
    EXPECT_STREQ(SDL_GetHint(SDL_HINT_AUDIO_DEVICE_APP_NAME), "Tavrinsonic");
    EXPECT_STREQ(SDL_GetHint(SDL_HINT_AUDIO_DEVICE_STREAM_ROLE), "Music");
    auto device = driver->Create();
    ASSERT_TRUE(device->Open(0, 44100, 2, &Returns::Done, &returns));
    for (auto& header : headers) ASSERT_TRUE(device->Write(&header));
    ASSERT_TRUE(returns.WaitFor(5, 10000));
    device->Close();
  }
  EXPECT_EQ(returns.Order(), (std::vector<std::uint32_t>{0, 1, 2, 3, 4}));

  // SDL may have played silence before the first buffer came; after it the
  // buffers follow each other without a gap, then silence again.
  const std::vector<std::int16_t> played = ReadSamples(output);
  const auto start = std::find(played.begin(), played.end(), std::int16_t{1});
  ASSERT_NE(start, played.end());
  ASSERT_GE(static_cast<std::size_t>(played.end() - start), all.size());
  EXPECT_TRUE(std::equal(all.begin(), all.end(), start));
  EXPECT_TRUE(std::all_of(played.begin(), start, [](std::int16_t s) { return s == 0; }));
  EXPECT_TRUE(std::all_of(start + static_cast<std::ptrdiff_t>(all.size()), played.end(),
                          [](std::int16_t s) { return s == 0; }));
}

TEST_F(SdlWaveOutTest, WithoutASoundSystemThereIsNoDevice) {
  setenv("SDL_AUDIODRIVER", "no-such-sound-system", 1);
  auto driver = platform::MakeSdlWaveOutDriver();
  EXPECT_EQ(driver->DeviceCount(), 0);
  Returns returns;
  EXPECT_FALSE(driver->Create()->Open(0, 44100, 2, &Returns::Done, &returns));
}

}  // namespace
