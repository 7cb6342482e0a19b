#include "shell/ui/soft_key_bar.h"

#include <QHBoxLayout>
#include <QMenu>
#include <QPushButton>

#include "shell/menu.h"
#include "shell/ui/menu_renderer.h"

namespace ui {

SoftKeyBar::SoftKeyBar(shell::MenuBar& menuBar, std::function<void(std::uint32_t)> commandHandler,
                       QWidget* parent)
    : QWidget(parent), bar(menuBar), onCommand(std::move(commandHandler)) {
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  left = new QPushButton(QString::fromStdString(bar.LeftKey().text), this);
  right = new QPushButton(QString::fromStdString(bar.RightKey().text), this);
  for (QPushButton* key : {left, right}) {
    key->setFocusPolicy(Qt::NoFocus);  // the keys of the window go to the player, not the buttons
    layout->addWidget(key);
  }
  left->setObjectName("softkey.left");
  right->setObjectName("softkey.right");
  left->setVisible(bar.LeftKey().kind != shell::MenuItem::Kind::Command || bar.LeftKey().id != 0);
  right->setVisible(bar.RightKey().kind != shell::MenuItem::Kind::Command || bar.RightKey().id != 0);
  connect(left, &QPushButton::clicked, this, [this] { Press(true); });
  connect(right, &QPushButton::clicked, this, [this] { Press(false); });
}

void SoftKeyBar::Press(bool leftKey) {
  const shell::MenuItem& key = leftKey ? bar.LeftKey() : bar.RightKey();
  if (key.kind == shell::MenuItem::Kind::Command) {
    if (key.id != 0 && onCommand) onCommand(key.id);
    return;
  }
  const std::uint32_t command = OpenMenu(leftKey);
  if (command != 0 && onCommand) onCommand(command);
}

bool SoftKeyBar::ChangeKeyCommand(std::uint32_t from, std::uint32_t to, const std::string& text) {
  for (const bool leftKey : {true, false}) {
    shell::MenuItem& key = leftKey ? bar.LeftKey() : bar.RightKey();
    if (key.kind != shell::MenuItem::Kind::Command || key.id != from) continue;
    key.id = to;
    key.text = text;
    (leftKey ? left : right)->setText(QString::fromStdString(text));
    return true;
  }
  return false;
}

// The menu opens above its key, on the key's side of the bar.
std::uint32_t SoftKeyBar::OpenMenu(bool leftKey) {
  const shell::MenuItem& key = leftKey ? bar.LeftKey() : bar.RightKey();
  if (key.kind != shell::MenuItem::Kind::Popup) return 0;
  std::unique_ptr<QMenu> menu = RenderMenu(key, this);
  QPushButton* button = leftKey ? left : right;
  const QSize size = menu->sizeHint();
  const QPoint corner = button->mapToGlobal(QPoint(leftKey ? 0 : button->width(), 0));
  return CommandOf(menu->exec(corner - QPoint(leftKey ? 0 : size.width(), size.height())));
}

}  // namespace ui
