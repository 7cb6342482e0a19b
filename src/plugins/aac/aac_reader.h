// The format reader of the AAC plug-in: AAC in ADTS framing (.aac files),
// decoded by FAAD2.
//
// The reader opens files its own way (read-only, regular files only) and
// leaves the program's shared byte source alone. At Open it indexes every
// frame (adts_index.h), which gives an exact length and a seek by frame; a
// leading ID3v2 tag is skipped. More than two channels are mixed down to
// two by FAAD2.
//
// GetTrackInfo: codec ("AAC LC" and the like, by the ADTS profile), the
// stream's own sample rate, stereo for two channels or more, the average bit
// rate and the length from the frame index, and the texts of a leading
// ID3v2 tag, read by the same reader as MP3 files' tags (decoders/id3v2.h),
// with its behaviours: title, artist, album, genre, year, track number, and
// the comment as the description.
//
// Seek lands on the start of the frame that holds the position (one second
// before the end for a position beyond it), after decoding the frame before
// it without output, so that the first samples after a seek are whole.
//
// Threads: as FormatReader says; GetTrackInfo uses nothing of the object.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "decoders/tag_source.h"
#include "plugins/aac/adts_index.h"
#include "plugins/aac/faad_decoder.h"
#include "tavrinsonic/format_reader.h"

namespace plugins::aac {

class AacReader final : public playback::FormatReader {
 public:
  AacReader() = default;
  ~AacReader() override = default;

  void SetSource(playback::ByteSource* source, const char* path) override;
  int Open(const char* path) override;
  int Seek(int milliseconds) override;
  void Close() override;
  int GetFormat(std::uint32_t* sampleRate, std::uint32_t* channels) override;
  int GetTrackInfo(const char* path, playback::TrackInfo* info) override;
  std::uint32_t GetDuration() override;
  int Read(std::int16_t* destination, std::uint32_t wanted, std::uint32_t* got) override;

 private:
  // Decodes the frame at `nextFrame` into `pending`; false at the end.
  bool DecodeNextFrame();
  bool ReadFrame(std::size_t index, std::vector<std::uint8_t>& bytes);

  std::unique_ptr<decoders::FileTagSource> file;  // null while closed
  AdtsIndex index;
  FaadDecoder decoder;
  std::uint32_t sampleRate = 0;  // as decoded
  std::uint32_t channels = 0;    // as delivered: 1 or 2
  std::uint32_t durationMs = 0;
  std::size_t nextFrame = 0;
  std::vector<std::uint8_t> frameBytes;
  std::vector<std::int16_t> pending;  // decoded and not yet delivered, from pendingStart on
  std::size_t pendingStart = 0;
};

}  // namespace plugins::aac
