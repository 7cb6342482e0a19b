// The face shown until a skin is loaded: the skin's area, at its zoom, with
// the title and the status line written plainly. It takes every call of the
// skin's display and keeps the values, so that nothing the shell tells it is
// lost; a skin window replaces it with the same interface.
//
// Threads: window thread.
#pragma once

#include <QWidget>
#include <string>

#include "shell/skin_display.h"

namespace ui {

class PlaceholderFace : public QWidget, public shell::SkinDisplay {
 public:
  // `width` and `height` in skin pixels, shown `zoom` times as large.
  PlaceholderFace(int width, int height, int zoom, QWidget* parent = nullptr);

  void SetTitle(const std::string& text) override;
  void SetMessage(const std::string& text) override;
  void SetTrackFigures(std::uint32_t lengthMs, std::uint32_t bitRate, std::uint32_t sampleRate) override;
  void SetVolume(int slider) override;
  void SetShuffle(bool on) override;
  void SetRepeat(bool on) override;
  void SetEqualizer(bool on) override;
  void SetExtraBass(bool on) override;
  void SetPaused(bool paused) override;
  void KeyFeedback(std::uint16_t key, bool down) override;

  const std::string& Title() const { return title; }
  const std::string& Message() const { return message; }
  int Zoom() const { return zoom; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  int zoom;
  std::string title;
  std::string message;
  int volume = 0;
  bool shuffle = false;
  bool repeat = false;
  bool equalizer = false;
  bool extraBass = false;
  bool paused = false;
};

}  // namespace ui
