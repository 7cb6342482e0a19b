// The main window as the shell sees it, and the window system that makes it.
//
// The shell's logic (PlayerApp, the switchboard) runs without any window
// system; everything it needs of the window goes through these interfaces,
// which the Qt shell implements and tests implement with plain objects.
//
// Threads: window thread only, except MainWindow::Messages().Post, which any
// thread may call.
#pragma once

#include <memory>
#include <string>

#include "platform/message_target.h"
#include "platform/timers.h"

namespace playlist {
class PlaylistDialogs;
}

namespace shell {

class Dialogs;
class MenuBar;
class PlayerApp;
class SkinDisplay;

struct Rect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
};

class MainWindow {
 public:
  virtual ~MainWindow() = default;

  // The window's message queue: Post from any thread, Send and
  // RemovePending on the window thread. Messages reach the window procedure
  // (the PlayerApp the window was made for).
  virtual platform::MessageTarget& Messages() = 0;
  // The window's timers; each delivers kMessageTimer to the procedure.
  virtual platform::Timers& Timers() = 0;
  // Shows the soft-key bar for `bar`, which the shell keeps and changes; the
  // window draws it as it is whenever the user opens it. False when the bar
  // can't be made.
  virtual bool AttachMenuBar(MenuBar& bar) = 0;
  // The face: a child filling the window's skin area of `width` by `height`
  // skin pixels, drawn from the skin in `skinDirectory` (ending in "/").
  // Null when it can't be made: a missing or damaged skin.
  virtual SkinDisplay* CreateSkin(int width, int height, const std::string& skinDirectory) = 0;
  virtual Dialogs& DialogLauncher() = 0;
  // The file picker and the small boxes the list's fills run; null while
  // the program has none.
  virtual playlist::PlaylistDialogs* PlaylistBoxes() = 0;

  virtual void Show() = 0;
  virtual void BringToForeground() = 0;
  // Repaints at once.
  virtual void Redraw() = 0;
  // Gives the foreground to the next visible window below this one; false
  // when there is none.
  virtual bool ActivateWindowBelow() = 0;
};

class WindowSystem {
 public:
  virtual ~WindowSystem() = default;

  // The part of the screen that windows may cover.
  virtual Rect WorkArea() = 0;
  // The main window, at `area`, with `app` as its window procedure. Null on failure.
  virtual std::unique_ptr<MainWindow> CreateMainWindow(const Rect& area, PlayerApp& app) = 0;
  // The message loop: runs until PostQuit, then returns the exit code.
  virtual int RunMessageLoop() = 0;
  virtual void PostQuit(int exitCode) = 0;
};

}  // namespace shell
