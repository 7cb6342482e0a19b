// The soft-key bar under the face: the left key a command, the right key the
// popup menu, as a phone's menu bar. It draws the shell's MenuBar as it is at
// the moment it is used, and reports the chosen command.
//
// Threads: window thread.
#pragma once

#include <QWidget>
#include <cstdint>
#include <functional>
#include <string>

class QPushButton;

namespace shell {
class MenuBar;
}

namespace ui {

class SoftKeyBar : public QWidget {
 public:
  // `onCommand` receives the id of the command chosen with either key.
  SoftKeyBar(shell::MenuBar& bar, std::function<void(std::uint32_t)> onCommand, QWidget* parent = nullptr);

  QPushButton* LeftKey() const { return left; }
  QPushButton* RightKey() const { return right; }
  // Opens the menu of a key that holds a popup and returns the chosen
  // command, 0 for none.
  std::uint32_t OpenMenu(bool leftKey);
  // The menu bar's button request: the key that is the command `from`
  // becomes the command `to` with `text`. False, and nothing changes, when
  // no key is that command (a key that holds a popup never is).
  bool ChangeKeyCommand(std::uint32_t from, std::uint32_t to, const std::string& text);

 private:
  void Press(bool leftKey);

  shell::MenuBar& bar;
  std::function<void(std::uint32_t)> onCommand;
  QPushButton* left;
  QPushButton* right;
};

}  // namespace ui
