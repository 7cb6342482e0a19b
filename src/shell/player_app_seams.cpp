// PlayerApp: where the application meets collaborators that the program
// doesn't have yet. Every operation here is already reached from the
// switchboard or the start-up sequence; each does nothing until the work
// named in its group fills it in. Nothing here pretends: an empty list stays
// empty, no sound is played.
#include "shell/player_app.h"

namespace shell {

// --- Bookmarks -------------------------------------------------------------------------
void PlayerApp::PlayBookmark(std::int32_t /*index*/, bool /*enqueue*/) {}
void PlayerApp::AddBookmark() {}
void PlayerApp::ReplaceBookmark(std::int32_t /*index*/) {}
void PlayerApp::RebuildBookmarkMenu() {}

// --- Alarm and sleep timer ---------------------------------------------------------------
void PlayerApp::OnAlarm() {}
// Each step to the next track re-arms the alarm.
void PlayerApp::RearmAlarm() {}
void PlayerApp::SleepTimerTick() {}

}  // namespace shell
