// Crossfade, gapless play and silence trimming with real tracks: WAV files
// the test writes and an Ogg file of tests/data, played by the application
// into capture devices.
//
// The crossfade cases use devices that play only when the test steps them,
// so the test decides what the engine has mixed when each fade is applied;
// the others use devices that play as fast as the decoders feed them (the
// render tool's feed gate). Sounds are told apart by channel: an old track
// sounds on the left only, the next one on the right only.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "capture_app_fixture.h"
#include "decoders/bare_libmad.h"
#include "decoders/wav_test_files.h"
#include "playback/audio_mixer.h"
#include "playback/audio_output.h"
#include "playback/media_decoder.h"
#include "support/command_decode.h"
#include "support/test_environment.h"

namespace {

using Samples = std::vector<std::int16_t>;
using namespace shell;

constexpr std::uint32_t kRate = 8000;
constexpr int kLoud = 16000;
constexpr std::uint32_t kQueue = kRate * 2 * 2;  // two seconds of stereo samples

// Stereo frames of `left` on the left and `right` on the right.
Samples Constant(std::size_t frames, std::int16_t left, std::int16_t right) {
  Samples samples(frames * 2);
  for (std::size_t i = 0; i < samples.size(); i += 2) {
    samples[i] = left;
    samples[i + 1] = right;
  }
  return samples;
}

// Track `k`: stereo, every value in the band 1000 + 3000k to 1500 + 3000k, so
// no sample is quiet enough to be trimmed.
Samples Banded(int k, std::size_t frames) {
  Samples samples(frames * 2);
  for (std::size_t i = 0; i < samples.size(); ++i)
    samples[i] = static_cast<std::int16_t>(1000 + 3000 * k + static_cast<int>(i * 7 % 501));
  return samples;
}

Samples Channel(const Samples& stereo, int channel) {
  Samples one;
  for (std::size_t i = static_cast<std::size_t>(channel); i < stereo.size(); i += 2) one.push_back(stereo[i]);
  return one;
}

// The stretches of `stereo` between frames in which both channels are 0.
std::vector<Samples> SoundingStretches(const Samples& stereo) {
  std::vector<Samples> stretches;
  bool inSilence = true;
  for (std::size_t i = 0; i + 1 < stereo.size(); i += 2) {
    const bool silent = stereo[i] == 0 && stereo[i + 1] == 0;
    if (!silent && inSilence) stretches.emplace_back();
    if (!silent) stretches.back().insert(stretches.back().end(), {stereo[i], stereo[i + 1]});
    inSilence = silent;
  }
  return stretches;
}

std::size_t FirstNonZero(const Samples& mono, std::size_t from = 0) {
  while (from < mono.size() && mono[from] == 0) ++from;
  return from;
}

// The largest distance of mono[from + i] from expected(i), for i below `count`.
int LargestError(const Samples& mono, std::size_t from, std::size_t count,
                 const std::function<double(std::size_t)>& expected) {
  double worst = 0;
  for (std::size_t i = 0; i < count && from + i < mono.size(); ++i)
    worst = std::max(worst, std::abs(mono[from + i] - expected(i)));
  return static_cast<int>(worst);
}

class ProtocolTest : public shell_testing::CaptureAppTest {
 protected:
  void StartWith(platform::CapturePace pace) {
    CaptureAppTest::StartWith(pace);
    app->SetShuffle(false);
    app->SetRepeat(false);
  }
  std::string AddTrack(const std::string& name, const Samples& samples, std::uint32_t rate = kRate,
                       std::uint16_t channels = 2) {
    const std::string path = Root().File(name);
    testing_support::WriteFile(path, wav_testing::PcmWav(samples, rate, channels));
    app->Playlist().AddEntry(path);
    return path;
  }

  // Stepped devices: plays all that every device holds.
  void StepAll() {
    for (const auto& tap : driver->Taps()) tap->Advance(tap->QueuedBuffers());
  }
  // Stepped devices: every engine has mixed all the buffers it was given back.
  bool MixerCaughtUp() {
    const auto taps = driver->Taps();
    return std::all_of(taps.begin(), taps.end(), [](const auto& tap) {
      return tap->IsPaused() ||
             tap->QueuedBuffers() ==
                 static_cast<std::size_t>(playback::AudioOutput::BuffersForRate(tap->SampleRate()));
    });
  }
  bool PlayOut(bool stepped) {
    return RunUntil([&] {
      if (stepped) StepAll();
      return PlayedOut();
    });
  }
  Samples Recorded(std::uint32_t rate) {
    Samples all;
    for (const auto& tap : driver->Taps()) {
      if (tap->SampleRate() != rate) continue;
      const Samples part = tap->Samples();
      all.insert(all.end(), part.begin(), part.end());
    }
    return all;
  }
  int TrackEndsHandled() {
    return static_cast<int>(std::count(app->handled.begin(), app->handled.end(), kMessageTrackEnded));
  }
  // Streams of an engine are numbered in the order they open; engines take
  // places in the order their rates first play.
  static std::uint32_t Stream(std::uint32_t enginePlace, std::uint32_t id) {
    return (enginePlace + 1) << 16 | id;
  }

};

class CrossfadeTest : public ProtocolTest, public testing::WithParamInterface<std::uint32_t> {};

// Track A (left) ends by itself and track B (right, at the parameter's
// rate) follows; then the user skips from B to C (left). A was opened with
// crossfade off and the option is switched on while A plays: it is read when
// used, so A has no fade-in but its end is faded. The engine mixes nothing
// between the decoder's fade of A's queued tail and the second fade that
// closing it applies, so A's tail falls with the square of a line over its
// length; B fades in over 2000 ms of 1024 ms seconds, and the skip fades
// what B has queued once, in a straight line. Tolerance: 1/64 of full scale
// for the steps of 1/256 the queue's integer gains take.
TEST_P(CrossfadeTest, TheOldTrackFadesTwiceUnderTheNewOneAndASkipFadesOnce) {
  const std::uint32_t rateB = GetParam();
  const std::uint32_t queueB = rateB * 2 * 2;
  const std::uint32_t blockB = std::min<std::uint32_t>(rateB * 2, 32768);  // the decoder's reads
  StartWith(platform::CapturePace::kStepped);
  SetOptions(false, false, false);
  const std::size_t tailSamples = 4000;  // A is one block of the engine longer than its queue
  AddTrack("a.wav", Constant((kQueue + tailSamples) / 2, kLoud, 0));
  AddTrack("b.wav", Constant(rateB * 8, 0, kLoud), rateB);
  AddTrack("c.wav", Constant(kRate, kLoud, 0));
  Send(kMessagePlay, 1);

  // A fills its queue and waits for room; the device has played nothing.
  ASSERT_TRUE(RunUntil([&] { return app->Output().QueuedSamples(Stream(0, 0)) == kQueue; }));
  SetOptions(true, false, false);
  // One block played makes room for A's last samples; its end comes next.
  ASSERT_EQ(driver->Tap(0)->Advance(1), 1u);
  ASSERT_TRUE(RunUntil([&] { return TrackEndsHandled() == 1; }));
  const std::uint32_t streamB = rateB == kRate ? Stream(0, 1) : Stream(1, 0);
  // B's decoder waits for room: its queue is past the prefill and stays as it is.
  const auto fullB = [&] { return app->Output().QueuedSamples(streamB) + blockB > queueB; };
  ASSERT_TRUE(RunUntil(fullB)) << "B prefilled and plays";
  // B plays until its fade-in is behind what it has queued, and refills.
  // (The position is read while the engines are idle: it counts buffers in flight.)
  ASSERT_TRUE(RunUntil([&] {
    if (!MixerCaughtUp()) return false;
    if (app->CurrentDecoder()->GetPosition() >= 2000) return true;
    StepAll();
    return false;
  }));
  ASSERT_TRUE(RunUntil(fullB));
  const std::uint32_t skippedTail = app->Output().QueuedSamples(streamB);
  Send(kMessageNext, 0);
  ASSERT_TRUE(PlayOut(true));

  const Samples left = Channel(Recorded(kRate), 0);
  const Samples right = Channel(Recorded(rateB), 1);
  const double tolerance = kLoud / 64.0;

  // A: a block at full level, then the tail of N samples queued at its end.
  const std::size_t startA = FirstNonZero(left);
  const std::size_t playedFrames = playback::kBlockSamples / 2;
  ASSERT_LT(startA + playedFrames, left.size());
  EXPECT_TRUE(std::all_of(left.begin() + static_cast<std::ptrdiff_t>(startA),
                          left.begin() + static_cast<std::ptrdiff_t>(startA + playedFrames),
                          [](std::int16_t s) { return s == kLoud; }))
      << "no fade-in: A opened with crossfade off";
  const double tailFrames = static_cast<double>(kQueue - playback::kBlockSamples + tailSamples) / 2;
  const std::size_t fadeA = startA + playedFrames;
  const auto squared = [&](std::size_t i) { return kLoud * std::pow(std::max(0.0, 1 - i / tailFrames), 2); };
  const auto line = [&](std::size_t i) { return kLoud * std::max(0.0, 1 - i / tailFrames); };
  EXPECT_LE(LargestError(left, fadeA, static_cast<std::size_t>(tailFrames), squared), tolerance);
  EXPECT_GT(LargestError(left, fadeA, static_cast<std::size_t>(tailFrames), line), kLoud / 5)
      << "one fade alone would be a straight line";
  const std::size_t endA = fadeA + static_cast<std::size_t>(tailFrames);

  // B: the fade-in, from the first frame of its stream on.
  const double fadeInFrames = 2000.0 * rateB * 2 / 1024 / 2;
  const std::size_t gainStepFrames = static_cast<std::size_t>(fadeInFrames * 2) / 256 / 2;
  const std::size_t startB = FirstNonZero(right) - gainStepFrames;  // the first step has gain 0
  const auto rising = [&](std::size_t i) { return kLoud * std::min(1.0, i / fadeInFrames); };
  EXPECT_LE(LargestError(right, startB, static_cast<std::size_t>(fadeInFrames) + 100, rising), tolerance);
  if (rateB == kRate) {
    // One device: B starts with A's tail and fades in under all of it.
    EXPECT_EQ(startB, fadeA);
    std::size_t together = 0;
    for (std::size_t i = fadeA; i < endA && i < right.size(); ++i) together += left[i] > 0 && right[i] > 0;
    EXPECT_GE(together, static_cast<std::size_t>(tailFrames) - 400);
  }
  // The skip: B's queued samples fall in one straight line to silence. The
  // fade takes 256 equal steps from full level; the last has gain 0.
  const auto lastB = std::find_if(right.rbegin(), right.rend(), [](std::int16_t s) { return s != 0; });
  const auto lastLoud = std::find(right.rbegin(), right.rend(), kLoud);
  ASSERT_NE(lastLoud, right.rend());
  const double stepFrames = static_cast<double>(lastLoud - lastB) / 255.5;
  EXPECT_GT(stepFrames * 256 * 2, skippedTail * 0.9) << "all that was queued fades";
  const std::size_t fadeB =
      static_cast<std::size_t>(right.rend() - lastLoud) - static_cast<std::size_t>(stepFrames);
  const double skipFrames = stepFrames * 256;
  const auto falling = [&](std::size_t i) { return kLoud * std::max(0.0, 1 - i / skipFrames); };
  EXPECT_LE(LargestError(right, fadeB, static_cast<std::size_t>(skipFrames), falling), tolerance);
  EXPECT_GT(LargestError(right, fadeB, static_cast<std::size_t>(skipFrames),
                         [&](std::size_t i) { return falling(i) * falling(i) / kLoud; }),
            kLoud / 5)
      << "a skip fades once";
  EXPECT_LT(FirstNonZero(left, endA + 1), left.size()) << "C sounds";
}

INSTANTIATE_TEST_SUITE_P(SameAndOtherRate, CrossfadeTest, testing::Values(8000u, 16000u));

// Gapless play at one rate: B carries on in A's stream with no silence
// between them; what of A was still queued when B wrote first is given up,
// on purpose. At another rate C needs its own engine: B's stream is left
// open, sounds out whole blocks and ends by the underrun rule, so its last
// partial block is lost. The application ends C's stream at the end of the
// list, so C plays out whole (but for the last, loud sample that the end
// mark trims).
TEST_F(ProtocolTest, GaplessJoinsTracksOfOneRateAndDegradesAcrossRates) {
  StartWith(platform::CapturePace::kUnpaced);
  SetOptions(false, true, false);
  const Samples a = Banded(0, 24000);
  const Samples b = Banded(1, 12000);
  Samples c = Banded(2, 20000);
  AddTrack("a.wav", a);
  AddTrack("b.wav", b);
  AddTrack("c.wav", c, 16000);
  Send(kMessagePlay, 1);
  ASSERT_TRUE(RunUntil([&] { return TrackEndsHandled() == 3 && PlayedOut(); }));
  EXPECT_EQ(driver->Taps().size(), 2u);

  const std::vector<Samples> joined = SoundingStretches(Recorded(kRate));
  ASSERT_EQ(joined.size(), 1u) << "no silence between A and B";
  const Samples& sound = joined.front();
  const auto toB = std::find_if(sound.begin(), sound.end(), [](std::int16_t s) { return s >= 4000; });
  const auto heardOfA = toB - sound.begin();
  ASSERT_GT(heardOfA, 0);
  EXPECT_LT(heardOfA, static_cast<std::ptrdiff_t>(a.size())) << "A's queued tail gives way to B";
  EXPECT_TRUE(std::equal(sound.begin(), toB, a.begin())) << "A from its start";
  EXPECT_TRUE(std::equal(toB, sound.end(), b.begin())) << "B from its start";
  EXPECT_LT(sound.end() - toB, static_cast<std::ptrdiff_t>(b.size())) << "B's last partial block is lost";
  EXPECT_EQ(sound.size() % playback::kBlockSamples, 0u) << "whole blocks";

  c.back() = 0;
  EXPECT_EQ(SoundingStretches(Recorded(16000)), std::vector<Samples>{c});
}

// The same join with MP3 files that lame makes of one loud tone cut in two:
// what plays is A's decode from its first frame up to the hand-over and then
// every frame of B, from B's first (its Info frame's silence included) to
// the end mark's trim, each sample as libmad's own decode of the file gives it.
TEST_F(ProtocolTest, AGaplessJoinOfMp3FilesPlaysEveryFrameOfTheNextFile) {
  const std::string folder = Root().Path();
  const std::string make = "cd '" + folder +
                           "' && sox -n -r 44100 -c 2 -b 16 tone.wav synth 6 sine 440 vol 0.3 dcshift 0.5"
                           " && sox tone.wav a.wav trim 0 3 && sox tone.wav b.wav trim 3"
                           " && lame --quiet -b 128 a.wav a.mp3 && lame --quiet -b 128 b.wav b.mp3";
  ASSERT_EQ(std::system(make.c_str()), 0) << make;
  const auto decode = [&](const char* name) {
    const std::string bytes = testing_support::ReadFile(Root().File(name));
    return decoders_test::BareLibmadDecode(decoders_test::Bytes(bytes.begin(), bytes.end()));
  };
  const Samples a = decode("a.mp3");
  // B whole from its first sample, up to what the list's end trims.
  const Samples bDecoded = decode("b.mp3");
  const Samples b(bDecoded.begin(), bDecoded.begin() + static_cast<std::ptrdiff_t>(decoders_test::KeptEnd(bDecoded)));
  StartWith(platform::CapturePace::kUnpaced);
  SetOptions(false, true, false);
  app->Playlist().AddEntry(Root().File("a.mp3"));
  app->Playlist().AddEntry(Root().File("b.mp3"));
  Send(kMessagePlay, 1);
  ASSERT_TRUE(RunUntil([&] { return TrackEndsHandled() == 2 && PlayedOut(); }));

  Samples sound = Recorded(44100);
  sound.erase(sound.begin(), std::find_if(sound.begin(), sound.end(), [](std::int16_t v) { return v != 0; }));
  while (!sound.empty() && sound.back() == 0) sound.pop_back();
  const auto fromA = std::find_if(a.begin(), a.end(), [](std::int16_t v) { return v != 0; });
  const auto heardOfA = std::mismatch(sound.begin(), sound.end(), fromA, a.end()).first - sound.begin();
  ASSERT_GT(heardOfA, 44100 * 2) << "A from its first sound";
  ASSERT_EQ(sound.size() - static_cast<std::size_t>(heardOfA), b.size()) << "all of B, no more, no less";
  EXPECT_TRUE(std::equal(b.begin(), b.end(), sound.begin() + heardOfA)) << "B frame for frame";
}

// Trimming drops the silence before and after the sound and keeps a quiet
// passage inside it. The end of the track writes the end mark twice (once
// for the trim, once to drain), and each trims what is queued then up to and
// with its last loud sample: the last two samples go too. The device plays
// only once both marks are written.
TEST_F(ProtocolTest, TrimmingRemovesOnlyTheSilenceAtBothEnds) {
  constexpr std::uint32_t kTrimRate = 44100;
  StartWith(platform::CapturePace::kStepped);
  SetOptions(false, false, true);
  Samples sound = Banded(0, 60000);
  std::fill(sound.begin() + 2000, sound.begin() + 3000, std::int16_t{-120});  // quiet, not silent
  Samples track = Constant(2400, 0, 0);
  track.insert(track.end(), sound.begin(), sound.end());
  const Samples after = Constant(2400, 300, -300);
  track.insert(track.end(), after.begin(), after.end());
  AddTrack("t.wav", track, kTrimRate);
  Send(kMessagePlay, 1);
  sound.resize(sound.size() - 2);
  // The engine's buffers hold less than the sound, and the mixer takes whole
  // blocks until the stream has ended, so the tail is still queued when the
  // marks come; after both, what is queued is the sound less whole blocks.
  ASSERT_GT(sound.size(), static_cast<std::size_t>(playback::AudioOutput::BuffersForRate(kTrimRate)) *
                              playback::kBlockSamples);
  ASSERT_TRUE(RunUntil([&] {
    const std::uint32_t handle = app->Output().NewestHandle();
    if (handle == playback::kInvalidHandle) return false;
    const bool ended = app->Output().WaitForQueuedSamples(handle, 0xFFFFFFFFu, 0);
    return ended && (sound.size() - app->Output().QueuedSamples(handle)) % playback::kBlockSamples == 0;
  })) << "the end marks trimmed the queued tail";
  ASSERT_TRUE(PlayOut(true));

  EXPECT_EQ(SoundingStretches(Recorded(kTrimRate)), std::vector<Samples>{sound});
}

// A track shorter than the one-second prefill starts at its end, with each
// of the options. Without crossfade it sounds whole: in gapless play because
// the application ends the last stream (the underrun rule would drop a last
// partial block, here all of it). That end mark goes to the stream that
// opened the engine, as the output's last handle names only that one, so the
// gapless case runs first. With crossfade it is heard, faded. The Ogg track
// is compared with oggdec's decode of the same file.
TEST_F(ProtocolTest, ATrackShorterThanThePrefillSoundsWhateverTheOptions) {
  StartWith(platform::CapturePace::kUnpaced);
  const Samples shortTrack = Banded(2, 2800);
  const std::string wav = AddTrack("short.wav", shortTrack);
  const std::string ogg = TS_OGG_DATA_DIR "/short_8k_mono.ogg";
  const Samples reference =
      testing_support::DecodeWith("oggdec -Q -R -b 16 -e 0 -s 1 -o - '" + ogg + "' 2>/dev/null");
  ASSERT_GT(reference.size(), 3000u);

  struct Options {
    bool crossfade, gapless;
  };
  std::size_t before = 0;
  for (const Options options : {Options{false, true}, Options{false, false}, Options{true, false}}) {
    SCOPED_TRACE(testing::Message() << "crossfade " << options.crossfade << ", gapless " << options.gapless);
    for (const std::string& path : {wav, ogg}) {
      if (options.gapless && path == ogg) continue;
      SetOptions(options.crossfade, options.gapless, false);
      app->Playlist().ClearAll();
      app->Playlist().AddEntry(path);
      app->Playlist().SetCurrentIndex(0);
      Send(kMessagePlay, 1);
      ASSERT_TRUE(RunUntil([&] { return PlayedOut(); }));
      const Samples all = Recorded(kRate);
      const Samples played(all.begin() + static_cast<std::ptrdiff_t>(before), all.end());
      before = all.size();
      const std::vector<Samples> stretches = SoundingStretches(played);
      if (options.crossfade) {
        // Faded in and out, it has silent frames of its own.
        std::size_t sounding = 0;
        for (const Samples& stretch : stretches) sounding += stretch.size() / 2;
        EXPECT_GT(sounding, 1000u) << path;
        continue;
      }
      ASSERT_EQ(stretches.size(), 1u) << path;
      const Samples& heard = stretches.front();
      if (path == wav) {
        EXPECT_EQ(heard, shortTrack);
      }
      if (path == ogg) {
        // Tremor's integer decode against libvorbis' float one: within 1/256 of full scale.
        ASSERT_EQ(heard.size(), reference.size() * 2);
        int worst = 0;
        for (std::size_t i = 0; i < reference.size(); ++i)
          worst = std::max(
              {worst, std::abs(heard[2 * i] - reference[i]), std::abs(heard[2 * i + 1] - reference[i])});
        EXPECT_LE(worst, 128);
      }
    }
  }
}

}  // namespace
