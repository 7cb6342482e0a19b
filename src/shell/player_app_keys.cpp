// PlayerApp: the path of a key press in the main window, from the key code
// to the action bound to it in the action table.
#include <chrono>
#include <thread>

#include "shell/key_map.h"
#include "shell/player_app.h"
#include "shell/skin_display.h"
#include "skin/skin_action_table.h"

namespace shell {
namespace {

// End, Vol. Up, Vol. Down and Record reach a phone's program only on their
// release; their press is made up then.
bool PressComesWithRelease(std::uint32_t key) {
  return key == 115 || key == 117 || key == 118 || key == 121;
}

constexpr std::chrono::milliseconds kMadeUpPressLight{100};

}  // namespace

// The face lights the bound control; the first row bound to the key posts its
// message, with no arguments.
void PlayerApp::KeyDown(std::uint32_t key) {
  if (skin != nullptr) skin->KeyFeedback(static_cast<std::uint16_t>(key), true);
  const int row = RowOfKey(key);
  if (row >= 0) Post(skin::Actions()[static_cast<std::size_t>(row)].message);
}

// The made-up press stays lit for 100 ms, so that the face shows it.
void PlayerApp::KeyUp(std::uint32_t key) {
  if (PressComesWithRelease(key)) {
    KeyDown(key);
    std::this_thread::sleep_for(kMadeUpPressLight);
  }
  if (skin != nullptr) skin->KeyFeedback(static_cast<std::uint16_t>(key), false);
}

}  // namespace shell
