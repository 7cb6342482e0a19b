#include "net/stream_url.h"

#include "platform/text.h"

namespace net {
namespace {

bool EndsHost(char c) {
  return c == ':' || c == '/' || c == '?' || c == '#';
}

// Reads "host[:port]" from the start of `text`; `rest` is what follows.
std::optional<HostAndPort> ParseAuthority(std::string_view text, std::string_view& rest) {
  HostAndPort parsed;
  std::size_t i = 0;
  if (!text.empty() && text.front() == '[') {
    const std::size_t close = text.find(']');
    if (close == std::string_view::npos) return std::nullopt;
    parsed.host = std::string(text.substr(1, close - 1));
    i = close + 1;
  } else {
    while (i < text.size() && !EndsHost(text[i])) ++i;
    parsed.host = std::string(text.substr(0, i));
  }
  if (parsed.host.empty()) return std::nullopt;
  if (i < text.size() && text[i] == ':') {
    ++i;
    std::uint32_t port = 0;
    std::size_t digits = 0;
    for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i, ++digits) {
      port = port * 10 + static_cast<std::uint32_t>(text[i] - '0');
      if (port > 65535) return std::nullopt;
    }
    if (digits > 0) {
      if (port == 0) return std::nullopt;
      parsed.port = static_cast<std::uint16_t>(port);
    }
    if (i < text.size() && !EndsHost(text[i])) return std::nullopt;
  } else if (i < text.size() && text[i] != '/' && text[i] != '?' && text[i] != '#') {
    return std::nullopt;  // text behind a bracketed host
  }
  rest = text.substr(i);
  return parsed;
}

std::string HostForHeader(const HostAndPort& server) {
  std::string host = server.host.find(':') != std::string::npos ? "[" + server.host + "]" : server.host;
  if (server.port != 80) host += ":" + std::to_string(server.port);
  return host;
}

}  // namespace

std::optional<StreamUrl> ParseStreamUrl(std::string_view url) {
  if (!platform::StartsWithIgnoreCase(url, kHttpPrefix)) return std::nullopt;
  std::string_view rest;
  std::optional<HostAndPort> server = ParseAuthority(url.substr(kHttpPrefix.size()), rest);
  if (!server) return std::nullopt;
  StreamUrl parsed{*server, std::string(rest)};
  if (parsed.target.empty() || parsed.target.front() != '/') parsed.target.insert(0, "/");
  return parsed;
}

std::optional<HostAndPort> ParseProxyAddress(std::string_view address) {
  if (platform::StartsWithIgnoreCase(address, kHttpPrefix)) address.remove_prefix(kHttpPrefix.size());
  std::string_view rest;
  return ParseAuthority(address, rest);
}

std::optional<std::string> ResolveLocation(std::string_view current, std::string_view location) {
  while (!location.empty() && (location.back() == ' ' || location.back() == '\t')) location.remove_suffix(1);
  if (location.empty()) return std::nullopt;
  if (platform::StartsWithIgnoreCase(location, kHttpPrefix)) return std::string(location);
  const std::size_t scheme = location.find("://");
  if (scheme != std::string_view::npos && location.find('/') > scheme) return std::nullopt;
  if (!platform::StartsWithIgnoreCase(current, kHttpPrefix)) return std::nullopt;
  const std::size_t hostEnd = current.find_first_of("/?#", kHttpPrefix.size());
  const std::string_view origin = current.substr(0, hostEnd);
  if (location.front() == '/') return std::string(origin) + std::string(location);
  std::string_view folder = hostEnd == std::string_view::npos ? std::string_view() : current.substr(hostEnd);
  folder = folder.substr(0, folder.find_first_of("?#"));
  if (folder.empty()) folder = "/";
  folder = folder.substr(0, folder.rfind('/') + 1);
  return std::string(origin) + std::string(folder) + std::string(location);
}

std::string EscapeRequestTarget(std::string_view target) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string escaped;
  escaped.reserve(target.size());
  for (char c : target) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte <= 0x20 || byte >= 0x7F) {
      escaped += '%';
      escaped += kHex[byte >> 4];
      escaped += kHex[byte & 15];
    } else {
      escaped += c;
    }
  }
  return escaped;
}

std::string BuildRequest(const StreamUrl& url, const std::string& fullUrl, bool throughProxy,
                         std::string_view userAgent) {
  std::string request = "GET ";
  request += EscapeRequestTarget(throughProxy ? std::string_view(fullUrl) : std::string_view(url.target));
  request += " HTTP/1.0\r\nHost: ";
  request += EscapeRequestTarget(HostForHeader(url.server));
  request += "\r\nAccept: */*\r\nIcy-MetaData:1\r\nUser-Agent: ";
  request += userAgent;
  request += "\r\n\r\n";
  return request;
}

}  // namespace net
