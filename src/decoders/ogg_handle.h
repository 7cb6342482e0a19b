// One open Ogg Vorbis source in Tremor's file layer (ov_open_callbacks,
// ov_read, ov_pcm_seek_page, ov_pcm_tell, ov_pcm_total, ov_info,
// ov_comment, ov_clear), read through the player's own callbacks.
//
// A handle over a ByteSource (a file) seeks, tells and reads through it and
// never closes it: the decoder that opened the source closes it. A handle
// opened by path reads through a LockedFile of its own, so the playlist's
// info reader may open one on its thread beside the track that plays. A
// stream gives its own callbacks (a read from the network, no seek).
//
// Tremor has no flag for "the headers of a new logical stream were read":
// the handle compares the link and its serial number after each read
// instead, which also catches the next link of a chained file.
//
// Threads: a handle is used by one thread at a time (the decoder's lock).
#pragma once

#include <tremor/ivorbisfile.h>

#include <cstdint>
#include <memory>
#include <string>

#include "decoders/ogg_comments.h"

namespace playback {
class ByteSource;
class LockedFile;
}  // namespace playback

namespace decoders {

// What ReadPcm gives; the values are the decoder's result codes.
enum class OggReadResult : int {
  kData = 0,     // bytes came
  kRefused = 1,  // the block is smaller than kOggMinimumBlock
  kEnd = 2,      // the end of the source (or of one logical stream)
  kError = -2,   // the decoder can't go on
  kHole = -3,    // a gap in the data; the next read goes on behind it
};

inline constexpr std::uint32_t kOggMinimumBlock = 4096;

struct OggStreamInfo {
  std::uint32_t sampleRate = 0;
  std::uint32_t channels = 0;
  std::uint32_t bitrate = 0;  // nominal, kbit/s
};

class OggHandle {
 public:
  // Null when the source holds no Vorbis headers.
  static std::unique_ptr<OggHandle> Open(void* datasource, const ov_callbacks& callbacks);
  static std::unique_ptr<OggHandle> OpenSource(playback::ByteSource& source);
  // Null for an empty path, a path that doesn't open, or no Vorbis.
  static std::unique_ptr<OggHandle> OpenPath(const std::string& path);
  ~OggHandle();
  OggHandle(const OggHandle&) = delete;
  OggHandle& operator=(const OggHandle&) = delete;

  // 16-bit interleaved PCM, native byte order, whole frames.
  OggReadResult ReadPcm(void* buffer, std::uint32_t size, std::uint32_t& bytes);
  // To the page that holds `sample` (per channel, over all links); the
  // decoding isn't carried forward to the sample itself.
  bool SeekPage(std::int64_t sample);
  std::int64_t Tell();
  // All links together; -1 when unknown (a stream).
  std::int64_t Total();
  // Of the present link.
  bool Info(OggStreamInfo& info);
  OggTags ReadTags();
  // True once since the last ReadTags when another logical stream began.
  bool TagsChanged();

 private:
  OggHandle() = default;
  void NoteLink();

  OggVorbis_File file{};
  bool opened = false;
  std::unique_ptr<playback::LockedFile> ownFile;  // opened by path
  int seenLink = 0;
  std::uint32_t seenSerial = 0;
};

// Callbacks over a ByteSource given as the data source.
ov_callbacks ByteSourceCallbacks();

}  // namespace decoders
