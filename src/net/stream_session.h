// One connection of NetStream, from Connect to Disconnect.
//
// Connect makes a session and hands it to a new receive thread; Disconnect
// raises its stop signal, joins the thread and lets the session go. A reader
// that is still inside Read holds the session too, so its buffer and events
// stay valid until it has left, and a later session never shares a word with
// an earlier one: a reader of an old session sees only its raised stop.
#pragma once

#include <cstdint>
#include <memory>

#include "net/stop_signal.h"
#include "net/stream_connection.h"
#include "platform/event.h"

namespace net {

// The receive thread reads only while this much room is left, and a Read
// takes at most bufferSize - kMinimumRoom bytes, so a reader never waits for
// more than the thread will bring.
inline constexpr std::uint32_t kMinimumRoom = 2048;

struct StreamSession {
  // Fixed before the receive thread starts.
  ConnectionRequest request;
  std::uint32_t bufferSize = 0;
  std::uint32_t prebufferBytes = 0;  // held before the first read
  std::uint32_t rebufferBytes = 0;   // held before a read after an underrun

  StopSignal stop;                        // raised by Disconnect only
  platform::Event connectedEvent;         // the header has been read
  platform::Event endedEvent;             // the receive thread has finished
  platform::Event roomEvent{true, true};  // the buffer has kMinimumRoom free
  platform::Event dataEvent;              // fill has reached waitTarget

  // Guarded by NetStream::bufferLock.
  std::unique_ptr<std::uint8_t[]> buffer;
  std::uint32_t fill = 0;        // bytes held, from buffer[0]
  std::uint32_t waitTarget = 0;  // what a waiting Read needs; 0 when none waits
  std::uint32_t underrunCount = 0;
  bool buffering = true;      // until a wait has reached its target
  bool serverClosed = false;  // the server ended the stream
  bool finished = false;      // the receive thread has left its loop
};

}  // namespace net
