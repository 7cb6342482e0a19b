// The player as a process: a start that closes on a signal, and later starts
// that hand over to a running instance (the test process itself, or another
// player process).
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <QProcess>
#include <filesystem>

#include "gui_app.h"
#include "gui_support.h"
#include "platform/local_time.h"
#include "platform/paths.h"

namespace {

using testing_support::ProcessEventsFor;
using testing_support::ProcessEventsUntil;

constexpr std::uint64_t kSecond = 10'000'000;
// Generous bounds: they catch a process that hangs, they don't time anything.
constexpr int kProcessBoundMs = 20000;

class PlayerProcessTest : public testing_support::GuiAppTest {
 protected:
  std::string SocketPath() { return platform::JoinPath(platform::RuntimeDirectory(), "instance"); }

  // Starts the player; the test's own event loop runs meanwhile, so that an
  // instance in this process answers. False if it didn't end in time.
  bool RunPlayer(const QStringList& arguments, int* exitCode = nullptr) {
    QProcess player;
    player.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    player.start(TS_PLAYER, arguments);
    if (!player.waitForStarted(kProcessBoundMs)) return false;
    const bool ended =
        ProcessEventsUntil([&] { return player.state() == QProcess::NotRunning; }, kProcessBoundMs);
    if (!ended) {
      player.kill();
      player.waitForFinished();
      return false;
    }
    if (exitCode != nullptr) *exitCode = player.exitStatus() == QProcess::NormalExit ? player.exitCode() : -1;
    return true;
  }

  // Starts the player as the running instance and waits until its message
  // loop answers.
  void StartRunningPlayer(QProcess& player) {
    player.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    player.start(TS_PLAYER, {});
    ASSERT_TRUE(player.waitForStarted(kProcessBoundMs));
    ASSERT_TRUE(ProcessEventsUntil(
        [&] {
          auto running = ui::LocalRunningInstance::Connect(SocketPath());
          return running && running->BringToForeground();
        },
        kProcessBoundMs));
  }

  void StoreAlarm(std::uint64_t fileTime) {
    unsigned char bytes[8];
    for (int k = 0; k < 8; ++k) bytes[k] = static_cast<unsigned char>(fileTime >> (8 * k));
    ASSERT_TRUE(settingsKey->WriteBinary("Alarm", bytes, sizeof bytes));
  }
};

TEST_F(PlayerProcessTest, ASignalClosesThePlayerAsExitDoesAndItsSettingsAreSaved) {
  for (const int signalNumber : {SIGTERM, SIGINT, SIGHUP}) {
    registry->DeleteValue(platform::RegistryRoot::LocalMachine, shell::kSettingsKeyPath, "WndSettings");
    std::filesystem::remove(Root().File("data/tavrinsonic/default.tsl"));
    QProcess player;
    StartRunningPlayer(player);
    ASSERT_FALSE(Stored("WndSettings"));
    ::kill(static_cast<pid_t>(player.processId()), signalNumber);
    ASSERT_TRUE(player.waitForFinished(kProcessBoundMs)) << signalNumber;
    EXPECT_EQ(player.exitStatus(), QProcess::NormalExit) << signalNumber;
    EXPECT_EQ(player.exitCode(), 0);
    EXPECT_TRUE(Stored("WndSettings")) << signalNumber;
    EXPECT_TRUE(std::filesystem::exists(Root().File("data/tavrinsonic/default.tsl"))) << "and the list";
    EXPECT_FALSE(std::filesystem::exists(SocketPath())) << "the name is given back";
  }
}

TEST_F(PlayerProcessTest, ALaterStartRaisesTheRunningOneHandsOverOnlyAnExistingFileAndEnds) {
  Start();
  const std::string file = Root().File("home/a song.mp3");
  testing_support::WriteFile(file, "not really music");
  const std::size_t openedAtStart = app->opened.size();
  for (const QStringList& arguments :
       {QStringList{}, QStringList{"/no/such/file.mp3"}, QStringList{QString::fromStdString(file)}}) {
    Window().hide();
    int exitCode = -1;
    ASSERT_TRUE(RunPlayer(arguments, &exitCode));
    EXPECT_EQ(exitCode, 0);
    EXPECT_TRUE(ProcessEventsUntil([&] { return Window().isVisible(); })) << "the running window came forward";
  }
  ASSERT_TRUE(ProcessEventsUntil([&] { return app->opened.size() > openedAtStart; }));
  EXPECT_EQ(std::vector<std::string>(app->opened.begin() + static_cast<std::ptrdiff_t>(openedAtStart),
                                     app->opened.end()),
            std::vector<std::string>{file});
  ASSERT_EQ(app->Playlist().ItemCount(), 1);
  EXPECT_EQ(app->Playlist().PathAt(0), file) << "the file replaced the list";
}

// The exact edge (59 s wakes, 60 s doesn't) is the shell tests' with a fixed
// clock; here the later process reads the clock when it has started, which
// under a sanitizer on a busy machine can take seconds.
TEST_F(PlayerProcessTest, AnAlarmWithinTheMinuteWakesTheRunningOneAndAStaleOneEndsSilently) {
  Start();
  Window().hide();
  StoreAlarm(platform::LocalFileTimeNow() - 50 * kSecond);
  int exitCode = -1;
  ASSERT_TRUE(RunPlayer({"TSAlarm"}, &exitCode));
  EXPECT_EQ(exitCode, 0);
  ASSERT_TRUE(ProcessEventsUntil([&] { return app->alarms == 1; }));
  EXPECT_FALSE(Window().isVisible()) << "the later start doesn't raise; the alarm does that itself";

  StoreAlarm(platform::LocalFileTimeNow() - 60 * kSecond - kSecond / 2);
  ASSERT_TRUE(RunPlayer({"tsalarm"}, &exitCode));
  EXPECT_EQ(exitCode, 0);
  ProcessEventsFor(300);
  EXPECT_EQ(app->alarms, 1) << "a stale alarm tells nobody";
}

TEST_F(PlayerProcessTest, AStaleAlarmWithNoPlayerRunningStartsNothing) {
  StoreAlarm(platform::LocalFileTimeNow() + 120 * kSecond);
  int exitCode = -1;
  ASSERT_TRUE(RunPlayer({"TSAlarm"}, &exitCode));
  EXPECT_EQ(exitCode, 0);
  EXPECT_FALSE(std::filesystem::exists(SocketPath()));
  EXPECT_FALSE(Stored("WndSettings"));
}

TEST_F(PlayerProcessTest, ABusyRunningInstanceNeitherHangsALaterStartNorLosesItsFile) {
  Start();
  const std::string file = Root().File("home/late.mp3");
  testing_support::WriteFile(file, "x");
  // The running instance handles nothing while the later start runs.
  QProcess player;
  player.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  player.start(TS_PLAYER, {QString::fromStdString(file)});
  ASSERT_TRUE(player.waitForFinished(kProcessBoundMs)) << "the later start gave up waiting";
  EXPECT_EQ(player.exitCode(), 0);
  ASSERT_TRUE(ProcessEventsUntil([&] { return !app->opened.empty(); }));
  EXPECT_EQ(app->opened.back(), file) << "handled when the running one got to it";
}

TEST_F(PlayerProcessTest, TheNameOfAKilledInstanceIsTakenOver) {
  QProcess player;
  StartRunningPlayer(player);
  ::kill(static_cast<pid_t>(player.processId()), SIGKILL);
  ASSERT_TRUE(player.waitForFinished(kProcessBoundMs));
  ASSERT_TRUE(std::filesystem::exists(SocketPath())) << "a killed instance leaves its socket";
  EXPECT_EQ(link->FindOrBecomeRunning(), nullptr);
  EXPECT_TRUE(link->Listening());
}

TEST_F(PlayerProcessTest, OfTwoStartsAtOnceExactlyOneBecomesTheRunningInstance) {
  QProcess first, second;
  for (QProcess* player : {&first, &second}) {
    player->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    player->start(TS_PLAYER, {});
  }
  ASSERT_TRUE(first.waitForStarted(kProcessBoundMs));
  ASSERT_TRUE(second.waitForStarted(kProcessBoundMs));
  ASSERT_TRUE(ProcessEventsUntil(
      [&] { return first.state() == QProcess::NotRunning || second.state() == QProcess::NotRunning; },
      kProcessBoundMs));
  ProcessEventsFor(500);
  QProcess& ended = first.state() == QProcess::NotRunning ? first : second;
  QProcess& running = &ended == &first ? second : first;
  EXPECT_EQ(ended.exitCode(), 0);
  EXPECT_EQ(running.state(), QProcess::Running) << "one of them runs on";
  running.terminate();
  EXPECT_TRUE(running.waitForFinished(kProcessBoundMs));
}

}  // namespace
