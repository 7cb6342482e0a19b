// The Ogg decoder's sound: the test files through the decoder, the output
// engine and an unpaced capture device, against oggdec's decode.
//
// Both decoders give every sample from the first, so after aligning the
// first sound of each the two line up. They differ by Tremor's integer
// arithmetic against libvorbis's floating point: the tolerance is an SNR
// above 70 dB over all that played (measured: 80 to 82 dB), with nothing
// but the quiet tail (below 500) and one sample missing, as with MP3.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "decoders/ogg_pipeline.h"

namespace decoders_test {
namespace {

struct SoundCase {
  const char* file;
  int channels;
  std::uint32_t sampleRate;
};

void PrintTo(const SoundCase& soundCase, std::ostream* out) {
  *out << soundCase.file;
}

// The threshold that the end of the prefill arms drops a quiet stretch (all
// samples below 500) once, just after the first second: the reference
// without the stretch that the sound lacks, if there is one. Samples differ
// by a few steps of rounding, never by more than 64.
Samples WithoutQuietGap(const Samples& sound, const Samples& reference, int channels) {
  std::size_t at = 0;
  while (at < sound.size() && at < reference.size() && std::abs(sound[at] - reference[at]) <= 64) ++at;
  if (at == sound.size() || at == reference.size()) return reference;
  at = at / channels * channels;
  for (std::size_t gap = channels; gap <= 256 && at + gap < reference.size(); gap += channels) {
    bool quiet = true;
    for (std::size_t i = at; i < at + gap; ++i) quiet = quiet && std::abs(reference[i]) < 500;
    if (!quiet) break;
    Samples closed(reference.begin(), reference.begin() + static_cast<std::ptrdiff_t>(at));
    closed.insert(closed.end(), reference.begin() + static_cast<std::ptrdiff_t>(at + gap), reference.end());
    if (SnrDb(sound, closed) > 70.0) {
      std::printf("a quiet gap of %zu samples at %zu\n", gap, at);
      return closed;
    }
  }
  return reference;
}

class OggSoundTest : public OggPipelineTest, public ::testing::WithParamInterface<SoundCase> {};

TEST_P(OggSoundTest, TheCaptureDevicePlaysWhatOggdecDecodes) {
  const SoundCase& soundCase = GetParam();
  UseCapture(platform::CapturePace::kUnpaced);
  const std::string path = OggMediaPath(soundCase.file);
  const Samples reference = OggReferenceDecode(path);
  ASSERT_FALSE(reference.empty()) << "oggdec failed";

  decoders::OggDecoder& vorbis = WireOgg();
  ASSERT_TRUE(vorbis.Open(path));
  playback::FormatSummary summary;
  vorbis.GetFormatSummary(summary);
  EXPECT_EQ(summary.sampleRate, soundCase.sampleRate);
  EXPECT_EQ(summary.stereo, soundCase.channels == 2 ? 1u : 0u);
  // The length is exact: the last granule position over all links.
  const double realMs =
      1000.0 * static_cast<double>(reference.size()) / soundCase.channels / soundCase.sampleRate;
  EXPECT_NEAR(vorbis.GetDuration(), realMs, 1.0);

  ASSERT_TRUE(vorbis.Play());
  ASSERT_TRUE(Ended());
  ASSERT_TRUE(PlayedOut());
  const Samples sound = Sound(soundCase.channels);
  const Samples expected =
      WithoutQuietGap(sound, FromFirstSound(reference, soundCase.channels), soundCase.channels);
  ExpectSoundMatches(sound, expected, 70.0, soundCase.file);
  vorbis.Close();
  EXPECT_EQ(file.IsOpen(), 0);
}

INSTANTIATE_TEST_SUITE_P(Files, OggSoundTest,
                         ::testing::Values(SoundCase{"stereo_44k.ogg", 2, 44100},
                                           SoundCase{"mono_22k.ogg", 1, 22050},
                                           SoundCase{"stereo_48k.ogg", 2, 48000},
                                           SoundCase{"chained.ogg", 2, 44100},
                                           SoundCase{"short_8k_mono.ogg", 1, 8000}));

}  // namespace
}  // namespace decoders_test
