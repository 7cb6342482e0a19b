#include "skin/skin_window.h"

#include <algorithm>

#include "skin/skin_action_table.h"
#include "skin/skin_button.h"
#include "skin/skin_slider.h"
#include "skin/skin_text.h"

namespace skin {
namespace {

constexpr std::uint32_t kMessageGetPosition = 2565;
constexpr std::uint32_t kMessageGetLength = 2566;
constexpr std::uint32_t kMessageGetState = 2569;
constexpr std::intptr_t kStateStopped = 1;
constexpr std::intptr_t kStatePlaying = 2;
constexpr std::intptr_t kStatePaused = 3;

int Signed16(int value) {
  return static_cast<std::int16_t>(value);
}

}  // namespace

SkinWindow::~SkinWindow() {
  if (timers == nullptr) return;
  timers->Kill(kTimerPoll);
  timers->Kill(kTimerScroll);
}

bool SkinWindow::Load(const std::string& skinDirectory, SkinBitmapLoader& bitmaps) {
  layout.SetSkinDirectory(skinDirectory);
  return layout.LoadLayout(skinDirectory + "layout.xml") && layout.LoadBitmaps(bitmaps);
}

void SkinWindow::Attach(SkinSurface& windowSurface, platform::MessageTarget& parentTarget,
                        platform::Timers& windowTimers) {
  surface = &windowSurface;
  parent = &parentTarget;
  timers = &windowTimers;
  layout.BindWindow(surface);
  // Only the seek bar is shown and hidden by the poll: the others show always.
  for (int i = 0; i < layout.ElementCount(); ++i) {
    SkinElement* element = layout.Element(i);
    if (element->GetType() == kTypeSlider && element->GetId() != kRowSeekBar)
      static_cast<SkinSlider*>(element)->SetVisible(true);
  }
  timers->Set(kTimerPoll, kPollPeriodMs);
  timers->Set(kTimerScroll, kScrollPeriodMs);
}

void SkinWindow::Paint(SkinCanvas& canvas) {
  canvas.CopyBitmap({layout.BackgroundIndex(), 0, 0, kSkinWidth, kSkinHeight}, 0, 0);
  for (int i = 0; i < layout.ElementCount(); ++i) layout.Element(i)->Paint(canvas, nullptr);
}

void SkinWindow::ButtonDown(int x, int y) {
  for (int i = 0; i < layout.ElementCount(); ++i) {
    SkinElement* element = layout.Element(i);
    if (element->OnButtonDown(Signed16(x), Signed16(y))) {
      layout.capturedElement = element;
      if (surface != nullptr) surface->Update();
      return;
    }
  }
}

void SkinWindow::MouseMove(int x, int y) {
  if (layout.capturedElement == nullptr) return;
  if (layout.capturedElement->OnMouseMove(Signed16(x), Signed16(y)) && surface != nullptr) surface->Update();
}

void SkinWindow::ButtonUp(int x, int y) {
  if (layout.capturedElement == nullptr) return;
  layout.capturedElement->OnButtonUp(Signed16(x), Signed16(y));
  if (surface != nullptr) surface->Update();
  layout.capturedElement = nullptr;
}

std::intptr_t SkinWindow::HandleMessage(const platform::Message& message) {
  if (message.id != platform::kMessageTimer) return 0;
  if (message.wParam == kTimerPoll) Poll();
  if (message.wParam == kTimerScroll) ScrollTitle();
  return 0;
}

void SkinWindow::Poll() {
  if (parent == nullptr) return;
  const std::intptr_t state = parent->Send(kMessageGetState);
  for (int i = 0; i < layout.ElementCount(); ++i) {
    SkinElement* element = layout.Element(i);
    if (element->GetType() == kTypeIconStatus)
      static_cast<SkinIconStatus*>(element)->SetState(static_cast<int>(state - 1));
  }
  auto* seekBar = static_cast<SkinSlider*>(FindElement(kTypeSlider, "SEEKBAR"));
  auto* timer = static_cast<SkinTimer*>(FindElement(kTypeTimer, nullptr));
  auto* playPause = static_cast<SkinCheckButton*>(FindElement(kTypeCheckButton, "PLAYPAUSE"));
  if (state == kStateStopped) {
    if (seekBar != nullptr) seekBar->SetVisible(false);
    if (timer != nullptr) timer->SetVisible(false);
    if (playPause != nullptr) playPause->SetChecked(false);
    for (const char* figure : {"BITRATE", "SAMPLINGRATE"}) {
      if (auto* text = static_cast<SkinText*>(FindElement(kTypeText, figure))) text->SetVisible(false);
    }
    return;
  }
  if (state != kStatePlaying && state != kStatePaused) return;
  if (playPause != nullptr) playPause->SetChecked(state == kStatePlaying);
  if (seekBar != nullptr) seekBar->SetVisible(true);
  if (timer != nullptr) timer->SetVisible(true);
  const std::int64_t length = parent->Send(kMessageGetLength);
  const std::int64_t position = parent->Send(kMessageGetPosition);
  // A skin needs a SEEKBAR slider; without one the poll still runs.
  const std::int64_t value = length != 0 ? position * 1000 / length : 0;
  if (seekBar != nullptr && value != seekBar->GetValue()) {
    seekBar->SetValue(static_cast<int>(std::clamp<std::int64_t>(value, -1, 1001)));
    seekBar->Redraw();
  }
  const auto seconds = static_cast<int>(position / 1000);
  if (timer != nullptr && seconds != timer->GetSeconds()) {
    timer->SetSeconds(seconds);
    timer->Redraw();
  }
}

void SkinWindow::ScrollTitle() {
  if (SkinTitleBar* title = layout.TitleBar()) title->Scroll(layout.BackgroundIndex());
}

SkinElement* SkinWindow::FindElement(int type, const char* id) const {
  const int row = id != nullptr ? SkinLayout::FindAction(id) : -1;
  for (int i = 0; i < layout.ElementCount(); ++i) {
    SkinElement* element = layout.Element(i);
    if (element->GetType() == type && element->GetId() == row) return element;
  }
  return nullptr;
}

void SkinWindow::SetTitle(const std::string& text) {
  for (int i = 0; i < layout.ElementCount(); ++i) {
    SkinElement* element = layout.Element(i);
    if (element->GetType() == kTypeTitleBar) static_cast<SkinTitleBar*>(element)->SetTitle(text);
  }
}

void SkinWindow::SetMessage(const std::string& text) {
  for (int i = 0; i < layout.ElementCount(); ++i) {
    SkinElement* element = layout.Element(i);
    if (element->GetType() == kTypeTitleBar) static_cast<SkinTitleBar*>(element)->SetMessage(text);
  }
}

void SkinWindow::SetTrackFigures(std::uint32_t /*lengthMs*/, std::uint32_t bitRate,
                                 std::uint32_t sampleRate) {
  const std::pair<const char*, std::uint32_t> figures[] = {{"BITRATE", bitRate},
                                                           {"SAMPLINGRATE", sampleRate}};
  for (const auto& [id, number] : figures) {
    if (auto* text = static_cast<SkinText*>(FindElement(kTypeText, id))) {
      const std::string value = std::to_string(static_cast<std::int32_t>(number));
      // A text doesn't repaint itself for a new value; a stream's rates
      // arrive while the figures already show, so a change is drawn here.
      const bool changed = text->IsVisible() && text->Text() != value;
      text->SetText(value);
      text->SetVisible(true);
      if (changed) text->Redraw();
    }
  }
}

// The slider isn't redrawn at once; its rectangle is marked, so that the
// thumb follows the volume keys at the next paint.
void SkinWindow::SetVolume(int slider) {
  for (int i = 0; i < layout.ElementCount(); ++i) {
    SkinElement* element = layout.Element(i);
    if (element->GetType() != kTypeSlider || element->GetId() != kRowVolume) continue;
    static_cast<SkinSlider*>(element)->SetValue(slider);
    element->Invalidate();
  }
}

void SkinWindow::SetCheckedAll(const char* id, bool checked) {
  const int row = SkinLayout::FindAction(id);
  for (int i = 0; i < layout.ElementCount(); ++i) {
    SkinElement* element = layout.Element(i);
    if (element->GetType() == kTypeCheckButton && element->GetId() == row)
      static_cast<SkinCheckButton*>(element)->SetChecked(checked);
  }
}

void SkinWindow::SetShuffle(bool on) {
  SetCheckedAll("SHUFFLEONOFF", on);
}
void SkinWindow::SetRepeat(bool on) {
  SetCheckedAll("REPEATONOFF", on);
}
void SkinWindow::SetEqualizer(bool on) {
  SetCheckedAll("EQONOFF", on);
}
void SkinWindow::SetExtraBass(bool on) {
  SetCheckedAll("XBASSONOFF", on);
}

// The paused push is a check mark like the others, so it reaches every
// PLAYPAUSE check button.
void SkinWindow::SetPaused(bool paused) {
  SetCheckedAll("PLAYPAUSE", !paused);
}

void SkinWindow::KeyFeedback(std::uint16_t key, bool down) {
  const SkinActionTable& table = Actions();
  int row = -1;
  for (int i = 0; i < kActionRowCount && row < 0; ++i) {
    if (table[static_cast<std::size_t>(i)].key == key) row = i;
  }
  if (row < 0) return;
  for (int i = 0; i < layout.ElementCount(); ++i) {
    SkinElement* element = layout.Element(i);
    if (element->GetId() != row) continue;
    if (element->GetType() == kTypeButton || element->GetType() == kTypeCheckButton)
      static_cast<SkinPushControl*>(element)->SetPressed(down);
  }
}

}  // namespace skin
