// The main window's procedure: one switchboard from messages to operations.
//
// Platform messages, private messages of workers, skins and other processes,
// menu commands and timers each reach one operation of PlayerOperations.
// Messages that aren't listed do nothing and return 0, as the platform's
// default procedure does for them; a command or timer id that isn't listed is
// ignored and counts as handled. Only the messages that are sent for a result
// (2565, 2566, 2569, 2654) return anything but 0.
//
// Threads: window thread only.
#pragma once

#include <cstdint>

#include "platform/message_target.h"

namespace shell {

class PlayerOperations;

std::intptr_t RouteMessage(PlayerOperations& operations, const platform::Message& message);

}  // namespace shell
