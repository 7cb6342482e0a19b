// The capture wave device: records every sample it plays, for tests and the
// render tool.
//
// Pacing:
//   kUnpaced   plays each buffer as soon as it is written (as fast as the
//              engine can mix), the mode for rendering and most tests;
//   kRealTime  plays at the sample rate, in 10 ms steps, as a sound card would;
//   kStepped   plays only when told to, whole buffers at a time (Advance), so
//              that a test can hold the engine at an exact point.
// Paused devices play nothing, and a Reset drops what is queued unplayed:
// neither leaves a trace in the recording.
//
// Threads: a CaptureTap may be read from any thread while its device plays.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/wave_buffer_queue.h"
#include "platform/wave_out.h"

namespace platform {

enum class CapturePace { kUnpaced, kRealTime, kStepped };

struct CaptureOptions {
  CapturePace pace = CapturePace::kUnpaced;
  // Apply the device's own and the process volume, as a sound card would;
  // false records the samples exactly as the engine wrote them.
  bool applyVolume = true;
  // What DeviceCount reports; 0 acts out a machine without sound.
  int deviceCount = 1;
  // Unpaced only: asked before each buffer is played; while it says no the
  // device holds back (up to WavePump::kFeedWaitMs). It may wait the
  // milliseconds it is given for its yes, and must before it says no. The render tool passes
  // its feed gate (tools/render/feed_gate.h), so that a device that outruns
  // every decoder doesn't starve their streams.
  WavePump::FeedReady feedReady = nullptr;
};

// What one opened capture device played, and its controls.
class CaptureTap {
 public:
  CaptureTap(CapturePace pace, std::uint32_t sampleRate, int channels);
  CaptureTap(const CaptureTap&) = delete;
  CaptureTap& operator=(const CaptureTap&) = delete;

  std::uint32_t SampleRate() const { return sampleRate; }
  int Channels() const { return channels; }
  // Every sample played so far, interleaved.
  std::vector<std::int16_t> Samples() const;
  std::size_t SampleCount() const;
  // Buffers written and not yet played or reset.
  std::size_t QueuedBuffers() const { return queue.QueuedBuffers(); }
  bool IsPaused() const { return queue.IsPaused(); }
  // How often the device has been reset.
  int Resets() const;

  // kStepped: plays up to `buffers` whole queued buffers now and returns how
  // many it played (fewer when fewer are queued, none while paused).
  std::size_t Advance(std::size_t buffers);

 private:
  friend class CaptureWaveOut;
  // The queue's observer: runs before the buffers played are returned.
  static void Recorded(void* context, const std::int16_t* samples, std::size_t count);

  const CapturePace pace;
  const std::uint32_t sampleRate;
  const int channels;
  WaveBufferQueue queue;
  WavePump pump;

  // The recording grows in chunks that are never moved, so that a long
  // recording doesn't copy all it holds each time it outgrows its block.
  static constexpr std::size_t kChunkSamples = std::size_t{1} << 18;

  mutable std::mutex recordLock;                    // guards the three below; taken inside the queue's lock
  std::vector<std::vector<std::int16_t>> recorded;  // full chunks, then the one filling
  std::size_t recordedCount = 0;
  int resets = 0;
};

class CaptureDriver final : public WaveOutDriver {
 public:
  explicit CaptureDriver(CaptureOptions options = {});

  int DeviceCount() override { return options.deviceCount; }
  std::unique_ptr<WaveOut> Create() override;

  // The taps of every device opened so far, in the order they were opened.
  std::vector<std::shared_ptr<CaptureTap>> Taps() const;
  // The tap of the index-th device opened, null when there is none yet.
  std::shared_ptr<CaptureTap> Tap(std::size_t index) const;

  struct TapList {
    std::mutex lock;
    std::vector<std::shared_ptr<CaptureTap>> taps;
  };

 private:
  const CaptureOptions options;
  std::shared_ptr<TapList> tapList;
};

}  // namespace platform
