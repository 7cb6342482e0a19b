#include "shell/ui/qt_dialogs.h"

#include <QLabel>
#include <QVBoxLayout>
#include <algorithm>

#include "platform/text_format.h"
#include "shell/language_pack.h"
#include "shell/main_window.h"
#include "shell/player_app.h"
#include "shell/ui/dialog_frame.h"
#include "shell/ui/equalizer_dialog.h"
#include "shell/ui/playlist_screen.h"
#include "shell/window_messages.h"

namespace ui {
namespace {

constexpr std::uint32_t kAboutDialog = 119;
constexpr std::uint32_t kPlaylistDialog = 103;
constexpr int kSoftKeyBarHeight = 40;
constexpr std::int64_t kVersionMajor = 2;
constexpr std::int64_t kVersionMinor = 14;

}  // namespace

void QtDialogs::About() {
  if (shell::ModalDialogOpen()) return;
  shell::ModalDialogOpen() = true;
  {
    QDialog dialog(&parent);
    dialog.setObjectName(QString::number(kAboutDialog));
    auto* layout = new QVBoxLayout(&dialog);
    auto* version = new QLabel(&dialog);
    version->setObjectName("versionText");  // filled here from the format "version"
    version->setAlignment(Qt::AlignCenter);
    layout->addWidget(version, 1);
    layout->addWidget(new DialogSoftKeys(dialog, shell::kMenuDone));
    version->setText(QString::fromStdString(
        platform::FormatText(shell::DialogText(kAboutDialog, "version"), {kVersionMajor, kVersionMinor})));
    ShowDialog(dialog, kAboutDialog);
  }
  shell::ModalDialogOpen() = false;
}

void QtDialogs::AttachPlaylist(playlist::PlaylistView& view, platform::MessageTarget& messages, int zoom) {
  playlistView = &view;
  mainWindow = &messages;
  faceZoom = zoom;
}

// The screen covers the main window, face and keys, and can be resized.
void QtDialogs::Playlist() {
  if (playlistView == nullptr || mainWindow == nullptr) return;
  PlaylistScreen screen(*playlistView, *mainWindow, faceZoom, &parent);
  if (parent.isVisible())
    screen.setGeometry(parent.geometry());
  else
    screen.resize(shell::kSkinWidth * faceZoom, shell::kSkinHeight * faceZoom + kSoftKeyBarHeight);
  ShowDialog(screen, kPlaylistDialog);
}

// The dialog's changes reach the filters through kMessageApplyEqualizer;
// the main window saves the settings once it closes.
void QtDialogs::Equalizer() {
  if (shell::ModalDialogOpen() || app == nullptr) return;
  shell::ModalDialogOpen() = true;
  {
    shell::PlayerApp& owner = *app;
    EqualizerDialog::Hooks hooks;
    hooks.apply = [&owner] {
      if (shell::MainWindow* window = owner.Window()) window->Messages().Post(shell::kMessageApplyEqualizer);
    };
    hooks.extraBassOn = [&owner] { return owner.Settings().extraBassEnabled; };
    hooks.toggleExtraBass = [&owner] { owner.ToggleExtraBass(); };
    const int zoom = std::max(1, parent.width() / shell::kSkinWidth);
    EqualizerDialog dialog(owner.EqualizerSettings(), owner.ProgramFolder(), std::move(hooks), zoom, &parent);
    ShowDialog(dialog, EqualizerDialog::kDialogId);
  }
  shell::ModalDialogOpen() = false;
}

}  // namespace ui
