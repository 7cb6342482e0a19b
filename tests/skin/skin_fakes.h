// A window for skin elements without a window system: it records what is
// drawn, marked and posted, so that tests see what the elements did.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "skin/skin_surface.h"

namespace testing_support {

class RecordingSurface : public skin::SkinSurface, public skin::SkinCanvas {
 public:
  // --- SkinCanvas: each call is one line of `drawn`.
  void CopyBitmap(const skin::BitmapPiece& piece, int x, int y) override {
    drawn.push_back("copy " + std::to_string(piece.bitmap) + " " + std::to_string(piece.x) + "," +
                    std::to_string(piece.y) + " " + std::to_string(piece.w) + "x" + std::to_string(piece.h) +
                    " to " + std::to_string(x) + "," + std::to_string(y));
  }
  void DrawImage(const skin::SkinImage&, int x, int y) override {
    drawn.push_back("image at " + std::to_string(x) + "," + std::to_string(y));
  }
  void DrawText(std::string_view text, const skin::SkinRect&, std::uint32_t format, const skin::SkinFont&,
                skin::SkinColor) override {
    drawn.push_back("text " + std::string(text) + " " + std::to_string(format));
  }

  // --- SkinSurface
  void Invalidate(const skin::SkinRect&) override {}
  void Update() override {}
  skin::SkinCanvas& Canvas() override { return *this; }
  bool PostToParent(std::uint32_t message) override {
    posted.push_back(message);
    return true;
  }
  // Every character is `characterWidth` pixels wide.
  int TextWidth(std::string_view text, const skin::SkinFont&) override {
    return static_cast<int>(text.size()) * characterWidth;
  }
  std::unique_ptr<skin::SkinImage> CreateMaskedImage(std::span<const skin::BitmapPiece>, int, int, int, int,
                                                     skin::SkinColor) override {
    return std::make_unique<skin::SkinImage>();
  }

  std::vector<std::string> drawn;
  std::vector<std::uint32_t> posted;
  int characterWidth = 5;
};

// Records the paths it is asked to decode; decodes `loadable` of them, then fails.
class RecordingBitmapLoader : public skin::SkinBitmapLoader {
 public:
  bool LoadFile(const std::string& path) override {
    paths.push_back(path);
    return static_cast<int>(paths.size()) <= loadable;
  }
  std::vector<std::string> paths;
  int loadable = 1 << 30;
};

}  // namespace testing_support
