// PlayerApp: the volume, on its three scales (volume_scales.h).
//
// The volume of the program is the wave device's (useDeviceVolume is always
// on): ApplyVolume sets it in both channels and ReadVolume reads its left
// channel. Mute works on the output's own volume instead, and keeps what it
// muted in mutedVolume; a step while muted only changes what comes back.
#include "platform/device_volume.h"
#include "platform/text_format.h"
#include "platform/texts.h"
#include "playback/playback_settings.h"
#include "shell/main_window.h"
#include "shell/player_app.h"
#include "shell/skin_display.h"
#include "shell/volume_scales.h"
#include "shell/window_messages.h"

namespace shell {
namespace {

constexpr std::uint32_t kTextVolume = 6336;
constexpr std::int64_t kVolumeStep = 4096;
constexpr std::uint32_t kVolumeStatusMs = 1500;

bool UseDeviceVolume() {
  return playback::PlaybackSettings::Read(playback::Playback().useDeviceVolume);
}

}  // namespace

void PlayerApp::CloseOutput() {
  output.CloseDevice();
}

// The VOLUME control's value is kept for a face that is made later.
void PlayerApp::ShowVolumeOnFace(std::int32_t slider) {
  faceVolume = slider;
  if (skin != nullptr) skin->SetVolume(slider);
}

std::uint32_t PlayerApp::ReadVolume() {
  if (!UseDeviceVolume()) return 0;
  currentVolume = Volume().Get() & 0xFFFF;
  return currentVolume;
}

void PlayerApp::ApplyVolume(std::uint32_t deviceVolume) {
  currentVolume = deviceVolume;
  const std::uint32_t channel = deviceVolume & 0xFFFF;
  if (UseDeviceVolume())
    Volume().Set(channel | channel << 16);
  else if (currentDecoder != nullptr)
    currentDecoder->SetVolume(deviceVolume, deviceVolume);
}

// A touch on the slider ends a fade-in where it is.
void PlayerApp::SetVolumeFromSlider(std::int32_t slider) {
  if (window) window->Timers().Kill(kTimerFadeIn);
  ShowVolumeOnFace(slider);
  ApplyVolume(SliderToDevice(slider));
}

void PlayerApp::VolumeStep(bool up) {
  std::int64_t volume = mutedVolume != 0 ? static_cast<std::int64_t>(mutedVolume) : ReadVolume();
  volume += up ? kVolumeStep : -kVolumeStep;
  const auto stepped = static_cast<std::uint32_t>(volume < 0 ? 0 : volume > 65535 ? 65535 : volume);
  ShowStatus(platform::FormatText(platform::LoadText(kTextVolume), {std::int64_t{DeviceToPercent(stepped)}}),
             kVolumeStatusMs);
  if (mutedVolume != 0) {
    mutedVolume = stepped | stepped << 16;  // nothing sounds louder, the slider stays
    return;
  }
  ApplyVolume(stepped);
  ShowVolumeOnFace(DeviceToSlider(stepped));
}

// Muting keeps the device's volume, which is one channel's: unmuting with no
// step between brings the left channel back, the right one at 0 and the
// slider at half. That is how the program has always behaved.
void PlayerApp::ToggleMute() {
  if (mutedVolume == 0) {
    mutedVolume = ReadVolume();
    ShowVolumeOnFace(0);
    output.SetVolume(0, 0);
    return;
  }
  const std::uint32_t left = mutedVolume & 0xFFFF;
  const std::uint32_t right = mutedVolume >> 16;
  ShowVolumeOnFace(DeviceToSlider((left + right) / 2));
  output.SetVolume(left, right);
  mutedVolume = 0;
}

// Timer 138, the alarm's fade-in: a step up every 200 ms until full.
void PlayerApp::FadeInStep() {
  VolumeStep(true);
  if (currentVolume >= 65535 && window) window->Timers().Kill(kTimerFadeIn);
}

}  // namespace shell
