// The rules of the File Save box for a playlist, without the box.
//
// The box runs them in this order on "Save":
//  1. an empty name is refused (the box says so and stays);
//  2. ".m3u" is appended to the name, always, also to a name that has an
//     extension already: that is how the program names its playlists;
//  3. every level of the folder is created, failures ignored;
//  4. an existing file is only replaced when the user says yes;
//  5. the box ends only when a file can be created beside the target. The
//     list itself is written later by a durable write (a temporary file
//     renamed over the target), so the test is the same: a scratch file is
//     made in the target's folder and removed again. An existing list is
//     never truncated by the test.
//
// Threads: any thread.
#pragma once

#include <string>

namespace playlist {

inline constexpr const char* kSaveExtension = ".m3u";

// `folder`, a slash unless it ends in one, `name` and ".m3u".
std::string SaveTargetPath(const std::string& folder, const std::string& name);
// Creates `folder` and every level above it; true when it is a folder afterwards.
bool MakeSaveFolder(const std::string& folder);
// True when anything (a file, a folder) stands at `path`.
bool SaveTargetExists(const std::string& path);
// True when a list can be written to `path`: it isn't a folder, and a file
// can be made beside it. Leaves nothing behind.
bool CanCreateFile(const std::string& path);

}  // namespace playlist
