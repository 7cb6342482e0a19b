#include "shell/ui/equalizer_dialog.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QInputDialog>
#include <QKeyEvent>
#include <QPushButton>
#include <QTimer>
#include <cmath>
#include <filesystem>
#include <vector>

#include "effects/equalizer.h"
#include "effects/equalizer_settings.h"
#include "effects/preset_store.h"
#include "gui_app.h"
#include "gui_support.h"
#include "platform/paths.h"
#include "shell/dialogs.h"
#include "shell/ui/o_slider.h"
#include "shell/window_messages.h"
#include "support/test_environment.h"

namespace {

namespace fs = std::filesystem;
using testing_support::GuiAppTest;
using testing_support::ProcessEventsFor;
using testing_support::TemporaryDirectory;

constexpr int kPreamp = effects::kBandCount;

void PressKey(QWidget& widget, int key) {
  QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
  QApplication::sendEvent(&widget, &press);
}

std::vector<int> Positions(const ui::EqualizerDialog& dialog) {
  std::vector<int> positions;
  for (int index = 0; index <= kPreamp; ++index) positions.push_back(dialog.Slider(index).Position());
  return positions;
}

QStringList Items(const QComboBox& box) {
  QStringList items;
  for (int item = 0; item < box.count(); ++item) items << box.itemText(item);
  return items;
}

// The dialog on its own, over a program folder with the shipped presets.
class EqualizerDialogTest : public ::testing::Test {
 protected:
  void SetUp() override {
    fs::copy(fs::path(TS_SOURCE_DIR) / "res" / "presets", folder.File("presets"));
    hooks.apply = [this] { ++applied; };
    hooks.extraBassOn = [this] { return extraBass; };
    hooks.toggleExtraBass = [this] { extraBass = !extraBass; };
    hooks.askName = [this](std::string& name) {
      offeredName = name;
      name = typedName;
      return !typedName.empty();
    };
    hooks.confirmOverwrite = [this] {
      ++overwriteQuestions;
      return overwrite;
    };
  }
  std::unique_ptr<ui::EqualizerDialog> Open() {
    return std::make_unique<ui::EqualizerDialog>(settings, folder.Path(), hooks, 1);
  }

  TemporaryDirectory folder;
  effects::EqualizerSettings settings;
  ui::EqualizerDialog::Hooks hooks;
  int applied = 0;
  bool extraBass = true;
  std::string offeredName;
  std::string typedName;
  int overwriteQuestions = 0;
  bool overwrite = false;
};

TEST_F(EqualizerDialogTest, OpensOnTheSettingsWithThePresetsAndUserDefinedLast) {
  settings.SetValues(1, {0, 1, 2, 3, 4, 5, 6, 7, 8, 27, 20});
  settings.SetPresetName("Jazz");
  auto dialog = Open();
  EXPECT_EQ(Positions(*dialog), (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 27, 20}));
  const QStringList items = Items(dialog->Presets());
  EXPECT_EQ(items.size(), 19);
  EXPECT_EQ(items.front(), "Bass boost");
  EXPECT_EQ(items.back(), "User defined");
  EXPECT_EQ(dialog->Presets().currentText(), "Jazz");
  EXPECT_TRUE(dialog->findChild<QCheckBox*>("1129")->isChecked());
  EXPECT_TRUE(dialog->findChild<QCheckBox*>("1139")->isChecked());
  EXPECT_EQ(dialog->findChild<ui::OSlider*>("1115"), &dialog->Slider(kPreamp));
  EXPECT_EQ(dialog->findChild<ui::OSlider*>("1125"), &dialog->Slider(9));
  EXPECT_EQ(dialog->Slider(3).Maximum(), 27);
  EXPECT_EQ(applied, 0) << "opening changes nothing";

  fs::remove_all(folder.File("presets"));
  settings.SetPresetName("Jazz");
  auto empty = Open();
  EXPECT_EQ(Items(empty->Presets()), QStringList{"User defined"}) << "no preset files";
}

TEST_F(EqualizerDialogTest, MovingASliderAppliesAllElevenPositionsAsUserDefined) {
  settings.SetPresetName("Rock");
  auto dialog = Open();
  ASSERT_EQ(dialog->Presets().currentText(), "Rock");
  PressKey(dialog->Slider(4), Qt::Key_Up);
  PressKey(dialog->Slider(kPreamp), Qt::Key_Down);
  EXPECT_EQ(applied, 2) << "once for each move";
  EXPECT_EQ(settings.Values().bands[4], 13);
  EXPECT_EQ(settings.Values().preamp, 15);
  EXPECT_EQ(settings.PresetName(), "User defined");
  EXPECT_EQ(dialog->Presets().currentIndex(), dialog->Presets().count() - 1);
}

TEST_F(EqualizerDialogTest, ChoosingAPresetSetsAllElevenSlidersAndUserDefinedChangesNothing) {
  auto dialog = Open();
  QComboBox& presets = dialog->Presets();
  presets.setCurrentIndex(presets.findText("Rock"));
  // The row of res/presets_source/presets.txt: steps -1 | 6 4 -2 -4 -2 2 5 6 6 6.
  const std::vector<int> rock = {8, 10, 16, 18, 16, 12, 9, 8, 8, 8, 15};
  EXPECT_EQ(Positions(*dialog), rock);
  EXPECT_EQ(settings.Values().bands[3], 18);
  EXPECT_EQ(settings.Values().preamp, 15);
  EXPECT_EQ(settings.PresetName(), "Rock");
  EXPECT_EQ(applied, 1);

  presets.setCurrentIndex(presets.count() - 1);
  EXPECT_EQ(Positions(*dialog), rock) << "User defined has no file";
  EXPECT_EQ(settings.PresetName(), "User defined");
  EXPECT_EQ(applied, 1);

  fs::resize_file(folder.File("presets/Flat.eqf"), 30);
  presets.setCurrentIndex(presets.findText("Flat"));
  EXPECT_EQ(Positions(*dialog), rock) << "a short file loads nothing";
  EXPECT_EQ(applied, 1);
}

TEST_F(EqualizerDialogTest, SaveAsWritesAPresetThatLoadsBackAndAsksBeforeReplacingOne) {
  settings.SetValues(0, {0, 3, 9, 13, 14, 15, 20, 26, 27, 14, 13});
  auto dialog = Open();
  typedName = "Mine";
  ASSERT_TRUE(dialog->SaveAs());
  EXPECT_EQ(offeredName, "New Preset");
  EXPECT_EQ(overwriteQuestions, 0);
  EXPECT_EQ(dialog->Presets().currentText(), "Mine");
  EXPECT_EQ(settings.PresetName(), "Mine");

  effects::PresetStore store;
  store.Scan(folder.Path());
  effects::EqfValues values{};
  ASSERT_TRUE(store.Load(store.Find("Mine"), values, folder.Path()));
  std::vector<int> loaded;
  for (std::uint8_t value : values) loaded.push_back(effects::SliderFromEqf(value));
  EXPECT_EQ(loaded, (std::vector<int>{0, 3, 9, 13, 14, 15, 20, 26, 27, 14, 13}));

  // The same name again, with the sliders elsewhere: refused, then allowed.
  PressKey(dialog->Slider(0), Qt::Key_Down);
  const std::string before = testing_support::ReadFile(folder.File("presets/Mine.eqf"));
  EXPECT_FALSE(dialog->SaveAs());
  EXPECT_EQ(overwriteQuestions, 1);
  EXPECT_EQ(testing_support::ReadFile(folder.File("presets/Mine.eqf")), before);
  overwrite = true;
  EXPECT_TRUE(dialog->SaveAs());
  EXPECT_NE(testing_support::ReadFile(folder.File("presets/Mine.eqf")), before);

  typedName.clear();  // cancelled
  EXPECT_FALSE(dialog->SaveAs());
  typedName = "../escape";
  EXPECT_FALSE(dialog->SaveAs());
  EXPECT_FALSE(fs::exists(folder.File("escape.eqf")));
  EXPECT_EQ(Items(dialog->Presets()).count("Mine"), 1);
}

TEST_F(EqualizerDialogTest, TheCheckBoxesSwitchTheEqualizerAndExtraBass) {
  auto dialog = Open();
  auto* enable = dialog->findChild<QCheckBox*>("1129");
  auto* bass = dialog->findChild<QCheckBox*>("1139");
  enable->click();
  EXPECT_EQ(settings.GetEnabled(), 1u);
  EXPECT_EQ(applied, 1);
  enable->click();
  EXPECT_EQ(settings.GetEnabled(), 0u);

  bass->click();
  EXPECT_FALSE(extraBass);
  EXPECT_FALSE(bass->isChecked());
  extraBass = true;  // switched on elsewhere while the dialog was open
  bass->click();     // the box was off, so a click would show it on
  EXPECT_FALSE(extraBass) << "the toggle happened";
  EXPECT_FALSE(bass->isChecked()) << "and the box shows where it went";
}

// Samples of a chord, 16-bit stereo, one mixed block.
std::vector<std::int16_t> Chord() {
  std::vector<std::int16_t> block(8192);
  for (std::size_t i = 0; i < block.size(); ++i) {
    const double t = static_cast<double>(i / 2) / 44100.0;
    block[i] =
        static_cast<std::int16_t>(6000 * std::sin(2 * M_PI * 60 * t) + 6000 * std::sin(2 * M_PI * 3000 * t));
  }
  return block;
}

std::vector<std::int16_t> Through(effects::Equalizer& equalizer, std::vector<std::int16_t> block) {
  std::int16_t* data = block.data();
  equalizer.Process(&data, block.size() * 2);
  return block;
}

using EqualizerInThePlayerTest = GuiAppTest;

TEST_F(EqualizerInThePlayerTest,
       TheMenuCommandOpensTheDialogWhoseChangesTheFiltersFollowThePresetsAndTheSettingsKeep) {
  Start();
  QStringList presets;
  QString title, offeredName, savedItem;
  bool refusedSecond = false;
  QTimer::singleShot(0, [&] {
    auto* dialog = dynamic_cast<ui::EqualizerDialog*>(QApplication::activeModalWidget());
    ASSERT_NE(dialog, nullptr);
    title = dialog->windowTitle();
    presets = Items(dialog->Presets());
    app->Window()->DialogLauncher().Equalizer();  // refused while one is open
    refusedSecond = QApplication::activeModalWidget() == dialog;
    dialog->findChild<QCheckBox*>("1129")->click();
    ProcessEventsFor(50);  // each posted kMessageApplyEqualizer is handled on its own
    PressKey(dialog->Slider(0), Qt::Key_Up);
    ProcessEventsFor(50);
    QTimer::singleShot(0, [&] {
      auto* nameBox = dynamic_cast<QInputDialog*>(QApplication::activeModalWidget());
      if (nameBox == nullptr) return;
      offeredName = nameBox->textValue();
      nameBox->setTextValue("My curve");
      nameBox->accept();
    });
    dialog->findChild<QPushButton*>("saveAs")->click();
    savedItem = dialog->Presets().currentText();
    dialog->findChild<QPushButton*>("softkey.left")->click();
  });
  app->HandleMessage(platform::Message{shell::kMessageCommand, shell::kCommandEqualizer, 0, nullptr});
  EXPECT_EQ(title, "Equalizer");
  EXPECT_TRUE(presets.contains("Rock")) << "the first start installed the shipped presets";
  EXPECT_TRUE(refusedSecond);
  EXPECT_FALSE(shell::ModalDialogOpen());
  EXPECT_EQ(offeredName, "New Preset");
  EXPECT_EQ(savedItem, "My curve");
  EXPECT_TRUE(fs::exists(app->ProgramFolder() + "/presets/My curve.eqf")) << "saved where the presets are";

  // The player's filters now do what a fresh equalizer with band 0 one step
  // up does, which is not what a flat one does.
  effects::Equalizer expected;
  std::array<std::int32_t, effects::kBandCount> bands = {13, 14, 14, 14, 14, 14, 14, 14, 14, 14};
  expected.SetBands(14, bands);
  effects::Equalizer flat;
  flat.SetBands(14, {14, 14, 14, 14, 14, 14, 14, 14, 14, 14});
  ASSERT_NE(app->EqualizerFilter(), nullptr);
  const std::vector<std::int16_t> played = Through(*app->EqualizerFilter(), Chord());
  EXPECT_EQ(played, Through(expected, Chord()));
  EXPECT_NE(played, Through(flat, Chord()));

  // Closing the dialog saved the settings, for the next start.
  const auto stored =
      registry->GetValue(platform::RegistryRoot::LocalMachine, shell::kSettingsKeyPath, "Equalizer");
  ASSERT_TRUE(stored.has_value());
  ASSERT_GE(stored->data.size(), 11u);
  EXPECT_EQ(static_cast<unsigned char>(stored->data[0]), 13);
  EXPECT_EQ(static_cast<unsigned char>(stored->data[1]), 14);
  app.reset();
  Start();
  EXPECT_EQ(app->EqualizerSettings().Values().bands[0], 13) << "after a restart";
  EXPECT_EQ(app->EqualizerSettings().GetEnabled(), 1u);
}

}  // namespace
