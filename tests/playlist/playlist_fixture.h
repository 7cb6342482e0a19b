// What the playlist tests share: a format table filled as the application
// fills it, a decoder whose file details the test decides, and a list window
// that records what it is told.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "playback/format_registry.h"
#include "playback/media_decoder.h"
#include "playlist/list_window.h"
#include "playlist/playlist_view.h"
#include "support/test_environment.h"

namespace playlist_testing {

// Details by path; a path it doesn't know fails, as an unreadable file does.
class FakeDecoder : public playback::MediaDecoder {
 public:
  struct Details {
    std::string title;
    std::uint32_t durationMs = 0;
    std::uint32_t trackNumber = 0;
  };
  void Set(const std::string& path, Details pathDetails) {
    std::lock_guard guard(lock);
    details[path] = std::move(pathDetails);
  }
  int Reads() const { return reads.load(); }
  int FinishedReads() const { return finished.load(std::memory_order_acquire); }
  // Waits until `count` reads have returned; a reader thread's last touch of
  // this decoder is then behind the caller.
  bool WaitForFinishedReads(int count) const {
    for (int waited = 0; finished.load(std::memory_order_acquire) < count; ++waited) {
      if (waited == 20000) return false;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
  }
  bool GetFileDetails(const std::string& path, std::string* display, std::string*,
                      playback::FormatSummary* summary, std::uint32_t* durationMs, std::uint32_t* reserved,
                      std::string*, std::string*) override {
    reads.fetch_add(1);
    BeforeRead(path);
    bool known = false;
    {
      std::lock_guard guard(lock);
      const auto found = details.find(path);
      if (found != details.end()) {
        known = true;
        if (display) *display = found->second.title;
        if (durationMs) *durationMs = found->second.durationMs;
        if (summary) summary->trackNumber = found->second.trackNumber;
        if (reserved) *reserved = 0;
      }
    }
    finished.fetch_add(1, std::memory_order_release);
    return known;
  }

 protected:
  virtual void BeforeRead(const std::string&) {}

 private:
  std::mutex lock;
  std::map<std::string, Details> details;
  std::atomic<int> reads{0};
  std::atomic<int> finished{0};
};

// Playlists 500 to 502 and "mp3" enabled, the native list's row disabled.
inline void FillFormats(playback::FormatRegistry& formats, playback::MediaDecoder* mp3) {
  formats.AddExtension(playback::kFormatM3u, "m3u");
  formats.AddExtension(playback::kFormatPls, "pls");
  formats.AddExtension(playback::kFormatAsx, "asx");
  formats.AddExtension(playback::kFormatMp3, "mp3");
  for (int id : {playback::kFormatM3u, playback::kFormatPls, playback::kFormatAsx, playback::kFormatMp3}) {
    formats.Enable(id, true);
  }
  formats.SetDecoder(playback::kFormatMp3, mp3);
  formats.SetDecoder(playback::kFormatMp3Stream, mp3);
}

class RecordingListWindow : public playlist::ListWindow {
 public:
  void SetItemCount(int count) override { counts.push_back(count); }
  void InvalidateAll(bool erase) override { invalidations.push_back(erase); }
  void RedrawRow(int index) override { redrawnRows.push_back(index); }
  void PostRowRead(int index) override {
    std::lock_guard guard(lock);
    rowsRead.push_back(index);
  }
  void PostReadingDone() override { readingDone.fetch_add(1); }
  std::vector<int> RowsRead() {
    std::lock_guard guard(lock);
    return rowsRead;
  }

  std::vector<int> counts;
  std::vector<bool> invalidations;
  std::vector<int> redrawnRows;
  std::atomic<int> readingDone{0};

 private:
  std::mutex lock;
  std::vector<int> rowsRead;
};

// A view over its own format table, in a temporary folder for list files.
class PlaylistTest : public ::testing::Test {
 protected:
  PlaylistTest() { FillFormats(formats, &decoder); }

  std::string File(const std::string& name) const { return folder.File(name); }
  std::string Write(const std::string& name, const std::string& contents) const {
    testing_support::WriteFile(File(name), contents);
    return File(name);
  }
  std::vector<std::string> Paths() const {
    std::vector<std::string> paths;
    for (int i = 0; i < view.ItemCount(); ++i) paths.push_back(view.PathAt(i));
    return paths;
  }

  testing_support::TemporaryDirectory folder;
  FakeDecoder decoder;
  playback::FormatRegistry formats;
  playlist::PlaylistView view{formats};
};

}  // namespace playlist_testing
