// What the stream client tells the main window, and in which words.
//
// Status goes out as message 2331 with the text owned by the message and
// lParam the mode: 0 a new stream title, 1 a status line that stays until
// replaced, 2 a status line that clears after a second. A message without
// text (null) in mode 1 empties the status line.
//
// The texts come from platform::LoadText by id, so language packs translate
// them; a pack's format is input, so the one number or name a text takes is
// put in by FillIn, never by printf.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace net {

// A status text keeps at most this many UTF-16 units.
inline constexpr std::size_t kStatusTextUnits = 255;

enum StatusMode : std::intptr_t {
  kModeTitle = 0,
  kModeStatus = 1,
  kModeStatusForASecond = 2,
};

enum StatusTextId : std::uint32_t {
  kTextResolvingHost = 6400,            // "Resolving host..."
  kTextCantResolveHost = 6401,          // "Can't resolve host name"
  kTextConnecting = 6402,               // "Connecting %s": the host
  kTextCantEstablishConnection = 6403,  // "Can't establish connection"
  kTextConnectedToServer = 6404,        // "Connected to server"
  kTextPrebuffering = 6405,             // "Prebuffering:%d%%": the percentage
  kTextDisconnected = 6406,             // "Disconnected"
};

// `format` with its first %s or %d replaced by `value` and each %% by %;
// any other % sequence is kept as it stands. The result is cut to
// kStatusTextUnits UTF-16 units.
std::string FillIn(std::string_view format, std::string_view value);

}  // namespace net
