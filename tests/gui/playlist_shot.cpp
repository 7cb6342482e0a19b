// A picture of the list screen with a list in it, for the documentation:
//   playlist_shot <output.png> [zoom]
// The list is read from an m3u written here, titles and lengths from its
// #EXTINF lines as any saved list brings them, with two entries not yet read
// (shown by their file names) and a stream. Entry 4 plays, 6 and 7 are
// selected, the cursor stands on 2.
#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "platform/message_target.h"
#include "playback/format_registry.h"
#include "playlist/playlist_item.h"
#include "playlist/playlist_view.h"
#include "shell/ui/playlist_screen.h"

namespace {

constexpr const char* kList =
    "#EXTM3U\n"
    "#EXTINF:214,Kaleidoscope Harbour - Lanterns Over the Water\n/home/user/Music/Harbour/01 Lanterns.mp3\n"
    "#EXTINF:187,Kaleidoscope Harbour - Salt and Copper\n/home/user/Music/Harbour/02 Salt.mp3\n"
    "#EXTINF:241,Kaleidoscope Harbour - The Long Pier\n/home/user/Music/Harbour/03 Pier.mp3\n"
    "#EXTINF:305,Maren Tolle - Northbound\n/home/user/Music/Tolle/Northbound.ogg\n"
    "#EXTINF:3723,Field Recordings - Rain on the Moor\n/home/user/Music/Field/Rain.ogg\n"
    "#EXTINF:198,Maren Tolle - Paper Kites\n/home/user/Music/Tolle/Paper Kites.ogg\n"
    "#EXTINF:256,Maren Tolle - Quiet Engines\n/home/user/Music/Tolle/Quiet Engines.wma\n"
    "/home/user/Music/Unsorted/demo tape 3.wav\n"
    "/home/user/Music/Unsorted/voice memo.mp3\n"
    "#EXTINF:6300,Sleep Sounds - Ocean (extended)\n/home/user/Music/Sleep/Ocean.mp3\n"
    "http://radio.example.org:8000/live\n";

// The player as the screen asks it: playing.
class PlayingWindow : public platform::MessageTarget {
 public:
  using MessageTarget::Post;
  void Post(platform::Message) override {}
  std::intptr_t Send(std::uint32_t, std::uintptr_t, std::intptr_t) override { return 2; }
  int RemovePending(std::uint32_t) override { return 0; }
};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: playlist_shot <output.png> [zoom]\n");
    return 2;
  }
  ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
  QApplication application(argc, argv);
  const int zoom = argc > 2 && std::atoi(argv[2]) > 0 ? std::atoi(argv[2]) : 2;

  QTemporaryDir folder;
  const std::string listPath = QDir(folder.path()).filePath("shot.m3u").toStdString();
  std::ofstream(listPath) << kList;
  playback::FormatRegistry formats;
  formats.AddExtension(playback::kFormatM3u, "m3u");
  formats.Enable(playback::kFormatM3u, true);
  playlist::PlaylistView view(formats);
  view.SetCurrentIndex(-1);
  view.AddEntry(listPath);
  view.Settings().showNumbers = 1;
  view.SetCurrentIndex(3);
  view.SetFlags(3, playlist::ITEM_CURRENT, true);
  view.SetFlags(5, playlist::ITEM_SELECTED, true);
  view.SetFlags(6, playlist::ITEM_SELECTED, true);
  view.SetFocusIndex(1);

  PlayingWindow player;
  ui::PlaylistScreen screen(view, player, zoom);
  screen.setWindowTitle("Playlist");
  screen.resize(176 * zoom, 180 * zoom + 40);
  screen.show();
  for (int i = 0; i < 5; ++i) QCoreApplication::processEvents();
  return screen.grab().save(argv[1]) ? 0 : 1;
}
