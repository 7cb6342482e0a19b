#include "shell/ui/o_slider.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyleOptionFocusRect>
#include <algorithm>
#include <cstdint>

namespace ui {
namespace {

constexpr int kScaleWidth = 16;
constexpr int kScaleHeight = 112;
constexpr int kThumbWidth = 14;
constexpr int kThumbHeight = 8;

struct SliderPictures {
  QImage scale;
  QImage thumb;
};

SliderPictures& Pictures() {
  static SliderPictures pictures;
  return pictures;
}

QImage DrawScale() {
  QImage scale(kScaleWidth, kScaleHeight, QImage::Format_RGB32);
  scale.fill(QColor(0x1e, 0x23, 0x2c));
  QPainter painter(&scale);
  painter.fillRect(QRect(kScaleWidth / 2 - 1, 2, 2, kScaleHeight - 4), QColor(0x38, 0x98, 0xff));
  painter.setPen(QColor(0x5a, 0x66, 0x78));
  for (int tick = 0; tick <= 4; ++tick) {
    const int y = kThumbHeight / 2 + tick * (kScaleHeight - kThumbHeight) / 4;
    painter.drawLine(1, y, 4, y);
    painter.drawLine(kScaleWidth - 5, y, kScaleWidth - 2, y);
  }
  return scale;
}

QImage DrawThumb() {
  QImage thumb(kThumbWidth, kThumbHeight, QImage::Format_RGB32);
  thumb.fill(QColor(0xe2, 0xe8, 0xf0));
  QPainter painter(&thumb);
  painter.setPen(QColor(0x8a, 0x96, 0xa8));
  painter.drawRect(0, 0, kThumbWidth - 1, kThumbHeight - 1);
  painter.drawLine(3, kThumbHeight / 2, kThumbWidth - 4, kThumbHeight / 2);
  return thumb;
}

int Signed16(int value) {
  return static_cast<std::int16_t>(value);
}

}  // namespace

void OSlider::Register() {
  SliderPictures& pictures = Pictures();
  if (!pictures.scale.isNull()) return;
  pictures.scale = DrawScale();
  pictures.thumb = DrawThumb();
}

OSlider::OSlider(QWidget* parent, int sliderZoom) : QWidget(parent), zoom(sliderZoom) {
  Register();
  setFixedSize(kScaleWidth * zoom, kScaleHeight * zoom);
  setFocusPolicy(Qt::StrongFocus);
}

int OSlider::Clamped(int value) const {
  return std::max(std::min(value, maximum), minimum);
}

void OSlider::SetPosition(int value, bool redraw) {
  position = Clamped(value);
  if (redraw) repaint();
}

void OSlider::SetRange(int minimumValue, int maximumValue, bool redraw) {
  minimum = Signed16(minimumValue);
  maximum = Signed16(maximumValue);
  position = Clamped(position);
  if (redraw) repaint();
}

int OSlider::ThumbTop() const {
  if (maximum == minimum) return 0;
  const SliderPictures& pictures = Pictures();
  return position * (pictures.scale.height() - pictures.thumb.height()) / (maximum - minimum);
}

void OSlider::paintEvent(QPaintEvent*) {
  const SliderPictures& pictures = Pictures();
  QPainter painter(this);
  painter.scale(zoom, zoom);
  painter.drawImage(0, 0, pictures.scale);
  painter.drawImage(1, ThumbTop(), pictures.thumb);
  if (hasFocus()) {
    painter.resetTransform();
    QStyleOptionFocusRect option;
    option.initFrom(this);
    option.rect = rect();
    style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
  }
}

void OSlider::Step(int delta) {
  const int moved = delta < 0 ? std::max(position + delta, minimum) : std::min(position + delta, maximum);
  if (moved == position) return;
  position = moved;
  if (onScroll) onScroll(*this, position);
  repaint();
}

void OSlider::MoveFocus(bool forward) {
  QWidget* owner = parentWidget();
  if (owner == nullptr) return;
  const QList<QWidget*> siblings = owner->findChildren<QWidget*>(Qt::FindDirectChildrenOnly);
  const auto self = siblings.indexOf(this);
  const auto count = siblings.size();
  for (qsizetype step = 1; step < count; ++step) {
    const qsizetype index = forward ? self + step : self - step;
    if (forward && index >= count) {
      siblings.front()->setFocus(Qt::TabFocusReason);
      return;
    }
    QWidget* candidate = siblings[(index + count) % count];
    if ((candidate->focusPolicy() & Qt::TabFocus) != 0) {
      candidate->setFocus(forward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
      return;
    }
  }
}

void OSlider::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Up:
      return Step(-1);
    case Qt::Key_Down:
      return Step(1);
    case Qt::Key_Left:
      return MoveFocus(false);
    case Qt::Key_Right:
      return MoveFocus(true);
    default:
      event->ignore();
  }
}

void OSlider::focusInEvent(QFocusEvent*) {
  repaint();
}
void OSlider::focusOutEvent(QFocusEvent*) {
  repaint();
}

}  // namespace ui
