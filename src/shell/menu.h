// Menus as the shell holds them: a tree the window only draws.
//
// A menu bar has two soft keys: the left one a command, the right one a
// popup. The shell owns the tree and changes it (check marks, entries built
// at run time); the window renders it when the user opens it and posts
// WM_COMMAND with the chosen id. Code finds submenus by position, as the
// system's menus are addressed, so the order of entries matters.
//
// Threads: window thread only.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace shell {

struct MenuItem {
  enum class Kind { Command, Popup, Separator };

  Kind kind = Kind::Command;
  std::uint32_t id = 0;  // command id, popup id, or 0
  std::string text;      // as shown, in the language of the menu's creation
  bool checked = false;
  bool enabled = true;
  std::vector<MenuItem> items;  // a popup's entries

  // Where the text comes from when the menu is made from a template: a
  // numbered text (soft keys), or a key of the menu texts.
  std::uint32_t textId = 0;
  std::string textKey;

  static MenuItem Command(std::uint32_t id, std::string textKey);
  static MenuItem Popup(std::uint32_t id, std::string textKey, std::vector<MenuItem> items);
  static MenuItem Separator();
};

// Operations on one popup, as the platform's menu calls.
// The popup at `path`, positions counted from `from`; null when a position is
// out of range or names something that isn't a popup.
MenuItem* SubmenuAt(MenuItem& from, std::initializer_list<int> path);
// The first entry with `id` in the tree below `from`, depth first; null if none.
MenuItem* FindItem(MenuItem& from, std::uint32_t id);
const MenuItem* FindItem(const MenuItem& from, std::uint32_t id);
void AppendCommand(MenuItem& popup, std::uint32_t id, std::string text, bool checked = false);
void AppendSeparator(MenuItem& popup);
MenuItem& AppendPopup(MenuItem& popup, std::string text);
// Removes the entry at `position`; false when out of range.
bool DeleteAt(MenuItem& popup, int position);
// Removes the first command with `id` among the popup's own entries.
bool RemoveCommand(MenuItem& popup, std::uint32_t id);

class MenuBar {
 public:
  // Two empty keys: a command with id 0 is a key that isn't there.
  MenuBar() : MenuBar(MenuItem(), MenuItem()) {}
  MenuBar(MenuItem leftKey, MenuItem rightKey);

  MenuItem& LeftKey() { return root.items[0]; }
  MenuItem& RightKey() { return root.items[1]; }
  const MenuItem& LeftKey() const { return root.items[0]; }
  const MenuItem& RightKey() const { return root.items[1]; }

  // The popup with this id anywhere in the bar; null if none.
  MenuItem* Popup(std::uint32_t id);
  // CheckMenuItem by command: false when no entry has the id.
  bool Check(std::uint32_t id, bool checked);
  bool IsChecked(std::uint32_t id) const;
  // EnableMenuItem by command: a disabled entry shows grey.
  bool Enable(std::uint32_t id, bool enabled);

 private:
  MenuItem root;  // a popup holding the two soft keys
};

}  // namespace shell
