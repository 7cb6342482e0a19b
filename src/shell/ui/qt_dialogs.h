// The dialogs of the main window, as Qt dialogs.
//
// About and the list screen are here. The others come with the work on their subjects (the
// equalizer, the playlist screen, bookmarks, timers, key mapping, options,
// file types); until then choosing them opens nothing. The file picker and
// the list's small boxes are playlist::PlaylistDialogs, which the window
// hands out once they exist.
//
// Threads: window thread.
#pragma once

#include <functional>
#include <utility>

#include "shell/dialogs.h"

class QWidget;

namespace platform {
class MessageTarget;
}
namespace playlist {
class PlaylistView;
}
namespace shell {
class PlayerApp;
}

namespace ui {

class QtDialogs : public shell::Dialogs {
 public:
  explicit QtDialogs(QWidget& owner) : parent(owner) {}

  // The version of the program, with a Done key. Not opened while another
  // modal dialog is open.
  void About() override;
  void Equalizer() override;
  // The list screen over `view`, which the main window's `messages` serve;
  // `zoom` is the face's. Until this is called the screen doesn't open.
  void AttachPlaylist(playlist::PlaylistView& view, platform::MessageTarget& messages, int zoom);
  // The list screen, modal, over the face (PlaylistScreen).
  void Playlist() override;
  void Bookmarks() override {}
  void SleepTimer() override {}
  // The Key Mapping dialog (key_mapping_dialog.h); `exist` tells whether
  // the bookmark action is shown. Not opened while another modal dialog is.
  void KeyMapping() override;
  void AttachKeyMapping(std::function<bool()> exist) { bookmarksExist = std::move(exist); }
  void GeneralOptions() override {}
  void PlaylistOptions() override {}
  void FileTypes() override {}
  void SetAlarm() override {}
  void Effects() override {}

  // The application whose equalizer settings the Equalizer dialog edits;
  // until this is called the dialog doesn't open.
  void AttachEqualizer(shell::PlayerApp& owner) { app = &owner; }

 private:
  QWidget& parent;
  playlist::PlaylistView* playlistView = nullptr;
  platform::MessageTarget* mainWindow = nullptr;
  int faceZoom = 1;
  std::function<bool()> bookmarksExist;
  shell::PlayerApp* app = nullptr;
};

}  // namespace ui
