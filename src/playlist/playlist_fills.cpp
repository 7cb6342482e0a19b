// The fills of the list that the dialogs drive: each runs the picker (or a
// small box), then tells the list and starts the reader as its row says.
//
//   AddFiles            picker, keep the list   only on OK: sort the new range, refresh, read
//   AddFolder           folder, keep the list   sort the new range, refresh, read
//   NewPlaylist         picker, replace         sort all, entry 0 current, refresh, read
//   LoadPlaylist        playlists, replace      no sort, refresh, read; the index stays
//   LoadFolderContents  folder scan, no dialog  sort the new range, entry 0 current, refresh, read
//   AddUrl              text box "http://"      add on OK, refresh; no reader
//   SavePlaylist        save box                write m3u on OK
#include "playlist/playlist_dialogs.h"
#include "playlist/playlist_files.h"
#include "playlist/playlist_view.h"

namespace playlist {

void PlaylistView::SetLoadSorter(std::function<void(PlaylistView&, int, int)> sorter) {
  loadSorter = std::move(sorter);
}

void PlaylistView::SortLoaded(int first, int last) {
  if (loadSorter && settings.sortOnLoad != 0) loadSorter(*this, first, last);
}

void PlaylistView::FinishFill(bool startReader) {
  TellCount();
  Invalidate(true);
  if (startReader) StartInfoThread();
}

void PlaylistView::AddFiles() {
  if (dialogs == nullptr) return;
  const int oldCount = items.Count();
  if (dialogs->RunPicker(PlaylistDialogs::PickerMode::kFiles, false, *this) != 1) return;
  SortLoaded(oldCount, items.Count() - 1);
  FinishFill(true);
}

void PlaylistView::AddFolder() {
  if (dialogs == nullptr) return;
  const int oldCount = items.Count();
  dialogs->RunPicker(PlaylistDialogs::PickerMode::kFolder, false, *this);
  SortLoaded(oldCount, items.Count() - 1);
  FinishFill(true);
}

void PlaylistView::NewPlaylist() {
  if (dialogs == nullptr) return;
  dialogs->RunPicker(PlaylistDialogs::PickerMode::kFiles, true, *this);
  SortLoaded(0, items.Count() - 1);
  ClearCurrentMark();
  settings.currentIndex = 0;
  FinishFill(true);
}

void PlaylistView::LoadPlaylist() {
  if (dialogs == nullptr) return;
  dialogs->RunPicker(PlaylistDialogs::PickerMode::kPlaylists, true, *this);
  FinishFill(true);
}

void PlaylistView::LoadFolderContents(const std::string& folder) {
  if (dialogs == nullptr) return;
  const int oldCount = items.Count();
  dialogs->ScanFolder(folder, *this);
  SortLoaded(oldCount, items.Count() - 1);
  settings.currentIndex = 0;
  FinishFill(true);
}

void PlaylistView::AddUrl() {
  if (dialogs == nullptr) return;
  const std::optional<std::string> address = dialogs->EditText(kTextAddUrl, kAddUrlPreset);
  if (!address) return;
  AddEntry(*address);
  FinishFill(false);
}

void PlaylistView::AddFilesIfEmpty() {
  if (items.Count() == 0) AddFiles();
}

void PlaylistView::SavePlaylist() {
  if (dialogs == nullptr) return;
  if (const std::optional<std::string> path = dialogs->AskSavePath()) WriteM3u(*this, *path);
}

}  // namespace playlist
