// The main window's message queue over Qt's event loop.
//
// Messages wait in a platform::MessageQueue. A Post from any thread wakes the
// window thread by posting one Qt event, and only one while a dispatch is
// pending, so that a flood of posts doesn't flood Qt; that event hands every
// queued message to the handler in order. Post never blocks and never runs
// the handler on the posting thread. Send and RemovePending run on the
// window thread, as the platform's do.
//
// Threads: Post from any thread; the rest on the thread that made the object
// (the thread of Qt's event loop). Posts that race with the destruction are
// dropped safely.
#pragma once

#include <memory>

#include "platform/message_queue.h"

class QObject;

namespace platform::qt {

class QtMessageTarget : public MessageTarget {
 public:
  explicit QtMessageTarget(MessageHandler& handler);
  ~QtMessageTarget() override;
  QtMessageTarget(const QtMessageTarget&) = delete;
  QtMessageTarget& operator=(const QtMessageTarget&) = delete;

  using MessageTarget::Post;
  void Post(Message message) override;
  std::intptr_t Send(std::uint32_t id, std::uintptr_t wParam = 0, std::intptr_t lParam = 0) override;
  int RemovePending(std::uint32_t id) override;

  // Dispatches what is queued now; the Qt event does the same.
  int DispatchPending();
  std::size_t PendingCount() const { return queue.PendingCount(); }

 private:
  struct WakeState;
  class Dispatcher;

  MessageQueue queue;
  std::shared_ptr<WakeState> wake;
  std::unique_ptr<Dispatcher> dispatcher;
};

}  // namespace platform::qt
