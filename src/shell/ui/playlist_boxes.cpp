#include "shell/ui/playlist_boxes.h"

#include <QWidget>

#include "platform/paths.h"
#include "platform/texts.h"
#include "playback/format_registry.h"
#include "playlist/playlist_view.h"
#include "shell/ui/file_name_boxes.h"
#include "shell/ui/file_picker.h"

namespace ui {

int QtPlaylistBoxes::RunPicker(PickerMode mode, bool replace, playlist::PlaylistView& view) {
  FilePicker picker(view.Formats(), &parent);
  picker.SetCallback([&view](const char* path) { playlist::PlaylistView::AddEntry(path, &view); });
  picker.SetPlaylistsOnly(mode == PickerMode::kPlaylists);
  return picker.Show(mode == PickerMode::kFolder, replace, view.Settings().pickerOption);
}

void QtPlaylistBoxes::ScanFolder(const std::string& folder, playlist::PlaylistView& view) {
  const std::string start = folder.empty() || folder == "\\" ? platform::HomeDirectory() : folder;
  ScanFolderKeepingWindowAlive(view.Formats(), start, false, false, [&view](const std::string& path) {
    playlist::PlaylistView::AddEntry(path.c_str(), &view);
    return true;
  });
}

std::optional<std::string> QtPlaylistBoxes::EditText(int captionTextId, const std::string& preset) {
  TextPrompt prompt(&parent);
  prompt.SetText(preset);
  if (!prompt.Show(platform::LoadText(std::uint32_t(captionTextId)))) return std::nullopt;
  return prompt.GetText();
}

std::optional<std::string> QtPlaylistBoxes::AskSavePath() {
  SaveFileDialog dialog(playback::Formats(), &parent);
  if (dialog.Show() != 1) return std::nullopt;
  return dialog.GetFileName();
}

}  // namespace ui
