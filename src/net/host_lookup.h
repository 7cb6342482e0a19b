// Turning a host name into addresses without holding anybody up.
//
// getaddrinfo can take many seconds and can't be interrupted. A numeric
// address needs no lookup and is converted at once. A name is looked up on a
// helper thread of its own while the caller waits for the answer or its stop
// signal, whichever comes first; after a stop the caller goes on at once and
// the helper finishes its lookup alone, keeping what it works on alive
// through a shared reference, and then ends.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "net/socket_io.h"
#include "net/stop_signal.h"

namespace net {

// Fills `addresses` for `host` and `port`, in the order to try; false when the
// host is unknown. May block.
using HostLookup =
    std::function<bool(const std::string& host, std::uint16_t port, std::vector<SocketAddress>& addresses)>;

// The system's resolver (getaddrinfo, IPv4 and IPv6, TCP).
bool SystemHostLookup(const std::string& host, std::uint16_t port, std::vector<SocketAddress>& addresses);

// The addresses of a numeric host ("127.0.0.1", "::1"); false for a name.
// Never blocks.
bool NumericHostAddress(const std::string& host, std::uint16_t port, std::vector<SocketAddress>& addresses);

enum class LookupResult { kFound, kUnknown, kStopped };

// Runs `lookup` on a helper thread and waits for it or for `stop`.
LookupResult LookUpInterruptibly(const HostLookup& lookup, const std::string& host, std::uint16_t port,
                                 StopSignal& stop, std::vector<SocketAddress>& addresses);

}  // namespace net
