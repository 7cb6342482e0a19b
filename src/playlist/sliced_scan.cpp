#include "playlist/sliced_scan.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace playlist {
namespace {

// What the worker and the caller share (steps 1 to 3 of the protocol).
struct ScanQueue {
  std::mutex lock;
  std::condition_variable changed;
  // Guarded by `lock`:
  std::vector<std::string> found;
  bool done = false;
  // Read by the worker at each path, set by the caller.
  std::atomic<bool> stop{false};
};

}  // namespace

bool ScanFolderInSlices(const playback::FormatRegistry& formats, const std::string& folder, bool expanded,
                        bool playlistsOnly, const PathSink& deliver, const std::function<void()>& pump) {
  ScanQueue queue;
  std::thread worker([&] {
    ScanFolder(formats, folder, expanded, playlistsOnly, [&](const std::string& path) {
      if (queue.stop.load(std::memory_order_relaxed)) return false;
      const std::lock_guard<std::mutex> hold(queue.lock);
      queue.found.push_back(path);
      if (queue.found.size() == 1) queue.changed.notify_one();
      return true;
    });
    const std::lock_guard<std::mutex> hold(queue.lock);
    queue.done = true;
    queue.changed.notify_one();
  });

  bool completed = true;
  std::vector<std::string> slice;
  for (bool done = false; !done;) {
    {
      std::unique_lock<std::mutex> hold(queue.lock);
      queue.changed.wait_for(hold, std::chrono::milliseconds(kSliceWaitMs),
                             [&] { return queue.done || !queue.found.empty(); });
      done = queue.done;
      slice.swap(queue.found);
      queue.found.clear();
    }
    for (std::size_t i = 0; i < slice.size() && completed; ++i) {
      completed = deliver(slice[i]);
      if ((i + 1) % kSlicePaths == 0) pump();
    }
    slice.clear();
    if (!completed) break;
    pump();
  }
  queue.stop.store(true, std::memory_order_relaxed);
  worker.join();
  return completed;
}

}  // namespace playlist
