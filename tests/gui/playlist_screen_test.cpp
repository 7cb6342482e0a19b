// The list screen on Qt's offscreen platform: rows painted from the model,
// the keys, move mode, and the menus' commands reaching the model.
#include "shell/ui/playlist_screen.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "gui_app.h"
#include "gui_support.h"
#include "platform/message_target.h"
#include "playlist/file_title.h"
#include "playlist/playlist_dialogs.h"
#include "playlist/playlist_editing.h"
#include "playlist/playlist_item.h"
#include "playlist/playlist_view.h"
#include "shell/menu.h"
#include "shell/ui/dialog_frame.h"
#include "shell/ui/playlist_row_delegate.h"
#include "shell/window_messages.h"

namespace {

using playlist::ITEM_CURRENT;
using playlist::ITEM_HAS_INFO;
using playlist::ITEM_SELECTED;

// The main window as the screen sees it: records posts, answers the state.
class MainWindowStandIn : public platform::MessageTarget {
 public:
  using MessageTarget::Post;
  void Post(platform::Message message) override { posted.emplace_back(message.id, message.wParam); }
  std::intptr_t Send(std::uint32_t id, std::uintptr_t, std::intptr_t) override {
    return id == shell::kMessageGetState ? state : 0;
  }
  int RemovePending(std::uint32_t) override { return 0; }

  std::vector<std::pair<std::uint32_t, std::uintptr_t>> posted;
  int state = 1;
};

// The file picker: delivers its paths to the list as the real one does.
class PickerStandIn : public playlist::PlaylistDialogs {
 public:
  int RunPicker(PickerMode, bool replace, playlist::PlaylistView& view) override {
    if (replace) playlist::PlaylistView::AddEntry(nullptr, &view);
    for (const std::string& path : picked) playlist::PlaylistView::AddEntry(path.c_str(), &view);
    return 1;
  }
  void ScanFolder(const std::string&, playlist::PlaylistView&) override {}
  std::optional<std::string> EditText(int, const std::string&) override { return std::nullopt; }
  std::optional<std::string> AskSavePath() override { return std::nullopt; }
  std::vector<std::string> picked;
};

class PlaylistScreenTest : public ::testing::Test {
 protected:
  void SetUp() override {
    view.SetMainWindow(&mainWindow);
    view.SetCurrentIndex(-1);  // nothing marked as it loads
  }
  void Add(int count) {
    for (int i = 0; i < count; ++i) view.AddEntry("/music/track" + std::to_string(i) + ".mp3");
  }
  ui::PlaylistScreen& Open() {
    screen = std::make_unique<ui::PlaylistScreen>(view, mainWindow, 1);
    screen->resize(176, 220);
    screen->show();
    QCoreApplication::processEvents();
    return *screen;
  }
  void Key(int key) {
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
    QApplication::sendEvent(&screen->List(), &press);
  }
  QImage Row(int index, int width = 200) {
    ui::PlaylistRowDelegate& rows = screen->Rows();
    QImage image(width, rows.RowHeight(), QImage::Format_RGB32);
    image.fill(Qt::magenta);
    rows.PaintRow(index, image);
    return image;
  }
  std::string Paths() const {
    std::string all;
    for (int i = 0; i < view.ItemCount(); ++i) all += playlist::FileTitle(view.PathAt(i)) + " ";
    return all;
  }

  playlist::PlaylistView view;
  MainWindowStandIn mainWindow;
  std::unique_ptr<ui::PlaylistScreen> screen;
};

struct TextCase {
  std::uint32_t displayMode;
  bool numbers;
  const char* path;
  const char* title;  // null: not read
  const char* shown;
};

TEST_F(PlaylistScreenTest, EachDisplayModeShowsItsText) {
  const TextCase cases[] = {
      {1, false, "/music/Band/01 Song.mp3", "Read Title", "Read Title"},
      {1, false, "/music/Band/01 Song.mp3", nullptr, "01 Song"},
      {2, false, "/music/Band/01 Song.mp3", "Read Title", "01 Song"},
      {3, false, "/music/Band/01 Song.mp3", "Read Title", "/music/Band/01 Song.mp3"},
      {1, false, "http://radio.example/live", nullptr, "http://radio.example/live"},
      {1, true, "/music/Band/01 Song.mp3", "Read Title", "1. Read Title"},
  };
  Open();
  for (const TextCase& c : cases) {
    view.ClearAll();
    view.AddEntry(c.path);
    if (c.title != nullptr) view.SetTitle(0, c.title);
    view.Settings().displayMode = c.displayMode;
    view.Settings().showNumbers = c.numbers ? 1 : 0;
    ui::RowContent row;
    screen->Rows().Describe(0, row);
    EXPECT_EQ(row.line.toStdString(), c.shown) << c.path << " mode " << c.displayMode;
  }
  view.Settings().displayMode = 3;
  view.AddEntry("/" + std::string(300, 'x') + ".mp3");
  ui::RowContent row;
  screen->Rows().Describe(1, row);
  EXPECT_EQ(row.line.size(), 255);
}

TEST_F(PlaylistScreenTest, EachFlagPairPaintsItsColours) {
  struct {
    std::uint32_t flags;
    QRgb back;
  } const cases[] = {{0, qRgb(0xE1, 0xE1, 0xFF)},
                     {ITEM_CURRENT, qRgb(0xFF, 0xDB, 0x79)},
                     {ITEM_SELECTED, qRgb(0x81, 0x87, 0xFF)},
                     {ITEM_SELECTED | ITEM_CURRENT, qRgb(0xE7, 0xA9, 0x00)}};
  Add(2);
  view.SetFocusIndex(1);
  Open();
  for (const auto& c : cases) {
    view.SetFlags(0, ITEM_SELECTED | ITEM_CURRENT, false);
    view.SetFlags(0, c.flags, true);
    const QImage row = Row(0);
    // The middle of the text area past the short text, and the empty time column.
    EXPECT_EQ(row.pixel(150, row.height() / 2), c.back) << c.flags;
    EXPECT_EQ(row.pixel(197, row.height() / 2), c.back) << c.flags;
  }
}

TEST_F(PlaylistScreenTest, TheTimeColumnTakesItsWidthFromTheMinutes) {
  struct {
    std::uint32_t durationMs;
    const char* shown;
    int digits;
  } const cases[] = {{62 * 60000 + 3000, "62:03", 2},
                     {100 * 60000, "100:00", 3},
                     {0, "", 1},
                     {9 * 60000 + 59000, "9:59", 1},
                     {0xFFFFFFFFu, "0:00", 1}};
  Add(1);
  view.SetFocusIndex(5);
  Open();
  ui::PlaylistRowDelegate& rows = screen->Rows();
  ASSERT_LT(rows.TimeWidth(1), rows.TimeWidth(2));
  ASSERT_LT(rows.TimeWidth(2), rows.TimeWidth(3));
  for (const auto& c : cases) {
    view.SetDuration(0, c.durationMs);
    ui::RowContent content;
    rows.Describe(0, content);
    EXPECT_EQ(content.time.toStdString(), c.shown);
    EXPECT_EQ(content.columnWidth, rows.TimeWidth(c.digits)) << c.shown;
    // The white line at the column's left edge, the row colour left of it.
    const QImage row = Row(0);
    const int edge = row.width() - content.columnWidth;
    EXPECT_EQ(row.pixel(edge, 1), qRgb(255, 255, 255)) << c.shown;
    EXPECT_EQ(row.pixel(edge - 1, 1), qRgb(0xE1, 0xE1, 0xFF)) << c.shown;
  }
}

TEST_F(PlaylistScreenTest, TheCurrentRowShowsThePlayersStateInverted) {
  Add(1);
  view.SetFlags(0, ITEM_CURRENT, true);
  view.SetFocusIndex(5);
  Open();
  const QRgb inverted = qRgb(0xFF ^ 0xFF, 0xDB ^ 0xFF, 0x79 ^ 0xFF);
  const QRgb current = qRgb(0xFF, 0xDB, 0x79);
  struct {
    int state;
    QRgb middleColumn;  // x 4 of the icon: the gap between the pause bars
  } const cases[] = {{1, inverted}, {2, inverted}, {3, current}};
  for (const auto& c : cases) {
    mainWindow.state = c.state;
    const QImage row = Row(0);
    const int top = (row.height() - 8) / 2;
    EXPECT_EQ(row.pixel(2 + 4, top + 4), c.middleColumn) << c.state;
    EXPECT_EQ(row.pixel(2 + 2, top + 4), inverted) << c.state;
  }
  ui::RowContent content;
  screen->Rows().Describe(0, content);
  EXPECT_TRUE(content.current);
}

TEST_F(PlaylistScreenTest, TheFocusRowIsFramedExceptInMoveMode) {
  Add(2);
  view.SetFocusIndex(0);
  Open();
  EXPECT_EQ(Row(0).pixel(100, 0), qRgb(0, 0, 0));
  EXPECT_EQ(Row(1).pixel(100, 0), qRgb(0xE1, 0xE1, 0xFF));
  view.SetMoveMode(true);
  EXPECT_EQ(Row(0).pixel(100, 0), qRgb(0xE1, 0xE1, 0xFF));
}

TEST_F(PlaylistScreenTest, KeysMoveTheFocusWithinTheList) {
  Add(40);
  Open();
  const int page = screen->List().RowsPerPage() + 1;
  ASSERT_GT(page, 2);
  ASSERT_LT(page, 20);
  Key(Qt::Key_Down);
  EXPECT_EQ(view.FocusIndex(), 1);
  Key(Qt::Key_Up);
  Key(Qt::Key_Up);
  EXPECT_EQ(view.FocusIndex(), 0);
  Key(Qt::Key_Right);
  EXPECT_EQ(view.FocusIndex(), page);
  Key(Qt::Key_Left);
  EXPECT_EQ(view.FocusIndex(), 0);
  view.SetFocusIndex(38);
  Key(Qt::Key_Right);
  EXPECT_EQ(view.FocusIndex(), 39);
  EXPECT_TRUE(screen->List().viewport()->rect().contains(
      screen->List().visualRect(screen->List().model()->index(39, 0))));
  Key(Qt::Key_Return);
  EXPECT_TRUE(view.FlagsAt(39) & ITEM_SELECTED);
  Key(Qt::Key_Return);
  EXPECT_FALSE(view.FlagsAt(39) & ITEM_SELECTED);
}

TEST_F(PlaylistScreenTest, PlayMakesTheFocusRowCurrentAndPostsPlay) {
  Add(5);
  view.SetFocusIndex(3);
  Open();
  screen->RunCommand(playlist::kCommandPlayFocused);
  EXPECT_EQ(view.CurrentIndex(), 3);
  EXPECT_TRUE(view.FlagsAt(3) & ITEM_CURRENT);
  ASSERT_FALSE(mainWindow.posted.empty());
  EXPECT_EQ(mainWindow.posted.back(), (std::pair<std::uint32_t, std::uintptr_t>{playlist::kMessagePlay, 2}));
}

TEST_F(PlaylistScreenTest, AClickFocusesARowAndADoubleClickPlaysIt) {
  Add(5);
  Open();
  const auto click = [&](int row, QEvent::Type type) {
    const QPoint at = screen->List().visualRect(screen->List().model()->index(row, 0)).center();
    QMouseEvent press(type, at, screen->List().viewport()->mapToGlobal(at), Qt::LeftButton, Qt::LeftButton,
                      Qt::NoModifier);
    QApplication::sendEvent(screen->List().viewport(), &press);
    QMouseEvent release(QEvent::MouseButtonRelease, at, screen->List().viewport()->mapToGlobal(at),
                        Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(screen->List().viewport(), &release);
  };
  click(2, QEvent::MouseButtonPress);
  EXPECT_EQ(view.FocusIndex(), 2);
  EXPECT_TRUE(mainWindow.posted.empty()) << "a click only moves the focus";
  click(3, QEvent::MouseButtonPress);
  click(3, QEvent::MouseButtonDblClick);
  EXPECT_EQ(view.FocusIndex(), 3);
  EXPECT_EQ(view.CurrentIndex(), 3);
  ASSERT_FALSE(mainWindow.posted.empty());
  EXPECT_EQ(mainWindow.posted.back(), (std::pair<std::uint32_t, std::uintptr_t>{playlist::kMessagePlay, 2}));
}

TEST_F(PlaylistScreenTest, MoveModeMovesTheSelectedBlockAndKeepsTheSoftKeys) {
  Add(8);
  view.SetFlags(2, ITEM_SELECTED, true);
  view.SetFlags(5, ITEM_SELECTED, true);
  view.SetFocusIndex(5);
  Open();
  screen->RunCommand(playlist::kCommandMoveItems);
  ASSERT_TRUE(view.MoveMode());
  EXPECT_TRUE(screen->SoftKeys().Bar().IsChecked(playlist::kCommandMoveItems));
  // The bar's keys are popups: the request to turn Play into End moving finds no such key.
  EXPECT_EQ(screen->SoftKeys().LeftKey()->text(), "File");
  Key(Qt::Key_Up);
  EXPECT_EQ(Paths(), "track0 track2 track1 track3 track5 track4 track6 track7 ");
  EXPECT_EQ(view.FocusIndex(), 4);
  Key(Qt::Key_Left);  // a page: cut to the one row left above the block
  EXPECT_EQ(Paths(), "track2 track0 track1 track5 track3 track4 track6 track7 ");
  EXPECT_EQ(view.FocusIndex(), 0);
  Key(Qt::Key_Return);
  EXPECT_FALSE(view.MoveMode());
  EXPECT_FALSE(screen->SoftKeys().Bar().IsChecked(playlist::kCommandMoveItems));
  EXPECT_TRUE(view.FlagsAt(0) & ITEM_SELECTED);
  EXPECT_TRUE(view.FlagsAt(3) & ITEM_SELECTED);
}

TEST_F(PlaylistScreenTest, TheSoftKeysRequestChangesAKeyThatIsTheCommand) {
  shell::MenuBar bar(shell::MenuItem::Command(playlist::kCommandPlayFocused, ""), shell::MenuItem());
  ui::SoftKeyBar keys(bar, {});
  EXPECT_TRUE(
      keys.ChangeKeyCommand(playlist::kCommandPlayFocused, playlist::kCommandMoveItems, "End moving"));
  EXPECT_EQ(bar.LeftKey().id, std::uint32_t(playlist::kCommandMoveItems));
  EXPECT_EQ(keys.LeftKey()->text(), "End moving");
  EXPECT_FALSE(keys.ChangeKeyCommand(playlist::kCommandPlayFocused, 1, "x"));
}

TEST_F(PlaylistScreenTest, MenuCommandsReachTheModel) {
  PickerStandIn picker;
  picker.picked = {"/music/c.mp3", "/music/a.mp3", "/music/b.mp3"};
  view.SetDialogs(&picker);
  view.Settings().sortOnLoad = 0;
  Open();
  screen->RunCommand(playlist::kCommandAddFiles);
  EXPECT_EQ(screen->List().model()->rowCount(), 3);
  screen->RunCommand(playlist::kCommandSelectAll);
  EXPECT_TRUE(view.FlagsAt(2) & ITEM_SELECTED);
  // The sort popup is made on demand; its Reverse entry reverses the list.
  QString popupTexts;
  QTimer::singleShot(0, [&popupTexts] {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    if (menu == nullptr) return;
    for (QAction* action : menu->actions())
      popupTexts += (action->isSeparator() ? "-" : action->text()) + "|";
    if (QAction* reverse = menu->findChild<QAction*>("1506")) menu->setActiveAction(reverse);
    QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QApplication::sendEvent(menu, &enter);
  });
  screen->RunCommand(playlist::kCommandSortPopup);
  EXPECT_EQ(popupTexts.toStdString(),
            "Sort list by title|Sort list by filename|Sort list by full path|Sort list by track number|-|"
            "Reverse List|Randomize List|");
  EXPECT_EQ(Paths(), "b a c ");
  screen->RunCommand(playlist::kCommandRemoveAll);
  EXPECT_EQ(screen->List().model()->rowCount(), 0);
}

TEST_F(PlaylistScreenTest, InfoShowsTheFirstSelectedPath) {
  Add(3);
  view.SetFlags(1, ITEM_SELECTED, true);
  view.SetFlags(2, ITEM_SELECTED, true);
  Open();
  QString shown;
  QTimer::singleShot(0, [&shown] {
    if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
      shown = box->windowTitle() + ": " + box->text();
      box->accept();
    }
  });
  screen->RunCommand(playlist::kCommandInfo);
  EXPECT_EQ(shown.toStdString(), "Info: Selected file path is \"/music/track1.mp3\"");
}

// Counts the paints of a widget.
class PaintCounter : public QObject {
 public:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::Paint) ++paints;
    return false;
  }
  int paints = 0;
};

TEST_F(PlaylistScreenTest, ARowReadByTheReaderThreadIsRedrawnOnTheWindowThread) {
  Add(3);
  Open();
  testing_support::ProcessEventsFor(50);
  PaintCounter counter;
  screen->List().viewport()->installEventFilter(&counter);
  std::thread reader([this] { screen->PostRowRead(1); });
  reader.join();
  EXPECT_EQ(counter.paints, 0) << "nothing is drawn on the reader's thread";
  EXPECT_TRUE(testing_support::ProcessEventsUntil([&] { return counter.paints > 0; }, 2000));
}

// The whole way: the left soft key's command opens the screen over the
// player's list; scrolling by message moves the selected row in move mode;
// Back closes it.
using PlaylistScreenAppTest = testing_support::GuiAppTest;

TEST_F(PlaylistScreenAppTest, TheSoftKeyOpensTheScreenAndScrollMessagesMoveInMoveMode) {
  testing_support::SpyApp& player = Start();
  playlist::PlaylistView& list = player.Playlist();
  for (const char* path : {"/m/a.mp3", "/m/b.mp3", "/m/c.mp3"}) list.AddEntry(path);
  list.SetFlags(2, ITEM_SELECTED, true);
  int rowsShown = -1;
  bool closed = false;
  QTimer::singleShot(0, [&] {
    auto* screen = dynamic_cast<ui::PlaylistScreen*>(QApplication::activeModalWidget());
    if (screen == nullptr) return;
    rowsShown = screen->List().model()->rowCount();
    screen->RunCommand(playlist::kCommandMoveItems);
    Window().Messages().Send(shell::kMessageScrollUp);
    screen->RunCommand(shell::kCommandCancel);
    closed = screen->isHidden();
  });
  Window().Messages().Send(shell::kMessageCommand, shell::kCommandPlaylist);
  EXPECT_EQ(player.playlists, 1);
  EXPECT_EQ(rowsShown, 3);
  EXPECT_TRUE(closed);
  EXPECT_EQ(list.PathAt(1), "/m/c.mp3");
  EXPECT_TRUE(list.MoveMode()) << "move mode outlives the screen";
}

}  // namespace
