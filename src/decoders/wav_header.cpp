#include "decoders/wav_header.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace decoders {
namespace {

using playback::ByteSource;

constexpr std::uint32_t kFormatFieldBytes = 16;
constexpr std::uint16_t kMinAdpcmExtension = 4;
constexpr std::uint16_t kMinCoefficients = 7;
constexpr std::uint16_t kMaxCoefficients = 256;
constexpr std::uint32_t kPcmSamplesPerBlock = 32768;

bool ReadId(ByteSource& source, const char* expected) {
  char id[4] = {};
  std::uint32_t got = 0;
  return source.Read(id, sizeof id, &got) != 0 && got == sizeof id &&
         std::memcmp(id, expected, sizeof id) == 0;
}

struct ChunkHeader {
  char id[4] = {};
  std::uint32_t size = 0;
};

bool ReadChunkHeader(ByteSource& source, ChunkHeader& chunk) {
  std::uint32_t got = 0;
  if (source.Read(chunk.id, sizeof chunk.id, &got) == 0 || got != sizeof chunk.id) return false;
  chunk.size = source.ReadU32();
  return source.GetError() == 0;
}

// A chunk of odd size is followed by a pad byte.
std::int64_t PaddedSize(std::uint32_t size) {
  return static_cast<std::int64_t>(size) + (size & 1);
}

bool SeekTo(ByteSource& source, std::int64_t position) {
  return position >= 0 && source.Seek(position, ByteSource::kFromBegin) == position;
}

void ReadFormatFields(ByteSource& source, WavHeader& header) {
  header.formatTag = source.ReadU16();
  header.channels = source.ReadU16();
  header.samplesPerSec = source.ReadU32();
  header.avgBytesPerSec = source.ReadU32();
  header.blockAlign = source.ReadU16();
  header.bitsPerSample = source.ReadU16();
}

// The Microsoft ADPCM fields behind the common ones.
bool ReadAdpcmExtension(ByteSource& source, WavHeader& header, bool readCoefficients) {
  const std::uint16_t extensionBytes = source.ReadU16();
  header.samplesPerBlock = source.ReadU16();
  header.coefficientCount = source.ReadU16();
  if (source.GetError() != 0 || extensionBytes < kMinAdpcmExtension || header.bitsPerSample != 4)
    return false;
  if (header.channels == 0 || header.samplesPerBlock == 1) return false;
  header.minBlockBytes = AdpcmMinBlockBytes(header.channels, header.samplesPerBlock);
  if (header.minBlockBytes > header.blockAlign) return false;
  if (header.coefficientCount < kMinCoefficients || header.coefficientCount > kMaxCoefficients) return false;
  if (extensionBytes < (header.coefficientCount + 1u) * 4u) return false;
  if (!readCoefficients) return true;
  header.coefficients.resize(header.coefficientCount);
  for (AdpcmCoefficient& pair : header.coefficients) {
    pair.first = static_cast<std::int16_t>(source.ReadU16());
    pair.second = static_cast<std::int16_t>(source.ReadU16());
  }
  return source.GetError() == 0;
}

}  // namespace

std::uint32_t AdpcmMinBlockBytes(std::uint32_t channels, std::uint32_t samplesPerBlock) {
  std::uint64_t bytes = 7ull * channels;
  if (samplesPerBlock > 2) bytes += ((static_cast<std::uint64_t>(samplesPerBlock) - 2) * channels + 1) >> 1;
  return static_cast<std::uint32_t>(
      std::min<std::uint64_t>(bytes, std::numeric_limits<std::uint32_t>::max()));
}

bool ReadWavHeader(ByteSource& source, WavHeader& header, bool readCoefficients) {
  header = WavHeader{};
  if (!SeekTo(source, 0) || !ReadId(source, "RIFF")) return false;
  source.ReadU32();  // the RIFF size says nothing the chunks don't
  if (!ReadId(source, "WAVE")) return false;

  ChunkHeader format;
  if (!ReadChunkHeader(source, format) || std::memcmp(format.id, "fmt ", 4) != 0) return false;
  if (format.size < kFormatFieldBytes) return false;
  ReadFormatFields(source, header);
  if (source.GetError() != 0) return false;
  const std::int64_t formatFieldsEnd = source.Seek(0, ByteSource::kFromCurrent);
  if (formatFieldsEnd == ByteSource::kSeekFailed) return false;
  if (header.formatTag == kWavMicrosoftAdpcm && !ReadAdpcmExtension(source, header, readCoefficients))
    return false;

  if (!SeekTo(source, formatFieldsEnd - kFormatFieldBytes + PaddedSize(format.size))) return false;
  ChunkHeader chunk;
  for (;;) {
    if (!ReadChunkHeader(source, chunk)) return false;
    if (std::memcmp(chunk.id, "data", 4) == 0) break;
    const std::int64_t here = source.Seek(0, ByteSource::kFromCurrent);
    if (here == ByteSource::kSeekFailed || !SeekTo(source, here + PaddedSize(chunk.size))) return false;
  }
  const std::int64_t dataStart = source.Seek(0, ByteSource::kFromCurrent);
  if (dataStart == ByteSource::kSeekFailed) return false;
  header.dataStart = static_cast<std::uint64_t>(dataStart);
  // A data chunk that claims more than the file holds ends where the file does.
  const std::int64_t size = source.GetSize();
  const std::uint64_t held = size > dataStart ? static_cast<std::uint64_t>(size - dataStart) : 0;
  header.dataSize = std::min<std::uint64_t>(chunk.size, held);
  return true;
}

std::uint64_t WavFrameCount(const WavHeader& header, std::uint32_t& frameBytes) {
  if (header.formatTag == kWavMicrosoftAdpcm) {
    frameBytes = header.minBlockBytes;
    if (frameBytes == 0) return 0;
    return static_cast<std::uint64_t>(ReaderSamplesPerBlock(header)) * (header.dataSize / frameBytes);
  }
  frameBytes = static_cast<std::uint32_t>(header.bitsPerSample) * header.channels / 8;
  return frameBytes == 0 ? 0 : header.dataSize / frameBytes;
}

std::uint32_t WavDurationMs(std::uint64_t frames, std::uint32_t samplesPerSec) {
  if (samplesPerSec == 0) return 0;
  // frames < 2^48 here (a u32 data size), so the product fits.
  const std::uint64_t milliseconds = frames * 1000 / samplesPerSec;
  return static_cast<std::uint32_t>(
      std::min<std::uint64_t>(milliseconds, std::numeric_limits<std::uint32_t>::max()));
}

std::uint32_t ReaderSamplesPerBlock(const WavHeader& header) {
  return header.samplesPerBlock == 0 ? kPcmSamplesPerBlock : header.samplesPerBlock;
}

}  // namespace decoders
