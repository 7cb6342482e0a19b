#include "net/host_lookup.h"

#include <netdb.h>

#include <cstring>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

#include "platform/event.h"

namespace net {
namespace {

bool Lookup(const std::string& host, std::uint16_t port, int flags, std::vector<SocketAddress>& addresses) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_protocol = IPPROTO_TCP;
  hints.ai_flags = flags | AI_NUMERICSERV;
  addrinfo* found = nullptr;
  if (::getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found) != 0) return false;
  addresses.clear();
  for (const addrinfo* entry = found; entry != nullptr; entry = entry->ai_next) {
    if (entry->ai_addrlen > sizeof(sockaddr_storage)) continue;
    SocketAddress address;
    std::memcpy(&address.storage, entry->ai_addr, entry->ai_addrlen);
    address.length = entry->ai_addrlen;
    addresses.push_back(address);
  }
  ::freeaddrinfo(found);
  return !addresses.empty();
}

// What the caller and the helper share; whichever lets go last frees it.
struct PendingLookup {
  platform::Event done;
  std::mutex lock;
  bool found = false;                   // guarded by lock
  std::vector<SocketAddress> addresses;  // guarded by lock
};

}  // namespace

bool SystemHostLookup(const std::string& host, std::uint16_t port, std::vector<SocketAddress>& addresses) {
  return Lookup(host, port, 0, addresses);
}

bool NumericHostAddress(const std::string& host, std::uint16_t port, std::vector<SocketAddress>& addresses) {
  return Lookup(host, port, AI_NUMERICHOST, addresses);
}

LookupResult LookUpInterruptibly(const HostLookup& lookup, const std::string& host, std::uint16_t port,
                                 StopSignal& stop, std::vector<SocketAddress>& addresses) {
  auto pending = std::make_shared<PendingLookup>();
  try {
    std::thread([pending, lookup, host, port] {
      std::vector<SocketAddress> found;
      const bool ok = lookup(host, port, found);
      {
        std::lock_guard guard(pending->lock);
        pending->found = ok;
        pending->addresses = std::move(found);
      }
      pending->done.Set();
    }).detach();
  } catch (const std::system_error&) {
    return LookupResult::kUnknown;  // no thread to spare: as if the name were unknown
  }
  if (platform::WaitForAny({&pending->done, &stop.Event()}) != 0 || stop.Raised()) return LookupResult::kStopped;
  std::lock_guard guard(pending->lock);
  if (!pending->found) return LookupResult::kUnknown;
  addresses = pending->addresses;
  return LookupResult::kFound;
}

}  // namespace net
