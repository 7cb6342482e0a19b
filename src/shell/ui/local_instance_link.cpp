#include "shell/ui/local_instance_link.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <QByteArray>
#include <QLocalSocket>
#include <QTimer>
#include <memory>

#include "platform/event.h"
#include "platform/message_target.h"
#include "shell/window_messages.h"

namespace ui {
namespace {

constexpr int kConnectWaitMs = 1000;
constexpr int kWriteWaitMs = 1000;
constexpr int kAnswerWaitMs = 2000;
constexpr int kLockWaitMs = 3000;
constexpr int kIdleConnectionMs = 10000;
constexpr std::uint32_t kMaxFrameText = 64 * 1024;
constexpr char kAnswer = 0x06;

bool MayBePosted(std::uint32_t message) {
  switch (message) {
    case shell::kMessageHandOver:
    case shell::kMessageAlarm:
    case shell::kMessageCallBegan:
    case shell::kMessageCallEnded:
      return true;
    default:
      return false;
  }
}

std::uint32_t ReadLe32(const char* bytes) {
  const auto* b = reinterpret_cast<const unsigned char*>(bytes);
  return static_cast<std::uint32_t>(b[0]) | static_cast<std::uint32_t>(b[1]) << 8 |
         static_cast<std::uint32_t>(b[2]) << 16 | static_cast<std::uint32_t>(b[3]) << 24;
}

void AppendLe32(QByteArray& bytes, std::uint32_t value) {
  for (int k = 0; k < 4; ++k) bytes.append(static_cast<char>(value >> (8 * k)));
}

// The lock file that makes finding or claiming the name one step across
// processes. Waits at most kLockWaitMs; without the lock the step goes on.
class NameLock {
 public:
  explicit NameLock(const std::string& path)
      : descriptor(::open(path.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600)) {
    if (descriptor < 0) return;
    for (int waited = 0; waited < kLockWaitMs; waited += 20) {
      if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0) return;
      platform::SleepMs(20);
    }
  }
  ~NameLock() {
    if (descriptor >= 0) ::close(descriptor);  // closing releases the lock
  }
  NameLock(const NameLock&) = delete;
  NameLock& operator=(const NameLock&) = delete;

 private:
  int descriptor;
};

}  // namespace

class LocalRunningInstance::Connection {
 public:
  QLocalSocket socket;
};

LocalInstanceLink::LocalInstanceLink(std::string path) : socketPath(std::move(path)) {
  server.setSocketOptions(QLocalServer::UserAccessOption);
  QObject::connect(&server, &QLocalServer::newConnection, [this] { AcceptPending(); });
}

LocalInstanceLink::~LocalInstanceLink() {
  StopServing();
}

std::unique_ptr<shell::RunningInstance> LocalInstanceLink::FindOrBecomeRunning() {
  NameLock lock(socketPath + ".lock");
  if (auto running = LocalRunningInstance::Connect(socketPath)) return running;
  // Nobody answers: the name is free, or left behind by a killed instance.
  QLocalServer::removeServer(QString::fromStdString(socketPath));
  server.listen(QString::fromStdString(socketPath));
  return nullptr;
}

void LocalInstanceLink::Serve(platform::MessageTarget& target, std::function<void()> comeForward) {
  window = &target;
  bringToForeground = std::move(comeForward);
  // Connections that waited while the program started.
  QTimer::singleShot(0, &server, [this] { AcceptPending(); });
}

void LocalInstanceLink::StopServing() {
  window = nullptr;
  bringToForeground = nullptr;
  server.close();
}

void LocalInstanceLink::AcceptPending() {
  if (window == nullptr) return;  // they wait until the window is there
  while (QLocalSocket* socket = server.nextPendingConnection()) {
    auto buffer = std::make_shared<QByteArray>();
    auto* idle = new QTimer(socket);
    idle->setSingleShot(true);
    QObject::connect(idle, &QTimer::timeout, socket, [socket] { socket->abort(); });
    idle->start(kIdleConnectionMs);
    auto read = [this, socket, buffer] {
      buffer->append(socket->readAll());
      while (buffer->size() >= 8) {
        const std::uint32_t message = ReadLe32(buffer->constData());
        const std::uint32_t length = ReadLe32(buffer->constData() + 4);
        if (length > kMaxFrameText) {
          socket->abort();
          return;
        }
        if (static_cast<std::uint64_t>(buffer->size()) < 8u + length) return;
        std::string text(buffer->constData() + 8, length);
        buffer->remove(0, static_cast<qsizetype>(8 + length));
        if (message == kRaiseRequest) {
          if (bringToForeground) bringToForeground();
        } else if (window != nullptr && MayBePosted(message)) {
          if (text.empty())
            window->Post(message);
          else
            window->PostText(message, std::move(text));
        }
        socket->write(&kAnswer, 1);
      }
    };
    QObject::connect(socket, &QLocalSocket::readyRead, socket, read);
    QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    read();  // what came with the connection
  }
}

std::unique_ptr<LocalRunningInstance> LocalRunningInstance::Connect(const std::string& socketPath) {
  auto connection = std::make_unique<Connection>();
  connection->socket.connectToServer(QString::fromStdString(socketPath));
  if (!connection->socket.waitForConnected(kConnectWaitMs)) return nullptr;
  return std::unique_ptr<LocalRunningInstance>(new LocalRunningInstance(std::move(connection)));
}

LocalRunningInstance::LocalRunningInstance(std::unique_ptr<Connection> link) : connection(std::move(link)) {}

LocalRunningInstance::~LocalRunningInstance() {
  connection->socket.disconnectFromServer();
}

bool LocalRunningInstance::Post(std::uint32_t message, const std::string& text) {
  return Send(message, text);
}

bool LocalRunningInstance::BringToForeground() {
  return Send(kRaiseRequest, "");
}

bool LocalRunningInstance::Send(std::uint32_t message, const std::string& text) {
  QLocalSocket& socket = connection->socket;
  if (socket.state() != QLocalSocket::ConnectedState || text.size() > kMaxFrameText) return false;
  QByteArray frame;
  AppendLe32(frame, message);
  AppendLe32(frame, static_cast<std::uint32_t>(text.size()));
  frame.append(text.data(), static_cast<qsizetype>(text.size()));
  socket.write(frame);
  if (!socket.waitForBytesWritten(kWriteWaitMs) && socket.bytesToWrite() > 0) return false;
  if (socket.bytesAvailable() < 1 && !socket.waitForReadyRead(kAnswerWaitMs)) return false;
  char answer = 0;
  return socket.read(&answer, 1) == 1 && answer == kAnswer;
}

}  // namespace ui
