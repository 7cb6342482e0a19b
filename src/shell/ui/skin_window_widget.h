// The skin window in Qt: the face of the main window, drawn from the skin in
// the install directory's BaseSkin folder.
//
// The skin's 176 by 180 pixel surface is kept as a picture at the window's
// integer zoom. A paint that is due draws the whole skin on it (background,
// then every element); an element's direct redraw draws its own rectangle on
// it at once; the widget only shows the picture, so nothing flickers. Pointer
// positions are divided by the zoom, so that the elements see the skin's
// coordinates as the layout writes them. Qt keeps the mouse for the widget
// while the button is held, as the phone's full screen did. A double click
// counts as one click. Keys go on to the main window (the face never takes
// the focus).
//
// Threads: Qt's GUI thread only.
#pragma once

#include <QPixmap>
#include <QRegion>
#include <QWidget>
#include <memory>
#include <string>

#include "platform/message_target.h"
#include "platform/qt/qt_timers.h"
#include "shell/skin_display.h"
#include "shell/ui/skin_bitmaps.h"
#include "shell/ui/skin_canvas.h"
#include "skin/skin_window.h"

namespace ui {

class SkinWindowWidget : public QWidget, public shell::SkinDisplay, public skin::SkinSurface {
 public:
  // Loads the skin from `skinDirectory` (ending in "/") and starts its
  // timers; the elements post to and poll `parent`. Null when the skin can't
  // be loaded.
  static std::unique_ptr<SkinWindowWidget> Create(const std::string& skinDirectory, int zoom,
                                                  platform::MessageTarget& parent);
  ~SkinWindowWidget() override;

  // --- shell::SkinDisplay --------------------------------------------------------------
  void SetTitle(const std::string& text) override { window.SetTitle(text); }
  void SetMessage(const std::string& text) override { window.SetMessage(text); }
  void SetTrackFigures(std::uint32_t lengthMs, std::uint32_t bitRate, std::uint32_t sampleRate) override {
    window.SetTrackFigures(lengthMs, bitRate, sampleRate);
  }
  void SetVolume(int slider) override { window.SetVolume(slider); }
  void SetShuffle(bool on) override { window.SetShuffle(on); }
  void SetRepeat(bool on) override { window.SetRepeat(on); }
  void SetEqualizer(bool on) override { window.SetEqualizer(on); }
  void SetExtraBass(bool on) override { window.SetExtraBass(on); }
  void SetPaused(bool paused) override { window.SetPaused(paused); }
  void KeyFeedback(std::uint16_t key, bool down) override { window.KeyFeedback(key, down); }

  // --- skin::SkinSurface ---------------------------------------------------------------
  void Invalidate(const skin::SkinRect& rect) override;
  void Update() override;
  skin::SkinCanvas& Canvas() override { return canvas; }
  bool PostToParent(std::uint32_t message) override;
  int TextWidth(std::string_view text, const skin::SkinFont& font) override;
  std::unique_ptr<skin::SkinImage> CreateMaskedImage(std::span<const skin::BitmapPiece> pieces, int workW,
                                                     int workH, int w, int h, skin::SkinColor mask) override;

  skin::SkinWindow& Skin() { return window; }
  int Zoom() const { return zoom; }
  // The skin's surface as last drawn, at the zoom.
  const QPixmap& Surface() const { return surface; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;

 private:
  SkinWindowWidget(int zoom, platform::MessageTarget& parent);
  QRect Zoomed(const QRect& skinRect) const;
  QPoint SkinPoint(const QPointF& position) const;

  int zoom;
  platform::MessageTarget& parent;
  SkinBitmapTable bitmaps;
  QPixmap surface;
  QtSkinCanvas canvas;
  bool paintDue = true;
  bool painting = false;  // a whole paint runs: the screen is copied anyway
  QRegion pending;        // widget pixels marked for the next paint
  // Made with the skin and declared before it: the skin stops them when it goes.
  std::unique_ptr<platform::qt::QtTimers> timers;
  skin::SkinWindow window;
};

}  // namespace ui
