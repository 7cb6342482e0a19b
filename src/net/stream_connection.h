// Opening a radio stream: from its address to a socket that stands on the
// first audio byte. This runs on NetStream's receive thread.
//
//  1. Parse the address; through a proxy, parse the proxy's address too.
//  2. Find the server: a numeric address at once, a name by a lookup on a
//     helper thread ("Resolving host...").
//  3. "Connecting %s": connect to each address in turn, each within the
//     timeout.
//  4. Send the GET request (stream_url.h).
//  5. Read the response header into an area of kHeaderAreaBytes: at most
//     kHeaderAreaBytes - 1 bytes, all within the timeout from the request on.
//     A longer header, a close, silence or an error fail the connection.
//  6. Status 200 opens the stream. Status 302 with a Location closes the
//     socket and starts again at step 1 with the new address, at most
//     kMaxRedirects times; a 302 without a Location is taken as it is, like a
//     200. Any other status fails.
//  7. The header's fields and the audio bytes read with it go to the caller.
//
// Every wait watches the stop signal, so a stop ends this at any step within
// a moment, without a status. Failures post the status texts of
// status_text.h through `report`.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "net/host_lookup.h"
#include "net/response_header.h"
#include "net/socket_io.h"
#include "net/status_text.h"
#include "net/stop_signal.h"

namespace net {

inline constexpr int kMaxRedirects = 10;

// Posts a status: a text (null for none) and its mode.
using StatusReport = std::function<void(const std::string* text, StatusMode mode)>;

struct ConnectionRequest {
  std::string url;
  std::string proxyAddress;  // empty for none
  std::string userAgent;
  int timeoutMs = 10000;  // connect, header, and each wait of a send
  HostLookup lookup;      // SystemHostLookup unless a test gives another
};

struct OpenedStream {
  Socket socket;
  ResponseHeader header;
  std::string firstBytes;  // audio bytes that came with the header
};

enum class OpenResult { kOpened, kFailed, kStopped };

OpenResult OpenStreamConnection(const ConnectionRequest& request, StopSignal& stop,
                                const StatusReport& report, OpenedStream& opened);

}  // namespace net
