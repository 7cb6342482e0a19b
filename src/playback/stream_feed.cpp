#include "playback/stream_feed.h"

#include <algorithm>

#include "platform/event.h"
#include "platform/message_target.h"
#include "playback/audio_output.h"
#include "playback/media_decoder.h"
#include "playback/playback_settings.h"

namespace playback {
namespace {

constexpr std::uint32_t kNewTrackFadeMs = 2000;
constexpr std::uint32_t kSeekFadeMs = 1000;
constexpr std::uint32_t kSeekGuardPolls = 4;
constexpr std::uint32_t kSilenceThreshold = 500;
constexpr int kLongestRoomPollMs = 10;
constexpr int kDrainPollMs = 50;
constexpr auto kRelaxed = std::memory_order_relaxed;

struct Options {
  bool crossfade;
  bool gapless;
  bool trimSilence;
  // The stream of the last track is taken over only in gapless play.
  bool Reuse() const { return gapless && !crossfade; }
};

Options ReadOptions() {
  PlaybackSettings& settings = Playback();
  return {PlaybackSettings::Read(settings.crossfade), PlaybackSettings::Read(settings.gapless),
          PlaybackSettings::Read(settings.trimSilence)};
}

}  // namespace

void StreamFeed::Arm(AudioOutput* target) {
  output = target;
  prefilling = false;
  loopEnded = false;
  startAfterFade = false;
  handle.store(kInvalidHandle, kRelaxed);
  sampleRate.store(0, kRelaxed);
  channels.store(0, kRelaxed);
  capacity.store(0, kRelaxed);
  seekGuard.store(0, kRelaxed);
  stopFlag.store(0, kRelaxed);
}

std::uint32_t StreamFeed::OpenHeldStream(bool reuse) const {
  return output->OpenStream(reuse ? 1 : 0, 1, sampleRate.load(kRelaxed),
                            static_cast<int>(channels.load(kRelaxed)), capacity.load(kRelaxed));
}

bool StreamFeed::OpenStream(std::uint32_t rate, std::uint32_t count) {
  std::lock_guard guard(outputLock);
  // A stop that came before the thread got here must not leave a held stream behind.
  if (StopRequested() || output == nullptr) return false;
  sampleRate.store(rate, kRelaxed);
  channels.store(count, kRelaxed);
  const std::uint64_t twoSeconds = static_cast<std::uint64_t>(rate) * count * 2;
  capacity.store(static_cast<std::uint32_t>(std::min<std::uint64_t>(twoSeconds, 0xFFFFFFFFu)), kRelaxed);

  const Options options = ReadOptions();
  const std::uint32_t opened = OpenHeldStream(options.Reuse());
  if (opened == kInvalidHandle) return false;
  handle.store(opened, kRelaxed);
  if (options.crossfade) output->SetStreamParam(opened, kParamFadeInMs, kNewTrackFadeMs);
  if (options.trimSilence) output->SetStreamParam(opened, kParamSilenceThreshold, kSilenceThreshold);
  seekGuard.store(0, kRelaxed);
  prefilling = true;
  return true;
}

bool StreamFeed::WaitForRoom(std::uint32_t samples, std::uint32_t headroom) {
  const std::uint64_t wanted = static_cast<std::uint64_t>(samples) + headroom;
  int pollMs = 1;
  for (;;) {
    if (StopRequested()) return false;
    const std::uint64_t level = output->QueuedSamples(handle.load(kRelaxed));
    if (level == 0 || level + wanted <= capacity.load(kRelaxed)) return true;
    platform::SleepMs(pollMs);
    pollMs = std::min(pollMs * 2, kLongestRoomPollMs);
  }
}

StreamFeed::WriteResult StreamFeed::WriteSamples(const std::int16_t* samples, std::uint32_t count,
                                                 std::uint32_t seekStamp) {
  std::lock_guard guard(outputLock);
  if (StopRequested()) return WriteResult::kStopped;
  if (seekStamp != seekCount.load(kRelaxed)) return WriteResult::kStale;
  const std::uint32_t current = handle.load(kRelaxed);
  if (output->WriteStream(current, samples, count) == 0) return WriteResult::kFailed;
  if (prefilling && output->QueuedSamples(current) >= output->QueueCapacity(current) >> 1) {
    output->ControlStream(current, kStreamPlay, 0);
    // Armed whether trimming is on or not: the player's way.
    output->SetStreamParam(current, kParamSilenceThreshold, kSilenceThreshold);
    prefilling = false;
  }
  return WriteResult::kWritten;
}

void StreamFeed::EndLoop() {
  std::lock_guard guard(outputLock);
  loopEnded = true;
  // A track shorter than the prefill starts at its end. With crossfade it
  // starts only once FinishTrack has faded it: a playing stream short of a
  // block keeps the mixer waiting for more inside the stream lock, which the
  // fade needs, until the underrun rule has ended the stream and dropped it.
  if (prefilling && output != nullptr) {
    if (ReadOptions().crossfade) {
      startAfterFade = true;
    } else {
      output->ControlStream(handle.load(kRelaxed), kStreamPlay, 0);
    }
  }
  prefilling = false;
}

void StreamFeed::HoldForPrefill() {
  std::lock_guard guard(outputLock);
  const std::uint32_t current = handle.load(kRelaxed);
  if (StopRequested() || output == nullptr || current == kInvalidHandle || prefilling || loopEnded) return;
  output->ControlStream(current, kStreamHold, 0);
  prefilling = true;
}

void StreamFeed::FinishTrack(platform::MessageTarget* notify) {
  const Options options = ReadOptions();
  {
    std::lock_guard guard(outputLock);
    if (StopRequested() || output == nullptr) return;
    const std::uint32_t current = handle.load(kRelaxed);
    if (options.trimSilence) {
      output->SetStreamParam(current, kParamSilenceThreshold, kSilenceThreshold);
      if (!options.gapless) output->WriteStream(current, nullptr, 0);  // the end mark trims the tail
    }
    if (options.crossfade) {
      output->ControlStream(current, kStreamFadeTail, 0);
    } else if (!options.gapless) {
      output->WriteStream(current, nullptr, 0);
    }
    if (startAfterFade) output->ControlStream(current, kStreamPlay, 0);
    startAfterFade = false;
  }
  if (!options.crossfade && !options.gapless) WaitUntilDrained();
  std::lock_guard guard(outputLock);
  if (!StopRequested() && notify != nullptr) notify->Post(kMessageTrackEnded, 0, 0);
}

// Looks at the level at least every 50 ms; the mixer's taking of the last
// samples (or the stream's removal) ends a look at once.
void StreamFeed::WaitUntilDrained() {
  for (;;) {
    const std::uint32_t current = handle.load(kRelaxed);
    if (StopRequested() || output->QueuedSamples(current) == 0) return;
    output->WaitForEmptyQueue(current, kDrainPollMs);
  }
}

StreamFeed::HandOverResult StreamFeed::HandOver() {
  std::lock_guard guard(outputLock);
  if (loopEnded) return HandOverResult::kLoopEnded;
  HandOverResult result = HandOverResult::kNoStream;
  if (sampleRate.load(kRelaxed) != 0 && output != nullptr) {
    const Options options = ReadOptions();
    const std::uint32_t old = handle.load(kRelaxed);
    const std::uint32_t fresh = OpenHeldStream(options.Reuse());
    if (fresh == kInvalidHandle) return HandOverResult::kRefused;
    if (options.crossfade) output->SetStreamParam(fresh, kParamFadeInMs, kSeekFadeMs);
    if (options.crossfade && seekGuard.load(kRelaxed) == 0) {
      output->ControlStream(old, kStreamFadeTail, kSeekFadeMs);
      output->ControlStream(old, kStreamPlay, 0);
    } else if (options.Reuse()) {
      output->FlushStream(old);
    } else if (fresh != old) {
      output->ControlStream(old, kStreamRemove, 0);
    }
    handle.store(fresh, kRelaxed);
    result = HandOverResult::kHandedOver;
  }
  seekGuard.store(kSeekGuardPolls, kRelaxed);
  prefilling = true;
  seekCount.fetch_add(1, kRelaxed);
  return result;
}

void StreamFeed::Stop(bool closing) {
  stopFlag.store(1, kRelaxed);
  std::lock_guard guard(outputLock);
  const std::uint32_t current = handle.load(kRelaxed);
  if (output != nullptr) {
    if (ReadOptions().crossfade) {
      // The old stream fades out by itself while the next track starts.
      output->ControlStream(current, kStreamFadeTail, 0);
      output->ControlStream(current, kStreamPlay, 0);
    } else if (!closing) {
      output->ControlStream(current, kStreamRemove, 0);
    } else if (prefilling) {
      // Closed while still held in its prefill (an end-of-track message
      // that came after the user had moved on closes the track that
      // followed): it starts, as the end of a short track starts it, and
      // plays out what it has instead of waiting held for ever.
      output->ControlStream(current, kStreamPlay, 0);
    }
  }
  handle.store(kInvalidHandle, kRelaxed);
}

std::uint32_t StreamFeed::PlayedFrames() {
  std::uint32_t guard = seekGuard.load(kRelaxed);
  while (guard != 0 && !seekGuard.compare_exchange_weak(guard, guard - 1, kRelaxed)) {
  }
  if (output == nullptr) return 0;
  return output->GetPlayedSamples(handle.load(kRelaxed));
}

}  // namespace playback
