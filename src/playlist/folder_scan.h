// The file picker's view of the file system: which files count, what one
// level of the tree holds, and the walk that turns a folder into list entries.
//
// The walk's rules:
//  1. A file counts by its extension, as the format registry knows it: a
//     playlist extension makes it a playlist, an enabled media extension a
//     media file (not when only playlists are wanted), anything else nothing.
//  2. The entries of a folder come in the order of their names (bytes
//     compared), folders and files alike; the picker's tree shows the folders
//     of a level ahead of its files.
//  3. A folder that can't be opened or read (permission denied, vanished
//     meanwhile, a path too long for the system) has no entries: it is
//     skipped, never an error.
//  4. A walk enters no folder twice (same device and inode), so a symbolic
//     link to a folder already on the walk, a loop above all, is not followed.
//  5. Only regular files and folders are taken; a pipe or a device named
//     like a track would block whoever opens it.
//  6. Names are kept as the bytes the file system gives, valid UTF-8 or not.
//  7. Hidden entries (names beginning with a dot) are left out, as a Linux
//     file chooser leaves them out: the home folder's caches, settings and
//     trash hold no music the user means to choose.
//
// Threads: any thread; nothing here keeps state between calls. The registry
// is only read.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace playback {
class FormatRegistry;
}

namespace playlist {

// What a file counts as; the values are the images of the picker's tree.
enum class FileClass { kNone = 0, kMedia = 2, kPlaylist = 3 };

FileClass ClassifyFile(const playback::FormatRegistry& formats, std::string_view name, bool playlistsOnly);

// What the picker is choosing, which decides what counts and what is shown.
struct PickerFilter {
  bool playlistsOnly = false;   // only playlist files count
  bool foldersOnly = false;     // the tree shows no files
  bool showAllFolders = false;  // folders without media are shown too
};

// One entry of a level of the tree.
struct LevelEntry {
  std::string name;  // bytes, as the file system gives them
  bool isFolder = false;
  FileClass fileClass = FileClass::kNone;  // files only
  // Folders only: how many kinds of children the folder shows (the tree's
  // cChildren): it holds files that count, and it holds folders to show.
  int childCount = 0;
};

// True when the folder holds a file that counts (the first one ends the search).
bool FolderHasMedia(const playback::FormatRegistry& formats, const std::string& folder, bool playlistsOnly);
// True when the folder holds a subfolder worth showing: with showAllFolders
// any subfolder, otherwise one that holds media or, further down, such a
// subfolder.
bool FolderHasSubfolders(const playback::FormatRegistry& formats, const std::string& folder,
                         const PickerFilter& filter);

// How many folders the subfolder tests of one level may list in all. A home
// folder full of other things (sources, caches of programs) holds deep trees
// without media; once the budget is spent, the level's remaining folders
// count as having subfolders, are shown, and are tested when opened. So a
// level shows in bounded time whatever lies below it.
inline constexpr int kLevelSearchFolders = 2000;

// One level of the tree: its folders, then its files, each by name. Folders
// that hold nothing to show are left out unless showAllFolders is on.
std::vector<LevelEntry> ReadLevel(const playback::FormatRegistry& formats, const std::string& folder,
                                  const PickerFilter& filter);

// Receives each path the walk finds; false stops the walk.
using PathSink = std::function<bool(const std::string& path)>;

// Walks `folder` and its subfolders and hands each file that counts to
// `deliver`. Playlists are taken from a folder only when it holds no media
// file, so that a playlist beside the tracks it names doesn't bring them in a
// second time; with `expanded` (the user saw the folder's files in the tree)
// the top folder's playlists aren't taken at all. With playlistsOnly, the
// only files that count are playlists, and they are always taken. False when
// `deliver` stopped the walk.
bool ScanFolder(const playback::FormatRegistry& formats, const std::string& folder, bool expanded,
                bool playlistsOnly, const PathSink& deliver);

// `folder` and `name` joined by one slash.
std::string ChildPath(const std::string& folder, const std::string& name);

}  // namespace playlist
