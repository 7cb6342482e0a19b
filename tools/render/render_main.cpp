// tavrinsonic-render: plays a file, a playlist or a radio address through
// the player's own objects, headless, into a WAV file, as fast as it can.
//
//   tavrinsonic-render [options] INPUT OUTPUT.wav   (see --help)
//
// The real PlayerApp runs with its decoders, list, output engine and
// equalizer; the window system is the headless one of headless_shell.h and
// the wave device an unpaced capture device. Nothing here needs Qt, so the
// tool also runs in the sanitizer builds.
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "private_settings.h"
#include "render_options.h"
#include "render_session.h"

namespace {

// A relative path that names something is made absolute, as the player's
// command line does; addresses and anything else stay as they are.
std::string AbsoluteInput(const std::string& input) {
  std::error_code error;
  if (input.empty() || input[0] == '/' || !std::filesystem::exists(input, error)) return input;
  return std::filesystem::absolute(input, error).string();
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  std::string error;
  std::optional<render::RenderOptions> options = render::ParseRenderOptions(arguments, error);
  if (!options) {
    std::fprintf(stderr, "tavrinsonic-render: %s\n\n%s", error.c_str(), render::kUsage);
    return 2;
  }
  if (options->help) {
    std::fputs(render::kUsage, stdout);
    return 0;
  }
  options->input = AbsoluteInput(options->input);

  render::PrivateSettings world;
  if (!world.Ready()) {
    std::fprintf(stderr, "tavrinsonic-render: can't make a temporary folder\n");
    return 1;
  }
  render::GatedCapture capture;
  render::RenderSession session(*options, capture.Driver(), capture.Gate(), stdout);
  return session.Run(world.RegistryFile());
}
