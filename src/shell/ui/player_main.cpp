// The player's entry point: the Qt application around the process start.
//
// Without any display (no DISPLAY, no WAYLAND_DISPLAY, and no platform asked
// for) Qt would abort; the player then runs on Qt's offscreen platform, so
// that a start from a terminal without a display still hands its file to a
// running player, or plays without a window.
#include <QApplication>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/paths.h"
#include "platform/registry.h"
#include "shell/language_pack.h"
#include "shell/process_start.h"
#include "shell/ui/local_instance_link.h"
#include "shell/ui/mpris_server.h"
#include "shell/ui/qt_language.h"
#include "shell/ui/qt_window_system.h"

namespace {

bool HasDisplay() {
  for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
    const char* value = std::getenv(variable);
    if (value != nullptr && value[0] != '\0') return true;
  }
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  if (!HasDisplay()) ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
  QApplication application(argc, argv);
  QApplication::setApplicationName("Tavrinsonic");
  QApplication::setQuitOnLastWindowClosed(false);

  const std::vector<std::string> arguments(argv + 1, argv + argc);
  ui::QtWindowSystem windows;
  ui::LocalInstanceLink instances(platform::JoinPath(platform::RuntimeDirectory(), "instance"));
  shell::TranslationFileReader packReader;
  const shell::ProcessServices services{platform::Registry::Process(),
                                        windows,
                                        instances,
                                        packReader,
                                        ui::NativeLanguageName,
                                        nullptr,
                                        nullptr,
                                        nullptr,
                                        nullptr,
                                        ui::PublishOnSessionBus};
  return shell::RunProcess(shell::CommandLineFromArguments(arguments), services);
}
