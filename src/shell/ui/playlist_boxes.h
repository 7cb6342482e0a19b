// The dialogs the list's fills run, as the main window hands them to the
// PlaylistView: the file picker for Add Files, Add Folders, New Playlist and
// Load Playlist, its folder walk for the start options, the Edit File Name
// box for Add URL and the File Save box for Save Playlist. Every chosen path
// goes to the list through PlaylistView::AddEntry(path, &view).
//
// The picker's root "\" is the home folder, read anew for each dialog; so is
// a folder given as "\" or as nothing.
//
// Threads: window thread.
#pragma once

#include "playlist/playlist_dialogs.h"

class QWidget;

namespace ui {

class QtPlaylistBoxes : public playlist::PlaylistDialogs {
 public:
  explicit QtPlaylistBoxes(QWidget& owner) : parent(owner) {}

  int RunPicker(PickerMode mode, bool replace, playlist::PlaylistView& view) override;
  void ScanFolder(const std::string& folder, playlist::PlaylistView& view) override;
  std::optional<std::string> EditText(int captionTextId, const std::string& preset) override;
  std::optional<std::string> AskSavePath() override;

 private:
  QWidget& parent;
};

}  // namespace ui
