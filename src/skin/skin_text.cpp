#include "skin/skin_text.h"

#include <cstdio>

#include "platform/text.h"

namespace skin {
namespace {

constexpr int kTextWeight = 400;
constexpr int kTitleWeight = 700;
// What the title shows until a track's title arrives.
constexpr std::string_view kStartText = "Tavrinsonic (www.halvorkeep.example) +++ ";
constexpr std::string_view kScrollSeparator = " \u2022 ";

std::string CutTo(std::string_view text, std::size_t unitsWithTerminator) {
  return platform::TruncateToUtf16Units(text, unitsWithTerminator - 1);
}

// Length in bytes of the UTF-8 character that starts the text (1 for a byte
// that starts none).
std::size_t FirstCharacterLength(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  std::size_t length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  if (length > text.size()) return 1;
  for (std::size_t i = 1; i < length; ++i) {
    if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) return 1;
  }
  return length;
}

}  // namespace

std::uint32_t TextFormatFor(int orientation, bool forTitle) {
  if (orientation == 0) return forTitle ? kTextLeftMiddle : kTextRightMiddle;
  if (orientation == 90) return forTitle ? kTextLeftBottom : kTextRightBottom;
  return kTextLeftTop;
}

SkinText::SkinText(int actionRow, const TextStyle& textStyle) : id(actionRow), style(textStyle) {
  style.font.weight = kTextWeight;
}

void SkinText::Paint(SkinCanvas& canvas, const SkinRect* region) {
  if (OutsideRegion(region) || !visible) return;
  canvas.DrawText(text, rect, TextFormatFor(style.orientation, false), style.font, style.color);
}

void SkinText::Redraw() {
  if (window == nullptr) return;
  WipeBackground(window->Canvas());
  if (visible) Paint(window->Canvas(), nullptr);
}

void SkinText::SetText(std::string_view value) {
  text = CutTo(value, kTextFieldUnits);
}

void SkinText::SetVisible(bool value) {
  if (visible == value) return;
  visible = value;
  Redraw();
}

void SkinTimer::SetSeconds(int value) {
  if (value == seconds) return;
  seconds = value;
  const int minutes = value / 60;
  char buffer[kTextFieldUnits];
  std::snprintf(buffer, sizeof buffer, minutes > 99 ? "%03d:%02d" : "%02d:%02d", minutes, value % 60);
  text = buffer;
}

SkinTitleBar::SkinTitleBar(int actionRow, const TextStyle& textStyle)
    : id(actionRow), style(textStyle), shownText(kStartText) {
  style.font.weight = kTitleWeight;
}

std::uint32_t SkinTitleBar::Format() const {
  return TextFormatFor(style.orientation, true);
}

void SkinTitleBar::Paint(SkinCanvas& canvas, const SkinRect* region) {
  if (OutsideRegion(region)) return;
  canvas.DrawText(messageText.empty() ? shownText : messageText, rect, Format(), style.font, style.color);
}

void SkinTitleBar::Redraw() {
  if (window == nullptr) return;
  WipeBackground(window->Canvas());
  Paint(window->Canvas(), nullptr);
}

void SkinTitleBar::SetTitle(std::string_view title) {
  const std::string cut = CutTo(title, kTitleUnits);
  if (cut == sourceText) return;
  sourceText = cut;
  const int width = window != nullptr ? window->TextWidth(sourceText, style.font) : 0;
  const bool vertical = style.orientation == 90 || style.orientation == 270;
  if (width <= (vertical ? rect.h : rect.w)) {
    scrolling = false;
    shownText = sourceText;
  } else {
    shownText = CutTo(sourceText + std::string(kScrollSeparator), kTitleUnits);
    scrolling = true;
  }
  Redraw();
}

void SkinTitleBar::SetMessage(std::string_view message) {
  messageText = CutTo(message, kTitleUnits);
  Redraw();
}

// The first character moves to the end. The element's rectangle is drawn
// whole in one go (background, then text), so the step doesn't flicker.
void SkinTitleBar::Scroll(int background) {
  if (!scrolling || !messageText.empty() || shownText.empty()) return;
  const std::size_t first = FirstCharacterLength(shownText);
  shownText = shownText.substr(first) + shownText.substr(0, first);
  if (window == nullptr) return;
  SkinCanvas& canvas = window->Canvas();
  canvas.CopyBitmap({background, rect.x, rect.y, rect.w, rect.h}, rect.x, rect.y);
  canvas.DrawText(shownText, rect, Format(), style.font, style.color);
}

}  // namespace skin
