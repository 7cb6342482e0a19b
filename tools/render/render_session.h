// One run of the render tool: the real PlayerApp, headless, playing the
// input into an unpaced capture device, held to the decoders' pace by the
// feed gate, that records all it plays, until the list has played out (or
// the time limit is reached).
//
// The end of a run: the message queue is empty, the current decoder is
// stopped, no stream is left in the output and every capture device has
// gone idle (an engine stops its device only once it has played all it was
// given, so nothing is still on its way), or holds nothing and has been
// quiet for kQuiet. A decoder that reports playing
// while nothing sounds and nothing arrives for kStallSeconds ends the run
// too: that is a track whose stream couldn't open, which the player would
// sit on silently.
#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "feed_gate.h"
#include "headless_shell.h"
#include "platform/wave_out_capture.h"
#include "render_options.h"

namespace shell {
class PlayerApp;
}

namespace render {

// An unpaced capture device held to the decoders' pace by a feed gate,
// installed as the process's wave driver from construction to destruction.
// Make it before the session that plays into it.
class GatedCapture {
 public:
  GatedCapture();
  ~GatedCapture();
  GatedCapture(const GatedCapture&) = delete;
  GatedCapture& operator=(const GatedCapture&) = delete;

  FeedGate& Gate() { return *gate; }
  const std::shared_ptr<platform::CaptureDriver>& Driver() const { return driver; }

 private:
  std::shared_ptr<FeedGate> gate = std::make_shared<FeedGate>();
  std::shared_ptr<platform::CaptureDriver> driver;
};

class RenderSession {
 public:
  static constexpr int kStallSeconds = 30;
  static constexpr std::chrono::milliseconds kQuiet{100};

  // `driver` must be the process's wave driver, and `gate` the one its
  // devices ask: the session points it at the player's output while it runs.
  RenderSession(const RenderOptions& options, std::shared_ptr<platform::CaptureDriver> driver, FeedGate& gate,
                std::FILE* report);
  // 0 on success, 1 when the player couldn't start or the output couldn't be written.
  int Run(const std::string& registryFile);
  // Of the last Run: the seconds of audio written, and the wall-clock
  // seconds from opening the input until the list had played out.
  double AudioSeconds() const { return renderedSeconds; }
  double PlaySeconds() const { return playSeconds; }

 private:
  void ApplyOptions(shell::PlayerApp& app);
  bool Finished(shell::PlayerApp& app);
  void ReportTrack(shell::PlayerApp& app, std::uint32_t lengthMs, std::uint32_t sampleRate);
  std::uint64_t RecordedFrames() const;
  double RecordedSeconds() const;
  bool WriteOutput();

  const RenderOptions& options;
  std::shared_ptr<platform::CaptureDriver> driver;
  FeedGate& gate;
  std::FILE* report;
  HeadlessWindowSystem windows;
  NoInstanceLink instances;
  NoLanguagePacks packs;
  int tracks = 0;
  std::uint64_t lastFrames = 0;
  std::chrono::steady_clock::time_point lastProgress;
  double renderedSeconds = 0;
  double playSeconds = 0;
};

}  // namespace render
