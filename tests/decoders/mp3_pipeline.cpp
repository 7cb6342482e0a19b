#include "decoders/mp3_pipeline.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "support/test_environment.h"

namespace decoders_test {

void Mp3PipelineTest::TearDown() {
  decoder.reset();
  DecoderTest::TearDown();
}

decoders::Mp3Decoder& Mp3PipelineTest::Wire() {
  decoder = std::make_unique<decoders::Mp3Decoder>();
  decoder->SetBackEnd(&backEnd);
  decoder->SetOutput(output.get());
  decoder->SetSource(&file);
  decoder->SetNotifyWindow(&notify);
  return *decoder;
}

std::string Mp3PipelineTest::WriteMedia(const std::string& name, const Bytes& bytes) {
  const std::string path = Root().File(name);
  testing_support::WriteFile(path, std::string(bytes.begin(), bytes.end()));
  return path;
}

std::size_t Mp3PipelineTest::PlayDamaged(playback::MediaDecoder& damaged, const std::string& path) {
  UseCapture(platform::CapturePace::kUnpaced);
  EXPECT_TRUE(damaged.Open(path));
  EXPECT_TRUE(damaged.Play());
  EXPECT_TRUE(Ended());
  EXPECT_TRUE(PlayedOut());
  return Sound(2).size();
}

double SnrDb(const Samples& ours, const Samples& reference) {
  const std::size_t length = std::min(ours.size(), reference.size());
  double signal = 0;
  double noise = 0;
  for (std::size_t i = 0; i < length; ++i) {
    const double difference = static_cast<double>(ours[i]) - reference[i];
    signal += static_cast<double>(reference[i]) * reference[i];
    noise += difference * difference;
  }
  if (noise == 0) return 200;
  return signal == 0 ? 0 : 10.0 * std::log10(signal / noise);
}

void ExpectSoundMatches(const Samples& sound, const Samples& expected, double minimumSnr, const char* name) {
  ASSERT_LE(sound.size(), expected.size());
  const double snr = SnrDb(sound, expected);
  std::printf("%s: %zu of %zu samples, SNR %.1f dB\n", name, sound.size(), expected.size(), snr);
  EXPECT_GT(snr, minimumSnr);
  int loudestMissing = 0;
  for (std::size_t i = sound.size() + 1; i < expected.size(); ++i) {
    loudestMissing = std::max(loudestMissing, std::abs(static_cast<int>(expected[i])));
  }
  EXPECT_LT(loudestMissing, 500);
}

Samples FromFirstSound(const Samples& reference, int channels) {
  const auto first = std::find_if(reference.begin(), reference.end(), [](std::int16_t s) { return s != 0; });
  const auto start = static_cast<std::size_t>(first - reference.begin()) / channels * channels;
  return Samples(reference.begin() + static_cast<std::ptrdiff_t>(start), reference.end());
}

}  // namespace decoders_test
