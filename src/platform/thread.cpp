#include "platform/thread.h"

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <system_error>

namespace platform {
namespace {

int CurrentNativeId() { return static_cast<int>(::syscall(SYS_gettid)); }

bool ApplyPriority(int nativeId, int priority) {
  return ::setpriority(PRIO_PROCESS, static_cast<id_t>(nativeId), NiceValueForPriority(priority)) == 0;
}

}  // namespace

int NiceValueForPriority(int priority) {
  static constexpr std::array<int, 8> kNice = {-15, -10, -5, 0, 5, 10, 15, 19};
  return kNice[static_cast<std::size_t>(std::clamp(priority, 0, 7))];
}

bool SetCurrentThreadPriority(int priority) { return ApplyPriority(CurrentNativeId(), priority); }

Thread::~Thread() { Join(); }

bool Thread::Start(std::function<void()> body, int priority) {
  if (thread_.joinable()) return false;
  nativeId_.store(0);
  try {
    thread_ = std::thread([this, body = std::move(body), priority] {
      nativeId_.store(CurrentNativeId());
      ApplyPriority(nativeId_.load(), priority);
      body();
    });
  } catch (const std::system_error&) {
    return false;
  }
  return true;
}

void Thread::Join() {
  if (thread_.joinable() && thread_.get_id() != std::this_thread::get_id()) thread_.join();
}

void Thread::Detach() {
  if (thread_.joinable()) thread_.detach();
}

bool Thread::IsCurrent() const { return thread_.get_id() == std::this_thread::get_id(); }

bool Thread::SetPriority(int priority) {
  const int id = nativeId_.load();
  return id != 0 && ApplyPriority(id, priority);
}

}  // namespace platform
