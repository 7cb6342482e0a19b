// The list screen: a modal dialog over the PlaylistView, with one owner-drawn
// list and the menu bar 156.
//
// The list (control 1000) is a QListView over PlaylistRows, a model that is
// only a row count; PlaylistRowDelegate paints each row from the entry. The
// screen is the model's ListWindow while it is open, so the model's changes
// (counts, redraws, the info reader's rows) reach it, and the reader goes on
// reading while the screen shows.
//
// Keys of the list (a page is the rows that fit, plus one):
//   Return       toggles the focus row's selection; in move mode ends it
//   Up, Down     focus -1, +1; in move mode the selected rows move first
//   Left, Right  focus -page, +page; likewise
// After any key but the end of move mode the focus is clamped to the list,
// scrolled into view, and if it changed its old and new rows are redrawn.
// The focus is the model's FocusIndex, not Qt's selection, which stays empty.
// Escape closes the screen as Back does.
//
// Commands (the soft keys' menus, and three popups made when asked for):
// Play, the fills (Add Files, Add Folders, Add URL, New, Save, Load), Move
// Items, Info, the popups 5090 (sort), 5092 (read again) and 5083 (remove
// dead, erase) here; every other editing command through
// playlist::RunEditingCommand, with the wait cursor around the two that
// touch files. Back (2) closes the screen.
//
// Threads: window thread, except PostRowRead and PostReadingDone, which the
// info reader calls with the list's lock held: they queue a call to the
// window thread and return.
#pragma once

#include <QAbstractListModel>
#include <QDialog>
#include <QListView>
#include <cstdint>
#include <functional>

#include "playlist/list_window.h"

namespace platform {
class MessageTarget;
}
namespace playlist {
class PlaylistView;
}

namespace ui {

class DialogSoftKeys;
class PlaylistRowDelegate;

// The rows as Qt sees them: a count, and no data.
class PlaylistRows : public QAbstractListModel {
 public:
  using QAbstractListModel::QAbstractListModel;
  int rowCount(const QModelIndex& parent = QModelIndex()) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  void SetCount(int count);

 private:
  int count = 0;
};

// The list control: its key presses go to the screen; releases end here.
class PlaylistListView : public QListView {
 public:
  explicit PlaylistListView(QWidget* parent = nullptr);
  // Returns false for a key the list leaves to the dialog.
  std::function<bool(int key)> onKey;
  // Whole rows that fit in the viewport.
  int RowsPerPage() const;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void keyReleaseEvent(QKeyEvent* event) override;
};

class PlaylistScreen : public QDialog, public playlist::ListWindow {
 public:
  // `mainWindow` answers the player's state (2569) and receives what the
  // model posts; `zoom` is the face's.
  PlaylistScreen(playlist::PlaylistView& view, platform::MessageTarget& mainWindow, int zoom,
                 QWidget* parent = nullptr);
  ~PlaylistScreen() override;

  // Handles one key of the list; false for a key it doesn't take.
  bool HandleKey(int key);
  // Runs a command of the menus.
  void RunCommand(std::uint32_t command);

  // ListWindow
  void SetItemCount(int count) override;
  void InvalidateAll(bool erase) override;
  void RedrawRow(int index) override;
  void PostRowRead(int index) override;
  void PostReadingDone() override;

  PlaylistListView& List() { return *list; }
  PlaylistRowDelegate& Rows() { return *delegate; }
  DialogSoftKeys& SoftKeys() { return *softKeys; }

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void MoveFocus(int distance);
  void ToggleMoveMode();
  void ShowMoveMode();
  void ShowInfo();
  // Opens a popup of (command, text id) pairs, 0 a separator, at the focus
  // row, and runs the chosen command.
  void RunPopup(std::initializer_list<std::pair<std::uint32_t, std::uint32_t>> entries);
  void RunWithWaitCursor(std::uint32_t command);

  playlist::PlaylistView& view;
  platform::MessageTarget& mainWindow;
  PlaylistRows* rows;
  PlaylistListView* list;
  PlaylistRowDelegate* delegate;
  DialogSoftKeys* softKeys;
};

}  // namespace ui
