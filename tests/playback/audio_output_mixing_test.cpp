// What the output engine sends to the device: mixing, idling, pausing,
// positions, snapshots and volume, checked sample by sample on a capture
// device.
#include <gtest/gtest.h>

#include <algorithm>

#include "output_test_support.h"
#include "platform/device_volume.h"
#include "playback/audio_effect.h"
#include "playback/audio_output.h"
#include "playback/media_decoder.h"

namespace {

using namespace output_testing;
using platform::CapturePace;

std::vector<std::int16_t> Silence(std::size_t count) { return std::vector<std::int16_t>(count, 0); }

std::vector<std::int16_t> Slice(const std::vector<std::int16_t>& samples, std::size_t from, std::size_t count) {
  from = std::min(from, samples.size());
  count = std::min(count, samples.size() - from);
  return std::vector<std::int16_t>(samples.begin() + static_cast<std::ptrdiff_t>(from),
                                   samples.begin() + static_cast<std::ptrdiff_t>(from + count));
}

std::vector<std::int16_t> Repeat(std::vector<std::int16_t> unit, std::size_t count) {
  std::vector<std::int16_t> samples(count);
  for (std::size_t i = 0; i < count; ++i) samples[i] = unit[i % unit.size()];
  return samples;
}

class AudioOutputMixingTest : public OutputTest {};

TEST_F(AudioOutputMixingTest, HeldStreamsGiveSilenceAndLetTheDeviceGoIdleUntilOneIsPlayed) {
  UseCapture(CapturePace::kStepped);
  const std::uint32_t stream = output->OpenStream(0, 1, kRate, 2, kTwoSeconds);
  const std::vector<std::int16_t> data = Pattern(3 * kBlock);
  WriteAll(stream, data);
  output->WriteStream(stream, nullptr, 0);
  platform::CaptureTap& tap = *Tap();

  // The first silent block starts the countdown at the 12 buffers in flight
  // plus one; thirteen more silent blocks later the device is reset.
  for (int step = 1; step <= 13; ++step) {
    StepOne(tap);
    ASSERT_EQ(tap.Resets(), 0) << "step " << step;
  }
  ASSERT_EQ(tap.Advance(1), 1u);
  ASSERT_TRUE(WaitUntil([&] { return tap.Resets() == 1 && tap.IsPaused(); }));
  EXPECT_EQ(tap.QueuedBuffers(), 0u);
  EXPECT_EQ(tap.Samples(), Silence(14 * kBlock));
  EXPECT_EQ(output->QueuedSamples(stream), 3 * kBlock) << "a held stream keeps its queue";

  // Playing wakes the device; the engine fills every free buffer at once,
  // and still stops only after the device has played all the data.
  output->ControlStream(stream, playback::kStreamPlay, 0);
  ASSERT_TRUE(WaitUntil([&] { return tap.QueuedBuffers() == 12; }));
  EXPECT_FALSE(tap.IsPaused());
  ASSERT_TRUE(WaitUntil([&] {
    tap.Advance(1);
    return tap.Resets() == 2;
  }));
  const std::vector<std::int16_t> played = tap.Samples();
  EXPECT_EQ(Slice(played, 14 * kBlock, 3 * kBlock), data);
  const std::vector<std::int16_t> after = Slice(played, 17 * kBlock, played.size());
  EXPECT_GE(after.size(), kBlock);
  EXPECT_TRUE(std::all_of(after.begin(), after.end(), [](std::int16_t s) { return s == 0; }));
  EXPECT_EQ(output->StreamCount(), 0) << "the ended stream was removed";
}

TEST_F(AudioOutputMixingTest, StreamsAreSummedAndClippedButHeldOnesAddNothing) {
  UseCapture(CapturePace::kStepped);
  const std::uint32_t first = output->OpenStream(0, 1, kRate, 2, kTwoSeconds);
  const std::uint32_t second = output->OpenStream(0, 1, kRate, 2, kTwoSeconds);
  const std::uint32_t held = output->OpenStream(0, 1, kRate, 2, kTwoSeconds);
  WriteAll(first, Repeat({20000, -20000, 1000, 5}, kBlock));
  WriteAll(second, Repeat({20000, -20000, -300, 7}, kBlock));
  WriteAll(held, Repeat({9000}, kBlock));
  for (std::uint32_t stream : {first, second, held}) output->WriteStream(stream, nullptr, 0);
  output->ControlStream(first, playback::kStreamPlay, 0);
  output->ControlStream(second, playback::kStreamPlay, 0);

  platform::CaptureTap& tap = *Tap();
  Step(tap, 13);
  const std::vector<std::int16_t> played = tap.Samples();
  EXPECT_EQ(Slice(played, 12 * kBlock, kBlock), Repeat({32767, -32768, 700, 12}, kBlock));
  EXPECT_EQ(output->QueuedSamples(held), kBlock);
  EXPECT_EQ(output->GetPlayedSamples(held), 0u);
}

TEST_F(AudioOutputMixingTest, PauseHoldsTheDeviceAndLosesOrRepeatsNothing) {
  UseCapture(CapturePace::kStepped);
  const std::uint32_t stream = output->OpenStream(0, 0, kRate, 2, kTwoSeconds);
  const std::vector<std::int16_t> data = Pattern(20 * kBlock);
  WriteAll(stream, data);
  platform::CaptureTap& tap = *Tap();

  EXPECT_EQ(tap.Advance(12), 12u);  // the priming silence; the engine fills all 12 again
  ASSERT_TRUE(WaitUntil([&] { return tap.QueuedBuffers() == 12; }));
  Step(tap, 3);
  output->Pause(1);
  EXPECT_TRUE(tap.IsPaused());
  EXPECT_EQ(tap.Advance(5), 0u) << "a paused device plays nothing";
  const std::size_t heard = tap.SampleCount();
  EXPECT_EQ(heard, 15u * kBlock);
  EXPECT_EQ(output->QueuedSamples(stream), 5u * kBlock) << "the mixer waits with the rest queued";

  output->Pause(0);
  output->WriteStream(stream, nullptr, 0);
  ASSERT_TRUE(WaitUntil([&] {
    tap.Advance(1);
    return tap.Resets() == 1;
  }));
  const std::vector<std::int16_t> played = tap.Samples();
  EXPECT_EQ(Slice(played, 0, 12 * kBlock), Silence(12 * kBlock));
  EXPECT_EQ(Slice(played, 12 * kBlock, data.size()), data);
  const std::vector<std::int16_t> tail = Slice(played, 12 * kBlock + data.size(), played.size());
  EXPECT_TRUE(std::all_of(tail.begin(), tail.end(), [](std::int16_t s) { return s == 0; }));
  EXPECT_EQ(output->StreamCount(), 0);
}

TEST_F(AudioOutputMixingTest, ThePlayedCountRunsBehindTheMixerByTheBuffersInFlight) {
  UseCapture(CapturePace::kStepped);
  const std::uint32_t stream = output->OpenStream(0, 0, kRate, 2, kTwoSeconds);
  WriteAll(stream, Pattern(20 * kBlock));
  platform::CaptureTap& tap = *Tap();
  EXPECT_EQ(output->GetPlayedSamples(stream), 0u);

  EXPECT_EQ(tap.Advance(12), 12u);
  ASSERT_TRUE(WaitUntil([&] { return tap.QueuedBuffers() == 12; }));
  EXPECT_EQ(output->QueuedSamples(stream), 8u * kBlock) << "the mixer has pulled twelve blocks";
  EXPECT_EQ(output->GetPlayedSamples(stream), 0u) << "but the device has played only its priming";

  for (std::uint32_t blocks = 1; blocks <= 4; ++blocks) {
    StepOne(tap);
    const std::size_t heardFrames = (tap.SampleCount() - 12 * kBlock) / 2;
    EXPECT_EQ(output->GetPlayedSamples(stream), heardFrames);
    EXPECT_EQ(heardFrames, blocks * kBlock / 2);
  }
}

TEST_F(AudioOutputMixingTest, MonoStreamsArePairedOnAStereoDeviceAndStereoIsAveragedOnAMonoOne) {
  UseCapture(CapturePace::kStepped);
  const std::uint32_t mono = output->OpenStream(0, 0, kRate, 1, kTwoSeconds);
  WriteAll(mono, std::vector<std::int16_t>{100, -200, 300});
  output->WriteStream(mono, nullptr, 0);
  Step(*Tap(), 13);
  EXPECT_EQ(Slice(Tap()->Samples(), 12 * kBlock, 8), (std::vector<std::int16_t>{100, 100, -200, -200, 300, 300, 0, 0}));

  // An engine may be opened mono by hand; the root always opens stereo.
  playback::AudioOutput monoEngine;
  ASSERT_EQ(monoEngine.OpenDevice(1, 32000, 16), 1);
  const std::uint32_t stereo = monoEngine.OpenStream(0, 0, 32000, 2, 64000);
  ASSERT_NE(stereo, playback::kInvalidHandle);
  const std::vector<std::int16_t> pairs = {100, 300, -7, 2, 32767, 32767, -32768, -32768};
  ASSERT_EQ(monoEngine.WriteStream(stereo, pairs.data(), 8), 1);
  monoEngine.WriteStream(stereo, nullptr, 0);
  platform::CaptureTap& monoTap = *Tap(1);
  Step(monoTap, 11, 10);
  EXPECT_EQ(Slice(monoTap.Samples(), 10 * kBlock, 5), (std::vector<std::int16_t>{200, -3, 32767, -32768, 0}));
  EXPECT_EQ(monoEngine.GetPlayedSamples(stereo), 0u) << "the stream is gone";
}

TEST_F(AudioOutputMixingTest, TheSnapshotShowsTheLeftChannelOfTheBufferThatPlaysNow) {
  UseCapture(CapturePace::kStepped);
  std::int16_t snapshot[512];
  EXPECT_EQ(output->GetWaveSnapshot(snapshot), 0) << "no stream anywhere";
  const std::uint32_t stream = output->OpenStream(0, 0, 22050, 2, 88200);
  const std::vector<std::int16_t> data = Pattern(10 * kBlock);
  WriteAll(stream, data);
  platform::CaptureTap& tap = *Tap();
  ASSERT_EQ(output->GetWaveSnapshot(snapshot), 1);
  EXPECT_EQ(std::vector<std::int16_t>(snapshot, snapshot + 512), Silence(512)) << "priming";

  EXPECT_EQ(tap.Advance(8), 8u);
  ASSERT_TRUE(WaitUntil([&] { return tap.QueuedBuffers() == 8; }));
  StepOne(tap, 8);  // the device now plays the second block
  ASSERT_EQ(output->GetWaveSnapshot(snapshot), 1);
  for (int i = 0; i < 512; ++i) ASSERT_EQ(snapshot[i], data[kBlock + 2 * i]) << i;
}

// Doubles every sample in Process and adds one in ApplyBass, so that both
// stages and their order show in what is played.
class DoubleThenAddOne : public playback::AudioEffect {
 public:
  int Process(std::int16_t** block, std::size_t bytes) override {
    for (std::size_t i = 0; i < bytes / 2; ++i) (*block)[i] = static_cast<std::int16_t>((*block)[i] * 2);
    ++processed;
    return 1;
  }
  int ApplyBass(std::int16_t** block, std::size_t bytes) override {
    for (std::size_t i = 0; i < bytes / 2; ++i) (*block)[i] = static_cast<std::int16_t>((*block)[i] + 1);
    return 1;
  }
  std::atomic<int> processed{0};
};

TEST_F(AudioOutputMixingTest, TheEffectRunsOverEachMixedBlockWhileStreamsExist) {
  UseCapture(CapturePace::kStepped);
  DoubleThenAddOne effect;
  output->SetEffect(&effect);
  const std::uint32_t stream = output->OpenStream(0, 1, kRate, 2, kTwoSeconds);
  WriteAll(stream, Repeat({10, -10}, 20 * kBlock));
  output->ControlStream(stream, playback::kStreamPlay, 0);
  Step(*Tap(), 13);
  EXPECT_EQ(Slice(Tap()->Samples(), 12 * kBlock, 4), (std::vector<std::int16_t>{21, -19, 21, -19}));
  EXPECT_EQ(effect.processed.load(), 13);

  output->ControlStream(stream, playback::kStreamRemove, 0);
  Step(*Tap(), 3);
  EXPECT_EQ(effect.processed.load(), 13) << "no streams, no effect";
}

TEST_F(AudioOutputMixingTest, AResetDropsWhatTheDeviceHeldAndPrimesItAgainPaused) {
  UseCapture(CapturePace::kStepped);
  const std::uint32_t stream = output->OpenStream(0, 0, kRate, 2, kTwoSeconds);
  const std::vector<std::int16_t> data = Pattern(20 * kBlock);
  WriteAll(stream, data);
  output->WriteStream(stream, nullptr, 0);
  platform::CaptureTap& tap = *Tap();
  EXPECT_EQ(tap.Advance(12), 12u);
  ASSERT_TRUE(WaitUntil([&] { return tap.QueuedBuffers() == 12; }));

  output->ResetDevice(stream);
  EXPECT_EQ(tap.Resets(), 1);
  EXPECT_TRUE(tap.IsPaused());
  EXPECT_EQ(tap.QueuedBuffers(), 12u) << "primed again, and nothing written twice";
  EXPECT_EQ(tap.Advance(1), 0u);

  output->Pause(0);
  Step(tap, 13);
  const std::vector<std::int16_t> played = tap.Samples();
  EXPECT_EQ(Slice(played, 12 * kBlock, 12 * kBlock), Silence(12 * kBlock));
  EXPECT_EQ(Slice(played, 24 * kBlock, kBlock), Slice(data, 12 * kBlock, kBlock))
      << "the twelve blocks in the device were dropped; the queue goes on";
}

// --- Volume: the root's reaches every engine, a decoder's reaches the root -------------------

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
