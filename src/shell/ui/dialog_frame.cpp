#include "shell/ui/dialog_frame.h"

#include <QAbstractButton>
#include <QApplication>
#include <QGroupBox>
#include <QLabel>

#include "shell/language_pack.h"
#include "shell/menu_templates.h"
#include "shell/window_messages.h"

namespace ui {

WaitCursor::WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
WaitCursor::~WaitCursor() { QApplication::restoreOverrideCursor(); }
namespace {

std::optional<std::string> TextOf(std::uint32_t dialogId, const QString& name) {
  if (name.isEmpty()) return std::nullopt;
  return shell::FindKeyedText("dlg." + std::to_string(dialogId) + "." + name.toStdString());
}

}  // namespace

void ApplyDialogTexts(QWidget& dialog, std::uint32_t dialogId) {
  if (const auto title = TextOf(dialogId, "title")) dialog.setWindowTitle(QString::fromStdString(*title));
  for (QWidget* child : dialog.findChildren<QWidget*>()) {
    const std::optional<std::string> text = TextOf(dialogId, child->objectName());
    if (!text) continue;
    const QString value = QString::fromStdString(*text);
    if (auto* label = qobject_cast<QLabel*>(child))
      label->setText(value);
    else if (auto* button = qobject_cast<QAbstractButton*>(child))
      button->setText(value);
    else if (auto* group = qobject_cast<QGroupBox*>(child))
      group->setTitle(value);
  }
}

int ShowDialog(QDialog& dialog, std::uint32_t dialogId) {
  ApplyDialogTexts(dialog, dialogId);
  return dialog.exec() == QDialog::Accepted ? 1 : 2;
}

DialogSoftKeys::DialogSoftKeys(QDialog& dialog, std::uint32_t menuId,
                               std::function<void(std::uint32_t)> onOther)
    : detail::MenuBarHolder{shell::CreateMenuBar(menuId).value_or(shell::MenuBar())},
      SoftKeyBar(
          ownBar,
          [&dialog, onOther = std::move(onOther)](std::uint32_t command) {
            if (command == shell::kCommandOk)
              dialog.accept();
            else if (command == shell::kCommandCancel)
              dialog.reject();
            else if (onOther)
              onOther(command);
          },
          &dialog) {}

}  // namespace ui
