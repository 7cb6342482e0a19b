#include "skin/skin_element.h"

namespace skin {

void SkinElement::Invalidate() {
  if (window != nullptr) window->Invalidate(rect);
}

void SkinElement::Redraw() {
  if (window == nullptr) return;
  Invalidate();
  window->Update();
}

void SkinElement::WipeBackground(SkinCanvas& canvas) const {
  if (backgroundIndex != -1)
    canvas.CopyBitmap({backgroundIndex, rect.x, rect.y, rect.w, rect.h}, rect.x, rect.y);
}

void SkinElement::CopyImage(SkinCanvas& canvas, const ImageSource& image) const {
  canvas.CopyBitmap({image.bitmap, image.x, image.y, rect.w, rect.h}, rect.x, rect.y);
}

}  // namespace skin
