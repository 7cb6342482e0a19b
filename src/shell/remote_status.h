// What another program sees of the player, and the object that shows it.
//
// On a desktop other programs (media keys, the shell's media widget,
// playerctl, a headset's buttons) read the player's state and drive it
// through the session bus. The shell gathers the state here, without any
// bus; the user interface publishes it and turns the bus's requests into the
// main window's messages, so the player's own rules apply to them.
//
// Threads: window thread.
#pragma once

#include <cstdint>
#include <string>

namespace shell {

struct RemoteStatus {
  std::int32_t state = 1;  // 1 stopped, 2 playing, 3 paused
  std::int64_t positionMs = 0;
  std::int64_t lengthMs = 0;  // 0: unknown or a stream
  bool shuffle = false;
  bool repeat = false;
  std::uint32_t repeatMode = 1;  // 1 all, 2 one, 3 selected
  std::uint32_t volume = 0;      // the device scale, 0 to 65535
  bool hasTrack = false;         // the list has a current entry
  bool isStream = false;
  std::string path;  // the current entry's path or address
  std::string title;
  std::string artist;
  std::string album;
  std::uint32_t trackNumber = 0;  // 0: none
};

// Lives from the main window's start to the end of the message loop.
class RemotePresence {
 public:
  virtual ~RemotePresence() = default;
};

}  // namespace shell
