#include "shell/ui/skin_window_widget.h"

#include <QFontMetricsF>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <cmath>

namespace ui {
namespace {

int FloorDivide(double value, int divisor) {
  return static_cast<int>(std::floor(value / divisor));
}

}  // namespace

std::unique_ptr<SkinWindowWidget> SkinWindowWidget::Create(const std::string& skinDirectory, int zoom,
                                                           platform::MessageTarget& parent) {
  std::unique_ptr<SkinWindowWidget> widget(new SkinWindowWidget(zoom, parent));
  if (!widget->window.Load(skinDirectory, widget->bitmaps)) return nullptr;
  widget->window.Attach(*widget, parent, *widget->timers);
  return widget;
}

SkinWindowWidget::SkinWindowWidget(int faceZoom, platform::MessageTarget& parentTarget)
    : zoom(faceZoom),
      parent(parentTarget),
      surface(skin::kSkinWidth * faceZoom, skin::kSkinHeight * faceZoom),
      canvas(surface, faceZoom, bitmaps,
             [this](const QRect& rect) {
               if (!painting) update(Zoomed(rect));
             }),
      timers(std::make_unique<platform::qt::QtTimers>(window)) {
  surface.fill(Qt::black);
  setFixedSize(surface.size());
  setFocusPolicy(Qt::NoFocus);
  setAttribute(Qt::WA_OpaquePaintEvent);
  setObjectName("SkinWnd");
}

SkinWindowWidget::~SkinWindowWidget() = default;

QRect SkinWindowWidget::Zoomed(const QRect& skinRect) const {
  return {skinRect.x() * zoom, skinRect.y() * zoom, skinRect.width() * zoom, skinRect.height() * zoom};
}

QPoint SkinWindowWidget::SkinPoint(const QPointF& position) const {
  return {FloorDivide(position.x(), zoom), FloorDivide(position.y(), zoom)};
}

void SkinWindowWidget::Invalidate(const skin::SkinRect& rect) {
  const QRect area = QRect(rect.x, rect.y, std::max(rect.w, 0), std::max(rect.h, 0))
                         .intersected(QRect(0, 0, skin::kSkinWidth, skin::kSkinHeight));
  paintDue = true;
  if (area.isEmpty()) return;
  pending += Zoomed(area);
  update(Zoomed(area));
}

// A widget that isn't shown has nothing to paint yet: the paint stays due.
void SkinWindowWidget::Update() {
  if (!pending.isEmpty() && isVisible()) repaint(pending);
}

bool SkinWindowWidget::PostToParent(std::uint32_t message) {
  parent.Post(message);
  return true;
}

int SkinWindowWidget::TextWidth(std::string_view text, const skin::SkinFont& font) {
  const QFontMetricsF metrics(FontFor(font, zoom));
  const qreal width =
      metrics.horizontalAdvance(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
  return static_cast<int>(std::ceil(width / zoom));
}

std::unique_ptr<skin::SkinImage> SkinWindowWidget::CreateMaskedImage(
    std::span<const skin::BitmapPiece> pieces, int workW, int workH, int w, int h, skin::SkinColor mask) {
  return MakeMaskedImage(bitmaps, pieces, workW, workH, w, h, mask);
}

void SkinWindowWidget::paintEvent(QPaintEvent* event) {
  if (paintDue) {
    paintDue = false;
    painting = true;
    window.Paint(canvas);
    painting = false;
  }
  pending = QRegion();
  QPainter painter(this);
  painter.drawPixmap(event->rect(), surface, event->rect());
}

void SkinWindowWidget::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  const QPoint point = SkinPoint(event->position());
  window.ButtonDown(point.x(), point.y());
}

void SkinWindowWidget::mouseMoveEvent(QMouseEvent* event) {
  if ((event->buttons() & Qt::LeftButton) == 0) return;
  const QPoint point = SkinPoint(event->position());
  window.MouseMove(point.x(), point.y());
}

void SkinWindowWidget::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  const QPoint point = SkinPoint(event->position());
  window.ButtonUp(point.x(), point.y());
}

// The second press of a double click is swallowed: a double click is one click.
void SkinWindowWidget::mouseDoubleClickEvent(QMouseEvent* event) {
  event->accept();
}

}  // namespace ui
