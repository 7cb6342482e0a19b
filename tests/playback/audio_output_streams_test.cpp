// Handles, engines and streams of the output engine, through stepped capture
// devices, which hold every engine still until the test plays a buffer.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "output_test_support.h"
#include "playback/audio_output.h"

namespace {

using namespace output_testing;
using platform::CapturePace;
using playback::kInvalidHandle;

constexpr std::uint32_t Handle(int place, std::uint32_t id) {
  return (static_cast<std::uint32_t>(place + 1) << 16) | id;
}

class AudioOutputStreamsTest : public OutputTest {};

TEST_F(AudioOutputStreamsTest, HandlesNameTheEngineByRateAndTheStreamById) {
  UseCapture(CapturePace::kStepped);
  EXPECT_EQ(output->LastHandle(), kInvalidHandle);
  const std::uint32_t first = output->OpenStream(0, 1, kRate, 2, kTwoSeconds);
  EXPECT_EQ(first, Handle(0, 0));
  EXPECT_EQ(output->LastHandle(), first);

  // A stream on an engine that exists leaves the last handle alone.
  EXPECT_EQ(output->OpenStream(0, 1, kRate, 1, kTwoSeconds), Handle(0, 1));
  EXPECT_EQ(output->LastHandle(), first);

  const std::uint32_t otherRate = output->OpenStream(0, 1, 22050, 2, 1000);
  EXPECT_EQ(otherRate, Handle(1, 0));
  EXPECT_EQ(output->LastHandle(), otherRate);
  EXPECT_EQ(output->StreamCount(), 3);
  EXPECT_EQ(driver->Taps().size(), 2u);
  EXPECT_EQ(Tap(1)->SampleRate(), 22050u);
  EXPECT_EQ(Tap(1)->Channels(), 2);
  EXPECT_EQ(Tap(1)->QueuedBuffers(), 8u) << "buffers by rate";

  // Removed ids are not given out again.
  output->ControlStream(Handle(0, 1), playback::kStreamRemove, 0);
  EXPECT_FALSE(output->IsStreamAlive(Handle(0, 1)));
  EXPECT_TRUE(output->IsStreamAlive(first));
  EXPECT_EQ(output->OpenStream(0, 1, kRate, 2, kTwoSeconds), Handle(0, 2));
  EXPECT_EQ(output->QueueCapacity(Handle(0, 2)), kTwoSeconds);
}

TEST_F(AudioOutputStreamsTest, AnEngineTakesEightStreamsAndTheRootFourRates) {
  UseCapture(CapturePace::kStepped);
  for (int i = 0; i < 8; ++i) {
    EXPECT_EQ(output->OpenStream(0, 1, kRate, 2, 100), Handle(0, static_cast<std::uint32_t>(i)));
  }
  EXPECT_EQ(output->OpenStream(0, 1, kRate, 2, 100), kInvalidHandle) << "a ninth stream";
  EXPECT_EQ(output->OpenStream(1, 1, kRate, 2, 100), kInvalidHandle) << "not even by reuse";

  EXPECT_NE(output->OpenStream(0, 1, 22050, 2, 100), kInvalidHandle);
  EXPECT_NE(output->OpenStream(0, 1, 48000, 2, 100), kInvalidHandle);
  EXPECT_NE(output->OpenStream(0, 1, 8000, 1, 100), kInvalidHandle);
  EXPECT_EQ(output->OpenStream(0, 1, 32000, 2, 100), kInvalidHandle) << "a fifth rate";
  EXPECT_EQ(driver->Taps().size(), 4u);
  EXPECT_EQ(output->StreamCount(), 11);

  EXPECT_EQ(output->OpenStream(0, 1, 22050, 3, 100), kInvalidHandle) << "three channels";
  EXPECT_EQ(output->OpenStream(0, 1, 0, 2, 100), kInvalidHandle) << "no rate";
}

TEST_F(AudioOutputStreamsTest, TheInvalidHandleIsHarmlessEverywhere) {
  UseCapture(CapturePace::kStepped);
  const std::uint32_t stream = output->OpenStream(0, 1, kRate, 2, 1000);
  const std::vector<std::int16_t> samples = Pattern(100);
  WriteAll(stream, samples);

  // The invalid handle, an engine place out of range, a free engine place,
  // and a stream id the engine never gave out.
  for (std::uint32_t handle : {kInvalidHandle, Handle(5, 0), Handle(1, 0), Handle(0, 9)}) {
    SCOPED_TRACE(handle);
    if ((handle >> 16) != 1) output->ResetDevice(handle);  // a reset names only the engine
    output->FlushStream(handle);
    EXPECT_EQ(output->WaitForRoom(handle, 1), 0);
    EXPECT_EQ(output->QueueCapacity(handle), 0u);
    EXPECT_EQ(output->GetPlayedSamples(handle), 0u);
    EXPECT_EQ(output->QueuedSamples(handle), 0u);
    output->ControlStream(handle, playback::kStreamRemove, 0);
    output->ControlStream(handle, playback::kStreamPlay, 0);
    output->ControlStream(handle, playback::kStreamFadeTail, 0);
    output->SetStreamParam(handle, playback::kParamResetOnWrite, 1);
    EXPECT_EQ(output->WriteStream(handle, samples.data(), 100), 0);
    EXPECT_FALSE(output->IsStreamAlive(handle));
  }
  EXPECT_TRUE(output->IsStreamAlive(stream));
  EXPECT_EQ(output->QueuedSamples(stream), 100u);
  EXPECT_EQ(Tap()->Resets(), 0);
  EXPECT_EQ(Tap()->QueuedBuffers(), 12u);
}

TEST_F(AudioOutputStreamsTest, ReuseGivesTheNewestStreamOnlyWhenItsChannelCountFits) {
  UseCapture(CapturePace::kStepped);
  const std::uint32_t stereo = output->OpenStream(0, 1, kRate, 2, 1000);
  const std::uint32_t mono = output->OpenStream(0, 1, kRate, 1, 1000);
  WriteAll(stereo, Pattern(100));

  const std::uint32_t fresh = output->OpenStream(1, 1, kRate, 2, 1000);
  EXPECT_NE(fresh, stereo);
  EXPECT_NE(fresh, mono);
  EXPECT_TRUE(output->IsStreamAlive(stereo));
  EXPECT_TRUE(output->IsStreamAlive(mono));
  EXPECT_EQ(output->StreamCount(), 3);

  WriteAll(fresh, Pattern(300));
  EXPECT_EQ(output->OpenStream(1, 1, kRate, 2, 1000), fresh);
  EXPECT_EQ(output->StreamCount(), 3);
  EXPECT_EQ(output->QueuedSamples(fresh), 300u) << "kept until the next write";
  WriteAll(fresh, Pattern(50));
  EXPECT_EQ(output->QueuedSamples(fresh), 50u) << "the next write replaced the old queue";
  EXPECT_EQ(output->LastHandle(), stereo);
}

TEST_F(AudioOutputStreamsTest, RemovingAStreamReleasesAWriterWaitingForRoom) {
  UseCapture(CapturePace::kStepped);
  const std::uint32_t stream = output->OpenStream(0, 1, kRate, 2, 1000);
  WriteAll(stream, Pattern(1000));
  EXPECT_EQ(output->WaitForRoom(stream, 10), 0) << "full, and the call does not block";
  EXPECT_EQ(output->WaitForRoom(stream, 1001), 0) << "more than the queue can ever hold";

  std::atomic<int> result{-1};
  std::thread writer([&] {
    const std::vector<std::int16_t> more = Pattern(10);
    result = output->WriteStream(stream, more.data(), 10);
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  EXPECT_EQ(result.load(), -1);
  output->ControlStream(stream, playback::kStreamRemove, 0);
  writer.join();
  EXPECT_EQ(result.load(), 0);
  EXPECT_FALSE(output->IsStreamAlive(stream));

  const std::uint32_t next = output->OpenStream(0, 1, kRate, 2, 1000);
  EXPECT_EQ(output->WaitForRoom(next, 1000), 1);
}

TEST_F(AudioOutputStreamsTest, StreamTimesUseTheDevicesRateAndTwoChannels) {
  UseCapture(CapturePace::kStepped);
  // A mono stream on the stereo engine: ms * 44100 * 2 >> 10, whatever the
  // stream's own channel count.
  const std::uint32_t stream = output->OpenStream(0, 1, kRate, 1, kTwoSeconds);
  WriteAll(stream, std::vector<std::int16_t>(20000, 1000));
  output->ControlStream(stream, playback::kStreamFadeTail, 100);  // 8613 samples
  EXPECT_EQ(output->QueuedSamples(stream), 8613u);
  EXPECT_EQ(output->WriteStream(stream, Pattern(10).data(), 10), 0) << "the fade ended the stream";

  const std::uint32_t fading = output->OpenStream(0, 1, kRate, 2, kTwoSeconds);
  output->SetStreamParam(fading, playback::kParamFadeInMs, 1000);  // 86132 samples, steps of 336
  WriteAll(fading, std::vector<std::int16_t>(1000, 1000));
  output->WriteStream(fading, nullptr, 0);
  output->ControlStream(fading, playback::kStreamPlay, 0);
  Step(*Tap(), 13);
  const std::vector<std::int16_t> played = Tap()->Samples();
  ASSERT_EQ(played.size(), 13u * kBlock);
  const std::int16_t* block = played.data() + 12 * kBlock;
  EXPECT_EQ(block[0], 0);
  EXPECT_EQ(block[335], 0);
  EXPECT_EQ(block[336], 1000 >> 8);
  EXPECT_EQ(block[999], (2 * 1000) >> 8);
}

TEST_F(AudioOutputStreamsTest, NoSoundDeviceMeansNoStream) {
  UseCapture(CapturePace::kStepped, false, 0);
  EXPECT_EQ(output->OpenStream(0, 0, kRate, 2, kTwoSeconds), kInvalidHandle);
  EXPECT_EQ(output->OpenStream(0, 0, kRate, 2, kTwoSeconds), kInvalidHandle);
  EXPECT_EQ(output->StreamCount(), 0);
  EXPECT_EQ(output->LastHandle(), kInvalidHandle);
  std::int16_t snapshot[512];
  EXPECT_EQ(output->GetWaveSnapshot(snapshot), 0);
  EXPECT_TRUE(driver->Taps().empty());
}

}  // namespace
