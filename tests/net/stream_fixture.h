// What the NetStream tests share: a stream that posts into a MessageLog (the
// window's queue as a test sees it), the process-wide buffer settings put
// back after each test, and helpers that read and time.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "net/net_stream.h"
#include "platform/message_queue.h"

namespace net_testing {

struct Posted {
  std::uint32_t id = 0;
  std::uintptr_t wParam = 0;
  std::intptr_t lParam = 0;
  std::optional<std::string> text;  // nullopt when the message had none
};

// The window's queue: messages stay queued until the test takes them in
// with WaitUntil or Collect, as a window thread would.
class MessageLog : public platform::MessageHandler {
 public:
  MessageLog() : queue(this) {}

  platform::MessageTarget* Target() { return &queue; }

  // Takes in what has been posted; true as soon as `done` holds for all
  // messages so far, false after `timeoutMs`.
  bool WaitUntil(const std::function<bool(const std::vector<Posted>&)>& done, int timeoutMs);
  // Waits until a 2331 message with this text arrives.
  bool WaitForText(const std::string& text, int timeoutMs);
  const std::vector<Posted>& Collect();

  // The texts of message 2331 in order, "<null>" for none, each with its mode.
  std::vector<std::string> Texts(std::intptr_t mode) const;
  std::vector<std::string> StatusLines() const;  // modes 1 and 2 as "<mode>:<text>"
  int Count(std::uint32_t id) const;

  std::intptr_t HandleMessage(const platform::Message& message) override;

 private:
  platform::MessageQueue queue;
  std::vector<Posted> posted;
};

class NetStreamTest : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // Sets the buffer settings for the next Connect.
  static void UseBuffer(std::uint32_t size, std::uint32_t prebufferPercent = 25,
                        std::uint32_t rebufferPercent = 50);
  // Reads until `count` audio bytes have come or a Read fails, in reads of `piece`.
  std::string ReadUpTo(std::size_t count, std::uint32_t piece = 4096);

  MessageLog log;  // outlives the stream, which posts to it
  net::NetStream stream;
};

// How long `action` took, in milliseconds.
template <typename Action>
double MillisecondsOf(Action&& action) {
  const auto start = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

// A bound that only a hang exceeds, even in a sanitizer build on a busy machine.
inline constexpr double kPromptMs = 2000;

}  // namespace net_testing
