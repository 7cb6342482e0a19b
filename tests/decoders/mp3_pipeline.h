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
#include "platform/message_queue.h"
#include "playback/locked_file.h"
#include "playback/output_test_support.h"

namespace decoders_test {

using Samples = std::vector<std::int16_t>;

class Mp3PipelineTest : public output_testing::OutputTest {
 protected:
  void SetUp() override;
  void TearDown() override;

  static void SetOptions(bool crossfade, bool gapless, bool trimSilence);
  // A decoder with the back-end, the output, the shared file and the notify
  // target; replaces the one before.
  decoders::Mp3Decoder& Wire();
  bool Ended(int limitMs = 10000) { return notify.WaitFor(playback::kMessageTrackEnded, limitMs); }
  // Plays a stepped device until no stream is left and nothing is queued.
  void PlayOut();
  // What the capture device played, without the silence around it; the
  // left channel only for a mono stream (which plays on both alike).
  Samples Sound(int channels);
  // A file in the test's folder.
  std::string WriteMedia(const std::string& name, const Bytes& bytes);

  decoders::LibmadBackEnd backEnd;
  playback::LockedFile file;
  platform::MessageQueue notify;
  std::unique_ptr<decoders::Mp3Decoder> decoder;
};

// What a stereo capture holds, without the silence around it; the left
// channel only for a mono stream.
Samples TrimmedSound(const Samples& all, int channels);

// The signal-to-noise ratio in dB of `ours` against `reference`, sample by
// sample over the length of the shorter; 200 when they are equal.
double SnrDb(const Samples& ours, const Samples& reference);

// `reference` (interleaved, `channels`) from the first frame that isn't silent.
Samples FromFirstSound(const Samples& reference, int channels);

}  // namespace decoders_test
