// The back-end's contract over real frames: states, whole frames, held
// output, channels, reset, damaged and borrowed data.
#include <gtest/gtest.h>

#include <algorithm>

#include "decoders/libmad_back_end.h"
#include "decoders/mpeg_test_files.h"

namespace decoders_test {
namespace {

using decoders::LibmadBackEnd;
using decoders::Mp3BackEnd;

struct Call {
  int answer;
  std::uint32_t outputBytes;
  std::uint32_t consumed;
  std::vector<std::int16_t> pcm;
};

Call Decompress(Mp3BackEnd& backEnd, const std::uint8_t* input, std::size_t length,
                std::uint32_t outputSize = 2 * 9216) {
  std::vector<std::uint8_t> block(outputSize);
  Call call{};
  call.outputBytes = call.consumed = 0xDEAD;
  call.answer = backEnd.decompress(input, static_cast<std::uint32_t>(length), block.data(), outputSize,
                                   &call.outputBytes, &call.consumed, 16);
  const auto* samples = reinterpret_cast<const std::int16_t*>(block.data());
  if (call.outputBytes <= outputSize) call.pcm.assign(samples, samples + call.outputBytes / 2);
  return call;
}

// A codec opened for PCM of `channels` at `rate`.
bool Ready(LibmadBackEnd& backEnd, std::uint16_t channels = 2, std::uint32_t rate = 44100) {
  return backEnd.init(0) && backEnd.setformat(decoders::MakeMp3WaveFormat(channels, rate));
}

Call DecompressFrame(Mp3BackEnd& backEnd, const Bytes& file, const FrameSpan& frame) {
  return Decompress(backEnd, file.data() + frame.offset, std::min<std::size_t>(8192, file.size() - frame.offset));
}

class LibmadBackEndTest : public ::testing::Test {
 protected:
  void SetUp() override {
    file = LoadMedia("cbr128_44k_stereo.mp3");
    frames = FindFrames(file);
    ASSERT_GT(frames.size(), 40u);
    ASSERT_TRUE(Ready(backEnd));
  }

  // The first frame from `from` on that borrows from frames before it.
  std::size_t BorrowingFrame(std::size_t from) const {
    for (std::size_t i = from; i < frames.size(); ++i) {
      if (MainDataBegin(file, frames[i].offset) > 0) return i;
    }
    ADD_FAILURE() << "no frame uses the bit reservoir";
    return frames.size() - 1;
  }

  Bytes file;
  std::vector<FrameSpan> frames;
  LibmadBackEnd backEnd;
};

TEST_F(LibmadBackEndTest, WithoutACodecEveryCallAnswersNoCodec) {
  LibmadBackEnd fresh;
  EXPECT_EQ(DecompressFrame(fresh, file, frames[0]).answer, Mp3BackEnd::kNoCodec);
  EXPECT_TRUE(backEnd.close(1));
  EXPECT_EQ(DecompressFrame(backEnd, file, frames[0]).answer, Mp3BackEnd::kNoCodec);
  EXPECT_TRUE(backEnd.init(0));
  EXPECT_EQ(DecompressFrame(backEnd, file, frames[0]).answer, Mp3BackEnd::kDecoded);
  // A refused format closes the codec: the track ends rather than playing.
  decoders::Mp3WaveFormat pcm = decoders::MakeMp3WaveFormat(2, 44100);
  pcm.formatTag = 1;
  for (const auto& format : {decoders::MakeMp3WaveFormat(0, 44100), decoders::MakeMp3WaveFormat(2, 0), pcm}) {
    ASSERT_TRUE(backEnd.init(0));
    EXPECT_FALSE(backEnd.setformat(format));
    EXPECT_EQ(DecompressFrame(backEnd, file, frames[0]).answer, Mp3BackEnd::kNoCodec);
  }
}

TEST_F(LibmadBackEndTest, InputThatHoldsNoWholeFrameIsLeftUnconsumed) {
  // A frame cut short asks for the rest, and decodes once it has come.
  const FrameSpan& frame = frames[1];
  ASSERT_EQ(DecompressFrame(backEnd, file, frames[0]).answer, Mp3BackEnd::kDecoded);
  Call call = Decompress(backEnd, file.data() + frame.offset, frame.length - 1);
  EXPECT_EQ(call.answer, Mp3BackEnd::kNeedsInput);
  EXPECT_EQ(call.consumed, 0u);
  EXPECT_EQ(call.outputBytes, 0u);
  call = Decompress(backEnd, file.data() + frame.offset, frame.length);
  EXPECT_EQ(call.answer, Mp3BackEnd::kDecoded);
  EXPECT_EQ(call.consumed, frame.length);
  // A header with the reserved rate index 3.
  Bytes damaged(file.begin() + static_cast<std::ptrdiff_t>(frame.offset),
                file.begin() + static_cast<std::ptrdiff_t>(frame.offset + 2 * frame.length));
  damaged[2] |= 0x0C;
  EXPECT_EQ(Decompress(backEnd, damaged.data(), damaged.size()).answer, Mp3BackEnd::kUndecodable);
  const std::uint8_t garbage[600] = {1, 2, 3};
  call = Decompress(backEnd, garbage, sizeof(garbage));
  EXPECT_EQ(call.answer, Mp3BackEnd::kUndecodable);
  EXPECT_EQ(call.consumed, 0u);
  EXPECT_EQ(Decompress(backEnd, garbage, 0).answer, Mp3BackEnd::kUndecodable);
  EXPECT_EQ(Decompress(backEnd, nullptr, 100).answer, Mp3BackEnd::kUndecodable);
  EXPECT_EQ(backEnd.decompress(file.data() + frame.offset, 8192, nullptr, 0, nullptr, nullptr, 16),
            Mp3BackEnd::kDecoded);  // no place for the output's length: nothing done
  std::uint8_t block[8] = {};
  EXPECT_EQ(backEnd.decompress(file.data() + frame.offset, 8192, block, sizeof(block), &call.outputBytes,
                               &call.consumed, 8),
            Mp3BackEnd::kUndecodable);  // only 16-bit output is made
}

TEST_F(LibmadBackEndTest, FrameWithoutBytesBehindItDecodes) {
  // libmad reads ahead of a frame; the last frame of a file has nothing there.
  const Bytes lone(file.begin() + static_cast<std::ptrdiff_t>(frames[0].offset),
                   file.begin() + static_cast<std::ptrdiff_t>(frames[0].offset + frames[0].length));
  const Call call = Decompress(backEnd, lone.data(), lone.size());
  EXPECT_EQ(call.answer, Mp3BackEnd::kDecoded);
  EXPECT_EQ(call.consumed, frames[0].length);
  EXPECT_EQ(call.outputBytes, 1152u * 4);
}

TEST_F(LibmadBackEndTest, OutputThatDoesNotFitComesWithTheNextCalls) {
  const std::size_t end = frames[30].offset;
  const Decoded whole = DecodeLikePump(backEnd, file, frames[0].offset, end, 2 * 9216);
  for (const std::uint32_t block : {1000u, 4608u - 2u, 3u, 1u}) {
    LibmadBackEnd small;
    ASSERT_TRUE(Ready(small));
    EXPECT_EQ(DecodeLikePump(small, file, frames[0].offset, end, block).pcm, whole.pcm) << "block " << block;
  }
  // The call that hands out held output consumes nothing.
  LibmadBackEnd small;
  ASSERT_TRUE(small.init(0));
  ASSERT_EQ(DecompressFrame(small, file, frames[3]).answer, Mp3BackEnd::kDecoded);
  const Call first = Decompress(small, file.data() + frames[4].offset, 8192, 4000);
  EXPECT_EQ(first.consumed, frames[4].length);
  EXPECT_EQ(first.outputBytes, 4000u);
  const Call rest = Decompress(small, file.data() + frames[5].offset, 8192, 4000);
  EXPECT_EQ(rest.answer, Mp3BackEnd::kDecoded);
  EXPECT_EQ(rest.consumed, 0u);
  EXPECT_EQ(rest.outputBytes, 4608u - 4000u);
}

TEST_F(LibmadBackEndTest, OutputHasTheChannelsOfTheFormat) {
  const std::size_t end = frames[20].offset;
  const Decoded stereo = DecodeLikePump(backEnd, file, frames[0].offset, end, 2 * 9216);

  LibmadBackEnd mono;
  ASSERT_TRUE(Ready(mono, 1));
  const Decoded mixed = DecodeLikePump(mono, file, frames[0].offset, end, 9216);
  ASSERT_EQ(mixed.pcm.size() * 2, stereo.pcm.size());
  for (std::size_t i = 0; i < mixed.pcm.size(); ++i) {
    const int mean = (stereo.pcm[2 * i] + stereo.pcm[2 * i + 1]) / 2;
    ASSERT_NEAR(mixed.pcm[i], mean, 1) << "sample " << i;
  }

  LibmadBackEnd many;
  ASSERT_TRUE(Ready(many, 6));  // cut to two
  EXPECT_EQ(DecodeLikePump(many, file, frames[0].offset, end, 2 * 9216).pcm, stereo.pcm);
}

TEST(LibmadBackEndChannels, MonoFramesIntoAStereoStreamFillBothSides) {
  const Bytes file = LoadMedia("mpeg2_22k_mono.mp3");
  const std::vector<FrameSpan> frames = FindFrames(file);
  const std::size_t end = frames.back().offset + frames.back().length;
  LibmadBackEnd mono, stereo;
  ASSERT_TRUE(Ready(mono, 1, 22050) && Ready(stereo, 2, 22050));
  const Decoded one = DecodeLikePump(mono, file, frames[0].offset, end, 9216);
  const Decoded two = DecodeLikePump(stereo, file, frames[0].offset, end, 2 * 9216);
  ASSERT_EQ(two.pcm.size(), 2 * one.pcm.size());
  for (std::size_t i = 0; i < one.pcm.size(); ++i) {
    ASSERT_EQ(two.pcm[2 * i], one.pcm[i]);
    ASSERT_EQ(two.pcm[2 * i + 1], one.pcm[i]);
  }
}

TEST_F(LibmadBackEndTest, ResetForgetsTheStreamAndRecoversOnceTheReservoirHasRefilled) {
  const std::size_t target = BorrowingFrame(20);
  const std::size_t end = frames[target + 6].offset;
  const Decoded continuous = DecodeLikePump(backEnd, file, frames[0].offset, end, 2 * 9216);

  LibmadBackEnd seeking;
  ASSERT_TRUE(Ready(seeking));
  DecodeLikePump(seeking, file, frames[0].offset, frames[5].offset, 2 * 9216);
  seeking.reset();
  ASSERT_TRUE(seeking.setformat(decoders::MakeMp3WaveFormat(2, 44100)));
  // The target borrows from frames this decoder hasn't seen: a frame's
  // length of silence, consumed whole.
  const Call first = DecompressFrame(seeking, file, frames[target]);
  EXPECT_EQ(first.answer, Mp3BackEnd::kDecoded);
  EXPECT_EQ(first.consumed, frames[target].length);
  ASSERT_EQ(first.pcm.size(), 1152u * 2);
  EXPECT_TRUE(std::all_of(first.pcm.begin(), first.pcm.end(), [](std::int16_t s) { return s == 0; }));
  // A frame may borrow up to 511 bytes, more than one frame of this file
  // holds, so the next frame may be silent too; the one after it decodes
  // with all its data (fading in from the silence), and from then on the
  // sound is the continuous decode's, sample for sample.
  const Decoded after = DecodeLikePump(seeking, file, frames[target + 1].offset, end, 2 * 9216);
  const std::size_t frameSamples = 1152 * 2;
  ASSERT_EQ(after.pcm.size(), 5 * frameSamples);
  EXPECT_TRUE(std::equal(after.pcm.begin() + 2 * frameSamples, after.pcm.end(),
                         continuous.pcm.end() - 3 * static_cast<std::ptrdiff_t>(frameSamples)));
}

TEST_F(LibmadBackEndTest, RefusedInputEmptiesTheBitReservoir) {
  // After a refusal the caller goes on further along: a frame that borrows
  // must not borrow the bytes of the frames decoded before the refusal,
  // which would decode as noise. The first 30 frames fill the reservoir.
  int jumps = 0;
  for (std::size_t jump = 32; jump < 48; ++jump) {
    if (MainDataBegin(file, frames[jump].offset) == 0) continue;
    LibmadBackEnd decoder;
    ASSERT_TRUE(Ready(decoder));
    for (std::size_t i = 0; i < 30; ++i) ASSERT_EQ(DecompressFrame(decoder, file, frames[i]).answer, 0);
    const std::uint8_t garbage[16] = {0x12};
    ASSERT_EQ(Decompress(decoder, garbage, sizeof(garbage)).answer, Mp3BackEnd::kUndecodable);
    const Call call = DecompressFrame(decoder, file, frames[jump]);
    EXPECT_EQ(call.answer, Mp3BackEnd::kDecoded);
    EXPECT_EQ(call.consumed, frames[jump].length);
    // Silence after the tail of the synthesis filter, which still holds the
    // frames before the refusal: 15 blocks of 32 samples per channel at most.
    ASSERT_EQ(call.pcm.size(), 1152u * 2);
    EXPECT_TRUE(std::all_of(call.pcm.begin() + 2 * 480, call.pcm.end(), [](std::int16_t s) { return s == 0; }))
        << "frame " << jump;
    ++jumps;
  }
  EXPECT_GT(jumps, 8);
}

TEST_F(LibmadBackEndTest, DamagedFrameDataIsConsumedWhole) {
  for (std::size_t i = 0; i < 10; ++i) DecompressFrame(backEnd, file, frames[i]);
  Bytes damaged(file.begin() + static_cast<std::ptrdiff_t>(frames[10].offset), file.end());
  // Keep the header and side information, overwrite the main data.
  std::fill(damaged.begin() + 36, damaged.begin() + static_cast<std::ptrdiff_t>(frames[10].length), 0xFF);
  const Call call = Decompress(backEnd, damaged.data(), std::min<std::size_t>(8192, damaged.size()));
  EXPECT_EQ(call.answer, Mp3BackEnd::kDecoded);
  EXPECT_EQ(call.consumed, frames[10].length);
  EXPECT_EQ(call.outputBytes, 1152u * 4);
  // The frames behind it decode again.
  const Call next = Decompress(backEnd, damaged.data() + frames[10].length, 8192);
  EXPECT_EQ(next.answer, Mp3BackEnd::kDecoded);
  EXPECT_EQ(next.consumed, frames[11].length);
}

}  // namespace
}  // namespace decoders_test
