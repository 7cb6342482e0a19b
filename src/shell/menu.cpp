#include "shell/menu.h"

namespace shell {

MenuItem MenuItem::Command(std::uint32_t id, std::string textKey) {
  MenuItem item;
  item.kind = Kind::Command;
  item.id = id;
  item.textKey = std::move(textKey);
  return item;
}

MenuItem MenuItem::Popup(std::uint32_t id, std::string textKey, std::vector<MenuItem> items) {
  MenuItem item;
  item.kind = Kind::Popup;
  item.id = id;
  item.textKey = std::move(textKey);
  item.items = std::move(items);
  return item;
}

MenuItem MenuItem::Separator() {
  MenuItem item;
  item.kind = Kind::Separator;
  return item;
}

MenuItem* SubmenuAt(MenuItem& from, std::initializer_list<int> path) {
  MenuItem* current = &from;
  for (const int position : path) {
    if (position < 0 || static_cast<std::size_t>(position) >= current->items.size()) return nullptr;
    current = &current->items[static_cast<std::size_t>(position)];
    if (current->kind != MenuItem::Kind::Popup) return nullptr;
  }
  return current;
}

const MenuItem* FindItem(const MenuItem& from, std::uint32_t id) {
  for (const MenuItem& item : from.items) {
    if (item.kind != MenuItem::Kind::Separator && item.id == id) return &item;
    if (item.kind == MenuItem::Kind::Popup) {
      if (const MenuItem* found = FindItem(item, id)) return found;
    }
  }
  return nullptr;
}

MenuItem* FindItem(MenuItem& from, std::uint32_t id) {
  return const_cast<MenuItem*>(FindItem(static_cast<const MenuItem&>(from), id));
}

void AppendCommand(MenuItem& popup, std::uint32_t id, std::string text, bool checked) {
  MenuItem item;
  item.id = id;
  item.text = std::move(text);
  item.checked = checked;
  popup.items.push_back(std::move(item));
}

void AppendSeparator(MenuItem& popup) {
  popup.items.push_back(MenuItem::Separator());
}

MenuItem& AppendPopup(MenuItem& popup, std::string text) {
  MenuItem item;
  item.kind = MenuItem::Kind::Popup;
  item.text = std::move(text);
  popup.items.push_back(std::move(item));
  return popup.items.back();
}

bool DeleteAt(MenuItem& popup, int position) {
  if (position < 0 || static_cast<std::size_t>(position) >= popup.items.size()) return false;
  popup.items.erase(popup.items.begin() + position);
  return true;
}

bool RemoveCommand(MenuItem& popup, std::uint32_t id) {
  for (auto it = popup.items.begin(); it != popup.items.end(); ++it) {
    if (it->kind == MenuItem::Kind::Command && it->id == id) {
      popup.items.erase(it);
      return true;
    }
  }
  return false;
}

MenuBar::MenuBar(MenuItem leftKey, MenuItem rightKey) {
  root.kind = MenuItem::Kind::Popup;
  root.items.push_back(std::move(leftKey));
  root.items.push_back(std::move(rightKey));
}

MenuItem* MenuBar::Popup(std::uint32_t id) {
  MenuItem* found = FindItem(root, id);
  return found != nullptr && found->kind == MenuItem::Kind::Popup ? found : nullptr;
}

bool MenuBar::Check(std::uint32_t id, bool checked) {
  MenuItem* item = FindItem(root, id);
  if (item == nullptr) return false;
  item->checked = checked;
  return true;
}

bool MenuBar::IsChecked(std::uint32_t id) const {
  const MenuItem* item = FindItem(root, id);
  return item != nullptr && item->checked;
}

bool MenuBar::Enable(std::uint32_t id, bool enabled) {
  MenuItem* item = FindItem(root, id);
  if (item == nullptr) return false;
  item->enabled = enabled;
  return true;
}

}  // namespace shell
