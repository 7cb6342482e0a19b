// The dialogs that fill and save the list, as the list's fills use them.
//
// The file picker, its folder scan and two small dialogs belong to the user
// interface; the list screen hands an implementation to
// PlaylistView::SetDialogs. Every chosen path goes to the list through
// PlaylistView::AddEntry(path, &view), the picker's callback, which also
// clears the list on a null path and starts the reader on kEndOfBatch.
//
// Threads: window thread only.
#pragma once

#include <optional>
#include <string>

namespace playlist {

class PlaylistView;

// The caption of the "Add URL" box and the text it starts with.
inline constexpr int kTextAddUrl = 6340;
inline constexpr const char* kAddUrlPreset = "http://";

class PlaylistDialogs {
 public:
  enum class PickerMode { kFiles, kFolder, kPlaylists };

  virtual ~PlaylistDialogs() = default;

  // Runs the file picker. With `replace` the picker clears the list when the
  // user confirms, before it adds. Returns the picker's result, 1 for OK.
  virtual int RunPicker(PickerMode mode, bool replace, PlaylistView& view) = 0;
  // The picker's walk through a folder tree, without a dialog.
  virtual void ScanFolder(const std::string& folder, PlaylistView& view) = 0;
  // The Edit File Name box with a caption (a text id) and a preset text;
  // nothing when cancelled.
  virtual std::optional<std::string> EditText(int captionTextId, const std::string& preset) = 0;
  // The File Save box for a playlist; nothing when cancelled.
  virtual std::optional<std::string> AskSavePath() = 0;
};

}  // namespace playlist
