#include "feed_gate.h"

#include "playback/audio_mixer.h"
#include "playback/audio_output.h"

namespace render {

void FeedGate::Watch(playback::AudioOutput* output) {
  std::lock_guard guard(lock);
  watched = output;
  lastMove = Clock::now();
}

bool FeedGate::Ready(int waitMs) {
  // Held through the wait, so the output can't go meanwhile (see Watch).
  std::lock_guard guard(lock);
  if (watched == nullptr || watched->StreamCount() == 0) return true;
  const std::uint32_t newest = watched->NewestHandle();
  if (newest == playback::kInvalidHandle || Look(newest)) return true;
  // A block queued, or the end of the stream, wakes the wait.
  if (watched->WaitForQueuedSamples(newest, playback::kBlockSamples, waitMs)) return true;
  return Look(newest);
}

bool FeedGate::Look(std::uint32_t newest) {
  const std::uint32_t queued = watched->QueuedSamples(newest);
  const Clock::time_point now = Clock::now();
  if (newest != lastHandle || queued != lastQueued) {
    lastHandle = newest;
    lastQueued = queued;
    lastMove = now;
  }
  return queued >= playback::kBlockSamples || now - lastMove >= kSettleMs;
}

}  // namespace render
