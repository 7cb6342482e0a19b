// The MP3 decoder's sound: the test files through the decoder, the output
// engine and an unpaced capture device, against mpg123's decode.
//
// With all three options off the capture holds the stream's samples
// unchanged but for the threshold that the end of the prefill arms (none of
// these files is quiet there) and the end mark, which trims the quiet tail
// and the last loud sample before it. Both decoders decode every frame from the same start, so after
// aligning the first sound of each the two line up; they differ by the
// rounding of libmad's fixed point against mpg123's floating point.
// Tolerance: SNR above 80 dB over all that played, and nothing but the
// quiet tail (below 500) and one sample missing.
#include <gtest/gtest.h>

#include "decoders/mp3_pipeline.h"

namespace decoders_test {
namespace {

struct SoundCase {
  const char* file;
  int channels;
  std::uint32_t sampleRate;
  std::uint32_t bitrate;  // kbit/s: the average of the counted frames
  bool constantBitrate;
};

void PrintTo(const SoundCase& soundCase, std::ostream* out) {
  *out << soundCase.file;
}

class Mp3SoundTest : public Mp3PipelineTest, public ::testing::WithParamInterface<SoundCase> {};

TEST_P(Mp3SoundTest, TheCaptureDevicePlaysWhatMpg123Decodes) {
  const SoundCase& soundCase = GetParam();
  UseCapture(platform::CapturePace::kUnpaced);
  const std::string path = MediaPath(soundCase.file);
  const Samples reference = ReferenceDecode(path);
  ASSERT_FALSE(reference.empty()) << "mpg123 failed";

  decoders::Mp3Decoder& mp3 = Wire();
  ASSERT_TRUE(mp3.Open(path));
  playback::FormatSummary summary;
  mp3.GetFormatSummary(summary);
  EXPECT_EQ(summary.sampleRate, soundCase.sampleRate);
  EXPECT_EQ(summary.stereo, soundCase.channels == 2 ? 1u : 0u);
  if (soundCase.constantBitrate) {
    EXPECT_EQ(summary.bitRate, soundCase.bitrate);
  }

  // The length from the frames' statistics: the first frame (LAME's Info
  // frame) isn't counted, a trailing ID3v1 tag is; within two frames of the
  // real length for a constant bitrate, 3% for a varying one.
  const double realMs =
      1000.0 * static_cast<double>(reference.size()) / soundCase.channels / soundCase.sampleRate;
  const double frameMs = 1000.0 * (soundCase.sampleRate < 32000 ? 576 : 1152) / soundCase.sampleRate;
  const double margin = soundCase.constantBitrate ? 2 * frameMs : 0.03 * realMs;
  std::printf("%s: length %u ms, decoded %.1f ms\n", soundCase.file, mp3.GetDuration(), realMs);
  EXPECT_NEAR(mp3.GetDuration(), realMs, margin);

  ASSERT_TRUE(mp3.Play());
  ASSERT_TRUE(Ended());
  ASSERT_TRUE(PlayedOut());
  // The end mark trims the quiet tail with the threshold the prefill armed,
  // and the last loud sample with it; nothing louder is missing.
  ExpectSoundMatches(Sound(soundCase.channels), FromFirstSound(reference, soundCase.channels), 80.0,
                     soundCase.file);
  mp3.Close();
  EXPECT_EQ(file.IsOpen(), 0);
}

INSTANTIATE_TEST_SUITE_P(Files, Mp3SoundTest,
                         ::testing::Values(SoundCase{"cbr128_44k_stereo.mp3", 2, 44100, 128, true},
                                           SoundCase{"vbr_44k_stereo.mp3", 2, 44100, 0, false},
                                           SoundCase{"mpeg2_22k_mono.mp3", 1, 22050, 32, true},
                                           SoundCase{"mpeg25_8k_mono.mp3", 1, 8000, 16, true},
                                           SoundCase{"layer2_48k_stereo.mp2", 2, 48000, 160, true},
                                           SoundCase{"riff_wave_22k_mono.mp3", 1, 22050, 32, true}));

}  // namespace
}  // namespace decoders_test
