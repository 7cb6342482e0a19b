// The dialogs the main window opens, as the shell reaches them.
//
// The Qt shell implements these with modal dialogs built in code, their
// texts taken through the language layer (DialogText) and their soft keys
// from the menu bar templates. Each dialog's own rules (the guard against two
// modal dialogs at once, what it edits) live in its implementation; what the
// main window does before and after (saving the settings, rebuilding a menu)
// is the switchboard's.
//
// Threads: window thread only; each call returns when the dialog has closed.
#pragma once

namespace shell {

class Dialogs {
 public:
  virtual ~Dialogs() = default;

  virtual void About() = 0;            // command 1100
  virtual void Equalizer() = 0;        // command 1102
  virtual void Playlist() = 0;         // command 1103, the left soft key
  virtual void Bookmarks() = 0;        // command 1513
  virtual void SleepTimer() = 0;       // command 1518
  virtual void KeyMapping() = 0;       // command 40001
  virtual void GeneralOptions() = 0;   // command 40006
  virtual void PlaylistOptions() = 0;  // command 40007
  virtual void FileTypes() = 0;        // command 40045
  virtual void SetAlarm() = 0;         // command 40046
  virtual void Effects() = 0;          // command 40090
};

// The process-wide flag by which the launchers of modal dialogs keep a
// second one from opening while one is open. Window thread only.
bool& ModalDialogOpen();

}  // namespace shell
