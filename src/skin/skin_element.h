// One live rectangle on the skin, and what all of them share.
//
// Elements aren't windows: they share the one skin window, draw themselves
// on it from the skin's bitmaps, and are told of the mouse by the window.
// Their kinds are told apart by GetType, whose numbers the window tests:
// 1 button, 2 slider, 3 timer, 4 title bar, 5 check button, 6 status icon,
// 7 text.
//
// Paint draws on a canvas over a background that is already there, as part
// of a paint of the whole skin. Redraw draws at once, outside a paint; where
// an element has to wipe what it drew before, it first copies the piece of
// the background under its rectangle.
//
// Coordinates are skin pixels; the numbers come from the layout unchecked,
// so arithmetic on them is done in 64 bits.
//
// Threads: window thread only.
#pragma once

#include <cstdint>

#include "skin/skin_surface.h"

namespace skin {

enum ElementType : int {
  kTypeNone = 0,
  kTypeButton = 1,
  kTypeSlider = 2,
  kTypeTimer = 3,
  kTypeTitleBar = 4,
  kTypeCheckButton = 5,
  kTypeIconStatus = 6,
  kTypeText = 7,
};

// Where an element's picture comes from: a bitmap of the skin and the place
// in it; the size is the element's own.
struct ImageSource {
  int bitmap = -1;
  int x = 0;
  int y = 0;
};

class SkinElement {
 public:
  virtual ~SkinElement() = default;

  // The row of the action table, or -1.
  virtual int GetId() const { return -1; }
  // The pointer moved with the button held; true when the element changed.
  virtual bool OnMouseMove(int /*x*/, int /*y*/) { return false; }
  virtual bool OnButtonUp(int /*x*/, int /*y*/) { return false; }
  // Marks the rectangle for the next paint.
  virtual void Invalidate();
  virtual void SetWindow(SkinSurface* surface) { window = surface; }
  // Draws now: the base marks the rectangle and paints what is marked.
  virtual void Redraw();
  // True when the element takes the press (and with it the mouse).
  virtual bool OnButtonDown(int /*x*/, int /*y*/) { return false; }
  virtual int GetType() const { return kTypeNone; }
  // Draws the element; with a region, only when the rectangle meets it.
  virtual void Paint(SkinCanvas& /*canvas*/, const SkinRect* /*region*/) {}

  void Place(const SkinRect& rectangle) { rect = rectangle; }
  const SkinRect& Rect() const { return rect; }
  void SetBackgroundIndex(int index) { backgroundIndex = index; }
  int BackgroundIndex() const { return backgroundIndex; }

 protected:
  bool OutsideRegion(const SkinRect* region) const { return region != nullptr && !rect.Intersects(*region); }
  // Copies the background under the rectangle back onto the window.
  void WipeBackground(SkinCanvas& canvas) const;
  // Draws a `w` by `h` piece of a picture at the rectangle.
  void CopyImage(SkinCanvas& canvas, const ImageSource& image) const;

  SkinRect rect;
  int backgroundIndex = -1;
  SkinSurface* window = nullptr;
};

}  // namespace skin
