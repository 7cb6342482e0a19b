#include "skin/skin_slider.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace skin {
namespace {

constexpr int kFullScale = 1000;
// The stored masks keep the top five bits of each channel, as the 16-bit
// screens of the skin format did.
constexpr SkinColor kMaskBits = 0xF8F8F8;

int ClampToInt(std::int64_t value) {
  return static_cast<int>(std::clamp<std::int64_t>(value, INT32_MIN, INT32_MAX));
}

// start + (room * position / 1000) for a thumb along an axis.
int Along(int start, int length, int thumb, int position) {
  return ClampToInt(start + (static_cast<std::int64_t>(length) - thumb) * position / kFullScale);
}

// start + (room / 2), the half taken by an arithmetic shift.
int Centred(int start, int length, int thumb) {
  return ClampToInt(start + ((static_cast<std::int64_t>(length) - thumb) >> 1));
}

}  // namespace

SkinSlider::SkinSlider(int actionRow, int sliderOrientation, const ThumbSource& releasedThumb,
                       const ThumbSource& pressedThumb)
    : id(actionRow), released(releasedThumb), pressed(pressedThumb), orientation(sliderOrientation) {
  released.mask &= kMaskBits;
  pressed.mask &= kMaskBits;
}

void SkinSlider::ThumbPlace(int& left, int& top) const {
  const ThumbSource& thumb = Thumb();
  left = 0;
  top = 0;
  if (Horizontal()) {
    left = Along(rect.x, rect.w, thumb.w, position);
    top = Centred(rect.y, rect.h, thumb.h);
  } else if (orientation == 90 || orientation == 270) {
    left = Centred(rect.x, rect.w, thumb.w);
    top = Along(rect.y, rect.h, thumb.h, position);
  }
}

void SkinSlider::Paint(SkinCanvas& canvas, const SkinRect* region) {
  if (OutsideRegion(region) || !visible) return;
  const SkinImage* image = dragging ? pressedImage.get() : releasedImage.get();
  if (image == nullptr) return;
  int left = 0;
  int top = 0;
  ThumbPlace(left, top);
  canvas.DrawImage(*image, left, top);
}

void SkinSlider::Redraw() {
  if (window == nullptr) return;
  WipeBackground(window->Canvas());
  Paint(window->Canvas(), nullptr);
}

// A track as long as the thumb leaves no room to move in; the thumb then
// stays at the start instead of dividing by zero.
int SkinSlider::PositionFromPoint(int x, int y) const {
  if (!rect.Contains(x, y)) return -1;
  const ThumbSource& thumb = Thumb();
  const bool alongX = orientation != 90 && orientation != 270;
  const std::int64_t point = alongX ? x : y;
  const std::int64_t start = alongX ? rect.x : rect.y;
  const std::int64_t length = alongX ? rect.w : rect.h;
  const std::int64_t size = alongX ? thumb.w : thumb.h;
  const std::int64_t room = length - size;
  if (room == 0) return 0;
  const std::int64_t offset = point - start - size / 2;
  return static_cast<int>(std::clamp<std::int64_t>(offset * kFullScale / room, 0, kFullScale));
}

bool SkinSlider::OnButtonDown(int x, int y) {
  const int at = PositionFromPoint(x, y);
  if (at == -1) return false;
  position = at;
  dragging = true;
  Invalidate();
  return true;
}

// A pointer beyond the track is brought back to its edge, and the drag
// counts as over (so the player's updates move the thumb again). Beyond the
// left edge the point goes to x = 0, not to the edge: with the track away
// from the window's edge that point lies outside, and the thumb stays.
bool SkinSlider::OnMouseMove(int x, int y) {
  dragging = true;
  if (x < rect.x) {
    x = 0;
    dragging = false;
  }
  if (static_cast<std::int64_t>(x) >= static_cast<std::int64_t>(rect.x) + rect.w) {
    x = ClampToInt(static_cast<std::int64_t>(rect.x) + rect.w - 1);
    dragging = false;
  }
  if (y < rect.y) {
    y = rect.y;
    dragging = false;
  }
  if (static_cast<std::int64_t>(y) >= static_cast<std::int64_t>(rect.y) + rect.h) {
    y = ClampToInt(static_cast<std::int64_t>(rect.y) + rect.h - 1);
    dragging = false;
  }
  const int at = PositionFromPoint(x, y);
  if (at != -1) position = at;
  Invalidate();
  return false;
}

bool SkinSlider::OnButtonUp(int x, int y) {
  const int at = PositionFromPoint(x, y);
  dragging = false;
  if (at != -1) position = at;
  Invalidate();
  return true;
}

void SkinSlider::SetValue(int value) {
  if (dragging) return;
  value = std::clamp(value, 0, kFullScale);
  if (value == GetValue()) return;
  position = Reversed() ? kFullScale - value : value;
}

int SkinSlider::GetValue() const {
  const int clamped = std::clamp(position, 0, kFullScale);
  return Reversed() ? kFullScale - clamped : clamped;
}

void SkinSlider::SetVisible(bool value) {
  if (visible == value) return;
  visible = value;
  Redraw();
}

bool SkinSlider::BuildImageLists() {
  releasedImage.reset();
  pressedImage.reset();
  if (window == nullptr) return false;
  const BitmapPiece releasedPiece{released.bitmap, released.x, released.y, released.w, released.h};
  const BitmapPiece pressedPiece{pressed.bitmap, pressed.x, pressed.y, pressed.w, pressed.h};
  const std::array<BitmapPiece, 1> releasedOnly{releasedPiece};
  const std::array<BitmapPiece, 2> both{releasedPiece, pressedPiece};
  std::unique_ptr<SkinImage> atRest =
      window->CreateMaskedImage(releasedOnly, released.w, released.h, released.w, released.h, released.mask);
  std::unique_ptr<SkinImage> dragged =
      window->CreateMaskedImage(both, released.w, released.h, pressed.w, pressed.h, pressed.mask);
  if (!atRest || !dragged) return false;
  releasedImage = std::move(atRest);
  pressedImage = std::move(dragged);
  return true;
}

}  // namespace skin
