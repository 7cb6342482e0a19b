#include "shell/ui/key_mapping_dialog.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QTreeWidget>
#include <algorithm>
#include <QVBoxLayout>

#include "platform/qt/virtual_keys.h"
#include "platform/registry.h"
#include "platform/text_format.h"
#include "platform/texts.h"
#include "shell/ui/dialog_frame.h"
#include "shell/ui/qt_dialogs.h"
#include "shell/window_messages.h"

namespace ui {
namespace {

constexpr std::uint32_t kKeyMappingDialog = 126;
constexpr std::uint32_t kTextActionColumn = 6301;
constexpr std::uint32_t kTextKeyColumn = 6300;
constexpr std::uint32_t kTextPressKeyFor = 6319;
constexpr std::uint32_t kKeyAction = 13;
constexpr std::uint32_t kKeyBack = 27;
constexpr int kActionColumnWidth = 100;
constexpr int kKeyColumnWidth = 67;
constexpr QRect kPopupPlace{4, 90, 168, 60};
constexpr int kPopupTitleTop = 12;

bool IsOverridden(std::uint32_t key) {
  return key == kKeyBack || key == 117 || key == 118 || key == 121;
}

}  // namespace

// White, bordered, its title centred near the top.
class EnterKeyPopup : public QWidget {
 public:
  EnterKeyPopup(const QString& title, QWidget* parent) : QWidget(parent), text(title) {
    setObjectName("EnterKey");
    setWindowTitle(title);
    setGeometry(kPopupPlace);
    setFocusPolicy(Qt::StrongFocus);
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
    painter.setPen(Qt::black);
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    painter.drawText(rect().adjusted(1, kPopupTitleTop, -1, -1), Qt::AlignHCenter | Qt::AlignTop, text);
  }

 private:
  QString text;
};

KeyMappingDialog::KeyMappingDialog(shell::KeyMappingModel& keys, QWidget* parent)
    : QDialog(parent), model(keys), list(new QTreeWidget(this)) {
  setObjectName(QString::number(kKeyMappingDialog));
  auto* layout = new QVBoxLayout(this);
  auto* hint = new QLabel(this);
  hint->setObjectName("1004");
  layout->addWidget(hint);
  list->setObjectName("1006");
  list->setRootIsDecorated(false);
  list->setAllColumnsShowFocus(true);
  list->setSelectionMode(QAbstractItemView::SingleSelection);
  list->setHeaderLabels({QString::fromStdString(platform::LoadText(kTextActionColumn)),
                         QString::fromStdString(platform::LoadText(kTextKeyColumn))});
  list->setColumnWidth(0, kActionColumnWidth);
  list->setColumnWidth(1, kKeyColumnWidth);
  for (int line = 0; line < model.LineCount(); ++line) {
    list->addTopLevelItem(new QTreeWidgetItem(
        {QString::fromStdString(model.ActionText(line)), QString::fromStdString(model.KeyText(line))}));
  }
  // The longest action name ("Equalizer On/Off") shows whole.
  list->resizeColumnToContents(0);
  list->setColumnWidth(0, std::max(list->columnWidth(0), kActionColumnWidth));
  if (list->topLevelItemCount() > 0) list->setCurrentItem(list->topLevelItem(0));
  list->installEventFilter(this);
  layout->addWidget(list, 1);
  layout->addWidget(new DialogSoftKeys(*this, shell::kMenuDone));
  list->setFocus();
}

KeyMappingDialog::~KeyMappingDialog() = default;

QWidget* KeyMappingDialog::Popup() const {
  return popup.get();
}

int KeyMappingDialog::SelectedLine() const {
  QTreeWidgetItem* item = list->currentItem();
  return item == nullptr ? -1 : list->indexOfTopLevelItem(item);
}

void KeyMappingDialog::Refresh(int line) {
  if (QTreeWidgetItem* item = list->topLevelItem(line))
    item->setText(1, QString::fromStdString(model.KeyText(line)));
}

void KeyMappingDialog::StartCapture() {
  const int line = SelectedLine();
  if (line < 0) return;
  const std::string title =
      platform::FormatText(platform::LoadText(kTextPressKeyFor), {model.ActionText(line)});
  popup = std::make_unique<EnterKeyPopup>(QString::fromStdString(title), this);
  popup->installEventFilter(this);
  popup->show();
  popup->raise();
  popup->setFocus();
}

// The popup may be in the middle of its own key event: it goes once that is over.
void KeyMappingDialog::EndCapture() {
  EnterKeyPopup* closing = popup.release();
  closing->removeEventFilter(this);
  closing->hide();
  closing->deleteLater();
  list->setFocus();
}

void KeyMappingDialog::Assign(std::uint32_t key) {
  for (int line : model.Assign(SelectedLine(), key)) Refresh(line);
}

void KeyMappingDialog::OverriddenKey(std::uint32_t key) {
  if (key != kKeyBack) {
    Assign(key);
    if (popup) EndCapture();
  } else if (popup) {
    EndCapture();
  } else if (model.Unmap(SelectedLine())) {
    Refresh(SelectedLine());
  }
}

bool KeyMappingDialog::eventFilter(QObject* watched, QEvent* event) {
  const bool inPopup = popup != nullptr && watched == popup.get();
  if (watched != list && !inPopup) return QDialog::eventFilter(watched, event);
  if (event->type() == QEvent::KeyRelease) return true;
  if (event->type() != QEvent::KeyPress) return false;
  const auto* press = static_cast<QKeyEvent*>(event);
  const std::uint32_t key = platform::qt::VirtualKeyFor(press->key());
  if (IsOverridden(key)) {
    if (!press->isAutoRepeat()) OverriddenKey(key);
    return true;
  }
  if (popup) {
    if (key != 0) {
      Assign(key);
      EndCapture();
    }
    return true;
  }
  if (key == kKeyAction) {
    StartCapture();
    return true;
  }
  return false;
}

// The filter's target is the dialog while it is open (null: the dialog
// takes its keys itself).
void QtDialogs::KeyMapping() {
  if (shell::ModalDialogOpen()) return;
  shell::ModalDialogOpen() = true;
  {
    shell::KeyMappingModel model(bookmarksExist && bookmarksExist(), &platform::Registry::Process());
    KeyMappingDialog dialog(model, &parent);
    shell::SetKeyTarget(nullptr, true);
    ShowDialog(dialog, kKeyMappingDialog);
  }
  shell::ModalDialogOpen() = false;
}

}  // namespace ui
