// ScanFolder for the window thread: the walk runs on a worker thread while the
// window thread takes the paths it finds in slices and keeps its events going
// between them, so a large folder never freezes the window.
//
// Protocol:
//  1. A worker thread runs ScanFolder and appends each path it finds to a
//     queue under `lock`; at the end it marks the walk done.
//  2. The calling thread waits at most kSliceWaitMs for paths or the end,
//     takes what is queued, and delivers it kSlicePaths at a time, calling
//     `pump` after each slice (the window thread runs its events there).
//  3. When `deliver` refuses a path, or the walk is over and the queue is
//     empty, the worker is told to stop, joined, and the call returns.
// Paths arrive in the walk's order, exactly as ScanFolder would deliver them.
//
// Threads: the caller's thread delivers and pumps; the worker only walks.
#pragma once

#include "playlist/folder_scan.h"

namespace playlist {

inline constexpr int kSliceWaitMs = 20;
inline constexpr std::size_t kSlicePaths = 1000;

// ScanFolder with the walk on a worker thread; `deliver` and `pump` run on
// the calling thread. False when `deliver` stopped the walk.
bool ScanFolderInSlices(const playback::FormatRegistry& formats, const std::string& folder, bool expanded,
                        bool playlistsOnly, const PathSink& deliver, const std::function<void()>& pump);

}  // namespace playlist
