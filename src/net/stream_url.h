// Addresses of radio streams and the request that fetches them.
//
// A stream address is "http://host[:port][/target]"; a proxy address is
// "[http://]host[:port]". The host ends at ':', '/', '?' or '#'; an IPv6
// address is written in brackets. Without a port the port is 80; a port
// that is not a number from 1 to 65535 makes the address unusable. Without a
// target the target is "/".
//
// The request is HTTP/1.0 with the ICY request header "Icy-MetaData:1", which
// asks the server to interleave the stream's titles (see metadata_filter.h).
// Through a proxy the request names the whole address as its target. Bytes
// that may not stand in a request line (controls, blanks and bytes above
// 0x7E) are sent %-escaped, so an address can't add lines to the request.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace net {

inline constexpr std::string_view kHttpPrefix = "http://";

struct HostAndPort {
  std::string host;  // without brackets
  std::uint16_t port = 80;
};

struct StreamUrl {
  HostAndPort server;
  std::string target;  // from the first '/' after the host; "/" when none
};

// Parses "http://host[:port][/target]"; the scheme is compared without regard
// to case. Nullopt for any other scheme, an empty host or a bad port.
std::optional<StreamUrl> ParseStreamUrl(std::string_view url);

// Parses a proxy address, with or without "http://". Nullopt for an empty
// host or a bad port.
std::optional<HostAndPort> ParseProxyAddress(std::string_view address);

// The address a redirect's Location names, taken relative to `current`:
// an absolute "http://" address as it stands, "/path" on the same server,
// anything else relative to the current target's folder. Nullopt for another
// scheme (such as https, which this client doesn't speak) or an empty value.
std::optional<std::string> ResolveLocation(std::string_view current, std::string_view location);

// The GET request for `url`, directly or through a proxy.
std::string BuildRequest(const StreamUrl& url, const std::string& fullUrl, bool throughProxy,
                         std::string_view userAgent);

// Escapes the bytes that may not stand in a request line.
std::string EscapeRequestTarget(std::string_view target);

}  // namespace net
