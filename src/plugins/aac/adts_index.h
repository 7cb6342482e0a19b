// The frames of an ADTS stream (AAC in "Audio Data Transport Stream"
// framing, the .aac file), found by their headers.
//
// Header, 7 bytes (9 with a CRC), ISO/IEC 13818-7 and 14496-3:
//
//   bits  field
//     12  syncword 0xFFF
//      1  ID (MPEG-2 or MPEG-4; either is read)
//      2  layer, always 0
//      1  protection_absent (0: a 16-bit CRC follows the header)
//      2  profile (0 Main, 1 LC, 2 SSR, 3 LTP)
//      4  sampling_frequency_index (0 to 12)
//      1  private bit
//      3  channel_configuration
//      4  original/copy, home, two copyright bits
//     13  aac_frame_length, header included
//     11  buffer fullness
//      2  number_of_raw_data_blocks_in_frame, less one
//
// Each raw data block holds 1024 samples per channel at the stream's own
// (core) rate. The profile, the rate and the channels of the first frame are
// the stream's; a frame that disagrees, or a header that doesn't check out,
// is damage: the scan then searches for the next header that agrees and is
// followed by another such header (or the end of the file).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "decoders/tag_source.h"

namespace plugins::aac {

inline constexpr std::size_t kAdtsHeaderBytes = 7;
inline constexpr std::uint32_t kSamplesPerBlock = 1024;

struct AdtsHeader {
  std::uint8_t profile = 0;
  std::uint8_t samplingIndex = 0;
  std::uint8_t channelConfiguration = 0;
  std::uint16_t frameLength = 0;  // bytes, header included
  std::uint8_t rawBlocks = 0;     // raw data blocks in the frame (1 to 4)
};

// Reads the 7 header bytes; false when they aren't a usable ADTS header.
bool ParseAdtsHeader(const std::uint8_t* bytes, AdtsHeader& header);

// Hz of a sampling_frequency_index; 0 for the reserved ones.
std::uint32_t AdtsSampleRate(std::uint8_t samplingIndex);

struct AdtsFrame {
  std::uint64_t offset = 0;
  std::uint64_t firstBlock = 0;  // raw data blocks before this frame
  std::uint16_t length = 0;
};

class AdtsIndex {
 public:
  // Scans `source` from `start` (behind any leading tag) to its end. False
  // when no frame stands exactly at `start`.
  bool Build(const decoders::TagSource& source, std::uint64_t start);
  void Clear();

  const std::vector<AdtsFrame>& Frames() const { return frames; }
  const AdtsHeader& First() const { return first; }
  std::uint32_t CoreSampleRate() const { return AdtsSampleRate(first.samplingIndex); }
  std::uint64_t TotalBlocks() const { return totalBlocks; }
  std::uint64_t TotalBytes() const { return totalBytes; }
  std::uint32_t DurationMs() const;
  // Milliseconds at which a raw data block begins.
  std::uint64_t BlockMs(std::uint64_t block) const;
  // Index of the frame that holds raw data block `block`; the last frame for
  // a block beyond the end.
  std::size_t FrameForBlock(std::uint64_t block) const;

 private:
  std::vector<AdtsFrame> frames;
  AdtsHeader first;
  std::uint64_t totalBlocks = 0;
  std::uint64_t totalBytes = 0;
};

}  // namespace plugins::aac
