// The four-byte header of an MPEG audio frame (ISO/IEC 11172-3 and 13818-3,
// with the MPEG-2.5 extension), as the MP3 decoder tests and reads it.
//
//   byte 0    0xFF                      the first 8 bits of the sync word
//   byte 1    111V VLLC                 sync, version, layer, no-CRC bit
//   byte 2    BBBB RRPX                 bitrate index, rate index, padding
//   byte 3    MMxx xxEE                 channel mode, ..., emphasis
//
// What counts as a header here is narrower than the standards: free-format
// frames (bitrate index 0) and emphasis 2 (reserved) are refused on
// purpose, and the version bits aren't tested: with bit 4 of byte 1 clear
// the frame counts as MPEG-2.5 whatever bit 3 says, so the reserved version
// 01 reads as MPEG-2.5. The back-end may still refuse such a frame; the
// decoder then resynchronises.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace decoders {

struct Mp3FrameHeader {
  std::uint32_t version = 0;          // 1 MPEG-1, 2 MPEG-2, 3 MPEG-2.5
  std::uint32_t layer = 0;            // 1, 2 or 3
  std::uint32_t channels = 0;         // 2 unless the channel mode is 11, then 1
  std::uint32_t sampleRate = 0;       // Hz
  std::uint32_t bitrate = 0;          // kbit/s
  std::uint32_t frameBytes = 0;       // the frame with its header
  std::uint32_t samplesPerFrame = 0;  // per channel: 384, 576 or 1152
};

inline constexpr std::size_t kMp3HeaderBytes = 4;

// The header test: true when the four bytes at `bytes` may begin a frame.
bool IsMp3FrameHeader(const std::uint8_t* bytes);

// The header at `bytes`, or nothing when the test fails.
std::optional<Mp3FrameHeader> ParseMp3FrameHeader(const std::uint8_t* bytes);

// What a format-locked search accepts beside the header test.
struct Mp3FrameMatch {
  std::uint32_t version = 0;
  std::uint32_t layer = 0;

  bool Accepts(const std::uint8_t* bytes) const;
};

// The offset of the first header in bytes[start, length) at start, start +
// step, ... (a header needs its four bytes inside the range), or nothing.
// `match` null accepts any header.
std::optional<std::size_t> FindMp3FrameHeader(const std::uint8_t* bytes, std::size_t length,
                                              std::size_t start, std::size_t step,
                                              const Mp3FrameMatch* match);

}  // namespace decoders
