// The list screen with a long list, on Qt's offscreen platform.
//
// 100 000 entries (titles and durations known, one path in a hundred a
// duplicate), then: open the screen at zoom 2 until its first paint, scroll
// page by page from the top to the end with the Right key, each page painted
// at once, sort by title, remove duplicates. Targets: opening under 150 ms, a
// page under 16 ms (judged at the 99th percentile: on a shared machine a
// single page can lose its core to another process; the maximum is printed
// beside it), the whole process under 100 MB (peak resident size). The load
// average at the end tells how busy the machine was.
//
//   playlist_screen_bench [entries]
#include <sys/resource.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/message_target.h"
#include "playlist/playlist_editing.h"
#include "playlist/playlist_view.h"
#include "shell/ui/playlist_screen.h"

namespace {

constexpr int kDefaultEntries = 100000;
constexpr int kZoom = 2;
constexpr double kOpenTargetMs = 150;
constexpr double kPageTargetMs = 16;
constexpr long kMemoryTargetMb = 100;

// The player's window as the screen asks it: always playing.
class PlayingWindow : public platform::MessageTarget {
 public:
  using MessageTarget::Post;
  void Post(platform::Message) override {}
  std::intptr_t Send(std::uint32_t, std::uintptr_t, std::intptr_t) override { return 2; }
  int RemovePending(std::uint32_t) override { return 0; }
};

class PaintCounter : public QObject {
 public:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::Paint) ++paints;
    return false;
  }
  int paints = 0;
};

void Fill(playlist::PlaylistView& view, int entries) {
  for (int i = 0; i < entries; ++i) {
    const int n = i % 100 == 99 ? i - 50 : i;  // one in a hundred repeats an earlier path
    view.AddEntry("/home/user/Music/Artist " + std::to_string(n % 997) + "/Album " + std::to_string(n % 31) +
                  "/" + std::to_string(n % 20 + 1) + " Track number " + std::to_string(n) + ".mp3");
  }
  for (int i = 0; i < entries; ++i) {
    view.SetTitle(i, "Title " + std::to_string((i * 7919) % entries) + " of a song");
    view.SetDuration(i, static_cast<std::uint32_t>((i * 7793) % 7200000));
  }
  view.SetCurrentIndex(entries / 2);
  view.SetFlags(entries / 2, playlist::ITEM_CURRENT, true);
}

double Milliseconds(const QElapsedTimer& clock) {
  return static_cast<double>(clock.nsecsElapsed()) / 1e6;
}

long PeakResidentMb() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss / 1024;
}

const char* Verdict(bool met) {
  return met ? "met" : "MISSED";
}

}  // namespace

int main(int argc, char** argv) {
  if (std::getenv("QT_QPA_PLATFORM") == nullptr) ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
  QApplication application(argc, argv);
  const int entries = argc > 1 ? std::max(1, std::atoi(argv[1])) : kDefaultEntries;

  playlist::PlaylistView view;
  QElapsedTimer clock;
  clock.start();
  Fill(view, entries);
  std::printf("entries                 %d (filled in %.0f ms, outside the figures)\n", entries,
              Milliseconds(clock));

  PlayingWindow window;
  clock.restart();
  ui::PlaylistScreen screen(view, window, kZoom);
  screen.resize(176 * kZoom, 180 * kZoom + 40);
  PaintCounter counter;
  screen.List().viewport()->installEventFilter(&counter);
  screen.show();
  while (counter.paints == 0) QCoreApplication::processEvents();
  const double openMs = Milliseconds(clock);

  std::vector<double> pages;
  QKeyEvent right(QEvent::KeyPress, Qt::Key_Right, Qt::NoModifier);
  while (view.FocusIndex() < view.ItemCount() - 1) {
    clock.restart();
    QApplication::sendEvent(&screen.List(), &right);
    screen.List().viewport()->repaint();
    pages.push_back(Milliseconds(clock));
  }
  std::sort(pages.begin(), pages.end());
  double total = 0;
  for (const double page : pages) total += page;
  const double mean = total / static_cast<double>(pages.size());
  const double p99 = pages[std::min(pages.size() - 1, pages.size() * 99 / 100)];

  clock.restart();
  screen.RunCommand(playlist::kCommandSortTitle);
  screen.List().viewport()->repaint();
  const double sortMs = Milliseconds(clock);
  const int beforeDuplicates = view.ItemCount();
  clock.restart();
  screen.RunCommand(playlist::kCommandRemoveDuplicates);
  screen.List().viewport()->repaint();
  const double duplicatesMs = Milliseconds(clock);

  const long peakMb = PeakResidentMb();
  std::printf("open to first paint     %8.2f ms   target < %.0f ms: %s\n", openMs, kOpenTargetMs,
              Verdict(openMs < kOpenTargetMs));
  std::printf(
      "page scroll + repaint   %zu pages (%d rows per page): mean %.3f ms, p99 %.3f ms, max %.3f ms"
      "   target < %.0f ms: %s\n",
      pages.size(), screen.List().RowsPerPage() + 1, mean, p99, pages.back(), kPageTargetMs,
      Verdict(p99 < kPageTargetMs));
  std::printf("sort by title           %8.2f ms\n", sortMs);
  std::printf("remove duplicates       %8.2f ms   (%d -> %d entries)\n", duplicatesMs, beforeDuplicates,
              view.ItemCount());
  std::printf("peak resident size      %8ld MB   target < %ld MB: %s\n", peakMb, kMemoryTargetMb,
              Verdict(peakMb < kMemoryTargetMb));
  if (std::FILE* load = std::fopen("/proc/loadavg", "r")) {
    char text[64] = {};
    if (std::fgets(text, sizeof text, load) != nullptr) std::printf("load average            %s", text);
    std::fclose(load);
  }
  return 0;
}
