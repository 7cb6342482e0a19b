// The skin window on Qt's offscreen platform, with the test skin of flat
// colours (tests/data/skin) and a player that answers the polls.
#include "skin/skin_window.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QProcess>
#include <filesystem>

#include "gui_app.h"
#include "gui_support.h"
#include "platform/message_queue.h"
#include "platform/paths.h"
#include "shell/ui/o_slider.h"
#include "shell/ui/skin_window_widget.h"
#include "support/test_environment.h"

namespace {

const std::string kTestSkin = std::string(TS_TEST_DATA_DIR) + "/skin/";
constexpr int kZoom = 2;
constexpr QRgb kBackground = 0xFF404040;
constexpr QRgb kRed = 0xFFFF0000, kGreen = 0xFF00FF00, kBlue = 0xFF0000FF, kCyan = 0xFF00FFFF;
constexpr QRgb kThumb = 0xFF0000C0;

// The main window as the skin sees it: answers state, length and position.
class FakePlayer : public platform::MessageHandler {
 public:
  std::intptr_t HandleMessage(const platform::Message& message) override {
    if (message.id == 2569) return state;
    if (message.id == 2566) return length;
    if (message.id == 2565) return position;
    return 0;
  }
  std::intptr_t state = 1, length = 0, position = 0;
};

class SkinWindowTest : public ::testing::Test {
 protected:
  void SetUp() override {
    face = ui::SkinWindowWidget::Create(kTestSkin, kZoom, parent);
    ASSERT_NE(face, nullptr);
  }
  // The colour of skin pixel (x, y) as the window shows it now.
  QRgb At(int x, int y) { return face->grab().toImage().pixel(x * kZoom + 1, y * kZoom + 1); }
  void Mouse(QEvent::Type type, int x, int y) {
    const QPointF point(x * kZoom + 1, y * kZoom + 1);
    QMouseEvent event(type, point, point, Qt::LeftButton,
                      type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(face.get(), &event);
  }
  void Click(int x, int y) {
    Mouse(QEvent::MouseButtonPress, x, y);
    Mouse(QEvent::MouseButtonRelease, x, y);
  }
  void Poll(std::intptr_t state, std::intptr_t length = 0, std::intptr_t position = 0) {
    player.state = state;
    player.length = length;
    player.position = position;
    face->Skin().HandleMessage(platform::Message{platform::kMessageTimer, skin::kTimerPoll, 0, nullptr});
  }
  bool TimerShows() {
    const QImage shot = face->grab().toImage();
    for (int y = 70 * kZoom; y < 84 * kZoom; ++y) {
      for (int x = 10 * kZoom; x < 70 * kZoom; ++x) {
        if (shot.pixel(x, y) != kBackground) return true;
      }
    }
    return false;
  }

  FakePlayer player;
  platform::MessageQueue parent{&player};
  std::unique_ptr<ui::SkinWindowWidget> face;
};

TEST_F(SkinWindowTest, APressAndReleasePostsTheRowsMessageAtTheZoomedPlace) {
  EXPECT_EQ(face->size(), QSize(176 * kZoom, 180 * kZoom));
  EXPECT_EQ(At(12, 12), kRed);
  Mouse(QEvent::MouseButtonPress, 25, 15);
  EXPECT_EQ(At(12, 12), kGreen) << "the first of two overlapping buttons took the press";
  Mouse(QEvent::MouseButtonRelease, 25, 15);
  EXPECT_EQ(parent.PendingIds(), (std::vector<std::uint32_t>{2563})) << "NEXT, not STOP";
  EXPECT_EQ(At(12, 12), kRed);

  Mouse(QEvent::MouseButtonPress, 12, 12);
  Mouse(QEvent::MouseMove, 100, 100);
  Mouse(QEvent::MouseButtonRelease, 100, 100);
  EXPECT_EQ(parent.PendingIds().size(), 1u) << "released elsewhere: nothing";
  Click(5, 5);
  EXPECT_EQ(parent.PendingIds().size(), 1u) << "the background takes no press";
}

TEST_F(SkinWindowTest, ACheckButtonBoundToNothingTogglesOnEachClick) {
  EXPECT_EQ(At(42, 32), kBlue);
  Click(42, 32);
  EXPECT_EQ(At(42, 32), kCyan);
  EXPECT_EQ(parent.PendingIds(), (std::vector<std::uint32_t>{2644})) << "MUTE's message";
  Poll(2, 1000, 0);
  EXPECT_EQ(At(42, 32), kCyan) << "nothing sets it back";
  Click(42, 32);
  EXPECT_EQ(At(42, 32), kBlue);
}

TEST_F(SkinWindowTest, ThePollShowsTheTrackWhilePlayingAndWipesItOnStop) {
  Poll(1);
  EXPECT_EQ(At(13, 53), kBackground) << "stopped: no seek bar";
  EXPECT_FALSE(TimerShows());
  EXPECT_EQ(At(12, 132), 0xFF808000) << "the stop icon";

  Poll(2, 100000, 50000);
  const int thumbLeft = 10 + 92 * 500 / 1000;
  EXPECT_EQ(At(thumbLeft + 3, 53), kThumb) << "half way";
  EXPECT_EQ(At(thumbLeft, 50), kBackground) << "the thumb's magenta frame is transparent";
  EXPECT_TRUE(TimerShows());
  EXPECT_EQ(At(12, 32), kCyan) << "PLAYPAUSE checked while playing";
  EXPECT_EQ(At(12, 132), 0xFF008000);

  Poll(3, 100000, 50000);
  EXPECT_EQ(At(12, 32), kBlue) << "paused: PLAYPAUSE unchecked";
  EXPECT_EQ(At(12, 132), 0xFF800080);
  EXPECT_EQ(At(thumbLeft + 3, 53), kThumb) << "the seek bar stays";
  EXPECT_TRUE(TimerShows());

  Poll(2, 0, 7000);
  EXPECT_EQ(At(13, 53), kThumb) << "a stream without length: the seek bar at 0";
  EXPECT_EQ(At(thumbLeft + 3, 53), kBackground);

  Poll(1);
  EXPECT_EQ(At(13, 53), kBackground) << "the stop wipes the seek bar";
  EXPECT_FALSE(TimerShows()) << "and the timer";
  EXPECT_EQ(At(12, 32), kBlue);
}

TEST_F(SkinWindowTest, AMappedKeyLightsItsButtonAndAnUnboundKeyChangesNothing) {
  const QImage before = face->grab().toImage();
  face->KeyFeedback(0x41, true);
  EXPECT_EQ(face->grab().toImage(), before);
  face->KeyFeedback(0x27, true);  // NEXT's key
  EXPECT_EQ(At(12, 12), kGreen);
  face->KeyFeedback(0x27, false);
  EXPECT_EQ(At(12, 12), kRed);
  EXPECT_TRUE(parent.PendingIds().empty()) << "the key's command is the player's business";
}

TEST(SkinLoadTest, MissingOrBrokenBitmapsAndLayoutsLoadNoSkin) {
  FakePlayer player;
  platform::MessageQueue parent(&player);
  const struct {
    const char* damage;
    const char* file;
    const char* contents;  // nullptr: the file is removed
  } cases[] = {{"a missing bitmap", "icons.gif", nullptr},
               {"a text file named like a picture", "sheet.png", "not a picture\n"},
               {"an empty layout", "layout.xml", ""}};
  for (const auto& c : cases) {
    testing_support::TemporaryDirectory folder;
    std::filesystem::copy(kTestSkin, folder.Path(), std::filesystem::copy_options::recursive);
    if (c.contents == nullptr) std::filesystem::remove(folder.File(c.file));
    else testing_support::WriteFile(folder.File(c.file), c.contents);
    EXPECT_EQ(ui::SkinWindowWidget::Create(folder.Path() + "/", 1, parent), nullptr) << c.damage;
  }
  ui::BitmapFile file;
  EXPECT_FALSE(file.LoadFile(kTestSkin + "missing.png"));
  EXPECT_TRUE(file.LoadFile(kTestSkin + "layout.xml"));
  EXPECT_TRUE(file.IsNull()) << "opened, but no picture";
  ASSERT_TRUE(file.LoadFile(kTestSkin + "extra.jpg"));
  EXPECT_EQ(file.Width(), 8);
}

// A damaged skin ends the start without a word: the whole program.
using SkinProcessTest = testing_support::GuiAppTest;
TEST_F(SkinProcessTest, ABrokenSkinEndsThePlayerSilently) {
  const std::string skinFolder = platform::DefaultInstallDirectory() + "/BaseSkin";
  std::filesystem::create_directories(skinFolder);
  testing_support::WriteFile(skinFolder + "/layout.xml", "<skin><preload>");
  QProcess player;
  player.start(TS_PLAYER, {});
  ASSERT_TRUE(player.waitForFinished(20000));
  EXPECT_EQ(player.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(player.exitCode(), 0);
  EXPECT_EQ(player.readAllStandardOutput(), "");
  EXPECT_EQ(player.readAllStandardError(), "");
}

TEST(OSliderTest, KeysStepWithinTheRangeAndReportOnlyChanges) {
  ui::OSlider slider;
  std::vector<int> reported;
  slider.onScroll = [&](ui::OSlider&, int position) { reported.push_back(position); };
  slider.SetPosition(40, false);
  EXPECT_EQ(slider.Position(), 28) << "clamped to the maximum";
  QKeyEvent down(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);
  QKeyEvent up(QEvent::KeyPress, Qt::Key_Up, Qt::NoModifier);
  QApplication::sendEvent(&slider, &down);
  EXPECT_TRUE(reported.empty()) << "at the bottom already";
  QApplication::sendEvent(&slider, &up);
  EXPECT_EQ(reported, (std::vector<int>{27}));
  EXPECT_EQ(slider.ThumbTop(), 27 * (112 - 8) / 28);
  slider.SetRange(5, 5, false);
  EXPECT_EQ(slider.Position(), 5);
  EXPECT_EQ(slider.ThumbTop(), 0) << "no range: the thumb at the top";
}

}  // namespace
