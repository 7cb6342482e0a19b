// The root's dispatch and the streams of an engine. The device and the
// mixing thread are in audio_output_device.cpp.
#include "playback/audio_output.h"

#include <algorithm>
#include <limits>

#include "playback/audio_effect.h"

namespace playback {
namespace {

constexpr std::uint32_t kIdMask = 0xFFFF;

std::uint32_t MakeHandle(int place, std::uint32_t id) {
  return (static_cast<std::uint32_t>(place + 1) << 16) | (id & kIdMask);
}

}  // namespace

AudioOutput::AudioOutput() : mixScratch(new std::int16_t[kBlockSamples]()) {}

AudioOutput::~AudioOutput() {
  CloseDevice();
  for (auto& place : engines) delete place.exchange(nullptr);
}

AudioOutput* AudioOutput::EngineFor(std::uint32_t handle) const {
  const std::uint32_t place = handle >> 16;
  if (place == 0 || place > kMaxEngines) return nullptr;
  return engines[place - 1].load();
}

int AudioOutput::FindStream(std::uint32_t id) const {
  const int count = streamCount.load(std::memory_order_relaxed);
  for (int i = 0; i < count; ++i) {
    if ((streams[i].id & kIdMask) == (id & kIdMask)) return i;
  }
  return -1;
}

std::shared_ptr<PcmQueue> AudioOutput::QueueOf(std::uint32_t id) {
  std::lock_guard guard(tableLock);
  const int index = FindStream(id);
  return index < 0 ? nullptr : streams[index].queue;
}

std::uint32_t AudioOutput::SamplesForMs(std::uint32_t ms) const {
  const std::uint64_t samples =
      (static_cast<std::uint64_t>(ms) * format.samplesPerSec * format.channels) >> 10;
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(samples, std::numeric_limits<std::uint32_t>::max()));
}

std::uint32_t AudioOutput::OpenStream(int reuse, int held, std::uint32_t sampleRate, int channels,
                                      std::uint32_t capacity) {
  if (sampleRate == 0) return kInvalidHandle;
  if (sampleRate == format.samplesPerSec) {
    const std::uint32_t handle = OpenLocalStream(reuse, channels, held, capacity);
    lastHandle.store(handle);
    newestHandle.store(handle);
    return handle;
  }

  std::lock_guard guard(engineLock);
  int freePlace = -1;
  for (int place = 0; place < kMaxEngines; ++place) {
    AudioOutput* engine = engines[place].load();
    if (!engine) {
      if (freePlace < 0) freePlace = place;
      continue;
    }
    if (engine->format.samplesPerSec == sampleRate) {
      // An existing engine takes the stream; lastHandle stays as it is.
      const std::uint32_t id = engine->OpenLocalStream(reuse, channels, held, capacity);
      if (id == kInvalidHandle) return kInvalidHandle;
      newestHandle.store(MakeHandle(place, id));
      return MakeHandle(place, id);
    }
  }
  if (freePlace < 0) return kInvalidHandle;  // a fifth rate in one run

  auto engine = std::make_unique<AudioOutput>();
  if (!engine->OpenDevice(2, sampleRate, 16)) return kInvalidHandle;
  const std::uint32_t rootVolume = volume.load();
  engine->SetVolume(rootVolume, rootVolume);
  engine->effect.store(effect.load());
  AudioOutput* made = engine.release();
  engines[freePlace].store(made);
  const std::uint32_t id = made->OpenLocalStream(reuse, channels, held, capacity);
  if (id == kInvalidHandle) return kInvalidHandle;  // the engine stays
  const std::uint32_t handle = MakeHandle(freePlace, id);
  lastHandle.store(handle);
  newestHandle.store(handle);
  return handle;
}

std::uint32_t AudioOutput::OpenLocalStream(int reuse, int channels, int held, std::uint32_t capacity) {
  if (channels < 1 || channels > 2 || streamCount.load() >= kMaxStreams) return kInvalidHandle;
  if (reuse) {
    // The gapless hand-over: the newest stream carries on if its channel
    // count fits, whoever opened it. Its next write replaces what is queued.
    std::lock_guard guard(tableLock);
    const int count = streamCount.load();
    if (count > 0 && streams[count - 1].channels == channels) {
      StreamRecord& newest = streams[count - 1];
      newest.played.store(0, std::memory_order_relaxed);
      newest.queue->SetParam(PcmQueue::kResetOnWrite, 1);
      return (nextStreamId - 1) & kIdMask;
    }
  }

  std::lock_guard guard(streamLock);
  const int count = streamCount.load();
  if (count >= kMaxStreams) return kInvalidHandle;
  auto queue = std::make_shared<PcmQueue>();
  queue->Allocate(capacity);  // on failure every read and write fails, and the stream ends
  const std::uint32_t id = nextStreamId & kIdMask;
  {
    std::lock_guard tableGuard(tableLock);
    StreamRecord& record = streams[count];
    record.queue = std::move(queue);
    record.channels = channels;
    record.id = id;
    record.played.store(0, std::memory_order_relaxed);
    record.wantedRoom.store(0, std::memory_order_relaxed);
    record.state = held ? kStreamHeld : kStreamPlaying;
    ++nextStreamId;
    streamCount.store(count + 1);
  }
  if (!held) WakeDevice();
  return id;
}

void AudioOutput::WakeDevice() {
  if (runEvent.IsSet()) return;
  runEvent.Set();
  if (device) device->Restart();
}

void AudioOutput::RemoveStreamLocked(int index) {
  std::shared_ptr<PcmQueue> queue;
  {
    std::lock_guard guard(tableLock);
    const int count = streamCount.load();
    queue = std::move(streams[index].queue);
    for (int i = index; i + 1 < count; ++i) streams[i].TakeFrom(streams[i + 1]);
    streams[count - 1].Clear();
    streamCount.store(count - 1);
  }
  if (queue && queue->Marker() == PcmQueue::kLiveMarker) {
    // A writer still inside the queue holds it alive; the abort sends it home.
    queue->Abort();
  }
  queue.reset();
}

void AudioOutput::AbortAllQueues() {
  std::lock_guard guard(tableLock);
  for (int i = 0; i < streamCount.load(); ++i) {
    if (streams[i].queue) streams[i].queue->Abort();
  }
}

void AudioOutput::DestroyAllStreams() {
  std::lock_guard guard(streamLock);
  while (streamCount.load() > 0) RemoveStreamLocked(streamCount.load() - 1);
}

void AudioOutput::FlushStream(std::uint32_t handle, std::uint32_t unused) {
  if (handle == kInvalidHandle) return;
  if (AudioOutput* engine = EngineFor(handle)) return engine->FlushStream(handle & kIdMask, unused);
  if (auto queue = QueueOf(handle)) queue->Clear();
}

int AudioOutput::WaitForRoom(std::uint32_t handle, std::uint32_t samples) {
  if (handle == kInvalidHandle) return 0;
  if (AudioOutput* engine = EngineFor(handle)) return engine->WaitForRoom(handle & kIdMask, samples);
  std::lock_guard guard(tableLock);
  const int index = FindStream(handle);
  if (index < 0) return 0;
  const PcmQueue& queue = *streams[index].queue;
  if (samples > queue.Capacity()) return 0;
  if (queue.Capacity() - queue.Fill() >= samples) return 1;
  // Nothing signals room: the call is a test, and writers poll it.
  streams[index].wantedRoom.store(samples, std::memory_order_relaxed);
  return 0;
}

std::uint32_t AudioOutput::QueueCapacity(std::uint32_t handle) {
  if (handle == kInvalidHandle) return 0;
  if (AudioOutput* engine = EngineFor(handle)) return engine->QueueCapacity(handle & kIdMask);
  auto queue = QueueOf(handle);
  return queue ? queue->Capacity() : 0;
}

std::uint32_t AudioOutput::QueuedSamples(std::uint32_t handle) {
  if (handle == kInvalidHandle) return 0;
  if (AudioOutput* engine = EngineFor(handle)) return engine->QueuedSamples(handle & kIdMask);
  auto queue = QueueOf(handle);
  return queue ? queue->Fill() : 0;
}

std::uint32_t AudioOutput::GetPlayedSamples(std::uint32_t handle) {
  if (handle == kInvalidHandle) return 0;
  if (AudioOutput* engine = EngineFor(handle)) return engine->GetPlayedSamples(handle & kIdMask);
  std::int64_t played = 0;
  {
    std::lock_guard guard(tableLock);
    const int index = FindStream(handle);
    if (index < 0) return 0;
    played = streams[index].played.load(std::memory_order_relaxed);
  }
  // What the device still holds has not been heard yet.
  played -= static_cast<std::int64_t>(buffersInFlight.load()) * kBlockSamples;
  if (played < 0) return 0;
  if (format.channels >= 2) played /= 2;
  return static_cast<std::uint32_t>(played);
}

int AudioOutput::StreamCount() {
  int count = streamCount.load();
  for (const auto& place : engines) {
    if (AudioOutput* engine = place.load()) count += engine->StreamCount();
  }
  return count;
}

void AudioOutput::ControlStream(std::uint32_t handle, int operation, std::uint32_t argument) {
  if (handle == kInvalidHandle) return;
  if (AudioOutput* engine = EngineFor(handle)) {
    return engine->ControlStream(handle & kIdMask, operation, argument);
  }
  std::unique_lock guard(streamLock);
  const int index = FindStream(handle);
  if (index < 0) return;
  switch (operation) {
    case kStreamRemove:
      RemoveStreamLocked(index);
      break;
    case kStreamHold:
      streams[index].state = kStreamHeld;
      break;
    case kStreamPlay:
      streams[index].state = kStreamPlaying;
      guard.unlock();
      WakeDevice();
      break;
    case kStreamFadeTail:
      streams[index].queue->FadeOutTail(SamplesForMs(argument));
      break;
    default:
      break;
  }
}

void AudioOutput::SetStreamParam(std::uint32_t handle, int operation, std::uint32_t value) {
  if (handle == kInvalidHandle) return;
  if (AudioOutput* engine = EngineFor(handle)) {
    return engine->SetStreamParam(handle & kIdMask, operation, value);
  }
  auto queue = QueueOf(handle);
  if (!queue) return;
  switch (operation) {
    case kParamFadeInMs:
      queue->SetParam(PcmQueue::kFadeIn, SamplesForMs(value));
      break;
    case kParamFadeOutMs:
      queue->SetParam(PcmQueue::kFadeOut, SamplesForMs(value));
      break;
    default:
      queue->SetParam(operation, value);
      break;
  }
}

int AudioOutput::WriteStream(std::uint32_t handle, const std::int16_t* samples, std::uint32_t count) {
  if (handle == kInvalidHandle) return 0;
  if (AudioOutput* engine = EngineFor(handle)) {
    return engine->WriteStream(handle & kIdMask, samples, count);
  }
  auto queue = QueueOf(handle);
  if (!queue) return 0;
  std::uint32_t written = 0;
  // No lock is held here: a write may wait for room as long as the device is paused.
  return queue->Write(samples, count, written);
}

bool AudioOutput::IsStreamAlive(std::uint32_t handle) {
  if (handle == kInvalidHandle) return false;
  if (AudioOutput* engine = EngineFor(handle)) return engine->IsStreamAlive(handle & kIdMask);
  std::lock_guard guard(tableLock);
  return FindStream(handle) >= 0;
}

bool AudioOutput::WaitForEmptyQueue(std::uint32_t handle, int timeoutMs) {
  if (handle == kInvalidHandle) return true;
  if (AudioOutput* engine = EngineFor(handle)) return engine->WaitForEmptyQueue(handle & kIdMask, timeoutMs);
  // The shared queue stays alive through the wait even if the stream goes;
  // its removal aborts it, which ends the wait.
  const std::shared_ptr<PcmQueue> queue = QueueOf(handle);
  return !queue || queue->WaitUntilEmpty(timeoutMs);
}

bool AudioOutput::WaitForQueuedSamples(std::uint32_t handle, std::uint32_t samples, int timeoutMs) {
  if (handle == kInvalidHandle) return true;
  if (AudioOutput* engine = EngineFor(handle)) {
    return engine->WaitForQueuedSamples(handle & kIdMask, samples, timeoutMs);
  }
  const std::shared_ptr<PcmQueue> queue = QueueOf(handle);
  return !queue || queue->WaitForSamples(samples, timeoutMs);
}

std::uint32_t AudioOutput::LastHandle() const { return lastHandle.load(); }
std::uint32_t AudioOutput::NewestHandle() const { return newestHandle.load(); }

void AudioOutput::SetEffect(AudioEffect* newEffect) {
  effect.store(newEffect);
  for (const auto& place : engines) {
    if (AudioOutput* engine = place.load()) engine->SetEffect(newEffect);
  }
}

void AudioOutput::SetVolume(std::uint32_t left, std::uint32_t right) {
  volume.store(left);
  if (device) device->SetVolume(((right & 0xFFFF) << 16) | (left & 0xFFFF));
  for (const auto& place : engines) {
    if (AudioOutput* engine = place.load()) engine->SetVolume(left, right);
  }
}

}  // namespace playback
