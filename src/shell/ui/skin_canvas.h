// Drawing the skin with QPainter, on a picture of the skin's surface at the
// window's integer zoom.
//
// Bitmaps are scaled by whole pixels (each skin pixel a square of zoom by
// zoom), text is drawn at the zoomed size so that it stays sharp. Fonts
// without a face are the system's default sans face; a font without a size
// is 12 skin pixels high. Text at an angle turns about the middle of its
// rectangle. Everything is clipped to the skin's surface, so that numbers
// from a layout can't reach outside it.
//
// Threads: Qt's GUI thread only.
#pragma once

#include <QFont>
#include <QPixmap>
#include <QRect>
#include <functional>
#include <memory>
#include <span>

#include "shell/ui/skin_bitmaps.h"
#include "skin/skin_surface.h"

namespace ui {

class QtSkinImage : public skin::SkinImage {
 public:
  explicit QtSkinImage(QPixmap picture) : pixmap(std::move(picture)) {}
  const QPixmap& Pixmap() const { return pixmap; }

 private:
  QPixmap pixmap;
};

class QtSkinCanvas : public skin::SkinCanvas {
 public:
  // Draws on `target` (the skin's surface at `zoom`) and tells `touched`
  // each rectangle it drew on, in skin pixels.
  QtSkinCanvas(QPixmap& target, int zoom, const SkinBitmapTable& bitmaps,
               std::function<void(const QRect&)> touched);

  void CopyBitmap(const skin::BitmapPiece& piece, int x, int y) override;
  void DrawImage(const skin::SkinImage& image, int x, int y) override;
  void DrawText(std::string_view text, const skin::SkinRect& rect, std::uint32_t format,
                const skin::SkinFont& font, skin::SkinColor color) override;

 private:
  QPixmap& target;
  int zoom;
  const SkinBitmapTable& bitmaps;
  std::function<void(const QRect&)> touched;
};

// The font of a skin element at `zoom`.
QFont FontFor(const skin::SkinFont& font, int zoom);

// See skin::SkinSurface::CreateMaskedImage.
std::unique_ptr<skin::SkinImage> MakeMaskedImage(const SkinBitmapTable& bitmaps,
                                                 std::span<const skin::BitmapPiece> pieces, int workW,
                                                 int workH, int w, int h, skin::SkinColor mask);

}  // namespace ui
