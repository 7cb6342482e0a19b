#include "shell/ui/playlist_screen.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include "platform/message_target.h"
#include "platform/text_format.h"
#include "platform/texts.h"
#include "playlist/playlist_editing.h"
#include "playlist/playlist_item.h"
#include "playlist/playlist_view.h"
#include "shell/menu.h"
#include "shell/ui/dialog_frame.h"
#include "shell/ui/menu_renderer.h"
#include "shell/ui/playlist_row_delegate.h"
#include "shell/window_messages.h"

namespace ui {
namespace {

constexpr std::uint32_t kPlaylistDialog = 103;
constexpr const char* kListControl = "1000";
constexpr std::uint32_t kTextFile = 40012;
constexpr std::uint32_t kTextEndMoving = 40015;
constexpr std::uint32_t kTextSelectedPath = 6311;
constexpr std::uint32_t kTextSortByTitle = 6110, kTextSortByFileName = 6111, kTextSortByPath = 6112,
                        kTextSortByTrackNumber = 6122, kTextReverse = 6113, kTextRandomize = 6114,
                        kTextReadInfo = 6115, kTextRemoveDead = 6116, kTextEraseSelected = 6117;


}  // namespace

int PlaylistRows::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : count;
}

QVariant PlaylistRows::data(const QModelIndex&, int) const {
  return {};
}

void PlaylistRows::SetCount(int newCount) {
  beginResetModel();
  count = std::max(0, newCount);
  endResetModel();
}

PlaylistListView::PlaylistListView(QWidget* parent) : QListView(parent) {}

int PlaylistListView::RowsPerPage() const {
  const int rowHeight = sizeHintForRow(0);
  if (rowHeight <= 0) return 0;
  return viewport()->height() / rowHeight;
}

void PlaylistListView::keyPressEvent(QKeyEvent* event) {
  if (onKey && onKey(event->key()))
    event->accept();
  else
    event->ignore();
}

void PlaylistListView::keyReleaseEvent(QKeyEvent* event) {
  event->accept();
}

PlaylistScreen::PlaylistScreen(playlist::PlaylistView& listView, platform::MessageTarget& main, int zoom,
                               QWidget* parent)
    : QDialog(parent), view(listView), mainWindow(main) {
  setObjectName(QString::number(kPlaylistDialog));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);

  rows = new PlaylistRows(this);
  list = new PlaylistListView(this);
  list->setObjectName(kListControl);
  delegate = new PlaylistRowDelegate(
      view, [this] { return static_cast<int>(mainWindow.Send(shell::kMessageGetState)); }, zoom, list);
  list->setItemDelegate(delegate);
  list->setUniformItemSizes(true);
  list->setSelectionMode(QAbstractItemView::NoSelection);
  list->setFrameShape(QFrame::NoFrame);
  list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  list->setVerticalScrollMode(QAbstractItemView::ScrollPerItem);
  list->setFont(delegate->Font());
  QPalette palette = list->palette();
  palette.setColor(QPalette::Base, delegate->Colours().normal.back);
  palette.setColor(QPalette::Text, delegate->Colours().normal.text);
  list->setPalette(palette);
  list->setModel(rows);
  list->onKey = [this](int key) { return HandleKey(key); };
  // On a desktop the pointer works too: a click moves the focus to the row,
  // a double click plays it (Play, 5001).
  connect(list, &QAbstractItemView::clicked, this,
          [this](const QModelIndex& index) { MoveFocus(index.row() - view.FocusIndex()); });
  connect(list, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex& index) {
    MoveFocus(index.row() - view.FocusIndex());
    RunCommand(playlist::kCommandPlayFocused);
  });
  layout->addWidget(list, 1);

  softKeys = new DialogSoftKeys(*this, shell::kMenuPlaylistScreen,
                                [this](std::uint32_t command) { RunCommand(command); });
  layout->addWidget(softKeys);

  rows->SetCount(view.ItemCount());
  view.SetListWindow(this);
  ShowMoveMode();
  list->setFocus();
}

// The focus row is scrolled into view once the list has its size.
void PlaylistScreen::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  const int focus = view.FocusIndex();
  if (focus >= 0 && focus < view.ItemCount()) list->scrollTo(rows->index(focus));
}

// From here on the model tells nothing, and the reader's queued redraws die
// with this object.
PlaylistScreen::~PlaylistScreen() {
  view.SetListWindow(nullptr);
}

bool PlaylistScreen::HandleKey(int key) {
  const int page = list->RowsPerPage() + 1;
  switch (key) {
    case Qt::Key_Return:
    case Qt::Key_Enter: {
      if (view.MoveMode()) {
        ToggleMoveMode();
        return true;
      }
      const int focus = view.FocusIndex();
      if (focus >= 0 && focus < view.ItemCount()) {
        view.SetFlags(focus, playlist::ITEM_SELECTED, (view.FlagsAt(focus) & playlist::ITEM_SELECTED) == 0);
        RedrawRow(focus);
      }
      MoveFocus(0);
      return true;
    }
    case Qt::Key_Up:
      MoveFocus(-1);
      return true;
    case Qt::Key_Down:
      MoveFocus(1);
      return true;
    case Qt::Key_Left:
      MoveFocus(-page);
      return true;
    case Qt::Key_Right:
      MoveFocus(page);
      return true;
    // The phone's soft keys.
    case Qt::Key_F1:
      softKeys->LeftKey()->click();
      return true;
    case Qt::Key_F2:
      softKeys->RightKey()->click();
      return true;
    case Qt::Key_Escape:
      return false;
    default:
      MoveFocus(0);
      return true;
  }
}

// In move mode the selected block moves first, by as much as it can; the
// focus then moves by the whole distance and is clamped.
void PlaylistScreen::MoveFocus(int distance) {
  if (distance != 0 && view.MoveMode()) playlist::MoveSelected(view, distance);
  const int old = view.FocusIndex();
  const int count = view.ItemCount();
  int focus = old + distance;
  if (focus >= count) focus = count - 1;
  if (focus < 0) focus = 0;
  view.SetFocusIndex(focus);
  if (count > 0) list->scrollTo(rows->index(focus), QAbstractItemView::EnsureVisible);
  if (focus != old) {
    RedrawRow(old);
    RedrawRow(focus);
  }
}

void PlaylistScreen::ToggleMoveMode() {
  playlist::ToggleMoveMode(view);  // redraws the focus row
  ShowMoveMode();
}

// The check mark of Move Items follows move mode, and the menu bar is asked
// to turn Play into End moving and back. Bar 156's keys are the popups File
// and Menu, not commands, so that request changes nothing on this screen.
void PlaylistScreen::ShowMoveMode() {
  const bool moving = view.MoveMode();
  softKeys->Bar().Check(playlist::kCommandMoveItems, moving);
  if (moving)
    softKeys->ChangeKeyCommand(playlist::kCommandPlayFocused, playlist::kCommandMoveItems,
                               platform::LoadText(kTextEndMoving));
  else
    softKeys->ChangeKeyCommand(playlist::kCommandMoveItems, playlist::kCommandPlayFocused,
                               platform::LoadText(kTextFile));
}

void PlaylistScreen::RunCommand(std::uint32_t command) {
  using namespace playlist;
  switch (static_cast<int>(command)) {
    case shell::kCommandCancel:
      return reject();  // Back
    case kCommandPlayFocused:
      return view.PlayFocused();
    case kCommandAddFiles:
      return view.AddFiles();
    case kCommandAddFolders:
      return view.AddFolder();
    case kCommandAddUrl:
      return view.AddUrl();
    case kCommandNewPlaylist:
      return view.NewPlaylist();
    case kCommandSavePlaylist:
      return view.SavePlaylist();
    case kCommandLoadPlaylist:
      return view.LoadPlaylist();
    case kCommandMoveItems:
      return ToggleMoveMode();
    case kCommandInfo:
      return ShowInfo();
    case kCommandSortPopup:
      return RunPopup({{kCommandSortTitle, kTextSortByTitle},
                       {kCommandSortFileName, kTextSortByFileName},
                       {kCommandSortPath, kTextSortByPath},
                       {kCommandSortTrackNumber, kTextSortByTrackNumber},
                       {0, 0},
                       {kCommandReverse, kTextReverse},
                       {kCommandRandomize, kTextRandomize}});
    case kCommandReadPopup:
      return RunPopup({{kCommandReadInfoAgain, kTextReadInfo}});
    case kCommandRemovePopup:
      return RunPopup({{kCommandRemoveDead, kTextRemoveDead}, {kCommandEraseSelected, kTextEraseSelected}});
    case kCommandRemoveDead:
    case kCommandEraseSelected:
      return RunWithWaitCursor(command);
    default:
      RunEditingCommand(view, static_cast<int>(command));
      return;
  }
}

void PlaylistScreen::RunWithWaitCursor(std::uint32_t command) {
  WaitCursor wait;
  playlist::RunEditingCommand(view, static_cast<int>(command));
}

// The first selected entry's path in a box titled "Info"; nothing without a
// selection.
void PlaylistScreen::ShowInfo() {
  for (int i = 0; i < view.ItemCount(); ++i) {
    if ((view.FlagsAt(i) & playlist::ITEM_SELECTED) == 0) continue;
    QMessageBox box(
        QMessageBox::NoIcon, "Info",
        QString::fromStdString(platform::FormatText(platform::LoadText(kTextSelectedPath), {view.PathAt(i)})),
        QMessageBox::Ok, this);
    box.setObjectName("info");
    box.exec();
    return;
  }
}

// The phone opened these at the place of the last message; with keys only,
// the focus row is that place here (the list's corner when it is scrolled
// away).
void PlaylistScreen::RunPopup(std::initializer_list<std::pair<std::uint32_t, std::uint32_t>> entries) {
  shell::MenuItem popup = shell::MenuItem::Popup(0, "", {});
  for (const auto& [command, textId] : entries) {
    if (command == 0)
      shell::AppendSeparator(popup);
    else
      shell::AppendCommand(popup, command, platform::LoadText(textId));
  }
  std::unique_ptr<QMenu> menu = RenderMenu(popup, this);
  menu->setObjectName("popup");
  QRect place = list->visualRect(rows->index(view.FocusIndex()));
  if (!list->viewport()->rect().intersects(place)) place = QRect();
  const std::uint32_t chosen = CommandOf(menu->exec(list->viewport()->mapToGlobal(place.topLeft())));
  if (chosen != 0) RunCommand(chosen);
}

void PlaylistScreen::SetItemCount(int count) {
  rows->SetCount(count);
}

void PlaylistScreen::InvalidateAll(bool) {
  list->viewport()->update();
}

void PlaylistScreen::RedrawRow(int index) {
  if (index < 0 || index >= rows->rowCount()) return;
  list->viewport()->update(list->visualRect(rows->index(index)));
}

void PlaylistScreen::PostRowRead(int index) {
  QMetaObject::invokeMethod(
      this, [this, index] { RedrawRow(index); }, Qt::QueuedConnection);
}

void PlaylistScreen::PostReadingDone() {
  QMetaObject::invokeMethod(
      this, [this] { InvalidateAll(false); }, Qt::QueuedConnection);
}

}  // namespace ui
