// The skin's bitmaps: picture files decoded once by QImage and kept as
// pixmaps for the screen, so that painting is a plain copy.
//
// Any format Qt's image readers know is read (BMP, PNG, JPEG and GIF among
// them), by its content rather than its name. A picture is opaque once
// loaded: an alpha channel is dropped, as the device bitmaps of the skin
// format had none. Pictures wider or taller than 10000 pixels are refused.
//
// Threads: window thread (Qt's GUI thread) only.
#pragma once

#include <QImage>
#include <QPixmap>
#include <string>
#include <vector>

#include "skin/skin_surface.h"

namespace ui {

// One decoded file.
class BitmapFile {
 public:
  // Decodes the file. False only when it can't be opened; a file that isn't
  // a picture gives true with a null bitmap, which the skin treats as a
  // failure all the same.
  bool LoadFile(const std::string& path);

  bool IsNull() const { return bitmap.isNull(); }
  int Width() const { return width; }
  int Height() const { return height; }
  const QImage& Bitmap() const { return bitmap; }

 private:
  int height = 0;
  int width = 0;
  QImage bitmap;
};

// The skin's bitmap table, in the order of the layout's preload list.
class SkinBitmapTable : public skin::SkinBitmapLoader {
 public:
  bool LoadFile(const std::string& path) override;

  int Count() const { return static_cast<int>(pixmaps.size()); }
  // Null for an index outside the table.
  const QPixmap* Pixmap(int index) const;
  const QImage* Image(int index) const;

 private:
  std::vector<QPixmap> pixmaps;
  // The same pictures in memory, for the few pieces made once (thumbs).
  std::vector<QImage> images;
};

}  // namespace ui
