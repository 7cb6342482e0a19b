#include "shell/ui/playlist_row_delegate.h"

#include <QApplication>
#include <QFontMetrics>
#include <QPainter>
#include <QPolygon>
#include <QStringDecoder>
#include <cstdio>
#include <string>

#include "playlist/file_title.h"
#include "playlist/playlist_item.h"
#include "playlist/playlist_view.h"

namespace ui {
namespace {

constexpr std::array<int, 4> kFontPixels = {12, 13, 14, 17};  // Tiny, Small, Normal, Large
constexpr std::uint32_t kNormalFontSize = 2;
constexpr std::array<int, 3> kDefaultTimeWidths = {20, 30, 36};
constexpr std::array<const char*, 3> kTimeSamples = {"9:99", "99:99", "999:99"};
constexpr int kTextStart = 3;
constexpr int kIconX = 2;
constexpr int kIconSize = 9;
constexpr qsizetype kLineUnits = 255;
constexpr int kDisplayTags = 1;
constexpr int kDisplayFullPath = 3;
constexpr int kStatePlaying = 2;
constexpr int kStatePaused = 3;

// Appends UTF-8 text to `line` in place, in the capacity it already has.
void AppendUtf8(QString& line, const std::string& text) {
  QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
  const qsizetype start = line.size();
  line.resize(start + decoder.requiredSpace(static_cast<qsizetype>(text.size())));
  QChar* end = decoder.appendToBuffer(line.data() + start, QByteArrayView(text.data(), text.size()));
  line.resize(end - line.constData());
}

void AppendLatin1(QString& line, const char* text, int length) {
  line.append(QLatin1StringView(text, length));
}

// Cuts to 255 units without leaving half of a surrogate pair behind.
void CutLine(QString& line) {
  if (line.size() <= kLineUnits) return;
  qsizetype size = kLineUnits;
  if (line.at(size - 1).isHighSurrogate()) --size;
  line.truncate(size);
}

}  // namespace

const RowColours& PlaylistColours::For(std::uint32_t flags) const {
  const bool isSelected = (flags & playlist::ITEM_SELECTED) != 0;
  const bool isCurrent = (flags & playlist::ITEM_CURRENT) != 0;
  if (isSelected && isCurrent) return both;
  if (isSelected) return selected;
  if (isCurrent) return current;
  return normal;
}

QImage MakeStateIcon(PlaylistRowDelegate::StateIcon icon, int size) {
  QImage image(size, size, QImage::Format_RGB32);
  image.fill(Qt::black);
  QPainter painter(&image);
  painter.setPen(Qt::NoPen);
  painter.setBrush(Qt::white);
  painter.scale(size / double(kIconSize), size / double(kIconSize));
  switch (icon) {
    case PlaylistRowDelegate::kIconStopped:
      painter.drawRect(1, 1, 7, 7);
      break;
    case PlaylistRowDelegate::kIconPlaying:
      painter.setRenderHint(QPainter::Antialiasing, false);
      painter.drawPolygon(QPolygon({QPoint(2, 0), QPoint(8, 4), QPoint(8, 5), QPoint(2, 9)}));
      break;
    case PlaylistRowDelegate::kIconPaused:
      painter.drawRect(1, 1, 3, 7);
      painter.drawRect(5, 1, 3, 7);
      break;
    case PlaylistRowDelegate::kIconCount:
      break;
  }
  return image;
}

PlaylistRowDelegate::PlaylistRowDelegate(const playlist::PlaylistView& listView, std::function<int()> state,
                                         int faceZoom, QObject* parent)
    : QAbstractItemDelegate(parent), view(listView), playerState(std::move(state)), zoom(faceZoom) {
  for (int i = 0; i < kIconCount; ++i) icons[i] = MakeStateIcon(static_cast<StateIcon>(i), Scaled(kIconSize));
  UseFontSize(view.Settings().fontSize);
}

// The phone's font was its own; here the application's family at the same
// pixel heights, times the zoom.
void PlaylistRowDelegate::UseFontSize(std::uint32_t fontSize) {
  if (fontSize >= kFontPixels.size()) fontSize = kNormalFontSize;
  font = QApplication::font();
  font.setPixelSize(Scaled(kFontPixels[fontSize]));
  font.setWeight(QFont::Normal);
  const QFontMetrics metrics(font);
  rowHeight = std::max(metrics.height(), Scaled(kIconSize)) + Scaled(2);
  for (std::size_t i = 0; i < timeWidths.size(); ++i) {
    const int measured = metrics.horizontalAdvance(QLatin1StringView(kTimeSamples[i]));
    timeWidths[i] = measured > 0 ? measured + Scaled(2) : Scaled(kDefaultTimeWidths[i]);
  }
}

void PlaylistRowDelegate::Describe(int index, RowContent& content) const {
  const playlist::PlaylistSettings& settings = view.Settings();
  const std::uint32_t flags = view.FlagsAt(index);
  content.line.resize(0);
  if (settings.showNumbers != 0) {
    char number[16];
    AppendLatin1(content.line, number, std::snprintf(number, sizeof number, "%d. ", index + 1));
  }
  if ((flags & playlist::ITEM_HAS_INFO) != 0 && settings.displayMode == kDisplayTags)
    AppendUtf8(content.line, view.TitleAt(index));
  else if (settings.displayMode == kDisplayFullPath)
    AppendUtf8(content.line, view.PathAt(index));
  else
    AppendUtf8(content.line, playlist::FileTitle(view.PathAt(index)));
  CutLine(content.line);

  // The duration is taken as signed, so the re-read marker (all ones) is
  // -1 ms: no minutes, shown as "0:00".
  const auto durationMs = static_cast<std::int32_t>(view.DurationAt(index));
  const std::int32_t minutes = durationMs / 60000;
  content.columnWidth = minutes < 10 ? timeWidths[0] : minutes < 100 ? timeWidths[1] : timeWidths[2];
  content.time.resize(0);
  if (durationMs != 0) {
    char time[32];
    const int length = std::snprintf(time, sizeof time, "%d:%02d", minutes, durationMs / 1000 % 60);
    AppendLatin1(content.time, time, length);
  }
  content.current = (flags & playlist::ITEM_CURRENT) != 0;
}

void PlaylistRowDelegate::PaintRow(int index, QImage& image) const {
  if (index < 0 || index >= view.ItemCount()) return;
  const int width = image.width();
  const int height = image.height();
  const std::uint32_t flags = view.FlagsAt(index);
  const RowColours& pair = colours.For(flags);
  Describe(index, scratch);

  QPainter painter(&image);
  painter.fillRect(0, 0, width, height, pair.back);
  painter.setFont(font);
  painter.setPen(pair.text);
  int textLeft = Scaled(kTextStart);
  const int textRight = width - scratch.columnWidth;

  if (scratch.current) {
    const int state = playerState ? playerState() : 1;
    const QImage& icon = icons[state == kStatePlaying  ? kIconPlaying
                               : state == kStatePaused ? kIconPaused
                                                       : kIconStopped];
    painter.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
    painter.drawImage(Scaled(kIconX), (height - Scaled(8)) / 2, icon);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    textLeft += Scaled(kIconSize);
  }
  constexpr int kTextFlags = Qt::AlignVCenter | Qt::TextSingleLine;
  painter.drawText(QRect(textLeft, 0, std::max(0, textRight - textLeft), height), Qt::AlignLeft | kTextFlags,
                   scratch.line);
  if (!scratch.time.isEmpty())
    painter.drawText(QRect(textRight, 0, scratch.columnWidth - Scaled(1), height),
                     Qt::AlignRight | kTextFlags, scratch.time);
  painter.fillRect(textRight, 0, Scaled(1), height, Qt::white);

  if (index == view.FocusIndex() && !view.MoveMode()) {
    const int line = Scaled(1);
    painter.fillRect(0, 0, width, line, colours.current.text);
    painter.fillRect(0, height - line, width, line, colours.current.text);
    painter.fillRect(0, 0, line, height, colours.current.text);
    painter.fillRect(width - line, 0, line, height, colours.current.text);
  }
}

// The work image keeps the size of the rows; a change of width (the screen
// resized) or of height (another font) makes it anew.
void PlaylistRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                const QModelIndex& index) const {
  if (!index.isValid() || index.row() >= view.ItemCount() || option.rect.isEmpty()) return;
  if (rowImage.size() != option.rect.size()) rowImage = QImage(option.rect.size(), QImage::Format_RGB32);
  PaintRow(index.row(), rowImage);
  painter->drawImage(option.rect.topLeft(), rowImage);
}

QSize PlaylistRowDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
  return QSize(1, rowHeight);
}

}  // namespace ui
