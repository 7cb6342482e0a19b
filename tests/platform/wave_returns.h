// The call-backs of a wave device's buffers, as the wave device tests record them.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/wave_out.h"

namespace wave_testing {

// Buffers of a test with the call-backs they got, in order.
class Returns {
 public:
  static void Done(void* context, platform::WaveBuffer* buffer) {
    auto* self = static_cast<Returns*>(context);
    std::lock_guard guard(self->lock);
    self->order.push_back(buffer->user);
    if (std::this_thread::get_id() == self->writer) self->fromWriter = true;
    self->changed.notify_all();
  }

  bool WaitFor(std::size_t count, int limitMs = 5000) {
    std::unique_lock guard(lock);
    return changed.wait_for(guard, std::chrono::milliseconds(limitMs), [&] { return order.size() >= count; });
  }

  std::vector<std::uint32_t> Order() {
    std::lock_guard guard(lock);
    return order;
  }

  std::thread::id writer = std::this_thread::get_id();
  bool fromWriter = false;

 private:
  std::mutex lock;
  std::condition_variable changed;
  std::vector<std::uint32_t> order;
};

}  // namespace wave_testing
