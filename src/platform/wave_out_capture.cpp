#include "platform/wave_out_capture.h"

#include <algorithm>

namespace platform {

CaptureTap::CaptureTap(CapturePace devicePace, std::uint32_t rate, int deviceChannels)
    : pace(devicePace), sampleRate(rate), channels(deviceChannels) {}

std::vector<std::int16_t> CaptureTap::Samples() const {
  std::lock_guard guard(recordLock);
  std::vector<std::int16_t> all;
  all.reserve(recordedCount);
  for (const auto& chunk : recorded) all.insert(all.end(), chunk.begin(), chunk.end());
  return all;
}

std::size_t CaptureTap::SampleCount() const {
  std::lock_guard guard(recordLock);
  return recordedCount;
}

int CaptureTap::Resets() const {
  std::lock_guard guard(recordLock);
  return resets;
}

void CaptureTap::Recorded(void* context, const std::int16_t* samples, std::size_t count) {
  auto* tap = static_cast<CaptureTap*>(context);
  std::lock_guard guard(tap->recordLock);
  tap->recordedCount += count;
  while (count > 0) {
    if (tap->recorded.empty() || tap->recorded.back().size() == kChunkSamples) {
      tap->recorded.emplace_back().reserve(kChunkSamples);
    }
    std::vector<std::int16_t>& chunk = tap->recorded.back();
    const std::size_t run = std::min(count, kChunkSamples - chunk.size());
    chunk.insert(chunk.end(), samples, samples + run);
    samples += run;
    count -= run;
  }
}

std::size_t CaptureTap::Advance(std::size_t buffers) {
  if (pace != CapturePace::kStepped) return 0;
  std::vector<std::int16_t> scratch;
  std::size_t played = 0;
  while (played < buffers) {
    const std::size_t length = queue.HeadSamples();
    if (length == 0) break;
    scratch.resize(length);
    if (queue.Take(scratch.data(), length) == 0) break;  // paused
    ++played;
  }
  return played;
}

class CaptureWaveOut final : public WaveOut {
 public:
  CaptureWaveOut(CaptureOptions deviceOptions, std::shared_ptr<CaptureDriver::TapList> list)
      : options(deviceOptions), tapList(std::move(list)) {}
  ~CaptureWaveOut() override { Close(); }

  bool Open(int deviceId, std::uint32_t sampleRate, int channels, WaveDoneCallback done,
            void* context) override {
    if (tap || deviceId < 0 || deviceId >= options.deviceCount || sampleRate == 0 || channels < 1 ||
        channels > 2) {
      return false;
    }
    auto opened = std::make_shared<CaptureTap>(options.pace, sampleRate, channels);
    if (!opened->queue.Start(channels, done, context, options.applyVolume, &CaptureTap::Recorded,
                             opened.get())) {
      return false;
    }
    if (options.pace != CapturePace::kStepped &&
        !opened->pump.Start(opened->queue, sampleRate, channels, options.pace == CapturePace::kRealTime,
                            options.feedReady)) {
      opened->queue.Stop();
      return false;
    }
    tap = std::move(opened);
    std::lock_guard guard(tapList->lock);
    tapList->taps.push_back(tap);
    return true;
  }
  bool Write(WaveBuffer* buffer) override { return tap && tap->queue.Push(buffer); }
  void Pause() override {
    if (tap) tap->queue.SetPaused(true);
  }
  void Restart() override {
    if (tap) tap->queue.SetPaused(false);
  }
  void Reset() override {
    if (!tap) return;
    {
      std::lock_guard guard(tap->recordLock);
      ++tap->resets;
    }
    tap->queue.ReturnAll();
  }
  void Close() override {
    if (!tap) return;
    tap->pump.Stop();
    tap->queue.Stop();
    tap.reset();
  }
  void SetVolume(std::uint32_t volume) override {
    if (tap) tap->queue.SetVolume(volume);
  }

 private:
  const CaptureOptions options;
  std::shared_ptr<CaptureDriver::TapList> tapList;
  std::shared_ptr<CaptureTap> tap;
};

CaptureDriver::CaptureDriver(CaptureOptions driverOptions)
    : options(driverOptions), tapList(std::make_shared<TapList>()) {}

std::unique_ptr<WaveOut> CaptureDriver::Create() {
  return std::make_unique<CaptureWaveOut>(options, tapList);
}

std::vector<std::shared_ptr<CaptureTap>> CaptureDriver::Taps() const {
  std::lock_guard guard(tapList->lock);
  return tapList->taps;
}

std::shared_ptr<CaptureTap> CaptureDriver::Tap(std::size_t index) const {
  std::lock_guard guard(tapList->lock);
  return index < tapList->taps.size() ? tapList->taps[index] : nullptr;
}

}  // namespace platform
