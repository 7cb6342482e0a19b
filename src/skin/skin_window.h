// The player's face: the loaded skin, what the player pushes into it, and
// what it asks of the player.
//
// The window is a child of the main window. It paints the background and
// then every element in order; it hands mouse presses to the first element
// that takes one and keeps the mouse for it until the release; widgets reach
// the player only by posting their row's message to the parent. The player
// reaches the widgets in two ways:
//  - the push operations below (title, status line, figures, switches, key
//    feedback), which it calls when it has done something;
//  - the answers to the once-a-second poll (timer 31): the window sends 2569
//    (state: 1 stopped, 2 playing, 3 paused), then, unless stopped, 2566
//    (length) and 2565 (position, both in milliseconds) to the parent. The
//    status icons follow the state; stopped hides the seek bar, the timer and
//    the two figures, and shows PLAYPAUSE unchecked; playing or paused shows
//    the seek bar and timer, PLAYPAUSE checked while playing, and moves the
//    seek bar and the timer, redrawing only what changed.
// Timer 32 steps the title's scroll twice a second.
//
// A check button's own flip on a click is corrected by the next push or
// poll where it is bound: PLAYPAUSE by the poll, SHUFFLEONOFF, REPEATONOFF,
// EQONOFF and XBASSONOFF by the pushes. Others flip on each click.
//
// Elements are found by kind and id: the first of the kind whose row is the
// row of the id (no id: the row -1). The switches and the volume act on
// every match.
//
// Threads: window thread only, timers included; the sends reach the parent
// on the same thread.
#pragma once

#include <cstdint>
#include <string>

#include "platform/message_target.h"
#include "platform/timers.h"
#include "skin/skin_layout.h"

namespace skin {

inline constexpr std::uint32_t kTimerPoll = 31;
inline constexpr std::uint32_t kTimerScroll = 32;
inline constexpr std::uint32_t kPollPeriodMs = 1000;
inline constexpr std::uint32_t kScrollPeriodMs = 500;
// The skin's surface in pixels; the background is painted in this size.
inline constexpr int kSkinWidth = 176;
inline constexpr int kSkinHeight = 180;

class SkinButton;
class SkinCheckButton;
class SkinSlider;
class SkinText;
class SkinTimer;

class SkinWindow : public platform::MessageHandler {
 public:
  SkinWindow() = default;
  ~SkinWindow() override;
  SkinWindow(const SkinWindow&) = delete;
  SkinWindow& operator=(const SkinWindow&) = delete;

  // Loads "layout.xml" and then the bitmaps from `skinDirectory` (ending in
  // "/"); false on any failure.
  bool Load(const std::string& skinDirectory, SkinBitmapLoader& bitmaps);
  // Binds the elements to the surface and starts the two timers. `parent`
  // and `timers` outlive the window; `timers` deliver to this window.
  void Attach(SkinSurface& surface, platform::MessageTarget& parent, platform::Timers& timers);

  // Paints the background, then each element.
  void Paint(SkinCanvas& canvas);
  // The left button, in skin pixels (taken as signed 16-bit values).
  void ButtonDown(int x, int y);
  void MouseMove(int x, int y);
  void ButtonUp(int x, int y);
  // Timers 31 and 32 (kMessageTimer); anything else is left alone.
  std::intptr_t HandleMessage(const platform::Message& message) override;
  void Poll();
  void ScrollTitle();

  // --- What the player pushes ----------------------------------------------
  // Every title bar gets the title (or the message; empty clears it).
  void SetTitle(const std::string& text);
  void SetMessage(const std::string& text);
  // BITRATE and SAMPLINGRATE get their numbers and show, drawn at once when
  // a shown number changes; the length is unused.
  void SetTrackFigures(std::uint32_t lengthMs, std::uint32_t bitRate, std::uint32_t sampleRate);
  // Every VOLUME slider, 0 to 1000; marked for the next paint.
  void SetVolume(int slider);
  void SetShuffle(bool on);
  void SetRepeat(bool on);
  void SetEqualizer(bool on);
  void SetExtraBass(bool on);
  // PLAYPAUSE shows checked while not paused.
  void SetPaused(bool paused);
  // The buttons and check buttons of the first row bound to the key show
  // pressed while it is down.
  void KeyFeedback(std::uint16_t key, bool down);

  // The first element of `type` whose row is that of `id` (null: no row).
  SkinElement* FindElement(int type, const char* id) const;
  const SkinLayout& Layout() const { return layout; }

 private:
  void SetCheckedAll(const char* id, bool checked);

  SkinLayout layout;
  SkinSurface* surface = nullptr;
  platform::MessageTarget* parent = nullptr;
  platform::Timers* timers = nullptr;
};

}  // namespace skin
