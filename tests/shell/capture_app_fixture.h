// The application with its own decoders, list and output, playing into
// capture devices: unpaced ones fed through the render tool's gate, or
// stepped ones that play only when the test says.
#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "feed_gate.h"
#include "platform/wave_out.h"
#include "platform/wave_out_capture.h"
#include "playback/audio_output.h"
#include "playback/media_decoder.h"
#include "playback/playback_settings.h"
#include "player_app_fixture.h"

namespace shell_testing {

class CaptureAppTest : public PlayerAppTest {
 protected:
  void TearDown() override {
    gate.Watch(nullptr);
    PlayerAppTest::TearDown();
    SetOptions(true, true, true);  // the defaults
    platform::SetWaveOutDriver(nullptr);
  }
  // Starts the application on capture devices of `pace`.
  void StartWith(platform::CapturePace pace) {
    platform::CaptureOptions capture;
    capture.pace = pace;
    capture.applyVolume = false;
    if (pace == platform::CapturePace::kUnpaced)
      capture.feedReady = [this](int waitMs) { return gate.Ready(waitMs); };
    driver = std::make_shared<platform::CaptureDriver>(capture);
    platform::SetWaveOutDriver(driver);
    Start();
    gate.Watch(&app->Output());
  }
  // Call after the start: the settings load brings the stored options.
  static void SetOptions(bool crossfade, bool gapless, bool trimSilence) {
    playback::PlaybackSettings& options = playback::Playback();
    playback::PlaybackSettings::Write(options.crossfade, crossfade);
    playback::PlaybackSettings::Write(options.gapless, gapless);
    playback::PlaybackSettings::Write(options.trimSilence, trimSilence);
  }

  // Runs the window's messages until `done` holds; false only on a hang.
  bool RunUntil(const std::function<bool()>& done, int limitMs = 30000) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(limitMs);
    while (!done()) {
      if (std::chrono::steady_clock::now() > deadline) return false;
      Window().queue.WaitAndDispatch(2);
    }
    return true;
  }
  // Nothing plays, nothing is queued, and every device has played all it
  // was given: it was paused, or it holds no buffer and has recorded nothing
  // for a while (a resume after a stop restarts a device the engine had
  // already put to sleep).
  bool PlayedOut() {
    const auto now = std::chrono::steady_clock::now();
    std::size_t recorded = 0;
    for (const auto& tap : driver->Taps()) recorded += tap->SampleCount();
    if (recorded != lastRecorded) {
      lastRecorded = recorded;
      lastRecording = now;
    }
    if (Window().queue.PendingCount() != 0 || app->DecoderState() != playback::kStateStopped ||
        app->Output().StreamCount() != 0)
      return false;
    const bool quiet = now - lastRecording > std::chrono::milliseconds(100);
    const auto taps = driver->Taps();
    return std::all_of(taps.begin(), taps.end(), [&](const auto& tap) {
      return tap->IsPaused() || (quiet && tap->QueuedBuffers() == 0);
    });
  }
  // What PlayedOut looks at, for a failure's message.
  std::string OutputState() {
    std::string state = "decoder state " + std::to_string(app->DecoderState()) + ", streams " +
                        std::to_string(app->Output().StreamCount()) + ", pending " +
                        std::to_string(Window().queue.PendingCount());
    for (const auto& tap : driver->Taps())
      state += "; a device " + std::string(tap->IsPaused() ? "paused" : "running") + " holding " +
               std::to_string(tap->QueuedBuffers()) + " buffers";
    return state;
  }

  render::FeedGate gate;
  std::shared_ptr<platform::CaptureDriver> driver;

 private:
  std::size_t lastRecorded = 0;
  std::chrono::steady_clock::time_point lastRecording;
};

}  // namespace shell_testing
