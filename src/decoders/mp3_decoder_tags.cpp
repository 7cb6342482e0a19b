// Mp3Decoder: titles, the format summary, the playlist's details and the
// information text, from the ID3 tags (id3v1.h, id3v2.h) and the analysis.
//
// A readable ID3v2 tag ends the matter: ID3v1 isn't consulted for a field
// that ID3v2 lacks. The readers open the path themselves, so none of this
// moves the file the decoder plays. GetFileDetails and GetInfoText open the
// path in a temporary decoder over a file object of its own, without
// back-end, output or thread: they touch nothing of this object and run on
// any thread (the playlist's info reader calls GetFileDetails).
#include <cstdio>
#include <cstring>
#include <string>

#include "decoders/id3_genres.h"
#include "decoders/id3_text.h"
#include "decoders/id3v1.h"
#include "decoders/id3v2.h"
#include "decoders/mp3_decoder.h"
#include "decoders/track_texts.h"
#include "net/net_stream.h"
#include "platform/text.h"
#include "playback/locked_file.h"

namespace decoders {
namespace {

const std::string& TextOf(const std::optional<std::string>& field) {
  static const std::string kEmpty;
  return field ? *field : kEmpty;
}

// What a temporary decoder learns of a file; false when it doesn't open.
struct Probe {
  std::uint32_t durationMs = 0;
  playback::FormatSummary summary;
  bool startsWithId3v2 = false;
};

bool ProbeFile(const std::string& path, Probe& probe) {
  playback::LockedFile probeFile;
  Mp3Decoder decoder;
  decoder.SetSource(&probeFile);
  if (!decoder.Open(path)) return false;
  std::uint8_t head[10] = {};
  std::uint32_t got = 0;
  if (probeFile.Seek(0, playback::ByteSource::kFromBegin) != 0 ||
      probeFile.Read(head, sizeof head, &got) == 0 || got < sizeof head) {
    return false;
  }
  probe.startsWithId3v2 = std::memcmp(head, "ID3", 3) == 0;
  probe.durationMs = decoder.GetDuration();
  decoder.GetFormatSummary(probe.summary);
  decoder.Close();
  return true;
}

}  // namespace

bool Mp3Decoder::GetDisplayTitle(std::string& title) {
  title.clear();
  // A stream's title: the last title of its metadata, else the station's name.
  if (isStream) {
    if (netStream == nullptr) return false;
    if (netStream->GetStreamTitle(title)) return true;
    return netStream->GetStationInfo(&title, nullptr, nullptr);
  }
  if (path.empty()) return false;
  Id3v2Info v2;
  if (ReadId3v2(path, v2)) {
    const std::string& artist = TextOf(v2.artist);
    const std::string& name = TextOf(v2.title);
    if (!artist.empty() && !name.empty()) {
      title = JoinedTitle(artist, name);
    } else if (!artist.empty() || !name.empty()) {
      title = CutText(artist.empty() ? name : artist);
    } else {
      title = FileNameOf(path);
    }
    return true;
  }
  Id3v1Info v1;
  if (!ReadId3v1(path, v1)) return false;
  // An empty side leaves a bare " - ", as the player has always shown it.
  title = v1.artist.empty() && v1.title.empty() ? FileNameOf(path) : JoinedTitle(v1.artist, v1.title);
  return true;
}

void Mp3Decoder::GetFormatSummary(playback::FormatSummary& summary) {
  summary.Clear();
  if (file == nullptr && !isStream) return;
  std::lock_guard guard(seekLock);  // a stream's thread writes the format
  summary.sampleRate = format.sampleRate;
  summary.bitRate = format.bitrate;
  summary.stereo = format.channels > 1 ? 1 : 0;
  summary.trackNumber = playback::kUnknownTrackNumber;
  if (isStream) return;
  Id3v1Info v1;
  if (!ReadId3v1(path, v1)) return;
  if (Id3v1HasTrackNumber(v1)) summary.trackNumber = static_cast<std::uint32_t>(v1.track);
  if (const char* genre = GenreName(v1.genre)) summary.genre = genre;
}

bool Mp3Decoder::GetFileDetails(const std::string& filePath, std::string* display, std::string* album,
                                playback::FormatSummary* summary, std::uint32_t* durationMs,
                                std::uint32_t* reserved, std::string* artist, std::string* title) {
  Probe probe;
  if (filePath.empty() || !ProbeFile(filePath, probe)) return false;
  std::string albumText;
  std::string artistText;
  std::string titleText;
  std::string displayText;
  if (!probe.startsWithId3v2) {
    Id3v1Info v1;
    ReadId3v1(filePath, v1);
    albumText = v1.album;
    artistText = v1.album;  // the album, as the player has always filled it from ID3v1
    titleText = v1.title;
    displayText =
        v1.artist.empty() && v1.title.empty() ? FileNameOf(filePath) : JoinedTitle(v1.artist, v1.title);
  } else {
    Id3v2Info v2;
    if (!ReadId3v2(filePath, v2)) return false;
    albumText = CutText(TextOf(v2.album));
    artistText = CutText(TextOf(v2.artist));
    titleText = CutText(TextOf(v2.title));
    if (artistText.empty()) {
      displayText = FileNameOf(filePath);
    } else {
      displayText = JoinedTitle(artistText, titleText.empty() ? FileNameOf(filePath) : titleText);
    }
    if (v2.track) probe.summary.trackNumber = static_cast<std::uint32_t>(DecimalValue(*v2.track));
    if (v2.genre) probe.summary.genre = CutText(*v2.genre, playback::kGenreUnits - 1);
  }
  if (display != nullptr) *display = displayText;
  if (album != nullptr) *album = albumText;
  if (artist != nullptr) *artist = artistText;
  if (title != nullptr) *title = titleText;
  if (summary != nullptr) *summary = probe.summary;
  if (durationMs != nullptr) *durationMs = probe.durationMs;
  if (reserved != nullptr) *reserved = 0;
  return true;
}

bool Mp3Decoder::GetInfoText(const std::string& filePath, std::string& text) {
  text.clear();
  Probe probe;
  if (filePath.empty() || platform::StartsWithIgnoreCase(filePath, "http://") ||
      !ProbeFile(filePath, probe)) {
    return false;
  }
  InfoText lines;
  Id3v2Info v2;
  Id3v1Info v1;
  if (ReadId3v2(filePath, v2)) {
    lines.LineIf("Title:", v2.title);
    lines.LineIf("Artist:", v2.artist);
    lines.Format(probe.durationMs, probe.summary);
    lines.LineIf("Album:", v2.album);
    lines.Line("Genre:", TextOf(v2.genre).empty() ? probe.summary.genre : *v2.genre);
    lines.LineIf("Composer:", v2.composer);
    lines.LineIf("Encoded by:", v2.encodedBy);
    lines.LineIf("Track:", v2.track);
    lines.LineIf("Year:", v2.year);
    lines.LineIf("Comment:", v2.comment);
  } else if (ReadId3v1(filePath, v1)) {
    lines.Line("Title:", v1.title);
    lines.Line("Artist:", v1.artist);
    lines.Format(probe.durationMs, probe.summary);
    lines.Line("Album:", v1.album);
    if (!probe.summary.genre.empty()) lines.Line("Genre:", probe.summary.genre);
    if (v1.year != 0) lines.Number("Year:", v1.year);
    lines.Line("Comment:", v1.comment);
  } else {
    lines.Format(probe.durationMs, probe.summary);  // a file without tags: its format alone
  }
  text = lines.Take();
  return true;
}

}  // namespace decoders
