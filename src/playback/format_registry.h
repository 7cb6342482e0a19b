// Which format a path belongs to, and which decoder plays that format.
//
// The registry holds two fixed tables: at most 32 (format id, decoder) pairs
// and at most 100 extension rows (format id, extension without a dot, enabled
// flag). The application fills them at start-up; afterwards only playlist code
// switches the native-list row (503) on and off around the load of the default
// list. Nothing is allocated after construction.
//
// Format ids below 500 are media, 500 and above playlists, -1 is no format.
//
// Threads: written on the window thread at start-up; read from any thread
// without a lock (the info reader asks for file details).
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "playback/format_summary.h"

namespace playback {

class MediaDecoder;

enum FormatId : int {
  kFormatNone = -1,
  kFormatMp3 = 1,
  kFormatOgg = 2,
  kFormatWma = 3,
  kFormatMp3Stream = 4,
  kFormatOggStream = 5,
  kFormatWav = 7,
  kFormatAac = 8,
  kFormatM3u = 500,
  kFormatPls = 501,
  kFormatAsx = 502,
  kFormatNativeList = 503,
};

class FormatRegistry {
 public:
  static constexpr int kMaxDecoders = 32;
  static constexpr int kMaxExtensions = 100;
  static constexpr std::size_t kExtensionUnits = 16;  // UTF-16 units, terminator included

  // Clears both tables and adds the one row 503 "tsl", disabled.
  FormatRegistry();

  // Extension of a row; null when out of range or disabled.
  const std::string* ExtensionAt(int index) const;
  MediaDecoder* DecoderFor(int formatId) const;
  // FormatOf, then DecoderFor; an empty path gives null.
  MediaDecoder* DecoderForPath(std::string_view path) const;
  // Finds the decoder by path and forwards to its GetFileDetails; false when
  // no decoder takes the path or it fails.
  bool GetFileDetails(const std::string& path, std::string* display, std::string* album,
                      FormatSummary* summary, std::uint32_t* durationMs, std::uint32_t* reserved,
                      std::string* artist, std::string* title) const;
  // Replaces the pair of a known id, else appends; once 32 pairs exist the
  // call is ignored, even for a known id.
  void SetDecoder(int formatId, MediaDecoder* decoder);
  static bool IsMedia(int formatId) { return formatId != kFormatNone && formatId < 500; }
  static bool IsPlaylist(int formatId) { return formatId >= 500; }
  // Sets the flag of every row of this id.
  void Enable(int formatId, bool enabled);
  // The flag of the first row of this id; false when there is none.
  bool IsEnabled(int formatId) const;
  // See the rules in the implementation: "http://" addresses, then the first
  // row whose extension ends the path, compared without case and without a dot.
  int FormatOf(std::string_view path) const;
  // Walks the enabled rows of playlist (or media) formats. `cursor` holds the
  // row index of the result, -1 after the last; the result is null then.
  const std::string* FirstPlaylistExtension(int& cursor) const;
  const std::string* NextPlaylistExtension(int& cursor) const;
  const std::string* FirstMediaExtension(int& cursor) const;
  const std::string* NextMediaExtension(int& cursor) const;
  // Appends a disabled row; ignored once 100 rows exist. Duplicates are kept.
  void AddExtension(int formatId, std::string_view extension);
  int ExtensionCount() const { return extensionCount; }

 private:
  struct ExtensionRow {
    int formatId = kFormatNone;
    std::string extension;  // short: fits the string's own storage, no allocation
    bool enabled = false;
  };
  struct DecoderPair {
    int formatId = kFormatNone;
    MediaDecoder* decoder = nullptr;
  };

  const std::string* NextMatching(int& cursor, bool playlists) const;

  std::array<DecoderPair, kMaxDecoders> decoders{};
  int decoderCount = 0;
  std::array<ExtensionRow, kMaxExtensions> rows{};
  int extensionCount = 0;
};

// The one registry of the process.
FormatRegistry& Formats();

}  // namespace playback
