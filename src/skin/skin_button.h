// The skin's push controls: the button, the check button, and the status
// icon that shows the player's state.
//
// The mouse, on both push controls:
//  1. A press inside the rectangle presses the control and takes the mouse.
//  2. A move inside presses it (and reports no change when it already was);
//     a move outside releases it.
//  3. A release outside changes nothing. A release inside flips a check
//     button's state, posts the row's message (when the control has a row
//     whose message isn't 0, and the window has a parent) and releases it.
// A check button's flip is a prediction: the player corrects it through
// SetChecked where the control is bound to something.
//
// Threads: window thread only.
#pragma once

#include <array>

#include "skin/skin_element.h"

namespace skin {

class SkinPushControl : public SkinElement {
 public:
  explicit SkinPushControl(int actionRow) : id(actionRow) {}

  int GetId() const override { return id; }
  bool OnMouseMove(int x, int y) override;
  bool OnButtonUp(int x, int y) override;
  void Redraw() override;
  bool OnButtonDown(int x, int y) override;

  void SetPressed(bool value);
  bool IsPressed() const { return pressed; }

 protected:
  // Called on a release inside, before the message is posted.
  virtual void Released() {}

  int id;
  bool pressed = false;
};

class SkinButton : public SkinPushControl {
 public:
  SkinButton(int actionRow, const ImageSource& releasedLook, const ImageSource& pressedLook)
      : SkinPushControl(actionRow), releasedImage(releasedLook), pressedImage(pressedLook) {}

  int GetType() const override { return kTypeButton; }
  void Paint(SkinCanvas& canvas, const SkinRect* region) override;

 private:
  ImageSource releasedImage;
  ImageSource pressedImage;
};

class SkinCheckButton : public SkinPushControl {
 public:
  // In the order state1 released, state1 pressed, state2 released, state2
  // pressed; state1 is unchecked.
  SkinCheckButton(int actionRow, const std::array<ImageSource, 4>& stateImages)
      : SkinPushControl(actionRow), images(stateImages) {}

  int GetType() const override { return kTypeCheckButton; }
  void Paint(SkinCanvas& canvas, const SkinRect* region) override;

  void SetChecked(bool value);
  bool IsChecked() const { return checked; }

 protected:
  void Released() override { checked = !checked; }

 private:
  std::array<ImageSource, 4> images;
  bool checked = false;
};

// The player's state as a picture: 0 stopped, 1 playing, 2 paused.
class SkinIconStatus : public SkinElement {
 public:
  explicit SkinIconStatus(const std::array<ImageSource, 3>& stateImages) : images(stateImages) {}

  int GetId() const override { return id; }
  void Redraw() override;
  int GetType() const override { return kTypeIconStatus; }
  void Paint(SkinCanvas& canvas, const SkinRect* region) override;

  // Only 0 to 2; others are ignored.
  void SetState(int value);
  int State() const { return state; }

 private:
  std::array<ImageSource, 3> images;
  int state = 0;
  int id = -1;
};

}  // namespace skin
