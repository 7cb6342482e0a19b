// The WAV reader against sox's decode of the same files, and its handling of
// layouts and damage that no tool writes (files built byte by byte).
#include "decoders/wav_reader.h"

#include <gtest/gtest.h>

#include <memory>

#include "decoders/wav_adpcm.h"
#include "playback/locked_file.h"
#include "support/test_environment.h"
#include "wav_test_files.h"

namespace {

using namespace wav_testing;
using Samples = std::vector<std::int16_t>;

constexpr std::uint32_t kOddBlock = 777;  // splits ADPCM blocks and stereo frames

class WavReaderTest : public ::testing::Test {
 protected:
  WavReaderTest() { reader.SetSource(&file, nullptr); }

  bool OpenBytes(const std::string& bytes, const std::string& name = "built.wav") {
    const std::string path = folder.File(name);
    testing_support::WriteFile(path, bytes);
    return reader.Open(path.c_str()) != 0;
  }

  Samples ReadAll(std::uint32_t block = kOddBlock) {
    Samples all;
    Samples chunk(block);
    for (std::uint32_t got = 1; got != 0;) {
      got = 0;
      EXPECT_EQ(reader.Read(chunk.data(), block, &got), 1);
      all.insert(all.end(), chunk.begin(), chunk.begin() + got);
    }
    return all;
  }

  testing_support::TemporaryDirectory folder;
  playback::LockedFile file;
  decoders::WavReader reader;
};

// --- Sound --------------------------------------------------------------------------------

struct FileCase {
  const char* name;
  std::uint32_t channels;
};

void PrintTo(const FileCase& fileCase, std::ostream* out) {
  *out << fileCase.name;
}

class WavSoundTest : public WavReaderTest, public ::testing::WithParamInterface<FileCase> {};

TEST_P(WavSoundTest, DeliversWhatSoxDecodes) {
  const std::string path = MediaPath(GetParam().name);
  ASSERT_EQ(reader.Open(path.c_str()), 1);
  std::uint32_t rate = 0;
  std::uint32_t channels = 0;
  ASSERT_EQ(reader.GetFormat(&rate, &channels), 1);
  EXPECT_EQ(rate, 8000u);
  EXPECT_EQ(channels, GetParam().channels);
  EXPECT_EQ(reader.GetDuration(), 1500u);
  const Samples reference = SoxDecode(path);
  ASSERT_EQ(reference.size(), 12000u * GetParam().channels) << "sox failed";
  EXPECT_EQ(ReadAll(), reference);
}

INSTANTIATE_TEST_SUITE_P(Files, WavSoundTest,
                         ::testing::Values(FileCase{"pcm16_mono.wav", 1}, FileCase{"pcm16_stereo.wav", 2},
                                           FileCase{"pcm8_mono.wav", 1}, FileCase{"adpcm_mono.wav", 1}));

TEST_F(WavReaderTest, OfAStereoAdpcmBlockOnlyTheFirstHalfOfItsSamplesIsDelivered) {
  const std::string path = MediaPath("adpcm_stereo.wav");
  ASSERT_EQ(reader.Open(path.c_str()), 1);
  const Samples reference = SoxDecode(path);
  constexpr std::size_t kFramesPerBlock = 500;
  Samples expected;
  for (std::size_t block = 0; block * kFramesPerBlock * 2 < reference.size(); ++block) {
    const auto start = reference.begin() + static_cast<std::ptrdiff_t>(block * kFramesPerBlock * 2);
    expected.insert(expected.end(), start, start + kFramesPerBlock);
  }
  EXPECT_EQ(reader.GetDuration(), 1500u) << "the length still counts whole blocks";
  EXPECT_EQ(ReadAll(), expected);
}

// --- Layouts --------------------------------------------------------------------------------

TEST_F(WavReaderTest, AFormatChunkLongerThanSixteenBytesIsSkippedBySize) {
  const WavParts parts = SplitWav(testing_support::ReadFile(MediaPath("pcm16_mono.wav")));
  ASSERT_EQ(parts.format.size(), 16u);
  ASSERT_TRUE(OpenBytes(Riff({Chunk("fmt ", parts.format + Le16(3) + "abc"), Chunk("data", parts.data)})));
  EXPECT_EQ(ReadAll(), SoxDecode(MediaPath("pcm16_mono.wav")));
}

TEST_F(WavReaderTest, AListChunkBetweenFormatAndDataIsSkippedButNoChunkMayStandBeforeFormat) {
  const WavParts parts = SplitWav(testing_support::ReadFile(MediaPath("pcm8_mono.wav")));
  const std::string list = Chunk("LIST", "INFOISFT\x05\0\0\0Lavf\0");  // odd size: padded
  ASSERT_TRUE(OpenBytes(Riff({Chunk("fmt ", parts.format), list, Chunk("data", parts.data)})));
  EXPECT_EQ(ReadAll(), SoxDecode(MediaPath("pcm8_mono.wav")));
  reader.Close();
  EXPECT_FALSE(OpenBytes(Riff({list, Chunk("fmt ", parts.format), Chunk("data", parts.data)})));
}

TEST_F(WavReaderTest, TheShortLastAdpcmBlockGivesTheFramesItHolds) {
  const std::string path = MediaPath("adpcm_mono.wav");
  const WavParts parts = SplitWav(testing_support::ReadFile(path));
  constexpr std::size_t kBlockBytes = 256;
  constexpr std::size_t kShortBytes = 100;
  ASSERT_EQ(parts.data.size() % kBlockBytes, 0u);
  const std::size_t wholeBlocks = parts.data.size() / kBlockBytes - 1;
  const std::string data = parts.data.substr(0, wholeBlocks * kBlockBytes + kShortBytes);
  ASSERT_TRUE(OpenBytes(Riff({Chunk("fmt ", parts.format), Chunk("data", data)})));
  // The length counts whole minimum blocks only.
  EXPECT_EQ(reader.GetDuration(), wholeBlocks * 500 * 1000 / 8000);
  const std::size_t shortFrames = (kShortBytes - 7) * 2 + 2;
  Samples expected = SoxDecode(path);
  expected.resize(wholeBlocks * 500 + shortFrames);
  EXPECT_EQ(ReadAll(), expected);
}

TEST_F(WavReaderTest, SeekLandsOnABlockBoundaryAndBeyondTheEndOneSecondBeforeIt) {
  const std::string path = MediaPath("adpcm_mono.wav");
  const Samples reference = SoxDecode(path);
  ASSERT_EQ(reader.Open(path.c_str()), 1);
  Samples block(500);
  std::uint32_t got = 0;

  // 700 of 1500 ms is byte 2867 of 6144, inside block 11.
  EXPECT_EQ(reader.Seek(700), 700);
  reader.Read(block.data(), 500, &got);
  EXPECT_EQ(block, Samples(reference.begin() + 11 * 500, reference.begin() + 12 * 500));

  EXPECT_EQ(reader.Seek(60000), 500) << "one second before the end";
  reader.Read(block.data(), 500, &got);
  EXPECT_EQ(block, Samples(reference.begin() + 8 * 500, reference.begin() + 9 * 500));
  EXPECT_EQ(reader.Seek(-5), 0);
}

TEST_F(WavReaderTest, FloatSamplesOpenWithTheirLengthAndReadAsEmpty) {
  const std::string data(8000 * 4, '\x10');
  ASSERT_TRUE(OpenBytes(Riff({Chunk("fmt ", FormatFields(3, 1, 8000, 32000, 4, 32)), Chunk("data", data)})));
  EXPECT_EQ(reader.GetDuration(), 1000u);
  EXPECT_TRUE(ReadAll().empty());
  playback::TrackInfo info;
  ASSERT_EQ(reader.GetTrackInfo(folder.File("built.wav").c_str(), &info), 1);
  EXPECT_EQ(info.TextUtf8(playback::TrackInfo::kCodec), "Unknown");
  EXPECT_EQ(info.GetDuration(), 1000u);
}

TEST_F(WavReaderTest, APredictorBeyondTheTableDecodesWithTheFirstPair) {
  const std::vector<decoders::AdpcmCoefficient> table = {{256, 0}, {512, -256}, {0, 0},     {192, 64},
                                                         {240, 0}, {460, -208}, {392, -232}};
  std::string block = std::string("\x09") + Le16(40) + Le16(1000) + Le16(900) + "\x7A\x19\xF3\x80";
  Samples odd(10);
  const char* diagnostic = nullptr;
  ASSERT_EQ(decoders::DecodeAdpcmBlock(reinterpret_cast<const std::uint8_t*>(block.data()), block.size(), 1,
                                       10, table, odd.data(), &diagnostic),
            10u);
  EXPECT_STREQ(diagnostic, decoders::kAdpcmPredictorDiagnostic);
  block[0] = 0;
  Samples first(10);
  decoders::DecodeAdpcmBlock(reinterpret_cast<const std::uint8_t*>(block.data()), block.size(), 1, 10, table,
                             first.data(), &diagnostic);
  EXPECT_EQ(diagnostic, nullptr);
  EXPECT_EQ(odd, first);
}

// --- Track information ----------------------------------------------------------------------

TEST_F(WavReaderTest, TrackInfoOfAnotherFileLeavesTheOpenOneWhereItWas) {
  const std::string path = MediaPath("pcm16_mono.wav");
  const Samples reference = SoxDecode(path);
  ASSERT_EQ(reader.Open(path.c_str()), 1);
  Samples block(100);
  std::uint32_t got = 0;
  reader.Read(block.data(), 100, &got);

  playback::TrackInfo info;
  ASSERT_EQ(reader.GetTrackInfo(MediaPath("adpcm_stereo.wav").c_str(), &info), 1);
  EXPECT_EQ(info.TextUtf8(playback::TrackInfo::kCodec), "Microsoft ADPCM");
  EXPECT_EQ(info.GetSampleRate(), 8000u);
  EXPECT_EQ(info.GetStereo(), 1u);
  EXPECT_EQ(info.GetBitRate(), 8192u * 8);  // nAvgBytesPerSec as sox wrote it
  EXPECT_EQ(info.GetDuration(), 1500u);

  reader.Read(block.data(), 100, &got);
  EXPECT_EQ(block, Samples(reference.begin() + 100, reference.begin() + 200));
  EXPECT_EQ(reader.GetTrackInfo(folder.File("missing.wav").c_str(), &info), 0);
}

// --- Damage ---------------------------------------------------------------------------------

class WavDamageTest : public WavReaderTest {
 protected:
  // Opens the bytes and, refused or not, reads to the end; then checks that
  // the shared file was left closed or open as it should, and that the
  // reader still opens a good file afterwards.
  bool Survives(const std::string& bytes) {
    const bool opened = OpenBytes(bytes);
    if (opened) {
      ReadAll(32768);
      reader.Seek(400);
      ReadAll(32768);
      reader.Close();
    }
    EXPECT_EQ(file.IsOpen(), 0) << "the shared file must be free again";
    const std::string good = MediaPath("pcm8_mono.wav");
    EXPECT_EQ(reader.Open(good.c_str()), 1);
    reader.Close();
    return opened;
  }
  std::string AdpcmFormat(std::uint16_t blockAlign, std::uint16_t cbSize, std::uint16_t coefficients,
                          std::uint16_t samplesPerBlock = 500, std::uint16_t bits = 4,
                          std::uint16_t channels = 1) {
    std::string format = FormatFields(2, channels, 8000, 4096, blockAlign, bits) + Le16(cbSize) +
                         Le16(samplesPerBlock) + Le16(coefficients);
    for (std::uint16_t i = 0; i < coefficients; ++i) format += Le16(256) + Le16(0);
    return format;
  }
};

TEST_F(WavDamageTest, TruncatedHeadersAreRefusedAtEveryLength) {
  const std::string whole = testing_support::ReadFile(MediaPath("adpcm_mono.wav"));
  const std::size_t headerEnd = whole.find("data") + 8;
  for (std::size_t length = 0; length < headerEnd; ++length) {
    SCOPED_TRACE(length);
    EXPECT_FALSE(Survives(whole.substr(0, length)));
  }
  EXPECT_TRUE(Survives(whole.substr(0, headerEnd))) << "an empty data chunk still opens";
}

TEST_F(WavDamageTest, AbsurdSizesAreRefusedOrCutToTheFile) {
  const WavParts pcm = SplitWav(testing_support::ReadFile(MediaPath("pcm16_mono.wav")));
  const std::string data = Chunk("data", pcm.data);
  // A fmt chunk that claims far more than the file, or less than its fields.
  EXPECT_FALSE(Survives(Riff({"fmt " + Le32(0xFFFFFFF0u) + pcm.format, data})));
  EXPECT_FALSE(Survives(Riff({"fmt " + Le32(14) + pcm.format, data})));
  // A data chunk larger than the file plays what is there.
  ASSERT_TRUE(OpenBytes(Riff({Chunk("fmt ", pcm.format), "data" + Le32(0x7FFFFFF0) + pcm.data})));
  EXPECT_EQ(reader.GetDuration(), 1500u);
  EXPECT_EQ(ReadAll().size(), 12000u);
  reader.Close();
  // No sample rate: it opens, without a length.
  EXPECT_TRUE(Survives(Riff({Chunk("fmt ", FormatFields(1, 1, 0, 0, 2, 16)), data})));
  ASSERT_TRUE(OpenBytes(Riff({Chunk("fmt ", FormatFields(1, 1, 0, 0, 2, 16)), data})));
  EXPECT_EQ(reader.GetDuration(), 0u);
  EXPECT_EQ(reader.Seek(1000), 0);
}

TEST_F(WavDamageTest, AdpcmFormatsOutOfRangeAreRefused) {
  const std::string data = Chunk("data", std::string(2048, '\x37'));
  EXPECT_TRUE(Survives(Riff({Chunk("fmt ", AdpcmFormat(256, 32, 7)), data}))) << "the good one";
  EXPECT_FALSE(Survives(Riff({Chunk("fmt ", AdpcmFormat(0, 32, 7)), data}))) << "block align 0";
  EXPECT_FALSE(Survives(Riff({Chunk("fmt ", AdpcmFormat(255, 32, 7)), data}))) << "blocks too small";
  EXPECT_FALSE(Survives(Riff({Chunk("fmt ", AdpcmFormat(256, 28, 6)), data}))) << "6 coefficients";
  EXPECT_FALSE(Survives(Riff({Chunk("fmt ", AdpcmFormat(256, 1032, 257)), data}))) << "257 coefficients";
  EXPECT_FALSE(Survives(Riff({Chunk("fmt ", AdpcmFormat(256, 28, 7)), data}))) << "extension too short";
  EXPECT_FALSE(Survives(Riff({Chunk("fmt ", AdpcmFormat(256, 3, 7)), data}))) << "cbSize below 4";
  EXPECT_FALSE(Survives(Riff({Chunk("fmt ", AdpcmFormat(256, 32, 7, 500, 3)), data}))) << "3 bits";
  EXPECT_FALSE(Survives(Riff({Chunk("fmt ", AdpcmFormat(256, 32, 7, 500, 4, 0)), data}))) << "no channels";
  // Blocks far larger than their samples, and no samples per block at all:
  // each block decodes only what its bytes hold.
  EXPECT_TRUE(Survives(Riff({Chunk("fmt ", AdpcmFormat(2048, 32, 7, 10)), data})));
  EXPECT_TRUE(Survives(Riff({Chunk("fmt ", AdpcmFormat(2048, 32, 7, 0)), data})));
}

}  // namespace
