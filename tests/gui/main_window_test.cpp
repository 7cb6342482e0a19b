#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTimer>
#include <thread>

#include "gui_app.h"
#include "gui_support.h"
#include "shell/dialogs.h"
#include "shell/menu.h"
#include "shell/ui/menu_renderer.h"
#include "shell/ui/skin_window_widget.h"
#include "shell/ui/soft_key_bar.h"
#include "shell/window_messages.h"
#include "skin/skin_text.h"

namespace {

using testing_support::GuiAppTest;
using testing_support::ProcessEventsUntil;

QString Texts(const QMenu& menu) {
  QStringList texts;
  for (const QAction* action : menu.actions()) texts << (action->isSeparator() ? "-" : action->text());
  return texts.join("|");
}

using MainWindowTest = GuiAppTest;

TEST_F(MainWindowTest, TheMenuHasItsEntriesAtThePositionsTheCodeUses) {
  Start();
  ui::SoftKeyBar& keys = *Window().SoftKeys();
  EXPECT_EQ(keys.LeftKey()->text(), "Playlist");
  EXPECT_EQ(keys.RightKey()->text(), "Menu");

  std::unique_ptr<QMenu> menu = ui::RenderMenu(app->Menu().RightKey());
  EXPECT_EQ(Texts(*menu), "Play/Stop|Order|-|Timers|Equalizer|Bookmark|Options|-|About|-|Exit");
  const QList<QAction*> entries = menu->actions();
  EXPECT_EQ(entries[0]->objectName(), "40041");
  EXPECT_EQ(entries[10]->objectName(), "40009");
  ASSERT_NE(entries[1]->menu(), nullptr);
  EXPECT_EQ(Texts(*entries[1]->menu()),
            "Enable shuffle|Enable repeat|-|Repeat all|Repeat one|Repeat selected");
  EXPECT_TRUE(entries[1]->menu()->actions()[3]->isChecked()) << "repeat mode 1";

  QMenu* options = entries[6]->menu();
  ASSERT_NE(options, nullptr);
  EXPECT_EQ(Texts(*options),
            "FF/Rewind Step|General|Playlist|Effects|Key Mapping|File Associations|Language");
  QMenu* steps = options->actions()[0]->menu();
  ASSERT_NE(steps, nullptr);
  EXPECT_EQ(Texts(*steps), "5 seconds|10 seconds|15 seconds|30 seconds|60 seconds|120 seconds|180 seconds");
  EXPECT_TRUE(steps->actions()[4]->isChecked()) << "the first run ticks 60";
  EXPECT_EQ(steps->actions()[0]->objectName(), "2200");
  QMenu* languages = options->actions()[6]->menu();
  ASSERT_NE(languages, nullptr);
  EXPECT_EQ(languages->actions()[0]->text(), "English");
  EXPECT_TRUE(languages->actions()[0]->isChecked());
  EXPECT_EQ(ui::CommandOf(steps->actions()[1]), 2201u);
  EXPECT_EQ(ui::CommandOf(entries[1]), 0u) << "a popup is no command";
}

TEST_F(MainWindowTest, TheFaceIsTheSkinsAreaAtItsZoomAboveTheSoftKeys) {
  Start();
  ui::SkinWindowWidget* face = Window().Face();
  ASSERT_NE(face, nullptr);
  EXPECT_EQ(face->width(), 176 * Window().Zoom());
  EXPECT_EQ(face->height(), 180 * Window().Zoom());
  EXPECT_LT(face->geometry().bottom(), Window().SoftKeys()->geometry().top());
  EXPECT_TRUE(Window().isVisible());
  EXPECT_EQ(Window().windowTitle(), "Tavrinsonic");

  EXPECT_EQ(ui::FaceZoomFor({0, 0, 1920, 1040}), 2) << "a desktop";
  EXPECT_EQ(ui::FaceZoomFor({0, 0, 400, 380}), 1) << "a small desktop screen";
  EXPECT_EQ(ui::FaceZoomFor({0, 0, 720, 1400}), 4) << "a phone fits the width";
  EXPECT_EQ(ui::FaceZoomFor({0, 0, 100, 100}), 1);
}

TEST_F(MainWindowTest, SoftKeysAndMenuEntriesBecomeCommands) {
  Start();
  // The left key opens the list screen, which waits for its Back.
  QTimer::singleShot(0, [] {
    if (QWidget* screen = QApplication::activeModalWidget()) screen->close();
  });
  Window().SoftKeys()->LeftKey()->click();
  EXPECT_EQ(app->playlists, 1);
  // A menu entry chosen: the bar hands its id to the window procedure.
  QTimer::singleShot(0, [] {
    if (auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget())) {
      menu->setActiveAction(menu->actions()[0]);
      QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
      QApplication::sendEvent(menu, &enter);
    }
  });
  EXPECT_EQ(Window().SoftKeys()->OpenMenu(false), 40041u);
}

TEST_F(MainWindowTest, KeysReachTheProcedureWithThePlatformsCodes) {
  Start();
  QKeyEvent right(QEvent::KeyPress, Qt::Key_Right, Qt::NoModifier);
  QKeyEvent repeat(QEvent::KeyRelease, Qt::Key_Right, Qt::NoModifier, QString(), true);
  QKeyEvent release(QEvent::KeyRelease, Qt::Key_Right, Qt::NoModifier);
  QKeyEvent shift(QEvent::KeyPress, Qt::Key_Shift, Qt::ShiftModifier);
  QKeyEvent star(QEvent::KeyPress, Qt::Key_Asterisk, Qt::NoModifier);
  for (QKeyEvent* event : {&right, &repeat, &release, &shift, &star})
    QApplication::sendEvent(&Window(), event);
  EXPECT_EQ(app->keys, (std::vector<std::string>{"down 39", "up 39", "down 119"}));
}

TEST_F(MainWindowTest, ActivationIsRecordedAndTheCloseButtonClosesAsExitDoes) {
  Start();
  QEvent activate(QEvent::WindowActivate);
  QApplication::sendEvent(&Window(), &activate);
  EXPECT_TRUE(app->IsActive());
  QEvent deactivate(QEvent::WindowDeactivate);
  QApplication::sendEvent(&Window(), &deactivate);
  EXPECT_FALSE(app->IsActive());

  EXPECT_FALSE(Stored("WndSettings"));
  Window().close();
  EXPECT_TRUE(Window().isVisible()) << "the window stays until the program ends";
  ASSERT_TRUE(ProcessEventsUntil([&] { return Stored("WndSettings"); }));
  EXPECT_EQ(windows->RunMessageLoop(), 0) << "the quit came before the loop";
}

TEST_F(MainWindowTest, PostsFromAWorkerAndTimersReachTheApplication) {
  Start();
  std::thread worker([&] { app->Window()->Messages().Post(shell::kMessageToggleShuffle); });
  worker.join();
  ASSERT_TRUE(ProcessEventsUntil([&] { return app->Settings().shuffleEnabled; }));
  EXPECT_TRUE(app->Menu().IsChecked(shell::kCommandEnableShuffle));

  const skin::SkinTitleBar* title = Window().Face()->Skin().Layout().TitleBar();
  ASSERT_NE(title, nullptr) << "the base skin has a title line";
  app->ShowStatus("Seek to 00:10", 30);
  EXPECT_EQ(title->Message(), "Seek to 00:10");
  ASSERT_TRUE(ProcessEventsUntil([&] { return title->Message().empty(); }));
}

TEST_F(MainWindowTest, AboutShowsTheVersionWithADoneKeyAndNeverOpensTwice) {
  Start();
  QString version, title, done;
  bool modalWhileOpen = false;
  QTimer::singleShot(0, [&] {
    QWidget* dialog = QApplication::activeModalWidget();
    ASSERT_NE(dialog, nullptr);
    title = dialog->windowTitle();
    version = dialog->findChild<QLabel*>("versionText")->text();
    auto* doneKey = dialog->findChild<QPushButton*>("softkey.left");
    done = doneKey->text();
    modalWhileOpen = shell::ModalDialogOpen();
    app->Window()->DialogLauncher().About();  // refused while one is open
    doneKey->click();
  });
  app->HandleMessage(platform::Message{shell::kMessageCommand, shell::kCommandAbout, 0, nullptr});
  EXPECT_EQ(title, "About");
  EXPECT_EQ(version, "Tavrinsonic 2.14");
  EXPECT_EQ(done, "Done");
  EXPECT_TRUE(modalWhileOpen);
  EXPECT_FALSE(shell::ModalDialogOpen());
}

}  // namespace
