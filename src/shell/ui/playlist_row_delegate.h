// The rows of the list screen: each one painted from its PlaylistItem.
//
// The list control holds no text, only a row count; this delegate paints a
// row when Qt asks for it, in these steps (sizes are skin pixels, times the
// zoom of the face):
//  1. Only a row inside the list is painted.
//  2. The row is drawn into a work image the size of the row, then copied to
//     its place in one piece, so scrolling doesn't flicker.
//  3. The colour pair follows the flags: selected and current, selected,
//     current, or normal (PlaylistColours).
//  4. The text: with ITEM_HAS_INFO and display mode 1 the read title, else in
//     mode 3 the full path, else the FileTitle of the path; with item numbers
//     on, "<n>. " in front; cut to 255 UTF-16 units.
//  5. The time column on the right is one of three widths, measured from
//     "9:99", "99:99" and "999:99" in the row font (plus 2), chosen by the
//     minutes of the duration (below 10, below 100, else); it shows "m:ss",
//     or nothing for a zero duration. A white line of one pixel stands at
//     its left edge in every row.
//  6. The current entry carries the player's state icon (9 by 9: stopped,
//     playing, paused) at x 2, inverting the row colour where it is set;
//     its text starts 9 pixels further right, at 12 instead of 3.
//  7. The focus row has a frame of one pixel in the current row's text
//     colour, unless move mode is on: then the cursor has no mark.
//
// Nothing per row is allocated beyond what Qt's text drawing needs: the font,
// its metrics, the widths, the icons and the work image are made once, and
// the row's texts are built in buffers that keep their capacity.
//
// Threads: window thread. The model's titles are read under its lock
// (PlaylistView::TitleAt), so rows can be painted while the info reader runs.
#pragma once

#include <QAbstractItemDelegate>
#include <QColor>
#include <QFont>
#include <QImage>
#include <QString>
#include <array>
#include <cstdint>
#include <functional>

namespace playlist {
class PlaylistView;
}

namespace ui {

struct RowColours {
  QColor text;
  QColor back;
};

// The four schemes of a row.
struct PlaylistColours {
  RowColours normal{Qt::black, QColor(0xE1, 0xE1, 0xFF)};
  RowColours current{Qt::black, QColor(0xFF, 0xDB, 0x79)};
  RowColours selected{Qt::white, QColor(0x81, 0x87, 0xFF)};
  RowColours both{Qt::white, QColor(0xE7, 0xA9, 0x00)};

  const RowColours& For(std::uint32_t flags) const;
};

// What one row shows, as step 4 to 6 above lay it out.
struct RowContent {
  QString line;  // the number and the text
  QString time;  // "m:ss"; empty for a zero duration
  int columnWidth = 0;
  bool current = false;  // carries the state icon
};

class PlaylistRowDelegate : public QAbstractItemDelegate {
 public:
  // The icons by the player's state.
  enum StateIcon { kIconStopped, kIconPlaying, kIconPaused, kIconCount };

  // `playerState` answers the player's state (1 stopped, 2 playing, 3
  // paused) when a current row is painted; `zoom` is the face's.
  PlaylistRowDelegate(const playlist::PlaylistView& view, std::function<int()> playerState, int zoom,
                      QObject* parent = nullptr);

  // The font of the view's font size (0 Tiny to 3 Large: 12, 13, 14, 17
  // pixels; a size out of range is Normal) and the widths measured in it.
  void UseFontSize(std::uint32_t fontSize);
  const QFont& Font() const { return font; }
  int RowHeight() const { return rowHeight; }
  // The time column's width for one, two or three digits of minutes.
  int TimeWidth(int digits) const { return timeWidths[static_cast<std::size_t>(digits - 1)]; }
  const PlaylistColours& Colours() const { return colours; }

  // Fills `content` for the row at `index` (in range).
  void Describe(int index, RowContent& content) const;
  // Paints the row at `index` into `image`, which has the row's size.
  void PaintRow(int index, QImage& image) const;

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

 private:
  int Scaled(int pixels) const { return pixels * zoom; }

  const playlist::PlaylistView& view;
  std::function<int()> playerState;
  const int zoom;
  PlaylistColours colours;
  QFont font;
  int rowHeight = 0;
  std::array<int, 3> timeWidths;
  std::array<QImage, kIconCount> icons;
  // Work buffers of the painting, kept between rows.
  mutable QImage rowImage;
  mutable RowContent scratch;
};

// The state icons, drawn here: a square, a triangle, two bars, set in white
// on black, `size` pixels square. The painting XORs them onto the row.
QImage MakeStateIcon(PlaylistRowDelegate::StateIcon icon, int size);

}  // namespace ui
