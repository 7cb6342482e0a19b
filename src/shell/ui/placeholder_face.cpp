#include "shell/ui/placeholder_face.h"

#include <QPainter>

namespace ui {

PlaceholderFace::PlaceholderFace(int width, int height, int faceZoom, QWidget* parent)
    : QWidget(parent), zoom(faceZoom) {
  setFixedSize(width * zoom, height * zoom);
  setFocusPolicy(Qt::NoFocus);
  setObjectName("face");
}

void PlaceholderFace::SetTitle(const std::string& text) {
  title = text;
  update();
}

void PlaceholderFace::SetMessage(const std::string& text) {
  message = text;
  update();
}

void PlaceholderFace::SetTrackFigures(std::uint32_t, std::uint32_t, std::uint32_t) {}
void PlaceholderFace::SetVolume(int slider) {
  volume = slider;
}
void PlaceholderFace::SetShuffle(bool on) {
  shuffle = on;
}
void PlaceholderFace::SetRepeat(bool on) {
  repeat = on;
}
void PlaceholderFace::SetEqualizer(bool on) {
  equalizer = on;
}
void PlaceholderFace::SetExtraBass(bool on) {
  extraBass = on;
}
void PlaceholderFace::SetPaused(bool isPaused) {
  paused = isPaused;
}
void PlaceholderFace::KeyFeedback(std::uint16_t, bool) {}

void PlaceholderFace::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), QColor(0x20, 0x24, 0x2c));
  painter.setPen(QColor(0xe0, 0xe4, 0xec));
  QFont font = painter.font();
  font.setPixelSize(8 * zoom);
  painter.setFont(font);
  const int margin = 4 * zoom;
  const QRect area = rect().adjusted(margin, margin, -margin, -margin);
  painter.drawText(area, Qt::AlignTop | Qt::AlignHCenter | Qt::TextWordWrap, QString::fromStdString(title));
  painter.drawText(area, Qt::AlignBottom | Qt::AlignHCenter | Qt::TextWordWrap,
                   QString::fromStdString(message));
}

}  // namespace ui
