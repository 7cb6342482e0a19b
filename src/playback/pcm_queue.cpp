#include "playback/pcm_queue.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

#include "platform/event.h"

namespace playback {
namespace {

constexpr int kPollMs = 10;
// Polls of one Read after which each further poll is an underrun strike.
constexpr int kPollsBeforeStrike = 100;
// Strikes a queue survives; the next one ends it.
constexpr std::uint32_t kStrikesTolerated = 3;
constexpr std::uint32_t kUnityGain = 256;

constexpr auto kRelaxed = std::memory_order_relaxed;

// Magnitude of a sample as the unsigned value the threshold is compared with.
std::uint32_t Magnitude(std::int16_t sample) {
  const int value = sample;
  return static_cast<std::uint32_t>(value < 0 ? -value : value);
}

}  // namespace

PcmQueue::PcmQueue() = default;

PcmQueue::~PcmQueue() {
  // Every reader and writer holds the queue through its owner while inside
  // it, so nobody is left to notice: no courtesy wait is needed.
  marker.store(0, kRelaxed);
  aborted.store(1, kRelaxed);
}

int PcmQueue::Allocate(std::uint32_t newCapacity) {
  std::lock_guard guard(lock);
  samples.reset();
  capacity.store(0, kRelaxed);
  if (newCapacity > kMaxCapacity) return 0;
  samples.reset(new (std::nothrow) std::int16_t[newCapacity]());
  if (!samples) return 0;
  ended.store(0, kRelaxed);
  fill.store(0, kRelaxed);
  underrunStrikes.store(0, kRelaxed);
  capacity.store(newCapacity, kRelaxed);
  return 1;
}

bool PcmQueue::WaitForData(std::uint32_t wanted, std::uint32_t wakeAt,
                           std::chrono::steady_clock::time_point until) {
  std::unique_lock guard(waitLock);
  dataWakeAt = dataWaiters++ == 0 ? wakeAt : std::min(dataWakeAt, wakeAt);
  const bool came = dataArrived.wait_until(
      guard, until, [&] { return wanted <= Fill() || IsEnded() || aborted.load(kRelaxed) != 0; });
  if (--dataWaiters == 0) dataWakeAt = 0;
  return came;
}

bool PcmQueue::WaitForSamples(std::uint32_t wanted, int timeoutMs) {
  return WaitForData(wanted, wanted, std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs));
}

std::uint32_t PcmQueue::ReadWakeLevel(std::uint32_t wanted) const {
  // Two blocks, as long as they fit in half the queue: a small queue (8000
  // Hz mono) is woken at its one block, or its writer could stop short of
  // the level and leave every block to the reader's looks.
  const std::uint32_t twice = wanted > kMaxCapacity ? wanted : 2 * wanted;
  return std::max(wanted, std::min(twice, Capacity() / 2));
}

bool PcmQueue::WaitUntilEmpty(int timeoutMs) {
  std::unique_lock guard(waitLock);
  ++drainWaiters;
  const bool done = emptied.wait_for(guard, std::chrono::milliseconds(timeoutMs),
                                     [&] { return Fill() == 0 || aborted.load(kRelaxed) != 0; });
  --drainWaiters;
  return done;
}

void PcmQueue::WakeWaiters() {
  std::lock_guard guard(waitLock);
  const bool quit = aborted.load(kRelaxed) != 0;
  // A writer wakes a reader only once the level it waits for is there: one
  // wake per block or two instead of one per write.
  if (dataWaiters != 0 && (quit || IsEnded() || dataWakeAt <= Fill())) dataArrived.notify_all();
  if (drainWaiters != 0 && (quit || Fill() == 0)) emptied.notify_all();
}

int PcmQueue::Read(std::int16_t* destination, std::uint32_t wanted, std::uint32_t& got) {
  if (!samples) return 0;
  int polls = 0;
  // The wait is counted in 10 ms polls of the clock, as a reader that slept
  // and looked would count them; a write wakes it once two blocks are there,
  // and a look takes the one block it wants.
  auto pollEnd = std::chrono::steady_clock::now() + std::chrono::milliseconds(kPollMs);
  const std::uint32_t wakeAt = ReadWakeLevel(wanted);
  while (wanted > Fill() && !IsEnded()) {
    if (aborted.load(kRelaxed)) return 0;
    WaitForData(wanted, wakeAt, pollEnd);
    if (std::chrono::steady_clock::now() < pollEnd) continue;
    pollEnd += std::chrono::milliseconds(kPollMs);
    // The count is not reset: past the first second every poll is a strike.
    if (++polls > kPollsBeforeStrike) {
      got = 0;
      if (underrunStrikes.fetch_add(1, kRelaxed) + 1 > kStrikesTolerated) {
        ended.store(1, kRelaxed);
        return 0;
      }
    }
  }
  std::unique_lock guard(lock);
  const std::uint32_t held = fill.load(kRelaxed);
  const std::uint32_t taken = std::min(wanted, held);
  std::memcpy(destination, samples.get(), taken * sizeof(std::int16_t));
  std::memmove(samples.get(), samples.get() + taken, (held - taken) * sizeof(std::int16_t));
  fill.store(held - taken, kRelaxed);
  got = taken;
  guard.unlock();
  if (held == taken) WakeWaiters();  // drained
  if (taken != 0) return 1;
  return IsEnded() ? 0 : 1;
}

int PcmQueue::Write(const std::int16_t* source, std::uint32_t count, std::uint32_t& written) {
  const int result = Store(source, count, written);
  WakeWaiters();
  return result;
}

int PcmQueue::Store(const std::int16_t* source, std::uint32_t count, std::uint32_t& written) {
  if (!samples) return 0;
  if (count == 0) {
    // The trim and the end in one hold of the lock: a reader that sees the
    // end must not take the tail before it is trimmed.
    std::lock_guard guard(lock);
    TrimTailLocked();
    ended.store(1, kRelaxed);
    return 0;
  }
  if (!source) return 0;
  std::uint32_t taken = std::min(count, Capacity());
  if (resetOnWrite.load(kRelaxed)) {
    // The seam of a gapless hand-over: what the previous track left queued
    // is dropped here.
    std::lock_guard guard(lock);
    resetOnWrite.store(0, kRelaxed);
    fill.store(0, kRelaxed);
  }
  while (Fill() + taken > Capacity()) {
    if (aborted.load(kRelaxed)) return 0;
    platform::SleepMs(kPollMs);
  }

  std::lock_guard guard(lock);
  if (IsEnded()) return 0;
  const std::uint32_t start = fill.load(kRelaxed);
  std::int16_t* first = samples.get() + start;
  std::memcpy(first, source, taken * sizeof(std::int16_t));
  fill.store(start + taken, kRelaxed);
  written = taken;

  if (silenceThreshold.load(kRelaxed) != kTrimOff && !soundFound.load(kRelaxed)) {
    taken = TrimLeadingSilence(first, taken);
  }
  if (fadeOutLeft.load(kRelaxed)) {
    ApplyFadeOut(first, taken);
  } else if (fadeInLeft.load(kRelaxed)) {
    ApplyFadeIn(first, taken);
  }
  return 1;
}

std::uint32_t PcmQueue::TrimLeadingSilence(std::int16_t* first, std::uint32_t count) {
  const std::uint32_t threshold = silenceThreshold.load(kRelaxed);
  std::uint32_t index = 0;
  while (index < count && Magnitude(first[index]) < threshold) ++index;
  if (index == count) {
    // Only silence: the whole chunk goes, though the writer was told it was taken.
    fill.store(fill.load(kRelaxed) - count, kRelaxed);
    trimmedSamples.fetch_add(count, kRelaxed);
    return 0;
  }
  soundFound.store(1, kRelaxed);
  index += index & 1;  // keep stereo pairs together
  if (index == 0) return count;
  std::memmove(first, first + index, (count - index) * sizeof(std::int16_t));
  fill.store(fill.load(kRelaxed) - index, kRelaxed);
  return count - index;
}

void PcmQueue::Scale(std::int16_t* first, std::uint32_t count, std::uint32_t gainValue) {
  const int factor = static_cast<int>(gainValue);
  for (std::uint32_t i = 0; i < count; ++i) {
    first[i] = static_cast<std::int16_t>((factor * first[i]) >> 8);
  }
}

void PcmQueue::ApplyFadeOut(std::int16_t* first, std::uint32_t count) {
  const std::uint32_t length = std::min(count, fadeOutLeft.load(kRelaxed));
  fadeOutLeft.store(fadeOutLeft.load(kRelaxed) - length, kRelaxed);
  std::uint32_t current = gain.load(kRelaxed);
  std::uint32_t done = stepDone.load(kRelaxed);
  const std::uint32_t step = stepLength.load(kRelaxed);
  std::uint32_t position = 0;
  bool complete = false;
  while (position < length) {
    if (step <= done) {  // this step is used up
      if (current <= 1) {
        current = 0;
        complete = true;
        break;
      }
      --current;
      done = 0;
      continue;
    }
    const std::uint32_t run = std::min(step - done, length - position);
    Scale(first + position, run, current);
    done += run;
    position += run;
  }
  gain.store(current, kRelaxed);
  stepDone.store(done, kRelaxed);
  if (complete) {
    // A fade-out that runs to its end also ends the stream.
    fadeOutLeft.store(0, kRelaxed);
    ended.store(1, kRelaxed);
    std::fill(first + position, first + length, std::int16_t{0});
    fill.store(static_cast<std::uint32_t>(first - samples.get()) + position, kRelaxed);
  }
}

void PcmQueue::ApplyFadeIn(std::int16_t* first, std::uint32_t count) {
  const std::uint32_t length = std::min(count, fadeInLeft.load(kRelaxed));
  fadeInLeft.store(fadeInLeft.load(kRelaxed) - length, kRelaxed);
  std::uint32_t current = gain.load(kRelaxed);
  std::uint32_t done = stepDone.load(kRelaxed);
  const std::uint32_t step = stepLength.load(kRelaxed);
  std::uint32_t position = 0;
  while (position < length) {
    if (step <= done) {
      ++current;
      done = 0;
      if (current >= kUnityGain) {
        fadeInLeft.store(0, kRelaxed);  // the rest stays at unity
        break;
      }
      continue;
    }
    const std::uint32_t run = std::min(step - done, length - position);
    Scale(first + position, run, current);
    done += run;
    position += run;
  }
  gain.store(current, kRelaxed);
  stepDone.store(done, kRelaxed);
}

void PcmQueue::FadeOutTail(std::uint32_t limit) {
  if (!samples) return;
  FadeQueued(limit);
  WakeWaiters();
}

void PcmQueue::FadeQueued(std::uint32_t limit) {
  // The caller holds the output's stream lock, which keeps the reader out;
  // the queue's own lock keeps a writer that is still running out as well.
  std::lock_guard guard(lock);
  ended.store(1, kRelaxed);
  std::uint32_t held = fill.load(kRelaxed);
  if (limit != 0 && limit < held) {
    held = limit;
    fill.store(held, kRelaxed);
  }
  const std::uint32_t total = capacity.load(kRelaxed);
  const std::uint32_t step = held / 256;
  std::int16_t* block = samples.get();
  std::uint32_t position = 0;
  // Runs at gains 256 down to 0, then silence up to the end of the block.
  for (std::uint32_t current = kUnityGain; step != 0; --current) {
    const std::uint32_t run = std::min(step, total - position);
    Scale(block + position, run, current);
    position += run;
    if (current == 0) break;
  }
  std::fill(block + position, block + total, std::int16_t{0});
}

void PcmQueue::SetParam(int operation, std::uint32_t value) {
  switch (operation) {
    case kFadeIn: {
      std::lock_guard guard(lock);
      fadeInLeft.store(value, kRelaxed);
      gain.store(0, kRelaxed);
      stepLength.store(value >> 8, kRelaxed);
      stepDone.store(0, kRelaxed);
      if (value != 0) fadeOutLeft.store(0, kRelaxed);
      break;
    }
    case kFadeOut: {
      std::lock_guard guard(lock);
      fadeOutLeft.store(value, kRelaxed);
      gain.store(kUnityGain, kRelaxed);
      stepLength.store(value >> 8, kRelaxed);
      stepDone.store(0, kRelaxed);
      if (value != 0) fadeInLeft.store(0, kRelaxed);
      break;
    }
    case kSilenceThreshold:
      silenceThreshold.store(value, kRelaxed);
      soundFound.store(0, kRelaxed);
      break;
    case kResetOnWrite:
      resetOnWrite.store(value != 0 ? 1 : 0, kRelaxed);
      break;
    default:
      break;
  }
}

void PcmQueue::TrimTail() {
  if (!samples) return;
  std::lock_guard guard(lock);
  TrimTailLocked();
}

void PcmQueue::TrimTailLocked() {
  const std::uint32_t threshold = silenceThreshold.load(kRelaxed);
  if (threshold == kTrimOff) return;
  for (std::uint32_t index = fill.load(kRelaxed); index-- > 0;) {
    if (Magnitude(samples[index]) >= threshold) {
      fill.store(index, kRelaxed);  // the loud sample itself goes too
      return;
    }
  }
}

void PcmQueue::Clear() {
  {
    std::lock_guard guard(lock);
    fill.store(0, kRelaxed);
  }
  WakeWaiters();
}

}  // namespace playback
