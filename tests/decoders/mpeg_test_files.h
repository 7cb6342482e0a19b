// Test media of the decoders and what the tests need to walk and compare it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "decoders/mp3_back_end.h"

namespace decoders_test {

using Bytes = std::vector<std::uint8_t>;

// A file of tests/data/decoders; fails the test if it can't be read.
std::string MediaPath(const std::string& name);
Bytes LoadMedia(const std::string& name);

// Where one MPEG audio frame lies in a file.
struct FrameSpan {
  std::size_t offset;
  std::size_t length;
};

// The length of the frame whose header is at `header`, 0 if it isn't one
// (free format included): the tests' own reading of the standards.
std::size_t MpegFrameLength(const std::uint8_t* header);

// The frames from the end of a leading ID3v2 tag up to the first bytes that
// aren't a frame header (an ID3v1 tag, the end). The tests' own parser of
// MPEG audio headers, independent of the code under test.
std::vector<FrameSpan> FindFrames(const Bytes& file);

// The layer III main_data_begin field of the frame at `offset` (MPEG-1 has 9
// bits of it, MPEG-2 and 2.5 have 8): how many bytes it borrows from frames
// before it.
unsigned MainDataBegin(const Bytes& file, std::size_t offset);

struct Decoded {
  std::vector<std::int16_t> pcm;
  int frames = 0;
  int refusals = 0;  // calls that answered -1
};

// Decodes the frames from `start` to `end` as the player's decoder will: the
// input is a window of up to 8192 bytes that begins at the next frame; the
// output block holds `outputBlock` bytes. A refused position is passed by one
// byte.
Decoded DecodeLikePump(decoders::Mp3BackEnd& backEnd, const Bytes& file, std::size_t start, std::size_t end,
                       std::uint32_t outputBlock);

// mpg123's decode of the file: every frame, the Info frame included, with no
// gapless trimming; 16-bit, interleaved as in the file. Empty if mpg123 fails.
std::vector<std::int16_t> ReferenceDecode(const std::string& path);

}  // namespace decoders_test
