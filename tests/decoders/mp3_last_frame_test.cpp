// Every frame of an MPEG audio file reaches the device, the last one too.
//
// libmad decodes a frame only when the bytes behind it are there; at the end
// of a file the back-end supplies them. Files made here end on loud frames
// (a tone over a DC offset, so no sample of the music is below 500) in each
// MPEG version and in layers II and III, and play through the decoder, the
// output engine and an unpaced capture device with every sound option off.
// What played must equal libmad's own decode of the file with the guard
// bytes behind it, sample for sample, but for what the output queue keeps
// dropping on purpose: the quiet tail that the end mark trims and the last
// loud sample with it. Layer I has no encoder in Debian; the back-end's
// layer I path is covered by its own tests.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "decoders/bare_libmad.h"
#include "decoders/mp3_pipeline.h"
#include "support/test_environment.h"

namespace decoders_test {
namespace {

struct MadeFile {
  const char* name;
  int channels;
  int rate;
  const char* encoder;  // reads tone.wav, writes the file named
};

void PrintTo(const MadeFile& made, std::ostream* out) {
  *out << made.name;
}

class Mp3LastFrameTest : public Mp3PipelineTest, public ::testing::WithParamInterface<MadeFile> {
 protected:
  // Two seconds of loud sound, so that the prefill ends inside the music.
  std::string Make(const MadeFile& made) {
    const std::string folder = Root().Path();
    const std::string command = "cd '" + folder + "' && sox -n -r " + std::to_string(made.rate) + " -c " +
                                std::to_string(made.channels) +
                                " -b 16 tone.wav synth 2 sine 440 vol 0.3 dcshift 0.5 && " + made.encoder +
                                " >/dev/null 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    return Root().File(made.name);
  }
};

TEST_P(Mp3LastFrameTest, EveryFrameOfTheFilePlays) {
  const MadeFile& recipe = GetParam();
  const std::string path = Make(recipe);
  const std::string made = testing_support::ReadFile(path);
  ASSERT_FALSE(made.empty());
  const Bytes bytes(made.begin(), made.end());
  const Samples expected = AsQueued(BareLibmadDecode(bytes), recipe.channels);
  ASSERT_GT(expected.size(), static_cast<std::size_t>(recipe.rate * recipe.channels));

  UseCapture(platform::CapturePace::kUnpaced);
  decoders::Mp3Decoder& mp3 = Wire();
  ASSERT_TRUE(mp3.Open(path));
  ASSERT_TRUE(mp3.Play());
  ASSERT_TRUE(Ended());
  ASSERT_TRUE(PlayedOut());
  const Samples sound = Sound(recipe.channels);
  ASSERT_EQ(sound.size(), expected.size()) << "samples missing at the end";
  const auto differ = std::mismatch(sound.begin(), sound.end(), expected.begin());
  EXPECT_TRUE(differ.first == sound.end()) << "first difference at sample " << (differ.first - sound.begin());
  mp3.Close();
}

INSTANTIATE_TEST_SUITE_P(
    Encoders, Mp3LastFrameTest,
    ::testing::Values(MadeFile{"cbr_44k_stereo.mp3", 2, 44100, "lame -b 128 tone.wav cbr_44k_stereo.mp3"},
                      MadeFile{"vbr_44k_stereo.mp3", 2, 44100, "lame -V 2 tone.wav vbr_44k_stereo.mp3"},
                      MadeFile{"cbr_44k_mono.mp3", 1, 44100, "lame -b 64 tone.wav cbr_44k_mono.mp3"},
                      MadeFile{"mpeg2_22k_mono.mp3", 1, 22050, "lame -b 32 tone.wav mpeg2_22k_mono.mp3"},
                      MadeFile{"mpeg2_24k_stereo.mp3", 2, 24000, "lame -b 64 tone.wav mpeg2_24k_stereo.mp3"},
                      MadeFile{"mpeg25_8k_mono.mp3", 1, 8000, "lame -b 16 tone.wav mpeg25_8k_mono.mp3"},
                      MadeFile{"layer2_44k_stereo.mp2", 2, 44100,
                               "ffmpeg -nostdin -i tone.wav -c:a mp2 -b:a 192k layer2_44k_stereo.mp2"},
                      MadeFile{"layer2_48k_mono.mp2", 1, 48000,
                               "ffmpeg -nostdin -i tone.wav -c:a mp2 -b:a 96k layer2_48k_mono.mp2"}));

}  // namespace
}  // namespace decoders_test
