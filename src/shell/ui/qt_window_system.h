// The window system of the player: Qt Widgets.
//
// It makes the main window, runs Qt's event loop as the message loop, and
// turns SIGTERM, SIGINT and SIGHUP into a close of the main window, so that a
// killed player saves what a closed one saves. Phone calls that ModemManager
// reports on the system bus reach the main window as 10053 and 10054
// (call_watcher.h).
//
// Threads: the thread of the QApplication.
#pragma once

#include <memory>

#include "shell/main_window.h"

namespace platform::qt {
class TerminationSignals;
}

namespace ui {

class CallWatcher;

class QtWindowSystem : public shell::WindowSystem {
 public:
  QtWindowSystem();
  ~QtWindowSystem() override;

  shell::Rect WorkArea() override;
  std::unique_ptr<shell::MainWindow> CreateMainWindow(const shell::Rect& area,
                                                      shell::PlayerApp& app) override;
  int RunMessageLoop() override;
  // Ends the loop; a quit asked for before the loop runs ends it at once.
  void PostQuit(int exitCode) override;

 private:
  std::unique_ptr<platform::qt::TerminationSignals> terminationSignals;
  std::unique_ptr<CallWatcher> calls;
  bool quitRequested = false;
  int quitCode = 0;
};

}  // namespace ui
