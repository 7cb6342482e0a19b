// What the shell tells the player's face.
//
// The skin window (the face drawn from the skin in the install directory)
// implements this; the shell calls it on the window thread to show the
// title, the status line, the track's figures and the state of the switches.
#pragma once

#include <cstdint>
#include <string>

namespace shell {

class SkinDisplay {
 public:
  virtual ~SkinDisplay() = default;

  virtual void SetTitle(const std::string& text) = 0;
  // The status line; an empty text clears it.
  virtual void SetMessage(const std::string& text) = 0;
  // Length in milliseconds, bit rate in kbit/s, sample rate in Hz.
  virtual void SetTrackFigures(std::uint32_t lengthMs, std::uint32_t bitRate, std::uint32_t sampleRate) = 0;
  // The VOLUME control, on the slider scale 0 to 1000.
  virtual void SetVolume(int slider) = 0;
  virtual void SetShuffle(bool on) = 0;
  virtual void SetRepeat(bool on) = 0;
  virtual void SetEqualizer(bool on) = 0;
  virtual void SetExtraBass(bool on) = 0;
  // The PLAYPAUSE control's second state.
  virtual void SetPaused(bool paused) = 0;
  // A key went down or up: the control bound to it lights up or goes dark.
  virtual void KeyFeedback(std::uint16_t key, bool down) = 0;
};

}  // namespace shell
