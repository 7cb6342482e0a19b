// The mixer, and the only user of the wave device.
//
// One class, two roles. The root is the object the application embeds: it
// opens no device, only remembers volume and the effect and owns up to four
// engines. An engine is an AudioOutput that the root makes for one sample
// rate, with its own wave device (stereo, 16 bit), its own mixing thread and
// up to eight streams, each with a PcmQueue.
//
// Handles: a stream handle is ((engine index + 1) << 16) | stream id on the
// root; 0 in the high half means this object itself. -1 is the invalid handle
// and every operation takes it harmlessly (no-op, or 0).
//
// Counts: sample counts are counts of 16-bit values (a stereo frame is two),
// except GetPlayedSamples, which returns frames.
//
// Threads: control calls come from the window thread and from decode threads
// at once; the mixing thread of each engine pulls the streams; the device's
// return thread hands buffers back.
//
// The device: an engine opens its wave device through the process-wide
// platform::CurrentWaveOutDriver() (SDL unless a program chose another), and
// keeps that driver while it lives.
//
// Locks, always taken in this order (a later one may be taken while holding
// an earlier one, never the reverse):
//   engineLock  root only: making engines
//   deviceLock  an engine's mixer while it fills and hands over one buffer,
//               and ResetDevice, so that a reset never meets a half-done block
//   streamLock  the mixing step, adding and removing streams, stream state,
//               Pause, device resets. Held through a blocking queue read, so
//               control calls may wait up to about a second on a starving
//               stream.
//   tableLock   brief: finds a stream for the calls that take no streamLock
//               (writes, queue levels, parameters); the table changes only
//               with both held
//   bufferLock  device bookkeeping: which buffer is next, what is in flight
// The device's done call-back takes only bufferLock, and no lock is held
// while a queue write waits for room.
#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>

#include "platform/event.h"
#include "platform/thread.h"
#include "platform/wave_out.h"
#include "playback/audio_mixer.h"

namespace playback {

class AudioEffect;

inline constexpr std::uint32_t kInvalidHandle = 0xFFFFFFFFu;

// ControlStream operations.
enum StreamControl : int {
  kStreamRemove = 1,
  kStreamHold = 2,
  kStreamPlay = 3,
  kStreamFadeTail = 4,  // argument: milliseconds, 0 for all that is queued
};

// SetStreamParam operations.
enum StreamParam : int {
  kParamFadeInMs = 4,
  kParamFadeOutMs = 6,
  kParamSilenceThreshold = 8,
  kParamResetOnWrite = 9,
};

class AudioOutput {
 public:
  AudioOutput();
  AudioOutput(const AudioOutput&) = delete;
  AudioOutput& operator=(const AudioOutput&) = delete;
  virtual ~AudioOutput();

  // 1. Flushes the device and primes it with silence; the device stays paused.
  virtual void ResetDevice(std::uint32_t handle, std::uint32_t unused = 0);
  // 2. Empties the stream's queue.
  virtual void FlushStream(std::uint32_t handle, std::uint32_t unused = 0);
  // 3. A non-blocking test: 1 if the stream's queue has room for `samples`.
  virtual int WaitForRoom(std::uint32_t handle, std::uint32_t samples);
  // 4. Capacity of the stream's queue in samples; 0 for no stream.
  virtual std::uint32_t QueueCapacity(std::uint32_t handle);
  // 5. Opens a stream (held or playing) with a queue of `capacity` samples;
  //    with `reuse`, may return the newest stream of the same channel count.
  virtual std::uint32_t OpenStream(int reuse, int held, std::uint32_t sampleRate, int channels,
                                   std::uint32_t capacity);
  // 6. Left channel of the oldest device buffer's first 512 frames.
  virtual int GetWaveSnapshot(std::int16_t* out512);
  // 7. Frames the device has really been given to play for this stream.
  virtual std::uint32_t GetPlayedSamples(std::uint32_t handle);
  // 8. Non-zero pauses every device, zero restarts them.
  virtual void Pause(int flag);
  // 9. 0 to 65535 per channel; kept and given to every device.
  virtual void SetVolume(std::uint32_t left, std::uint32_t right);
  // 10. Streams here and in the engines.
  virtual int StreamCount();
  // 11. Samples queued in the stream; 0 for no stream.
  virtual std::uint32_t QueuedSamples(std::uint32_t handle);
  // 12. See StreamControl.
  virtual void ControlStream(std::uint32_t handle, int operation, std::uint32_t argument);
  // 13. See StreamParam; other values pass to the queue unchanged.
  virtual void SetStreamParam(std::uint32_t handle, int operation, std::uint32_t value);
  // 14. Writes samples into the stream's queue; a count of 0 marks the end.
  //     Returns 1 on success, 0 for no stream or an ended queue.
  virtual int WriteStream(std::uint32_t handle, const std::int16_t* samples, std::uint32_t count);
  // 15. Stops the mixing thread and closes the device.
  virtual void CloseDevice();
  // 16. Opens the wave device and starts the mixing thread.
  virtual int OpenDevice(int channels, std::uint32_t sampleRate, int bits);

  // Whether the handle names a live stream.
  bool IsStreamAlive(std::uint32_t handle);
  // Waits until the stream's queue is empty, or the stream is gone or
  // aborted, at most `timeoutMs`; true when that has come. The mixer wakes
  // the wait as it takes the last samples, so a writer waiting for its
  // track to drain needn't poll.
  bool WaitForEmptyQueue(std::uint32_t handle, int timeoutMs);
  // Waits until the stream's queue holds `samples`, has ended, or the
  // stream is gone, at most `timeoutMs`; true when that has come, and a
  // mixer's read of that many would not wait.
  bool WaitForQueuedSamples(std::uint32_t handle, std::uint32_t samples, int timeoutMs);
  // The handle of the last stream the root opened on a new engine or itself.
  std::uint32_t LastHandle() const;
  // The handle of the last stream the root opened, on whichever engine (a
  // stream on an engine that already existed doesn't change LastHandle).
  std::uint32_t NewestHandle() const;
  // The effect run over each mixed block; set on the root, which hands it to
  // every engine (existing ones too). Null runs no effect.
  void SetEffect(AudioEffect* newEffect);

  static constexpr int kMaxEngines = 4;
  static constexpr int kMaxStreams = 8;
  static constexpr int kMaxBuffers = 12;
  // Device buffers an engine keeps in flight at a sample rate: about the same
  // latency (1 to 2 seconds) at every rate.
  static int BuffersForRate(std::uint32_t sampleRate);

 private:
  // The device format, as the platform describes it.
  struct WaveFormat {
    std::uint16_t formatTag = 0;
    std::uint16_t channels = 0;
    std::uint32_t samplesPerSec = 0;
    std::uint32_t avgBytesPerSec = 0;
    std::uint16_t blockAlign = 0;
    std::uint16_t bitsPerSample = 0;
    std::uint16_t cbSize = 0;
  };

  // Streams (audio_output.cpp).
  AudioOutput* EngineFor(std::uint32_t handle) const;
  std::uint32_t OpenLocalStream(int reuse, int channels, int held, std::uint32_t capacity);
  // With tableLock or streamLock held: index of the stream, or -1.
  int FindStream(std::uint32_t id) const;
  // The queue of a stream of this object, or null.
  std::shared_ptr<PcmQueue> QueueOf(std::uint32_t id);
  // With streamLock held.
  void RemoveStreamLocked(int index);
  void AbortAllQueues();
  void DestroyAllStreams();
  // Lets the mixer run and restarts the device if it had gone idle.
  void WakeDevice();
  // Milliseconds to samples of this device: ms * rate * channels >> 10.
  std::uint32_t SamplesForMs(std::uint32_t ms) const;

  // Device and mixing thread (audio_output_device.cpp).
  void MixingLoop();
  void Housekeeping();
  void FillNextBuffer();
  int MixBlock(std::int16_t* block);
  void RunEffect(std::int16_t* block);
  void CountIdleBlock(int active);
  void StopWhenIdle();
  bool AllocateBuffers();
  void PrimeBuffers();
  void StopThread();
  // Waits until the device has handed every buffer back, at most `timeoutMs`.
  void WaitForBuffersBack(int timeoutMs);
  static void BufferDone(void* context, platform::WaveBuffer* buffer);
  void OnBufferDone(platform::WaveBuffer* buffer);

  std::atomic<AudioEffect*> effect{nullptr};
  WaveFormat format;  // set by OpenDevice before the device is shared
  platform::Thread thread;
  platform::Event quitEvent;
  platform::Event bufferEvent;  // a device buffer is free to be filled
  std::atomic<std::uint32_t> resetting{0};  // set around device resets; for debugging
  platform::Event runEvent;     // the mixer may run; cleared when every stream is idle
  std::shared_ptr<platform::WaveOutDriver> driver;
  std::unique_ptr<platform::WaveOut> device;  // null on the root

  // The root's engines. Made under engineLock; they live until the root goes.
  std::mutex engineLock;
  std::array<std::atomic<AudioOutput*>, kMaxEngines> engines{};

  std::array<std::unique_ptr<std::int16_t[]>, kMaxBuffers> buffers;  // kBlockBytes each
  std::unique_ptr<std::int16_t[]> mixScratch;                        // kBlockBytes
  std::array<platform::WaveBuffer, kMaxBuffers> headers{};
  int bufferCount = 0;  // set by OpenDevice before the device is shared

  std::mutex deviceLock;
  int idleCountdown = -1;        // mixing thread only
  std::uint32_t returnsSeen = 0;  // mixing thread only: buffersReturned at the last block
  std::uint32_t housekeepingTick = 0;  // mixing thread only

  // Guarded by streamLock, and for changes of the table also by tableLock.
  std::mutex streamLock;
  std::mutex tableLock;
  std::array<StreamRecord, kMaxStreams> streams;
  std::atomic<int> streamCount{0};
  std::uint32_t nextStreamId = 0;

  // Guarded by bufferLock; the atomics are also read without it.
  std::mutex bufferLock;
  std::array<std::uint32_t, kMaxBuffers> bufferSequence{};  // nextSequence at its last return
  std::array<bool, kMaxBuffers> bufferInFlight{};
  std::uint32_t nextSequence = 0;
  std::atomic<std::uint32_t> buffersInFlight{0};
  std::condition_variable buffersBack;            // buffersInFlight has come down to 0
  std::atomic<std::uint32_t> buffersReturned{0};  // every return since the device opened
  std::atomic<int> nextFill{-1};                  // next buffer to fill; -1 while none is free

  std::atomic<std::uint32_t> volume{65535};  // last left volume
  std::atomic<std::uint32_t> lastHandle{kInvalidHandle};
  std::atomic<std::uint32_t> newestHandle{kInvalidHandle};
};

}  // namespace playback
