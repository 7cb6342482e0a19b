// The skin's texts: a value field (bit rate, sample rate), the time of the
// track, and the scrolling title.
//
// The alignment follows the layout's orientation:
//   orientation   text and timer             title bar
//   0             right, middle (2086)       left, middle (2084)
//   90            right, bottom (2090)       left, bottom (2088)
//   any other     left, top (2080)           left, top (2080)
// and the text runs at that angle. The layout's weight is kept but has no
// effect: texts and timers draw at 400, the title at 700.
//
// A value is redrawn only when its visibility changes or the caller asks:
// setting a new text on a visible field shows at the next paint.
//
// Threads: window thread only.
#pragma once

#include <string>
#include <string_view>

#include "skin/skin_element.h"

namespace skin {

// The room of a text field, in UTF-16 units with the terminator.
inline constexpr std::size_t kTextFieldUnits = 20;
// The room of the title's texts, in UTF-16 units with the terminator.
inline constexpr std::size_t kTitleUnits = 260;

// What a text element is made from.
struct TextStyle {
  SkinFont font;  // its weight is set by the kind of element
  SkinColor color = 0;
  int orientation = 0;
  int weight = 0;  // as the layout says; see above
};

class SkinText : public SkinElement {
 public:
  SkinText(int actionRow, const TextStyle& style);

  int GetId() const override { return id; }
  void Redraw() override;
  int GetType() const override { return kTypeText; }
  void Paint(SkinCanvas& canvas, const SkinRect* region) override;

  // Copies the text (cut to the field); no redraw.
  void SetText(std::string_view value);
  // Redraws on a change.
  void SetVisible(bool value);

  const std::string& Text() const { return text; }
  bool IsVisible() const { return visible; }
  const TextStyle& Style() const { return style; }

 protected:
  int id;
  TextStyle style;
  std::string text;
  bool visible = false;
};

// The time of the track, as minutes and seconds.
class SkinTimer : public SkinText {
 public:
  SkinTimer(int actionRow, const TextStyle& textStyle) : SkinText(actionRow, textStyle) {}

  int GetType() const override { return kTypeTimer; }

  // On a change: "%02d:%02d", with three digits of minutes from 100 minutes
  // on. No redraw.
  void SetSeconds(int value);
  int GetSeconds() const { return seconds; }

 private:
  // Not a time, so that the first poll writes "00:00".
  int seconds = -1;
};

// The title line: the track's title, scrolling one character every step when
// it is wider than the element, or a message that stands in its place and
// stops the scroll while it stands.
class SkinTitleBar : public SkinElement {
 public:
  SkinTitleBar(int actionRow, const TextStyle& style);

  int GetId() const override { return id; }
  void Redraw() override;
  int GetType() const override { return kTypeTitleBar; }
  void Paint(SkinCanvas& canvas, const SkinRect* region) override;

  // A title equal to the last one does nothing, not even a redraw.
  void SetTitle(std::string_view title);
  // An empty message clears it.
  void SetMessage(std::string_view message);
  // One step of the scroll, with the skin's background.
  void Scroll(int background);

  const std::string& ShownText() const { return shownText; }
  const std::string& Message() const { return messageText; }
  bool IsScrolling() const { return scrolling; }
  const TextStyle& Style() const { return style; }

 private:
  std::uint32_t Format() const;

  int id;
  TextStyle style;
  std::string shownText;
  bool scrolling = true;
  std::string messageText;
  std::string sourceText;
};

// The format of a text or timer (`forTitle` false) or a title for the
// orientation; see the table above.
std::uint32_t TextFormatFor(int orientation, bool forTitle);

}  // namespace skin
