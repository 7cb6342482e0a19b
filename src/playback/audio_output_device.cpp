// An engine's wave device and its mixing thread.
//
// The buffer protocol:
//   1. OpenDevice writes every buffer to the device as silence, so that each
//      buffer the device returns pulls the pipeline along.
//   2. The device's done call-back (its return thread) stamps the buffer with
//      the next sequence number and, if the mixer has no free buffer to fill,
//      makes this one `nextFill` and sets `bufferEvent`.
//   3. The mixing thread waits for `bufferEvent` and `runEvent`, mixes into
//      `nextFill`, writes it to the device, and moves on to the next buffer
//      in ring order while one is free. Buffers come back in the order
//      written, so the free ones always follow the last one written.
//   4. When no stream has contributed while the device returned as many
//      buffers as it held (plus one), all that was written has been heard:
//      the mixer clears `runEvent`, resets and pauses the device, and sleeps
//      until a stream plays again (WakeDevice).
#include <algorithm>
#include <chrono>
#include <cstring>
#include <new>

#include "playback/audio_effect.h"
#include "playback/audio_output.h"

namespace playback {
namespace {

constexpr int kMixingThreadPriority = 1;
// The root's engines are looked over every this many turns of the loop.
constexpr std::uint32_t kHousekeepingTurns = 200;
// A device that keeps its buffers for 2 s after a reset is broken.
constexpr int kResetWaitMs = 2000;
constexpr int kCloseWaitMs = 401 * 50;
constexpr int kRefusedWriteMs = 10;

}  // namespace

int AudioOutput::BuffersForRate(std::uint32_t sampleRate) {
  switch (sampleRate) {
    case 8000:
    case 11025:
      return 4;
    case 16000:
      return 6;
    case 22050:
      return 8;
    case 32000:
      return 10;
    default:
      return 12;
  }
}

int AudioOutput::OpenDevice(int channels, std::uint32_t sampleRate, int bits) {
  if (device || channels < 1 || channels > 2 || bits != 16 || sampleRate == 0) return 0;
  quitEvent.Reset();
  bufferEvent.Reset();
  format.formatTag = 1;  // PCM
  format.channels = static_cast<std::uint16_t>(channels);
  format.samplesPerSec = sampleRate;
  format.blockAlign = static_cast<std::uint16_t>(bits / 8 * channels);
  format.bitsPerSample = static_cast<std::uint16_t>(bits);
  // Kept as the system has always filled it: frames per second times
  // channels, not times the sample size.
  format.avgBytesPerSec = static_cast<std::uint32_t>(channels) * sampleRate;
  format.cbSize = 0;
  bufferCount = BuffersForRate(sampleRate);
  if (!AllocateBuffers()) return 0;

  if (!thread.Start([this] { MixingLoop(); }, kMixingThreadPriority)) return 0;

  driver = platform::CurrentWaveOutDriver();
  const int devices = driver ? driver->DeviceCount() : 0;
  for (int id = 0; id < devices && !device; ++id) {
    std::unique_ptr<platform::WaveOut> candidate = driver->Create();
    if (candidate && candidate->Open(id, sampleRate, channels, &AudioOutput::BufferDone, this)) {
      device = std::move(candidate);
    }
  }
  if (!device) {
    StopThread();
    driver.reset();
    return 0;
  }

  device->Pause();
  const std::uint32_t ownVolume = volume.load();
  SetVolume(ownVolume, ownVolume);
  buffersInFlight.store(0);
  nextFill.store(-1);
  PrimeBuffers();
  device->Restart();
  runEvent.Set();
  return 1;
}

bool AudioOutput::AllocateBuffers() {
  for (int i = 0; i < bufferCount; ++i) {
    buffers[i].reset(new (std::nothrow) std::int16_t[kBlockSamples]());
    if (!buffers[i]) {
      for (auto& buffer : buffers) buffer.reset();
      return false;
    }
  }
  return true;
}

// Writes every buffer to the device as silence, in ring order.
void AudioOutput::PrimeBuffers() {
  for (int i = 0; i < bufferCount; ++i) {
    std::memset(buffers[i].get(), 0, kBlockBytes);
    headers[i].data = buffers[i].get();
    headers[i].bytes = kBlockBytes;
    headers[i].user = static_cast<std::uint32_t>(i);
    {
      std::lock_guard guard(bufferLock);
      bufferSequence[i] = nextSequence++;
      bufferInFlight[i] = true;
      buffersInFlight.fetch_add(1);
    }
    device->Write(&headers[i]);
  }
}

void AudioOutput::StopThread() {
  quitEvent.Set();
  thread.Join();
}

void AudioOutput::CloseDevice() {
  if (!device) return;
  device->Pause();
  quitEvent.Set();
  // Queues are aborted before the join, so that a mixer blocked on a starving
  // stream leaves at once instead of after its underrun strikes.
  AbortAllQueues();
  thread.Join();
  for (const auto& place : engines) {
    if (AudioOutput* engine = place.load()) engine->AbortAllQueues();
  }
  resetting.store(1);
  device->Reset();
  WaitForBuffersBack(kCloseWaitMs);
  device->Close();
  device.reset();
  resetting.store(0);
  DestroyAllStreams();
  for (auto& buffer : buffers) buffer.reset();
}

void AudioOutput::WaitForBuffersBack(int timeoutMs) {
  std::unique_lock guard(bufferLock);
  buffersBack.wait_for(guard, std::chrono::milliseconds(timeoutMs),
                       [this] { return buffersInFlight.load() == 0; });
}

void AudioOutput::BufferDone(void* context, platform::WaveBuffer* buffer) {
  if (context) static_cast<AudioOutput*>(context)->OnBufferDone(buffer);
}

void AudioOutput::OnBufferDone(platform::WaveBuffer* buffer) {
  std::lock_guard guard(bufferLock);
  if (!buffer) return;
  const std::uint32_t index = buffer->user;
  if (index < static_cast<std::uint32_t>(bufferCount)) {
    bufferSequence[index] = nextSequence++;
    bufferInFlight[index] = false;
    if (nextFill.load() == -1) {
      nextFill.store(static_cast<int>(index));
      bufferEvent.Set();
    }
  }
  if (buffersInFlight.load() > 0 && buffersInFlight.fetch_sub(1) == 1) buffersBack.notify_all();
  buffersReturned.fetch_add(1);
}

void AudioOutput::MixingLoop() {
  for (;;) {
    Housekeeping();
    const int woken = platform::WaitForAny({&bufferEvent, &quitEvent});
    if (woken == 1) return;
    if (woken != 0) continue;
    if (platform::WaitForAny({&runEvent, &quitEvent}) != 0) return;
    FillNextBuffer();
  }
}

void AudioOutput::Housekeeping() {
  if (++housekeepingTick <= kHousekeepingTurns) return;
  housekeepingTick = 0;
  std::lock_guard guard(engineLock);
  for (auto& place : engines) {
    AudioOutput* engine = place.load();
    if (engine && engine->StreamCount() == 0) {
      place.store(nullptr);
      engine->CloseDevice();
      delete engine;
    }
  }
}

void AudioOutput::FillNextBuffer() {
  std::lock_guard deviceGuard(deviceLock);
  const int index = nextFill.load();
  if (index < 0) return;
  std::int16_t* block = buffers[index].get();
  const int active = MixBlock(block);
  if (streamCount.load() != 0) RunEffect(block);

  {
    std::lock_guard guard(bufferLock);
    bufferInFlight[index] = true;
    buffersInFlight.fetch_add(1);
  }
  if (!device->Write(&headers[index])) {
    // Only a broken device refuses; try this buffer again a little later.
    {
      std::lock_guard guard(bufferLock);
      bufferInFlight[index] = false;
      buffersInFlight.fetch_sub(1);
    }
    platform::SleepMs(kRefusedWriteMs);
    return;
  }
  {
    std::lock_guard guard(bufferLock);
    if (buffersInFlight.load() == static_cast<std::uint32_t>(bufferCount)) {
      nextFill.store(-1);
      bufferEvent.Reset();
    } else {
      nextFill.store((index + 1) % bufferCount);
    }
  }
  CountIdleBlock(active);
}

int AudioOutput::MixBlock(std::int16_t* block) {
  std::lock_guard guard(streamLock);
  const int active = MixStreams(streams.data(), streamCount.load(), format.channels, block, mixScratch.get());
  // Ended streams go in index order; a removal moves the next record into
  // this index and the walk goes on past it, so of two adjacent ended
  // streams the second goes one block later.
  for (int i = 0; i < streamCount.load(); ++i) {
    if (streams[i].state == kStreamEnded) RemoveStreamLocked(i);
  }
  return active;
}

void AudioOutput::RunEffect(std::int16_t* block) {
  AudioEffect* filter = effect.load();
  if (!filter) return;
  std::int16_t* output = block;
  filter->Process(&output, kBlockBytes);
  filter->ApplyBass(&output, kBlockBytes);
  // An effect may answer with a block of its own.
  if (output && output != block) std::memcpy(block, output, kBlockBytes);
}

// The countdown starts at the buffers in flight plus one and goes down by
// the buffers the device has returned since: in the steady state one per
// block. A burst of blocks into buffers that were free (after a wake) does
// not count, so the device stops only once it has played all it was given.
void AudioOutput::CountIdleBlock(int active) {
  const std::uint32_t returned = buffersReturned.load();
  const int returnedSince = static_cast<int>(returned - returnsSeen);
  returnsSeen = returned;
  if (active) {
    idleCountdown = -1;
  } else if (idleCountdown == -1) {
    idleCountdown = static_cast<int>(buffersInFlight.load()) + 1;
  } else {
    idleCountdown -= returnedSince;
    if (idleCountdown <= 0) {
      idleCountdown = -1;
      StopWhenIdle();
    }
  }
}

void AudioOutput::StopWhenIdle() {
  std::lock_guard guard(streamLock);
  // A stream that began to play since the block was mixed keeps the device
  // running; its WakeDevice found runEvent still set.
  for (int i = 0; i < streamCount.load(); ++i) {
    if (streams[i].state == kStreamPlaying) return;
  }
  runEvent.Reset();
  device->Reset();
  device->Pause();
}

void AudioOutput::ResetDevice(std::uint32_t handle, std::uint32_t unused) {
  if (handle == kInvalidHandle) return;
  if (AudioOutput* engine = EngineFor(handle)) return engine->ResetDevice(handle & 0xFFFF, unused);
  if (!device) return;
  std::lock_guard deviceGuard(deviceLock);
  std::lock_guard guard(streamLock);
  device->Pause();
  resetting.store(1);
  device->Reset();
  device->Pause();
  WaitForBuffersBack(kResetWaitMs);
  resetting.store(0);
  {
    // Every buffer goes back to the device; none is free for the mixer
    // until the device returns one.
    std::lock_guard bufferGuard(bufferLock);
    nextFill.store(-1);
    bufferEvent.Reset();
  }
  PrimeBuffers();
}

void AudioOutput::Pause(int flag) {
  {
    std::lock_guard guard(streamLock);
    if (device) flag ? device->Pause() : device->Restart();
  }
  for (const auto& place : engines) {
    if (AudioOutput* engine = place.load()) engine->Pause(flag);
  }
}

int AudioOutput::GetWaveSnapshot(std::int16_t* out512) {
  if (!out512) return 0;
  if (streamCount.load() == 0) {
    for (const auto& place : engines) {
      AudioOutput* engine = place.load();
      if (engine && engine->streamCount.load() > 0) return engine->GetWaveSnapshot(out512);
    }
    return 0;
  }
  constexpr int kFrames = 512;
  std::lock_guard guard(bufferLock);
  // The oldest buffer the device holds is the one it plays now. A buffer in
  // flight is only read, by the device, so it can be copied under this lock.
  int oldest = -1;
  for (int i = 0; i < bufferCount; ++i) {
    if (bufferInFlight[i] && (oldest < 0 || bufferSequence[i] < bufferSequence[oldest])) oldest = i;
  }
  if (oldest < 0) {
    std::fill(out512, out512 + kFrames, std::int16_t{0});  // the device plays nothing
    return 1;
  }
  const std::int16_t* block = buffers[oldest].get();
  const int step = format.channels >= 2 ? 2 : 1;
  for (int i = 0; i < kFrames; ++i) out512[i] = block[i * step];
  return 1;
}

}  // namespace playback
