// What the skin's elements need of the window they live on.
//
// The elements are plain objects of the core: they hold their state and
// decide what to draw and where, in skin pixels (the 176 by 180 surface the
// layout is written for, origin at the top left). The window system behind
// these interfaces does the drawing: the Qt skin window shows the surface at
// an integer zoom, and tests record the calls.
//
// Threads: window thread only.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace skin {

// A rectangle in skin pixels: left, top, width, height.
struct SkinRect {
  int x = 0;
  int y = 0;
  int w = 0;
  int h = 0;

  // Left and top inside, right and bottom edges outside; in 64 bits, since
  // the numbers come unchecked from the layout.
  bool Contains(int px, int py) const {
    return px >= x && py >= y && static_cast<std::int64_t>(px) < static_cast<std::int64_t>(x) + w &&
           static_cast<std::int64_t>(py) < static_cast<std::int64_t>(y) + h;
  }
  // True when the two share any pixel.
  bool Intersects(const SkinRect& other) const {
    return static_cast<std::int64_t>(x) < static_cast<std::int64_t>(other.x) + other.w &&
           static_cast<std::int64_t>(other.x) < static_cast<std::int64_t>(x) + w &&
           static_cast<std::int64_t>(y) < static_cast<std::int64_t>(other.y) + other.h &&
           static_cast<std::int64_t>(other.y) < static_cast<std::int64_t>(y) + h;
  }
};

// 0x00RRGGBB.
using SkinColor = std::uint32_t;

// Single-line text formats, named by their alignment; the numbers are those
// of the platform's text drawing call, which the layout's orientation picks.
enum TextFormat : std::uint32_t {
  kTextLeftTop = 2080,
  kTextLeftMiddle = 2084,
  kTextRightMiddle = 2086,
  kTextLeftBottom = 2088,
  kTextRightBottom = 2090,
};
inline constexpr std::uint32_t kTextAlignRight = 0x2;
inline constexpr std::uint32_t kTextAlignMiddle = 0x4;
inline constexpr std::uint32_t kTextAlignBottom = 0x8;

// The font an element asks for. `pixelHeight` is the character height in
// skin pixels, 0 for the platform's default; `orientation` is the angle of
// the text in degrees, counter-clockwise.
struct SkinFont {
  std::string face;  // empty: the platform's default sans face
  int pixelHeight = 0;
  int weight = 400;
  int orientation = 0;
};

// A piece of a skin bitmap: `w` by `h` pixels from (x, y).
struct BitmapPiece {
  int bitmap = -1;
  int x = 0;
  int y = 0;
  int w = 0;
  int h = 0;
};

// A picture with a transparent colour, made once (a slider's thumb).
class SkinImage {
 public:
  virtual ~SkinImage() = default;
};

class SkinCanvas {
 public:
  virtual ~SkinCanvas() = default;
  // Copies a piece of a skin bitmap to (x, y). An unknown bitmap, or a piece
  // reaching outside it, draws what lies inside.
  virtual void CopyBitmap(const BitmapPiece& piece, int x, int y) = 0;
  // Draws an image from SkinSurface::CreateMaskedImage, leaving its
  // transparent pixels alone.
  virtual void DrawImage(const SkinImage& image, int x, int y) = 0;
  // One line of text in `rect`, clipped to it, with the alignment of
  // `format`, transparent behind the glyphs.
  virtual void DrawText(std::string_view text, const SkinRect& rect, std::uint32_t format,
                        const SkinFont& font, SkinColor color) = 0;
};

class SkinSurface {
 public:
  virtual ~SkinSurface() = default;
  // Marks the rectangle for the next paint, without erasing it. A paint
  // draws the whole skin: the background, then every element in order.
  virtual void Invalidate(const SkinRect& rect) = 0;
  // Paints now what is marked, if anything is.
  virtual void Update() = 0;
  // Draws on the window at once, outside a paint; what is drawn shows
  // without waiting for the next paint.
  virtual SkinCanvas& Canvas() = 0;
  // Posts the message, with zero arguments, to the window's parent; false
  // when there is no parent.
  virtual bool PostToParent(std::uint32_t message) = 0;
  // Width of the text in the font, in skin pixels, rounded up.
  virtual int TextWidth(std::string_view text, const SkinFont& font) = 0;
  // A picture of `w` by `h`: a work bitmap of `workW` by `workH` gets the
  // pieces drawn into it in order at (0, 0), each by its own size, and its
  // top left `w` by `h` part becomes the picture (what lies beyond the work
  // bitmap is transparent). Pixels of the colour `mask` are transparent;
  // colours are compared as the 16-bit screens of the skin format show them,
  // by the top five bits of each channel. Null when it can't be made.
  virtual std::unique_ptr<SkinImage> CreateMaskedImage(std::span<const BitmapPiece> pieces, int workW,
                                                       int workH, int w, int h, SkinColor mask) = 0;
};

// Decodes the skin's bitmap files into the table the canvas draws from.
class SkinBitmapLoader {
 public:
  virtual ~SkinBitmapLoader() = default;
  // Decodes the file as the next bitmap of the table (its index is the
  // number loaded before). False when the file can't be opened or isn't a
  // picture the decoder reads.
  virtual bool LoadFile(const std::string& path) = 0;
};

}  // namespace skin
