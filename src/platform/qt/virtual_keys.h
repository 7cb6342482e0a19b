// Qt's keys as the platform's virtual key codes, which the key mapping, the
// settings (value Keys) and the skins' action table use.
//
//   Return, Enter 13   Escape, Back 27   Space 32   Page Up 33   Page Down 34
//   Left 37  Up 38  Right 39  Down 40   digits 48 to 57   letters 65 to 90
//   F1 to F24 112 to 135   * 119   # 120   Volume Up 117   Volume Down 118
//   Call (Talk) 114   Hang up (End) 115
// A phone's star and hash keys share their codes with F8 and F9, and its
// volume keys with F6 and F7, as on the phone platform.
#pragma once

#include <cstdint>

namespace platform::qt {

// The code for a Qt::Key value; 0 for a key the program has no code for.
std::uint32_t VirtualKeyFor(int qtKey);

}  // namespace platform::qt
