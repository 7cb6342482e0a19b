#include "decoders/mpeg_test_files.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "decoders/id3v2.h"
#include "support/command_decode.h"
#include "support/test_environment.h"

namespace decoders_test {
namespace {

// kbit/s by [MPEG-1 ? 0 : 1][layer - 1][index].
constexpr std::array<std::array<std::array<int, 16>, 3>, 2> kBitrates = {{
    {{{0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448, 0},
      {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384, 0},
      {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 0}}},
    {{{0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256, 0},
      {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0},
      {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0}}},
}};

}  // namespace

std::size_t MpegFrameLength(const std::uint8_t* p) {
  if (p[0] != 0xFF || (p[1] & 0xE0) != 0xE0) return 0;
  const int versionBits = (p[1] >> 3) & 3;  // 3 MPEG-1, 2 MPEG-2, 0 MPEG-2.5
  const int layer = 4 - ((p[1] >> 1) & 3);
  const int bitrateIndex = p[2] >> 4;
  const int rateIndex = (p[2] >> 2) & 3;
  if (versionBits == 1 || layer == 4 || rateIndex == 3) return 0;
  const bool mpeg1 = versionBits == 3;
  const int bitrate = kBitrates[mpeg1 ? 0 : 1][layer - 1][bitrateIndex] * 1000;
  if (bitrate == 0) return 0;
  static constexpr int kRates[3] = {44100, 48000, 32000};
  const int rate = kRates[rateIndex] >> (mpeg1 ? 0 : versionBits == 2 ? 1 : 2);
  const int padding = (p[2] >> 1) & 1;
  if (layer == 1) return static_cast<std::size_t>((12 * bitrate / rate + padding) * 4);
  const int slots = (layer == 3 && !mpeg1) ? 72 : 144;
  return static_cast<std::size_t>(slots * bitrate / rate + padding);
}

std::string MediaPath(const std::string& name) {
  return std::string(TS_TEST_DATA_DIR) + "/decoders/" + name;
}

Bytes LoadMedia(const std::string& name) {
  const std::string bytes = testing_support::ReadFile(MediaPath(name));
  EXPECT_FALSE(bytes.empty()) << "missing test file " << name;
  return Bytes(bytes.begin(), bytes.end());
}

std::vector<FrameSpan> FindFrames(const Bytes& file) {
  std::vector<FrameSpan> frames;
  std::size_t offset = decoders::Id3v2TagLength(file);
  while (offset + 4 <= file.size()) {
    const std::size_t length = MpegFrameLength(file.data() + offset);
    if (length == 0 || offset + length > file.size()) break;
    frames.push_back({offset, length});
    offset += length;
  }
  return frames;
}

unsigned MainDataBegin(const Bytes& file, std::size_t offset) {
  const std::uint8_t* p = file.data() + offset;
  const bool mpeg1 = ((p[1] >> 3) & 3) == 3;
  const std::uint8_t* side = p + ((p[1] & 1) == 0 ? 6 : 4);
  return mpeg1 ? (side[0] << 1) | (side[1] >> 7) : side[0];
}

Decoded DecodeLikePump(decoders::Mp3BackEnd& backEnd, const Bytes& file, std::size_t start, std::size_t end,
                       std::uint32_t outputBlock) {
  Decoded result;
  std::vector<std::uint8_t> block(outputBlock);
  std::vector<std::uint8_t> bytes;  // output blocks may split a sample
  std::size_t position = start;
  int idleCalls = 0;
  while (position < end && idleCalls < 4) {
    const auto window = static_cast<std::uint32_t>(std::min<std::size_t>(8192, end - position));
    std::uint32_t got = 0, used = 0;
    const int answer =
        backEnd.decompress(file.data() + position, window, block.data(), outputBlock, &got, &used, 16);
    if (answer == decoders::Mp3BackEnd::kUndecodable || answer == decoders::Mp3BackEnd::kNeedsInput) {
      ++result.refusals;
      ++position;
      continue;
    }
    if (answer != decoders::Mp3BackEnd::kDecoded) break;
    idleCalls = (got == 0 && used == 0) ? idleCalls + 1 : 0;
    if (used != 0) ++result.frames;
    bytes.insert(bytes.end(), block.begin(), block.begin() + got);
    position += used;
  }
  EXPECT_LT(idleCalls, 4) << "the back-end stopped making progress";
  // Output held back for a small block comes before anything else.
  for (;;) {
    std::uint32_t got = 0, used = 0;
    const std::uint8_t none = 0;
    if (backEnd.decompress(&none, 0, block.data(), outputBlock, &got, &used, 16) != 0 || got == 0) break;
    bytes.insert(bytes.end(), block.begin(), block.begin() + got);
  }
  EXPECT_EQ(bytes.size() % 2, 0u);
  result.pcm.resize(bytes.size() / 2);
  std::memcpy(result.pcm.data(), bytes.data(), result.pcm.size() * 2);
  return result;
}

std::vector<std::int16_t> ReferenceDecode(const std::string& path) {
  return testing_support::DecodeWith("mpg123 -q --no-gapless --no-infoframe -e s16 -s '" + path + "' 2>/dev/null");
}

}  // namespace decoders_test
