#include "playback/format_registry.h"

#include "platform/text.h"
#include "playback/media_decoder.h"

namespace playback {

FormatRegistry::FormatRegistry() { AddExtension(kFormatNativeList, "tsl"); }

const std::string* FormatRegistry::ExtensionAt(int index) const {
  if (index < 0 || index >= extensionCount || !rows[index].enabled) return nullptr;
  return &rows[index].extension;
}

MediaDecoder* FormatRegistry::DecoderFor(int formatId) const {
  for (int i = 0; i < decoderCount; ++i) {
    if (decoders[i].formatId == formatId) return decoders[i].decoder;
  }
  return nullptr;
}

MediaDecoder* FormatRegistry::DecoderForPath(std::string_view path) const {
  if (path.empty()) return nullptr;
  return DecoderFor(FormatOf(path));
}

bool FormatRegistry::GetFileDetails(const std::string& path, std::string* display,
                                    std::string* album, FormatSummary* summary,
                                    std::uint32_t* durationMs, std::uint32_t* reserved,
                                    std::string* artist, std::string* title) const {
  MediaDecoder* decoder = DecoderForPath(path);
  if (decoder == nullptr) return false;
  return decoder->GetFileDetails(path, display, album, summary, durationMs, reserved, artist, title);
}

void FormatRegistry::SetDecoder(int formatId, MediaDecoder* decoder) {
  if (decoderCount >= kMaxDecoders) return;
  for (int i = 0; i < decoderCount; ++i) {
    if (decoders[i].formatId == formatId) {
      decoders[i].decoder = decoder;
      return;
    }
  }
  decoders[decoderCount++] = {formatId, decoder};
}

void FormatRegistry::Enable(int formatId, bool enabled) {
  for (int i = 0; i < extensionCount; ++i) {
    if (rows[i].formatId == formatId) rows[i].enabled = enabled;
  }
}

bool FormatRegistry::IsEnabled(int formatId) const {
  for (int i = 0; i < extensionCount; ++i) {
    if (rows[i].formatId == formatId) return rows[i].enabled;
  }
  return false;
}

// 1. An empty path has no format.
// 2. An "http://" address (any case) is an Ogg stream when its last four
//    characters are ".ogg" (any case), else an MP3 stream; the enabled flags
//    play no part here.
// 3. Otherwise the first row whose extension is strictly shorter than the path
//    and equals the path's tail (any case) decides. There is no dot in the
//    comparison, so "tune.xmp3" and even "foomp3" are MP3: the table has
//    always worked that way and playlists rely on it.
// 4. A disabled first match gives no format; later rows are not tried.
int FormatRegistry::FormatOf(std::string_view path) const {
  if (path.empty()) return kFormatNone;
  if (platform::StartsWithIgnoreCase(path, "http://")) {
    return platform::EndsWithIgnoreCase(path, ".ogg") ? kFormatOggStream : kFormatMp3Stream;
  }
  for (int i = 0; i < extensionCount; ++i) {
    const std::string& extension = rows[i].extension;
    if (extension.size() < path.size() && platform::EndsWithIgnoreCase(path, extension)) {
      return rows[i].enabled ? rows[i].formatId : kFormatNone;
    }
  }
  return kFormatNone;
}

const std::string* FormatRegistry::NextMatching(int& cursor, bool playlists) const {
  for (int i = cursor + 1; i < extensionCount; ++i) {
    const bool kind = playlists ? IsPlaylist(rows[i].formatId) : IsMedia(rows[i].formatId);
    if (kind && rows[i].enabled) {
      cursor = i;
      return &rows[i].extension;
    }
  }
  cursor = -1;
  return nullptr;
}

const std::string* FormatRegistry::FirstPlaylistExtension(int& cursor) const {
  cursor = -1;
  return NextMatching(cursor, true);
}

const std::string* FormatRegistry::NextPlaylistExtension(int& cursor) const {
  if (cursor < 0) return nullptr;
  return NextMatching(cursor, true);
}

const std::string* FormatRegistry::FirstMediaExtension(int& cursor) const {
  cursor = -1;
  return NextMatching(cursor, false);
}

const std::string* FormatRegistry::NextMediaExtension(int& cursor) const {
  if (cursor < 0) return nullptr;
  return NextMatching(cursor, false);
}

void FormatRegistry::AddExtension(int formatId, std::string_view extension) {
  if (extensionCount >= kMaxExtensions) return;
  rows[extensionCount++] = {formatId,
                            platform::TruncateToUtf16Units(extension, kExtensionUnits - 1), false};
}

FormatRegistry& Formats() {
  static FormatRegistry registry;
  return registry;
}

}  // namespace playback
