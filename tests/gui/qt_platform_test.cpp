#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <Qt>
#include <atomic>
#include <thread>
#include <vector>

#include "gui_support.h"
#include "platform/qt/qt_message_target.h"
#include "platform/qt/qt_timers.h"
#include "platform/qt/termination_signals.h"
#include "platform/qt/virtual_keys.h"

namespace {

using testing_support::ProcessEventsUntil;

class Recorder : public platform::MessageHandler {
 public:
  std::intptr_t HandleMessage(const platform::Message& message) override {
    ids.push_back(message.id);
    threads.push_back(std::this_thread::get_id());
    if (message.text) texts.push_back(*message.text);
    if (onMessage) onMessage(message);
    return static_cast<std::intptr_t>(message.wParam) + 1;
  }
  std::vector<std::uint32_t> ids;
  std::vector<std::thread::id> threads;
  std::vector<std::string> texts;
  std::function<void(const platform::Message&)> onMessage;
};

TEST(QtMessageTargetTest, PostsFromWorkersArriveInOrderOnTheWindowThread) {
  Recorder recorder;
  platform::qt::QtMessageTarget target(recorder);
  std::vector<std::thread> workers;
  for (std::uint32_t worker = 0; worker < 4; ++worker) {
    workers.emplace_back([&target, worker] {
      for (std::uint32_t i = 0; i < 250; ++i) target.Post(worker * 1000 + i);
    });
  }
  for (auto& thread : workers) thread.join();
  target.PostText(2331, "Connected to server", 1);
  EXPECT_TRUE(recorder.ids.empty()) << "a post never runs the handler on its own";
  ASSERT_TRUE(ProcessEventsUntil([&] { return recorder.ids.size() == 1001; }));

  std::uint32_t next[4] = {0, 1000, 2000, 3000};
  for (std::size_t i = 0; i < 1000; ++i) {
    const std::uint32_t worker = recorder.ids[i] / 1000;
    ASSERT_LT(worker, 4u);
    EXPECT_EQ(recorder.ids[i], next[worker]++);
    EXPECT_EQ(recorder.threads[i], std::this_thread::get_id());
  }
  EXPECT_EQ(recorder.ids.back(), 2331u);
  EXPECT_EQ(recorder.texts, std::vector<std::string>{"Connected to server"});
}

TEST(QtMessageTargetTest, SendRunsAtOnceAndRemovePendingDropsQueuedCopies) {
  Recorder recorder;
  platform::qt::QtMessageTarget target(recorder);
  for (int i = 0; i < 3; ++i) target.Post(2652);
  target.Post(2561);
  EXPECT_EQ(target.Send(2565, 41), 42);
  EXPECT_EQ(recorder.ids, std::vector<std::uint32_t>{2565});
  EXPECT_EQ(target.RemovePending(2652), 3);
  testing_support::ProcessEventsFor(50);
  EXPECT_EQ(recorder.ids, (std::vector<std::uint32_t>{2565, 2561}));
}

TEST(QtMessageTargetTest, MessagesPostedByAHandlerAreHandledAfterIt) {
  Recorder recorder;
  platform::qt::QtMessageTarget target(recorder);
  recorder.onMessage = [&](const platform::Message& message) {
    if (message.id < 5) target.Post(message.id + 1);
  };
  target.Post(1);
  ASSERT_TRUE(ProcessEventsUntil([&] { return recorder.ids.size() == 5; }));
  EXPECT_EQ(recorder.ids, (std::vector<std::uint32_t>{1, 2, 3, 4, 5}));
}

TEST(QtTimersTest, ATimerDeliversItsIdUntilItsHandlerKillsIt) {
  Recorder recorder;
  platform::qt::QtTimers timers(recorder);
  int fired = 0;
  recorder.onMessage = [&](const platform::Message& message) {
    EXPECT_EQ(message.id, platform::kMessageTimer);
    EXPECT_EQ(message.wParam, 33u);
    if (++fired == 3) timers.Kill(33);
  };
  timers.Set(33, 5);
  ASSERT_TRUE(ProcessEventsUntil([&] { return fired == 3; }));
  testing_support::ProcessEventsFor(50);
  EXPECT_EQ(fired, 3);
  EXPECT_FALSE(timers.IsRunning(33));
  EXPECT_FALSE(timers.Kill(33));
  EXPECT_FALSE(timers.Kill(138)) << "never set";
}

TEST(VirtualKeysTest, QtKeysBecomeThePlatformsCodes) {
  const std::pair<int, std::uint32_t> keys[] = {
      {Qt::Key_Return, 13},   {Qt::Key_Enter, 13},     {Qt::Key_Escape, 27},     {Qt::Key_Space, 32},
      {Qt::Key_PageUp, 33},   {Qt::Key_PageDown, 34},  {Qt::Key_Left, 37},       {Qt::Key_Up, 38},
      {Qt::Key_Right, 39},    {Qt::Key_Down, 40},      {Qt::Key_0, 48},          {Qt::Key_9, 57},
      {Qt::Key_A, 65},        {Qt::Key_Z, 90},         {Qt::Key_F1, 112},        {Qt::Key_F4, 115},
      {Qt::Key_F24, 135},     {Qt::Key_Asterisk, 119}, {Qt::Key_NumberSign, 120}, {Qt::Key_VolumeUp, 117},
      {Qt::Key_VolumeDown, 118}, {Qt::Key_Hangup, 115}, {Qt::Key_Shift, 0},      {Qt::Key_Tab, 0}};
  for (const auto& [key, code] : keys) EXPECT_EQ(platform::qt::VirtualKeyFor(key), code) << std::hex << key;
}

TEST(TerminationSignalsTest, EachSignalBecomesACallOnTheEventLoop) {
  std::vector<int> calls;
  {
    platform::qt::TerminationSignals watcher([&] { calls.push_back(1); });
    ASSERT_TRUE(watcher.Installed());
    for (const int signalNumber : {SIGTERM, SIGINT, SIGHUP}) {
      const std::size_t before = calls.size();
      ASSERT_EQ(::kill(::getpid(), signalNumber), 0);
      EXPECT_TRUE(ProcessEventsUntil([&] { return calls.size() > before; }, 5000)) << signalNumber;
    }
  }
  EXPECT_EQ(calls.size(), 3u);
  struct sigaction current {};
  ::sigaction(SIGTERM, nullptr, &current);
  EXPECT_EQ(current.sa_handler, SIG_DFL) << "the default action is back";
}

}  // namespace
