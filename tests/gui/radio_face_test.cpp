// Internet radio on the face: the player with its real window and skin plays
// a real Icecast server's mounts (a source in the test sends known files,
// paced as a live encoder does) into a device paced at real time. The face's
// texts are read from the skin's elements, as a person reads them.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QImage>
#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

#include "gui_app.h"
#include "icecast_server.h"
#include "platform/wave_out.h"
#include "shell/ui/skin_window_widget.h"
#include "skin/skin_element.h"
#include "skin/skin_text.h"
#include "skin/skin_window.h"

namespace {

using net_testing::IcecastServer;
using net_testing::IcecastSource;

// Sends a file of `seconds` of sound over and over until the test ends, at
// the pace of its sound, as a live encoder does.
class Feeder {
 public:
  Feeder(IcecastSource& source, std::string bytes, int seconds)
      : thread([this, &source, seconds, sent = std::move(bytes)] {
          constexpr std::size_t kPiece = 1024;
          const int pauseMs = static_cast<int>(kPiece * 1000 * seconds / sent.size());
          while (!stop) {
            for (std::size_t at = 0; at < sent.size() && !stop; at += kPiece) {
              if (!source.Send(std::string_view(sent).substr(at, kPiece))) return;
              std::this_thread::sleep_for(std::chrono::milliseconds(pauseMs));
            }
          }
        }) {}
  ~Feeder() {
    stop = true;
    thread.join();
  }

 private:
  std::atomic<bool> stop{false};
  std::thread thread;
};

class RadioFaceTest : public testing_support::GuiAppTest {
 protected:
  void SetUp() override {
    GuiAppTest::SetUp();
    platform::SetWaveOutDriver(platform::MakeNullWaveOutDriver());
    std::string error;
    ASSERT_TRUE(server.Start(error)) << error;
  }
  void TearDown() override {
    GuiAppTest::TearDown();
    platform::SetWaveOutDriver(nullptr);
    server.Stop();
  }

  // Runs the window's events until `done`; false after `limitMs`.
  static bool RunUntil(const std::function<bool()>& done, int limitMs) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(limitMs);
    while (!done()) {
      if (std::chrono::steady_clock::now() > deadline) return false;
      QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return true;
  }
  std::string Text(const char* id) {
    auto* text = static_cast<skin::SkinText*>(Window().Face()->Skin().FindElement(skin::kTypeText, id));
    return text != nullptr && text->IsVisible() ? text->Text() : std::string("(hidden)");
  }
  // The pixels of an element as the face last drew them.
  QImage Drawn(const char* id) {
    ui::SkinWindowWidget& face = *Window().Face();
    const skin::SkinElement* element = face.Skin().FindElement(skin::kTypeText, id);
    if (element == nullptr) return QImage();
    const skin::SkinRect& r = element->Rect();
    const int zoom = face.Zoom();
    return face.Surface().toImage().copy(r.x * zoom, r.y * zoom, r.w * zoom, r.h * zoom);
  }
  std::string Title() {
    auto* bar = static_cast<skin::SkinTitleBar*>(Window().Face()->Skin().FindElement(skin::kTypeTitleBar, nullptr));
    return bar != nullptr ? bar->ShownText() : std::string();
  }
  static std::string Media(const char* name) {
    return testing_support::ReadFile(std::string(TS_TEST_DATA_DIR) + "/net/" + name);
  }

  IcecastServer server;
};

TEST_F(RadioFaceTest, AnMp3StationShowsItsRatesAndItsTitlesWithoutALength) {
  IcecastSource source;
  ASSERT_TRUE(source.Connect(server.Port(), "/test.mp3", "audio/mpeg"));
  std::string error;
  ASSERT_TRUE(server.UpdateTitle("/test.mp3", "First Title", error)) << error;
  Feeder feeder(source, Media("tone.mp3"), 4);
  ASSERT_TRUE(server.WaitForMount("/test.mp3", 5000));

  testing_support::SpyApp& player = Start();
  player.OpenMedia(server.Url("/test.mp3"), true);  // as from the command line
  player.StartOfPlaybackDecision();
  // Until the stream's format is found the face shows zeros; then its rates,
  // drawn on the face and not only kept by the elements.
  ASSERT_TRUE(RunUntil([&] { return Text("BITRATE") == "0"; }, 10000)) << Text("BITRATE");
  const QImage before = Drawn("BITRATE");
  EXPECT_TRUE(RunUntil([&] { return Text("BITRATE") == "128"; }, 10000)) << Text("BITRATE");
  EXPECT_TRUE(Drawn("BITRATE") != before) << "the new rate is drawn";
  EXPECT_EQ(Text("SAMPLINGRATE"), "44100");
  EXPECT_TRUE(RunUntil([&] { return Title().find("First Title") != std::string::npos; }, 10000)) << Title();
  EXPECT_EQ(Title().find(" ("), std::string::npos) << "a stream has no length: " << Title();

  ASSERT_TRUE(server.UpdateTitle("/test.mp3", "Second Title", error)) << error;
  // The server passes a title on with the data that follows it: a second
  // for the client to read up to it.
  EXPECT_TRUE(RunUntil([&] { return Title().find("Second Title") != std::string::npos; }, 5000)) << Title();
  EXPECT_EQ(Text("BITRATE"), "128") << "the rates stay while the stream plays";
}

TEST_F(RadioFaceTest, AnOggStationShowsItsRatesAndEachLinksTitle) {
  IcecastSource source;
  ASSERT_TRUE(source.Connect(server.Port(), "/test.ogg", "application/ogg"));
  Feeder feeder(source, Media("chained.ogg"), 6);
  ASSERT_TRUE(server.WaitForMount("/test.ogg", 5000));

  testing_support::SpyApp& player = Start();
  player.OpenMedia(server.Url("/test.ogg"), false);
  EXPECT_TRUE(RunUntil([&] { return Text("SAMPLINGRATE") == "44100"; }, 10000)) << Text("SAMPLINGRATE");
  EXPECT_NE(Text("BITRATE"), "0");
  EXPECT_TRUE(RunUntil([&] { return Title().find("First Link") != std::string::npos; }, 10000)) << Title();
  EXPECT_EQ(Title().find(" ("), std::string::npos) << "a stream has no length: " << Title();
  EXPECT_TRUE(RunUntil([&] { return Title().find("Second Link") != std::string::npos; }, 10000)) << Title();
}

}  // namespace
