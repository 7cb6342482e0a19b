// The skin loader: layout.xml and its bitmaps turned into the table of
// bitmaps and the list of elements.
//
// The layout file (read by XmlReader, whose limits a skin author must know):
//
//   <skin>
//     <preload>   bitmap alias="" file=""   (one or more; others ignored)
//     <layout>    background src=""; button, checkbutton, slider, text,
//                 timer, titlebar, iconstatus (up to 100; others ignored)
//
// Names of elements and attributes match in any case; numbers are decimal
// (a missing one is 0); colours are RRGGBB hexadecimal text (ParseColor).
// Elements are drawn in file order, later ones on top, and a press goes to
// the first element in file order that takes it. What each element reads:
//   button       x y w h id; released and pressed with src x y
//   checkbutton  x y w h id; state1 (unchecked) and state2, each with
//                released and pressed with src x y
//   slider       x y w h id orientation; released and pressed with src x y
//                w h mask_color (the thumb)
//   text, timer, titlebar
//                x y w h id color point font orientation weight, none needed
//   iconstatus   x y w h; stop, play and pause with src x y
// A button's, check button's or slider's id must name a row of the action
// table, and every src a preloaded alias; a missing child fails the load as
// well. A text's id picks the row it shows (BITRATE, SAMPLINGRATE); a timer
// must have no known id.
//
// Every failure is a plain false: the skin window then isn't made and the
// program ends without a word.
//
// Threads: window thread only.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "skin/skin_element.h"
#include "skin/skin_surface.h"

namespace skin {

class SkinTitleBar;
class XmlNode;

inline constexpr int kMaxElements = 100;       // `background` not counted
inline constexpr std::size_t kAliasSize = 64;  // alias, file and font names: 63 characters fit

class SkinLayout {
 public:
  SkinLayout() = default;
  SkinLayout(const SkinLayout&) = delete;
  SkinLayout& operator=(const SkinLayout&) = delete;

  // The folder bitmap files are named relative to, ending in "/".
  void SetSkinDirectory(std::string directory) { skinDirectory = std::move(directory); }
  const std::string& SkinDirectory() const { return skinDirectory; }

  // Reads the layout file and makes the elements. On a failure the elements
  // made before it stay (they go with the layout).
  bool LoadLayout(const std::string& path);
  // Decodes each preloaded file, in order, through the loader; the first that
  // fails ends the loop and the load. The alias table is freed either way.
  bool LoadBitmaps(SkinBitmapLoader& loader);
  // Hands the window and the background to every element; sliders build
  // their thumbs.
  void BindWindow(SkinSurface* surface);

  // The row of the alias in any case (the first of twins), or -1; also for
  // a null alias.
  int FindBitmap(const char* alias) const;
  // The action table's row of an id, in any case, or -1; rows without a
  // name never match, and a null id gives -1.
  static int FindAction(const char* id);
  // "RRGGBB": read from the last character back, at most eight, four bits
  // each; a character below "A" counts as its code less "0", any other as
  // its upper-case code less 55, so nothing is refused ("#" gives a wrong
  // colour, not an error). The low three bytes are red, green, blue. Null
  // or empty gives 0.
  static SkinColor ParseColor(const char* text);

  int BitmapCount() const { return bitmapCount; }
  int BackgroundIndex() const { return backgroundIndex; }
  int ElementCount() const { return static_cast<int>(elements.size()); }
  SkinElement* Element(int index) const { return elements[static_cast<std::size_t>(index)].get(); }
  // The last title bar made: the one that scrolls.
  SkinTitleBar* TitleBar() const { return titleBar; }

  // The element that took the last press.
  SkinElement* capturedElement = nullptr;

 private:
  struct PreloadRow {
    std::string alias;
    std::string file;
  };

  bool AddElement(const XmlNode& node);

  std::vector<PreloadRow> preloadTable;
  int bitmapCount = 0;
  int backgroundIndex = -1;
  std::vector<std::unique_ptr<SkinElement>> elements;
  std::string skinDirectory;
  SkinTitleBar* titleBar = nullptr;
};

}  // namespace skin
