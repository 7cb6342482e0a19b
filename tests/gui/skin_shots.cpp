// Pictures of a skin in the player's three states, for whoever draws skins:
//   skin_shots <skin folder ending in /> <output folder> [zoom]
// Writes stopped.png, playing.png and paused.png. The player is played by a
// stand-in that answers the skin's polls; the title, figures and switches
// are pushed as the player pushes them when a track starts.
#include <QApplication>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/message_queue.h"
#include "shell/ui/skin_window_widget.h"
#include "skin/skin_window.h"

namespace {

class StandInPlayer : public platform::MessageHandler {
 public:
  std::intptr_t HandleMessage(const platform::Message& message) override {
    if (message.id == 2569) return state;
    if (message.id == 2566) return 214000;  // 3:34
    if (message.id == 2565) return 83000;   // 1:23
    return 0;
  }
  std::intptr_t state = 1;
};

bool Shoot(ui::SkinWindowWidget& face, StandInPlayer& player, std::intptr_t state, const std::string& path) {
  player.state = state;
  face.Skin().HandleMessage(platform::Message{platform::kMessageTimer, skin::kTimerPoll, 0, nullptr});
  for (int step = 0; step < 3; ++step)
    face.Skin().HandleMessage(platform::Message{platform::kMessageTimer, skin::kTimerScroll, 0, nullptr});
  return face.grab().save(QString::fromStdString(path));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: skin_shots <skin folder/> <output folder> [zoom]\n");
    return 2;
  }
  ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
  QApplication application(argc, argv);
  StandInPlayer player;
  platform::MessageQueue parent(&player);
  const int zoom = argc > 3 ? std::atoi(argv[3]) : 2;
  std::unique_ptr<ui::SkinWindowWidget> face =
      ui::SkinWindowWidget::Create(argv[1], zoom > 0 ? zoom : 2, parent);
  if (!face) {
    std::fprintf(stderr, "the skin in %s doesn't load\n", argv[1]);
    return 1;
  }
  const std::string out = std::string(argv[2]) + "/";
  face->SetVolume(700);
  face->SetShuffle(true);
  face->SetEqualizer(true);
  bool saved = Shoot(*face, player, 1, out + "stopped.png");
  face->SetTrackFigures(214000, 192, 44100);
  face->SetTitle("Kaleidoscope Harbour - Lanterns Over the Water (3:34)");
  face->SetPaused(false);
  saved = Shoot(*face, player, 2, out + "playing.png") && saved;
  face->SetPaused(true);
  saved = Shoot(*face, player, 3, out + "paused.png") && saved;
  return saved ? 0 : 1;
}
