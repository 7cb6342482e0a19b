// What a NetStream posted to the window, as a test sees it.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

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

}  // namespace net_testing
