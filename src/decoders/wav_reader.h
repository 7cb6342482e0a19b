// The format reader of RIFF WAVE files: 8- and 16-bit PCM and Microsoft
// ADPCM, delivered as 16-bit samples.
//
// Audio comes through the byte source that SetSource hands over (the
// application's shared LockedFile); GetTrackInfo alone opens the file by
// itself, so that it can look at other files while one plays. The header is
// read by wav_header.h, ADPCM blocks are decoded by wav_adpcm.h.
//
// Behaviours the player has always had, and keeps:
// - Other format tags (3, float, for one) open and report their length, and
//   then read as empty: the track ends at once. So does PCM of a width other
//   than 8 or 16 bits.
// - Of a Microsoft ADPCM block only as many samples as the block has frames
//   are delivered: all of a mono block, the first half of a stereo one.
// - The ADPCM length counts samplesPerBlock frames per minimum block size.
// - Seek beyond the end lands one second before it.
// Where a file is damaged we go further than the format asks: see
// wav_header.h. Open closes the byte source again when it refuses a file, so
// the shared source is free for the next track.
//
// Threads: as FormatReader says. GetTrackInfo uses nothing of the object.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "decoders/wav_header.h"
#include "tavrinsonic/format_reader.h"

namespace decoders {

class WavReader final : public playback::FormatReader {
 public:
  WavReader() = default;
  ~WavReader() override = default;

  void SetSource(playback::ByteSource* byteSource, const char* path) override;
  int Open(const char* path) override;
  int Seek(int milliseconds) override;
  void Close() override;
  int GetFormat(std::uint32_t* sampleRate, std::uint32_t* channels) override;
  int GetTrackInfo(const char* path, playback::TrackInfo* info) override;
  std::uint32_t GetDuration() override;
  int Read(std::int16_t* destination, std::uint32_t wanted, std::uint32_t* got) override;

 private:
  bool OpenHeader(const char* path);
  // Bytes of data left behind the source's position, at most `wanted`.
  std::uint32_t DataBytesLeft(std::uint32_t wanted);
  std::uint32_t ReadPcm(std::int16_t* destination, std::uint32_t wanted);
  std::uint32_t ReadAdpcm(std::int16_t* destination, std::uint32_t wanted);

  playback::ByteSource* source = nullptr;
  std::string path;
  WavHeader header;
  std::uint32_t durationMs = 0;
  std::uint32_t samplesPerBlock = 0;
  // ADPCM: samples of the last block still to deliver, from `decodedStart` on.
  std::uint32_t decodedLeft = 0;
  std::uint32_t decodedStart = 0;
  std::unique_ptr<std::int16_t[]> pcmBuffer;  // channels * samplesPerBlock samples
  std::unique_ptr<std::uint8_t[]> rawBuffer;
  std::uint32_t rawBytes = 0;
};

}  // namespace decoders
