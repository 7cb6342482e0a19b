// A slider of the skin: a track (the element's rectangle) and a thumb with a
// transparent colour, at a position from 0 to 1000.
//
// `orientation` in degrees says where the thumb runs: 0 left to right, 180
// right to left (horizontally), 90 bottom to top, 270 top to bottom
// (vertically); any other value leaves the thumb at the window's top left
// corner. `position` is where the thumb stands along the screen's axis;
// the value is the same for 0 and 270, and 1000 less it for 90 and 180.
//
// The skin's sliders are indicators: the mouse moves the thumb and posts
// nothing, and the player's next update puts it back. The released thumb is
// drawn at rest, the pressed one while dragged; a pressed thumb larger than
// the released one is cut to the released one's size.
//
// Threads: window thread only.
#pragma once

#include <memory>

#include "skin/skin_element.h"

namespace skin {

struct ThumbSource {
  int bitmap = -1;
  int x = 0;
  int y = 0;
  int w = 0;
  int h = 0;
  SkinColor mask = 0;
};

class SkinSlider : public SkinElement {
 public:
  SkinSlider(int actionRow, int orientation, const ThumbSource& released, const ThumbSource& pressed);

  int GetId() const override { return id; }
  bool OnMouseMove(int x, int y) override;
  bool OnButtonUp(int x, int y) override;
  void Redraw() override;
  bool OnButtonDown(int x, int y) override;
  int GetType() const override { return kTypeSlider; }
  void Paint(SkinCanvas& canvas, const SkinRect* region) override;

  // Ignored while dragging; clamped to 0..1000; no redraw.
  void SetValue(int value);
  int GetValue() const;
  // Redraws on a change.
  void SetVisible(bool value);
  // Makes the two thumb pictures with the window's help; false (and no
  // thumb) when either can't be made.
  bool BuildImageLists();

  bool IsVisible() const { return visible; }
  bool IsDragging() const { return dragging; }
  int Position() const { return position; }
  SkinColor ReleasedMask() const { return released.mask; }
  // The thumb's top left corner in Paint, in skin pixels.
  void ThumbPlace(int& left, int& top) const;
  // Where a point puts the thumb, 0 to 1000, or -1 outside the track.
  int PositionFromPoint(int x, int y) const;

 private:
  bool Horizontal() const { return orientation == 0 || orientation == 180; }
  bool Reversed() const { return orientation == 90 || orientation == 180; }
  const ThumbSource& Thumb() const { return dragging ? pressed : released; }

  int id;
  ThumbSource released;
  ThumbSource pressed;
  int orientation;
  std::unique_ptr<SkinImage> releasedImage;
  std::unique_ptr<SkinImage> pressedImage;
  bool dragging = false;
  bool visible = false;
  int position = 0;
};

}  // namespace skin
