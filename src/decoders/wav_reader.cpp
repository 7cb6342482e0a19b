#include "decoders/wav_reader.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include "playback/locked_file.h"

namespace decoders {
namespace {

using playback::ByteSource;

constexpr std::uint32_t kMaxU32 = std::numeric_limits<std::uint32_t>::max();

// Frames the largest block of this header can hold, whatever samplesPerBlock
// claims: the size of the ADPCM work buffer.
std::uint32_t LargestBlockFrames(const WavHeader& header, std::uint32_t samplesPerBlock) {
  if (header.formatTag != kWavMicrosoftAdpcm || header.channels == 0) return samplesPerBlock;
  const std::uint32_t headerBytes = 7u * header.channels;
  if (header.blockAlign < headerBytes) return 2;
  const std::uint64_t fitting = (header.blockAlign - headerBytes) * 2ull / header.channels + 2;
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(samplesPerBlock, fitting));
}

const char* CodecName(std::uint16_t formatTag) {
  switch (formatTag) {
    case kWavPcm:
      return "PCM";
    case kWavMicrosoftAdpcm:
      return "Microsoft ADPCM";
    default:
      return "Unknown";
  }
}

}  // namespace

void WavReader::SetSource(ByteSource* byteSource, const char* /*path*/) {
  source = byteSource;
}

int WavReader::Open(const char* newPath) {
  if (source == nullptr || newPath == nullptr) return 0;
  if (source->Open(newPath) == 0) return 0;
  if (!OpenHeader(newPath)) {
    // The shared source must be free for whatever plays next.
    source->Close();
    path.clear();
    durationMs = 0;
    return 0;
  }
  return 1;
}

bool WavReader::OpenHeader(const char* newPath) {
  path = newPath;
  if (!ReadWavHeader(*source, header, true)) return false;
  samplesPerBlock = ReaderSamplesPerBlock(header);
  // Only ADPCM decodes into it, all channels of its largest block; that
  // stays small, as the block size bounds channels and frames together.
  const std::uint64_t pcmSamples =
      header.formatTag == kWavMicrosoftAdpcm
          ? std::max<std::uint64_t>(
                1, static_cast<std::uint64_t>(header.channels) * LargestBlockFrames(header, samplesPerBlock))
          : samplesPerBlock;
  rawBytes = std::max<std::uint32_t>(samplesPerBlock * 2, header.blockAlign);
  pcmBuffer.reset(new (std::nothrow) std::int16_t[pcmSamples]());
  rawBuffer.reset(new (std::nothrow) std::uint8_t[rawBytes]());
  if (!pcmBuffer || !rawBuffer) return false;
  decodedLeft = 0;
  decodedStart = 0;
  std::uint32_t frameBytes = 0;
  durationMs = WavDurationMs(WavFrameCount(header, frameBytes), header.samplesPerSec);
  return true;
}

int WavReader::Seek(int milliseconds) {
  if (source == nullptr || source->IsOpen() == 0) return -1;
  std::int64_t target = std::max(milliseconds, 0);
  if (target > static_cast<std::int64_t>(durationMs)) target = std::max<std::int64_t>(0, durationMs - 1000ll);
  std::uint64_t offset =
      durationMs == 0 ? 0 : header.dataSize * static_cast<std::uint64_t>(target) / durationMs;
  decodedLeft = 0;
  decodedStart = 0;
  if (header.blockAlign != 0) offset -= offset % header.blockAlign;
  const auto position = static_cast<std::int64_t>(header.dataStart + offset);
  if (source->Seek(position, ByteSource::kFromBegin) != position) return -1;
  return static_cast<int>(target);
}

void WavReader::Close() {
  path.clear();
  if (source != nullptr) source->Close();
  durationMs = 0;
  decodedLeft = 0;
  decodedStart = 0;
}

int WavReader::GetFormat(std::uint32_t* sampleRate, std::uint32_t* channels) {
  if (source == nullptr || source->IsOpen() == 0) return 0;
  if (sampleRate != nullptr) *sampleRate = header.samplesPerSec;
  if (channels != nullptr) *channels = header.channels;
  return 1;
}

int WavReader::GetTrackInfo(const char* filePath, playback::TrackInfo* info) {
  if (info == nullptr || filePath == nullptr) return 0;
  playback::LockedFile file;
  if (file.Open(filePath) == 0) return 0;
  WavHeader fileHeader;
  if (!ReadWavHeader(file, fileHeader, false)) return 0;
  std::uint32_t frameBytes = 0;
  const std::uint64_t frames = WavFrameCount(fileHeader, frameBytes);
  if (frameBytes == 0) return 0;
  info->Clear();
  info->SetCodecA(CodecName(fileHeader.formatTag));
  info->SetSampleRate(fileHeader.samplesPerSec);
  info->SetStereo(fileHeader.channels == 2 ? 1 : 0);
  info->SetBitRate(
      static_cast<std::uint32_t>(std::min<std::uint64_t>(fileHeader.avgBytesPerSec * 8ull, kMaxU32)));
  info->SetDuration(WavDurationMs(frames, fileHeader.samplesPerSec));
  return 1;
}

std::uint32_t WavReader::GetDuration() {
  return durationMs;
}

int WavReader::Read(std::int16_t* destination, std::uint32_t wanted, std::uint32_t* got) {
  std::uint32_t delivered = 0;
  if (destination != nullptr && source != nullptr && source->IsOpen() != 0) {
    if (header.formatTag == kWavPcm) {
      delivered = ReadPcm(destination, wanted);
    } else if (header.formatTag == kWavMicrosoftAdpcm) {
      delivered = ReadAdpcm(destination, wanted);
    }
  }
  if (got != nullptr) *got = delivered;
  return 1;
}

std::uint32_t WavReader::DataBytesLeft(std::uint32_t wanted) {
  const std::int64_t position = source->Seek(0, ByteSource::kFromCurrent);
  const std::uint64_t end = header.dataStart + header.dataSize;
  if (position == ByteSource::kSeekFailed || position < 0 || static_cast<std::uint64_t>(position) >= end)
    return 0;
  return static_cast<std::uint32_t>(
      std::min<std::uint64_t>(wanted, end - static_cast<std::uint64_t>(position)));
}

std::uint32_t WavReader::ReadPcm(std::int16_t* destination, std::uint32_t wanted) {
  std::uint32_t gotBytes = 0;
  if (header.bitsPerSample == 16) {
    // Straight into the caller's block, without a copy.
    const std::uint32_t bytes =
        DataBytesLeft(static_cast<std::uint32_t>(std::min<std::uint64_t>(wanted * 2ull, kMaxU32)));
    if (bytes == 0 || source->Read(destination, bytes, &gotBytes) == 0) return 0;
    return gotBytes / 2;
  }
  if (header.bitsPerSample == 8) {
    const std::uint32_t bytes = DataBytesLeft(std::min(wanted, rawBytes));
    if (bytes == 0 || source->Read(rawBuffer.get(), bytes, &gotBytes) == 0) return 0;
    for (std::uint32_t i = 0; i < gotBytes; ++i) {
      destination[i] = static_cast<std::int16_t>((rawBuffer[i] - 128) * 256);
    }
    return gotBytes;
  }
  return 0;
}

std::uint32_t WavReader::ReadAdpcm(std::int16_t* destination, std::uint32_t wanted) {
  std::uint32_t left = wanted;
  const std::uint32_t blockFrames = LargestBlockFrames(header, samplesPerBlock);
  for (;;) {
    const std::uint32_t taken = std::min(left, decodedLeft);
    std::memcpy(destination + (wanted - left), pcmBuffer.get() + decodedStart, taken * sizeof(std::int16_t));
    decodedStart += taken;
    decodedLeft -= taken;
    left -= taken;
    if (left == 0) break;
    const std::uint32_t block = DataBytesLeft(header.blockAlign);
    std::uint32_t gotBytes = 0;
    if (block == 0 || source->Read(rawBuffer.get(), block, &gotBytes) == 0 || gotBytes == 0) break;
    // Of a stereo block only the first `frames` samples are delivered: the
    // player's way with ADPCM, kept.
    decodedLeft = DecodeAdpcmBlock(rawBuffer.get(), gotBytes, header.channels, blockFrames,
                                   header.coefficients, pcmBuffer.get(), nullptr);
    decodedStart = 0;
    if (decodedLeft == 0) break;
  }
  return wanted - left;
}

}  // namespace decoders
