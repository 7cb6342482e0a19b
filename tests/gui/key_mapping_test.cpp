// Keys in the main window reach their actions; the Key Mapping dialog and
// its capture popup change the mapping, which is saved.
#include <gtest/gtest.h>

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QTreeWidget>
#include <algorithm>

#include "gui_app.h"
#include "gui_support.h"
#include "platform/registry.h"
#include "shell/key_map.h"
#include "shell/ui/key_mapping_dialog.h"
#include "shell/window_messages.h"
#include "skin/skin_action_table.h"

namespace {

using testing_support::GuiAppTest;
using testing_support::ProcessEventsUntil;

class KeyMappingTest : public GuiAppTest {
 protected:
  void SetUp() override {
    GuiAppTest::SetUp();
    skin::Actions() = skin::DefaultActions();
  }
  void TearDown() override {
    GuiAppTest::TearDown();
    skin::Actions() = skin::DefaultActions();
  }
  static void Press(QWidget& widget, int qtKey, bool release = true) {
    QKeyEvent down(QEvent::KeyPress, qtKey, Qt::NoModifier);
    QApplication::sendEvent(&widget, &down);
    if (!release) return;
    QKeyEvent up(QEvent::KeyRelease, qtKey, Qt::NoModifier);
    QApplication::sendEvent(&widget, &up);
  }
  std::uint16_t KeyOf(int row) { return skin::Actions()[static_cast<std::size_t>(row)].key; }
  QString KeyColumn(QTreeWidget& list, int line) { return list.topLevelItem(line)->text(1); }
};

// Each default key, pressed and released in the main window, reaches its
// action's message once (the actions themselves are held back here).
TEST_F(KeyMappingTest, EachDefaultKeyReachesItsActionFromTheKeyboard) {
  Start();
  struct Case {
    int qtKey;
    std::uint32_t message;
  };
  const Case cases[] = {
      {Qt::Key_Return, shell::kMessagePlayPause},
      {Qt::Key_Right, 2563},
      {Qt::Key_Left, 2564},
      {Qt::Key_Up, 2642},
      {Qt::Key_Down, 2643},
      {Qt::Key_1, 2658},
      {Qt::Key_2, 2657},
      {Qt::Key_4, 2656},
      {Qt::Key_5, 2655},
      {Qt::Key_Hangup, shell::kMessageStop},
      {Qt::Key_3, 2648},
      {Qt::Key_NumberSign, 2652},
      {Qt::Key_Asterisk, 2653},
      {Qt::Key_6, 2329},
  };
  for (const Case& c : cases) app->recordOnly.insert(c.message);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.message);
    app->handled.clear();
    Press(Window(), c.qtKey);
    const auto seen = [&] { return std::count(app->handled.begin(), app->handled.end(), c.message); };
    EXPECT_TRUE(ProcessEventsUntil([&] { return seen() != 0; }));
    testing_support::ProcessEventsFor(20);
    EXPECT_EQ(seen(), 1);
  }
}

// Shuffle (2), repeat (1), equalizer (5) and extra bass (4) show their
// effect at once; the others are seen as the messages they post.
TEST_F(KeyMappingTest, DefaultKeysInTheMainWindowReachTheirActions) {
  Start();
  Press(Window(), Qt::Key_2);
  ASSERT_TRUE(ProcessEventsUntil([&] { return app->Settings().shuffleEnabled; }));
  Press(Window(), Qt::Key_1);
  ASSERT_TRUE(ProcessEventsUntil([&] { return app->Settings().repeatEnabled; }));
  const std::uint32_t equalizer = app->EqualizerSettings().GetEnabled();
  Press(Window(), Qt::Key_5);
  ASSERT_TRUE(ProcessEventsUntil([&] { return app->EqualizerSettings().GetEnabled() != equalizer; }));

  app->keys.clear();
  Press(Window(), Qt::Key_Hangup);
  EXPECT_EQ(app->keys, (std::vector<std::string>{"up 115", "down 115"})) << "End acts on release only";
  app->keys.clear();
  Press(Window(), Qt::Key_Q);
  EXPECT_EQ(app->keys, (std::vector<std::string>{"down 81", "up 81"}));
  EXPECT_EQ(shell::RowOfKey(81), -1) << "an unmapped key does nothing";
}

// In the dialog: Action on a line opens the popup, the key pressed there
// becomes the line's key and leaves its holder; Back unmaps, or in the popup
// only cancels. Done closes, the settings are saved, and a new start
// brings the mapping back.
TEST_F(KeyMappingTest, TheDialogCapturesUnmapsAndTheMappingSurvivesARestart) {
  Start();
  QString title, hint, popupTitle, shuffleAfter, muteAfter, nextAfter, stopAfterCancel;
  int lines = 0;
  bool popupAfterKey = true;
  QTimer::singleShot(0, [&] {
    auto* dialog = dynamic_cast<ui::KeyMappingDialog*>(QApplication::activeModalWidget());
    ASSERT_NE(dialog, nullptr);
    title = dialog->windowTitle();
    hint = dialog->findChild<QLabel*>("1004")->text();
    QTreeWidget& list = dialog->List();
    EXPECT_EQ(&list, dialog->findChild<QTreeWidget*>("1006"));
    lines = list.topLevelItemCount();
    // Mute (line 12) gets the key 2, which shuffle (line 6) had.
    list.setCurrentItem(list.topLevelItem(12));
    Press(list, Qt::Key_Return);
    ASSERT_NE(dialog->Popup(), nullptr);
    popupTitle = dialog->Popup()->windowTitle();
    Press(*dialog->Popup(), Qt::Key_2);
    popupAfterKey = dialog->Popup() != nullptr;
    muteAfter = KeyColumn(list, 12);
    shuffleAfter = KeyColumn(list, 6);
    // Back in the popup cancels only; Back on the list unmaps.
    list.setCurrentItem(list.topLevelItem(10));
    Press(list, Qt::Key_Return);
    Press(*dialog->Popup(), Qt::Key_Escape);
    EXPECT_EQ(dialog->Popup(), nullptr);
    stopAfterCancel = KeyColumn(list, 10);
    list.setCurrentItem(list.topLevelItem(1));
    Press(list, Qt::Key_Escape);
    nextAfter = KeyColumn(list, 1);
    // Volume Up is bound at once, without the popup.
    list.setCurrentItem(list.topLevelItem(13));
    Press(list, Qt::Key_VolumeUp);
    EXPECT_EQ(KeyColumn(list, 13), "Vol. Up");
    dialog->findChild<QPushButton*>("softkey.left")->click();
  });
  app->HandleMessage(platform::Message{shell::kMessageCommand, shell::kCommandKeyMapping, 0, nullptr});
  EXPECT_EQ(title, "Key Mapping");
  EXPECT_EQ(hint, "Action = change, Back = unmap");
  EXPECT_EQ(lines, 17) << "no bookmark store: no bookmark line";
  EXPECT_EQ(popupTitle, "Press key for\n\"Mute\"");
  EXPECT_FALSE(popupAfterKey);
  EXPECT_EQ(muteAfter, "2");
  EXPECT_EQ(shuffleAfter, "None");
  EXPECT_EQ(stopAfterCancel, "End");
  EXPECT_EQ(nextAfter, "None");
  EXPECT_EQ(KeyOf(skin::kRowMute), 50);
  EXPECT_EQ(KeyOf(skin::kRowShuffle), 0);
  EXPECT_EQ(KeyOf(skin::kRowNext), 0);
  EXPECT_EQ(KeyOf(skin::kRowLoadFiles), 117);
  EXPECT_FALSE(shell::ModalDialogOpen());
  EXPECT_EQ(shell::KeyFilter().target, &Window().Messages());

  // The remapped key works in the main window.
  app->keys.clear();
  Press(Window(), Qt::Key_2);
  EXPECT_EQ(shell::RowOfKey(50), skin::kRowMute);
  EXPECT_FALSE(app->Settings().shuffleEnabled);

  const auto keys = registry->GetValue(platform::RegistryRoot::LocalMachine, shell::kSettingsKeyPath, "Keys");
  ASSERT_TRUE(keys.has_value()) << "the settings were saved when the dialog closed";
  ASSERT_EQ(keys->data.size(), 56u);
  EXPECT_EQ(static_cast<unsigned char>(keys->data[2 * skin::kRowMute]), 50);
  EXPECT_EQ(static_cast<unsigned char>(keys->data[2 * skin::kRowShuffle]), 0);
}

}  // namespace
