#include <gtest/gtest.h>

#include "skin/skin_action_table.h"
#include "skin/skin_button.h"
#include "skin/skin_slider.h"
#include "skin/skin_text.h"
#include "skin_fakes.h"

namespace {

using testing_support::RecordingSurface;

const skin::ThumbSource kThumb{1, 0, 0, 10, 10, 0xFF00FF};

skin::SkinSlider MakeSlider(int orientation, skin::SkinRect rect, RecordingSurface& surface) {
  skin::SkinSlider slider(skin::kRowSeekBar, orientation, kThumb, kThumb);
  slider.Place(rect);
  slider.SetWindow(&surface);
  slider.BuildImageLists();
  slider.SetVisible(true);
  return slider;
}

TEST(SkinSliderTest, ValuesRunAgainstTheScreenForNinetyAndOneEighty) {
  RecordingSurface surface;
  skin::SkinSlider slider = MakeSlider(90, {10, 20, 12, 110}, surface);
  slider.SetValue(250);
  EXPECT_EQ(slider.Position(), 750);
  EXPECT_EQ(slider.GetValue(), 250);
  int left = 0, top = 0;
  slider.ThumbPlace(left, top);
  EXPECT_EQ(left, 11) << "centred across the track";
  EXPECT_EQ(top, 20 + 100 * 750 / 1000) << "value 0 at the bottom";

  slider.SetValue(5000);
  EXPECT_EQ(slider.GetValue(), 1000) << "clamped";
  ASSERT_TRUE(slider.OnButtonDown(15, 20));
  EXPECT_TRUE(slider.IsDragging());
  slider.SetValue(0);
  EXPECT_EQ(slider.Position(), 0)
      << "the press put the thumb at the top; a value set while dragging is ignored";
  EXPECT_TRUE(slider.OnButtonUp(15, 130)) << "released below the track";
  EXPECT_EQ(slider.Position(), 0) << "outside: the thumb stays";
  EXPECT_FALSE(slider.IsDragging());
}

TEST(SkinSliderTest, TheMouseMovesTheThumbAndTheLeftEdgeIsKeptAsItWas) {
  RecordingSurface surface;
  skin::SkinSlider slider = MakeSlider(0, {20, 0, 110, 10}, surface);
  EXPECT_FALSE(slider.OnButtonDown(19, 5)) << "left of the track";
  ASSERT_TRUE(slider.OnButtonDown(75, 5));
  EXPECT_EQ(slider.Position(), 500);
  slider.OnMouseMove(500, 5);
  EXPECT_EQ(slider.Position(), 1000) << "beyond the right end: to the end";
  EXPECT_FALSE(slider.IsDragging());
  slider.OnMouseMove(10, 5);
  EXPECT_EQ(slider.Position(), 1000) << "beyond the left end the point becomes x = 0, outside: no move";
  EXPECT_TRUE(surface.posted.empty()) << "sliders are indicators";

  skin::SkinSlider tight = MakeSlider(0, {0, 0, 10, 10}, surface);
  EXPECT_EQ(tight.PositionFromPoint(9, 5), 0) << "a track as long as the thumb doesn't divide by zero";
  skin::SkinSlider still = MakeSlider(45, {30, 30, 100, 10}, surface);
  int left = -1, top = -1;
  still.ThumbPlace(left, top);
  EXPECT_EQ(left + top, 0) << "another angle: at the window's corner";
}

TEST(SkinTextTest, TheTimerWritesMinutesWithThreeDigitsFromAHundred) {
  skin::SkinTimer timer(-1, {});
  timer.SetSeconds(0);
  EXPECT_EQ(timer.Text(), "00:00");
  timer.SetSeconds(5999);
  EXPECT_EQ(timer.Text(), "99:59");
  timer.SetSeconds(6000);
  EXPECT_EQ(timer.Text(), "100:00");
  skin::SkinText text(skin::kRowBitRate, {});
  text.SetText("a text longer than the field holds");
  EXPECT_EQ(text.Text(), "a text longer than ") << "19 units and the terminator";
}

TEST(SkinTextTest, TheTitleScrollsOnlyWhenItDoesNotFit) {
  RecordingSurface surface;
  skin::SkinTitleBar title(-1, {});
  title.Place({0, 0, 50, 12});
  title.SetWindow(&surface);
  EXPECT_TRUE(title.IsScrolling()) << "the start text scrolls";

  title.SetTitle("0123456789");  // 50 pixels: fits exactly
  EXPECT_FALSE(title.IsScrolling());
  EXPECT_EQ(title.ShownText(), "0123456789");
  const std::size_t drawnBefore = surface.drawn.size();
  title.Scroll(0);
  title.SetTitle("0123456789");
  EXPECT_EQ(surface.drawn.size(), drawnBefore) << "no scroll, and the same title again draws nothing";

  surface.characterWidth = 6;  // now one pixel wider per character
  title.SetTitle("01234567x9");
  EXPECT_TRUE(title.IsScrolling());
  EXPECT_EQ(title.ShownText(), "01234567x9 \u2022 ");
  title.Scroll(0);
  EXPECT_EQ(title.ShownText(), "1234567x9 \u2022 0");
  title.SetMessage("Volume 50%");
  title.Scroll(0);
  EXPECT_EQ(title.ShownText(), "1234567x9 \u2022 0") << "a message stops the scroll";
  EXPECT_EQ(surface.drawn.back(), "text Volume 50% 2084");
  title.SetMessage("");
  for (int i = 0; i < 10; ++i) title.Scroll(0);
  EXPECT_EQ(title.ShownText(), "\u2022 01234567x9 ") << "whole characters move";
}

TEST(SkinButtonTest, AReleaseInsidePostsTheRowsMessageAndOneOutsideNothing) {
  RecordingSurface surface;
  skin::SkinButton next(skin::kRowNext, {1, 0, 0}, {1, 0, 10});
  next.Place({10, 10, 20, 10});
  next.SetWindow(&surface);
  EXPECT_FALSE(next.OnButtonDown(30, 10)) << "the right edge is outside";
  ASSERT_TRUE(next.OnButtonDown(10, 10));
  EXPECT_TRUE(next.OnMouseMove(50, 50));
  EXPECT_FALSE(next.IsPressed()) << "the pointer left";
  EXPECT_TRUE(next.OnMouseMove(12, 12));
  EXPECT_TRUE(next.IsPressed()) << "and came back";
  EXPECT_FALSE(next.OnMouseMove(13, 12)) << "already pressed";
  EXPECT_FALSE(next.OnButtonUp(40, 40));
  EXPECT_TRUE(surface.posted.empty());
  EXPECT_TRUE(next.OnButtonUp(12, 12));
  EXPECT_EQ(surface.posted, (std::vector<std::uint32_t>{2563}));
  EXPECT_FALSE(next.IsPressed());

  skin::SkinCheckButton rate(skin::kRowSamplingRate, {});
  rate.Place({0, 0, 5, 5});
  rate.SetWindow(&surface);
  rate.OnButtonDown(1, 1);
  rate.OnButtonUp(1, 1);
  EXPECT_TRUE(rate.IsChecked()) << "a row without a message only flips";
  EXPECT_EQ(surface.posted.size(), 1u);

  skin::SkinIconStatus status({});
  status.SetState(2);
  status.SetState(3);
  EXPECT_EQ(status.State(), 2) << "only 0 to 2";
}

}  // namespace
