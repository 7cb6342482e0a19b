// The dialogs of the main window, as Qt dialogs.
//
// About is here. The others come with the work on their subjects (the
// equalizer, the playlist screen, bookmarks, timers, key mapping, options,
// file types); until then choosing them opens nothing. The file picker and
// the list's small boxes are playlist::PlaylistDialogs, which the window
// hands out once they exist.
//
// Threads: window thread.
#pragma once

#include "shell/dialogs.h"

class QWidget;

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
  void Playlist() override {}
  void Bookmarks() override {}
  void SleepTimer() override {}
  void KeyMapping() override {}
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
  shell::PlayerApp* app = nullptr;
};

}  // namespace ui
