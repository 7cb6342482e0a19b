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
// call-back returns buffers.
#pragma once

#include <cstdint>

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
  // The handle of the last stream the root opened on a new engine or itself.
  std::uint32_t LastHandle() const;
  // The effect run over each mixed block; set on the root before engines exist.
  void SetEffect(AudioEffect* newEffect);
};

}  // namespace playback
