// The Equalizer dialog: the preamp and ten band sliders, the preset list,
// the equalizer and extra bass check boxes, and saving the sliders as a new
// preset.
//
// It edits the application's EqualizerSettings in place, and every change
// takes effect at once: after each change the dialog calls `apply`, which
// posts kMessageApplyEqualizer to the main window, whose procedure hands the
// values to the Equalizer. There is no Cancel: what was changed stays.
//
// Controls, by object name: "1115" the preamp slider, "1116" to "1125"
// bands 0 to 9 (OSlider, 0 the strongest, 27 the weakest), "1127" the preset
// combo box, "1129" Enable Equalizer, "1139" Enable Extra Bass, "saveAs" the
// button that saves the sliders as a preset. Keys: Up and Down move a
// slider, Left and Right go from slider to slider, Tab between the groups.
//
// Moving any slider turns the preset to "User defined". Choosing a preset
// loads its file from `programFolder`/presets and sets all eleven sliders;
// "User defined", the last item, changes nothing.
//
// Threads: window thread.
#pragma once

#include <QDialog>
#include <array>
#include <functional>
#include <string>

#include "effects/equalizer_values.h"

class QCheckBox;
class QComboBox;
class QHBoxLayout;

namespace effects {
class EqualizerSettings;
}

namespace ui {

class OSlider;

class EqualizerDialog : public QDialog {
 public:
  static constexpr std::uint32_t kDialogId = 160;

  // What the dialog asks of the application.
  struct Hooks {
    // The settings changed: make the equalizer follow them (post
    // kMessageApplyEqualizer).
    std::function<void()> apply;
    // Whether extra bass is on, and switching it over.
    std::function<bool()> extraBassOn;
    std::function<void()> toggleExtraBass;
    // The name for a new preset, starting from `name`; false when the user
    // cancels. Unset: a small name box.
    std::function<bool(std::string& name)> askName;
    // Whether to replace the existing preset file; unset: a Yes/No question.
    std::function<bool()> confirmOverwrite;
  };

  EqualizerDialog(effects::EqualizerSettings& settings, std::string programFolder, Hooks hooks, int zoom,
                  QWidget* parent = nullptr);

  // Band 0 to 9, or effects::kBandCount for the preamp.
  OSlider& Slider(int band) const { return *sliders[static_cast<std::size_t>(band)]; }
  QComboBox& Presets() const { return *presetBox; }

  // Saves the sliders as a preset under a name the user gives: asks for the
  // name, and before replacing a file; then lists and selects it. False when
  // nothing was saved.
  bool SaveAs();

 private:
  void BuildControls(int zoom);
  QWidget* BuildSliderRow(int zoom, QHBoxLayout& captions);
  void FillPresetList();
  void SelectPresetByName();
  void ShowSettings();
  void SliderMoved();
  void PresetChosen(int item);
  void EnableClicked(bool checked);
  void ExtraBassClicked();
  bool AskName(std::string& name);
  bool ConfirmOverwrite();

  effects::EqualizerSettings& settings;
  const std::string programFolder;
  Hooks hooks;
  // Bands 0 to 9, then the preamp; owned by the widget tree.
  std::array<OSlider*, effects::kBandCount + 1> sliders{};
  QComboBox* presetBox = nullptr;
  QCheckBox* enableBox = nullptr;
  QCheckBox* extraBassBox = nullptr;
};

}  // namespace ui
