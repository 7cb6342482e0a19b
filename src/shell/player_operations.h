// The operations that the main window's procedure reaches.
//
// The switchboard (switchboard.h) turns each message and command into one of
// these, with the arguments the message carries; PlayerApp implements them.
// Keeping them behind an interface lets the routing be tested on its own.
//
// Threads: window thread only.
#pragma once

#include <cstdint>
#include <string>

#include "platform/message_target.h"

namespace shell {

class PlayerOperations {
 public:
  virtual ~PlayerOperations() = default;

  // --- Window life -------------------------------------------------------------
  // The persist sequence: what a close saves (WM_CLOSE and WM_DESTROY).
  virtual void Persist() = 0;
  // Ends the message loop (after WM_CLOSE's persist sequence).
  virtual void QuitMessageLoop() = 0;
  // Posts WM_CLOSE to the own window (the Exit commands).
  virtual void PostClose() = 0;
  // WM_ACTIVATE: the main window became the active one, or stopped being it.
  virtual void Activated(bool active) = 0;
  virtual void KeyDown(std::uint32_t key) = 0;
  virtual void KeyUp(std::uint32_t key) = 0;
  // Drops the queued copies of a message of the own window.
  virtual void DropQueued(std::uint32_t message) = 0;

  // --- Transport -----------------------------------------------------------------
  virtual void Play(bool keepCurrent) = 0;
  virtual void Stop() = 0;
  virtual void TogglePause() = 0;
  virtual void Next(bool automatic) = 0;
  virtual void Previous() = 0;
  virtual void TrackEnded() = 0;
  virtual void PlayPause() = 0;
  virtual void PlayStop() = 0;
  virtual void SeekTo(std::int32_t milliseconds) = 0;
  virtual void SkipForward() = 0;
  virtual void SkipBack() = 0;
  virtual void VolumeStep(bool up) = 0;
  virtual void SetVolumeFromSlider(std::int32_t slider) = 0;
  virtual void ToggleMute() = 0;
  virtual void ToggleExtraBass() = 0;
  virtual void ToggleEqualizer() = 0;
  virtual void ApplyEqualizer() = 0;
  // After the General options: the Equalizer is enabled unless the option
  // "Disable WMA&Ogg equalizer" is on.
  virtual void ApplyEqualizerOption() = 0;
  virtual void SetShuffle(bool on) = 0;
  virtual void SetRepeat(bool on) = 0;
  // `command` is 40026 to 40028: repeat mode command - 40025.
  virtual void SetRepeatMode(std::uint32_t command) = 0;
  virtual void ToggleShuffle() = 0;
  virtual void ToggleRepeat() = 0;
  // Message 2331: a decoder's text (null for none) in `mode` 0 title, 1
  // lasting status, 2 status for a second.
  virtual void DecoderText(const std::string* text, std::intptr_t mode) = 0;
  virtual void RefreshFormat() = 0;
  virtual void RefreshTitle() = 0;
  // Results of messages that the skin and the list send.
  virtual std::int32_t PositionMs() = 0;  // also tells the list the position
  virtual std::int32_t LengthMs() = 0;
  virtual std::int32_t DecoderState() = 0;
  // Refreshes the information block and returns its address.
  virtual std::intptr_t RefreshInformationBlock(std::uintptr_t wParam, std::intptr_t lParam) = 0;

  // --- Window and list --------------------------------------------------------------
  virtual void ActivateWindowBelow() = 0;
  virtual void ShowOrHide() = 0;
  // Message 2646: a later process handed over a path.
  virtual void OpenHandedOverPath(const std::string* path) = 0;
  virtual void LoadFiles() = 0;
  virtual void AddFiles() = 0;
  virtual void ScrollPlaylist(bool up) = 0;
  // Message 2327: post the message of an action row, if it has one.
  virtual void PostActionOfRow(std::intptr_t row) = 0;

  // --- Stored flags, keys, language, skip step ----------------------------------------
  virtual void FlipSpareFlagsAB() = 0;
  virtual void FlipSpareFlagC() = 0;
  virtual void ToggleButtonLock() = 0;
  virtual void SelectLanguage(std::uint32_t entry) = 0;
  // `index` into the skip table (command - 2200).
  virtual void SelectSkipTime(std::uint32_t index) = 0;

  // --- Bookmarks, alarm, calls -----------------------------------------------------------
  virtual void PlayBookmark(std::int32_t index, bool enqueue) = 0;
  virtual void AddBookmark() = 0;
  virtual void ReplaceBookmark(std::int32_t index) = 0;
  virtual void RebuildBookmarkMenu() = 0;
  virtual void OnAlarm() = 0;
  virtual void OnCallEvent(bool began) = 0;

  // --- Timers ------------------------------------------------------------------------------
  virtual void StatusTimerFired() = 0;        // 33
  virtual void FadeInStep() = 0;              // 138
  virtual void SleepTimerTick() = 0;          // 139
  virtual void KeepAwakeTick() = 0;           // 21
  virtual void DecoderNudgeTimerFired() = 0;  // 137

  // --- Dialogs -----------------------------------------------------------------------------
  virtual void ShowAbout() = 0;
  virtual void ShowEqualizer() = 0;
  virtual void ShowPlaylist() = 0;
  virtual void ShowBookmarks() = 0;
  virtual void ShowSleepTimer() = 0;
  virtual void ShowKeyMapping() = 0;
  virtual void ShowGeneralOptions() = 0;
  virtual void ShowPlaylistOptions() = 0;
  virtual void ShowFileTypes() = 0;
  virtual void ShowSetAlarm() = 0;
  virtual void ShowEffects() = 0;
  virtual void SaveSettings() = 0;
};

}  // namespace shell
