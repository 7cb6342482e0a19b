// The pickers and the name boxes on Qt's offscreen platform: levels read as
// they open, ticks, the choice handed to the list, File Save's rules, and
// the first start that greets an empty list with the picker.
#include <gtest/gtest.h>

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <filesystem>
#include <functional>

#include "gui_app.h"
#include "gui_support.h"
#include "platform/paths.h"
#include "playback/format_registry.h"
#include "playlist/playlist_files.h"
#include "playlist/playlist_view.h"
#include "shell/dialogs.h"
#include "shell/ui/file_name_boxes.h"
#include "shell/ui/file_picker.h"
#include "shell/ui/folder_tree.h"
#include "shell/ui/playlist_boxes.h"
#include "shell/ui/dialog_frame.h"
#include "shell/ui/soft_key_bar.h"

namespace {

namespace fs = std::filesystem;
using testing_support::ProcessEventsUntil;
using ui::FolderTree;

// Runs `act` on the next modal dialog of type T once it is showing. The
// watch ends when it has acted, or when the caller deletes it.
template <typename T>
QPointer<QTimer> WhenModal(std::function<void(T&)> act) {
  auto* timer = new QTimer;
  timer->setInterval(10);
  QObject::connect(timer, &QTimer::timeout, [timer, act = std::move(act)] {
    auto* dialog = dynamic_cast<T*>(QApplication::activeModalWidget());
    if (dialog == nullptr || !dialog->isVisible()) return;
    timer->stop();
    timer->deleteLater();
    act(*dialog);
  });
  timer->start();
  return timer;
}

void Press(QWidget& widget, int key) {
  QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
  QApplication::sendEvent(&widget, &press);
}

QTreeWidgetItem* Child(QTreeWidgetItem& node, const QString& text) {
  for (int i = 0; i < node.childCount(); ++i)
    if (node.child(i)->text(0) == text) return node.child(i);
  return nullptr;
}

QStringList Texts(const QTreeWidgetItem& node) {
  QStringList texts;
  for (int i = 0; i < node.childCount(); ++i) texts << node.child(i)->text(0);
  return texts;
}

class PickerTest : public testing_support::IsolatedEnvironmentTest {
 protected:
  void SetUp() override {
    IsolatedEnvironmentTest::SetUp();
    for (auto [id, extension] : {std::pair{playback::kFormatM3u, "m3u"}, {playback::kFormatMp3, "mp3"}}) {
      formats.AddExtension(id, extension);
      formats.Enable(id, true);
    }
    home = platform::HomeDirectory();
    view = std::make_unique<playlist::PlaylistView>(formats);
    shell::ModalDialogOpen() = false;
  }
  void TearDown() override {
    view.reset();
    IsolatedEnvironmentTest::TearDown();
  }
  std::string Make(const std::string& relative, const std::string& contents = "x") const {
    const std::string path = home + "/" + relative;
    fs::create_directories(fs::path(path).parent_path());
    testing_support::WriteFile(path, contents);
    return path;
  }
  std::vector<std::string> Paths() const {
    std::vector<std::string> paths;
    for (int i = 0; i < view->ItemCount(); ++i) paths.push_back(view->PathAt(i).substr(home.size() + 1));
    return paths;
  }

  playback::FormatRegistry formats;
  std::string home;
  std::unique_ptr<playlist::PlaylistView> view;
  QWidget owner;
};

TEST_F(PickerTest, LevelsAreReadWhenTheyOpenAndTicksFollowTheTree) {
  Make("top.mp3");
  Make("notes.txt");
  Make("album/01.mp3");
  Make("album/02.mp3");
  Make("album/disc2/03.mp3");
  Make("nothing/readme.txt");
  ui::FilePicker picker(formats, &owner);
  std::vector<std::string> delivered;
  picker.SetCallback([&](const char* path) { delivered.push_back(path == nullptr ? "(clear)" : path); });
  picker.Prepare(false, false, false, home);
  picker.Rebuild();

  FolderTree& tree = picker.Tree();
  QTreeWidgetItem* top = tree.Root();
  ASSERT_NE(top, nullptr);
  EXPECT_EQ(top->text(0), "\\");
  EXPECT_EQ(Texts(*top), (QStringList{"album", "top.mp3"})) << "folders first; no folder without media";
  QTreeWidgetItem* album = Child(*top, "album");
  ASSERT_NE(album, nullptr);
  EXPECT_EQ(album->childCount(), 0) << "not read before it opens";
  EXPECT_FALSE(FolderTree::WasExpanded(*album));

  tree.setCurrentItem(album);
  Press(tree, Qt::Key_Right);
  EXPECT_TRUE(album->isExpanded());
  EXPECT_EQ(Texts(*album), (QStringList{"disc2", "01.mp3", "02.mp3"}));
  EXPECT_EQ(Child(*album, "disc2")->childCount(), 0);

  Press(tree, Qt::Key_Return);  // ticks the album and all it shows
  EXPECT_TRUE(FolderTree::IsTicked(*album));
  EXPECT_TRUE(FolderTree::IsTicked(*Child(*album, "02.mp3")));
  QTreeWidgetItem* disc2 = Child(*album, "disc2");
  disc2->setExpanded(true);
  ASSERT_EQ(disc2->childCount(), 1);
  EXPECT_TRUE(FolderTree::IsTicked(*disc2->child(0))) << "made below a ticked folder";

  tree.SetTick(*top, true);
  tree.setCurrentItem(Child(*album, "01.mp3"));
  Press(tree, Qt::Key_Return);  // unticking clears every ancestor, not the siblings
  EXPECT_FALSE(FolderTree::IsTicked(*album));
  EXPECT_FALSE(FolderTree::IsTicked(*top));
  EXPECT_TRUE(FolderTree::IsTicked(*Child(*album, "02.mp3")));
  EXPECT_TRUE(FolderTree::IsTicked(*Child(*top, "top.mp3")));

  picker.accept();
  EXPECT_EQ(picker.result(), QDialog::Accepted);
  const std::vector<std::string> expected = {home + "/album/disc2/03.mp3", home + "/album/02.mp3",
                                             home + "/top.mp3"};
  EXPECT_EQ(delivered, expected);
}

TEST_F(PickerTest, ATickedFolderThatWasNeverOpenedIsWalkedAndAReplaceClearsFirst) {
  Make("a/one.mp3");
  Make("a/list.m3u", "one.mp3\n");  // beside its track: not loaded again
  Make("b/only.m3u", "#EXTM3U\n/elsewhere/x.mp3\n");
  view->AddEntry("/old/entry.mp3");
  ui::FilePicker picker(formats, &owner);
  picker.SetCallback([this](const char* path) { playlist::PlaylistView::AddEntry(path, view.get()); });
  picker.Prepare(false, true, false, home);
  picker.Rebuild();
  picker.Command(ui::kCommandSelectAll);
  EXPECT_TRUE(FolderTree::IsTicked(*Child(*picker.Tree().Root(), "b")));
  picker.accept();
  ASSERT_EQ(view->ItemCount(), 2) << "the old entry is gone";
  EXPECT_EQ(view->PathAt(0), home + "/a/one.mp3");
  EXPECT_EQ(view->PathAt(1), "/elsewhere/x.mp3") << "b's list, read in its place";
}

TEST_F(PickerTest, ANameThatIsntUtf8IsShownAsItCanBeAndHandedOnAsItsBytes) {
  const std::string odd = Make("caf\xe9 \xff.mp3");
  ui::FilePicker picker(formats, &owner);
  std::vector<std::string> delivered;
  picker.SetCallback([&](const char* path) { delivered.push_back(path == nullptr ? "(clear)" : path); });
  picker.Prepare(false, false, false, home);
  picker.Rebuild();
  QTreeWidgetItem* top = picker.Tree().Root();
  ASSERT_NE(top, nullptr);
  ASSERT_EQ(top->childCount(), 1);
  QTreeWidgetItem* node = top->child(0);
  EXPECT_EQ(node->text(0).toStdString(), "caf\xef\xbf\xbd \xef\xbf\xbd.mp3") << "shown with stand-ins";
  EXPECT_EQ(FolderTree::PathOf(*node), odd);
  picker.Tree().SetTick(*node, true);
  picker.accept();
  EXPECT_EQ(delivered, std::vector<std::string>{odd});
}

TEST_F(PickerTest, TheOptionRebuildsTheTreeAndAnEmptyOneSaysSo) {
  Make("empty/readme.txt");
  ui::FilePicker picker(formats, &owner);
  int calls = 0;
  picker.SetCallback([&](const char* path) { calls += path == nullptr ? 100 : 1; });
  picker.Prepare(false, true, false, home);
  picker.Rebuild();
  auto* noMedia = picker.findChild<QLabel*>("1112");
  ASSERT_NE(noMedia, nullptr);
  EXPECT_EQ(noMedia->text(), "No media files found");
  EXPECT_FALSE(noMedia->isHidden());
  EXPECT_TRUE(picker.Tree().isHidden());
  EXPECT_TRUE(picker.SoftKeys().Bar().IsChecked(ui::kCommandOnlyFoldersWithMedia));

  picker.Command(ui::kCommandShowAllFolders);
  EXPECT_TRUE(picker.ShowAllFolders());
  EXPECT_TRUE(picker.SoftKeys().Bar().IsChecked(ui::kCommandShowAllFolders));
  EXPECT_TRUE(noMedia->isHidden());
  EXPECT_EQ(Texts(*picker.Tree().Root()), QStringList{"empty"});

  picker.Command(ui::kCommandOnlyFoldersWithMedia);
  picker.accept();
  EXPECT_EQ(calls, 100) << "the list is cleared and stays empty";
}

TEST_F(PickerTest, TheFillsRunThePickerThroughTheWindowsBoxes) {
  Make("x/1.mp3");
  Make("x/2.mp3");
  Make("y/3.mp3");
  ui::QtPlaylistBoxes boxes(owner);
  view->SetDialogs(&boxes);

  WhenModal<ui::FilePicker>([](ui::FilePicker& picker) {
    ProcessEventsUntil([&] { return picker.Tree().Root() != nullptr; });
    picker.Tree().SetTick(*Child(*picker.Tree().Root(), "y"), true);
    picker.Command(ui::kCommandShowAllFolders);
    picker.Tree().SetTick(*Child(*picker.Tree().Root(), "x"), true);
    picker.SoftKeys().LeftKey()->click();  // Done
  });
  view->AddFiles();
  EXPECT_EQ(Paths(), (std::vector<std::string>{"x/1.mp3", "x/2.mp3"})) << "the rebuild forgot y's tick";
  EXPECT_EQ(view->Settings().pickerOption, 1u) << "the option comes back";

  shell::ModalDialogOpen() = true;
  EXPECT_EQ(boxes.RunPicker(playlist::PlaylistDialogs::PickerMode::kFiles, true, *view), 2);
  shell::ModalDialogOpen() = false;
  EXPECT_EQ(view->ItemCount(), 2) << "refused: nothing changed";

  view->Settings().currentIndex = 1;
  view->LoadFolderContents("\\");
  EXPECT_EQ(Paths(), (std::vector<std::string>{"x/1.mp3", "x/2.mp3", "x/1.mp3", "x/2.mp3", "y/3.mp3"}));
  EXPECT_EQ(view->CurrentIndex(), 0);
}

TEST_F(PickerTest, SaveAndLoadAListThroughTheBoxes) {
  Make("music/a.mp3");
  Make("music/b.mp3");
  ui::QtPlaylistBoxes boxes(owner);
  view->SetDialogs(&boxes);
  view->LoadFolderContents(home + "/music");
  ASSERT_EQ(view->ItemCount(), 2);

  WhenModal<ui::SaveFileDialog>([this](ui::SaveFileDialog& dialog) {
    dialog.FolderField().setText(QString::fromStdString(home + "/lists/new"));
    dialog.NameField().setText("mine");
    dialog.accept();
  });
  view->SavePlaylist();
  ASSERT_TRUE(fs::exists(home + "/lists/new/mine.m3u")) << "the folder was made, the extension added";

  WhenModal<ui::FilePicker>([](ui::FilePicker& picker) {
    ProcessEventsUntil([&] { return picker.Tree().Root() != nullptr; });
    QTreeWidgetItem* lists = Child(*picker.Tree().Root(), "lists");
    EXPECT_EQ(Child(*picker.Tree().Root(), "music"), nullptr) << "only folders with lists";
    picker.Tree().SetTick(*lists, true);
    picker.SoftKeys().LeftKey()->click();
  });
  view->AddEntry("/to/be/replaced.mp3");
  view->LoadPlaylist();
  EXPECT_EQ(Paths(), (std::vector<std::string>{"music/a.mp3", "music/b.mp3"}));
}

TEST_F(PickerTest, FileSaveAsksForANameAndAFileItCanCreate) {
  ui::SaveFileDialog dialog(formats, &owner);
  dialog.Prepare(home + "/docs");
  auto* browse = dialog.findChild<QPushButton*>("1002");
  ASSERT_NE(browse, nullptr);
  EXPECT_EQ(browse->text(), "Browse");

  std::vector<QString> messages;
  auto answer = [&](QMessageBox::StandardButton button) {
    WhenModal<QMessageBox>([&messages, button](QMessageBox& box) {
      messages.push_back(box.windowTitle() + "|" + box.text());
      box.button(button) != nullptr ? box.button(button)->click() : box.accept();
    });
  };

  answer(QMessageBox::Ok);
  dialog.accept();
  EXPECT_NE(dialog.result(), QDialog::Accepted);
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0], "Empty Name|You should enter file name first.");

  dialog.NameField().setText("party.m3u");
  dialog.accept();
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
  EXPECT_EQ(dialog.GetFileName(), home + "/docs/party.m3u.m3u");
  EXPECT_TRUE(fs::is_directory(home + "/docs"));
  EXPECT_FALSE(fs::exists(dialog.GetFileName())) << "the list is written by the caller";

  testing_support::WriteFile(home + "/docs/party.m3u.m3u", "old\n");
  dialog.setResult(0);
  answer(QMessageBox::No);
  dialog.accept();
  EXPECT_NE(dialog.result(), QDialog::Accepted);
  EXPECT_EQ(messages.back(), "File Exists|Do you want to replace existing file?");
  answer(QMessageBox::Yes);
  dialog.accept();
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
  EXPECT_EQ(testing_support::ReadFile(home + "/docs/party.m3u.m3u"), "old\n") << "untouched until written";

  testing_support::WriteFile(home + "/plain", "");
  dialog.setResult(0);
  dialog.FolderField().setText(QString::fromStdString(home + "/plain/sub"));
  answer(QMessageBox::Ok);
  dialog.accept();
  EXPECT_NE(dialog.result(), QDialog::Accepted);
  EXPECT_EQ(messages.back(), "|Can't create specified file!\nPlease check filename and try again.");

  dialog.reject();
  EXPECT_TRUE(dialog.NameField().text().isEmpty());
  EXPECT_TRUE(dialog.GetFileName().empty());
}

TEST_F(PickerTest, SelectFolderOpensDownToItsStartAndReturnsTheChoice) {
  Make("Music/Rock/a.mp3");
  fs::create_directories(home + "/Empty");
  ui::FolderPicker picker(formats, &owner);
  picker.SetPath(home + "/music/ROCK");
  picker.Prepare(home);
  QTreeWidgetItem* chosen = picker.Tree().currentItem();
  ASSERT_NE(chosen, nullptr);
  EXPECT_EQ(FolderTree::PathOf(*chosen), home + "/Music/Rock") << "found without regard to case";
  EXPECT_EQ(Texts(*picker.Tree().Root()), (QStringList{"Empty", "Music"})) << "folders only, all of them";
  EXPECT_FALSE(chosen->data(0, Qt::CheckStateRole).isValid()) << "no ticks";
  picker.accept();
  EXPECT_EQ(picker.GetPath(), home + "/Music/Rock");
  picker.reject();
  EXPECT_TRUE(picker.GetPath().empty());
}

TEST_F(PickerTest, AddUrlAsksWithAPresetAndTakesOneLine) {
  ui::QtPlaylistBoxes boxes(owner);
  view->SetDialogs(&boxes);
  WhenModal<ui::TextPrompt>([](ui::TextPrompt& prompt) {
    EXPECT_EQ(prompt.windowTitle(), "Add URL");
    QLineEdit& field = prompt.Field();
    EXPECT_EQ(field.text(), "http://");
    EXPECT_EQ(field.cursorPosition(), 7);
    Press(prompt, Qt::Key_Escape);  // the Back key deletes in the field
    EXPECT_EQ(field.text(), "http:/");
    EXPECT_TRUE(prompt.isVisible());
    field.clear();
    prompt.accept();
    EXPECT_TRUE(prompt.isVisible()) << "an empty text keeps the box";
    field.setText("http://radio.example/" + QString(300, 'a'));
    prompt.accept();
  });
  view->AddUrl();
  ASSERT_EQ(view->ItemCount(), 1);
  EXPECT_EQ(view->PathAt(0), "http://radio.example/" + std::string(260 - 21, 'a'));

  WhenModal<ui::TextPrompt>([](ui::TextPrompt& prompt) { prompt.reject(); });
  view->AddUrl();
  EXPECT_EQ(view->ItemCount(), 1);
}

using FirstStartTest = testing_support::GuiAppTest;

// No default list and no start option: the picker greets the user, and what
// is ticked there becomes the list.
TEST_F(FirstStartTest, AnEmptyListOpensThePickerWhoseChoiceBecomesTheList) {
  const std::string home = platform::HomeDirectory();
  fs::create_directories(home + "/songs");
  testing_support::WriteFile(home + "/songs/first.mp3", "x");
  testing_support::WriteFile(home + "/songs/second.mp3", "x");
  shell::ModalDialogOpen() = false;
  testing_support::SpyApp& player = Start();
  bool offered = false;
  WhenModal<ui::FilePicker>([&](ui::FilePicker& picker) {
    offered = true;
    ProcessEventsUntil([&] { return picker.Tree().Root() != nullptr; });
    QTreeWidgetItem* songs = Child(*picker.Tree().Root(), "songs");
    ASSERT_NE(songs, nullptr);
    picker.Tree().SetTick(*songs, true);
    picker.SoftKeys().LeftKey()->click();
  });
  player.OpenMedia("", true);
  EXPECT_TRUE(offered);
  playlist::PlaylistView& list = player.Playlist();
  ASSERT_EQ(list.ItemCount(), 2);
  EXPECT_EQ(list.PathAt(0), home + "/songs/first.mp3");
  EXPECT_EQ(list.PathAt(1), home + "/songs/second.mp3");
  EXPECT_FALSE(shell::ModalDialogOpen());
}

TEST_F(FirstStartTest, TheStartOptionsLoadAFolderTreeWithoutThePicker) {
  const std::string home = platform::HomeDirectory();
  for (const char* name : {"songs/a.mp3", "other/b.mp3", "chosen/c.mp3", "chosen/deeper/d.mp3"}) {
    fs::create_directories(fs::path(home + "/" + name).parent_path());
    testing_support::WriteFile(home + "/" + name, "x");
  }
  shell::ModalDialogOpen() = false;
  testing_support::SpyApp& player = Start();
  bool offered = false;
  QPointer<QTimer> watch = WhenModal<ui::FilePicker>([&](ui::FilePicker& picker) {
    offered = true;
    picker.reject();
  });
  playlist::PlaylistView& list = player.Playlist();

  player.Settings().loadLocalContent = true;
  player.OpenMedia("", true);
  EXPECT_EQ(list.ItemCount(), 4) << "the whole home folder";

  list.ClearAll();
  player.Settings().loadLocalContent = false;
  player.Settings().loadFolderContents = true;
  player.Settings().loadPath = home + "/chosen";
  player.OpenMedia("", true);
  ASSERT_EQ(list.ItemCount(), 2);
  EXPECT_EQ(list.PathAt(0), home + "/chosen/c.mp3");
  EXPECT_EQ(list.PathAt(1), home + "/chosen/deeper/d.mp3");
  EXPECT_EQ(list.CurrentIndex(), 0);

  EXPECT_FALSE(offered);
  delete watch.data();
}

}  // namespace
