// Whole-file writes that survive a crash at any moment.
//
// The new contents go to a temporary file beside the target, which is flushed
// to the disk, renamed over the target and followed by a flush of the folder.
// A reader therefore finds either the old file or the new one, never a mix,
// even when the writer is killed or the machine loses power in between.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

// Replaces the file at `path` with `contents`. Returns false, leaving any old
// file in place, when a step fails. The folder must exist.
bool WriteFileDurably(const std::string& path, std::string_view contents);

// Reads a whole file; nullopt when it can't be opened or read. Files above
// `maxBytes` are refused rather than read.
std::optional<std::string> ReadWholeFile(const std::string& path,
                                         std::size_t maxBytes = 64u << 20);

// Creates the folder and its parents; true if it exists afterwards.
bool MakeDirectories(const std::string& path, unsigned mode = 0755);

}  // namespace platform
