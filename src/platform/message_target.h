// Window messages: how workers reach the window thread.
//
// The system's threads talk to the main window by private message numbers.
// Post may be called from any thread: it is ordered (messages arrive in the
// order they were posted from one thread), never blocks, and never runs the
// handler itself. Send and RemovePending belong to the thread that owns the
// target (the window thread): Send runs the handler at once and returns its
// result; RemovePending drops queued copies of a message, as PeekMessage with
// removal does.
//
// A message that carries text owns it: the text travels inside the Message, so
// a worker never hands the window thread a pointer into its own memory.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace platform {

struct Message {
  std::uint32_t id = 0;
  std::uintptr_t wParam = 0;
  std::intptr_t lParam = 0;
  // Text that the message carries in place of a pointer in wParam (message
  // 2331 and the like). Null means no text, which is not the same as "".
  std::unique_ptr<std::string> text;
};

class MessageHandler {
 public:
  virtual ~MessageHandler() = default;
  // Handles one message on the window thread; the result matters only to Send.
  virtual std::intptr_t HandleMessage(const Message& message) = 0;
};

class MessageTarget {
 public:
  virtual ~MessageTarget() = default;

  // Any thread. Queues the message for the window thread.
  virtual void Post(Message message) = 0;
  // Window thread only. Handles the message at once and returns its result.
  virtual std::intptr_t Send(std::uint32_t id, std::uintptr_t wParam = 0, std::intptr_t lParam = 0) = 0;
  // Window thread only. Drops every queued message with this id; returns how many.
  virtual int RemovePending(std::uint32_t id) = 0;

  void Post(std::uint32_t id, std::uintptr_t wParam = 0, std::intptr_t lParam = 0) {
    Post(Message{id, wParam, lParam, nullptr});
  }
  void PostText(std::uint32_t id, std::string text, std::intptr_t lParam = 0) {
    Post(Message{id, 0, lParam, std::make_unique<std::string>(std::move(text))});
  }
};

}  // namespace platform
