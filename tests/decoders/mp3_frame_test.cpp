// Frame headers, and what the MP3 decoder's Open makes of whole files:
// which it refuses, and the length and bitrate it reads from their frames.
#include <gtest/gtest.h>

#include <algorithm>

#include "decoders/id3_builders.h"
#include "decoders/mp3_decoder.h"
#include "decoders/mp3_frame_header.h"
#include "decoders/mpeg_test_files.h"
#include "playback/locked_file.h"
#include "support/test_environment.h"

namespace decoders_test {
namespace {

using decoders::Mp3FrameHeader;
using decoders::ParseMp3FrameHeader;

// --- Headers ------------------------------------------------------------------------------------

struct FileFormat {
  const char* file;
  std::uint32_t version, layer, channels, sampleRate, samplesPerFrame;
};

TEST(Mp3FrameHeaderTest, EveryFrameOfTheTestFilesReadsAsTheTestsOwnParserReadsIt) {
  for (const FileFormat& expected : {FileFormat{"cbr128_44k_stereo.mp3", 1, 3, 2, 44100, 1152},
                                     FileFormat{"vbr_44k_stereo.mp3", 1, 3, 2, 44100, 1152},
                                     FileFormat{"mpeg2_22k_mono.mp3", 2, 3, 1, 22050, 576},
                                     FileFormat{"mpeg25_8k_mono.mp3", 3, 3, 1, 8000, 576},
                                     FileFormat{"layer2_48k_stereo.mp2", 1, 2, 2, 48000, 1152}}) {
    SCOPED_TRACE(expected.file);
    const Bytes file = LoadMedia(expected.file);
    const std::vector<FrameSpan> frames = FindFrames(file);
    ASSERT_GT(frames.size(), 20u);
    for (const FrameSpan& frame : frames) {
      const std::optional<Mp3FrameHeader> header = ParseMp3FrameHeader(file.data() + frame.offset);
      ASSERT_TRUE(header.has_value()) << "at " << frame.offset;
      ASSERT_EQ(header->frameBytes, frame.length) << "at " << frame.offset;
      ASSERT_EQ(header->version, expected.version);
      ASSERT_EQ(header->layer, expected.layer);
      ASSERT_EQ(header->channels, expected.channels);
      ASSERT_EQ(header->sampleRate, expected.sampleRate);
      ASSERT_EQ(header->samplesPerFrame, expected.samplesPerFrame);
    }
  }
}

TEST(Mp3FrameHeaderTest, FreeFormatEmphasisTwoAndReservedFieldsAreNoHeader) {
  // MPEG-1 layer III, 128 kbit/s, 44100 Hz, joint stereo.
  const auto parse = [](std::uint8_t b1, std::uint8_t b2, std::uint8_t b3) {
    const std::uint8_t bytes[4] = {0xFF, b1, b2, b3};
    return ParseMp3FrameHeader(bytes);
  };
  ASSERT_TRUE(parse(0xFB, 0x90, 0x64).has_value());
  EXPECT_FALSE(parse(0xFB, 0x00, 0x64).has_value()) << "free format";
  EXPECT_FALSE(parse(0xFB, 0xF0, 0x64).has_value()) << "bitrate index 15";
  EXPECT_FALSE(parse(0xFB, 0x9C, 0x64).has_value()) << "rate index 3";
  EXPECT_FALSE(parse(0xF9, 0x90, 0x64).has_value()) << "layer bits 00";
  EXPECT_FALSE(parse(0xFB, 0x90, 0x66).has_value()) << "emphasis 2";
  EXPECT_FALSE(parse(0xDB, 0x90, 0x64).has_value()) << "sync";
  EXPECT_TRUE(parse(0xFB, 0x90, 0x67).has_value()) << "emphasis 3";
  // The reserved version 01 reads as MPEG-2.5.
  const std::optional<Mp3FrameHeader> reserved = parse(0xEB, 0x90, 0xC4);
  ASSERT_TRUE(reserved.has_value());
  EXPECT_EQ(reserved->version, 3u);
  EXPECT_EQ(reserved->sampleRate, 11025u);
  EXPECT_EQ(reserved->channels, 1u);
  EXPECT_EQ(reserved->frameBytes, 80u * 72000 / 11025);
}

// --- Open ----------------------------------------------------------------------------------------

// One frame: a header of MPEG-1 layer III at 44100 Hz with this bitrate
// index (and emphasis), the rest zeros.
Bytes Frame(std::uint8_t bitrateIndex, std::uint8_t emphasis = 0) {
  const std::uint8_t header[4] = {0xFF, 0xFB, static_cast<std::uint8_t>(bitrateIndex << 4),
                                  static_cast<std::uint8_t>(0x40 | emphasis)};
  Bytes frame(header, header + 4);
  frame.resize(std::max<std::size_t>(MpegFrameLength(header), 4), 0);
  return frame;
}

Bytes Frames(std::initializer_list<std::pair<int, std::uint8_t>> runs) {
  Bytes bytes;
  for (const auto& [count, bitrateIndex] : runs) {
    const Bytes frame = Frame(bitrateIndex);
    for (int i = 0; i < count; ++i) bytes.insert(bytes.end(), frame.begin(), frame.end());
  }
  return bytes;
}

class Mp3OpenTest : public testing_support::IsolatedEnvironmentTest {
 protected:
  // Opens the bytes as a file; the summary and duration then describe it.
  bool OpenBytes(const Bytes& bytes) {
    const std::string path = Root().File("file.mp3");
    testing_support::WriteFile(path, std::string(bytes.begin(), bytes.end()));
    decoder.Close();
    decoder.SetSource(&file);
    const bool opened = decoder.Open(path);
    EXPECT_EQ(file.IsOpen(), opened ? 1 : 0) << "a refused file is closed again";
    decoder.GetFormatSummary(summary);
    return opened;
  }
  static Bytes Join(Bytes first, const Bytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
  }

  playback::LockedFile file;
  decoders::Mp3Decoder decoder;
  playback::FormatSummary summary;
};

TEST_F(Mp3OpenTest, WhatHoldsNoFrameIsRefused) {
  const Bytes audio = LoadMedia("layer2_48k_stereo.mp2");
  const std::string tag = Id3v2Builder(3).Frame("TIT2", Latin1Text("Only a tag")).Build();
  EXPECT_FALSE(OpenBytes({})) << "empty";
  EXPECT_FALSE(OpenBytes(Bytes(65536, 0))) << "zeros";
  EXPECT_FALSE(OpenBytes(Bytes(tag.begin(), tag.end()))) << "only a tag";
  const std::string past = Id3v2Builder(3).Build(1 << 20);
  EXPECT_FALSE(OpenBytes(Join(Bytes(past.begin(), past.end()), audio))) << "a tag longer than the file";
  Bytes emphasis;
  for (int i = 0; i < 40; ++i) emphasis = Join(emphasis, Frame(9, 2));
  EXPECT_FALSE(OpenBytes(emphasis)) << "emphasis 2";
  Bytes freeFormat = Frames({{40, 9}});
  for (std::size_t at = 0; at < freeFormat.size(); at += 417) freeFormat[at + 2] = 0x00;
  EXPECT_FALSE(OpenBytes(freeFormat)) << "free format";
  EXPECT_TRUE(OpenBytes(audio));
}

TEST_F(Mp3OpenTest, ALeadingTagLongerThanASearchBlockIsPassedAndTheFramesFoundBehindIt) {
  const Bytes audio = LoadMedia("layer2_48k_stereo.mp2");
  ASSERT_TRUE(OpenBytes(audio));
  const std::uint32_t length = decoder.GetDuration();
  const std::string tag = Id3v2Builder(3).Frame("TXXX", std::string(9000, 'x')).Build();
  ASSERT_GT(tag.size(), 4096u);
  ASSERT_TRUE(OpenBytes(Join(Bytes(tag.begin(), tag.end()), audio)));
  EXPECT_EQ(decoder.GetDuration(), length);
  EXPECT_EQ(summary.bitRate, 160u);
}

TEST_F(Mp3OpenTest, TheBitrateIsTheAverageOf128FramesOfAConstantRateAnd512OfAVaryingOne) {
  // Index 9 is 128 kbit/s, 10 is 160, 14 is 320. The first frame of a file
  // is never counted (it is often a VBR header).
  ASSERT_TRUE(OpenBytes(Frames({{1, 14}, {200, 9}, {400, 14}})));
  EXPECT_EQ(summary.bitRate, 128u) << "128 frames alike end the count";

  Bytes varying = Frames({{1, 14}});
  for (int i = 0; i < 150; ++i) varying = Join(varying, Frames({{1, 9}, {1, 10}}));
  varying = Join(varying, Frames({{300, 14}}));
  ASSERT_TRUE(OpenBytes(varying));
  // 150 of 128, 150 of 160 and 212 of 320 kbit/s.
  EXPECT_EQ(summary.bitRate, (150u * 128 + 150 * 160 + 212 * 320) / 512);
  // The length is what lies behind the first counted frame, over the
  // average frame length.
  const std::uint64_t averageLength = (150u * 417 + 150 * 522 + 212 * 1044) / 512;
  const std::uint64_t frames = (varying.size() - 1044) / averageLength;
  EXPECT_EQ(decoder.GetDuration(), static_cast<std::uint32_t>(frames * 1152 * 1000.0 / 44100));
}

}  // namespace
}  // namespace decoders_test
