#include "icecast_server.h"

#include <arpa/inet.h>
#include <grp.h>
#include <netinet/in.h>
#include <poll.h>
#include <pwd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

namespace net_testing {
namespace {

using Clock = std::chrono::steady_clock;

std::uint16_t FreeLoopbackPort() {
  net::Socket probe(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  if (!probe.Valid() || ::bind(probe.Descriptor(), reinterpret_cast<sockaddr*>(&address), size) != 0 ||
      ::getsockname(probe.Descriptor(), reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    return 0;
  }
  return ntohs(address.sin_port);
}

bool ConnectLoopback(std::uint16_t port, net::Socket& socket, int timeoutMs) {
  net::SocketAddress address;
  auto* inet = reinterpret_cast<sockaddr_in*>(&address.storage);
  inet->sin_family = AF_INET;
  inet->sin_port = htons(port);
  inet->sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.length = sizeof(sockaddr_in);
  net::StopSignal never;
  return net::ConnectSocket(address, never, timeoutMs, socket) == net::ConnectResult::kConnected;
}

// The user and group a root test runs the server as.
std::optional<std::pair<uid_t, gid_t>> ServerUser() {
  if (::getuid() != 0) return std::nullopt;
  const passwd* nobody = ::getpwnam("nobody");
  if (nobody == nullptr) return std::nullopt;
  const group* nogroup = ::getgrnam("nogroup");
  return std::make_pair(nobody->pw_uid, nogroup != nullptr ? nogroup->gr_gid : nobody->pw_gid);
}

std::string MountSection(std::string_view mount) {
  std::ostringstream xml;
  xml << "  <mount type=\"normal\"><mount-name>" << mount << "</mount-name><mp3-metadata-interval>"
      << IcecastServer::kMetaInterval << "</mp3-metadata-interval></mount>\n";
  return xml.str();
}

// True when every folder on the way to `path` lets other users through.
bool OthersCanReach(const std::filesystem::path& path) {
  for (std::filesystem::path at = path; !at.empty() && at != at.root_path(); at = at.parent_path()) {
    std::error_code error;
    const auto permissions = std::filesystem::status(at, error).permissions();
    if (error || (permissions & std::filesystem::perms::others_exec) == std::filesystem::perms::none)
      return false;
  }
  return true;
}

}  // namespace

IcecastServer::ServerFolder::ServerFolder() {
  std::filesystem::path base = std::filesystem::temp_directory_path();
  if (ServerUser() && !OthersCanReach(base)) base = "/tmp";
  std::string pattern = (base / "tavrinsonic-icecast-XXXXXX").string();
  if (::mkdtemp(pattern.data()) != nullptr) path = pattern;
}

IcecastServer::ServerFolder::~ServerFolder() {
  std::error_code error;
  if (!path.empty()) std::filesystem::remove_all(path, error);
}

std::string IcecastServer::WhyUnavailable() {
  if (!FindProgram("icecast2")) return "icecast2 is not installed (scripts/install-deps.sh installs it)";
  if (!std::ifstream("/usr/share/icecast2/web/status.xsl")) return "icecast2's web folder is missing";
  return "";
}

bool IcecastServer::WriteConfiguration() {
  const std::string& dir = folder.Path();
  std::ofstream xml(folder.File("icecast.xml"));
  xml << "<icecast>\n"
      << "  <location>loopback</location><admin>test@localhost</admin><hostname>127.0.0.1</hostname>\n"
      << "  <limits><clients>32</clients><sources>8</sources><queue-size>1048576</queue-size>"
      << "<client-timeout>30</client-timeout><header-timeout>15</header-timeout>"
      << "<source-timeout>30</source-timeout><burst-size>0</burst-size></limits>\n"
      << "  <authentication><source-password>" << kSourcePassword << "</source-password>"
      << "<admin-user>admin</admin-user><admin-password>" << kAdminPassword
      << "</admin-password></authentication>\n"
      << "  <listen-socket><port>" << port
      << "</port><bind-address>127.0.0.1</bind-address></listen-socket>\n"
      << MountSection("/test.mp3") << MountSection("/live.mp3") << "  <fileserve>1</fileserve>\n"
      << "  <paths><basedir>" << dir << "</basedir><logdir>" << dir << "</logdir><pidfile>" << dir
      << "/icecast.pid</pidfile><webroot>/usr/share/icecast2/web</webroot>"
      << "<adminroot>/usr/share/icecast2/admin</adminroot></paths>\n"
      << "  <logging><accesslog>access.log</accesslog><errorlog>error.log</errorlog><loglevel>3</loglevel>"
      << "</logging>\n"
      << "  <security><chroot>0</chroot></security>\n"
      << "</icecast>\n";
  return xml.good();
}

bool IcecastServer::Start(std::string& error) {
  const auto program = FindProgram("icecast2");
  const auto user = ServerUser();
  if (folder.Path().empty()) {
    error = "can't make a temporary folder";
    return false;
  }
  if (user && ::chown(folder.Path().c_str(), user->first, user->second) != 0) {
    error = "can't hand the temporary folder to the server's user";
    return false;
  }
  for (int attempt = 0; attempt < 3; ++attempt) {  // another program may take the free port first
    port = FreeLoopbackPort();
    if (port == 0 || !program || !WriteConfiguration()) break;
    if (!process.Start({*program, "-c", folder.File("icecast.xml")}, folder.File("output.log"), user)) break;
    if (WaitUntilListening(10000)) return true;
    process.Terminate();
  }
  error = "icecast2 didn't start: " + Log();
  return false;
}

bool IcecastServer::WaitUntilListening(int timeoutMs) {
  const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
  while (Clock::now() < deadline) {
    if (!process.Running()) return false;
    net::Socket probe;
    if (ConnectLoopback(port, probe, 200)) {
      // Listening is not yet serving: wait for a real answer.
      const std::string answer = HttpExchange(port, "GET /status-json.xsl HTTP/1.0\r\n\r\n", 1000);
      if (answer.rfind("HTTP/1.0 200", 0) == 0) return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return false;
}

// The server keeps nothing worth a graceful end, and it takes a second for one.
void IcecastServer::Stop() {
  process.Terminate(100);
}

std::string IcecastServer::Url(std::string_view mount) const {
  return "http://127.0.0.1:" + std::to_string(port) + std::string(mount);
}

std::string IcecastServer::Log() const {
  std::string log;
  for (const char* name : {"output.log", "error.log"}) {
    std::ifstream in(folder.File(name));
    std::ostringstream text;
    text << in.rdbuf();
    log += std::string(name) + ":\n" + text.str();
  }
  return log;
}

bool IcecastServer::UpdateTitle(std::string_view mount, std::string_view title, std::string& error) {
  const std::string request = "GET /admin/metadata?mount=" + UrlEncode(mount) +
                              "&mode=updinfo&charset=UTF-8&song=" + UrlEncode(title) +
                              " HTTP/1.0\r\nAuthorization: Basic " +
                              Base64(std::string("admin:") + kAdminPassword) + "\r\n\r\n";
  const std::string answer = HttpExchange(port, request, 3000);
  if (answer.find("<return>1</return>") != std::string::npos) return true;
  error = "title update refused: " + answer;
  return false;
}

bool IcecastServer::WaitForMount(std::string_view mount, int timeoutMs) {
  const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
  while (Clock::now() < deadline) {
    const std::string answer = HttpExchange(port, "GET " + std::string(mount) + " HTTP/1.0\r\n\r\n", 300);
    if (answer.rfind("HTTP/1.0 200", 0) == 0) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return false;
}

bool IcecastSource::Connect(std::uint16_t port, std::string_view mount, std::string_view contentType) {
  if (!ConnectLoopback(port, socket, 2000)) return false;
  const std::string request = "SOURCE " + std::string(mount) + " HTTP/1.0\r\nAuthorization: Basic " +
                              Base64(std::string("source:") + IcecastServer::kSourcePassword) +
                              "\r\nContent-Type: " + std::string(contentType) +
                              "\r\nice-name: Loopback Radio\r\nice-genre: Test Tones\r\n"
                              "ice-url: http://loopback.example/\r\n\r\n";
  if (!Send(request)) return false;
  std::string answer;
  char chunk[512];
  while (answer.find("\r\n\r\n") == std::string::npos) {
    if (net::WaitForSocket(socket.Descriptor(), POLLIN, stop, 3000) != net::WaitResult::kReady) return false;
    const ssize_t got = ::recv(socket.Descriptor(), chunk, sizeof chunk, 0);
    if (got <= 0) return false;
    answer.append(chunk, static_cast<std::size_t>(got));
  }
  return answer.rfind("HTTP/1.0 200", 0) == 0;
}

bool IcecastSource::Send(std::string_view bytes) {
  return net::SendAll(socket.Descriptor(), bytes, stop, 5000);
}

bool IcecastSource::SendPaced(std::string_view bytes, std::size_t piece, int pauseMs) {
  while (!bytes.empty()) {
    const std::size_t now = std::min(piece, bytes.size());
    if (!Send(bytes.substr(0, now))) return false;
    bytes.remove_prefix(now);
    std::this_thread::sleep_for(std::chrono::milliseconds(pauseMs));
  }
  return true;
}

std::string Base64(std::string_view bytes) {
  static constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t group = static_cast<std::uint8_t>(bytes[i]) << 16;
    if (i + 1 < bytes.size()) group |= static_cast<std::uint8_t>(bytes[i + 1]) << 8;
    if (i + 2 < bytes.size()) group |= static_cast<std::uint8_t>(bytes[i + 2]);
    text += kDigits[(group >> 18) & 63];
    text += kDigits[(group >> 12) & 63];
    text += i + 1 < bytes.size() ? kDigits[(group >> 6) & 63] : '=';
    text += i + 2 < bytes.size() ? kDigits[group & 63] : '=';
  }
  return text;
}

std::string UrlEncode(std::string_view text) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string encoded;
  for (char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (std::isalnum(byte) || c == '-' || c == '_' || c == '.' || c == '/') {
      encoded += c;
    } else {
      encoded += '%';
      encoded += kHex[byte >> 4];
      encoded += kHex[byte & 15];
    }
  }
  return encoded;
}

std::string HttpExchange(std::uint16_t port, const std::string& request, int timeoutMs) {
  net::Socket socket;
  net::StopSignal never;
  if (!ConnectLoopback(port, socket, timeoutMs) ||
      !net::SendAll(socket.Descriptor(), request, never, timeoutMs)) {
    return "";
  }
  std::string answer;
  char chunk[4096];
  const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
  while (answer.size() < 65536) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0 || net::WaitForSocket(socket.Descriptor(), POLLIN, never, static_cast<int>(left)) !=
                         net::WaitResult::kReady) {
      break;
    }
    const ssize_t got = ::recv(socket.Descriptor(), chunk, sizeof chunk, 0);
    if (got <= 0) break;
    answer.append(chunk, static_cast<std::size_t>(got));
    // A stream never ends: for a mount the status line is all we want.
    if (answer.find("\r\n\r\n") != std::string::npos && request.rfind("GET /admin", 0) != 0 &&
        request.find(".xsl") == std::string::npos) {
      break;
    }
  }
  return answer;
}

}  // namespace net_testing
