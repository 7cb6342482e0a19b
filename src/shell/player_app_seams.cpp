// PlayerApp: where the application meets collaborators that the program
// doesn't have yet. Every operation here is already reached from the
// switchboard or the start-up sequence; each does nothing until the work
// named in its group fills it in. Nothing here pretends: an empty list stays
// empty, no sound is played.
#include "shell/player_app.h"

namespace shell {

// --- The playlist (PlaylistView) ---------------------------------------------------
void PlayerApp::ClearPlaylist() {}
void PlayerApp::AddToPlaylist(const std::string& /*path*/) {}
void PlayerApp::LoadDefaultList() {}
void PlayerApp::SaveDefaultList() {}
bool PlayerApp::PlaylistIsEmpty() { return true; }
bool PlayerApp::CurrentPath(std::string& /*path*/) { return false; }
bool PlayerApp::CurrentTitle(std::string& /*title*/) { return false; }
void PlayerApp::LoadFolderTree(const std::string& /*folder*/) {}
void PlayerApp::GoToPathAt(const std::string& /*path*/, std::int32_t /*seconds*/) {}
void PlayerApp::TellListShuffle(bool /*on*/) {}
void PlayerApp::TellListRepeatMode(std::uint32_t /*mode*/) {}
void PlayerApp::TellListPosition(std::uint32_t /*seconds*/) {}
void PlayerApp::LoadFiles() {}
void PlayerApp::AddFiles() {}
void PlayerApp::ScrollPlaylist(bool /*up*/) {}

// --- Transport that needs the list and the decoders ---------------------------------
void PlayerApp::Play(bool /*keepCurrent*/) {}
void PlayerApp::Next(bool /*automatic*/) {}
void PlayerApp::Previous() {}
void PlayerApp::TrackEnded() {}

// --- Keys and the key filter -----------------------------------------------------------
void PlayerApp::KeyDown(std::uint32_t /*key*/) {}
void PlayerApp::KeyUp(std::uint32_t /*key*/) {}

// --- Bookmarks -------------------------------------------------------------------------
void PlayerApp::PlayBookmark(std::int32_t /*index*/, bool /*enqueue*/) {}
void PlayerApp::AddBookmark() {}
void PlayerApp::ReplaceBookmark(std::int32_t /*index*/) {}
void PlayerApp::RebuildBookmarkMenu() {}

// --- Alarm and sleep timer ---------------------------------------------------------------
void PlayerApp::OnAlarm() {}
void PlayerApp::SleepTimerTick() {}

}  // namespace shell
