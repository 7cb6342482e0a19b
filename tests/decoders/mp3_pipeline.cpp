#include "decoders/mp3_pipeline.h"

#include <algorithm>
#include <cmath>
#include <fstream>

#include "playback/playback_settings.h"

namespace decoders_test {

void Mp3PipelineTest::SetUp() {
  OutputTest::SetUp();
  SetOptions(false, false, false);
}

void Mp3PipelineTest::TearDown() {
  decoder.reset();
  SetOptions(true, true, true);  // the defaults
  OutputTest::TearDown();
}

void Mp3PipelineTest::SetOptions(bool crossfade, bool gapless, bool trimSilence) {
  playback::PlaybackSettings& options = playback::Playback();
  playback::PlaybackSettings::Write(options.crossfade, crossfade);
  playback::PlaybackSettings::Write(options.gapless, gapless);
  playback::PlaybackSettings::Write(options.trimSilence, trimSilence);
}

decoders::Mp3Decoder& Mp3PipelineTest::Wire() {
  decoder = std::make_unique<decoders::Mp3Decoder>();
  decoder->SetBackEnd(&backEnd);
  decoder->SetOutput(output.get());
  decoder->SetSource(&file);
  decoder->SetNotifyWindow(&notify);
  return *decoder;
}

void Mp3PipelineTest::PlayOut() {
  ASSERT_TRUE(output_testing::WaitUntil([&] {
    Tap()->Advance(1);
    return output->StreamCount() == 0 && Tap()->QueuedBuffers() == 0;
  }));
}

Samples Mp3PipelineTest::Sound(int channels) {
  return TrimmedSound(Tap()->Samples(), channels);
}

Samples TrimmedSound(const Samples& all, int channels) {
  const auto first = std::find_if(all.begin(), all.end(), [](std::int16_t s) { return s != 0; });
  const auto last = std::find_if(all.rbegin(), all.rend(), [](std::int16_t s) { return s != 0; }).base();
  if (first >= last) return {};
  Samples sound;
  // Keep whole frames: the first loud sample may be a right one.
  const std::size_t start = static_cast<std::size_t>(first - all.begin()) & ~std::size_t{1};
  for (std::size_t i = start; i < static_cast<std::size_t>(last - all.begin()); i += channels == 1 ? 2 : 1) {
    sound.push_back(all[i]);
  }
  return sound;
}

std::string Mp3PipelineTest::WriteMedia(const std::string& name, const Bytes& bytes) {
  const std::string path = Root().File(name);
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  return path;
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

Samples FromFirstSound(const Samples& reference, int channels) {
  const auto first = std::find_if(reference.begin(), reference.end(), [](std::int16_t s) { return s != 0; });
  const auto start = static_cast<std::size_t>(first - reference.begin()) / channels * channels;
  return Samples(reference.begin() + static_cast<std::ptrdiff_t>(start), reference.end());
}

}  // namespace decoders_test
