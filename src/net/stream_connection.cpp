#include "net/stream_connection.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <chrono>

#include "net/stream_url.h"
#include "platform/texts.h"

namespace net {
namespace {

using Clock = std::chrono::steady_clock;

// kFailed is reported by the caller as "Can't establish connection";
// kReported has been reported already; kStopped is never reported.
enum class Step { kDone, kFailed, kReported, kStopped };

class Opener {
 public:
  Opener(const ConnectionRequest& connection, StopSignal& stopSignal, const StatusReport& reportStatus)
      : request(connection), stop(stopSignal), report(reportStatus) {}

  OpenResult Run(OpenedStream& opened);

 private:
  Step Exchange(const StreamUrl& parsed, const std::string& url, const std::optional<HostAndPort>& proxy,
                Socket& socket, std::string& received, std::size_t& headerLength);
  Step Connect(const HostAndPort& server, Socket& socket);
  Step FindAddresses(const HostAndPort& server, std::vector<SocketAddress>& addresses);
  Step ReadHeader(int fd, std::string& received, std::size_t& headerLength);
  OpenResult Finish(Step failed);
  void Post(std::uint32_t textId, StatusMode mode, std::string_view value = {});

  const ConnectionRequest& request;
  StopSignal& stop;
  const StatusReport& report;
};

OpenResult Opener::Run(OpenedStream& opened) {
  std::string url = request.url;
  std::optional<HostAndPort> proxy;
  if (!request.proxyAddress.empty()) {
    proxy = ParseProxyAddress(request.proxyAddress);
    if (!proxy) return OpenResult::kFailed;
  }
  for (int hop = 0; hop <= kMaxRedirects; ++hop) {
    const std::optional<StreamUrl> parsed = ParseStreamUrl(url);
    if (!parsed) return hop == 0 ? OpenResult::kFailed : Finish(Step::kFailed);
    Socket socket;
    std::string received;
    std::size_t headerLength = 0;
    const Step step = Exchange(*parsed, url, proxy, socket, received, headerLength);
    if (step != Step::kDone) return Finish(step);

    ResponseHeader header = ParseResponseHeader(std::string_view(received).substr(0, headerLength));
    if (header.status == kStatusFound && header.location) {
      const std::optional<std::string> next = ResolveLocation(url, *header.location);
      if (!next) break;
      url = *next;
      continue;  // the socket closes here
    }
    if (header.status != kStatusOk && header.status != kStatusFound) break;
    opened.socket = std::move(socket);
    opened.header = std::move(header);
    opened.firstBytes = received.substr(headerLength);
    return OpenResult::kOpened;
  }
  return Finish(Step::kFailed);  // a bad status, or too many redirects
}

// Connects, sends the request and reads the response header.
Step Opener::Exchange(const StreamUrl& parsed, const std::string& url,
                      const std::optional<HostAndPort>& proxy, Socket& socket, std::string& received,
                      std::size_t& headerLength) {
  const Step connected = Connect(proxy ? *proxy : parsed.server, socket);
  if (connected != Step::kDone) return connected;
  const std::string get = BuildRequest(parsed, url, proxy.has_value(), request.userAgent);
  if (!SendAll(socket.Descriptor(), get, stop, request.timeoutMs)) return Step::kFailed;
  return ReadHeader(socket.Descriptor(), received, headerLength);
}

Step Opener::FindAddresses(const HostAndPort& server, std::vector<SocketAddress>& addresses) {
  if (NumericHostAddress(server.host, server.port, addresses)) return Step::kDone;
  Post(kTextResolvingHost, kModeStatus);
  const HostLookup& lookup = request.lookup ? request.lookup : HostLookup(SystemHostLookup);
  switch (LookUpInterruptibly(lookup, server.host, server.port, stop, addresses)) {
    case LookupResult::kFound:
      return Step::kDone;
    case LookupResult::kStopped:
      return Step::kStopped;
    case LookupResult::kUnknown:
      break;
  }
  Post(kTextCantResolveHost, kModeStatusForASecond);
  return Step::kReported;
}

Step Opener::Connect(const HostAndPort& server, Socket& socket) {
  std::vector<SocketAddress> addresses;
  if (const Step found = FindAddresses(server, addresses); found != Step::kDone) return found;
  Post(kTextConnecting, kModeStatus, server.host);
  for (const SocketAddress& address : addresses) {
    switch (ConnectSocket(address, stop, request.timeoutMs, socket)) {
      case ConnectResult::kConnected:
        return Step::kDone;
      case ConnectResult::kStopped:
        return Step::kStopped;
      case ConnectResult::kFailed:
        break;
    }
  }
  report(nullptr, kModeStatus);
  return Step::kFailed;
}

Step Opener::ReadHeader(int fd, std::string& received, std::size_t& headerLength) {
  const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(request.timeoutMs);
  char area[kHeaderAreaBytes];
  std::size_t held = 0;
  while (held < kHeaderAreaBytes - 1) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) return Step::kFailed;
    switch (WaitForSocket(fd, POLLIN, stop, static_cast<int>(left))) {
      case WaitResult::kReady:
        break;
      case WaitResult::kStopped:
        return Step::kStopped;
      case WaitResult::kTimeout:
      case WaitResult::kFailed:
        return Step::kFailed;
    }
    const ssize_t got = ::recv(fd, area + held, kHeaderAreaBytes - 1 - held, 0);
    if (got < 0 && (errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK)) continue;
    if (got <= 0) return Step::kFailed;
    held += static_cast<std::size_t>(got);
    if (const auto end = FindHeaderEnd(std::string_view(area, held))) {
      received.assign(area, held);
      headerLength = *end;
      return Step::kDone;
    }
  }
  return Step::kFailed;  // the area is full and the header goes on
}

// Reports a failed step as the user sees it; a stop goes unreported.
OpenResult Opener::Finish(Step failed) {
  if (failed == Step::kStopped || stop.Raised()) return OpenResult::kStopped;
  if (failed == Step::kFailed) Post(kTextCantEstablishConnection, kModeStatusForASecond);
  return OpenResult::kFailed;
}

void Opener::Post(std::uint32_t textId, StatusMode mode, std::string_view value) {
  const std::string text = FillIn(platform::LoadText(textId), value);
  report(&text, mode);
}

}  // namespace

OpenResult OpenStreamConnection(const ConnectionRequest& request, StopSignal& stop,
                                const StatusReport& report, OpenedStream& opened) {
  return Opener(request, stop, report).Run(opened);
}

}  // namespace net
