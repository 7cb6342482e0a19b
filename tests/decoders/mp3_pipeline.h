// The MP3 decoder wired as the application wires it, into the output engine
// and a capture device, and what the tests compare its sound with.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "decoders/libmad_back_end.h"
#include "decoders/mp3_decoder.h"
#include "decoders/mpeg_test_files.h"
#include "playback/output_test_support.h"

namespace decoders_test {

using Samples = std::vector<std::int16_t>;

using output_testing::TrimmedSound;

class Mp3PipelineTest : public output_testing::DecoderTest {
 protected:
  void TearDown() override;

  // A decoder with the back-end, the output, the shared file and the notify
  // target; replaces the one before.
  decoders::Mp3Decoder& Wire();
  // A file in the test's folder.
  std::string WriteMedia(const std::string& name, const Bytes& bytes);
  // Plays a damaged file to its end on an unpaced device: how many samples
  // of its sound played.
  std::size_t PlayDamaged(playback::MediaDecoder& damaged, const std::string& path);

  decoders::LibmadBackEnd backEnd;
  std::unique_ptr<decoders::Mp3Decoder> decoder;
};

// The signal-to-noise ratio in dB of `ours` against `reference`, sample by
// sample over the length of the shorter; 200 when they are equal.
double SnrDb(const Samples& ours, const Samples& reference);

// `reference` (interleaved, `channels`) from the first frame that isn't silent.
Samples FromFirstSound(const Samples& reference, int channels);

// That `sound` is `expected` but for the rounding of two decoders (an SNR
// above `minimumSnr`) and the quiet tail (below 500) that the end mark trims
// with the last loud sample.
void ExpectSoundMatches(const Samples& sound, const Samples& expected, double minimumSnr, const char* name);

}  // namespace decoders_test
