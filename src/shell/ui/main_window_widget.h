// The main window in Qt: the face above, the soft-key bar below.
//
// The face is the skin's 176 by 180 pixels at an integer zoom: 2 on a
// desktop (1 when the screen can't hold that), and as large as fits on a
// phone's portrait screen. Pointer positions are the face's business.
//
// What the window gets from the system becomes a window message to its
// procedure, the PlayerApp: keys (WM_KEYDOWN and WM_KEYUP with the platform's
// key codes), activation (WM_ACTIVATE), the close button (WM_CLOSE, posted),
// the end of the desktop session (WM_DESTROY), and the soft keys' commands
// (WM_COMMAND).
//
// Threads: window thread; Messages().Post from any thread.
#pragma once

#include <QWidget>
#include <memory>

#include "platform/qt/qt_message_target.h"
#include "platform/qt/qt_timers.h"
#include "shell/main_window.h"
#include "shell/ui/playlist_boxes.h"
#include "shell/ui/qt_dialogs.h"

namespace ui {

class SkinWindowWidget;
class SoftKeyBar;

// The zoom of the face for a work area: see above.
int FaceZoomFor(const shell::Rect& workArea);

class MainWindowWidget : public QWidget, public shell::MainWindow {
 public:
  MainWindowWidget(const shell::Rect& workArea, platform::MessageHandler& procedure);
  ~MainWindowWidget() override;

  platform::MessageTarget& Messages() override { return messages; }
  platform::Timers& Timers() override { return timers; }
  bool AttachMenuBar(shell::MenuBar& bar) override;
  shell::SkinDisplay* CreateSkin(int width, int height, const std::string& skinDirectory) override;
  shell::Dialogs& DialogLauncher() override { return dialogs; }
  QtDialogs& QtDialogLauncher() { return dialogs; }
  playlist::PlaylistDialogs* PlaylistBoxes() override { return &playlistBoxes; }
  void Show() override;
  void BringToForeground() override;
  void Redraw() override;
  bool ActivateWindowBelow() override;

  SoftKeyBar* SoftKeys() const { return softKeys; }
  // The skin window, null until the skin is loaded.
  SkinWindowWidget* Face() const { return face; }
  int Zoom() const { return zoom; }
  platform::qt::QtMessageTarget& Queue() { return messages; }

 protected:
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void keyReleaseEvent(QKeyEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  void PlaceIn(const shell::Rect& workArea);

  platform::qt::QtMessageTarget messages;
  platform::qt::QtTimers timers;
  QtDialogs dialogs;
  QtPlaylistBoxes playlistBoxes{*this};
  int zoom;
  shell::Rect area;
  SkinWindowWidget* face = nullptr;  // owned by the widget tree
  SoftKeyBar* softKeys = nullptr;    // owned by the widget tree
};

}  // namespace ui
