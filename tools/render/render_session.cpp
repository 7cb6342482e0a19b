#include "render_session.h"

#include <algorithm>
#include <cinttypes>
#include <map>

#include "effects/equalizer.h"
#include "platform/device_volume.h"
#include "platform/registry.h"
#include "platform/wave_out.h"
#include "playback/audio_output.h"
#include "playback/media_decoder.h"
#include "playback/playback_settings.h"
#include "shell/player_app.h"
#include "shell/registry_key.h"
#include "wav_writer.h"

namespace render {

GatedCapture::GatedCapture() {
  platform::CaptureOptions capture;
  capture.pace = platform::CapturePace::kUnpaced;
  capture.applyVolume = false;
  capture.feedReady = [held = gate](int waitMs) { return held->Ready(waitMs); };
  driver = std::make_shared<platform::CaptureDriver>(capture);
  platform::SetWaveOutDriver(driver);
}

GatedCapture::~GatedCapture() { platform::SetWaveOutDriver(nullptr); }
namespace {

using Clock = std::chrono::steady_clock;

const char* OnOff(const std::atomic<std::uint32_t>& word) {
  return playback::PlaybackSettings::Read(word) ? "on" : "off";
}

std::string LengthText(std::uint32_t milliseconds) {
  if (milliseconds == 0) return "   live";
  char text[32];
  std::snprintf(text, sizeof text, "%u:%02u.%03u", milliseconds / 60000, milliseconds / 1000 % 60,
                milliseconds % 1000);
  return text;
}

// The file for the devices of a sample rate other than the first one's.
std::string FileForRate(const std::string& output, std::uint32_t rate) {
  const std::string suffix = "-" + std::to_string(rate);
  const std::size_t dot = output.rfind('.');
  const std::size_t slash = output.rfind('/');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash))
    return output + suffix + ".wav";
  return output.substr(0, dot) + suffix + output.substr(dot);
}

}  // namespace

RenderSession::RenderSession(const RenderOptions& renderOptions,
                             std::shared_ptr<platform::CaptureDriver> captureDriver, FeedGate& feedGate,
                             std::FILE* out)
    : options(renderOptions), driver(std::move(captureDriver)), gate(feedGate), report(out) {}

int RenderSession::Run(const std::string& registryFile) {
  platform::Registry registry(registryFile);
  platform::DeviceVolume volume(registry);
  shell::RegistryKey settingsKey(registry);
  if (!settingsKey.Bind(platform::RegistryRoot::LocalMachine, shell::kSettingsKeyPath)) {
    std::fprintf(stderr, "tavrinsonic-render: can't open the settings\n");
    return 1;
  }
  const shell::ShellServices services{registry,  settingsKey, windows,
                                      instances, packs,       [](std::uint32_t) { return std::nullopt; },
                                      nullptr,   &volume};
  shell::PlayerApp app(services);
  if (!app.Init() || !app.CreateMainWindow(0, 0, shell::kSkinWidth, shell::kSkinHeight)) {
    std::fprintf(stderr, "tavrinsonic-render: the player couldn't start\n");
    return 1;
  }
  ApplyOptions(app);
  windows.Window()->skin.onTrackFigures = [&](std::uint32_t lengthMs, std::uint32_t, std::uint32_t rate) {
    ReportTrack(app, lengthMs, rate);
  };
  windows.finished = [&] { return Finished(app); };

  const Clock::time_point start = Clock::now();
  lastProgress = start;
  gate.Watch(&app.Output());
  app.OpenMedia(options.input, false);
  app.Run();  // until Finished; then it stops playback
  gate.Watch(nullptr);
  playSeconds = std::chrono::duration<double>(Clock::now() - start).count();

  if (!WriteOutput()) return 1;
  std::fprintf(report, "%d track%s, %.3f s of audio in %.3f s: %.1fx real time\n", tracks,
               tracks == 1 ? "" : "s", renderedSeconds, playSeconds,
               playSeconds > 0 ? renderedSeconds / playSeconds : 0.0);
  return 0;
}

// The input plays once, in its order; the sound options of the command
// line replace the stored ones in memory.
void RenderSession::ApplyOptions(shell::PlayerApp& app) {
  playback::PlaybackSettings& playback = playback::Playback();
  if (options.crossfade) playback::PlaybackSettings::Write(playback.crossfade, *options.crossfade);
  if (options.gapless) playback::PlaybackSettings::Write(playback.gapless, *options.gapless);
  if (options.trimSilence) playback::PlaybackSettings::Write(playback.trimSilence, *options.trimSilence);

  shell::AppSettings& settings = app.Settings();
  settings.enqueueOnOpen = false;
  app.SetShuffle(false);
  app.SetRepeat(false);

  effects::EqualizerSettings& equalizerSettings = app.EqualizerSettings();
  if (options.equalizer) {
    equalizerSettings.SetEnabled(*options.equalizer ? 1 : 0);
    if (*options.equalizer) settings.disableEqForWmaOgg = false;
  }
  if (options.equalizerSliders) equalizerSettings.SetValues(equalizerSettings.GetEnabled(), *options.equalizerSliders);
  if (options.extraBass) {
    settings.extraBassEnabled = *options.extraBass != 0;
    if (*options.extraBass != 0) settings.extraBassStrength = *options.extraBass;
  }
  app.ApplyEqualizer();
  if (effects::Equalizer* filter = app.EqualizerFilter())
    filter->SetBassMode(settings.extraBassEnabled ? settings.extraBassStrength : 0);

  std::fprintf(report, "crossfade %s, gapless %s, trim silence %s, equalizer %s, extra bass %d\n",
               OnOff(playback.crossfade), OnOff(playback.gapless), OnOff(playback.trimSilence),
               equalizerSettings.GetEnabled() != 0 && !settings.disableEqForWmaOgg ? "on" : "off",
               settings.extraBassEnabled ? settings.extraBassStrength : 0);
}

bool RenderSession::Finished(shell::PlayerApp& app) {
  if (options.seconds && RecordedSeconds() >= *options.seconds) return true;
  const Clock::time_point now = Clock::now();
  const std::uint64_t frames = RecordedFrames();
  if (frames != lastFrames) {
    lastFrames = frames;
    lastProgress = now;
  }
  if (windows.Window()->queue.PendingCount() != 0 || app.Output().StreamCount() != 0) return false;
  if (app.DecoderState() != playback::kStateStopped)
    return now - lastProgress > std::chrono::seconds(kStallSeconds);
  for (const auto& tap : driver->Taps()) {
    // Still playing out what it was given? A device that holds nothing and
    // has recorded nothing for a moment is done too: a resume after a stop
    // restarts a device the engine had already put to sleep.
    const bool quiet = now - lastProgress > kQuiet;
    if (!tap->IsPaused() && !(quiet && tap->QueuedBuffers() == 0)) return false;
  }
  return true;
}

void RenderSession::ReportTrack(shell::PlayerApp& app, std::uint32_t lengthMs, std::uint32_t sampleRate) {
  playlist::PlaylistView& list = app.Playlist();
  const int index = list.CurrentIndex();
  const std::string path = index >= 0 && index < list.ItemCount() ? list.PathAt(index) : options.input;
  ++tracks;
  std::fprintf(report, "%3d  %s  %6u Hz  %s\n", tracks, LengthText(lengthMs).c_str(), sampleRate,
               path.c_str());
  std::fflush(report);
}

std::uint64_t RenderSession::RecordedFrames() const {
  std::uint64_t frames = 0;
  for (const auto& tap : driver->Taps())
    frames += tap->SampleCount() / static_cast<std::size_t>(tap->Channels());
  return frames;
}

double RenderSession::RecordedSeconds() const {
  double seconds = 0;
  for (const auto& tap : driver->Taps()) {
    seconds += static_cast<double>(tap->SampleCount()) / tap->Channels() / tap->SampleRate();
  }
  return seconds;
}

// One file per sample rate, the devices of a rate one after the other in the
// order they opened; with a time limit, the files together hold no more.
bool RenderSession::WriteOutput() {
  std::vector<std::uint32_t> rates;
  std::map<std::uint32_t, std::vector<std::int16_t>> byRate;
  for (const auto& tap : driver->Taps()) {
    if (byRate.find(tap->SampleRate()) == byRate.end()) rates.push_back(tap->SampleRate());
    std::vector<std::int16_t>& samples = byRate[tap->SampleRate()];
    const std::vector<std::int16_t> recorded = tap->Samples();
    samples.insert(samples.end(), recorded.begin(), recorded.end());
  }
  if (rates.empty()) {
    rates.push_back(44100);
    byRate[44100];
  }
  double budget = options.seconds ? *options.seconds : -1;
  renderedSeconds = 0;
  for (std::size_t i = 0; i < rates.size(); ++i) {
    std::vector<std::int16_t>& samples = byRate[rates[i]];
    const std::uint64_t framesPerSecond = rates[i];
    if (budget >= 0) {
      const auto frames = static_cast<std::uint64_t>(budget * static_cast<double>(framesPerSecond));
      if (samples.size() / 2 > frames) samples.resize(static_cast<std::size_t>(frames * 2));
      budget -= static_cast<double>(samples.size() / 2) / static_cast<double>(framesPerSecond);
    }
    renderedSeconds += static_cast<double>(samples.size() / 2) / static_cast<double>(framesPerSecond);
    const std::string path = i == 0 ? options.output : FileForRate(options.output, rates[i]);
    if (!WriteWavFile(path, samples, rates[i], 2)) {
      std::fprintf(stderr, "tavrinsonic-render: can't write %s\n", path.c_str());
      return false;
    }
    std::fprintf(report, "wrote %s (%" PRIu64 " frames at %u Hz)\n", path.c_str(),
                 static_cast<std::uint64_t>(samples.size() / 2), rates[i]);
  }
  return true;
}

}  // namespace render
