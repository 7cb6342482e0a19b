// The info reader: a thread that fills in titles, durations and track numbers.
//
// 1. StartInfoThread makes a ReaderRun (stop flag, started flag, done signal)
//    and starts the thread at priority 4. The thread holds the run and the
//    list's lock by shared pointers, so both outlive the view if they must.
// 2. The thread walks the entries from index 0, re-reading the count at each
//    step. Under the lock it checks its stop flag and copies the entry's path;
//    entries that have ITEM_HAS_INFO and a duration are skipped.
// 3. Without the lock it asks the format registry for the file's details:
//    this is the slow part (a tag read, perhaps a network address).
// 4. Under the lock again, and only if it wasn't stopped meanwhile, it stores
//    track number, duration and title, sets ITEM_HAS_INFO, and asks the list
//    screen, if one is open, to redraw the row later.
// 5. At the end it asks for a redraw of the whole list and sets `done`.
//
// StopInfoThread sets the stop flag under the lock and waits for `done` up to
// 5000 ms, then joins. A reader still inside a file's read after that wait is
// detached: when it returns it takes the lock, finds the flag set and leaves
// without touching the list, which may have changed or gone meanwhile.
#include <atomic>
#include <chrono>
#include <condition_variable>

#include "platform/text.h"
#include "playback/format_summary.h"
#include "playlist/playlist_view.h"

namespace playlist {

// What a reader shares with the view. It has its own lock and condition, not
// the process-wide ones of platform::Event, so that a reader left behind touches
// nothing but shared-owned memory, even while the process ends.
struct PlaylistView::ReaderRun {
  std::atomic<bool> stop{false};     // written under the list's lock
  std::atomic<bool> started{false};  // the body has begun

  void MarkDone() {
    {
      std::lock_guard guard(doneLock);
      done = true;
    }
    doneSignal.notify_all();
  }
  bool WaitDone(int timeoutMs) {
    std::unique_lock guard(doneLock);
    return doneSignal.wait_for(guard, std::chrono::milliseconds(timeoutMs), [this] { return done; });
  }
  bool IsDone() {
    std::lock_guard guard(doneLock);
    return done;
  }

 private:
  std::mutex doneLock;
  std::condition_variable doneSignal;
  bool done = false;  // guarded by doneLock
};

struct PlaylistView::ReaderContext {
  PlaylistView* view;  // touched only under the lock while `stop` is clear
  playback::FormatRegistry* formats;
  std::shared_ptr<std::mutex> lock;
  std::shared_ptr<ReaderRun> run;
};

void PlaylistView::StartInfoThread() {
  if (readerRun) {
    if (!readerRun->IsDone()) return;
    readerThread.Join();  // it walked to the end by itself
    readerRun.reset();
  }
  auto run = std::make_shared<ReaderRun>();
  ReaderContext context{this, &formats, lock, run};
  if (readerThread.Start([context] { InfoThreadMain(context); }, kInfoReaderPriority)) {
    readerRun = std::move(run);
  }
}

void PlaylistView::StopInfoThread() {
  if (!readerRun) return;
  {
    std::lock_guard guard(*lock);
    readerRun->stop.store(true, std::memory_order_relaxed);
  }
  // A reader that hasn't even begun will see the flag at once: join it.
  if (readerRun->WaitDone(kStopWaitMs) || !readerRun->started.load(std::memory_order_relaxed)) {
    readerThread.Join();
  } else {
    readerThread.Detach();
  }
  readerRun.reset();
}

bool PlaylistView::InfoThreadRunning() const { return readerRun && !readerRun->IsDone(); }

void PlaylistView::InfoThreadMain(const ReaderContext& context) {
  ReaderRun& run = *context.run;
  run.started.store(true, std::memory_order_relaxed);
  const auto stopped = [&run] { return run.stop.load(std::memory_order_relaxed); };
  for (int index = 0;; ++index) {
    std::string path;
    {
      std::lock_guard guard(*context.lock);
      if (stopped() || index >= context.view->items.Count()) break;
      const PlaylistItem& item = context.view->items[index];
      if (item.Has(ITEM_HAS_INFO) && item.Duration() != 0) continue;
      path = item.path;
    }
    std::string display;
    playback::FormatSummary summary;
    std::uint32_t durationMs = 0;
    std::uint32_t reserved = 0;
    if (!context.formats->GetFileDetails(path, &display, nullptr, &summary, &durationMs, &reserved,
                                         nullptr, nullptr)) {
      continue;  // left as it is; the next reader tries again
    }
    std::lock_guard guard(*context.lock);
    if (stopped()) break;
    PlaylistView& view = *context.view;
    PlaylistItem& item = view.items[index];
    item.trackNumber.store(summary.trackNumber, std::memory_order_relaxed);
    item.durationMs.store(durationMs, std::memory_order_relaxed);
    item.title = platform::TruncateToUtf16Units(display, kReaderTitleUnits);
    item.Set(ITEM_HAS_INFO);
    if (view.listWindow != nullptr) view.listWindow->PostRowRead(index);
  }
  {
    std::lock_guard guard(*context.lock);
    if (!stopped() && context.view->listWindow != nullptr) context.view->listWindow->PostReadingDone();
  }
  run.MarkDone();
}

}  // namespace playlist

namespace playlist {

bool PlaylistView::ReadInfoNow(int index) {
  if (index < 0 || index >= items.Count()) return false;
  const std::string path = items[index].path;  // the window thread owns the shape
  std::string display;
  playback::FormatSummary summary;
  std::uint32_t durationMs = 0;
  std::uint32_t reserved = 0;
  if (!formats.GetFileDetails(path, &display, nullptr, &summary, &durationMs, &reserved, nullptr, nullptr)) {
    return false;
  }
  std::lock_guard guard(*lock);
  PlaylistItem& item = items[index];
  item.trackNumber.store(summary.trackNumber, std::memory_order_relaxed);
  item.durationMs.store(durationMs, std::memory_order_relaxed);
  item.title = platform::TruncateToUtf16Units(display, kReaderTitleUnits);
  item.Set(ITEM_HAS_INFO);
  return true;
}

}  // namespace playlist
