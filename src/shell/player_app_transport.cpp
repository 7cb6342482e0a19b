// PlayerApp: what the main window asks of the current decoder.
//
// The transport state isn't held here: it is always asked of the decoder.
// With no current decoder the state counts as stopped, the length as 0.
#include <array>
#include <cstdio>

#include "effects/equalizer.h"
#include "platform/text_format.h"
#include "platform/texts.h"
#include "playback/format_summary.h"
#include "shell/main_window.h"
#include "shell/player_app.h"
#include "shell/skin_display.h"
#include "shell/window_messages.h"

namespace shell {
namespace {

constexpr std::uint32_t kTextSeekTo = 6313;
constexpr std::uint32_t kSeekStatusMs = 1500;

enum DecoderTextMode : std::intptr_t { kTextTitle = 0, kTextStatus = 1, kTextStatusForASecond = 2 };

// Seconds as "%d:%02d:%02d" from one hour on, else "%02d:%02d".
std::string SeekTimeText(std::int64_t milliseconds) {
  const std::int64_t seconds = milliseconds / 1000;
  char text[48];
  if (seconds >= 3600) {
    std::snprintf(text, sizeof text, "%d:%02d:%02d", static_cast<int>(seconds / 3600),
                  static_cast<int>(seconds / 60 % 60), static_cast<int>(seconds % 60));
  } else {
    std::snprintf(text, sizeof text, "%02d:%02d", static_cast<int>(seconds / 60),
                  static_cast<int>(seconds % 60));
  }
  return text;
}

}  // namespace

std::int32_t PlayerApp::DecoderState() {
  return currentDecoder != nullptr ? currentDecoder->GetState() : playback::kStateStopped;
}

std::int32_t PlayerApp::LengthMs() {
  return currentDecoder != nullptr ? static_cast<std::int32_t>(currentDecoder->GetDuration()) : 0;
}

// The skin's poll of the position also gives the list the position in whole
// seconds. No row of the list screen shows it: the list keeps it, and that is all.
std::int32_t PlayerApp::PositionMs() {
  const std::uint32_t position = currentDecoder != nullptr ? currentDecoder->GetPosition() : 0;
  playlistSeconds = static_cast<std::int32_t>(position / 1000);
  return static_cast<std::int32_t>(position);
}

void PlayerApp::TogglePause() {
  if (currentDecoder != nullptr) currentDecoder->TogglePause();
}

void PlayerApp::SeekTo(std::int32_t milliseconds) {
  if (currentDecoder != nullptr) currentDecoder->Seek(milliseconds);
}

// The PLAYPAUSE action: stopped plays (with shuffle's pick), else pauses or
// resumes; the control then shows the opposite of having played.
void PlayerApp::PlayPause() {
  const std::int32_t state = DecoderState();
  if (state == playback::kStateStopped)
    Play(false);
  else
    TogglePause();
  if (skin != nullptr) skin->SetPaused(state != playback::kStatePlaying);
}

void PlayerApp::PlayStop() {
  if (DecoderState() != playback::kStateStopped)
    Stop();
  else
    Play(true);
}

// A step forward may go past the end by up to one step; that is allowed.
void PlayerApp::SkipForward() {
  if (currentDecoder == nullptr) return;
  const std::int64_t length = currentDecoder->GetDuration();
  const std::int64_t position = currentDecoder->GetPosition();
  const std::int64_t step = static_cast<std::int64_t>(settings.skipSeconds) * 1000;
  if (position >= length + step) return;
  const std::int64_t target = position + step;
  ShowStatus(platform::FormatText(platform::LoadText(kTextSeekTo), {SeekTimeText(target)}), kSeekStatusMs);
  currentDecoder->Seek(static_cast<int>(target));
}

// Nearer to the beginning than one step nothing happens: it doesn't go to 0.
void PlayerApp::SkipBack() {
  if (currentDecoder == nullptr) return;
  const std::int64_t position = currentDecoder->GetPosition();
  const std::int64_t step = static_cast<std::int64_t>(settings.skipSeconds) * 1000;
  if (position < step) return;
  const std::int64_t target = position - step;
  ShowStatus(platform::FormatText(platform::LoadText(kTextSeekTo), {SeekTimeText(target)}), kSeekStatusMs);
  currentDecoder->Seek(static_cast<int>(target));
}

// Message 2331 from a decoder or the stream client.
void PlayerApp::DecoderText(const std::string* text, std::intptr_t mode) {
  if (currentDecoder == nullptr || skin == nullptr) return;
  switch (mode) {
    case kTextTitle: {
      std::string title;
      if (text != nullptr)
        title = *text;
      else if (!currentDecoder->GetDisplayTitle(title))
        return;
      // A station without a name or a title leaves the address shown.
      if (!title.empty()) skin->SetTitle(title);
      return;
    }
    case kTextStatus:
      if (window) window->Timers().Kill(kTimerStatus);
      skin->SetMessage(text != nullptr ? *text : std::string());
      return;
    case kTextStatusForASecond:
      ShowStatus(text != nullptr ? *text : std::string(), 1000);
      return;
    default:
      return;
  }
}

// A stream's values change while it plays.
void PlayerApp::RefreshFormat() {
  if (currentDecoder == nullptr || skin == nullptr) return;
  playback::FormatSummary summary;
  currentDecoder->GetFormatSummary(summary);
  skin->SetTrackFigures(0, summary.bitRate, summary.sampleRate);
}

void PlayerApp::RefreshTitle() {
  if (currentDecoder == nullptr || skin == nullptr) return;
  std::string title;
  if (currentDecoder->GetDisplayTitle(title) && !title.empty()) skin->SetTitle(title);
}

// The user's values reach the filters; the face shows what the user wants,
// even when the option for WMA and Ogg keeps the filters off.
void PlayerApp::ApplyEqualizer() {
  std::uint32_t enabled = 0;
  std::array<std::int32_t, effects::kBandCount> bands{};
  std::int32_t preamp = 0;
  equalizerSettings.GetValues(enabled, bands, preamp);
  if (equalizer) {
    equalizer->SetBands(preamp, bands);
    equalizer->SetEnabled(enabled);
    if (settings.disableEqForWmaOgg) equalizer->SetEnabled(0);
  }
  if (skin != nullptr) skin->SetEqualizer(enabled != 0);
}

void PlayerApp::ToggleEqualizer() {
  equalizerSettings.SetEnabled(equalizerSettings.GetEnabled() != 0 ? 0 : 1);
  ApplyEqualizer();
}

void PlayerApp::ApplyEqualizerOption() {
  if (equalizer) equalizer->SetEnabled(settings.disableEqForWmaOgg ? 0 : 1);
}

void PlayerApp::ToggleExtraBass() {
  settings.extraBassEnabled = !settings.extraBassEnabled;
  if (skin != nullptr) skin->SetExtraBass(settings.extraBassEnabled);
  if (equalizer) equalizer->SetBassMode(settings.extraBassEnabled ? settings.extraBassStrength : 0);
}

// Nothing starts timer 137; it concerns the WMA and Ogg decoders only, and
// the handler stays for the day something does.
void PlayerApp::DecoderNudgeTimerFired() {
  if (window) window->Timers().Kill(kTimerDecoderNudge);
}

}  // namespace shell
