#include "playlist/playlist_editing.h"

#include "playlist/playlist_view.h"

namespace playlist {

void SelectAll(PlaylistView&) {}
void SelectNone(PlaylistView&) {}
void InvertSelection(PlaylistView&) {}
void RemoveSelected(PlaylistView&) {}
void CropSelected(PlaylistView&) {}
void RemoveDuplicates(PlaylistView&) {}
void RemoveDead(PlaylistView&) {}
void EraseSelected(PlaylistView&) {}
void SortBy(PlaylistView&, SortKey) {}
void ReverseList(PlaylistView&) {}
void RandomizeList(PlaylistView&) {}
void ReadInfoAgain(PlaylistView&) {}
void SortLoaded(PlaylistView&, int, int) {}
bool ToggleMoveMode(PlaylistView& view) { return view.MoveMode(); }
int MoveSelected(PlaylistView&, int) { return 0; }
bool RunEditingCommand(PlaylistView&, int) { return false; }

}  // namespace playlist
