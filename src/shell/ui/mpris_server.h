// The player on the session bus as an MPRIS 2 media player, the way desktop
// media keys, the shell's media widgets, playerctl, headset buttons and KDE
// Connect see and drive players: org.mpris.MediaPlayer2.tavrinsonic, object
// /org/mpris/MediaPlayer2, interfaces org.mpris.MediaPlayer2 and
// org.mpris.MediaPlayer2.Player.
//
// Every request becomes the main window's message that a key or a menu would
// send, so the player's own rules apply (a Next at the end of the list does
// what the key does). Properties are read from PlayerApp::RemoteSnapshot; a
// look every quarter of a second notices what changed (a new track, a pause,
// a station's new title, volume, shuffle, repeat) and signals it with
// PropertiesChanged. A seek asked for here is signalled with Seeked.
//
// Without a session bus (a start without a desktop) nothing is published and
// nothing is said. A second instance never gets here: it hands over and ends.
//
// Threads: window thread.
#pragma once

#include <memory>

#include "shell/remote_status.h"

namespace shell {
class PlayerApp;
}

namespace ui {

// The id of the installed desktop entry, without ".desktop".
inline constexpr const char* kDesktopEntryId = "example.halvorkeep.Tavrinsonic";

// Publishes `app` on the session bus; null when there is no bus or the name
// is taken.
std::unique_ptr<shell::RemotePresence> PublishOnSessionBus(shell::PlayerApp& app);

}  // namespace ui
