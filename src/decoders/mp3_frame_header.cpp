#include "decoders/mp3_frame_header.h"

#include <array>
#include <cstring>

namespace decoders {
namespace {

// kbit/s by [MPEG-1 ? 0 : 1][layer - 1][index]; MPEG-2.5 uses the MPEG-2
// rows, and indices 0 and 15 give 0.
constexpr std::array<std::array<std::array<std::uint16_t, 16>, 3>, 2> kBitrates = {{
    {{{0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448, 0},
      {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384, 0},
      {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 0}}},
    {{{0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256, 0},
      {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0},
      {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0}}},
}};

// Hz by [version - 1][index]; index 3 gives 0.
constexpr std::array<std::array<std::uint32_t, 4>, 3> kSampleRates = {{
    {44100, 48000, 32000, 0},
    {22050, 24000, 16000, 0},
    {11025, 12000, 8000, 0},
}};

}  // namespace

bool IsMp3FrameHeader(const std::uint8_t* bytes) {
  return bytes[0] == 0xFF && (bytes[1] & 0xE0) == 0xE0 && (bytes[1] & 0x06) != 0 && (bytes[2] >> 4) != 15 &&
         (bytes[2] >> 4) != 0 && (bytes[2] & 0x0C) != 0x0C && (bytes[3] & 0x03) != 2;
}

std::optional<Mp3FrameHeader> ParseMp3FrameHeader(const std::uint8_t* bytes) {
  if (!IsMp3FrameHeader(bytes)) return std::nullopt;
  Mp3FrameHeader header;
  const bool bit20 = (bytes[1] & 0x10) != 0;
  const bool bit19 = (bytes[1] & 0x08) != 0;
  header.version = bit20 && bit19 ? 1 : bit20 ? 2 : 3;
  header.layer = 4 - ((bytes[1] >> 1) & 3);
  header.channels = (bytes[3] >> 6) == 3 ? 1 : 2;
  header.sampleRate = kSampleRates[header.version - 1][(bytes[2] >> 2) & 3];
  header.bitrate = kBitrates[header.version == 1 ? 0 : 1][header.layer - 1][bytes[2] >> 4];
  if (header.sampleRate == 0) return std::nullopt;
  const std::uint32_t padding = (bytes[2] >> 1) & 1;
  if (header.layer == 1) {
    header.frameBytes = (header.bitrate * 12000 / header.sampleRate + padding) * 4;
    header.samplesPerFrame = 384;
  } else if (header.layer == 2 || header.version == 1) {
    header.frameBytes = header.bitrate * 144000 / header.sampleRate + padding;
    header.samplesPerFrame = 1152;
  } else {
    header.frameBytes = header.bitrate * 72000 / header.sampleRate + padding;
    header.samplesPerFrame = 576;
  }
  return header;
}

bool Mp3FrameMatch::Accepts(const std::uint8_t* bytes) const {
  const std::optional<Mp3FrameHeader> header = ParseMp3FrameHeader(bytes);
  return header && header->version == version && header->layer == layer;
}

std::optional<std::size_t> FindMp3FrameHeader(const std::uint8_t* bytes, std::size_t length,
                                              std::size_t start, std::size_t step,
                                              const Mp3FrameMatch* match) {
  if (step == 0 || length < kMp3HeaderBytes) return std::nullopt;
  const std::size_t last = length - kMp3HeaderBytes;  // the last offset with a whole header
  for (std::size_t offset = start; offset <= last; offset += step) {
    if (step == 1) {
      // Most bytes aren't the sync's first: jump to the next 0xFF.
      const void* sync = std::memchr(bytes + offset, 0xFF, last + 1 - offset);
      if (sync == nullptr) return std::nullopt;
      offset = static_cast<std::size_t>(static_cast<const std::uint8_t*>(sync) - bytes);
    }
    if (match != nullptr ? match->Accepts(bytes + offset) : IsMp3FrameHeader(bytes + offset)) return offset;
  }
  return std::nullopt;
}

}  // namespace decoders
