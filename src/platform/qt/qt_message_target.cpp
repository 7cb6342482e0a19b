#include "platform/qt/qt_message_target.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <atomic>
#include <mutex>

namespace platform::qt {
namespace {

const QEvent::Type kDispatchEvent = static_cast<QEvent::Type>(QEvent::registerEventType());

}  // namespace

// Shared with the wake call-back, which may outlive the target on a worker
// that copied it just before the destruction.
struct QtMessageTarget::WakeState {
  std::mutex lock;
  QObject* receiver = nullptr;  // guarded by lock
  std::atomic<bool> pending{false};

  void Wake() {
    std::lock_guard guard(lock);
    if (receiver == nullptr || pending.exchange(true)) return;
    QCoreApplication::postEvent(receiver, new QEvent(kDispatchEvent));
  }
};

class QtMessageTarget::Dispatcher : public QObject {
 public:
  explicit Dispatcher(QtMessageTarget& owner) : target(owner) {}

  bool event(QEvent* event) override {
    if (event->type() != kDispatchEvent) return QObject::event(event);
    target.DispatchPending();
    return true;
  }

 private:
  QtMessageTarget& target;
};

QtMessageTarget::QtMessageTarget(MessageHandler& handler)
    : queue(&handler), wake(std::make_shared<WakeState>()), dispatcher(std::make_unique<Dispatcher>(*this)) {
  wake->receiver = dispatcher.get();
  queue.SetWakeCallback([state = wake] { state->Wake(); });
}

QtMessageTarget::~QtMessageTarget() {
  {
    std::lock_guard guard(wake->lock);
    wake->receiver = nullptr;
  }
  queue.SetWakeCallback(nullptr);
  dispatcher.reset();  // its queued Qt events go with it
}

void QtMessageTarget::Post(Message message) {
  queue.Post(std::move(message));
}

std::intptr_t QtMessageTarget::Send(std::uint32_t id, std::uintptr_t wParam, std::intptr_t lParam) {
  return queue.Send(id, wParam, lParam);
}

int QtMessageTarget::RemovePending(std::uint32_t id) {
  return queue.RemovePending(id);
}

int QtMessageTarget::DispatchPending() {
  // Cleared first: a post that arrives during the dispatch wakes again.
  wake->pending.store(false);
  return queue.DispatchPending();
}

}  // namespace platform::qt
