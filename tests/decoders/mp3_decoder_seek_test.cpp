// Seeks in a playing MP3 file, through the output engine into a stepped
// capture device that plays only when told, so the test decides what the
// device has heard when the seek comes.
//
// The file is the layer II test file twice over (four seconds, every frame
// 480 bytes at 48 kHz, none before the first): a seek to t lands on frame
// t × 48 ÷ 1152 exactly, and layer II frames borrow nothing from the frames
// before them, so what follows a seek matches mpg123's decode of the same
// frames within rounding.
#include <gtest/gtest.h>

#include "decoders/mp3_pipeline.h"

namespace decoders_test {
namespace {

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
  // Plays until the thread waits for room: the queue holds more than a
  // second and a half.
  void PlayUntilQueued(decoders::Mp3Decoder& mp3, const std::string& path) {
    ASSERT_TRUE(mp3.Open(path));
    ASSERT_TRUE(mp3.Play());
    ASSERT_TRUE(output_testing::WaitUntil(
        [&] { return output->QueuedSamples(output->LastHandle()) >= kRate * 2 * 3 / 2; }));
  }
};

TEST_F(Mp3SeekTest, TheSoundGoesOnThreeFramesBehindTheFrameFoundAndThePositionJumpsAtOnce) {
  UseCapture(platform::CapturePace::kStepped);
  const std::string path = LayerTwoFile(2);
  const Samples reference = ReferenceDecode(path);
  ASSERT_FALSE(reference.empty());
  decoders::Mp3Decoder& mp3 = Wire();
  EXPECT_FALSE(mp3.Seek(1000)) << "stopped";
  PlayUntilQueued(mp3, path);
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
  UseCapture(platform::CapturePace::kStepped);
  // Two seconds of frames, then 300 KB of zeros that the length counts in.
  const std::string path = LayerTwoFile(1, Bytes(300000, 0));
  decoders::Mp3Decoder& mp3 = Wire();
  PlayUntilQueued(mp3, path);
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
