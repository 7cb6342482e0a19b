// The back-end's PCM against mpg123's decode of the same files.
//
// Both decoders decode every frame (mpg123 with --no-gapless --no-infoframe,
// so the Info frame of a LAME file is a frame of silence in both) from the
// same zero state, so the two outputs line up sample for sample without any
// search for a delay. libmad works in 28-bit fixed point and mpg123 in
// floating point; both round to the nearest 16-bit value, so they differ by
// at most one unit here and there: measured 102 to 107 dB of SNR on these
// files. Tolerance: same length, SNR of the difference against the reference
// above 95 dB, no sample off by more than one unit. (Truncating instead of
// rounding would measure about 80 dB and fail.)
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <string>

#include "decoders/libmad_back_end.h"
#include "decoders/mpeg_test_files.h"

namespace decoders_test {
namespace {

struct SoundCase {
  const char* file;
  int channels;
  int sampleRate;
};

void PrintTo(const SoundCase& soundCase, std::ostream* out) { *out << soundCase.file; }

class BackEndSoundTest : public ::testing::TestWithParam<SoundCase> {};

TEST_P(BackEndSoundTest, MatchesReferenceDecoder) {
  const SoundCase& soundCase = GetParam();
  const Bytes file = LoadMedia(soundCase.file);
  const std::vector<FrameSpan> frames = FindFrames(file);
  ASSERT_FALSE(frames.empty());
  const std::size_t audioEnd = frames.back().offset + frames.back().length;

  decoders::LibmadBackEnd backEnd;
  ASSERT_TRUE(backEnd.init(0));
  ASSERT_TRUE(backEnd.setformat(decoders::MakeMp3WaveFormat(static_cast<std::uint16_t>(soundCase.channels),
                                                             static_cast<std::uint32_t>(soundCase.sampleRate))));
  const auto block = static_cast<std::uint32_t>(soundCase.channels * 9216);
  const Decoded ours = DecodeLikePump(backEnd, file, frames.front().offset, audioEnd, block);
  const std::vector<std::int16_t> reference = ReferenceDecode(MediaPath(soundCase.file));
  ASSERT_FALSE(reference.empty()) << "mpg123 failed on " << soundCase.file;

  EXPECT_EQ(ours.refusals, 0);
  EXPECT_EQ(ours.frames, static_cast<int>(frames.size()));
  ASSERT_EQ(ours.pcm.size(), reference.size());

  double signal = 0, noise = 0;
  int worst = 0;
  for (std::size_t i = 0; i < reference.size(); ++i) {
    const double difference = static_cast<double>(ours.pcm[i]) - reference[i];
    signal += static_cast<double>(reference[i]) * reference[i];
    noise += difference * difference;
    worst = std::max(worst, std::abs(ours.pcm[i] - reference[i]));
  }
  ASSERT_GT(signal, 0.0);
  const double snr = noise == 0 ? 200.0 : 10.0 * std::log10(signal / noise);
  RecordProperty("snr_db", std::to_string(snr));
  RecordProperty("largest_difference", worst);
  std::printf("%s: %zu samples, SNR %.1f dB, largest difference %d\n", soundCase.file, reference.size(), snr,
              worst);
  EXPECT_GT(snr, 95.0);
  EXPECT_LE(worst, 1);
}

INSTANTIATE_TEST_SUITE_P(Files, BackEndSoundTest,
                         ::testing::Values(SoundCase{"cbr128_44k_stereo.mp3", 2, 44100},
                                           SoundCase{"vbr_44k_stereo.mp3", 2, 44100},
                                           SoundCase{"mpeg2_22k_mono.mp3", 1, 22050},
                                           SoundCase{"mpeg25_8k_mono.mp3", 1, 8000},
                                           SoundCase{"layer2_48k_stereo.mp2", 2, 48000}));

}  // namespace
}  // namespace decoders_test
