// Transport through the real pipeline: WAV files the test writes, the
// application's own decoders, list and output, and a capture device that
// records what the engine played (the silence of track changes included),
// as fast as the decoders feed it (the render tool's feed gate).
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "decoders/wav_test_files.h"
#include "playback/media_decoder.h"
#include "capture_app_fixture.h"
#include "playback/playback_settings.h"
#include "shell/window_messages.h"

namespace {

using Samples = std::vector<std::int16_t>;
using namespace shell;

constexpr std::uint32_t kRate = 8000;
constexpr std::size_t kTrackFrames = 12000;  // 1.5 s: longer than the one-second prefill

// Track `k`: stereo, every value in the band 1000 + 3000k to 1500 + 3000k.
// No sample is quiet enough to be trimmed, and the sum of two tracks
// sounding at once lies in no band.
Samples TrackSamples(int k, std::size_t frames) {
  Samples samples(frames * 2);
  for (std::size_t i = 0; i < samples.size(); ++i)
    samples[i] = static_cast<std::int16_t>(1000 + 3000 * k + static_cast<int>(i * 7 % 501));
  return samples;
}

// The track a sample belongs to; -1 for silence, -2 for a value of no track.
int TrackOf(std::int16_t sample) {
  if (sample == 0) return -1;
  const int k = (sample - 1000) / 3000;
  return sample >= 1000 && sample - 3000 * k <= 1500 ? k : -2;
}

// The tracks in the order they sounded, each stretch counted once.
std::vector<int> TrackSequence(const Samples& samples) {
  std::vector<int> order;
  for (const std::int16_t sample : samples) {
    const int k = TrackOf(sample);
    if (k != -1 && (order.empty() || order.back() != k)) order.push_back(k);
  }
  return order;
}

// `samples` without the frames in which both channels are silent: what the
// engine plays while no stream sounds, and the padding of a stream's last block.
Samples WithoutSilentFrames(const Samples& samples) {
  Samples sounding;
  for (std::size_t i = 0; i + 1 < samples.size(); i += 2) {
    if (samples[i] != 0 || samples[i + 1] != 0) sounding.insert(sounding.end(), {samples[i], samples[i + 1]});
  }
  return sounding;
}

class TransportTest : public shell_testing::CaptureAppTest {
 protected:
  void SetUp() override {
    CaptureAppTest::SetUp();
    StartWith(platform::CapturePace::kUnpaced);
    SetOptions(false, false, false);
    app->Settings().skipSeconds = 10;
  }

  std::string WriteTrack(const std::string& name, const Samples& samples) {
    const std::string path = Root().File(name);
    testing_support::WriteFile(path, wav_testing::PcmWav(samples, kRate, 2));
    return path;
  }
  // Tracks 0 to count - 1, written and put in the list.
  std::vector<Samples> MakeList(int count, std::size_t frames = kTrackFrames) {
    std::vector<Samples> tracks;
    for (int k = 0; k < count; ++k) {
      tracks.push_back(TrackSamples(k, frames));
      app->Playlist().AddEntry(WriteTrack("track" + std::to_string(k) + ".wav", tracks.back()));
    }
    return tracks;
  }

  // Tracks 0 to count - 1 in a list file, opened as the user opens one.
  std::vector<Samples> OpenList(int count) {
    std::vector<Samples> tracks;
    std::string list = "#EXTM3U\n";
    for (int k = 0; k < count; ++k) {
      tracks.push_back(TrackSamples(k, kTrackFrames));
      list += WriteTrack("track" + std::to_string(k) + ".wav", tracks.back()) + "\n";
    }
    testing_support::WriteFile(Root().File("list.m3u"), list);
    app->OpenMedia(Root().File("list.m3u"), false);
    return tracks;
  }

  Samples Captured() {
    Samples all;
    for (const auto& tap : driver->Taps()) {
      const Samples recorded = tap->Samples();
      all.insert(all.end(), recorded.begin(), recorded.end());
    }
    return all;
  }
  int HandledCount(std::uint32_t message) {
    return static_cast<int>(std::count(app->handled.begin(), app->handled.end(), message));
  }

};

// A three-track list opened as the user opens it plays to its end and
// stops there. Without gapless play each track drains before the next
// starts, so the tracks are heard one after the other, each from its start,
// with only silence between. (That each is heard whole, less the last sample
// that the tail trim armed at the end of the prefill takes, is the render
// tool's test; here a decoder starved for a second on a loaded machine may
// lose its rest to the queue's underrun strikes, as the player does.)
TEST_F(TransportTest, AListPlaysItsTracksInOrderToItsEnd) {
  std::vector<Samples> tracks = OpenList(3);
  for (Samples& track : tracks) track.back() = 0;  // the tail trim's
  ASSERT_TRUE(RunUntil([&] { return PlayedOut(); }));

  EXPECT_EQ(HandledCount(kMessageTrackEnded), 3);
  EXPECT_EQ(app->Playlist().CurrentIndex(), 2);
  EXPECT_EQ(Window().skin.title, "track2 (0:01)");
  EXPECT_EQ(Window().skin.length, 1500u);
  EXPECT_EQ(Window().skin.sampleRate, kRate);
  const Samples sound = WithoutSilentFrames(Captured());
  ASSERT_EQ(TrackSequence(sound), (std::vector<int>{0, 1, 2}));
  auto from = sound.begin();
  for (int k = 0; k < 3; ++k) {
    const auto to =
        std::find_if(from, sound.end(), [k](std::int16_t s) { return s != 0 && TrackOf(s) != k; });
    const auto heard = static_cast<std::size_t>(to - from);
    ASSERT_LE(heard, tracks[k].size()) << k;
    EXPECT_TRUE(std::equal(from, to, tracks[k].begin())) << "track " << k << " from its start";
    from = to;
  }
}

// With gapless play each track continues the stream of the one before (and
// the hand-over drops what of the old track was still queued); at the end of
// the list the application ends that stream, so the last track plays out
// whole and the stream goes.
TEST_F(TransportTest, AGaplessListEndsTheLastStreamAtItsEnd) {
  SetOptions(false, true, false);
  const std::vector<Samples> tracks = OpenList(3);
  ASSERT_TRUE(RunUntil([&] { return PlayedOut(); }));

  EXPECT_EQ(HandledCount(kMessageTrackEnded), 3);
  EXPECT_EQ(app->Output().StreamCount(), 0);
  const Samples sound = WithoutSilentFrames(Captured());
  const std::vector<int> order = TrackSequence(sound);
  ASSERT_FALSE(order.empty());
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end()) && order.back() == 2)
      << testing::PrintToString(order);
  Samples tail = tracks[2];
  tail.back() = 0;
  ASSERT_GE(sound.size(), tail.size());
  EXPECT_TRUE(std::equal(tail.begin(), tail.end(), sound.end() - static_cast<std::ptrdiff_t>(tail.size())));
}

TEST_F(TransportTest, StepsWhileStoppedOnlyMoveTheSelectionAndTheTitle) {
  MakeList(3);
  Send(kMessageNext, 0);
  EXPECT_EQ(app->Playlist().CurrentIndex(), 1);
  EXPECT_EQ(Window().skin.title, "track1");
  Send(kMessageNext, 0);
  Send(kMessagePrevious);
  EXPECT_EQ(app->Playlist().CurrentIndex(), 1);
  EXPECT_EQ(app->DecoderState(), playback::kStateStopped);
  EXPECT_TRUE(driver->Taps().empty()) << "nothing played";
}

TEST_F(TransportTest, NextAtTheEndWithoutRepeatStopsAndPlaysNothingMore) {
  SetOptions(false, true, false);
  MakeList(2, 40000);
  Send(kMessageNext, 0);
  Send(kMessagePlay, 1);
  ASSERT_TRUE(RunUntil([&] { return !TrackSequence(Captured()).empty(); })) << "track 1 sounds";
  Send(kMessageNext, 0);
  EXPECT_EQ(app->DecoderState(), playback::kStateStopped);
  EXPECT_EQ(app->Playlist().CurrentIndex(), 1);
  ASSERT_TRUE(RunUntil([&] { return PlayedOut(); }));
  EXPECT_EQ(TrackSequence(Captured()), (std::vector<int>{1}));
}

// The decoder posted its end of track before the user stopped it: the
// message still counts when it comes, so the list steps on and the next
// track plays, and the list then ends as usual.
TEST_F(TransportTest, AnEndOfTrackQueuedBeforeAStopStillStepsOn) {
  MakeList(2);
  Send(kMessagePlay, 0);
  ASSERT_TRUE(Window().queue.WaitFor(kMessageTrackEnded, 30000));
  Send(kMessageStop);
  ASSERT_TRUE(RunUntil([&] { return PlayedOut(); }));
  EXPECT_EQ(HandledCount(kMessageTrackEnded), 2);
  EXPECT_EQ(app->Playlist().CurrentIndex(), 1);
  EXPECT_EQ(TrackSequence(Captured()), (std::vector<int>{0, 1}));
}

// Entries that no decoder takes or that don't open are tried once each, in
// order, one posted step apiece; a file cut short plays what it has and the
// walk goes on; at the end of the list it stops without wrapping.
TEST_F(TransportTest, DeadEntriesAreWalkedOnceEachAndTheListEndsSilently) {
  Send(kMessageSetRepeat, 1);  // an automatic step ignores it; the last entry is dead
  const Samples cut = TrackSamples(0, kTrackFrames);
  std::string bytes = testing_support::ReadFile(WriteTrack("cut.wav", cut));
  testing_support::WriteFile(Root().File("cut.wav"), bytes.substr(0, bytes.size() / 2));
  testing_support::WriteFile(Root().File("text.wav"), "not a wave file at all");
  const Samples good = TrackSamples(1, kTrackFrames);
  playlist::PlaylistView& list = app->Playlist();
  for (const std::string& path :
       {Root().File("missing.wav"), Root().File("cut.wav"), Root().File("text.wav"), Root().File("song.xyz"),
        WriteTrack("good.wav", good), Root().File("gone.wav")})
    list.AddEntry(path);

  Send(kMessagePlay, 0);
  ASSERT_TRUE(RunUntil([&] { return PlayedOut(); }));
  EXPECT_EQ(HandledCount(kMessageNext), 4);
  EXPECT_EQ(HandledCount(kMessageTrackEnded), 2);
  EXPECT_EQ(list.CurrentIndex(), 5);
  for (int i = 2; i < list.ItemCount(); ++i) EXPECT_GT(list.PlayStampAt(i), list.PlayStampAt(i - 1)) << i;
  EXPECT_EQ(TrackSequence(Captured()), (std::vector<int>{0, 1}));
}

// Back nearer the start than one step does nothing; forward may ask for a
// place past the end, which the decoder takes as one second before it.
TEST_F(TransportTest, SkipsStepFromThePositionAndBackNearTheStartDoesNothing) {
  driver =
      std::make_shared<platform::CaptureDriver>(platform::CaptureOptions{platform::CapturePace::kStepped});
  platform::SetWaveOutDriver(driver);  // held: the position moves only by seeks
  MakeList(1, 80000);                  // 10 s
  Send(kMessagePlay, 0);
  ASSERT_TRUE(RunUntil([&] { return app->Output().StreamCount() != 0; })) << "the decoder has its stream";
  Send(kMessageSeek, 3000);
  ASSERT_EQ(app->PositionMs(), 3000);
  EXPECT_EQ(app->PlaylistSeconds(), 3) << "the position request tells the list its whole seconds";
  Window().skin.message.clear();
  Send(kMessageRewind);
  EXPECT_EQ(app->PositionMs(), 3000);
  EXPECT_EQ(Window().skin.message, "");
  Send(kMessageFastForward);
  EXPECT_EQ(Window().skin.message, "Seek to 00:13");
  EXPECT_EQ(Window().timers.Period(kTimerStatus), 1500u);
  EXPECT_EQ(app->PositionMs(), 9000);
  Send(kMessageStop);
}

// The volume keys through a device that applies its volume as it plays:
// mute silences both channels at once; an unmute with no step in between
// brings the left channel back and leaves the right one silent, as the mute
// has always done.
TEST_F(TransportTest, MuteSilencesTheDeviceAndAnUnmuteBringsBackOnlyTheLeftChannel) {
  platform::CaptureOptions stepped;
  stepped.pace = platform::CapturePace::kStepped;  // and the volume applied
  driver = std::make_shared<platform::CaptureDriver>(stepped);
  platform::SetWaveOutDriver(driver);
  MakeList(1, 80000);
  Send(kMessagePlay, 0);
  ASSERT_TRUE(RunUntil([&] {
    const auto taps = driver->Taps();
    return !taps.empty() && taps[0]->QueuedBuffers() > 0;
  }));
  const std::shared_ptr<platform::CaptureTap> tap = driver->Taps()[0];
  // One more buffer played, as heard; each channel's loudest sample of it.
  const auto playOne = [&] {
    EXPECT_TRUE(RunUntil([&] { return tap->QueuedBuffers() > 0; }));
    const std::size_t before = tap->SampleCount();
    tap->Advance(1);
    const Samples all = tap->Samples();
    std::array<int, 2> loudest{};
    for (std::size_t i = before; i < all.size(); ++i)
      loudest[i % 2] = std::max(loudest[i % 2], std::abs(static_cast<int>(all[i])));
    return loudest;
  };

  std::array<int, 2> loud{};
  for (int played = 0; played < 16 && loud[0] == 0; ++played) loud = playOne();  // past the primed silence
  EXPECT_GT(loud[0], 0);
  EXPECT_GT(loud[1], 0);
  Send(kMessageMute);
  EXPECT_EQ(playOne(), (std::array<int, 2>{0, 0}));
  Send(kMessageMute);
  const std::array<int, 2> back = playOne();
  EXPECT_GT(back[0], 0);
  EXPECT_EQ(back[1], 0);
  Send(kMessageStop);
}

// Calls as the phone's shell posts them, on a playing track: a ring and the
// answer pause once, the end resumes once; a call while stopped changes
// nothing; a rejected call (no end) leaves the player paused; a track the
// user had paused before the call plays at its end, as it always did.
TEST_F(TransportTest, CallsPauseOnceResumeOnceAndLeaveAStoppedPlayerAlone) {
  driver =
      std::make_shared<platform::CaptureDriver>(platform::CaptureOptions{platform::CapturePace::kStepped});
  platform::SetWaveOutDriver(driver);
  MakeList(1, 80000);
  Send(kMessagePlay, 0);
  ASSERT_TRUE(RunUntil([&] { return app->Output().StreamCount() != 0; }));
  ASSERT_EQ(app->DecoderState(), playback::kStatePlaying);
  const auto paused = [&] { return app->DecoderState() == playback::kStatePaused; };
  const auto playing = [&] { return app->DecoderState() == playback::kStatePlaying; };

  struct Step {
    std::uint32_t message;
    int state;  // after it
  };
  const Step call[] = {{kMessageCallBegan, playback::kStatePaused},
                       {kMessageCallBegan, playback::kStatePaused},
                       {kMessageCallEnded, playback::kStatePlaying},
                       {kMessageCallEnded, playback::kStatePlaying}};
  for (const Step& step : call) {
    Window().queue.Post(platform::Message{step.message, 0, 0, nullptr});
    ASSERT_TRUE(RunUntil([&] { return Window().queue.PendingCount() == 0; }));
    EXPECT_EQ(app->DecoderState(), step.state) << step.message;
  }

  Send(kMessageCallBegan);
  ASSERT_TRUE(paused()) << "a rejected call: the ring pauses";
  EXPECT_FALSE(RunUntil(playing, 200)) << "and nothing resumes it";
  Send(kMessageCallEnded);  // the user's own pause stands in for the call's here
  ASSERT_TRUE(playing()) << "a pause the call didn't make is undone too";

  Send(kMessageStop);
  ASSERT_EQ(app->DecoderState(), playback::kStateStopped);
  Send(kMessageCallBegan);
  Send(kMessageCallBegan);
  Send(kMessageCallEnded);
  EXPECT_EQ(app->DecoderState(), playback::kStateStopped);
}

// Transport messages fired at random at a playing list, from another thread
// as workers and the instance link post them, while the window thread
// handles them and the tracks end by themselves. Nothing may hang, and with
// crossfade off no two tracks may ever sound at once: every captured sample
// belongs to one track.
class TransportStressTest : public TransportTest, public ::testing::WithParamInterface<bool> {};

TEST_P(TransportStressTest, RandomTransportNeverHangsNorSoundsTwoTracksAtOnce) {
  SetOptions(false, GetParam(), false);
  Send(kMessageSetRepeat, 1);
  MakeList(3);
  constexpr std::uint32_t kMessages[] = {kMessagePlay,      kMessageStop,        kMessageTogglePause,
                                         kMessageNext,      kMessagePrevious,    kMessageSeek,
                                         kMessagePlayPause, kMessageFastForward, kMessageRewind};
  std::mt19937 random(20240611u + (GetParam() ? 1u : 0u));
  struct Step {
    platform::Message message;
    int pauseMicroseconds;
  };
  std::vector<Step> script;
  for (int i = 0; i < 250; ++i) {
    const std::uint32_t id =
        random() % 16 == 0 ? kMessageCommand : kMessages[random() % std::size(kMessages)];
    const std::uintptr_t wParam = id == kMessageCommand ? std::uintptr_t{kCommandPlayStop}
                                  : id == kMessageSeek  ? random() % 2000
                                                        : random() % 2;
    const int pause = random() % 3 == 0 ? static_cast<int>(random() % 3000) : 0;
    script.push_back(Step{platform::Message{id, wParam, 0, nullptr}, pause});
  }
  std::atomic<bool> posted{false};
  std::thread poster([&] {
    for (Step& step : script) {
      Window().queue.Post(std::move(step.message));
      std::this_thread::sleep_for(std::chrono::microseconds(step.pauseMicroseconds));
    }
    posted = true;
  });
  // Generous limits: they catch a hang, and the sanitizer builds are slow.
  constexpr int kHangMs = 120000;
  const bool handled = RunUntil([&] { return posted && Window().queue.PendingCount() == 0; }, kHangMs);
  poster.join();
  ASSERT_TRUE(handled);
  Send(kMessageStop);
  ASSERT_TRUE(RunUntil([&] { return PlayedOut(); }, kHangMs)) << OutputState();

  const Samples sound = Captured();
  const auto stray =
      std::find_if(sound.begin(), sound.end(), [](std::int16_t s) { return TrackOf(s) == -2; });
  EXPECT_EQ(stray, sound.end()) << "a sample of two tracks at " << (stray - sound.begin()) << ": " << *stray;
}

INSTANTIATE_TEST_SUITE_P(GaplessOnAndOff, TransportStressTest, ::testing::Bool());

}  // namespace
