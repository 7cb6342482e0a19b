#include "shell/ui/skin_bitmaps.h"

#include <QFile>
#include <QImageReader>

namespace ui {
namespace {

constexpr int kMaxSide = 10000;

}  // namespace

bool BitmapFile::LoadFile(const std::string& path) {
  bitmap = QImage();
  width = 0;
  height = 0;
  QFile file(QString::fromStdString(path));
  if (!file.open(QIODevice::ReadOnly)) return false;
  QImageReader reader(&file);
  reader.setDecideFormatFromContent(true);
  const QSize size = reader.size();
  if (size.isValid() && (size.width() > kMaxSide || size.height() > kMaxSide)) return true;
  QImage decoded = reader.read();
  if (decoded.isNull() || decoded.width() > kMaxSide || decoded.height() > kMaxSide) return true;
  bitmap = decoded.convertToFormat(QImage::Format_RGB32);
  width = bitmap.width();
  height = bitmap.height();
  return true;
}

bool SkinBitmapTable::LoadFile(const std::string& path) {
  BitmapFile file;
  if (!file.LoadFile(path) || file.IsNull()) return false;
  images.push_back(file.Bitmap());
  pixmaps.push_back(QPixmap::fromImage(file.Bitmap()));
  return true;
}

const QPixmap* SkinBitmapTable::Pixmap(int index) const {
  if (index < 0 || index >= Count()) return nullptr;
  return &pixmaps[static_cast<std::size_t>(index)];
}

const QImage* SkinBitmapTable::Image(int index) const {
  if (index < 0 || index >= Count()) return nullptr;
  return &images[static_cast<std::size_t>(index)];
}

}  // namespace ui
