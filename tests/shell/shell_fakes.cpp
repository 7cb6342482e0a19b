#include "shell_fakes.h"

#include "shell/player_app.h"

namespace testing_support {

std::unique_ptr<shell::MainWindow> FakeWindowSystem::CreateMainWindow(const shell::Rect& area,
                                                                      shell::PlayerApp& app) {
  createdAt = area;
  if (failCreation) return nullptr;
  auto created = std::make_unique<FakeMainWindow>(app);
  created->attachSucceeds = !failMenuBar;
  created->skinSucceeds = !failSkin;
  window = created.get();
  return created;
}

int FakeWindowSystem::RunMessageLoop() {
  ++loops;
  if (window != nullptr) {
    eventsAtLoop = window->events;
    listDialogsAtLoop = window->listDialogs.asked;
    if (onLoop) onLoop();
    for (const std::uint32_t message : postedAtStart) window->queue.Post(message);
    while (!quit && window->queue.PendingCount() > 0) {
      platform::Message message;
      window->queue.TakeNext(message);
      window->procedure.HandleMessage(message);
    }
  }
  return quit ? quitCode : -1;
}

int FakeListDialogs::RunPicker(PickerMode mode, bool replace, playlist::PlaylistView& view) {
  asked.push_back(std::string("picker ") +
                  (mode == PickerMode::kFiles    ? "files"
                   : mode == PickerMode::kFolder ? "folder"
                                                 : "playlists") +
                  (replace ? " replace" : ""));
  if (replace) playlist::PlaylistView::AddEntry(nullptr, &view);
  for (const std::string& path : picked) playlist::PlaylistView::AddEntry(path.c_str(), &view);
  playlist::PlaylistView::AddEntry(playlist::PlaylistView::kEndOfBatch, &view);
  return 1;
}

void FakeListDialogs::ScanFolder(const std::string& folder, playlist::PlaylistView& view) {
  asked.push_back("scan " + folder);
  for (const std::string& path : picked) playlist::PlaylistView::AddEntry(path.c_str(), &view);
}

std::optional<FakePackReader::Texts> FakePackReader::Read(const std::string& path,
                                                          const std::vector<std::string>& keys) {
  reads.push_back(path);
  const std::string name = path.substr(path.find_last_of('/') + 1);
  const auto found = packs.find(name);
  if (found == packs.end() || !found->second) return std::nullopt;
  Texts texts;
  for (const std::string& key : keys) {
    if (const auto text = found->second->find(key); text != found->second->end())
      texts.emplace(key, text->second);
  }
  return texts;
}

}  // namespace testing_support
