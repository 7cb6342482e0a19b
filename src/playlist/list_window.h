// What the playlist model tells the list on screen.
//
// The list screen comes and goes while the model lives for the whole run, so
// the model holds a pointer to this interface that is null while no screen is
// open, and then tells nothing.
//
// Threads: the first three operations are called on the window thread. The
// last two come from the info reader's thread, with the list's lock held:
// they must only queue work for the window thread and return, never wait for
// the window thread and never call back into the PlaylistView.
#pragma once

namespace playlist {

class ListWindow {
 public:
  virtual ~ListWindow() = default;

  // The number of rows changed.
  virtual void SetItemCount(int count) = 0;
  // Invalidates every row (with erase: the background too) and updates at once.
  virtual void InvalidateAll(bool erase) = 0;
  // Redraws one row now.
  virtual void RedrawRow(int index) = 0;

  // Info reader thread: the information of this row was read; redraw it soon.
  virtual void PostRowRead(int index) = 0;
  // Info reader thread: the reader walked to the end; redraw the list soon.
  virtual void PostReadingDone() = 0;
};

}  // namespace playlist
