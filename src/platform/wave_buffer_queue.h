// What every wave back-end shares: the buffers a device holds, in the order
// written, the thread that hands finished buffers back, and the gain.
//
// A back-end's consumer (the SDL audio call-back, or a pump thread) calls
// Take to copy queued audio out; buffers that Take uses up are marked done
// and the return thread delivers their call-backs in order, outside every
// lock. Take never allocates, logs or waits: it locks briefly, copies and
// wakes the return thread. A pump thread, which may wait, calls
// TakeAndReturn instead and delivers the call-backs itself: one thread less
// to wake for every buffer.
//
// Internal to src/platform: back-ends include it, nobody else.
#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/wave_out.h"

namespace platform {

class WaveBufferQueue {
 public:
  // Buffers a device holds at most, from Write until their call-back begins.
  static constexpr std::size_t kMaxBuffers = 64;

  WaveBufferQueue() = default;
  WaveBufferQueue(const WaveBufferQueue&) = delete;
  WaveBufferQueue& operator=(const WaveBufferQueue&) = delete;
  ~WaveBufferQueue();

  // Sees every sample a consumer takes, as played, before the buffers it
  // came from are returned. Called under the queue's lock.
  using Observer = void (*)(void* context, const std::int16_t* samples, std::size_t count);

  // Starts the return thread. `applyVolume` false leaves samples as written
  // (the capture device can record them untouched). `observer` may be null.
  bool Start(int channels, WaveDoneCallback done, void* context, bool applyVolume,
             Observer observer = nullptr, void* observerContext = nullptr);
  // Returns what is still queued, delivers every call-back still due and
  // ends the return thread. Never from inside a call-back.
  void Stop();

  bool Push(WaveBuffer* buffer);
  void SetPaused(bool paused);
  bool IsPaused() const;
  // Marks every queued buffer done, unplayed.
  void ReturnAll();
  void SetVolume(std::uint32_t packed) { volume.store(packed, std::memory_order_relaxed); }

  // Consumer side: copies up to `count` samples of queued audio into `out`
  // at the current gain and returns how many; 0 while paused. Buffers used
  // up on the way are marked done.
  std::size_t Take(std::int16_t* out, std::size_t count);
  // Take, then the call-backs of the buffers finished so far, on the calling
  // thread and in order, outside the lock. Not for a consumer that must not
  // wait: a call-back may take the owner's locks.
  std::size_t TakeAndReturn(std::int16_t* out, std::size_t count);
  // Samples left in the oldest queued buffer (0 when none is queued).
  std::size_t HeadSamples() const;
  std::size_t QueuedBuffers() const;
  std::uint64_t Pushes() const;  // buffers written since Start
  // Waits until Take would give something, at most `timeoutMs`.
  enum class Wait { kAudio, kIdle, kStopped };
  Wait WaitForAudio(int timeoutMs);
  // Waits until a buffer has been written since Pushes() gave `since`, at
  // most `timeoutMs`: kAudio when one has, kIdle when the time ran out.
  Wait WaitForPush(std::uint64_t since, int timeoutMs);
  // Makes every present and later WaitForAudio return kStopped.
  void StopConsumers();

 private:
  void ReturnLoop();
  // Take's work under the lock; `finishedAny` tells whether a buffer was
  // used up.
  std::size_t Consume(std::int16_t* out, std::size_t count, bool& finishedAny);
  // With `lock` held by `guard`: delivers the finished buffers in order,
  // dropping the lock around the call-backs, until none is left. Returns at
  // once while another thread delivers: that one goes on until none is left,
  // so it delivers these too.
  void DeliverFinished(std::unique_lock<std::mutex>& guard);
  // With `lock` held.
  void FinishHead();
  void CopyWithGain(std::int16_t* out, const std::int16_t* in, std::size_t count,
                    std::size_t outputIndex, std::uint32_t leftGain, std::uint32_t rightGain) const;

  WaveDoneCallback done = nullptr;
  void* context = nullptr;
  Observer observer = nullptr;
  void* observerContext = nullptr;
  int channels = 2;
  bool applyVolume = true;
  std::atomic<std::uint32_t> volume{kFullVolume};
  std::thread returner;

  // Guarded by `lock`.
  mutable std::mutex lock;
  std::condition_variable audioReady;    // consumers: audio queued, unpaused, or stop
  std::condition_variable returnsReady;  // the return thread: buffers finished, or stop
  std::array<WaveBuffer*, kMaxBuffers> queued{};
  std::size_t queuedFirst = 0;
  std::size_t queuedCount = 0;
  std::uint64_t pushCount = 0;  // buffers ever written
  std::size_t headOffset = 0;  // samples of the oldest queued buffer already played
  std::array<WaveBuffer*, kMaxBuffers> finished{};
  std::size_t finishedFirst = 0;
  std::size_t finishedCount = 0;
  bool delivering = false;  // a thread is inside DeliverFinished
  bool running = false;
  bool paused = false;
  bool stopping = false;
  bool consumersStopped = false;
};

// A thread that consumes a device's audio for the back-ends without a sound
// card: at real time in 10 ms chunks, or as fast as buffers arrive.
class WavePump {
 public:
  // Asked before each unpaced chunk, with the milliseconds it may wait for
  // its yes: one that says no must have waited that long (or until it
  // changed its mind), so the pump never spins. While it says no the pump
  // holds back, for a second at most (a safety net: it then plays on). With
  // it the pump also keeps in step with the writer (see AwaitFeed).
  using FeedReady = std::function<bool(int waitMs)>;
  static constexpr int kFeedWaitMs = 1000;
  static constexpr int kFeedLookMs = 1;

  WavePump() = default;
  WavePump(const WavePump&) = delete;
  WavePump& operator=(const WavePump&) = delete;
  ~WavePump() { Stop(); }

  bool Start(WaveBufferQueue& queue, std::uint32_t sampleRate, int channels, bool paced,
             FeedReady feedReady = {});
  // Stops consuming and joins the thread; `queue` must still exist.
  void Stop();

 private:
  void RunPaced();
  void RunUnpaced();
  bool AwaitFeed();

  WaveBufferQueue* queue = nullptr;
  std::uint32_t sampleRate = 0;
  int channels = 2;
  FeedReady ready;
  std::uint64_t pushesAtTake = 0;
  std::vector<std::int16_t> scratch;
  std::thread thread;
};

}  // namespace platform
