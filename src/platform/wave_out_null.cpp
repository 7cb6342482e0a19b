// The null wave device: consumes what it is given at real time and discards
// it, so that a machine without sound still plays through its playlist at
// the right pace.
#include <memory>

#include "platform/wave_buffer_queue.h"
#include "platform/wave_out.h"

namespace platform {
namespace {

class NullWaveOut final : public WaveOut {
 public:
  ~NullWaveOut() override { Close(); }

  bool Open(int /*deviceId*/, std::uint32_t sampleRate, int channels, WaveDoneCallback done,
            void* context) override {
    if (open || sampleRate == 0 || channels < 1 || channels > 2) return false;
    if (!queue.Start(channels, done, context, false)) return false;
    if (!pump.Start(queue, sampleRate, channels, true)) {
      queue.Stop();
      return false;
    }
    open = true;
    return true;
  }
  bool Write(WaveBuffer* buffer) override { return queue.Push(buffer); }
  void Pause() override { queue.SetPaused(true); }
  void Restart() override { queue.SetPaused(false); }
  void Reset() override { queue.ReturnAll(); }
  void Close() override {
    if (!open) return;
    pump.Stop();
    queue.Stop();
    open = false;
  }
  void SetVolume(std::uint32_t volume) override { queue.SetVolume(volume); }

 private:
  WaveBufferQueue queue;
  WavePump pump;
  bool open = false;
};

class NullDriver final : public WaveOutDriver {
 public:
  int DeviceCount() override { return 1; }
  std::unique_ptr<WaveOut> Create() override { return std::make_unique<NullWaveOut>(); }
};

}  // namespace

std::shared_ptr<WaveOutDriver> MakeNullWaveOutDriver() { return std::make_shared<NullDriver>(); }

}  // namespace platform
