#include "shell/ui/mpris_server.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QStringList>
#include <QTimer>
#include <QUrl>
#include <QVariantMap>
#include <algorithm>
#include <functional>
#include <string_view>

#include "playback/format_registry.h"
#include "playlist/playlist_view.h"
#include "shell/main_window.h"
#include "shell/player_app.h"
#include "shell/volume_scales.h"
#include "shell/window_messages.h"

namespace ui {
namespace {

const QString kObjectPath = QStringLiteral("/org/mpris/MediaPlayer2");
const QString kServiceName = QStringLiteral("org.mpris.MediaPlayer2.tavrinsonic");
const QString kRootInterface = QStringLiteral("org.mpris.MediaPlayer2");
const QString kPlayerInterface = QStringLiteral("org.mpris.MediaPlayer2.Player");
const QString kPropertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const QString kNoTrack = QStringLiteral("/org/mpris/MediaPlayer2/TrackList/NoTrack");
constexpr int kLookMs = 250;

// The registered extensions' MIME types.
struct ExtensionType {
  std::string_view extension;
  const char* types[2];
};
constexpr ExtensionType kTypes[] = {
    {"mp3", {"audio/mpeg", nullptr}},         {"ogg", {"audio/ogg", "audio/x-vorbis+ogg"}},
    {"wma", {"audio/x-ms-wma", nullptr}},     {"asf", {"video/x-ms-asf", nullptr}},
    {"wav", {"audio/x-wav", "audio/vnd.wave"}}, {"aac", {"audio/aac", nullptr}},
    {"m3u", {"audio/x-mpegurl", nullptr}},    {"m3u8", {"audio/x-mpegurl", nullptr}},
    {"pls", {"audio/x-scpls", nullptr}},      {"asx", {"audio/x-ms-asx", "video/x-ms-asf"}},
};

QStringList MimeTypes(const playback::FormatRegistry& formats) {
  QStringList types;
  int cursor = 0;
  for (const std::string* extension = formats.FirstMediaExtension(cursor); extension != nullptr;
       extension = formats.NextMediaExtension(cursor)) {
    for (const ExtensionType& row : kTypes) {
      if (row.extension != *extension) continue;
      for (const char* type : row.types) {
        if (type != nullptr && !types.contains(QLatin1String(type))) types << QLatin1String(type);
      }
    }
  }
  return types;
}

QString Text(const std::string& text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

QString PlaybackStatus(std::int32_t state) {
  if (state == 2) return QStringLiteral("Playing");
  if (state == 3) return QStringLiteral("Paused");
  return QStringLiteral("Stopped");
}

// "Playlist" stands for repeat all and repeat selected alike.
QString LoopStatus(const shell::RemoteStatus& status) {
  if (!status.repeat) return QStringLiteral("None");
  return status.repeatMode == 2 ? QStringLiteral("Track") : QStringLiteral("Playlist");
}

// An object path a track keeps while it is the same entry: its path's hash.
QString TrackId(const shell::RemoteStatus& status) {
  if (!status.hasTrack) return kNoTrack;
  return QStringLiteral("/example/halvorkeep/Tavrinsonic/Track/T%1")
      .arg(static_cast<qulonglong>(std::hash<std::string>{}(status.path)), 16, 16, QLatin1Char('0'));
}

QVariantMap Metadata(const shell::RemoteStatus& status) {
  QVariantMap metadata;
  metadata.insert(QStringLiteral("mpris:trackid"), QVariant::fromValue(QDBusObjectPath(TrackId(status))));
  if (!status.hasTrack) return metadata;
  if (status.lengthMs > 0) metadata.insert(QStringLiteral("mpris:length"), qlonglong{status.lengthMs} * 1000);
  if (!status.title.empty()) metadata.insert(QStringLiteral("xesam:title"), Text(status.title));
  if (!status.artist.empty()) metadata.insert(QStringLiteral("xesam:artist"), QStringList{Text(status.artist)});
  if (!status.album.empty()) metadata.insert(QStringLiteral("xesam:album"), Text(status.album));
  if (status.trackNumber != 0)
    metadata.insert(QStringLiteral("xesam:trackNumber"), static_cast<int>(status.trackNumber));
  const QString url = status.isStream ? Text(status.path) : QStringLiteral("file://") + Text(status.path);
  metadata.insert(QStringLiteral("xesam:url"), url);
  return metadata;
}

class MprisObject final : public QDBusVirtualObject, public shell::RemotePresence {
 public:
  explicit MprisObject(shell::PlayerApp& player) : app(player), root(RootProperties()) {
    Refresh();
    lastPlayer = PlayerProperties();
    timer.callOnTimeout([this] { Look(); });
    timer.start(kLookMs);
  }
  ~MprisObject() override {
    timer.stop();
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.unregisterService(kServiceName);
    bus.unregisterObject(kObjectPath);
  }

  QString introspect(const QString& /*path*/) const override;
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

 private:
  void Refresh() {
    shell::RemoteStatus fresh = app.RemoteSnapshot();
    // The tags of a file are read once per track.
    if (fresh.path != status.path || fresh.hasTrack != status.hasTrack) {
      app.ReadRemoteTags(fresh);
      tags = fresh;
    } else if (!fresh.isStream) {
      fresh.title = tags.title;
      fresh.artist = tags.artist;
      fresh.album = tags.album;
      fresh.trackNumber = tags.trackNumber;
    }
    status = std::move(fresh);
  }
  // What the root interface shows never changes while the player runs.
  QVariantMap RootProperties() const;
  QVariantMap PlayerProperties() const;
  void Look();
  void SignalChanges(const QString& interface, const QVariantMap& now, QVariantMap& last);
  void Post(std::uint32_t message, std::uintptr_t wParam = 0) {
    if (shell::MainWindow* window = app.Window()) window->Messages().Post(message, wParam);
  }
  void SeekTo(std::int64_t ms);
  bool Call(const QDBusMessage& message, QVariantList& reply, QString& error);
  bool SetProperty(const QString& name, const QVariant& value);

  shell::PlayerApp& app;
  shell::RemoteStatus status;
  shell::RemoteStatus tags;
  const QVariantMap root;
  QVariantMap lastPlayer;
  QTimer timer;
};

QVariantMap MprisObject::RootProperties() const {
  return {{QStringLiteral("CanQuit"), true},
          {QStringLiteral("CanRaise"), true},
          {QStringLiteral("HasTrackList"), false},
          {QStringLiteral("Identity"), QStringLiteral("Tavrinsonic")},
          {QStringLiteral("DesktopEntry"), QLatin1String(kDesktopEntryId)},
          {QStringLiteral("SupportedUriSchemes"), QStringList{QStringLiteral("file"), QStringLiteral("http")}},
          {QStringLiteral("SupportedMimeTypes"), MimeTypes(app.Playlist().Formats())}};
}

QVariantMap MprisObject::PlayerProperties() const {
  const bool stream = status.isStream;
  return {{QStringLiteral("PlaybackStatus"), PlaybackStatus(status.state)},
          {QStringLiteral("LoopStatus"), LoopStatus(status)},
          {QStringLiteral("Rate"), 1.0},
          {QStringLiteral("MinimumRate"), 1.0},
          {QStringLiteral("MaximumRate"), 1.0},
          {QStringLiteral("Shuffle"), status.shuffle},
          {QStringLiteral("Metadata"), Metadata(status)},
          {QStringLiteral("Volume"), static_cast<double>(status.volume) / shell::kDeviceVolumeMaximum},
          {QStringLiteral("Position"), qlonglong{status.positionMs} * 1000},
          {QStringLiteral("CanGoNext"), status.hasTrack},
          {QStringLiteral("CanGoPrevious"), status.hasTrack},
          {QStringLiteral("CanPlay"), status.hasTrack},
          {QStringLiteral("CanPause"), status.hasTrack},
          {QStringLiteral("CanSeek"), status.hasTrack && !stream && status.lengthMs > 0},
          {QStringLiteral("CanControl"), true}};
}

// Position moves by itself and is read when asked; it isn't signalled.
void MprisObject::Look() {
  Refresh();
  QVariantMap player = PlayerProperties();
  player.remove(QStringLiteral("Position"));
  SignalChanges(kPlayerInterface, player, lastPlayer);
}

void MprisObject::SignalChanges(const QString& interface, const QVariantMap& now, QVariantMap& last) {
  QVariantMap changed;
  for (auto it = now.cbegin(); it != now.cend(); ++it) {
    if (last.value(it.key()) != it.value()) changed.insert(it.key(), it.value());
  }
  last = now;
  if (changed.isEmpty()) return;
  QDBusMessage signal = QDBusMessage::createSignal(kObjectPath, kPropertiesInterface, QStringLiteral("PropertiesChanged"));
  signal << interface << changed << QStringList();
  QDBusConnection::sessionBus().send(signal);
}

void MprisObject::SeekTo(std::int64_t ms) {
  if (status.lengthMs <= 0) return;
  ms = std::clamp<std::int64_t>(ms, 0, status.lengthMs);
  Post(shell::kMessageSeek, static_cast<std::uintptr_t>(ms));
  QDBusMessage seeked = QDBusMessage::createSignal(kObjectPath, kPlayerInterface, QStringLiteral("Seeked"));
  seeked << qlonglong{ms} * 1000;
  QDBusConnection::sessionBus().send(seeked);
}

bool MprisObject::SetProperty(const QString& name, const QVariant& value) {
  if (name == QLatin1String("Volume")) {
    const double volume = std::clamp(value.toDouble(), 0.0, 1.0);
    Post(shell::kMessageSetVolume, static_cast<std::uintptr_t>(volume * shell::kSliderMaximum + 0.5));
  } else if (name == QLatin1String("Shuffle")) {
    Post(shell::kMessageSetShuffle, value.toBool() ? 1 : 0);
  } else if (name == QLatin1String("LoopStatus")) {
    const QString loop = value.toString();
    if (loop == QLatin1String("None")) {
      Post(shell::kMessageSetRepeat, 0);
    } else if (loop == QLatin1String("Track") || loop == QLatin1String("Playlist")) {
      Post(shell::kMessageCommand, loop == QLatin1String("Track") ? shell::kCommandRepeatOne : shell::kCommandRepeatAll);
      Post(shell::kMessageSetRepeat, 1);
    } else {
      return false;
    }
  } else if (name != QLatin1String("Rate")) {  // the rate stays 1.0
    return false;
  }
  return true;
}

// The methods of both interfaces and of org.freedesktop.DBus.Properties.
bool MprisObject::Call(const QDBusMessage& message, QVariantList& reply, QString& error) {
  const QString member = message.member();
  const QVariantList args = message.arguments();
  const QString interface = message.interface();
  Refresh();
  if (interface == kPropertiesInterface) {
    const QString target = args.value(0).toString();
    const QVariantMap properties = target == kRootInterface ? root : PlayerProperties();
    if (member == QLatin1String("GetAll")) {
      reply << properties;
    } else if (member == QLatin1String("Get")) {
      if (!properties.contains(args.value(1).toString())) return false;
      reply << QVariant::fromValue(QDBusVariant(properties.value(args.value(1).toString())));
    } else if (member == QLatin1String("Set")) {
      if (!SetProperty(args.value(1).toString(), args.value(2).value<QDBusVariant>().variant())) {
        error = QStringLiteral("org.freedesktop.DBus.Error.PropertyReadOnly");
      }
    } else {
      return false;
    }
    return true;
  }
  if (member == QLatin1String("Raise")) {
    if (shell::MainWindow* window = app.Window()) window->BringToForeground();
  } else if (member == QLatin1String("Quit")) {
    Post(shell::kMessageClose);
  } else if (member == QLatin1String("Next")) {
    Post(shell::kMessageNext, 0);
  } else if (member == QLatin1String("Previous")) {
    Post(shell::kMessagePrevious);
  } else if (member == QLatin1String("Pause")) {
    if (status.state == 2) Post(shell::kMessageTogglePause);
  } else if (member == QLatin1String("PlayPause")) {
    Post(shell::kMessagePlayPause);
  } else if (member == QLatin1String("Stop")) {
    Post(shell::kMessageStop);
  } else if (member == QLatin1String("Play")) {
    Post(status.state == 3 ? shell::kMessageTogglePause : shell::kMessagePlay, 0);
  } else if (member == QLatin1String("Seek")) {
    SeekTo(status.positionMs + args.value(0).toLongLong() / 1000);
  } else if (member == QLatin1String("SetPosition")) {
    // A position for a track that isn't the current one is ignored.
    if (args.value(0).value<QDBusObjectPath>().path() == TrackId(status)) SeekTo(args.value(1).toLongLong() / 1000);
  } else if (member == QLatin1String("OpenUri")) {
    QString uri = args.value(0).toString();
    if (uri.startsWith(QLatin1String("file://"))) uri = QUrl(uri).toLocalFile();
    if (shell::MainWindow* window = app.Window()) window->Messages().PostText(shell::kMessageHandOver, uri.toStdString());
  } else {
    return false;
  }
  return true;
}

bool MprisObject::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
  QVariantList reply;
  QString error;
  if (!Call(message, reply, error)) return false;
  if (!error.isEmpty()) {
    connection.send(message.createErrorReply(error, QStringLiteral("not writable")));
  } else {
    connection.send(message.createReply(reply));
  }
  return true;
}

QString MprisObject::introspect(const QString& /*path*/) const {
  return QStringLiteral(
      "<interface name=\"org.mpris.MediaPlayer2\">"
      "<method name=\"Raise\"/><method name=\"Quit\"/>"
      "<property name=\"CanQuit\" type=\"b\" access=\"read\"/>"
      "<property name=\"CanRaise\" type=\"b\" access=\"read\"/>"
      "<property name=\"HasTrackList\" type=\"b\" access=\"read\"/>"
      "<property name=\"Identity\" type=\"s\" access=\"read\"/>"
      "<property name=\"DesktopEntry\" type=\"s\" access=\"read\"/>"
      "<property name=\"SupportedUriSchemes\" type=\"as\" access=\"read\"/>"
      "<property name=\"SupportedMimeTypes\" type=\"as\" access=\"read\"/>"
      "</interface>"
      "<interface name=\"org.mpris.MediaPlayer2.Player\">"
      "<method name=\"Next\"/><method name=\"Previous\"/><method name=\"Pause\"/>"
      "<method name=\"PlayPause\"/><method name=\"Stop\"/><method name=\"Play\"/>"
      "<method name=\"Seek\"><arg name=\"Offset\" type=\"x\" direction=\"in\"/></method>"
      "<method name=\"SetPosition\"><arg name=\"TrackId\" type=\"o\" direction=\"in\"/>"
      "<arg name=\"Position\" type=\"x\" direction=\"in\"/></method>"
      "<method name=\"OpenUri\"><arg name=\"Uri\" type=\"s\" direction=\"in\"/></method>"
      "<signal name=\"Seeked\"><arg name=\"Position\" type=\"x\"/></signal>"
      "<property name=\"PlaybackStatus\" type=\"s\" access=\"read\"/>"
      "<property name=\"LoopStatus\" type=\"s\" access=\"readwrite\"/>"
      "<property name=\"Rate\" type=\"d\" access=\"readwrite\"/>"
      "<property name=\"Shuffle\" type=\"b\" access=\"readwrite\"/>"
      "<property name=\"Metadata\" type=\"a{sv}\" access=\"read\"/>"
      "<property name=\"Volume\" type=\"d\" access=\"readwrite\"/>"
      "<property name=\"Position\" type=\"x\" access=\"read\"/>"
      "<property name=\"MinimumRate\" type=\"d\" access=\"read\"/>"
      "<property name=\"MaximumRate\" type=\"d\" access=\"read\"/>"
      "<property name=\"CanGoNext\" type=\"b\" access=\"read\"/>"
      "<property name=\"CanGoPrevious\" type=\"b\" access=\"read\"/>"
      "<property name=\"CanPlay\" type=\"b\" access=\"read\"/>"
      "<property name=\"CanPause\" type=\"b\" access=\"read\"/>"
      "<property name=\"CanSeek\" type=\"b\" access=\"read\"/>"
      "<property name=\"CanControl\" type=\"b\" access=\"read\"/>"
      "</interface>"
      "<interface name=\"org.freedesktop.DBus.Properties\">"
      "<method name=\"Get\"><arg type=\"s\" direction=\"in\"/><arg type=\"s\" direction=\"in\"/>"
      "<arg type=\"v\" direction=\"out\"/></method>"
      "<method name=\"GetAll\"><arg type=\"s\" direction=\"in\"/><arg type=\"a{sv}\" direction=\"out\"/></method>"
      "<method name=\"Set\"><arg type=\"s\" direction=\"in\"/><arg type=\"s\" direction=\"in\"/>"
      "<arg type=\"v\" direction=\"in\"/></method>"
      "<signal name=\"PropertiesChanged\"><arg type=\"s\"/><arg type=\"a{sv}\"/><arg type=\"as\"/></signal>"
      "</interface>");
}

}  // namespace

std::unique_ptr<shell::RemotePresence> PublishOnSessionBus(shell::PlayerApp& app) {
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return nullptr;
  auto object = std::make_unique<MprisObject>(app);
  if (!bus.registerVirtualObject(kObjectPath, object.get(), QDBusConnection::SingleNode)) return nullptr;
  if (!bus.registerService(kServiceName)) return nullptr;  // the destructor unregisters the object
  return object;
}

}  // namespace ui
