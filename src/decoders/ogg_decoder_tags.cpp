// OggDecoder: the title line, the format summary, the playlist's details
// and the information text, from the Vorbis comments (ogg_comments.h).
//
// GetFileDetails and GetInfoText open the path by themselves through a
// handle with a file object of its own: they touch nothing of the open
// track and run on any thread (the playlist's info reader calls the first).
#include <algorithm>
#include <memory>
#include <string>

#include "decoders/id3_text.h"
#include "decoders/ogg_decoder.h"
#include "decoders/track_texts.h"
#include "platform/text.h"

namespace decoders {
namespace {

// "artist - title" with either side possibly empty; the file's name when
// both are.
std::string TitleLine(const OggTags& tags, const std::string& path) {
  if (tags.artist.empty() && tags.title.empty()) return FileNameOf(path);
  return JoinedTitle(tags.artist, tags.title);
}

// Genre and track number from the tags: 0 when there is no number (other
// formats say 100000), so Ogg files sort apart.
void TagsIntoSummary(const OggTags& tags, playback::FormatSummary& summary) {
  summary.genre = CutText(tags.genre, playback::kGenreUnits - 1);
  const std::int32_t number = DecimalValue(tags.trackNumber);
  summary.trackNumber = number > 0 ? static_cast<std::uint32_t>(number) : 0;
}

// What a handle opened by path gives.
struct Probe {
  OggStreamInfo info;
  OggTags tags;
  std::int64_t total = 0;
  std::uint32_t durationMs = 0;
};

bool ProbeFile(const std::string& path, Probe& probe) {
  if (platform::StartsWithIgnoreCase(path, "http://")) return false;
  std::unique_ptr<OggHandle> handle = OggHandle::OpenPath(path);
  if (!handle || !handle->Info(probe.info)) return false;
  probe.tags = handle->ReadTags();
  probe.total = std::max<std::int64_t>(handle->Total(), 0);
  const double ms = static_cast<double>(probe.total) / probe.info.sampleRate * 1000.0;
  probe.durationMs = static_cast<std::uint32_t>(std::min(ms, 4294967295.0));
  return true;
}

}  // namespace

bool OggDecoder::GetDisplayTitle(std::string& title) {
  title.clear();
  if (!hasTrack.load(std::memory_order_relaxed)) return false;
  std::lock_guard guard(infoLock);
  title = TitleLine(tags, path);
  return true;
}

void OggDecoder::GetFormatSummary(playback::FormatSummary& summary) {
  summary.Clear();
  if (!hasTrack.load(std::memory_order_relaxed)) return;
  summary.bitRate = bitrate.load(std::memory_order_relaxed);
  summary.sampleRate = sampleRate.load(std::memory_order_relaxed);
  summary.stereo = channels.load(std::memory_order_relaxed) == 2 ? 1 : 0;
  std::lock_guard guard(infoLock);
  TagsIntoSummary(tags, summary);
}

bool OggDecoder::GetFileDetails(const std::string& filePath, std::string* display, std::string* album,
                                playback::FormatSummary* summary, std::uint32_t* durationMs,
                                std::uint32_t* reserved, std::string* artist, std::string* title) {
  Probe probe;
  if (!ProbeFile(filePath, probe)) return false;
  if (summary != nullptr) {
    summary->Clear();
    summary->bitRate = probe.info.bitrate;
    summary->sampleRate = probe.info.sampleRate;
    summary->stereo = probe.info.channels > 1 ? 1 : 0;
    TagsIntoSummary(probe.tags, *summary);
  }
  if (display != nullptr) *display = TitleLine(probe.tags, filePath);
  if (album != nullptr) *album = probe.tags.album;
  if (artist != nullptr) *artist = probe.tags.artist;
  if (title != nullptr) *title = probe.tags.title;
  if (durationMs != nullptr) *durationMs = probe.durationMs;
  if (reserved != nullptr) *reserved = 0;
  return true;
}

bool OggDecoder::GetInfoText(const std::string& filePath, std::string& text) {
  text.clear();
  Probe probe;
  if (!ProbeFile(filePath, probe)) return false;
  const OggTags& t = probe.tags;
  playback::FormatSummary summary;
  summary.bitRate = probe.info.bitrate;
  summary.sampleRate = probe.info.sampleRate;
  summary.stereo = probe.info.channels > 1 ? 1 : 0;
  InfoText lines;
  lines.LineIfAny("Title:", t.title);
  lines.LineIfAny("Artist:", t.artist);
  // Whole seconds of the length, truncated; the channel count as it stands.
  const std::int64_t seconds = std::min<std::int64_t>(probe.total / probe.info.sampleRate, 4294967);
  lines.Format(static_cast<std::uint32_t>(seconds) * 1000, summary, probe.info.channels);
  lines.LineIfAny("Album:", t.album);
  lines.LineIfAny("Genre:", t.genre);
  lines.LineIfAny("Date:", t.date);
  lines.LineIfAny("Track:", t.trackNumber);
  lines.LineIfAny("Comment:", t.comment);
  text = lines.Take();
  return true;
}

}  // namespace decoders
