#include "skin/skin_button.h"

#include "skin/skin_action_table.h"

namespace skin {

bool SkinPushControl::OnButtonDown(int x, int y) {
  if (!rect.Contains(x, y)) return false;
  pressed = true;
  Invalidate();
  return true;
}

bool SkinPushControl::OnMouseMove(int x, int y) {
  if (rect.Contains(x, y)) {
    if (pressed) return false;
    pressed = true;
  } else {
    pressed = false;
  }
  Invalidate();
  return true;
}

bool SkinPushControl::OnButtonUp(int x, int y) {
  if (!rect.Contains(x, y)) return false;
  Released();
  if (id >= 0 && id < kActionRowCount && window != nullptr) {
    const std::uint32_t message = Actions()[static_cast<std::size_t>(id)].message;
    if (message != 0) window->PostToParent(message);
  }
  pressed = false;
  Invalidate();
  return true;
}

// The pictures are opaque: drawing over the old one is enough.
void SkinPushControl::Redraw() {
  if (window != nullptr) Paint(window->Canvas(), nullptr);
}

void SkinPushControl::SetPressed(bool value) {
  if (pressed == value) return;
  pressed = value;
  Redraw();
}

void SkinButton::Paint(SkinCanvas& canvas, const SkinRect* region) {
  if (OutsideRegion(region)) return;
  CopyImage(canvas, pressed ? pressedImage : releasedImage);
}

void SkinCheckButton::Paint(SkinCanvas& canvas, const SkinRect* region) {
  if (OutsideRegion(region)) return;
  CopyImage(canvas, images[(pressed ? 1 : 0) + (checked ? 2 : 0)]);
}

void SkinCheckButton::SetChecked(bool value) {
  if (checked == value) return;
  checked = value;
  Redraw();
}

void SkinIconStatus::Redraw() {
  if (window != nullptr) Paint(window->Canvas(), nullptr);
}

void SkinIconStatus::Paint(SkinCanvas& canvas, const SkinRect* region) {
  if (OutsideRegion(region)) return;
  CopyImage(canvas, images[static_cast<std::size_t>(state)]);
}

void SkinIconStatus::SetState(int value) {
  if (value < 0 || value > 2 || value == state) return;
  state = value;
  Redraw();
}

}  // namespace skin
