// Volume through the output engine: the root's volume reaches every engine,
// and a decoder's SetVolume reaches the root.
#include <gtest/gtest.h>

#include "output_test_support.h"
#include "platform/device_volume.h"
#include "playback/audio_output.h"
#include "playback/media_decoder.h"

namespace {

using namespace output_testing;
using platform::CapturePace;

class AudioOutputVolumeTest : public OutputTest {
 protected:
  void SetUp() override {
    OutputTest::SetUp();
    platform::ProcessDeviceVolume().Reload();  // full: nothing is kept in this environment
  }

  // Plays one block of `samples` through a new stream on the 44100 Hz engine
  // and returns what the device played of it.
  std::vector<std::int16_t> PlayThrough(const std::vector<std::int16_t>& samples) {
    const std::uint32_t stream = output->OpenStream(0, 1, kRate, 2, kTwoSeconds);
    EXPECT_NE(stream, playback::kInvalidHandle);
    WriteAll(stream, samples);
    output->WriteStream(stream, nullptr, 0);
    platform::CaptureTap& tap = *Tap();
    const std::size_t before = tap.SampleCount();
    const int resets = tap.Resets();
    output->ControlStream(stream, playback::kStreamPlay, 0);
    // Played out once the stream is gone and the device has gone idle.
    EXPECT_TRUE(WaitUntil([&] {
      tap.Advance(1);
      return output->StreamCount() == 0 && tap.Resets() > resets;
    }));
    const std::vector<std::int16_t> played = tap.Samples();
    const auto first = std::find_if(played.begin() + static_cast<std::ptrdiff_t>(before), played.end(),
                                    [](std::int16_t s) { return s != 0; });
    std::vector<std::int16_t> heard(samples.size());
    for (std::size_t i = 0; i < heard.size() && first + static_cast<std::ptrdiff_t>(i) < played.end(); ++i) {
      heard[i] = first[static_cast<std::ptrdiff_t>(i)];
    }
    return heard;
  }
};

TEST_F(AudioOutputVolumeTest, TheRootsVolumeReachesNewAndExistingEngines) {
  UseCapture(CapturePace::kStepped, true);
  output->SetVolume(32768, 0);  // a new engine takes the left value for both channels
  EXPECT_EQ(PlayThrough({2000, 2000, -2000, 4000}), (std::vector<std::int16_t>{1000, 1000, -1001, 2000}));

  output->SetVolume(65535, 0);
  EXPECT_EQ(PlayThrough({2000, 2000, -2000, 4000}), (std::vector<std::int16_t>{2000, 0, -2000, 0}));
}

TEST_F(AudioOutputVolumeTest, ADecodersVolumeGoesToItsOutput) {
  UseCapture(CapturePace::kStepped, true);
  playback::MediaDecoder decoder;
  decoder.SetVolume(0, 0);  // no output yet: nothing to do
  decoder.SetOutput(output.get());
  EXPECT_EQ(PlayThrough({4000, 4000, 8000, -8000}), (std::vector<std::int16_t>{4000, 4000, 8000, -8000}));
  decoder.SetVolume(16384, 65535);
  EXPECT_EQ(PlayThrough({4000, 4000, 8000, -8000}), (std::vector<std::int16_t>{1000, 4000, 2000, -8000}));
}

}  // namespace
