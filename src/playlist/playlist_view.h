// The playlist: the ordered list of entries that decides what the player plays.
//
// One PlaylistView lives inside the application for the whole run. This class
// is the model: the entries, the current entry, the ways entries come in, the
// order of play (shuffle, the repeat modes, the history of stamps) and the
// info reader, a background thread that fills in titles, durations and track
// numbers. The list screen and the editing commands work on the same object.
//
// Threads. Everything here is called on the window thread, except what the
// info reader does by itself. The reader walks the entries from the first,
// one file at a time, and never waits on the window thread. The rules that
// keep the two apart:
//  1. Whatever adds, removes, reorders or frees entries first stops the
//     reader (StopInfoThread, waiting at most kStopWaitMs) and restarts it
//     afterwards when it has to.
//  2. `lock` (shared with the reader, see ReaderContext) guards the shape of
//     the store (its blocks, the count, the paths) against the reader's reads,
//     the titles of all entries, and `listWindow`. The window thread, the only
//     writer of the shape, writes it under the lock and may read it without.
//     Titles are read under the lock by both threads. The lock is held only
//     for copies and small stores, never across a file read or a wait.
//  3. The reader checks its stop flag under the lock before it touches an
//     entry, so a reader that outlived the 5000 ms wait inside a slow file
//     read finds itself stopped when it comes back and leaves the list alone.
//  4. Flags, durations and track numbers are relaxed atomics (PlaylistItem).
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "platform/thread.h"
#include "playback/format_registry.h"
#include "playlist/item_store.h"
#include "playlist/list_window.h"
#include "playlist/playlist_settings.h"
#include "playlist/random_generator.h"

namespace platform {
class MessageTarget;
}

namespace playlist {

class PlaylistDialogs;

// Private messages the list posts to the main window.
inline constexpr std::uint32_t kMessagePlay = 2560;  // wParam 1: from a bookmark, 2: focused row
inline constexpr std::uint32_t kMessageSeek = 2567;  // wParam: position in milliseconds

// Repeat modes (0 is off).
inline constexpr int kRepeatAll = 1;
inline constexpr int kRepeatOne = 2;
inline constexpr int kRepeatSelected = 3;

class PlaylistView {
 public:
  static constexpr int kStopWaitMs = 5000;
  static constexpr int kInfoReaderPriority = 4;  // one below normal
  static constexpr std::size_t kReaderTitleUnits = 511;
  static constexpr std::size_t kShortTitleUnits = 255;
  // The path value that ends a batch of the file picker's AddEntry calls.
  static const char* const kEndOfBatch;

  // The registry tells playlists from media and reads the files' details; it
  // and its decoders must outlive every info reader (the process's own
  // registry does).
  explicit PlaylistView(playback::FormatRegistry& formats = playback::Formats());
  ~PlaylistView();
  PlaylistView(const PlaylistView&) = delete;
  PlaylistView& operator=(const PlaylistView&) = delete;

  // --- Wiring -----------------------------------------------------------
  // The persistent fields; the settings load writes straight into them.
  // `currentIndex` in here is the list's current entry.
  PlaylistSettings& Settings() { return settings; }
  const PlaylistSettings& Settings() const { return settings; }
  // Target of posted commands (2560, 2567); may be null.
  void SetMainWindow(platform::MessageTarget* window) { mainWindow = window; }
  // The list on screen while the playlist dialog is open, else null.
  void SetListWindow(ListWindow* window);
  void SetRandomGenerator(std::unique_ptr<RandomGenerator> generator);
  playback::FormatRegistry& Formats() const { return formats; }

  // --- Reading entries ----------------------------------------------------
  int ItemCount() const { return items.Count(); }
  int Capacity() const { return items.Capacity(); }
  int CurrentIndex() const { return settings.currentIndex; }
  void SetCurrentIndex(int index) { settings.currentIndex = index; }
  int FocusIndex() const { return focusIndex; }
  void SetFocusIndex(int index) { focusIndex = index; }
  // Index from 0 to ItemCount() - 1.
  const std::string& PathAt(int index) const { return items[index].path; }
  std::string TitleAt(int index) const;  // a copy, taken under the lock
  std::uint32_t FlagsAt(int index) const { return items[index].flags.load(std::memory_order_relaxed); }
  std::uint32_t DurationAt(int index) const { return items[index].Duration(); }
  std::uint32_t TrackNumberAt(int index) const { return items[index].TrackNumber(); }
  std::uint32_t PlayStampAt(int index) const { return items[index].playStamp; }

  // --- Changing entries without changing the shape (the reader runs on) ----
  void SetFlags(int index, std::uint32_t flags, bool on);
  // The title of a list file's line: sets the title and ITEM_HAS_INFO.
  void SetTitle(int index, std::string_view title);
  void SetDuration(int index, std::uint32_t durationMs);
  // Forgets what was read (ITEM_HAS_INFO, title) and marks the entry to be
  // read again by the next reader.
  void ForgetInfo(int index);

  // --- Ways in --------------------------------------------------------------
  // Adds one path. A playlist (m3u, pls, asx, and the native list while its
  // format is enabled) is read in its place, its entries coming back through
  // here; a path of any other kind becomes an entry, without looking at the
  // file. Stops the reader and doesn't restart it. False when memory ran out
  // or the path is empty.
  bool AddEntry(std::string_view path);
  // The file picker's form: a null view returns 0; a null path clears the
  // list; kEndOfBatch starts the reader; anything else is AddEntry. 1 or 0.
  static int AddEntry(const char* path, PlaylistView* view);
  // AddEntry, then tells the list and starts the reader.
  void AddAndRefresh(std::string_view path);
  // Removes every entry and gives the storage back; no entry is current.
  void ClearAll();
  // Room for `extra` more entries (in steps of 100). False when memory ran out.
  bool GrowItems(int extra);
  // The current index becomes that of the first entry marked ITEM_CURRENT, or -1.
  void ResyncCurrent();
  // The path of the current entry, which is marked; an index out of range is
  // first repaired to 0. Nothing for an empty list.
  std::optional<std::string> CurrentPath();
  // The current entry's title as the list shows it: the read title, else the
  // FileTitle of its path. Nothing for an empty list or an index out of range.
  std::optional<std::string> CurrentTitle();
  // Goes to `path` (found without regard to case, else added) and posts play
  // and a seek to `seconds`. With `enqueueOnly` the path is only added.
  void PlayPath(std::string_view path, std::uint32_t seconds, bool enqueueOnly);
  // Makes the focused row current and posts play.
  void PlayFocused();

  // --- Editing the shape (for the editing commands); each stops the reader ---
  void SwapEntries(int a, int b);
  // Releases the entries from `newCount` on; the caller resyncs and redraws.
  void ReleaseEntriesFrom(int newCount);
  // Stops the reader and runs `edit` on the store with the list's lock held,
  // then forgets the caches of shuffle. `edit` may reorder, release and read
  // titles; it must not call back into the view, nor touch a file.
  void EditEntries(const std::function<void(ItemStore&)>& edit);
  // Reads the information of one entry on this thread, as the reader does
  // (the reader must be stopped); false when the file couldn't be read.
  bool ReadInfoNow(int index);
  // What the commands tell the list on screen; nothing while none is open.
  void TellCount();
  // Every row again (with erase: the background too), at once.
  void Invalidate(bool erase);
  void RedrawRow(int index);
  // The generator behind RandomIndex, for commands that reseed it.
  RandomGenerator& Random() { return *random; }
  // Move mode: the keys move the selected rows instead of the focus. It
  // lives here so that it and the selection survive closing the list screen.
  bool MoveMode() const { return moveMode; }
  void SetMoveMode(bool on) { moveMode = on; }

  // --- Fills driven by dialogs (see playlist_dialogs.h) ----------------------
  void SetDialogs(PlaylistDialogs* boxes) { dialogs = boxes; }
  // The sort of a freshly added range, which the editing commands provide;
  // without one a range keeps the order it came in.
  void SetLoadSorter(std::function<void(PlaylistView&, int first, int last)> sorter);
  void AddFiles();
  void AddFolder();
  void NewPlaylist();
  void LoadPlaylist();
  void LoadFolderContents(const std::string& folder);
  void AddUrl();
  void AddFilesIfEmpty();
  void SavePlaylist();

  // --- The default list ----------------------------------------------------------
  // "default.tsl" in the install directory (the home folder when it is empty).
  static std::string DefaultListPath(const std::string& installDirectory);
  // Adds the native list at `path`, with its format enabled just for the read,
  // then tells the list and starts the reader.
  void LoadDefaultList(const std::string& path);
  // Writes the whole list in the native format; the old file survives any
  // failure. False when the file couldn't be written.
  bool SaveDefaultList(const std::string& path) const;

  // --- Info reader -------------------------------------------------------------
  // Starts a reader unless one runs; it reads the entries that lack their
  // information, from the first.
  void StartInfoThread();
  // Stops the reader, waiting at most kStopWaitMs; after that the caller goes
  // on and the reader, still inside one file's read, leaves when it returns.
  void StopInfoThread();
  bool InfoThreadRunning() const;

  // --- Order of play ---------------------------------------------------------------
  // The next entry, made current and stamped; nothing at the end of the list.
  // `honourOrder` false steps to the following entry, shuffle and repeat
  // ignored; `userStep` makes repeat one move on instead of staying.
  std::optional<std::string> NextTrack(bool honourOrder, bool userStep);
  // Back through the stamps of NextTrack while shuffle or repeat is on, then
  // by index; nothing at the first entry.
  std::optional<std::string> PreviousTrack();
  // Stores the switch and reseeds the generator; the cycle of ITEM_PLAYED
  // goes on across switching.
  void SetShuffle(bool on);
  bool Shuffle() const { return shuffle; }
  // 0 off, 1 all, 2 one, 3 selected.
  void SetRepeatMode(int mode) { repeatMode = mode; }
  int RepeatMode() const { return repeatMode; }
  // The first selected entry from `start` on, wrapping once round; -1 if none.
  int NextSelected(int start) const;
  // itemCount * rand / 32767, kept below itemCount.
  int RandomIndex();
  std::uint32_t NextStamp() const { return nextStamp; }

 private:
  struct ReaderRun;
  struct ReaderContext;
  static void InfoThreadMain(const ReaderContext& context);

  // Stops the reader, then locks for a change of shape.
  std::unique_lock<std::mutex> BeginShapeChange();
  void ReadListFile(int format, const std::string& path);
  void ClearCurrentMark();
  void MarkCurrent(int index);
  void PostToMainWindow(std::uint32_t message, std::uintptr_t wParam);
  // Shuffle's pick of an entry not yet played in this cycle.
  int PickUnplayed();
  bool AllPlayed();
  void ForgetPlayedCache();
  void SortLoaded(int first, int last);
  void FinishFill(bool startReader);

  playback::FormatRegistry& formats;
  PlaylistSettings settings;
  platform::MessageTarget* mainWindow = nullptr;
  PlaylistDialogs* dialogs = nullptr;
  std::function<void(PlaylistView&, int, int)> loadSorter;
  int focusIndex = 0;
  bool moveMode = false;

  // Order of play; window thread only.
  bool shuffle = false;
  int repeatMode = 0;
  std::uint32_t nextStamp = 1;
  std::unique_ptr<RandomGenerator> random;
  // Caches of shuffle: how many entries carry ITEM_PLAYED (valid unless
  // `playedCountStale`), and an index below which every entry carries it.
  int playedCount = 0;
  bool playedCountStale = false;
  int firstUnplayedHint = 0;

  // Shared with the info reader; see the rules at the top.
  std::shared_ptr<std::mutex> lock;
  // Guarded by `lock`:
  ItemStore items;               // written only by the window thread
  ListWindow* listWindow = nullptr;

  // The running reader; window thread only.
  std::shared_ptr<ReaderRun> readerRun;
  platform::Thread readerThread;
};

}  // namespace playlist
