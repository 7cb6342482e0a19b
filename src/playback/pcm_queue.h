// The hand-off buffer of one audio stream.
//
// A decode thread writes 16-bit samples at its own pace; the mixing thread of
// the AudioOutput reads fixed blocks. On the way the queue shapes the track:
// it trims silence at both ends and applies fades, on samples that are still
// queued and not yet mixed.
//
// The queue is linear, not a ring: samples lie from the start of one block and
// a read moves the rest down, so that trimming and fades work on plain indices.
//
// Counts are counts of 16-bit values: a stereo frame is two samples, and two
// seconds of 44100 Hz stereo are 176400 samples.
//
// Threads: one writer (a decode thread) and one reader (a mixing thread);
// SetParam and the tail operations come from either side or from the window
// thread. `lock` guards the sample block; the words that the waits read
// without it are relaxed atomics. A Read waiting for data and a wait for the
// queue to drain sleep on conditions that the other side signals, with the
// same time limits as a reader that slept and looked every 10 ms; a Write
// waiting for room polls. A waiting Read is woken once two blocks are queued
// (or the end, or an abort) and otherwise finds its block at its next 10 ms
// look, as a polling reader would: a reader that outruns its writer then
// sleeps once per two blocks, not once per block.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>

namespace playback {

class PcmQueue {
 public:
  // `marker` holds this while the object lives; AudioOutput tests it before
  // it destroys a queue.
  static constexpr std::uint32_t kLiveMarker = 0xdeadbabe;
  // Silence threshold meaning "trimming off".
  static constexpr std::uint32_t kTrimOff = 0xFFFFFFFF;
  // The largest block Allocate agrees to make: far beyond two seconds at any
  // real sample rate, and still a sane amount of memory (32 MB).
  static constexpr std::uint32_t kMaxCapacity = 1u << 24;

  // SetParam operations.
  enum Param : int {
    kFadeIn = 5,            // fade in over `value` samples of what is written next
    kFadeOut = 7,           // fade out over `value` samples of what is written next
    kSilenceThreshold = 8,  // magnitude that counts as sound; kTrimOff turns trimming off
    kResetOnWrite = 9,      // non-zero: the next Write first drops all that is queued
  };

  PcmQueue();
  PcmQueue(const PcmQueue&) = delete;
  PcmQueue& operator=(const PcmQueue&) = delete;
  // Clears the marker and frees the block. Whoever shares the queue keeps it
  // alive while inside an operation, so nobody is blocked in it here.
  virtual ~PcmQueue();

  // Makes a new cleared block of `capacity` samples, dropping any old one,
  // and clears `ended`, the fill and the underrun strikes. 0 on failure, and
  // then every later read and write fails.
  int Allocate(std::uint32_t capacity);

  // Queues up to `capacity` samples of `source`, waiting for room; `written`
  // gets the count taken, which includes samples trimmed as leading silence.
  // A count of 0 marks the end of the stream and trims the tail; it returns 0.
  // Returns 1 on success, 0 when the queue has ended, aborted or has no block.
  int Write(const std::int16_t* source, std::uint32_t count, std::uint32_t& written);

  // Takes up to `wanted` samples, waiting (10 ms polls) for a whole block as
  // long as the stream has not ended. A wait past one second counts an
  // underrun strike, and every further poll of that call another; the fourth
  // strike in the queue's life ends the stream. `got` is the count taken.
  // Returns 1 if anything came or the stream is still open, 0 when it has
  // ended and is empty, or on abort.
  int Read(std::int16_t* destination, std::uint32_t wanted, std::uint32_t& got);

  // Ends the stream and fades what is queued (cut to `limit` samples when
  // that is not 0 and shorter) linearly down to zero.
  void FadeOutTail(std::uint32_t limit);

  // See Param; other operations are ignored.
  void SetParam(int operation, std::uint32_t value);

  // Drops trailing samples below the silence threshold, together with the
  // last sample that reaches it. A queue of only silence keeps its fill.
  void TrimTail();

  std::uint32_t Fill() const { return fill.load(std::memory_order_relaxed); }
  std::uint32_t Capacity() const { return capacity.load(std::memory_order_relaxed); }
  void Clear();

  // Makes every blocked and later Read and Write return 0.
  void Abort() {
    aborted.store(1, std::memory_order_relaxed);
    WakeWaiters();
  }
  // Waits until nothing is queued or the queue is aborted, at most
  // `timeoutMs`; true when either has come.
  bool WaitUntilEmpty(int timeoutMs);
  // Waits until `wanted` samples are queued, the queue has ended or is
  // aborted, at most `timeoutMs`; true when one of them has come (a Read of
  // `wanted` samples would not wait then).
  bool WaitForSamples(std::uint32_t wanted, int timeoutMs);
  std::uint32_t Marker() const { return marker.load(std::memory_order_relaxed); }
  bool IsEnded() const { return ended.load(std::memory_order_relaxed) != 0; }
  std::uint32_t UnderrunStrikes() const { return underrunStrikes.load(std::memory_order_relaxed); }
  // Samples dropped as leading silence so far; statistics only.
  std::uint32_t TrimmedSamples() const { return trimmedSamples.load(std::memory_order_relaxed); }

 private:
  // Write without the waiters' wake.
  int Store(const std::int16_t* source, std::uint32_t count, std::uint32_t& written);
  // With `lock` held: drops leading silence from the `count` new samples at
  // `first`; returns how many new samples are left there.
  std::uint32_t TrimLeadingSilence(std::int16_t* first, std::uint32_t count);
  // With `lock` held: the fades on the `count` new samples at `first`.
  void ApplyFadeOut(std::int16_t* first, std::uint32_t count);
  void ApplyFadeIn(std::int16_t* first, std::uint32_t count);
  // TrimTail with `lock` held.
  void TrimTailLocked();
  // FadeOutTail without the waiters' wake.
  void FadeQueued(std::uint32_t limit);
  // Scales `count` samples by gain / 256.
  static void Scale(std::int16_t* first, std::uint32_t count, std::uint32_t gain);
  // Waits until `wanted` samples are queued, the queue has ended or is
  // aborted, or `until` has come; true for all but the last. A writer wakes
  // it once `wakeAt` (at least `wanted`) samples are queued.
  bool WaitForData(std::uint32_t wanted, std::uint32_t wakeAt, std::chrono::steady_clock::time_point until);
  // The fill at which a writer wakes a Read waiting for `wanted` samples.
  std::uint32_t ReadWakeLevel(std::uint32_t wanted) const;
  // Wakes the waits whose condition now holds; called after fill, ended or
  // aborted changed. Cheap when nobody waits: no wake is sent in vain.
  void WakeWaiters();

  std::atomic<std::uint32_t> aborted{0};
  std::atomic<std::uint32_t> marker{kLiveMarker};

  // Guarded by `lock`: the contents of `samples`. `samples` itself changes
  // only in Allocate, before the queue is shared.
  std::mutex lock;
  std::unique_ptr<std::int16_t[]> samples;

  // A wait for data sleeps on `dataArrived`, a wait for the drain on
  // `emptied`. Each states what it waits for under `waitLock`, and whoever
  // changes the queue looks at that under `waitLock` after the change, so a
  // wake can't fall between a waiter's test and its sleep.
  std::mutex waitLock;
  std::condition_variable dataArrived;
  std::condition_variable emptied;
  // Guarded by waitLock.
  int dataWaiters = 0;
  std::uint32_t dataWakeAt = 0;  // the smallest fill that wakes a waiter for data
  int drainWaiters = 0;

  std::atomic<std::uint32_t> capacity{0};
  std::atomic<std::uint32_t> fill{0};  // changed under `lock`, polled without it
  std::atomic<std::uint32_t> ended{0};

  // The fade and trim state. Set by SetParam, used by Write under `lock`.
  std::atomic<std::uint32_t> fadeInLeft{0};
  std::atomic<std::uint32_t> fadeOutLeft{0};
  std::atomic<std::uint32_t> gain{0};        // 0 to 256; 256 is unity
  std::atomic<std::uint32_t> stepLength{0};  // samples per gain step
  std::atomic<std::uint32_t> stepDone{0};    // samples done in the current step
  std::atomic<std::uint32_t> silenceThreshold{kTrimOff};
  std::atomic<std::uint32_t> soundFound{0};

  std::atomic<std::uint32_t> underrunStrikes{0};
  std::atomic<std::uint32_t> trimmedSamples{0};
  std::atomic<std::uint32_t> resetOnWrite{0};
};

}  // namespace playback
