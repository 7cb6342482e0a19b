#include "playlist/folder_scan.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <set>
#include <utility>

#include "platform/text.h"
#include "playback/format_registry.h"

namespace playlist {
namespace {

struct FolderEntry {
  std::string name;
  bool isFolder = false;
};

using FolderIdentity = std::pair<dev_t, ino_t>;

// Calls `visit(name, isFolder)` for each folder and regular file of `folder`
// whose name doesn't begin with a dot, until it returns false. A symbolic link counts as what it points to; a
// dangling one, and anything that is neither folder nor regular file, is
// left out. False when the folder can't be opened.
template <typename Visit>
bool ForEachEntry(const std::string& folder, FolderIdentity* identity, Visit&& visit) {
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return false;
  if (identity != nullptr) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
      ::close(descriptor);
      return false;
    }
    *identity = {status.st_dev, status.st_ino};
  }
  DIR* directory = ::fdopendir(descriptor);  // owns the descriptor from here
  if (directory == nullptr) {
    ::close(descriptor);
    return false;
  }
  while (const dirent* entry = ::readdir(directory)) {
    const std::string_view name = entry->d_name;
    if (name.front() == '.') continue;  // ".", "..", and what the user keeps hidden
    bool isFolder = entry->d_type == DT_DIR;
    bool isFile = entry->d_type == DT_REG;
    if (entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN) {
      struct stat status {};
      if (::fstatat(descriptor, entry->d_name, &status, 0) != 0) continue;
      isFolder = S_ISDIR(status.st_mode);
      isFile = S_ISREG(status.st_mode);
    }
    if (!isFolder && !isFile) continue;
    if (!visit(name, isFolder)) break;
  }
  ::closedir(directory);
  return true;
}

// The folder's entries by name; false when it can't be opened.
bool ListFolder(const std::string& folder, std::vector<FolderEntry>& entries, FolderIdentity* identity) {
  entries.clear();
  const bool opened = ForEachEntry(folder, identity, [&](std::string_view name, bool isFolder) {
    entries.push_back({std::string(name), isFolder});
    return true;
  });
  std::sort(entries.begin(), entries.end(),
            [](const FolderEntry& a, const FolderEntry& b) { return a.name < b.name; });
  return opened;
}

// A walk's memory of the folders it has entered, and, for the tests of a
// level, the number of folders the level may still list.
class Walk {
 public:
  explicit Walk(int* levelBudget = nullptr) : budget(levelBudget) {}
  bool Exhausted() const { return budget != nullptr && *budget <= 0; }
  // Lists the folder unless it can't be read or was entered before.
  bool Enter(const std::string& folder, std::vector<FolderEntry>& entries) {
    if (budget != nullptr) --*budget;
    FolderIdentity identity{};
    if (!ListFolder(folder, entries, &identity)) return false;
    return entered.insert(identity).second;
  }

 private:
  std::set<FolderIdentity> entered;
  int* budget;
};

bool HasSubfolders(const playback::FormatRegistry& formats, const std::string& folder, const PickerFilter& filter,
                   Walk& walk) {
  if (walk.Exhausted()) return true;  // can't tell in time: shown, and tested when opened
  std::vector<FolderEntry> entries;
  if (!walk.Enter(folder, entries)) return false;
  for (const FolderEntry& entry : entries) {
    if (!entry.isFolder) continue;
    if (filter.showAllFolders) return true;
    const std::string path = ChildPath(folder, entry.name);
    if (FolderHasMedia(formats, path, filter.playlistsOnly)) return true;
    if (HasSubfolders(formats, path, filter, walk)) return true;
  }
  return false;
}

bool ScanOne(const playback::FormatRegistry& formats, const std::string& folder, bool expanded, bool playlistsOnly,
             const PathSink& deliver, Walk& walk) {
  std::vector<FolderEntry> entries;
  if (!walk.Enter(folder, entries)) return true;
  bool takePlaylists = playlistsOnly;
  if (!playlistsOnly && !expanded) {
    takePlaylists = std::none_of(entries.begin(), entries.end(), [&](const FolderEntry& entry) {
      return !entry.isFolder && ClassifyFile(formats, entry.name, false) == FileClass::kMedia;
    });
  }
  for (const FolderEntry& entry : entries) {
    const std::string path = ChildPath(folder, entry.name);
    if (entry.isFolder) {
      if (!ScanOne(formats, path, false, playlistsOnly, deliver, walk)) return false;
      continue;
    }
    const FileClass kind = ClassifyFile(formats, entry.name, playlistsOnly);
    if (kind == FileClass::kNone || (kind == FileClass::kPlaylist && !takePlaylists)) continue;
    if (!deliver(path)) return false;
  }
  return true;
}

}  // namespace

std::string ChildPath(const std::string& folder, const std::string& name) {
  if (!folder.empty() && folder.back() == '/') return folder + name;
  return folder + "/" + name;
}

// As the pattern "*.<extension>" of each enabled row: the text after the
// last dot is compared without case, playlists first.
FileClass ClassifyFile(const playback::FormatRegistry& formats, std::string_view name, bool playlistsOnly) {
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos) return FileClass::kNone;
  const std::string_view extension = name.substr(dot + 1);
  int cursor = -1;
  for (const std::string* row = formats.FirstPlaylistExtension(cursor); row != nullptr;
       row = formats.NextPlaylistExtension(cursor)) {
    if (platform::EqualsIgnoreCase(*row, extension)) return FileClass::kPlaylist;
  }
  if (playlistsOnly) return FileClass::kNone;
  for (const std::string* row = formats.FirstMediaExtension(cursor); row != nullptr;
       row = formats.NextMediaExtension(cursor)) {
    if (platform::EqualsIgnoreCase(*row, extension)) return FileClass::kMedia;
  }
  return FileClass::kNone;
}

bool FolderHasMedia(const playback::FormatRegistry& formats, const std::string& folder, bool playlistsOnly) {
  bool found = false;
  ForEachEntry(folder, nullptr, [&](std::string_view name, bool isFolder) {
    found = !isFolder && ClassifyFile(formats, name, playlistsOnly) != FileClass::kNone;
    return !found;
  });
  return found;
}

bool FolderHasSubfolders(const playback::FormatRegistry& formats, const std::string& folder,
                         const PickerFilter& filter) {
  Walk walk;
  return HasSubfolders(formats, folder, filter, walk);
}

bool ScanFolder(const playback::FormatRegistry& formats, const std::string& folder, bool expanded,
                bool playlistsOnly, const PathSink& deliver) {
  Walk walk;
  return ScanOne(formats, folder, expanded, playlistsOnly, deliver, walk);
}

std::vector<LevelEntry> ReadLevel(const playback::FormatRegistry& formats, const std::string& folder,
                                  const PickerFilter& filter) {
  std::vector<FolderEntry> entries;
  std::vector<LevelEntry> level;
  if (!ListFolder(folder, entries, nullptr)) return level;
  int budget = kLevelSearchFolders;
  for (const FolderEntry& entry : entries) {
    if (!entry.isFolder) continue;
    const std::string path = ChildPath(folder, entry.name);
    const bool hasMedia = FolderHasMedia(formats, path, filter.playlistsOnly);
    Walk walk(&budget);
    const bool hasSubfolders = HasSubfolders(formats, path, filter, walk);
    if (!hasMedia && !hasSubfolders && !filter.showAllFolders) continue;
    const int childCount = filter.foldersOnly ? int(hasSubfolders) : int(hasMedia) + int(hasSubfolders);
    level.push_back({entry.name, true, FileClass::kNone, childCount});
  }
  if (filter.foldersOnly) return level;
  for (const FolderEntry& entry : entries) {
    if (entry.isFolder) continue;
    const FileClass kind = ClassifyFile(formats, entry.name, filter.playlistsOnly);
    if (kind != FileClass::kNone) level.push_back({entry.name, false, kind, 0});
  }
  return level;
}

}  // namespace playlist
