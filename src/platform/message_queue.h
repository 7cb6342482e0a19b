// A MessageTarget over a plain queue, without any window system.
//
// Posted messages wait in the queue until the owner dispatches them to its
// handler with DispatchPending or WaitAndDispatch. Tests use it to record and
// inspect what workers post; the Qt main window uses one inside, with a wake
// call-back that tells Qt's event loop to come and dispatch.
//
// Threads: Post from any thread; everything else from the owner's thread.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <vector>

#include "platform/message_target.h"

namespace platform {

class MessageQueue : public MessageTarget {
 public:
  explicit MessageQueue(MessageHandler* handler = nullptr) : handler_(handler) {}

  void SetHandler(MessageHandler* handler) { handler_ = handler; }
  // Called (from the posting thread, outside the queue's lock) after each Post.
  void SetWakeCallback(std::function<void()> wake);

  using MessageTarget::Post;
  void Post(Message message) override;
  std::intptr_t Send(std::uint32_t id, std::uintptr_t wParam = 0, std::intptr_t lParam = 0) override;
  int RemovePending(std::uint32_t id) override;

  // Hands each queued message to the handler, in order, including those that
  // handlers post meanwhile. Returns how many were handled.
  int DispatchPending();
  // Waits up to `timeoutMs` for a message, then dispatches what is queued.
  int WaitAndDispatch(int timeoutMs);
  // Takes the oldest queued message without handling it; false if none.
  bool TakeNext(Message& message);
  // Waits up to `timeoutMs` until a message with this id is queued.
  bool WaitFor(std::uint32_t id, int timeoutMs);

  std::size_t PendingCount() const;
  // Ids of the queued messages, oldest first.
  std::vector<std::uint32_t> PendingIds() const;

 private:
  MessageHandler* handler_;
  std::function<void()> wake_;
  mutable std::mutex mutex_;
  std::condition_variable posted_;
  std::deque<Message> queue_;  // guarded by mutex_
};

}  // namespace platform
