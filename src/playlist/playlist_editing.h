// The playlist's editing commands: selection, removals, sorts, reverse,
// randomize, reading info again and moving the selected rows as a block.
//
// Every command works on the model (PlaylistView) and tells the list on screen
// through it; none shows a dialog. Commands that change the shape of the list
// stop the info reader first and keep the current entry where its
// ITEM_CURRENT mark is.
#pragma once

namespace playlist {
class PlaylistView;

// Command ids of the list screen's menus (menu bar 156 and the popups made at run time).
inline constexpr int kCommandPlayFocused = 5001, kCommandAddFiles = 5082, kCommandAddFolders = 5081,
  kCommandAddUrl = 5080, kCommandNewPlaylist = 5005, kCommandMoveItems = 40013,
  kCommandSelectAll = 5089, kCommandSelectNone = 5088, kCommandSelectInvert = 5087,
  kCommandRemoveAll = 5084, kCommandClearAll = 5093, kCommandRemoveSelected = 5086,
  kCommandCropSelected = 5085, kCommandRemoveDuplicates = 40014, kCommandRemoveDead = 1511,
  kCommandEraseSelected = 1512, kCommandSortTitle = 1500, kCommandSortFileName = 1501,
  kCommandSortPath = 1502, kCommandSortTrackNumber = 1503, kCommandReverse = 1506,
  kCommandRandomize = 1507, kCommandSavePlaylist = 5094, kCommandLoadPlaylist = 5095,
  kCommandSortPopup = 5090, kCommandInfo = 5091, kCommandReadPopup = 5092,
  kCommandReadInfoAgain = 1510, kCommandRemovePopup = 5083;

enum class SortKey { kTitle = 1, kFileName = 2, kPath = 3, kTrackNumber = 4 };

void SelectAll(PlaylistView& view);        // selection commands: no reader stop, invalidate without erase
void SelectNone(PlaylistView& view);
void InvertSelection(PlaylistView& view);
void RemoveSelected(PlaylistView& view);   // removals: compaction, tell count, ResyncCurrent, invalidate with erase
void CropSelected(PlaylistView& view);
void RemoveDuplicates(PlaylistView& view); // with the kept quirk (the head entry is lost)
void RemoveDead(PlaylistView& view);       // entries whose file is gone (URLs too)
void EraseSelected(PlaylistView& view);    // deletes the selected files, removes their entries
void SortBy(PlaylistView& view, SortKey key);
void ReverseList(PlaylistView& view);
void RandomizeList(PlaylistView& view);
void ReadInfoAgain(PlaylistView& view);    // selected entries forget their info; reader restarts
// The sort of a freshly loaded range (sortOnLoad, sortByTrackNumber). PlayerApp installs it at
// start with view.SetLoadSorter(&SortLoaded).
void SortLoaded(PlaylistView& view, int first, int last);
// Move mode (it lives in the model: it and the selection survive closing the screen).
// Toggle: an empty list clears it; turning on with nothing selected selects the focus row.
// Returns the new state.
bool ToggleMoveMode(PlaylistView& view);
// Moves the selected rows as a block by a signed distance, clamped at the edges; returns the
// distance actually moved (0: nothing moved). Stops the reader; ResyncCurrent; invalidates.
int MoveSelected(PlaylistView& view, int distance);
// Runs any command above that needs no dialog and no user interface (selection, removals except
// erase's wait cursor is the caller's, sorts, reverse, randomize, read again, move items toggle);
// false for an id that isn't one of them (Play, Add..., Save/Load, popups, Info are the screen's).
bool RunEditingCommand(PlaylistView& view, int command);

}  // namespace playlist
