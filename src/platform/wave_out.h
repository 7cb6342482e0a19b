// The wave device: a sound output that plays buffers of 16-bit PCM in order
// and hands each one back when it is done with it.
//
// Contract of every back-end:
//   - Open at a sample rate, 1 or 2 channels, 16-bit signed interleaved
//     samples in the machine's byte order. The device starts running.
//   - Write queues a buffer; the device plays buffers in the order written.
//     The caller must leave the buffer alone until it comes back.
//   - Each written buffer comes back exactly once through the done call-back,
//     in the order written, from the device's own thread: never from inside
//     Write, Pause or Restart, and never after Close has returned.
//   - Pause stops playing (and so returns no more buffers); Restart resumes
//     where it stopped, losing nothing.
//   - Reset drops everything queued: all buffers come back, unplayed, in order.
//   - Close returns what is still queued, delivers the remaining call-backs
//     and releases the device.
//   - SetVolume is this device's own gain (left in the low 16 bits, right in
//     the high ones, 0 to 65535 each); the process-wide device volume (see
//     device_volume.h) applies on top of it. Both are integer gains where
//     65535 is unity.
//
// Threads: the owner calls Open and Close while no other call can be under
// way; Write, Pause, Restart, Reset and SetVolume may come from any thread,
// also at once. The done call-back runs on the device's return thread; it
// may take locks of its own but must not call Close.
//
// Back-ends, one file each:
//   wave_out_sdl.cpp      SDL2 audio, the real device
//   wave_out_null.cpp     paced at real time, discards
//   wave_out_capture.cpp  records what it plays, paced, unpaced or stepped
//                         by hand (wave_out_capture.h)
//
// Which back-end the output engine uses is a process-wide choice: the
// current WaveOutDriver. It is SDL unless a program chooses another
// (tests and the render tool set a capture driver before any output opens).
#pragma once

#include <cstdint>
#include <memory>

#include "platform/device_volume.h"

namespace platform {

// One buffer handed to a device. `user` is the caller's own word.
struct WaveBuffer {
  std::int16_t* data = nullptr;
  std::uint32_t bytes = 0;
  std::uint32_t user = 0;
};

// Called once per finished buffer with the `context` given to Open.
using WaveDoneCallback = void (*)(void* context, WaveBuffer* buffer);

class WaveOut {
 public:
  virtual ~WaveOut() = default;

  // Opens device `deviceId` (0 is the system's default). False on failure;
  // then no call-back ever comes.
  virtual bool Open(int deviceId, std::uint32_t sampleRate, int channels, WaveDoneCallback done,
                    void* context) = 0;
  // Queues a buffer of whole frames. False if the device is not open or
  // holds too many buffers already (64).
  virtual bool Write(WaveBuffer* buffer) = 0;
  virtual void Pause() = 0;
  virtual void Restart() = 0;
  virtual void Reset() = 0;
  virtual void Close() = 0;
  virtual void SetVolume(std::uint32_t volume) = 0;
};

// A family of devices: how many there are and how to make one.
class WaveOutDriver {
 public:
  virtual ~WaveOutDriver() = default;
  // The number of playback devices; 0 when there is no way to play sound.
  virtual int DeviceCount() = 0;
  // A closed device of this family.
  virtual std::unique_ptr<WaveOut> Create() = 0;
};

// The driver that output engines open their devices with. SDL until another
// is set. Engines keep the driver they opened with.
std::shared_ptr<WaveOutDriver> CurrentWaveOutDriver();
void SetWaveOutDriver(std::shared_ptr<WaveOutDriver> driver);

// SDL2 audio. SDL is told the application name "Tavrinsonic" and the stream
// role "Music". Device 0 is SDL's default device (what the sound server or
// the user's configuration picks), device n > 0 entry n of SDL's list.
std::shared_ptr<WaveOutDriver> MakeSdlWaveOutDriver();
// One device that plays nothing, at real time.
std::shared_ptr<WaveOutDriver> MakeNullWaveOutDriver();

}  // namespace platform
