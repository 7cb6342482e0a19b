// The menu bars of the program, as templates: the tree with its ids and the
// keys of its texts. CreateMenuBar turns a template into a menu in the
// language of the moment.
#pragma once

#include <cstdint>
#include <optional>

#include "shell/menu.h"

namespace shell {

// The template of a menu resource (101 main bar; 105, 157, 159, 114, 151, 167
// dialog bars); nullopt for an id without one.
std::optional<MenuBar> MenuTemplate(std::uint32_t menuId);

// The template's texts looked up through the language layer: numbered texts
// by LoadText, keyed ones by KeyedText, so a pack translates the menu and its
// soft keys at once. nullopt for an unknown menu.
std::optional<MenuBar> CreateMenuBar(std::uint32_t menuId);

}  // namespace shell
