// What every dialog of the shell shares: its texts come through the language
// layer, and its soft keys from a menu bar template.
//
// A dialog is built in code; its controls carry the system's control ids as
// object names ("1039"), and texts without an id a name ("label"), so that
// ApplyDialogTexts finds the text "dlg.<dialog>.<name>" for each of them, in
// the pack of the moment, falling back on English for what the pack lacks.
//
// Soft keys: command 1 accepts the dialog, 2 rejects it; any other command
// goes to the dialog's handler.
//
// Threads: window thread.
#pragma once

#include <QDialog>
#include <cstdint>
#include <functional>

#include "shell/menu.h"
#include "shell/ui/soft_key_bar.h"

namespace ui {

// Sets the window title (key "title") and the text of every label, button
// and group box whose object name has a text in the dialog's table.
void ApplyDialogTexts(QWidget& dialog, std::uint32_t dialogId);

// Runs a dialog modally after ApplyDialogTexts, as the phone's ShowDialog ran
// one from the pack's template; returns the dialog's result (1 accepted).
int ShowDialog(QDialog& dialog, std::uint32_t dialogId);

// Shows the wait cursor while it lives (a long command, a folder being read).
class WaitCursor {
 public:
  WaitCursor();
  ~WaitCursor();
  WaitCursor(const WaitCursor&) = delete;
  WaitCursor& operator=(const WaitCursor&) = delete;
};

namespace detail {
struct MenuBarHolder {
  shell::MenuBar ownBar;
};
}  // namespace detail

// The soft keys of a dialog, made from menu template `menuId` (105 "Done",
// 157 "Done" and "Cancel", 159 "Save" and "Cancel"...).
class DialogSoftKeys : private detail::MenuBarHolder, public SoftKeyBar {
 public:
  DialogSoftKeys(QDialog& dialog, std::uint32_t menuId,
                 std::function<void(std::uint32_t)> onOtherCommand = {});
  shell::MenuBar& Bar() { return ownBar; }
};

}  // namespace ui
