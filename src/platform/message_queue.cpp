#include "platform/message_queue.h"

#include <algorithm>
#include <chrono>

namespace platform {

void MessageQueue::SetWakeCallback(std::function<void()> wake) {
  std::lock_guard guard(mutex_);
  wake_ = std::move(wake);
}

void MessageQueue::Post(Message message) {
  std::function<void()> wake;
  {
    std::lock_guard guard(mutex_);
    queue_.push_back(std::move(message));
    wake = wake_;
  }
  posted_.notify_all();
  if (wake) wake();
}

std::intptr_t MessageQueue::Send(std::uint32_t id, std::uintptr_t wParam, std::intptr_t lParam) {
  if (handler_ == nullptr) return 0;
  return handler_->HandleMessage(Message{id, wParam, lParam, nullptr});
}

int MessageQueue::RemovePending(std::uint32_t id) {
  std::lock_guard guard(mutex_);
  const auto before = queue_.size();
  std::erase_if(queue_, [id](const Message& m) { return m.id == id; });
  return static_cast<int>(before - queue_.size());
}

bool MessageQueue::TakeNext(Message& message) {
  std::lock_guard guard(mutex_);
  if (queue_.empty()) return false;
  message = std::move(queue_.front());
  queue_.pop_front();
  return true;
}

int MessageQueue::DispatchPending() {
  int handled = 0;
  Message message;
  while (TakeNext(message)) {
    if (handler_ != nullptr) handler_->HandleMessage(message);
    ++handled;
  }
  return handled;
}

int MessageQueue::WaitAndDispatch(int timeoutMs) {
  {
    std::unique_lock lock(mutex_);
    posted_.wait_for(lock, std::chrono::milliseconds(timeoutMs), [this] { return !queue_.empty(); });
  }
  return DispatchPending();
}

bool MessageQueue::WaitFor(std::uint32_t id, int timeoutMs) {
  std::unique_lock lock(mutex_);
  return posted_.wait_for(lock, std::chrono::milliseconds(timeoutMs), [&] {
    return std::any_of(queue_.begin(), queue_.end(), [id](const Message& m) { return m.id == id; });
  });
}

std::size_t MessageQueue::PendingCount() const {
  std::lock_guard guard(mutex_);
  return queue_.size();
}

std::vector<std::uint32_t> MessageQueue::PendingIds() const {
  std::lock_guard guard(mutex_);
  std::vector<std::uint32_t> ids;
  for (const auto& m : queue_) ids.push_back(m.id);
  return ids;
}

}  // namespace platform
