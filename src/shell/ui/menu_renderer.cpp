#include "shell/ui/menu_renderer.h"

#include <QAction>
#include <QMenu>
#include <QString>

#include "shell/menu.h"

namespace ui {
namespace {

void Fill(QMenu& menu, const shell::MenuItem& popup) {
  for (const shell::MenuItem& item : popup.items) {
    switch (item.kind) {
      case shell::MenuItem::Kind::Separator:
        menu.addSeparator();
        break;
      case shell::MenuItem::Kind::Popup: {
        QMenu* submenu = menu.addMenu(QString::fromStdString(item.text));
        submenu->setEnabled(item.enabled);
        Fill(*submenu, item);
        break;
      }
      case shell::MenuItem::Kind::Command: {
        QAction* action = menu.addAction(QString::fromStdString(item.text));
        action->setObjectName(QString::number(item.id));
        action->setData(static_cast<uint>(item.id));
        action->setEnabled(item.enabled);
        action->setCheckable(item.checked);
        action->setChecked(item.checked);
        break;
      }
    }
  }
}

}  // namespace

std::unique_ptr<QMenu> RenderMenu(const shell::MenuItem& popup, QWidget* parent) {
  auto menu = std::make_unique<QMenu>(parent);
  Fill(*menu, popup);
  return menu;
}

std::uint32_t CommandOf(const QAction* action) {
  return action != nullptr && !action->menu() ? action->data().toUInt() : 0;
}

}  // namespace ui
