// Playing MP3 files that aren't whole, short files, seeks and the
// transport's calls: through the output engine into capture devices.
#include <gtest/gtest.h>

#include <functional>

#include "decoders/mp3_pipeline.h"

namespace decoders_test {
namespace {

using platform::CapturePace;

// --- Damaged files -----------------------------------------------------------------------------

// Bytes that are never a frame header, and aren't silence either.
Bytes Junk(std::size_t count, std::uint32_t seed) {
  Bytes bytes(count);
  for (auto& byte : bytes) {
    seed = seed * 1664525u + 1013904223u;
    byte = static_cast<std::uint8_t>((seed >> 24) & 0x7F);
  }
  return bytes;
}

struct DamageCase {
  const char* name;
  // Turns the bytes of the CBR test file into the damaged file.
  std::function<Bytes(const Bytes& file, const std::vector<FrameSpan>& frames)> damage;
  // What share of the undamaged sound must play at least.
  double share;
};

void PrintTo(const DamageCase& damageCase, std::ostream* out) {
  *out << damageCase.name;
}

class Mp3DamageTest : public Mp3PipelineTest, public ::testing::WithParamInterface<DamageCase> {};

TEST_P(Mp3DamageTest, PlaysWhatCanBePlayedAndEnds) {
  const Bytes original = LoadMedia("cbr128_44k_stereo.mp3");
  const std::vector<FrameSpan> frames = FindFrames(original);
  ASSERT_GT(frames.size(), 70u);
  const std::size_t whole = FromFirstSound(ReferenceDecode(MediaPath("cbr128_44k_stereo.mp3")), 2).size();
  const std::size_t played = PlayDamaged(Wire(), WriteMedia("damaged.mp3", GetParam().damage(original, frames)));
  std::printf("%s: %zu of %zu samples\n", GetParam().name, played, whole);
  EXPECT_GE(static_cast<double>(played), GetParam().share * static_cast<double>(whole));
  EXPECT_LE(played, whole + 2 * 1152 * 2);
}

Bytes Splice(const Bytes& file, std::size_t at, const Bytes& inserted) {
  Bytes bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(at));
  bytes.insert(bytes.end(), inserted.begin(), inserted.end());
  bytes.insert(bytes.end(), file.begin() + static_cast<std::ptrdiff_t>(at), file.end());
  return bytes;
}

INSTANTIATE_TEST_SUITE_P(
    Files, Mp3DamageTest,
    ::testing::Values(
        // Junk of odd and even length between frames: resynchronisation.
        DamageCase{"junk between frames",
                   [](const Bytes& file, const std::vector<FrameSpan>& frames) {
                     const Bytes once = Splice(file, frames[40].offset, Junk(1001, 2));
                     return Splice(once, frames[20].offset, Junk(37, 1));
                   },
                   0.7},
        // Sound headers over scrambled data: each frame plays as silence of
        // its own length, so the length holds.
        DamageCase{"scrambled frame data",
                   [](const Bytes& file, const std::vector<FrameSpan>& frames) {
                     Bytes bytes = file;
                     for (std::size_t f = 30; f < 35; ++f) {
                       const Bytes junk = Junk(frames[f].length - 40, static_cast<std::uint32_t>(f));
                       std::copy(junk.begin(), junk.end(),
                                 bytes.begin() + static_cast<std::ptrdiff_t>(frames[f].offset + 40));
                     }
                     return bytes;
                   },
                   0.99},
        // A header claiming a frame of 320 kbit/s where one of 128 stands:
        // the frame swallows most of the next two.
        DamageCase{"a frame longer than its bytes",
                   [](const Bytes& file, const std::vector<FrameSpan>& frames) {
                     Bytes bytes = file;
                     bytes[frames[25].offset + 2] =
                         static_cast<std::uint8_t>(0xE0 | (bytes[frames[25].offset + 2] & 0x0F));
                     return bytes;
                   },
                   0.9},
        // The file ends in the middle of a frame.
        DamageCase{"cut in a frame",
                   [](const Bytes& file, const std::vector<FrameSpan>& frames) {
                     return Bytes(file.begin(),
                                  file.begin() + static_cast<std::ptrdiff_t>(frames[60].offset + 200));
                   },
                   0.7}));

// --- Short files, and the transport ---------------------------------------------------------

class Mp3PlayTest : public Mp3PipelineTest {
 protected:
  // The first `count` frames of the layer II file (24 ms each).
  std::string LayerTwoFrames(std::size_t count) {
    const Bytes whole = LoadMedia("layer2_48k_stereo.mp2");
    const std::vector<FrameSpan> frames = FindFrames(whole);
    const std::size_t end = frames[count - 1].offset + frames[count - 1].length;
    return WriteMedia("short.mp2", Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(end)));
  }
};

TEST_F(Mp3PlayTest, AFileShorterThanThePrefillStartsAtItsEndAndPlaysWhole) {
  UseCapture(CapturePace::kUnpaced);
  const std::string path = LayerTwoFrames(20);  // under half a second
  const Samples expected = FromFirstSound(ReferenceDecode(path), 2);
  decoders::Mp3Decoder& mp3 = Wire();
  ASSERT_TRUE(mp3.Open(path));
  ASSERT_TRUE(mp3.Play());
  ASSERT_TRUE(Ended());
  ASSERT_TRUE(PlayedOut());
  const Samples sound = Sound(2);
  EXPECT_GT(sound.size(), expected.size() * 9 / 10);
  EXPECT_GT(SnrDb(sound, expected), 80.0);

  // One frame: no frame is counted, so no length, but it plays.
  mp3.Close();
  notify.RemovePending(playback::kMessageTrackEnded);
  ASSERT_TRUE(mp3.Open(LayerTwoFrames(1)));
  EXPECT_EQ(mp3.GetDuration(), 0u);
  ASSERT_TRUE(mp3.Play());
  EXPECT_TRUE(Ended());
}

TEST_F(Mp3PlayTest, PlayNeedsAnOpenFileABackEndAndAnOutputAndNeverHangs) {
  UseCapture(CapturePace::kStepped);
  const std::string path = MediaPath("cbr128_44k_stereo.mp3");
  decoders::Mp3Decoder& mp3 = Wire();
  EXPECT_FALSE(mp3.Play()) << "nothing open";
  ASSERT_TRUE(mp3.Open(path));
  mp3.SetOutput(nullptr);
  EXPECT_FALSE(mp3.Play()) << "the thread can't open a stream";
  EXPECT_EQ(mp3.GetState(), playback::kStateStopped);
  mp3.SetOutput(output.get());
  mp3.SetBackEnd(nullptr);
  EXPECT_FALSE(mp3.Play());
  mp3.SetBackEnd(&backEnd);
  ASSERT_TRUE(mp3.Play());
  EXPECT_FALSE(mp3.Play()) << "playing already";
  EXPECT_EQ(output->StreamCount(), 1);
}

TEST_F(Mp3PlayTest, PauseStopAndCloseActOnTheStream) {
  UseCapture(CapturePace::kStepped);
  decoders::Mp3Decoder& mp3 = Wire();
  ASSERT_TRUE(mp3.Open(MediaPath("cbr128_44k_stereo.mp3")));
  ASSERT_TRUE(mp3.Play());
  mp3.TogglePause();
  EXPECT_EQ(mp3.GetState(), playback::kStatePaused);
  ASSERT_TRUE(mp3.Play()) << "from paused: resumes";
  EXPECT_EQ(mp3.GetState(), playback::kStatePlaying);

  mp3.Stop();
  EXPECT_EQ(mp3.GetState(), playback::kStateStopped);
  EXPECT_EQ(output->StreamCount(), 0) << "a stop removes the stream";
  EXPECT_EQ(mp3.GetPosition(), 0u);

  // Gapless: Close leaves the stream to the next track, which takes it over.
  output_testing::SetPlaybackOptions(false, true, false);
  ASSERT_TRUE(mp3.Play());
  ASSERT_TRUE(output_testing::WaitUntil([&] { return output->StreamCount() == 1; }));
  mp3.Close();
  EXPECT_EQ(file.IsOpen(), 0);
  EXPECT_EQ(output->StreamCount(), 1);
  EXPECT_EQ(mp3.GetDuration(), 0u) << "closed";
  ASSERT_TRUE(mp3.Open(MediaPath("vbr_44k_stereo.mp3")));
  ASSERT_TRUE(mp3.Play());
  EXPECT_EQ(output->StreamCount(), 1) << "the same stream carries on";
}

// --- Seeks ------------------------------------------------------------------------------------

// Seeks go through a stepped capture device that plays only when told, so
// the test decides what the device has heard when the seek comes. The file
// is the layer II test file twice over (four seconds, every frame 480 bytes
// at 48 kHz, none before the first): a seek to t lands on frame t × 48 ÷ 1152
// exactly, and layer II frames borrow nothing from the frames before them,
// so what follows a seek matches mpg123's decode of the same frames within
// rounding.
constexpr std::uint32_t kRate = 48000;
constexpr std::size_t kFrameSamples = 1152 * 2;  // interleaved stereo

class Mp3SeekTest : public Mp3PipelineTest {
 protected:
  // The layer II frames `times` over, then `tail`.
  std::string LayerTwoFile(int times, const Bytes& tail = {}) {
    const Bytes frames = LoadMedia("layer2_48k_stereo.mp2");
    Bytes bytes;
    for (int i = 0; i < times; ++i) bytes.insert(bytes.end(), frames.begin(), frames.end());
    bytes.insert(bytes.end(), tail.begin(), tail.end());
    return WriteMedia("seek.mp2", bytes);
  }
};

TEST_F(Mp3SeekTest, TheSoundGoesOnThreeFramesBehindTheFrameFoundAndThePositionJumpsAtOnce) {
  UseCapture(CapturePace::kStepped);
  const std::string path = LayerTwoFile(2);
  const Samples reference = ReferenceDecode(path);
  ASSERT_FALSE(reference.empty());
  decoders::Mp3Decoder& mp3 = Wire();
  EXPECT_FALSE(mp3.Seek(1000)) << "stopped";
  PlayUntilQueued(mp3, path, kRate);
  const std::uint32_t before = output->LastHandle();

  ASSERT_TRUE(mp3.Seek(-200)) << "a negative time is the start";
  EXPECT_EQ(mp3.GetPosition(), 0u);
  EXPECT_FALSE(mp3.Seek(static_cast<int>(mp3.GetDuration()))) << "the end itself is refused";
  ASSERT_TRUE(mp3.Seek(1000));
  EXPECT_EQ(mp3.GetPosition(), 1000u) << "the new stream has played nothing yet";
  EXPECT_FALSE(output->IsStreamAlive(before)) << "without crossfade the old stream goes";
  PlayOut();
  ASSERT_TRUE(Ended());

  // 1000 ms is sample 48000, in frame 41; frames 41 and 42 give no sound.
  const std::size_t firstHeard = (kRate / 1152 + 2) * kFrameSamples;
  const Samples expected = FromFirstSound(
      Samples(reference.begin() + static_cast<std::ptrdiff_t>(firstHeard), reference.end()), 2);
  const Samples sound = Sound(2);
  ASSERT_GT(sound.size(), kRate * 2);
  EXPECT_LE(sound.size(), expected.size());
  EXPECT_GT(SnrDb(sound, expected), 80.0);
}

TEST_F(Mp3SeekTest, ASeekWithoutAFrameBehindItFailsAndTheTrackRunsOnToItsEnd) {
  UseCapture(CapturePace::kStepped);
  // Two seconds of frames, then 300 KB of zeros that the length counts in.
  const std::string path = LayerTwoFile(1, Bytes(300000, 0));
  decoders::Mp3Decoder& mp3 = Wire();
  PlayUntilQueued(mp3, path, kRate);
  ASSERT_GT(mp3.GetDuration(), 10000u);
  const std::uint32_t handle = output->LastHandle();

  EXPECT_FALSE(mp3.Seek(8000));
  EXPECT_EQ(mp3.GetPosition(), 0u) << "the position doesn't move";
  EXPECT_TRUE(output->IsStreamAlive(handle)) << "the old stream plays on";
  PlayOut();
  EXPECT_TRUE(Ended()) << "the zeros behind the seek's offset end the track";
}

}  // namespace
}  // namespace decoders_test
