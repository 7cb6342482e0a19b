#include "icecast_server.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <grp.h>
#include <netinet/in.h>
#include <poll.h>
#include <pwd.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "fault_server.h"

namespace net_testing {
namespace {

using Clock = std::chrono::steady_clock;

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

}  // namespace

std::optional<std::string> FindProgram(const std::string& program) {
  const char* path = std::getenv("PATH");
  std::istringstream folders(path != nullptr ? path : "/usr/bin:/bin");
  std::string folder;
  while (std::getline(folders, folder, ':')) {
    const std::string candidate = (folder.empty() ? "." : folder) + "/" + program;
    if (::access(candidate.c_str(), X_OK) == 0) return candidate;
  }
  return std::nullopt;
}

bool ChildProcess::Start(const std::vector<std::string>& argv, const std::string& logPath,
                         std::optional<std::pair<uid_t, gid_t>> user) {
  if (pid > 0 || argv.empty()) return false;
  std::vector<char*> arguments;
  for (const std::string& argument : argv) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  const int log = ::open(logPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (log < 0) return false;
  const pid_t parent = ::getpid();
  pid = ::fork();
  if (pid == 0) {
    // Only system calls from here to exec: the parent has threads.
    if (user) {
      if (::setgroups(0, nullptr) != 0 || ::setgid(user->second) != 0 || ::setuid(user->first) != 0)
        ::_exit(126);
    }
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(125);
    const int input = ::open("/dev/null", O_RDONLY);
    if (input < 0 || ::dup2(input, 0) < 0 || ::dup2(log, 1) < 0 || ::dup2(log, 2) < 0) ::_exit(124);
    ::execv(arguments[0], arguments.data());
    ::_exit(127);
  }
  ::close(log);
  return pid > 0;
}

bool ChildProcess::Running() {
  if (pid <= 0) return false;
  int status = 0;
  if (::waitpid(pid, &status, WNOHANG) == pid) {
    pid = -1;
    return false;
  }
  return true;
}

void ChildProcess::Terminate(int graceMs) {
  if (!Running()) return;
  ::kill(pid, SIGTERM);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(graceMs);
  while (std::chrono::steady_clock::now() < deadline) {
    if (!Running()) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  ::kill(pid, SIGKILL);
  int status = 0;
  ::waitpid(pid, &status, 0);
  pid = -1;
}

IcecastServer::ServerFolder::ServerFolder() {
  // The server's user must reach the folder: the usual temporary folder may be closed to it.
  const std::filesystem::path base = ServerUser() ? "/tmp" : std::filesystem::temp_directory_path();
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
    port = 0;
    ListenOnLoopback(1, port);  // a free port, closed again for the server to take
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
    if (ConnectToLoopback(port, probe, 200)) {
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
  if (!ConnectToLoopback(port, socket, 2000)) return false;
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
  if (!ConnectToLoopback(port, socket, timeoutMs) ||
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
