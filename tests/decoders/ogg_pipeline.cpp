#include "decoders/ogg_pipeline.h"

#include <algorithm>

#include "support/command_decode.h"
#include "support/test_environment.h"

namespace decoders_test {

void OggPipelineTest::TearDown() {
  ogg.reset();
  Mp3PipelineTest::TearDown();
}

decoders::OggDecoder& OggPipelineTest::WireOgg() {
  ogg = std::make_unique<decoders::OggDecoder>();
  ogg->SetOutput(output.get());
  ogg->SetSource(&file);
  ogg->SetNotifyWindow(&notify);
  return *ogg;
}

std::string OggMediaPath(const std::string& name) {
  return std::string(TS_TEST_DATA_DIR) + "/ogg/" + name;
}

Bytes LoadOggMedia(const std::string& name) {
  const std::string bytes = testing_support::ReadFile(OggMediaPath(name));
  EXPECT_FALSE(bytes.empty()) << name;
  return Bytes(bytes.begin(), bytes.end());
}

Samples OggReferenceDecode(const std::string& path) {
  return testing_support::DecodeWith("oggdec -Q -R -b 16 -e 0 -s 1 -o - '" + path + "' 2>/dev/null");
}

Alignment AlignSound(const Samples& sound, const Samples& reference, std::size_t guess, std::size_t window,
                     int channels, std::size_t span) {
  Alignment best;
  const Samples head(sound.begin(),
                     sound.begin() + static_cast<std::ptrdiff_t>(std::min(span, sound.size())));
  const std::size_t first = guess > window ? guess - window : 0;
  for (std::size_t frame = first; frame <= guess + window; ++frame) {
    const std::size_t at = frame * static_cast<std::size_t>(channels);
    if (at >= reference.size()) break;
    const Samples part(reference.begin() + static_cast<std::ptrdiff_t>(at), reference.end());
    const double snr = SnrDb(head, part);
    if (snr > best.snr) best = {frame, snr};
  }
  return best;
}

}  // namespace decoders_test
