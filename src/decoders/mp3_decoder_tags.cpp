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
#include "platform/text.h"
#include "playback/locked_file.h"

namespace decoders {
namespace {

// Texts go into buffers of 260 UTF-16 units with their terminator.
constexpr std::size_t kTextUnits = 259;
// The information text's block: 1024 UTF-16 units with the terminator.
constexpr std::size_t kInfoTextUnits = 1023;

std::string Cut(std::string_view text, std::size_t units = kTextUnits) {
  return platform::TruncateToUtf16Units(text, units);
}

// The name of a path without its folder, cut to 260 units and then at its
// last dot.
std::string FileName(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  std::string name = Cut(slash == std::string::npos ? path : path.substr(slash + 1), 260);
  const std::size_t dot = name.find_last_of('.');
  if (dot != std::string::npos) name.resize(dot);
  return name;
}

std::string Joined(const std::string& first, const std::string& second) {
  return Cut(first + " - " + second);
}

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

// "<b>Label:</b> value<br>" lines in a block of bounded length; a line that
// doesn't fit is cut in its value, and nothing follows it.
class InfoText {
 public:
  void Line(const char* label, std::string_view value) {
    if (full) return;
    const std::string prefix = std::string("<b>") + label + "</b> ";
    const std::size_t markup = platform::Utf16Length(prefix) + 4;
    const std::size_t valueUnits = platform::Utf16Length(value);
    if (units + markup + valueUnits > kInfoTextUnits) {
      full = true;
      if (units + markup > kInfoTextUnits) return;
      const std::string cut = Cut(value, kInfoTextUnits - units - markup);
      text += prefix + cut + "<br>";
      units += markup + platform::Utf16Length(cut);
      return;
    }
    text += prefix;
    text += value;
    text += "<br>";
    units += markup + valueUnits;
  }
  void LineIf(const char* label, const std::optional<std::string>& value) {
    if (value) Line(label, *value);
  }
  void Number(const char* label, long long value, const char* unit = "") {
    Line(label, std::to_string(value) + unit);
  }
  void Format(std::uint32_t durationMs, const playback::FormatSummary& summary) {
    const std::uint32_t seconds = durationMs / 1000;
    char time[48];
    std::snprintf(time, sizeof time, "%02u:%02u:%02u", seconds / 3600, seconds / 60 % 60, seconds % 60);
    Line("Total play time:", time);
    Number("Bitrate:", summary.bitRate, " kbps");
    Number("Sampling Rate:", summary.sampleRate, " Hz");
    Number("Channels:", summary.stereo != 0 ? 2 : 1);
  }
  std::string Take() { return std::move(text); }

 private:
  std::string text;
  std::size_t units = 0;
  bool full = false;
};

}  // namespace

bool Mp3Decoder::GetDisplayTitle(std::string& title) {
  title.clear();
  // A stream's title comes from the stream client, with the stream pump.
  if (isStream || path.empty()) return false;
  Id3v2Info v2;
  if (ReadId3v2(path, v2)) {
    const std::string& artist = TextOf(v2.artist);
    const std::string& name = TextOf(v2.title);
    if (!artist.empty() && !name.empty()) {
      title = Joined(artist, name);
    } else if (!artist.empty() || !name.empty()) {
      title = Cut(artist.empty() ? name : artist);
    } else {
      title = FileName(path);
    }
    return true;
  }
  Id3v1Info v1;
  if (!ReadId3v1(path, v1)) return false;
  // An empty side leaves a bare " - ", as the player has always shown it.
  title = v1.artist.empty() && v1.title.empty() ? FileName(path) : Joined(v1.artist, v1.title);
  return true;
}

void Mp3Decoder::GetFormatSummary(playback::FormatSummary& summary) {
  summary.Clear();
  if (file == nullptr && !isStream) return;
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
    displayText = v1.artist.empty() && v1.title.empty() ? FileName(filePath) : Joined(v1.artist, v1.title);
  } else {
    Id3v2Info v2;
    if (!ReadId3v2(filePath, v2)) return false;
    albumText = Cut(TextOf(v2.album));
    artistText = Cut(TextOf(v2.artist));
    titleText = Cut(TextOf(v2.title));
    if (artistText.empty()) {
      displayText = FileName(filePath);
    } else {
      displayText = Joined(artistText, titleText.empty() ? FileName(filePath) : titleText);
    }
    if (v2.track) probe.summary.trackNumber = static_cast<std::uint32_t>(DecimalValue(*v2.track));
    if (v2.genre) probe.summary.genre = Cut(*v2.genre, playback::kGenreUnits - 1);
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
