// ReaderDecoder: the window thread's side. The decode thread is in
// reader_decoder_thread.cpp.
//
// Push path, on the decode thread:
//  1. Under both locks: the reader's rate and channels (more than two count
//     as two); a held stream with a queue of two seconds, the same stream
//     again when gapless is on and crossfade off; with crossfade a fade-in of
//     2000 ms, with trimSilence the silence threshold 500.
//  2. Loop: read a block (at most 65536 bytes, half a second or less) under
//     sourceLock; poll for room every 10 ms, asking every 100 ms whether the
//     stream still lives, and leave on a stop or when the stream has died
//     (which counts as the end of the track); write
//     under outputLock, after looking at the stop flag under it. A block
//     read before a seek is dropped there, so that no sound from before the
//     seek reaches the new stream.
//  3. Prefill: once the queue is half full, play the stream and arm the
//     silence threshold again, trimming on or off: a quiet stretch after the
//     first second is dropped once. The player has always done so.
//  4. After the loop a stream still in prefill is played, so that a track
//     shorter than one second sounds.
//  5. At the natural end, unless a stop came: with trimSilence arm the
//     threshold, and without gapless write the end mark (which trims the
//     tail); with crossfade fade out all that is queued; otherwise, without
//     gapless, write the end mark and wait until the queue has drained. Then
//     post 2568. With gapless the stream stays open for the next track.
//
// Seek hand-over, on the window thread, holding sourceLock then outputLock
// from the reader's seek until the new handle is stored, so that the thread
// never writes into a stream that has been faded or removed:
//  1. The reader seeks (it clamps the position); -1 fails the seek.
//  2. A new held stream opens, the same one again with gapless and no
//     crossfade; with crossfade it fades in over 1000 ms.
//  3. The old stream: with crossfade, and no seek in the last four position
//     polls (seekGuard), fades out over 1000 ms and plays on by itself;
//     otherwise it is flushed (the reused stream) or removed.
//  4. The new handle is stored, seekGuard = 4, seekBase = the position, and
//     the thread prefills again. It never restarts.
//
// Stop: the stop flag first, then under outputLock the stream fades out and
// plays (crossfade), is removed, or inside Close is left alone for the next
// track; the handle is forgotten and the thread joined.
#include "playback/reader_decoder.h"

#include <algorithm>
#include <cstdlib>

#include "platform/text.h"
#include "playback/audio_output.h"
#include "playback/playback_settings.h"

namespace playback {
namespace {

constexpr std::size_t kTextUnits = kTrackTextUnits - 1;  // content of a 256-unit buffer
constexpr std::uint32_t kSeekFadeMs = 1000;
constexpr std::uint32_t kSeekGuardPolls = 4;

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
  stopFlag.store(1, std::memory_order_relaxed);
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
  std::uint32_t guard = seekGuard.load(std::memory_order_relaxed);
  while (guard != 0 && !seekGuard.compare_exchange_weak(guard, guard - 1, std::memory_order_relaxed)) {
  }
  const std::uint32_t rate = sampleRate.load(std::memory_order_relaxed);
  if (rate == 0 || threadOutput == nullptr) return 0;
  const std::uint64_t played = threadOutput->GetPlayedSamples(handle.load(std::memory_order_relaxed));
  return static_cast<std::uint32_t>(seekBase.load(std::memory_order_relaxed) + played * 1000 / rate);
}

bool ReaderDecoder::Seek(int positionMs) {
  if (state == kStateStopped || reader == nullptr) return false;
  std::lock_guard sourceGuard(sourceLock);
  std::lock_guard outputGuard(outputLock);
  if (loopEnded) return false;  // the track is running out; nothing would feed a new stream
  const int reached = reader->Seek(std::max(positionMs, 0));
  if (reached < 0) return false;
  const std::uint32_t rate = sampleRate.load(std::memory_order_relaxed);
  // Before the thread has opened its stream there is nothing to hand over.
  if (rate != 0 && threadOutput != nullptr) {
    PlaybackSettings& options = Playback();
    const bool crossfade = PlaybackSettings::Read(options.crossfade);
    const bool reuse = PlaybackSettings::Read(options.gapless) && !crossfade;
    const std::uint32_t old = handle.load(std::memory_order_relaxed);
    const std::uint32_t fresh =
        threadOutput->OpenStream(reuse ? 1 : 0, 1, rate, static_cast<int>(channels.load()), StreamCapacity());
    if (crossfade) threadOutput->SetStreamParam(fresh, kParamFadeInMs, kSeekFadeMs);
    if (crossfade && seekGuard.load(std::memory_order_relaxed) == 0) {
      threadOutput->ControlStream(old, kStreamFadeTail, kSeekFadeMs);
      threadOutput->ControlStream(old, kStreamPlay, 0);
    } else if (reuse) {
      threadOutput->FlushStream(old);
    } else {
      threadOutput->ControlStream(old, kStreamRemove, 0);
    }
    handle.store(fresh, std::memory_order_relaxed);
  }
  seekGuard.store(kSeekGuardPolls, std::memory_order_relaxed);
  seekBase.store(static_cast<std::uint32_t>(reached), std::memory_order_relaxed);
  prefilling = true;
  ++seekCount;
  return true;
}

void ReaderDecoder::Stop() {
  if (state == kStatePaused && output != nullptr) output->Pause(0);
  stopFlag.store(1, std::memory_order_relaxed);
  {
    std::lock_guard outputGuard(outputLock);
    const std::uint32_t current = handle.load(std::memory_order_relaxed);
    if (threadOutput != nullptr) {
      if (PlaybackSettings::Read(Playback().crossfade)) {
        // The old stream fades out by itself while the next track starts;
        // one still held in prefill is heard fading too.
        threadOutput->ControlStream(current, kStreamFadeTail, 0);
        threadOutput->ControlStream(current, kStreamPlay, 0);
      } else if (!closing) {
        threadOutput->ControlStream(current, kStreamRemove, 0);
      }
    }
    handle.store(kInvalidHandle, std::memory_order_relaxed);
  }
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
  stopFlag.store(0, std::memory_order_relaxed);
  threadOutput = output;
  threadNotify = notifyWindow;
  sampleRate.store(0, std::memory_order_relaxed);
  channels.store(0, std::memory_order_relaxed);
  loopEnded = false;
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

std::uint32_t ReaderDecoder::StreamCapacity() const {
  // Two seconds of samples; the queue itself refuses absurd sizes.
  const std::uint64_t capacity = static_cast<std::uint64_t>(sampleRate.load()) * channels.load() * 2;
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(capacity, 0xFFFFFFFFu));
}

}  // namespace playback
