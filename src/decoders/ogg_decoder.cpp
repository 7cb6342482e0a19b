// OggDecoder: the window thread's side. The decode thread is in
// ogg_decoder_pump.cpp, the texts of tags in ogg_decoder_tags.cpp.
//
// Seek, in a file that plays or is paused, to a time before the end:
//  1. Under sourceLock: sample = rate × ms ÷ 1000; Tremor moves to the page
//     that holds it (no decoding forward to the sample).
//  2. seekBase = where that page really begins, so the position display is
//     exact rather than the target.
//  3. The stream hand-over (StreamFeed step 6): a block read before the
//     seek is dropped, the new stream prefills. Nothing else is discarded
//     and the thread isn't restarted.
//
// Play waits for the thread to say that playback has begun, or for its end,
// whichever comes first; it succeeds only in the first case. A stream's
// thread says so at once, before it connects, so Play never waits for the
// network.
#include "decoders/ogg_decoder.h"

#include <algorithm>

#include "net/net_stream.h"
#include "platform/text.h"
#include "playback/audio_output.h"
#include "playback/byte_source.h"

namespace decoders {
namespace {

// The player never raised the priority of Ogg's decode thread.
constexpr int kOggThreadPriority = 3;
constexpr auto kRelaxed = std::memory_order_relaxed;

}  // namespace

OggDecoder::~OggDecoder() {
  feed.RequestStop();
  if (isStream && netStream != nullptr) netStream->Disconnect();
  thread.Join();
}

void OggDecoder::SetNetStream(net::NetStream* stream) {
  netStream = stream;
}

std::uint32_t OggDecoder::GetDuration() {
  const std::uint32_t rate = sampleRate.load(kRelaxed);
  if (!hasTrack.load(kRelaxed) || rate == 0) return 0;
  const double ms = static_cast<double>(totalSamples.load(kRelaxed)) / rate * 1000.0;
  return static_cast<std::uint32_t>(std::min(ms, 4294967295.0));
}

std::uint32_t OggDecoder::GetPosition() {
  const std::uint64_t played = feed.PlayedFrames();
  const std::uint32_t rate = sampleRate.load(kRelaxed);
  if (!hasTrack.load(kRelaxed) || rate == 0) return 0;
  const double ms = static_cast<double>(seekBase.load(kRelaxed) + played) * 1000.0 / rate;
  return static_cast<std::uint32_t>(std::min(ms, 4294967295.0));
}

bool OggDecoder::Seek(int positionMs) {
  if (isStream || state == playback::kStateStopped) return false;
  const int ms = std::max(positionMs, 0);
  if (static_cast<std::uint32_t>(ms) >= GetDuration()) return false;
  std::lock_guard guard(sourceLock);
  if (!handle) return false;
  const std::int64_t sample = static_cast<std::int64_t>(sampleRate.load(kRelaxed)) * ms / 1000;
  if (!handle->SeekPage(sample)) return false;
  const playback::StreamFeed::HandOverResult handOver = feed.HandOver();
  if (handOver == playback::StreamFeed::HandOverResult::kLoopEnded ||
      handOver == playback::StreamFeed::HandOverResult::kRefused) {
    return false;
  }
  seekBase.store(static_cast<std::uint64_t>(std::max<std::int64_t>(handle->Tell(), 0)), kRelaxed);
  return true;
}

void OggDecoder::Stop() {
  if (state == playback::kStatePaused && output != nullptr) output->Pause(0);
  watchUnderrun.store(false, kRelaxed);
  feed.Stop(closing);
  // A stream's thread may wait in the network: the client breaks that wait.
  if (isStream && netStream != nullptr) netStream->Disconnect();
  thread.Join();
  state = playback::kStateStopped;
  seekBase.store(0, kRelaxed);
}

// No lock: a stream's thread may hold sourceLock while it waits for data.
void OggDecoder::TogglePause() {
  if (!hasTrack.load(kRelaxed) && !isStream) return;
  if (state == playback::kStatePlaying) {
    state = playback::kStatePaused;
    if (output != nullptr) output->Pause(1);
    watchUnderrun.store(false, kRelaxed);
  } else if (state == playback::kStatePaused) {
    if (output != nullptr) output->Pause(0);
    watchUnderrun.store(true, kRelaxed);
    state = playback::kStatePlaying;
  }
}

bool OggDecoder::Play() {
  closing = false;
  if (state == playback::kStatePaused) {
    TogglePause();
    return true;
  }
  if (state != playback::kStateStopped) return false;
  if (isStream ? netStream == nullptr : !handle) return false;
  thread.Join();  // before the fields an old thread read change
  threadNotify = notifyWindow;
  seekBase.store(0, kRelaxed);
  feed.Arm(output);
  const bool begun = isStream ? thread.Start([this] { StreamPump(); }, kOggThreadPriority)
                              : thread.Start([this] { FilePump(); }, kOggThreadPriority);
  if (!begun) return false;
  state = playback::kStatePlaying;
  return true;
}

void OggDecoder::Close() {
  closing = true;
  Stop();
  closing = false;
  {
    std::lock_guard guard(sourceLock);
    handle.reset();
    if (sourceOpen && source != nullptr) source->Close();
    sourceOpen = false;
  }
  hasTrack.store(false, kRelaxed);
  isStream = false;
  path.clear();
}

bool OggDecoder::Open(const std::string& newPath) {
  if (hasTrack.load(kRelaxed) || isStream || thread.Joinable()) Close();
  closing = false;
  if (platform::StartsWithIgnoreCase(newPath, "http://")) {
    if (netStream == nullptr || !netStream->SetUrl(newPath)) return false;
    isStream = true;
    path = newPath;
    return true;
  }
  if (source == nullptr || source->Open(newPath.c_str()) == 0) return false;
  std::unique_ptr<OggHandle> opened = OggHandle::OpenSource(*source);
  OggStreamInfo info;
  const std::int64_t total = opened ? opened->Total() : 0;
  if (!opened || total <= 0 || !opened->Info(info)) {
    opened.reset();
    source->Close();
    return false;
  }
  OggTags openedTags = opened->ReadTags();
  {
    std::lock_guard guard(sourceLock);
    handle = std::move(opened);
    sourceOpen = true;
  }
  {
    std::lock_guard guard(infoLock);
    tags = std::move(openedTags);
  }
  sampleRate.store(info.sampleRate, kRelaxed);
  channels.store(info.channels, kRelaxed);
  bitrate.store(info.bitrate, kRelaxed);
  totalSamples.store(static_cast<std::uint64_t>(total), kRelaxed);
  seekBase.store(0, kRelaxed);
  path = newPath;
  hasTrack.store(true, kRelaxed);
  return true;
}

}  // namespace decoders
