#include "shell/ui/skin_canvas.h"

#include <QFontDatabase>
#include <QPainter>
#include <algorithm>
#include <cstdint>

#include "skin/skin_window.h"

namespace ui {
namespace {

constexpr int kDefaultFontPixels = 12;
// Thumb pictures larger than this aren't made.
constexpr int kMaxImageSide = 2048;
constexpr QRgb kMaskBits = 0xF8F8F8;

// A rectangle of 64-bit numbers, cut to another.
struct Span64 {
  std::int64_t x, y, w, h;
  Span64 Cut(std::int64_t left, std::int64_t top, std::int64_t width, std::int64_t height) const {
    const std::int64_t x0 = std::max(x, left);
    const std::int64_t y0 = std::max(y, top);
    const std::int64_t x1 = std::min(x + w, left + width);
    const std::int64_t y1 = std::min(y + h, top + height);
    return {x0, y0, std::max<std::int64_t>(0, x1 - x0), std::max<std::int64_t>(0, y1 - y0)};
  }
  bool Empty() const { return w <= 0 || h <= 0; }
  QRect ToQRect() const {
    return {static_cast<int>(x), static_cast<int>(y), static_cast<int>(w), static_cast<int>(h)};
  }
};

const Span64 kSurface{0, 0, skin::kSkinWidth, skin::kSkinHeight};

// The part of a source piece that lies in its bitmap and lands on the
// surface, with where it lands.
bool ClipPiece(const skin::BitmapPiece& piece, QSize bitmapSize, std::int64_t x, std::int64_t y,
               QRect& source, QRect& target) {
  Span64 from = Span64{piece.x, piece.y, piece.w, piece.h}.Cut(0, 0, bitmapSize.width(), bitmapSize.height());
  Span64 to{x + (from.x - piece.x), y + (from.y - piece.y), from.w, from.h};
  const Span64 landed = to.Cut(kSurface.x, kSurface.y, kSurface.w, kSurface.h);
  if (landed.Empty()) return false;
  from = {from.x + (landed.x - to.x), from.y + (landed.y - to.y), landed.w, landed.h};
  source = from.ToQRect();
  target = landed.ToQRect();
  return true;
}

Qt::Alignment AlignmentFor(std::uint32_t format) {
  Qt::Alignment alignment = (format & skin::kTextAlignRight) != 0 ? Qt::AlignRight : Qt::AlignLeft;
  if ((format & skin::kTextAlignMiddle) != 0)
    alignment |= Qt::AlignVCenter;
  else if ((format & skin::kTextAlignBottom) != 0)
    alignment |= Qt::AlignBottom;
  else
    alignment |= Qt::AlignTop;
  return alignment;
}

bool SameUnderMask(QRgb pixel, skin::SkinColor mask) {
  return ((pixel ^ mask) & kMaskBits) == 0;
}

}  // namespace

QFont FontFor(const skin::SkinFont& font, int zoom) {
  QFont qfont = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
  qfont.setStyleHint(QFont::SansSerif);
  if (!font.face.empty()) qfont.setFamily(QString::fromStdString(font.face));
  qfont.setPixelSize((font.pixelHeight > 0 ? font.pixelHeight : kDefaultFontPixels) * zoom);
  qfont.setWeight(static_cast<QFont::Weight>(std::clamp(font.weight, 100, 900)));
  return qfont;
}

QtSkinCanvas::QtSkinCanvas(QPixmap& targetPixmap, int surfaceZoom, const SkinBitmapTable& table,
                           std::function<void(const QRect&)> onTouched)
    : target(targetPixmap), zoom(surfaceZoom), bitmaps(table), touched(std::move(onTouched)) {}

void QtSkinCanvas::CopyBitmap(const skin::BitmapPiece& piece, int x, int y) {
  const QPixmap* bitmap = bitmaps.Pixmap(piece.bitmap);
  QRect source;
  QRect landing;
  if (bitmap == nullptr || !ClipPiece(piece, bitmap->size(), x, y, source, landing)) return;
  QPainter painter(&target);
  painter.scale(zoom, zoom);
  painter.drawPixmap(landing, *bitmap, source);
  touched(landing);
}

void QtSkinCanvas::DrawImage(const skin::SkinImage& image, int x, int y) {
  const QPixmap& pixmap = static_cast<const QtSkinImage&>(image).Pixmap();
  const Span64 landed =
      Span64{x, y, pixmap.width(), pixmap.height()}.Cut(kSurface.x, kSurface.y, kSurface.w, kSurface.h);
  if (landed.Empty()) return;
  QPainter painter(&target);
  painter.scale(zoom, zoom);
  painter.drawPixmap(QPoint(x, y), pixmap);
  touched(landed.ToQRect());
}

void QtSkinCanvas::DrawText(std::string_view text, const skin::SkinRect& rect, std::uint32_t format,
                            const skin::SkinFont& font, skin::SkinColor color) {
  const Span64 landed =
      Span64{rect.x, rect.y, rect.w, rect.h}.Cut(kSurface.x, kSurface.y, kSurface.w, kSurface.h);
  if (landed.Empty() || text.empty()) return;
  const QRect box(rect.x, rect.y, rect.w, rect.h);
  QPainter painter(&target);
  painter.setRenderHint(QPainter::TextAntialiasing);
  painter.scale(zoom, zoom);
  painter.setClipRect(landed.ToQRect());
  painter.setPen(QColor::fromRgb(static_cast<QRgb>(color)));
  painter.setFont(FontFor(font, 1));
  QRect layoutBox = box;
  if (font.orientation != 0) {
    const QPointF centre = QRectF(box).center();
    painter.translate(centre);
    painter.rotate(-font.orientation);
    const bool across = (font.orientation % 180) != 0;
    const QSizeF turned = across ? QSizeF(box.height(), box.width()) : QSizeF(box.size());
    layoutBox = QRectF(QPointF(-turned.width() / 2, -turned.height() / 2), turned).toRect();
  }
  painter.drawText(layoutBox, static_cast<int>(AlignmentFor(format)) | Qt::TextSingleLine,
                   QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
  touched(landed.ToQRect());
}

std::unique_ptr<skin::SkinImage> MakeMaskedImage(const SkinBitmapTable& bitmaps,
                                                 std::span<const skin::BitmapPiece> pieces, int workW,
                                                 int workH, int w, int h, skin::SkinColor mask) {
  const auto fits = [](int side) { return side > 0 && side <= kMaxImageSide; };
  if (!fits(w) || !fits(h) || !fits(workW) || !fits(workH)) return nullptr;
  QImage work(workW, workH, QImage::Format_RGB32);
  work.fill(Qt::black);
  for (const skin::BitmapPiece& piece : pieces) {
    const QImage* bitmap = bitmaps.Image(piece.bitmap);
    if (bitmap == nullptr) continue;
    // The piece in the work bitmap's coordinates: what lies in the bitmap
    // and in the work bitmap.
    const Span64 placed = Span64{0, 0, piece.w, piece.h}
                              .Cut(-static_cast<std::int64_t>(piece.x), -static_cast<std::int64_t>(piece.y),
                                   bitmap->width(), bitmap->height())
                              .Cut(0, 0, workW, workH);
    if (placed.Empty()) continue;
    QPainter painter(&work);
    painter.drawImage(placed.ToQRect(), *bitmap, placed.ToQRect().translated(piece.x, piece.y));
  }
  QImage picture(w, h, QImage::Format_ARGB32);
  picture.fill(Qt::transparent);
  for (int row = 0; row < std::min(h, workH); ++row) {
    const auto* source = reinterpret_cast<const QRgb*>(work.constScanLine(row));
    auto* line = reinterpret_cast<QRgb*>(picture.scanLine(row));
    for (int column = 0; column < std::min(w, workW); ++column) {
      if (!SameUnderMask(source[column], mask)) line[column] = source[column] | 0xFF000000u;
    }
  }
  return std::make_unique<QtSkinImage>(QPixmap::fromImage(picture));
}

}  // namespace ui
