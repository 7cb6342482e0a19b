// The Ogg decoder wired as the application wires it, into the output engine
// and a capture device, and oggdec's decode to compare its sound with. The
// capture, the options and the comparisons are the MP3 pipeline's.
#pragma once

#include <memory>
#include <string>

#include "decoders/mp3_pipeline.h"
#include "decoders/ogg_decoder.h"

namespace decoders_test {

class OggPipelineTest : public Mp3PipelineTest {
 protected:
  void TearDown() override;
  // A decoder with the output, the shared file and the notify target;
  // replaces the one before.
  decoders::OggDecoder& WireOgg();

  std::unique_ptr<decoders::OggDecoder> ogg;
};

// A file of tests/data/ogg.
std::string OggMediaPath(const std::string& name);
Bytes LoadOggMedia(const std::string& name);

// oggdec's decode (libvorbis, floating point): 16-bit, interleaved as in the
// file. Empty if oggdec fails.
Samples OggReferenceDecode(const std::string& path);

// The offset (in frames of `channels`) within ±`window` frames of `guess`
// at which `sound` best matches `reference`, by SNR over `span` samples;
// and that SNR.
struct Alignment {
  std::size_t frame = 0;
  double snr = 0;
};
Alignment AlignSound(const Samples& sound, const Samples& reference, std::size_t guess, std::size_t window,
                     int channels, std::size_t span);

}  // namespace decoders_test
