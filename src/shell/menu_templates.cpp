#include "shell/menu_templates.h"

#include <string>

#include "platform/texts.h"
#include "shell/language_pack.h"
#include "shell/window_messages.h"

namespace shell {
namespace {

using Item = MenuItem;

std::string Key(std::uint32_t menuId, const std::string& item) {
  return "menu." + std::to_string(menuId) + "." + item;
}

Item Command(std::uint32_t menuId, std::uint32_t id) {
  return Item::Command(id, Key(menuId, std::to_string(id)));
}

Item SoftKey(std::uint32_t id, std::uint32_t textId) {
  Item item = Item::Command(id, "");
  item.textId = textId;
  return item;
}

// 101. The right soft key's popup 1516; code finds its submenus by position:
// Order 1, Bookmark 5, Options 6, and in Options FF/Rewind Step 0 and Language 6.
MenuBar MainBar() {
  constexpr std::uint32_t m = kMenuMainBar;
  Item order = Item::Popup(
      0, Key(m, "p1.1"),
      {Command(m, kCommandEnableShuffle), Command(m, kCommandEnableRepeat), Item::Separator(),
       Command(m, kCommandRepeatAll), Command(m, kCommandRepeatOne), Command(m, kCommandRepeatSelected)});
  Item timers =
      Item::Popup(0, Key(m, "p1.3"), {Command(m, kCommandSetAlarm), Command(m, kCommandSleepTimer)});
  Item bookmark = Item::Popup(0, Key(m, "p1.5"),
                              {Command(m, kCommandAddBookmark), Command(m, kCommandOrganizeBookmarks)});
  Item skipStep = Item::Popup(0, Key(m, "p1.6.0"), {Command(m, kCommandSkipTimeFirst)});
  Item language = Item::Popup(0, Key(m, "p1.6.6"), {Command(m, kCommandLanguageFirst)});
  Item options =
      Item::Popup(0, Key(m, "p1.6"),
                  {std::move(skipStep), Command(m, kCommandGeneralOptions),
                   Command(m, kCommandPlaylistOptions), Command(m, kCommandEffects),
                   Command(m, kCommandKeyMapping), Command(m, kCommandFileTypes), std::move(language)});
  Item menu =
      Item::Popup(kPopupMainMenu, "",
                  {Command(m, kCommandPlayStop), std::move(order), Item::Separator(), std::move(timers),
                   Command(m, kCommandEqualizer), std::move(bookmark), std::move(options), Item::Separator(),
                   Command(m, kCommandAbout), Item::Separator(), Command(m, kCommandExitMenu)});
  menu.textId = 40005;
  return MenuBar(SoftKey(kCommandPlaylist, 40002), std::move(menu));
}

// 156, the list screen: the left soft key the popup 1517 "File", the right
// one 1516 "Menu", whose first entry, Move Items, carries move mode's check
// mark.
MenuBar PlaylistScreenBar() {
  constexpr std::uint32_t m = kMenuPlaylistScreen;
  auto commands = [](std::initializer_list<std::uint32_t> ids) {
    std::vector<Item> entries;
    for (const std::uint32_t id : ids) entries.push_back(id == 0 ? Item::Separator() : Command(m, id));
    return entries;
  };
  Item file = Item::Popup(kPopupPlaylistFile, Key(m, "1517"),
                          commands({5001, 5082, 5081, 5080, 5005, 0, 5094, 5095}));
  Item select = Item::Popup(0, Key(m, "p1.2"), commands({5089, 5088, 5087}));
  Item remove = Item::Popup(0, Key(m, "p1.3"), commands({5084, 5086, 5085, 40014, 1511, 1512}));
  Item sort = Item::Popup(0, Key(m, "p1.4"), commands({1500, 1501, 1502, 1503, 0, 1506, 1507}));
  Item menu = Item::Popup(kPopupMainMenu, Key(m, "1516"),
                          {Command(m, 40013), Item::Separator(), std::move(select), std::move(remove),
                           std::move(sort), Item::Separator(), Command(m, kCommandCancel)});
  return MenuBar(std::move(file), std::move(menu));
}

MenuBar TwoKeys(std::uint32_t menuId, std::uint32_t left, std::uint32_t right) {
  return MenuBar(Command(menuId, left), right == 0 ? Item() : Command(menuId, right));
}

MenuBar DoneAndMenu(std::uint32_t menuId, std::initializer_list<std::uint32_t> popupIds) {
  std::vector<Item> entries;
  for (const std::uint32_t id : popupIds) entries.push_back(Command(menuId, id));
  return MenuBar(Command(menuId, kCommandOk), Item::Popup(0, Key(menuId, "p1"), std::move(entries)));
}

void Resolve(MenuItem& item) {
  if (item.textId != 0)
    item.text = platform::LoadText(item.textId);
  else if (!item.textKey.empty())
    item.text = KeyedText(item.textKey);
  for (MenuItem& child : item.items) Resolve(child);
}

}  // namespace

std::optional<MenuBar> MenuTemplate(std::uint32_t menuId) {
  switch (menuId) {
    case kMenuMainBar:
      return MainBar();
    case kMenuPlaylistScreen:
      return PlaylistScreenBar();
    case kMenuDone:
      return TwoKeys(menuId, kCommandOk, 0);
    case kMenuDoneCancel:
    case kMenuSaveCancel:
      return TwoKeys(menuId, kCommandOk, kCommandCancel);
    case 114:  // the file picker
      return DoneAndMenu(menuId, {40017, 40018, 40034, 40035});
    case 151:
      return DoneAndMenu(menuId, {40107, 40108, 40109, 40110, 40051});
    case 167:
      return DoneAndMenu(menuId, {1033, 1034, kCommandCancel});
    default:
      return std::nullopt;
  }
}

std::optional<MenuBar> CreateMenuBar(std::uint32_t menuId) {
  std::optional<MenuBar> bar = MenuTemplate(menuId);
  if (!bar) return std::nullopt;
  Resolve(bar->LeftKey());
  Resolve(bar->RightKey());
  return bar;
}

}  // namespace shell
