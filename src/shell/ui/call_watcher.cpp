#include "shell/ui/call_watcher.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

#include "platform/message_target.h"

namespace ui {
namespace {

const QString kService = QStringLiteral("org.freedesktop.ModemManager1");
const QString kRootPath = QStringLiteral("/org/freedesktop/ModemManager1");
const QString kObjectManager = QStringLiteral("org.freedesktop.DBus.ObjectManager");
const QString kProperties = QStringLiteral("org.freedesktop.DBus.Properties");
const QString kVoice = QStringLiteral("org.freedesktop.ModemManager1.Modem.Voice");
const QString kCall = QStringLiteral("org.freedesktop.ModemManager1.Call");
constexpr int kReplyTimeoutMs = 500;
constexpr int kBurstMs = 20;
constexpr int kPollMs = 5000;

using ManagedObjects = QMap<QDBusObjectPath, QMap<QString, QVariantMap>>;

// The signals after which the calls are read again: (interface, name).
const std::pair<QString, QString> kChangeSignals[] = {
    {kVoice, QStringLiteral("CallAdded")},
    {kVoice, QStringLiteral("CallDeleted")},
    {kCall, QStringLiteral("StateChanged")},
    {kProperties, QStringLiteral("PropertiesChanged")},
    {kObjectManager, QStringLiteral("InterfacesAdded")},
    {kObjectManager, QStringLiteral("InterfacesRemoved")},
};

}  // namespace

CallWatcher::CallWatcher(platform::MessageTarget& messages, const QDBusConnection& connection)
    : target(messages),
      bus(connection),
      service(std::make_unique<QDBusServiceWatcher>(
          kService, bus,
          QDBusServiceWatcher::WatchForRegistration | QDBusServiceWatcher::WatchForUnregistration)) {
  changed.setSingleShot(true);
  changed.setInterval(kBurstMs);
  QObject::connect(&changed, &QTimer::timeout, [this] { Refresh(); });
  poll.setInterval(kPollMs);
  QObject::connect(&poll, &QTimer::timeout, [this] { Refresh(); });
  QObject::connect(service.get(), &QDBusServiceWatcher::serviceRegistered, [this] { Appeared(); });
  QObject::connect(service.get(), &QDBusServiceWatcher::serviceUnregistered, [this] { Vanished(); });
  // A signal only starts the short timer (its arguments aren't needed), so
  // any path of the service will do.
  for (const auto& [interface, name] : kChangeSignals)
    bus.connect(kService, QString(), interface, name, &changed, SLOT(start()));
  if (bus.interface() != nullptr && bus.interface()->isServiceRegistered(kService)) Appeared();
}

CallWatcher::~CallWatcher() {
  for (const auto& [interface, name] : kChangeSignals)
    bus.disconnect(kService, QString(), interface, name, &changed, SLOT(start()));
}

void CallWatcher::Appeared() {
  present = true;
  poll.start();
  Refresh();
}

void CallWatcher::Vanished() {
  present = false;
  poll.stop();
  changed.stop();
  tracker.Forget();
}

void CallWatcher::Refresh() {
  if (!present) return;
  std::map<std::string, int> calls;
  if (!ReadCalls(calls)) return;
  for (std::uint32_t message : tracker.Update(calls)) target.Post(message);
}

bool CallWatcher::ReadCalls(std::map<std::string, int>& calls) {
  const QDBusMessage reply = bus.call(QDBusMessage::createMethodCall(kService, kRootPath, kObjectManager,
                                                                     QStringLiteral("GetManagedObjects")),
                                      QDBus::Block, kReplyTimeoutMs);
  if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) return false;
  const QVariant objectsArgument = reply.arguments().constFirst();
  if (objectsArgument.userType() != qMetaTypeId<QDBusArgument>()) return false;
  ManagedObjects objects;
  objectsArgument.value<QDBusArgument>() >> objects;
  for (const QMap<QString, QVariantMap>& interfaces : std::as_const(objects)) {
    const auto voice = interfaces.constFind(kVoice);
    if (voice == interfaces.constEnd()) continue;
    const auto paths = qdbus_cast<QList<QDBusObjectPath>>(voice->value(QStringLiteral("Calls")));
    for (const QDBusObjectPath& path : paths) {
      QDBusMessage get =
          QDBusMessage::createMethodCall(kService, path.path(), kProperties, QStringLiteral("Get"));
      get << kCall << QStringLiteral("State");
      const QDBusMessage state = bus.call(get, QDBus::Block, kReplyTimeoutMs);
      if (state.type() != QDBusMessage::ReplyMessage || state.arguments().isEmpty()) continue;
      bool isNumber = false;
      const int value = qdbus_cast<QDBusVariant>(state.arguments().constFirst()).variant().toInt(&isNumber);
      if (isNumber) calls[path.path().toStdString()] = value;
    }
  }
  return true;
}

std::unique_ptr<CallWatcher> WatchCallsOnSystemBus(platform::MessageTarget& target) {
  QDBusConnection bus = QDBusConnection::systemBus();
  if (!bus.isConnected()) return nullptr;
  return std::make_unique<CallWatcher>(target, bus);
}

}  // namespace ui
