// Shared by the output engine's tests: a capture device installed as the
// process's wave driver, and helpers to step it.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "platform/message_queue.h"
#include "platform/wave_out.h"
#include "platform/wave_out_capture.h"
#include "playback/audio_output.h"
#include "playback/locked_file.h"
#include "playback/media_decoder.h"
#include "playback/playback_settings.h"
#include "support/test_environment.h"

namespace output_testing {

inline constexpr std::uint32_t kRate = 44100;
inline constexpr std::uint32_t kTwoSeconds = 2 * kRate * 2;
inline constexpr std::uint32_t kBlock = playback::kBlockSamples;
inline constexpr int kBuffersAt44100 = 12;

// Polls `condition` every millisecond; false if it never held within the
// limit, which only guards against a hang.
inline bool WaitUntil(const std::function<bool()>& condition, int limitMs = 10000) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(limitMs);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

// Samples 1, 2, 3, ... wrapping before 0, so that no sample is silent and a
// lost or doubled block shows.
inline std::vector<std::int16_t> Pattern(std::size_t count, int start = 0) {
  std::vector<std::int16_t> samples(count);
  for (std::size_t i = 0; i < count; ++i) {
    samples[i] = static_cast<std::int16_t>((static_cast<int>(i) + start) % 30000 + 1);
  }
  return samples;
}

// Sets the three options that change how a track ends; a test that sets
// them puts back the defaults (all on) with SetPlaybackOptions(true, true, true).
inline void SetPlaybackOptions(bool crossfade, bool gapless, bool trimSilence) {
  playback::PlaybackSettings& options = playback::Playback();
  playback::PlaybackSettings::Write(options.crossfade, crossfade);
  playback::PlaybackSettings::Write(options.gapless, gapless);
  playback::PlaybackSettings::Write(options.trimSilence, trimSilence);
}

// What a stereo capture holds, without the silence around it; for a mono
// stream, which plays on both channels alike, the left channel only.
inline std::vector<std::int16_t> TrimmedSound(const std::vector<std::int16_t>& all, int channels) {
  const auto loud = [](std::int16_t s) { return s != 0; };
  const auto first = std::find_if(all.begin(), all.end(), loud);
  const auto last = std::find_if(all.rbegin(), all.rend(), loud).base();
  if (first >= last) return {};
  // Whole frames: the first loud sample may be a right one.
  const std::size_t start = static_cast<std::size_t>(first - all.begin()) & ~std::size_t{1};
  const auto end = static_cast<std::size_t>(last - all.begin());
  if (channels != 1) return std::vector<std::int16_t>(all.begin() + static_cast<std::ptrdiff_t>(start), last);
  std::vector<std::int16_t> left;
  std::size_t differing = 0;
  for (std::size_t i = start; i < end; i += 2) {
    differing += i + 1 < all.size() && all[i] != all[i + 1] ? 1 : 0;
    left.push_back(all[i]);
  }
  EXPECT_EQ(differing, 0u) << "frames of a mono stream whose channels differ";
  return left;
}

class OutputTest : public testing_support::IsolatedEnvironmentTest {
 protected:
  void TearDown() override {
    output.reset();
    platform::SetWaveOutDriver(nullptr);
    IsolatedEnvironmentTest::TearDown();
  }

  void UseCapture(platform::CapturePace pace, bool applyVolume = false, int devices = 1) {
    driver = std::make_shared<platform::CaptureDriver>(platform::CaptureOptions{pace, applyVolume, devices});
    platform::SetWaveOutDriver(driver);
  }

  std::shared_ptr<platform::CaptureTap> Tap(std::size_t index = 0) { return driver->Tap(index); }

  // Plays one buffer of a stepped device and waits until the engine has
  // handed over the next one, or has gone idle.
  void StepOne(platform::CaptureTap& tap, std::size_t inFlight = kBuffersAt44100) {
    const int resets = tap.Resets();
    ASSERT_EQ(tap.Advance(1), 1u);
    ASSERT_TRUE(WaitUntil([&] { return tap.QueuedBuffers() == inFlight || tap.Resets() != resets; }));
  }

  // On unpaced devices: waits until they have played all the streams held.
  // A track's end comes once its queue is drained into a block, which may
  // not have reached the device yet.
  bool PlayedOut() {
    return WaitUntil([&] {
      if (output->StreamCount() != 0) return false;
      for (const auto& tap : driver->Taps()) {
        if (tap->QueuedBuffers() != 0) return false;
      }
      return true;
    });
  }

  void Step(platform::CaptureTap& tap, int count, std::size_t inFlight = kBuffersAt44100) {
    for (int i = 0; i < count; ++i) StepOne(tap, inFlight);
  }

  // Writes all of `samples`, the way a decoder does.
  void WriteAll(std::uint32_t handle, const std::vector<std::int16_t>& samples) {
    ASSERT_EQ(output->WriteStream(handle, samples.data(), static_cast<std::uint32_t>(samples.size())), 1);
  }

  std::shared_ptr<platform::CaptureDriver> driver;
  std::unique_ptr<playback::AudioOutput> output = std::make_unique<playback::AudioOutput>();
};

// A decoder's bench: the shared file and the notify target it is wired to,
// with the three options that change a track's end off while a test runs.
// Fixtures drop their decoders before this TearDown: a decode thread may
// still use the file.
class DecoderTest : public OutputTest {
 protected:
  void SetUp() override {
    OutputTest::SetUp();
    SetPlaybackOptions(false, false, false);
  }
  void TearDown() override {
    SetPlaybackOptions(true, true, true);  // the defaults
    OutputTest::TearDown();
  }

  bool Ended(int limitMs = 10000) { return notify.WaitFor(playback::kMessageTrackEnded, limitMs); }
  // Plays a stepped device until no stream is left and nothing is queued.
  void PlayOut() {
    ASSERT_TRUE(WaitUntil([&] {
      Tap()->Advance(1);
      return output->StreamCount() == 0 && Tap()->QueuedBuffers() == 0;
    }));
  }
  std::vector<std::int16_t> Sound(int channels) { return TrimmedSound(Tap()->Samples(), channels); }
  // Plays until the decode thread waits for room: the queue holds more than
  // a second and a half.
  void PlayUntilQueued(playback::MediaDecoder& decoder, const std::string& path, std::uint32_t rate) {
    ASSERT_TRUE(decoder.Open(path));
    ASSERT_TRUE(decoder.Play());
    ASSERT_TRUE(WaitUntil([&] { return output->QueuedSamples(output->LastHandle()) >= rate * 2 * 3 / 2; }));
  }

  playback::LockedFile file;
  platform::MessageQueue notify;
};

}  // namespace output_testing
