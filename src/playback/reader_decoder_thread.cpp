// ReaderDecoder: the decode thread. The protocols it follows are stated at
// the top of reader_decoder.cpp.
#include <algorithm>
#include <memory>
#include <new>

#include "platform/event.h"
#include "platform/message_target.h"
#include "playback/audio_output.h"
#include "playback/playback_settings.h"
#include "playback/reader_decoder.h"

namespace playback {
namespace {

constexpr std::uint32_t kMaxChannels = 2;
constexpr std::uint64_t kMaxBlockBytes = 65536;
constexpr std::uint32_t kNewTrackFadeMs = 2000;
constexpr std::uint32_t kSilenceThreshold = 500;
constexpr int kRoomPollMs = 100;
constexpr int kStopPollMs = 10;
constexpr int kDrainPollMs = 50;

}  // namespace

void ReaderDecoder::DecodeThread() {
  if (!StartStream()) return;
  // Half a second of 16-bit audio, or less.
  const std::uint64_t blockBytes = std::min<std::uint64_t>(
      static_cast<std::uint64_t>(channels.load()) * sampleRate.load(), kMaxBlockBytes);
  const auto blockSamples = static_cast<std::uint32_t>(blockBytes / 2);
  std::unique_ptr<std::int16_t[]> block(blockSamples == 0 ? nullptr
                                                          : new (std::nothrow) std::int16_t[blockSamples]);
  bool finished = false;
  if (block) DecodeLoop(block.get(), blockSamples, finished);
  {
    std::lock_guard outputGuard(outputLock);
    loopEnded = true;
    // A track shorter than the prefill starts here, at its end.
    if (prefilling) threadOutput->ControlStream(handle.load(std::memory_order_relaxed), kStreamPlay, 0);
  }
  if (finished && !StopRequested()) FinishTrack();
}

bool ReaderDecoder::StartStream() {
  std::lock_guard sourceGuard(sourceLock);
  std::lock_guard outputGuard(outputLock);
  // A stop that came before the thread got here must not leave a held stream behind.
  if (StopRequested() || threadOutput == nullptr) return false;
  std::uint32_t rate = 0;
  std::uint32_t count = 0;
  if (reader->GetFormat(&rate, &count) == 0) return false;
  sampleRate.store(rate, std::memory_order_relaxed);
  channels.store(std::min(count, kMaxChannels), std::memory_order_relaxed);

  PlaybackSettings& options = Playback();
  const bool crossfade = PlaybackSettings::Read(options.crossfade);
  const bool reuse = PlaybackSettings::Read(options.gapless) && !crossfade;
  const std::uint32_t opened =
      threadOutput->OpenStream(reuse ? 1 : 0, 1, rate, static_cast<int>(channels.load()), StreamCapacity());
  if (opened == kInvalidHandle) return false;
  handle.store(opened, std::memory_order_relaxed);
  if (crossfade) threadOutput->SetStreamParam(opened, kParamFadeInMs, kNewTrackFadeMs);
  if (PlaybackSettings::Read(options.trimSilence)) {
    threadOutput->SetStreamParam(opened, kParamSilenceThreshold, kSilenceThreshold);
  }
  seekGuard.store(0, std::memory_order_relaxed);
  prefilling = true;
  return true;
}

void ReaderDecoder::DecodeLoop(std::int16_t* block, std::uint32_t blockSamples, bool& finished) {
  for (;;) {
    std::uint32_t got = 0;
    std::uint32_t readAfterSeek = 0;
    {
      std::lock_guard sourceGuard(sourceLock);
      readAfterSeek = seekCount;
      if (reader->Read(block, blockSamples, &got) == 0 || got == 0) finished = true;
    }
    got = std::min(got, blockSamples);
    if (got == 0 || !WaitForQueueRoom(got, finished)) return;
    {
      std::lock_guard outputGuard(outputLock);
      if (StopRequested()) return;
      if (seekCount != readAfterSeek) {
        finished = false;  // the end that block met is no longer ahead
        continue;
      }
      const std::uint32_t current = handle.load(std::memory_order_relaxed);
      if (threadOutput->WriteStream(current, block, got) == 0) {
        finished = true;  // the stream has ended or gone: the end of the track
        return;
      }
      if (prefilling && threadOutput->QueuedSamples(current) >= threadOutput->QueueCapacity(current) >> 1) {
        threadOutput->ControlStream(current, kStreamPlay, 0);
        // Armed whether trimming is on or not: the player's way.
        threadOutput->SetStreamParam(current, kParamSilenceThreshold, kSilenceThreshold);
        prefilling = false;
      }
    }
    if (finished) return;
  }
}

bool ReaderDecoder::WaitForQueueRoom(std::uint32_t samples, bool& finished) {
  while (threadOutput->WaitForRoom(handle.load(std::memory_order_relaxed), samples) == 0) {
    bool alive = false;
    {
      std::lock_guard sourceGuard(sourceLock);
      std::lock_guard outputGuard(outputLock);
      alive = threadOutput->IsStreamAlive(handle.load(std::memory_order_relaxed));
    }
    if (!alive) {
      finished = true;  // a stream that died under the writer is the end of the track
      return false;
    }
    // Up to 100 ms, looking every 10 ms for a stop and for room: a device
    // that plays faster than real time (the capture device) is fed at once.
    for (int waited = 0; waited < kRoomPollMs; waited += kStopPollMs) {
      platform::SleepMs(kStopPollMs);
      if (StopRequested()) return false;
      if (threadOutput->WaitForRoom(handle.load(std::memory_order_relaxed), samples) != 0) break;
    }
  }
  return !StopRequested();
}

void ReaderDecoder::FinishTrack() {
  PlaybackSettings& options = Playback();
  const bool crossfade = PlaybackSettings::Read(options.crossfade);
  const bool gapless = PlaybackSettings::Read(options.gapless);
  const bool trimSilence = PlaybackSettings::Read(options.trimSilence);
  {
    std::lock_guard outputGuard(outputLock);
    if (StopRequested()) return;
    const std::uint32_t current = handle.load(std::memory_order_relaxed);
    if (trimSilence) {
      threadOutput->SetStreamParam(current, kParamSilenceThreshold, kSilenceThreshold);
      if (!gapless) threadOutput->WriteStream(current, nullptr, 0);  // the end mark trims the tail
    }
    if (crossfade) {
      threadOutput->ControlStream(current, kStreamFadeTail, 0);
    } else if (!gapless) {
      threadOutput->WriteStream(current, nullptr, 0);
    }
  }
  if (!crossfade && !gapless) WaitUntilDrained();
  std::lock_guard outputGuard(outputLock);
  if (!StopRequested() && threadNotify != nullptr) threadNotify->Post(kMessageTrackEnded, 0, 0);
}

void ReaderDecoder::WaitUntilDrained() {
  while (!StopRequested() && threadOutput->QueuedSamples(handle.load(std::memory_order_relaxed)) != 0) {
    platform::SleepMs(kDrainPollMs);
  }
}

}  // namespace playback
