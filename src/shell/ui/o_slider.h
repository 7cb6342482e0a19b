// OSlider: the small vertical slider of the Equalizer dialog.
//
// A scale picture with a thumb on it, for positions from `minimum` (0) to
// `maximum` (28); the top of the scale is position 0, so the Down key moves
// the value up. The thumb stands at x = 1, y = position * (scale height -
// thumb height) / (maximum - minimum), or 0 when the two are equal; the
// minimum isn't subtracted from the position, which makes no difference with
// the minimum at 0. With the focus a dotted frame is drawn over the scale.
//
// Keys: Up and Down move by one, clamped, and report a change through
// `onScroll` (the platform's vertical scroll notification with the thumb's
// position). Left and Right move the focus to the previous or next sibling
// that takes the focus by tab, wrapping around (Right wraps to the parent's
// first child). Other keys go on to the parent.
//
// The scale and the thumb are pictures shared by all sliders, drawn once by
// Register (the Equalizer dialog calls it; a second call does nothing).
//
// Threads: Qt's GUI thread only.
#pragma once

#include <QWidget>
#include <functional>

namespace ui {

class OSlider : public QWidget {
 public:
  // Makes the two shared pictures once.
  static void Register();

  // A slider `zoom` times the size of its pictures.
  explicit OSlider(QWidget* parent = nullptr, int zoom = 1);

  int Position() const { return position; }
  // Clamped to the maximum first, then to the minimum.
  void SetPosition(int value, bool redraw);
  // The bounds as 16-bit signed values; the position is clamped to them.
  void SetRange(int minimumValue, int maximumValue, bool redraw);
  int Minimum() const { return minimum; }
  int Maximum() const { return maximum; }
  // The thumb's top in the pictures' pixels.
  int ThumbTop() const;

  // Called when a key moved the position, with the new position.
  std::function<void(OSlider&, int)> onScroll;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  void Step(int delta);
  void MoveFocus(bool forward);
  int Clamped(int value) const;

  int zoom;
  int minimum = 0;
  int maximum = 28;
  int position = 0;
};

}  // namespace ui
