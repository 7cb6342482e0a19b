// The SDL2 wave device, the one that makes sound.
//
// Each WaveOut is one SDL audio device opened at the engine's rate and
// channel count; SDL converts to what the hardware or sound server takes.
// SDL's audio thread pulls through Fill, which only locks the buffer queue
// briefly, copies, pads with silence and marks used-up buffers done; the
// queue's return thread runs the done call-backs.
#include <SDL2/SDL.h>

#include <climits>
#include <cstring>
#include <memory>
#include <mutex>

#include "platform/wave_buffer_queue.h"
#include "platform/wave_out.h"

namespace platform {
namespace {

// SDL's audio subsystem, held while a driver or one of its devices lives.
class SdlAudioSystem {
 public:
  SdlAudioSystem() {
    // Sound servers show and route the stream by these.
    SDL_SetHint(SDL_HINT_APP_NAME, "Tavrinsonic");
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_APP_NAME, "Tavrinsonic");
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_STREAM_ROLE, "Music");
    ready = SDL_InitSubSystem(SDL_INIT_AUDIO) == 0;
  }
  ~SdlAudioSystem() {
    if (ready) SDL_QuitSubSystem(SDL_INIT_AUDIO);
  }
  SdlAudioSystem(const SdlAudioSystem&) = delete;
  SdlAudioSystem& operator=(const SdlAudioSystem&) = delete;

  bool Ready() const { return ready; }

 private:
  bool ready = false;
};

// Samples per SDL period: about 23 ms at 44100 Hz.
constexpr Uint16 kPeriodFrames = 1024;

class SdlWaveOut final : public WaveOut {
 public:
  explicit SdlWaveOut(std::shared_ptr<SdlAudioSystem> system) : audio(std::move(system)) {}
  ~SdlWaveOut() override { Close(); }

  bool Open(int deviceId, std::uint32_t sampleRate, int channels, WaveDoneCallback done,
            void* context) override {
    if (device != 0 || !audio->Ready() || deviceId < 0 || sampleRate == 0 || sampleRate > INT_MAX ||
        channels < 1 || channels > 2) {
      return false;
    }
    const char* name = nullptr;  // SDL's default device
    if (deviceId > 0) {
      name = SDL_GetAudioDeviceName(deviceId, 0);
      if (!name) return false;
    }
    if (!queue.Start(channels, done, context, true)) return false;
    SDL_AudioSpec wanted{};
    wanted.freq = static_cast<int>(sampleRate);
    wanted.format = AUDIO_S16SYS;
    wanted.channels = static_cast<Uint8>(channels);
    wanted.samples = kPeriodFrames;
    wanted.callback = &SdlWaveOut::Fill;
    wanted.userdata = this;
    SDL_AudioSpec obtained{};
    device = SDL_OpenAudioDevice(name, 0, &wanted, &obtained, 0);
    if (device == 0) {
      queue.Stop();
      return false;
    }
    SDL_PauseAudioDevice(device, 0);
    return true;
  }

  bool Write(WaveBuffer* buffer) override { return device != 0 && queue.Push(buffer); }

  void Pause() override {
    queue.SetPaused(true);
    if (device != 0) SDL_PauseAudioDevice(device, 1);
  }

  void Restart() override {
    queue.SetPaused(false);
    if (device != 0) SDL_PauseAudioDevice(device, 0);
  }

  void Reset() override { queue.ReturnAll(); }

  void Close() override {
    if (device == 0) return;
    SDL_CloseAudioDevice(device);  // returns once SDL's audio thread has ended
    device = 0;
    queue.Stop();
  }

  void SetVolume(std::uint32_t volume) override { queue.SetVolume(volume); }

 private:
  // SDL's audio thread. Never allocates, logs or waits.
  static void SDLCALL Fill(void* userdata, Uint8* stream, int length) {
    auto* self = static_cast<SdlWaveOut*>(userdata);
    auto* out = reinterpret_cast<std::int16_t*>(stream);
    const std::size_t wanted = static_cast<std::size_t>(length) / sizeof(std::int16_t);
    const std::size_t got = self->queue.Take(out, wanted);
    std::memset(out + got, 0, (wanted - got) * sizeof(std::int16_t));
  }

  std::shared_ptr<SdlAudioSystem> audio;
  WaveBufferQueue queue;
  SDL_AudioDeviceID device = 0;
};

class SdlDriver final : public WaveOutDriver {
 public:
  int DeviceCount() override {
    if (!System()->Ready()) return 0;
    const int count = SDL_GetNumAudioDevices(0);
    // -1: SDL can't list the devices, but its default device may still open.
    return count < 0 ? 1 : count;
  }

  std::unique_ptr<WaveOut> Create() override { return std::make_unique<SdlWaveOut>(System()); }

 private:
  std::shared_ptr<SdlAudioSystem> System() {
    std::lock_guard guard(lock);
    if (!system) system = std::make_shared<SdlAudioSystem>();
    return system;
  }

  std::mutex lock;
  std::shared_ptr<SdlAudioSystem> system;
};

}  // namespace

std::shared_ptr<WaveOutDriver> MakeSdlWaveOutDriver() { return std::make_shared<SdlDriver>(); }

}  // namespace platform
