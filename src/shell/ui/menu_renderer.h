// Draws the shell's menu tree as Qt menus, when the user opens one.
//
// Each command becomes an action whose object name is its id; the chosen
// action is reported by id, so the caller sends WM_COMMAND with it. Popups
// become submenus in their place, separators separators, so positions in the
// Qt menu are the positions the shell's code uses. Texts are shown as they
// are: "&" marks a mnemonic, "&&" is an ampersand, as on the phone platform.
//
// Threads: window thread.
#pragma once

#include <cstdint>
#include <memory>

class QAction;
class QMenu;
class QWidget;

namespace shell {
struct MenuItem;
}

namespace ui {

// A Qt menu of the popup's entries.
std::unique_ptr<QMenu> RenderMenu(const shell::MenuItem& popup, QWidget* parent = nullptr);

// The id of the command an action of RenderMenu stands for; 0 for none.
std::uint32_t CommandOf(const QAction* action);

}  // namespace ui
