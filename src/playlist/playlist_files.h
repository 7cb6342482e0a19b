// Playlist files: the m3u reader (also the native list), the pls and asx
// readers, and the m3u writer.
//
// The readers run on the calling thread and feed every entry through
// PlaylistView::AddEntry, so a list named inside a list is read where it
// stands. They report nothing: a file that can't be opened adds nothing, a
// line that can't be understood is skipped. See playlist_files.cpp for the
// rules of each format and for how entries become paths.
#pragma once

#include <string>

namespace playlist {

class PlaylistView;

// Reads an m3u list. `nativeList` reads the player's own default list, whose
// lines are taken as the bytes the writer wrote.
void ReadM3u(PlaylistView& view, const std::string& listPath, bool nativeList = false);
void ReadPls(PlaylistView& view, const std::string& listPath);
void ReadAsx(PlaylistView& view, const std::string& listPath);

// The bytes of the whole list in the m3u format, as WriteM3u writes them.
std::string FormatM3u(const PlaylistView& view);
// Writes the list to `path`, replacing any file there only once the new one is
// complete on the disk. False when the file couldn't be written.
bool WriteM3u(const PlaylistView& view, const std::string& path);

}  // namespace playlist
