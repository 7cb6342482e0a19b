// The program's own file and folder pickers (a phone has no file dialog).
//
// FilePicker (dialog 114, soft keys "Done" and a menu) shows the home folder
// as a tree with tick boxes and hands each chosen file to a call-back, the
// list's AddEntry; a ticked folder is walked with ScanFolder. FolderPicker
// (dialog 158, "Done" and "Cancel") chooses one folder in the same tree,
// without ticks.
//
// The picker's sequence:
//  1. Show: refused with 2 while another modal dialog is open; otherwise the
//     dialog opens and posts itself the first fill, so that it is drawn
//     before the slow part.
//  2. Fill: the root level under "\" (the tree reads deeper levels as they
//     are opened); when the root level is empty the tree gives way to the
//     text "No media files found".
//  3. The menu: "Select All" / "Select None" tick or clear the whole tree;
//     "Show all folders" / "Only folders with media" switch the option and
//     fill again.
//  4. Done collects: with replaceList the call-back first gets a null path
//     (the list is cleared even if nothing is ticked) and again just before
//     the first path; then the ticked files, and the files of the ticked
//     folders, walked on a worker thread while the window stays drawn.
//
// Threads: window thread.
#pragma once

#include <QDialog>
#include <cstdint>
#include <functional>
#include <string>

#include "playlist/folder_scan.h"

class QLabel;

namespace playback {
class FormatRegistry;
}

namespace ui {

class DialogSoftKeys;
class FolderTree;

inline constexpr std::uint32_t kFilePickerDialog = 114;
inline constexpr std::uint32_t kFolderPickerDialog = 158;
inline constexpr std::uint32_t kCommandSelectAll = 40017;
inline constexpr std::uint32_t kCommandSelectNone = 40018;
inline constexpr std::uint32_t kCommandShowAllFolders = 40034;
inline constexpr std::uint32_t kCommandOnlyFoldersWithMedia = 40035;

// The picker's walk of a ticked folder, off the window thread: the window's
// events run between slices, except the user's input.
bool ScanFolderKeepingWindowAlive(const playback::FormatRegistry& formats, const std::string& folder,
                                  bool expanded, bool playlistsOnly, const playlist::PathSink& deliver);

class FilePicker : public QDialog {
 public:
  // A null path tells the list to clear itself.
  using Callback = std::function<void(const char* path)>;

  FilePicker(const playback::FormatRegistry& formats, QWidget* parent = nullptr);
  ~FilePicker() override;

  void SetCallback(Callback callback) { deliver = std::move(callback); }
  void SetPlaylistsOnly(bool on) { playlistsOnly = on; }
  // Runs the dialog over the home folder: 2 when another modal dialog is
  // open, else 1 for Done, 2 for Cancel. `pickerOption` (show all folders)
  // goes in and comes back as the user left it.
  int Show(bool foldersOnly, bool replaceList, std::uint32_t& pickerOption);

  // The steps of Show, for the window's tests.
  void Prepare(bool foldersOnly, bool replaceList, bool showAllFolders, const std::string& rootFolder);
  void Rebuild();
  void Command(std::uint32_t id);
  void accept() override;  // collects, then ends with 1
  FolderTree& Tree() { return *tree; }
  bool ShowAllFolders() const;
  DialogSoftKeys& SoftKeys() { return *softKeys; }

 private:
  void Deliver(const std::string& path);

  const playback::FormatRegistry& formats;
  FolderTree* tree;
  QLabel* noMedia;
  DialogSoftKeys* softKeys;
  Callback deliver;
  std::string root;
  bool playlistsOnly = false;
  bool replaceList = false;
  bool clearBeforeFirst = false;
};

class FolderPicker : public QDialog {
 public:
  FolderPicker(const playback::FormatRegistry& formats, QWidget* parent = nullptr);

  // The folder to start at; the tree opens down to it.
  void SetPath(const std::string& folder) { path = folder; }
  const std::string& GetPath() const { return path; }
  // 1 accepted (GetPath is the chosen folder), 2 cancelled (GetPath is empty).
  int Show();

  // The steps of Show, for the window's tests.
  void Prepare(const std::string& rootFolder);
  void accept() override;
  void reject() override;
  FolderTree& Tree() { return *tree; }

 private:
  FolderTree* tree;
  std::string path;
};

}  // namespace ui
