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

// --- The output engine and the device volume (AudioOutput, the wave device) ----------
void PlayerApp::CloseOutput() {}
std::uint32_t PlayerApp::ReadVolume() { return 0; }
void PlayerApp::ApplyVolume(std::uint32_t deviceVolume) { currentVolume = deviceVolume; }

// --- Transport that needs the list, the decoders and the output --------------------
void PlayerApp::Play(bool /*keepCurrent*/) {}
void PlayerApp::Next(bool /*automatic*/) {}
void PlayerApp::Previous() {}
void PlayerApp::TrackEnded() {}
void PlayerApp::VolumeStep(bool /*up*/) {}
void PlayerApp::SetVolumeFromSlider(std::int32_t /*slider*/) {}
void PlayerApp::ToggleMute() {}

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
void PlayerApp::FadeInStep() {}
void PlayerApp::SleepTimerTick() {}

}  // namespace shell
