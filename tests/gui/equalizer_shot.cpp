// A picture of the Equalizer dialog with the Rock preset chosen, for the
// documentation and for a look at its layout:
//   equalizer_shot <program folder with presets/> <output.png> [zoom]
#include <QApplication>
#include <QComboBox>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "effects/equalizer_settings.h"
#include "shell/ui/dialog_frame.h"
#include "shell/ui/equalizer_dialog.h"

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: equalizer_shot <program folder> <output.png> [zoom]\n");
    return 2;
  }
  QApplication application(argc, argv);
  effects::EqualizerSettings settings;
  settings.SetEnabled(1);
  ui::EqualizerDialog::Hooks hooks;
  hooks.extraBassOn = [] { return true; };
  ui::EqualizerDialog dialog(settings, argv[1], hooks, argc > 3 ? std::atoi(argv[3]) : 1);
  ui::ApplyDialogTexts(dialog, ui::EqualizerDialog::kDialogId);
  dialog.Presets().setCurrentIndex(dialog.Presets().findText("Rock"));
  dialog.show();
  QApplication::processEvents();
  return dialog.grab().save(QString::fromUtf8(argv[2])) ? 0 : 1;
}
