#include "platform/wave_buffer_queue.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <system_error>

#include "platform/device_volume.h"

namespace platform {
namespace {

constexpr std::uint32_t kUnity = 65536;
constexpr int kIdleWaitMs = 50;
// Samples an unpaced pump takes at a time: one output block of the engine.
constexpr std::size_t kUnpacedChunk = 8192;

}  // namespace

WaveBufferQueue::~WaveBufferQueue() { Stop(); }

bool WaveBufferQueue::Start(int deviceChannels, WaveDoneCallback doneCallback, void* doneContext,
                            bool useVolume, Observer takenObserver, void* takenContext) {
  std::lock_guard guard(lock);
  if (running || !doneCallback) return false;
  // The process volume is read from the registry here, on the opener's
  // thread, so that the audio thread never touches it.
  if (useVolume) ProcessDeviceVolume();
  done = doneCallback;
  context = doneContext;
  observer = takenObserver;
  observerContext = takenContext;
  channels = deviceChannels;
  applyVolume = useVolume;
  paused = false;
  stopping = false;
  consumersStopped = false;
  try {
    returner = std::thread([this] { ReturnLoop(); });
  } catch (const std::system_error&) {
    return false;
  }
  running = true;
  return true;
}

void WaveBufferQueue::Stop() {
  {
    std::lock_guard guard(lock);
    if (!running) return;
    while (queuedCount > 0) FinishHead();
    stopping = true;
    consumersStopped = true;
    running = false;
  }
  returnsReady.notify_all();
  audioReady.notify_all();
  if (returner.joinable()) returner.join();
}

void WaveBufferQueue::ReturnLoop() {
  std::unique_lock guard(lock);
  for (;;) {
    returnsReady.wait(guard, [this] { return (finishedCount > 0 || stopping) && !delivering; });
    if (finishedCount == 0) return;  // stopping, and everything delivered
    DeliverFinished(guard);
  }
}

void WaveBufferQueue::DeliverFinished(std::unique_lock<std::mutex>& guard) {
  if (delivering) return;
  delivering = true;
  std::array<WaveBuffer*, kMaxBuffers> batch{};
  while (finishedCount > 0) {
    const std::size_t count = finishedCount;
    for (std::size_t i = 0; i < count; ++i) batch[i] = finished[(finishedFirst + i) % kMaxBuffers];
    finishedFirst = (finishedFirst + count) % kMaxBuffers;
    finishedCount = 0;
    guard.unlock();
    // Each buffer is the caller's again as its call-back begins.
    for (std::size_t i = 0; i < count; ++i) done(context, batch[i]);
    guard.lock();
  }
  delivering = false;
  // The return thread may be waiting for this delivery to end so that it
  // can stop.
  if (stopping) returnsReady.notify_all();
}

bool WaveBufferQueue::Push(WaveBuffer* buffer) {
  if (!buffer || !buffer->data) return false;
  {
    std::lock_guard guard(lock);
    if (!running || queuedCount + finishedCount >= kMaxBuffers) return false;
    queued[(queuedFirst + queuedCount) % kMaxBuffers] = buffer;
    ++queuedCount;
    ++pushCount;
  }
  audioReady.notify_all();
  return true;
}

void WaveBufferQueue::SetPaused(bool pause) {
  {
    std::lock_guard guard(lock);
    paused = pause;
  }
  audioReady.notify_all();
}

std::uint64_t WaveBufferQueue::Pushes() const {
  std::lock_guard guard(lock);
  return pushCount;
}

bool WaveBufferQueue::IsPaused() const {
  std::lock_guard guard(lock);
  return paused;
}

void WaveBufferQueue::FinishHead() {
  finished[(finishedFirst + finishedCount) % kMaxBuffers] = queued[queuedFirst];
  ++finishedCount;
  queuedFirst = (queuedFirst + 1) % kMaxBuffers;
  --queuedCount;
  headOffset = 0;
}

void WaveBufferQueue::ReturnAll() {
  {
    std::lock_guard guard(lock);
    if (queuedCount == 0) return;
    while (queuedCount > 0) FinishHead();
  }
  returnsReady.notify_one();
}

std::size_t WaveBufferQueue::HeadSamples() const {
  std::lock_guard guard(lock);
  if (queuedCount == 0) return 0;
  return queued[queuedFirst]->bytes / sizeof(std::int16_t) - headOffset;
}

std::size_t WaveBufferQueue::QueuedBuffers() const {
  std::lock_guard guard(lock);
  return queuedCount;
}

void WaveBufferQueue::CopyWithGain(std::int16_t* out, const std::int16_t* in, std::size_t count,
                                   std::size_t outputIndex, std::uint32_t leftGain,
                                   std::uint32_t rightGain) const {
  if (leftGain == kUnity && rightGain == kUnity) {
    std::memcpy(out, in, count * sizeof(std::int16_t));
    return;
  }
  const bool stereo = channels == 2;
  for (std::size_t i = 0; i < count; ++i) {
    const bool right = stereo && ((outputIndex + i) & 1) != 0;
    const std::int64_t factor = right ? rightGain : leftGain;
    out[i] = static_cast<std::int16_t>((factor * in[i]) >> 16);
  }
}

std::size_t WaveBufferQueue::Take(std::int16_t* out, std::size_t count) {
  bool finishedAny = false;
  const std::size_t copied = Consume(out, count, finishedAny);
  if (finishedAny) returnsReady.notify_one();
  return copied;
}

std::size_t WaveBufferQueue::TakeAndReturn(std::int16_t* out, std::size_t count) {
  bool finishedAny = false;
  const std::size_t copied = Consume(out, count, finishedAny);
  if (finishedAny) {
    std::unique_lock guard(lock);
    DeliverFinished(guard);
  }
  return copied;
}

std::size_t WaveBufferQueue::Consume(std::int16_t* out, std::size_t count, bool& finishedAny) {
  std::uint32_t leftGain = kUnity;
  std::uint32_t rightGain = kUnity;
  if (applyVolume) {
    const std::uint32_t own = volume.load(std::memory_order_relaxed);
    const std::uint32_t master = ProcessDeviceVolume().Get();
    leftGain = CombineGains(VolumeGain(own), VolumeGain(master));
    rightGain = CombineGains(VolumeGain(own >> 16), VolumeGain(master >> 16));
  }
  std::size_t copied = 0;
  std::lock_guard guard(lock);
  if (paused) return 0;
  while (copied < count && queuedCount > 0) {
    WaveBuffer* head = queued[queuedFirst];
    const std::size_t available = head->bytes / sizeof(std::int16_t) - headOffset;
    const std::size_t run = std::min(available, count - copied);
    CopyWithGain(out + copied, head->data + headOffset, run, copied, leftGain, rightGain);
    copied += run;
    headOffset += run;
    if (headOffset * sizeof(std::int16_t) >= head->bytes) {
      FinishHead();
      finishedAny = true;
    }
  }
  if (observer && copied > 0) observer(observerContext, out, copied);
  return copied;
}

WaveBufferQueue::Wait WaveBufferQueue::WaitForAudio(int timeoutMs) {
  std::unique_lock guard(lock);
  audioReady.wait_for(guard, std::chrono::milliseconds(timeoutMs),
                      [this] { return consumersStopped || (!paused && queuedCount > 0); });
  if (consumersStopped) return Wait::kStopped;
  return !paused && queuedCount > 0 ? Wait::kAudio : Wait::kIdle;
}

WaveBufferQueue::Wait WaveBufferQueue::WaitForPush(std::uint64_t since, int timeoutMs) {
  std::unique_lock guard(lock);
  audioReady.wait_for(guard, std::chrono::milliseconds(timeoutMs),
                      [&] { return consumersStopped || pushCount != since; });
  if (consumersStopped) return Wait::kStopped;
  return pushCount != since ? Wait::kAudio : Wait::kIdle;
}

void WaveBufferQueue::StopConsumers() {
  {
    std::lock_guard guard(lock);
    consumersStopped = true;
  }
  audioReady.notify_all();
}

bool WavePump::Start(WaveBufferQueue& source, std::uint32_t rate, int deviceChannels, bool paced,
                     FeedReady feedReady) {
  if (thread.joinable() || rate == 0) return false;
  queue = &source;
  ready = std::move(feedReady);
  sampleRate = rate;
  channels = deviceChannels;
  if (paced) {
    // 10 ms of audio in whole frames.
    const std::size_t frames = std::max<std::size_t>(1, rate / 100);
    scratch.assign(frames * static_cast<std::size_t>(channels), 0);
  } else {
    scratch.assign(kUnpacedChunk, 0);
  }
  try {
    thread = std::thread([this, paced] { paced ? RunPaced() : RunUnpaced(); });
  } catch (const std::system_error&) {
    return false;
  }
  return true;
}

void WavePump::Stop() {
  if (!thread.joinable()) return;
  queue->StopConsumers();
  thread.join();
}

void WavePump::RunPaced() {
  using Clock = std::chrono::steady_clock;
  // A device that waited (idle or paused) does not catch up on that time.
  constexpr auto kLatestStart = std::chrono::milliseconds(20);
  auto next = Clock::now();
  while (true) {
    const WaveBufferQueue::Wait result = queue->WaitForAudio(kIdleWaitMs);
    if (result == WaveBufferQueue::Wait::kStopped) return;
    if (result == WaveBufferQueue::Wait::kIdle) continue;
    const auto now = Clock::now();
    if (next + kLatestStart < now) next = now;
    const std::size_t count = queue->TakeAndReturn(scratch.data(), scratch.size());
    const std::uint64_t frames = count / static_cast<std::size_t>(channels);
    next += std::chrono::nanoseconds(frames * 1'000'000'000ull / sampleRate);
    std::this_thread::sleep_until(next);
  }
}

// With a feed gate the pump goes in step with the writer: a buffer is taken
// only once the writer has written one since the last take, and the gate
// agrees. Both are waited for, not polled: the write wakes the pump, and the
// gate waits in looks of kFeedLookMs. False once the consumers are stopped.
bool WavePump::AwaitFeed() {
  if (!ready) return true;
  using Clock = std::chrono::steady_clock;
  const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(kFeedWaitMs);
  for (;;) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) break;
    const WaveBufferQueue::Wait pushed = queue->WaitForPush(pushesAtTake, static_cast<int>(left));
    if (pushed == WaveBufferQueue::Wait::kStopped) return false;
    if (pushed == WaveBufferQueue::Wait::kIdle) break;
    const std::uint64_t pushes = queue->Pushes();
    if (ready(kFeedLookMs)) {
      pushesAtTake = pushes;
      return true;
    }
  }
  pushesAtTake = queue->Pushes();
  return true;
}

void WavePump::RunUnpaced() {
  while (true) {
    const WaveBufferQueue::Wait result = queue->WaitForAudio(kIdleWaitMs);
    if (result == WaveBufferQueue::Wait::kStopped) return;
    if (result == WaveBufferQueue::Wait::kIdle) continue;
    if (!AwaitFeed()) return;
    queue->TakeAndReturn(scratch.data(), scratch.size());
  }
}

}  // namespace platform
