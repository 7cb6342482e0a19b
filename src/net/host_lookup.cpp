#include "net/host_lookup.h"

#include <netdb.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cstring>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

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
// The helper says it is done through an eventfd rather than a platform
// event: a helper that outlives its caller may still be running when the
// process ends, and must touch nothing but this.
struct PendingLookup {
  PendingLookup() : done(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}
  ~PendingLookup() {
    if (done >= 0) ::close(done);
  }
  PendingLookup(const PendingLookup&) = delete;
  PendingLookup& operator=(const PendingLookup&) = delete;

  const int done;
  std::mutex lock;
  bool found = false;                    // guarded by lock
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
  if (pending->done < 0) return LookupResult::kUnknown;
  try {
    std::thread([pending, lookup, host, port] {
      std::vector<SocketAddress> found;
      const bool ok = lookup(host, port, found);
      {
        std::lock_guard guard(pending->lock);
        pending->found = ok;
        pending->addresses = std::move(found);
      }
      const std::uint64_t one = 1;
      [[maybe_unused]] const ssize_t written = ::write(pending->done, &one, sizeof one);
    }).detach();
  } catch (const std::system_error&) {
    return LookupResult::kUnknown;  // no thread to spare: as if the name were unknown
  }
  WaitResult waited;
  do {
    waited = WaitForSocket(pending->done, POLLIN, stop, 60000);
  } while (waited == WaitResult::kTimeout);
  if (waited != WaitResult::kReady) return LookupResult::kStopped;
  std::lock_guard guard(pending->lock);
  if (!pending->found) return LookupResult::kUnknown;
  addresses = pending->addresses;
  return LookupResult::kFound;
}

}  // namespace net
