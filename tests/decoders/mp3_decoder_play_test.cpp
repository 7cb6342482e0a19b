// Playing MP3 files that aren't whole, short files, and the transport's
// calls: through the output engine into capture devices.
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
  UseCapture(CapturePace::kUnpaced);
  const Bytes original = LoadMedia("cbr128_44k_stereo.mp3");
  const std::vector<FrameSpan> frames = FindFrames(original);
  ASSERT_GT(frames.size(), 70u);
  const Samples whole = FromFirstSound(ReferenceDecode(MediaPath("cbr128_44k_stereo.mp3")), 2);
  const std::string path = WriteMedia("damaged.mp3", GetParam().damage(original, frames));

  decoders::Mp3Decoder& mp3 = Wire();
  ASSERT_TRUE(mp3.Open(path));
  ASSERT_TRUE(mp3.Play());
  ASSERT_TRUE(Ended());
  ASSERT_TRUE(PlayedOut());
  const std::size_t played = Sound(2).size();
  std::printf("%s: %zu of %zu samples\n", GetParam().name, played, whole.size());
  EXPECT_GE(static_cast<double>(played), GetParam().share * static_cast<double>(whole.size()));
  EXPECT_LE(played, whole.size() + 2 * 1152 * 2);
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
  SetOptions(false, true, false);
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

}  // namespace
}  // namespace decoders_test
