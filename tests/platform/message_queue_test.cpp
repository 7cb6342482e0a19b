#include "platform/message_queue.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

using platform::Message;
using platform::MessageQueue;

class Recorder : public platform::MessageHandler {
 public:
  std::intptr_t HandleMessage(const Message& message) override {
    ids.push_back(message.id);
    texts.push_back(message.text ? *message.text : "<none>");
    return static_cast<std::intptr_t>(message.wParam) * 2;
  }
  std::vector<std::uint32_t> ids;
  std::vector<std::string> texts;
};

TEST(MessageQueueTest, PostsFromEachThreadArriveInOrderWithTheirOwnedText) {
  Recorder recorder;
  MessageQueue queue(&recorder);
  std::vector<std::thread> workers;
  for (std::uint32_t worker = 0; worker < 4; ++worker) {
    workers.emplace_back([&queue, worker] {
      for (std::uint32_t i = 0; i < 200; ++i) queue.Post(worker * 1000 + i);
    });
  }
  for (auto& thread : workers) thread.join();
  queue.PostText(2331, "Buffering...", 1);
  queue.Post(2331);

  EXPECT_EQ(queue.DispatchPending(), 802);
  std::uint32_t next[4] = {0, 1000, 2000, 3000};
  for (std::size_t i = 0; i < 800; ++i) {
    const std::uint32_t worker = recorder.ids[i] / 1000;
    EXPECT_EQ(recorder.ids[i], next[worker]++);
  }
  EXPECT_EQ(recorder.texts[800], "Buffering...");
  EXPECT_EQ(recorder.texts[801], "<none>") << "no text is not an empty text";
}

TEST(MessageQueueTest, SendHandlesAtOnceAndRemovePendingDropsQueuedCopies) {
  Recorder recorder;
  MessageQueue queue(&recorder);
  queue.Post(2652);
  queue.Post(2565);
  queue.Post(2652);
  EXPECT_EQ(queue.Send(2566, 21), 42);
  EXPECT_EQ(recorder.ids, std::vector<std::uint32_t>{2566});
  EXPECT_EQ(queue.RemovePending(2652), 2);
  EXPECT_EQ(queue.PendingIds(), std::vector<std::uint32_t>{2565});
}

TEST(MessageQueueTest, WaitersWakeWhenAMessageArrives) {
  MessageQueue queue;
  int woken = 0;
  queue.SetWakeCallback([&woken] { ++woken; });
  std::thread poster([&queue] { queue.Post(2568); });
  EXPECT_TRUE(queue.WaitFor(2568, 5000));
  poster.join();
  EXPECT_EQ(woken, 1);
  EXPECT_FALSE(queue.WaitFor(2563, 10));
  Message taken;
  ASSERT_TRUE(queue.TakeNext(taken));
  EXPECT_EQ(taken.id, 2568u);
}

}  // namespace
