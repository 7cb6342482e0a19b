// ReaderDecoder: the window thread's side. The decode thread is in
// reader_decoder_thread.cpp.
//
// The push path, the prefill, the end of a track, the seek hand-over and
// the stop are the steps of playback::StreamFeed (stream_feed.h), in the
// order given there. What this decoder adds:
//  - the decode thread reads blocks of at most 65536 bytes (half a second or
//    less) under sourceLock and writes each after waiting for room;
//  - a seek moves the reader under sourceLock and hands the stream over
//    while still holding it, so that the thread never reads between the two;
//    a seek before the thread has opened its stream moves the reader and the
//    seek base only.
#include "playback/reader_decoder.h"

#include <algorithm>
#include <cstdlib>

#include "platform/text.h"
#include "playback/audio_output.h"
#include "playback/playback_settings.h"

namespace playback {
namespace {

constexpr std::size_t kTextUnits = kTrackTextUnits - 1;  // content of a 256-unit buffer

// The name of a path without its folder, cut to `units` UTF-16 units and
// then at its last dot.
std::string NameWithoutExtension(const std::string& path, std::size_t units) {
  const std::size_t slash = path.find_last_of('/');
  std::string name =
      platform::TruncateToUtf16Units(slash == std::string::npos ? path : path.substr(slash + 1), units);
  const std::size_t dot = name.find_last_of('.');
  if (dot != std::string::npos) name.resize(dot);
  return name;
}

std::string Cut(std::string text, std::size_t units) {
  return platform::TruncateToUtf16Units(text, units);
}

void FillSummary(TrackInfo& info, FormatSummary& summary, std::uint32_t bitRate) {
  summary.Clear();
  summary.genre = Cut(info.TextUtf8(TrackInfo::kGenre), kGenreUnits - 1);
  summary.sampleRate = info.GetSampleRate();
  summary.stereo = info.GetStereo();
  summary.trackNumber = info.GetTrackNumber();
  summary.bitRate = bitRate;
}

}  // namespace

ReaderDecoder::~ReaderDecoder() {
  feed.RequestStop();
  thread.Join();
}

bool ReaderDecoder::GetInfoText(const std::string& filePath, std::string& text) {
  text.clear();
  if (filePath.empty() || reader == nullptr) return false;
  TrackInfo info;
  if (reader->GetTrackInfo(filePath.c_str(), &info) == 0) return false;
  char16_t* built = nullptr;
  info.BuildInfoText(&built);
  if (built != nullptr) {
    text = platform::Utf16ToUtf8(built);
    std::free(built);
  }
  return true;
}

void ReaderDecoder::SetDecodePriority(int /*priority*/) {}

bool ReaderDecoder::GetDisplayTitle(std::string& title) {
  title.clear();
  if (reader == nullptr) return false;
  TrackInfo info;
  if (reader->GetTrackInfo(path.c_str(), &info) == 0) return false;
  const std::string artist = info.TextUtf8(TrackInfo::kArtist);
  const std::string name = info.TextUtf8(TrackInfo::kTitle);
  if (!name.empty()) {
    title = artist.empty() ? name : artist + " - " + name;
  } else {
    title = info.TextUtf8(TrackInfo::kDescription);
    if (title.empty()) title = NameWithoutExtension(path, 260);
  }
  return true;
}

void ReaderDecoder::GetFormatSummary(FormatSummary& summary) {
  if (reader == nullptr) return;
  TrackInfo info;
  reader->GetTrackInfo(path.c_str(), &info);
  FillSummary(info, summary, info.GetBitRate() / 1000);
}

std::uint32_t ReaderDecoder::GetDuration() {
  return reader != nullptr ? reader->GetDuration() : 0;
}

std::uint32_t ReaderDecoder::GetPosition() {
  const std::uint64_t played = feed.PlayedFrames();
  const std::uint32_t rate = feed.SampleRate();
  if (rate == 0) return 0;
  return static_cast<std::uint32_t>(seekBase.load(std::memory_order_relaxed) + played * 1000 / rate);
}

bool ReaderDecoder::Seek(int positionMs) {
  if (state == kStateStopped || reader == nullptr) return false;
  std::lock_guard sourceGuard(sourceLock);
  const int reached = reader->Seek(std::max(positionMs, 0));
  if (reached < 0) return false;
  const StreamFeed::HandOverResult handOver = feed.HandOver();
  if (handOver == StreamFeed::HandOverResult::kLoopEnded || handOver == StreamFeed::HandOverResult::kRefused) {
    return false;
  }
  seekBase.store(static_cast<std::uint32_t>(reached), std::memory_order_relaxed);
  return true;
}

void ReaderDecoder::Stop() {
  if (state == kStatePaused && output != nullptr) output->Pause(0);
  feed.Stop(closing);
  thread.Join();
  state = kStateStopped;
  seekBase.store(0, std::memory_order_relaxed);
}

void ReaderDecoder::TogglePause() {
  if (state == kStatePlaying) {
    state = kStatePaused;
    if (output != nullptr) output->Pause(1);
  } else if (state == kStatePaused) {
    state = kStatePlaying;
    if (output != nullptr) output->Pause(0);
  }
}

bool ReaderDecoder::Play() {
  if (reader == nullptr || source == nullptr) return false;
  if (state == kStatePaused) {
    TogglePause();
    return true;
  }
  if (state == kStatePlaying) return true;
  if (state != kStateStopped) return false;
  thread.Join();
  feed.Arm(output);
  threadNotify = notifyWindow;
  if (!thread.Start([this] { DecodeThread(); }, decodePriority)) return false;
  SetState(kStatePlaying);
  return true;
}

void ReaderDecoder::Close() {
  closing = true;
  path.clear();
  Stop();
  thread.Join();
  if (reader != nullptr) {
    std::lock_guard sourceGuard(sourceLock);
    reader->Close();
  }
}

bool ReaderDecoder::Open(const std::string& newPath) {
  if (reader == nullptr) return false;
  std::lock_guard sourceGuard(sourceLock);
  reader->SetSource(source, newPath.c_str());
  if (reader->Open(newPath.c_str()) == 0) return false;
  path = newPath;
  closing = false;
  return true;
}

bool ReaderDecoder::GetFileDetails(const std::string& filePath, std::string* display, std::string* album,
                                   FormatSummary* summary, std::uint32_t* durationMs, std::uint32_t* reserved,
                                   std::string* artist, std::string* title) {
  if (reader == nullptr || filePath.empty()) return false;
  TrackInfo info;
  if (reader->GetTrackInfo(filePath.c_str(), &info) == 0) return false;
  const std::string trackArtist = info.TextUtf8(TrackInfo::kArtist);
  const std::string trackTitle = info.TextUtf8(TrackInfo::kTitle);
  if (album != nullptr) *album = info.TextUtf8(TrackInfo::kAlbum);
  if (artist != nullptr) *artist = trackArtist;
  if (title != nullptr) *title = trackTitle;
  if (durationMs != nullptr) *durationMs = info.GetDuration();
  if (reserved != nullptr) *reserved = 0;
  if (display != nullptr) {
    if (trackTitle.empty()) {
      *display = NameWithoutExtension(filePath, kTextUnits);
    } else if (trackArtist.empty()) {
      *display = trackTitle;
    } else {
      *display = Cut(Cut(trackArtist, kTextUnits) + " - " + trackTitle, kTextUnits);
    }
  }
  if (summary != nullptr) FillSummary(info, *summary, info.GetBitRate());
  return true;
}

}  // namespace playback
