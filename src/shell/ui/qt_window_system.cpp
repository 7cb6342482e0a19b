#include "shell/ui/qt_window_system.h"

#include <QApplication>
#include <QScreen>

#include "platform/qt/termination_signals.h"
#include "shell/player_app.h"
#include "shell/ui/call_watcher.h"
#include "shell/ui/main_window_widget.h"
#include "shell/window_messages.h"

namespace ui {

QtWindowSystem::QtWindowSystem() = default;

QtWindowSystem::~QtWindowSystem() = default;

shell::Rect QtWindowSystem::WorkArea() {
  const QScreen* screen = QGuiApplication::primaryScreen();
  if (screen == nullptr) return shell::Rect{0, 0, 800, 600};
  const QRect available = screen->availableGeometry();
  return shell::Rect{available.x(), available.y(), available.width(), available.height()};
}

std::unique_ptr<shell::MainWindow> QtWindowSystem::CreateMainWindow(const shell::Rect& area,
                                                                    shell::PlayerApp& app) {
  auto window = std::make_unique<MainWindowWidget>(area, app);
  window->QtDialogLauncher().AttachPlaylist(app.Playlist(), window->Messages(), window->Zoom());
  window->QtDialogLauncher().AttachKeyMapping([&app] { return app.HasBookmarkStore(); });
  platform::MessageTarget* target = &window->Messages();
  terminationSignals =
      std::make_unique<platform::qt::TerminationSignals>([target] { target->Post(shell::kMessageClose); });
  calls = WatchCallsOnSystemBus(*target);
  static_cast<QtDialogs&>(window->DialogLauncher()).AttachEqualizer(app);
  return window;
}

int QtWindowSystem::RunMessageLoop() {
  const int exitCode = quitRequested ? quitCode : QApplication::exec();
  terminationSignals.reset();
  calls.reset();
  return exitCode;
}

void QtWindowSystem::PostQuit(int exitCode) {
  quitRequested = true;
  quitCode = exitCode;
  QCoreApplication::exit(exitCode);
}

}  // namespace ui
