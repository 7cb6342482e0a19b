#include "playlist/playlist_view.h"

#include "platform/message_target.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "playlist/file_title.h"
#include "playlist/playlist_files.h"

namespace playlist {

const char* const PlaylistView::kEndOfBatch = reinterpret_cast<const char*>(~std::uintptr_t{0});

PlaylistView::PlaylistView(playback::FormatRegistry& formatRegistry)
    : formats(formatRegistry),
      random(std::make_unique<CrtRandom>()),
      lock(std::make_shared<std::mutex>()) {}

PlaylistView::~PlaylistView() { StopInfoThread(); }

void PlaylistView::SetListWindow(ListWindow* window) {
  std::lock_guard guard(*lock);
  listWindow = window;
}

void PlaylistView::SetRandomGenerator(std::unique_ptr<RandomGenerator> generator) {
  if (generator) random = std::move(generator);
}

std::string PlaylistView::TitleAt(int index) const {
  std::lock_guard guard(*lock);
  return items[index].title;
}

void PlaylistView::SetFlags(int index, std::uint32_t flags, bool on) {
  if (on) items[index].Set(flags);
  else items[index].Clear(flags);
  if ((flags & ITEM_PLAYED) != 0) ForgetPlayedCache();
}

void PlaylistView::SetTitle(int index, std::string_view title) {
  std::lock_guard guard(*lock);
  items[index].title.assign(title);
  items[index].Set(ITEM_HAS_INFO);
}

void PlaylistView::SetDuration(int index, std::uint32_t durationMs) {
  items[index].durationMs.store(durationMs, std::memory_order_relaxed);
}

void PlaylistView::ForgetInfo(int index) {
  std::lock_guard guard(*lock);
  PlaylistItem& item = items[index];
  item.Clear(ITEM_HAS_INFO);
  std::string().swap(item.title);
  item.durationMs.store(kDurationReadAgain, std::memory_order_relaxed);
}

std::unique_lock<std::mutex> PlaylistView::BeginShapeChange() {
  StopInfoThread();
  return std::unique_lock(*lock);
}

bool PlaylistView::AddEntry(std::string_view path) {
  StopInfoThread();
  if (path.empty()) return false;
  const int format = formats.FormatOf(path);
  if (playback::FormatRegistry::IsPlaylist(format)) {
    ReadListFile(format, std::string(path));
    return true;
  }
  // Appending keeps the caches of shuffle valid: the new entry is unplayed.
  std::lock_guard guard(*lock);
  if (items.Count() >= items.Capacity() && !items.Grow(ItemStore::kGrowStep)) return false;
  if (!items.Append(path)) return false;
  const int index = items.Count() - 1;
  // A current index kept from the last run marks its entry as the saved list loads.
  if (index == settings.currentIndex) items[index].Set(ITEM_CURRENT);
  return true;
}

int PlaylistView::AddEntry(const char* path, PlaylistView* view) {
  if (view == nullptr) return 0;
  view->StopInfoThread();
  if (path == nullptr) {
    view->ClearAll();
    return 1;
  }
  if (path == kEndOfBatch) {
    view->StartInfoThread();
    return 1;
  }
  return view->AddEntry(std::string_view(path)) ? 1 : 0;
}

void PlaylistView::ReadListFile(int format, const std::string& path) {
  switch (format) {
    case playback::kFormatM3u: ReadM3u(*this, path); break;
    case playback::kFormatNativeList: ReadM3u(*this, path, /*nativeList=*/true); break;
    case playback::kFormatPls: ReadPls(*this, path); break;
    case playback::kFormatAsx: ReadAsx(*this, path); break;
    default: break;  // a playlist format without a reader adds nothing
  }
}

void PlaylistView::AddAndRefresh(std::string_view path) {
  AddEntry(path);
  TellCount();
  Invalidate(true);
  StartInfoThread();
}

void PlaylistView::ClearAll() {
  {
    auto guard = BeginShapeChange();
    items.Clear();
  }
  ForgetPlayedCache();
  TellCount();
  settings.currentIndex = -1;
  Invalidate(true);
}

bool PlaylistView::GrowItems(int extra) {
  auto guard = BeginShapeChange();
  return items.Grow(extra);
}

void PlaylistView::ResyncCurrent() {
  settings.currentIndex = -1;
  for (int i = 0; i < items.Count(); ++i) {
    if (items[i].Has(ITEM_CURRENT)) {
      settings.currentIndex = i;
      return;
    }
  }
}

std::optional<std::string> PlaylistView::CurrentPath() {
  const int count = items.Count();
  if (count == 0) return std::nullopt;
  int& current = settings.currentIndex;
  if (current < 0 || current >= count) {
    current = 0;
    items[0].Set(ITEM_CURRENT);
    RedrawRow(0);
  }
  items[current].Set(ITEM_CURRENT);
  RedrawRow(current);
  return items[current].path;
}

std::optional<std::string> PlaylistView::CurrentTitle() {
  const int current = settings.currentIndex;
  if (current < 0 || current >= items.Count()) return std::nullopt;
  const PlaylistItem& item = items[current];
  {
    std::lock_guard guard(*lock);
    if (item.Has(ITEM_HAS_INFO)) return item.title;
  }
  return platform::TruncateToUtf16Units(FileTitle(item.path), kShortTitleUnits);
}

void PlaylistView::ClearCurrentMark() {
  const int current = settings.currentIndex;
  if (current >= 0 && current < items.Count()) items[current].Clear(ITEM_CURRENT);
}

void PlaylistView::MarkCurrent(int index) {
  settings.currentIndex = index;
  if (index >= 0 && index < items.Count()) items[index].Set(ITEM_CURRENT);
}

void PlaylistView::PlayPath(std::string_view path, std::uint32_t seconds, bool enqueueOnly) {
  int found = -1;
  if (!enqueueOnly) {
    for (int i = 0; i < items.Count() && found < 0; ++i) {
      if (platform::EqualsIgnoreCase(items[i].path, path)) found = i;
    }
  }
  if (found < 0) {
    AddAndRefresh(path);
    if (enqueueOnly || items.Count() == 0) return;
    found = items.Count() - 1;
  }
  ClearCurrentMark();
  MarkCurrent(found);
  PostToMainWindow(kMessagePlay, 1);
  PostToMainWindow(kMessageSeek, static_cast<std::uintptr_t>(seconds) * 1000u);
  Invalidate(false);
}

void PlaylistView::PlayFocused() {
  for (int i = 0; i < items.Count(); ++i) items[i].Clear(ITEM_CURRENT);
  MarkCurrent(focusIndex);
  PostToMainWindow(kMessagePlay, 2);
  Invalidate(true);
}

void PlaylistView::SwapEntries(int a, int b) {
  {
    auto guard = BeginShapeChange();
    items.Swap(a, b);
  }
  firstUnplayedHint = 0;
}

void PlaylistView::ReleaseEntriesFrom(int newCount) {
  {
    auto guard = BeginShapeChange();
    items.ReleaseFrom(newCount);
  }
  ForgetPlayedCache();
}

void PlaylistView::EditEntries(const std::function<void(ItemStore&)>& edit) {
  {
    auto guard = BeginShapeChange();
    edit(items);
  }
  ForgetPlayedCache();
}

std::string PlaylistView::DefaultListPath(const std::string& installDirectory) {
  const std::string folder = installDirectory.empty() ? platform::HomeDirectory() : installDirectory;
  if (!folder.empty() && folder.back() == '/') return folder + "default.tsl";
  return platform::JoinPath(folder, "default.tsl");
}

void PlaylistView::LoadDefaultList(const std::string& path) {
  // The reader is stopped while the format table changes, since it consults
  // the table for every file; it starts again once the native format is off.
  StopInfoThread();
  formats.Enable(playback::kFormatNativeList, true);
  AddEntry(path);
  formats.Enable(playback::kFormatNativeList, false);
  TellCount();
  Invalidate(true);
  StartInfoThread();
}

bool PlaylistView::SaveDefaultList(const std::string& path) const { return WriteM3u(*this, path); }

void PlaylistView::TellCount() {
  if (listWindow != nullptr) listWindow->SetItemCount(items.Count());
}

void PlaylistView::Invalidate(bool erase) {
  if (listWindow != nullptr) listWindow->InvalidateAll(erase);
}

void PlaylistView::RedrawRow(int index) {
  if (listWindow != nullptr) listWindow->RedrawRow(index);
}

void PlaylistView::PostToMainWindow(std::uint32_t message, std::uintptr_t wParam) {
  if (mainWindow != nullptr) mainWindow->Post(message, wParam);
}

}  // namespace playlist
