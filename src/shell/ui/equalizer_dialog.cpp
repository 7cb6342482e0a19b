#include "shell/ui/equalizer_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>
#include <filesystem>

#include "effects/equalizer_settings.h"
#include "effects/preset_store.h"
#include "platform/texts.h"
#include "shell/language_pack.h"
#include "shell/ui/dialog_frame.h"
#include "shell/ui/o_slider.h"
#include "shell/window_messages.h"

namespace ui {
namespace {

constexpr std::uint32_t kEditNameDialog = 155;
constexpr std::uint32_t kTextNewPreset = 6318;
constexpr std::uint32_t kTextPresetExists = 6208;
constexpr std::uint32_t kTextFileExists = 6209;
constexpr std::uint32_t kTextUserDefined = 6326;
constexpr int kPreampSliderId = 1115;
constexpr int kFirstBandSliderId = 1116;
constexpr int kPreampIndex = effects::kBandCount;

// The bands' centres at 44100 Hz, under their sliders.
constexpr const char* kBandCaptions[effects::kBandCount] = {"60", "170", "310", "600", "1k",
                                                            "3k", "6k",  "12k", "14k", "16k"};

QString Text(const std::string& text) {
  return QString::fromStdString(text);
}

QLabel* Caption(const QString& text, QWidget* parent) {
  auto* label = new QLabel(text, parent);
  label->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
  QFont font = label->font();
  font.setPointSizeF(font.pointSizeF() * 0.8);
  label->setFont(font);
  return label;
}

}  // namespace

EqualizerDialog::EqualizerDialog(effects::EqualizerSettings& equalizerSettings, std::string folder,
                                 Hooks dialogHooks, int zoom, QWidget* parent)
    : QDialog(parent),
      settings(equalizerSettings),
      programFolder(std::move(folder)),
      hooks(std::move(dialogHooks)) {
  setObjectName(QString::number(kDialogId));
  BuildControls(zoom);
  FillPresetList();
  ShowSettings();
  extraBassBox->setChecked(hooks.extraBassOn && hooks.extraBassOn());
  enableBox->setChecked(settings.GetEnabled() != 0);
  sliders[kPreampIndex]->setFocus();
}

void EqualizerDialog::BuildControls(int zoom) {
  auto* layout = new QVBoxLayout(this);

  auto* presetRow = new QHBoxLayout;
  auto* presetLabel = new QLabel(Text(shell::DialogText(kDialogId, 1127)), this);
  presetBox = new QComboBox(this);
  presetBox->setObjectName("1127");
  presetLabel->setBuddy(presetBox);
  presetRow->addWidget(presetLabel);
  presetRow->addWidget(presetBox, 1);
  layout->addLayout(presetRow);

  auto* captions = new QHBoxLayout;
  layout->addWidget(BuildSliderRow(zoom, *captions), 0, Qt::AlignHCenter);
  layout->addLayout(captions);
  layout->setAlignment(captions, Qt::AlignHCenter);

  enableBox = new QCheckBox(this);
  enableBox->setObjectName("1129");
  extraBassBox = new QCheckBox(this);
  extraBassBox->setObjectName("1139");
  auto* saveButton = new QPushButton(this);
  saveButton->setObjectName("saveAs");
  saveButton->setAutoDefault(false);
  layout->addWidget(enableBox);
  layout->addWidget(extraBassBox);
  layout->addWidget(saveButton);
  layout->addStretch(1);
  layout->addWidget(new DialogSoftKeys(*this, shell::kMenuDone));

  connect(presetBox, &QComboBox::currentIndexChanged, this, &EqualizerDialog::PresetChosen);
  connect(enableBox, &QCheckBox::clicked, this, &EqualizerDialog::EnableClicked);
  connect(extraBassBox, &QCheckBox::clicked, this, &EqualizerDialog::ExtraBassClicked);
  connect(saveButton, &QPushButton::clicked, this, [this] { SaveAs(); });
}

// The preamp, a gap, then bands 0 to 9, alone in their row so that Left and
// Right walk them; each one's caption goes into `captions`.
QWidget* EqualizerDialog::BuildSliderRow(int zoom, QHBoxLayout& captions) {
  auto* row = new QWidget(this);
  row->setObjectName("sliders");
  auto* sliderLayout = new QHBoxLayout(row);
  sliderLayout->setContentsMargins(0, 0, 0, 0);
  for (int index : {kPreampIndex, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9}) {
    auto* slider = new OSlider(row, zoom);
    const bool preamp = index == kPreampIndex;
    slider->setObjectName(QString::number(preamp ? kPreampSliderId : kFirstBandSliderId + index));
    slider->SetRange(0, effects::kSliderMaximum, false);
    slider->onScroll = [this](OSlider&, int) { SliderMoved(); };
    sliders[static_cast<std::size_t>(index)] = slider;
    sliderLayout->addWidget(slider);
    QLabel* caption =
        Caption(preamp ? Text(shell::DialogText(kDialogId, "preamp")) : kBandCaptions[index], this);
    caption->setFixedWidth(slider->width());
    captions.addWidget(caption);
    if (preamp) {
      sliderLayout->addSpacing(6 * zoom);
      captions.addSpacing(6 * zoom);
    }
  }
  return row;
}

// The presets as the folder holds them now, then "User defined"; the item's
// data is the preset's index, and "User defined" has none.
void EqualizerDialog::FillPresetList() {
  effects::PresetStore& presets = settings.Presets();
  presets.Clear();
  presets.Scan(programFolder);
  const QSignalBlocker quiet(presetBox);
  presetBox->clear();
  for (int index = 0; index < presets.Count(); ++index)
    presetBox->addItem(Text(presets.NameAt(index)), index);
  presetBox->addItem(Text(platform::LoadText(kTextUserDefined)));
  SelectPresetByName();
}

void EqualizerDialog::SelectPresetByName() {
  const QSignalBlocker quiet(presetBox);
  const int item = presetBox->findText(Text(settings.PresetName()), Qt::MatchFixedString);
  presetBox->setCurrentIndex(item >= 0 ? item : presetBox->count() - 1);
}

void EqualizerDialog::ShowSettings() {
  const effects::EqualizerValues& values = settings.Values();
  for (int band = 0; band < effects::kBandCount; ++band)
    sliders[static_cast<std::size_t>(band)]->SetPosition(values.bands[static_cast<std::size_t>(band)], true);
  sliders[kPreampIndex]->SetPosition(values.preamp, true);
}

void EqualizerDialog::SliderMoved() {
  settings.SetPresetName(platform::LoadText(kTextUserDefined));
  SelectPresetByName();
  effects::EqualizerSettings::SliderValues values{};
  for (std::size_t index = 0; index < values.size(); ++index) values[index] = sliders[index]->Position();
  settings.SetValues(settings.GetEnabled(), values);
  if (hooks.apply) hooks.apply();
}

void EqualizerDialog::PresetChosen(int item) {
  if (item < 0) return;
  settings.SetPresetName(presetBox->itemText(item).toStdString());
  const QVariant presetIndex = presetBox->itemData(item);
  if (!presetIndex.isValid()) return;  // "User defined" has no file
  effects::EqfValues file{};
  if (!settings.Presets().Load(presetIndex.toInt(), file, programFolder)) return;
  effects::EqualizerSettings::SliderValues values{};
  for (std::size_t index = 0; index < values.size(); ++index)
    values[index] = effects::SliderFromEqf(file[index]);
  settings.SetValues(settings.GetEnabled(), values);
  ShowSettings();
  if (hooks.apply) hooks.apply();
}

void EqualizerDialog::EnableClicked(bool checked) {
  settings.SetEnabled(checked ? 1 : 0);
  if (hooks.apply) hooks.apply();
}

// The box shows the state the toggle is about to give.
void EqualizerDialog::ExtraBassClicked() {
  if (!hooks.extraBassOn || !hooks.toggleExtraBass) return;
  extraBassBox->setChecked(!hooks.extraBassOn());
  hooks.toggleExtraBass();
}

bool EqualizerDialog::SaveAs() {
  std::string name = platform::LoadText(kTextNewPreset);
  if (!AskName(name) || !effects::PresetStore::IsValidName(name)) return false;
  std::error_code error;
  if (std::filesystem::exists(effects::PresetStore::PathFor(name, programFolder), error) &&
      !ConfirmOverwrite())
    return false;
  effects::EqfValues file{};
  for (std::size_t index = 0; index < file.size(); ++index)
    file[index] = effects::EqfFromSlider(sliders[index]->Position());
  if (!effects::PresetStore::Save(name, file, programFolder)) return false;
  FillPresetList();
  const int saved = settings.Presets().Find(name);
  if (saved >= 0) {
    settings.SetPresetName(settings.Presets().NameAt(saved));
    const QSignalBlocker quiet(presetBox);
    presetBox->setCurrentIndex(presetBox->findData(saved));
  }
  return true;
}

bool EqualizerDialog::AskName(std::string& name) {
  if (hooks.askName) return hooks.askName(name);
  bool accepted = false;
  const QString text = QInputDialog::getText(this, Text(shell::DialogText(kEditNameDialog, "title")),
                                             QString(), QLineEdit::Normal, Text(name), &accepted);
  if (accepted) name = text.trimmed().toStdString();
  return accepted;
}

bool EqualizerDialog::ConfirmOverwrite() {
  if (hooks.confirmOverwrite) return hooks.confirmOverwrite();
  return QMessageBox::question(this, Text(platform::LoadText(kTextFileExists)),
                               Text(platform::LoadText(kTextPresetExists)),
                               QMessageBox::Yes | QMessageBox::No, QMessageBox::No) == QMessageBox::Yes;
}

}  // namespace ui
