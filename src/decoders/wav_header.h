// The header of a RIFF WAVE file, as the WAV reader takes it.
//
// Little endian throughout:
//
//   offset  size  field
//        0     4  "RIFF"
//        4     4  size (ignored)
//        8     4  "WAVE"
//       12     4  "fmt ": required exactly here, no chunk may stand before it
//       16     4  size of the fmt chunk, at least 16
//       20     2  wFormatTag: 1 PCM, 2 Microsoft ADPCM; other tags open and
//                 read as empty
//       22     2  nChannels
//       24     4  nSamplesPerSec
//       28     4  nAvgBytesPerSec
//       32     2  nBlockAlign
//       34     2  wBitsPerSample: 4 for Microsoft ADPCM
//
// Microsoft ADPCM goes on inside the fmt chunk with cbSize (u16, at least 4),
// wSamplesPerBlock (u16), wNumCoef (u16, 7 to 256, with cbSize at least
// (wNumCoef + 1) * 4) and wNumCoef pairs of i16 coefficients. (The format is
// Microsoft's "Multimedia Standards Update" of 1994.)
//
// Behind the fmt chunk, chunks are walked as 8-byte headers (id, size) up to
// "data"; a chunk of odd size is followed by a pad byte, as RIFF has it. The
// data runs from behind its header for the chunk's size, cut to what the
// source really holds.
//
// Rules of our own, beyond the format's: a fmt chunk shorter than 16 bytes,
// and Microsoft ADPCM with no channels or a block of one sample, are refused.
#pragma once

#include <cstdint>
#include <vector>

#include "decoders/wav_adpcm.h"
#include "playback/byte_source.h"

namespace decoders {

enum WavFormatTag : std::uint16_t {
  kWavPcm = 1,
  kWavMicrosoftAdpcm = 2,
};

struct WavHeader {
  std::uint16_t formatTag = 0;
  std::uint16_t channels = 0;
  std::uint32_t samplesPerSec = 0;
  std::uint32_t avgBytesPerSec = 0;
  std::uint16_t blockAlign = 0;
  std::uint16_t bitsPerSample = 0;
  // Microsoft ADPCM only; 0 otherwise.
  std::uint16_t samplesPerBlock = 0;
  std::uint32_t minBlockBytes = 0;
  std::uint16_t coefficientCount = 0;
  std::vector<AdpcmCoefficient> coefficients;  // empty unless asked for
  std::uint64_t dataStart = 0;
  std::uint64_t dataSize = 0;
};

// Reads the header from the start of `source` and leaves the source at the
// first data byte. With `readCoefficients` false the ADPCM coefficient
// table is skipped. False for any format error; `header` is then partly
// filled.
bool ReadWavHeader(playback::ByteSource& source, WavHeader& header, bool readCoefficients);

// The smallest Microsoft ADPCM block for these values: a header of 7 bytes
// per channel, and the nibbles of the samples after the first two of each
// channel.
std::uint32_t AdpcmMinBlockBytes(std::uint32_t channels, std::uint32_t samplesPerBlock);

// Frames of the data: for ADPCM samplesPerBlock (32768 when the header has
// 0) per whole minimum block, otherwise the data size over the frame size.
// `frameBytes` gets the size of a frame (of a minimum block for ADPCM); 0
// means the count is unknown.
std::uint64_t WavFrameCount(const WavHeader& header, std::uint32_t& frameBytes);

// frames * 1000 / rate, 0 for a rate of 0, at most the largest u32.
std::uint32_t WavDurationMs(std::uint64_t frames, std::uint32_t samplesPerSec);

// samplesPerBlock of the reader: the header's, or 32768 when that is 0 (PCM).
std::uint32_t ReaderSamplesPerBlock(const WavHeader& header);

}  // namespace decoders
