#include "feed_gate.h"

#include "playback/audio_mixer.h"
#include "playback/audio_output.h"

namespace render {

void FeedGate::Watch(playback::AudioOutput* output) {
  std::lock_guard guard(lock);
  watched = output;
  lastMove = Clock::now();
}

bool FeedGate::Ready() {
  std::lock_guard guard(lock);
  if (watched == nullptr || watched->StreamCount() == 0) return true;
  const std::uint32_t newest = watched->LastHandle();
  if (newest == playback::kInvalidHandle) return true;
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
