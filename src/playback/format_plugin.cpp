#include "playback/format_plugin.h"

#include "platform/paths.h"

namespace playback {

std::unique_ptr<FormatPlugin> LoadFormatPlugin(const std::vector<std::string>& candidates) {
  for (const std::string& path : candidates) {
    auto plugin = std::make_unique<FormatPlugin>();
    if (!plugin->library.Open(path)) continue;
    const auto create =
        reinterpret_cast<CreateReaderFunction>(plugin->library.Symbol(kCreateReaderEntryPoint));
    if (create == nullptr) continue;
    plugin->reader.reset(create());
    if (plugin->reader) return plugin;
  }
  return nullptr;
}

std::vector<std::string> AacPluginCandidates(const std::string& executableDirectory,
                                             const std::string& installDirectory) {
  std::vector<std::string> candidates;
  for (const std::string* folder : {&executableDirectory, &installDirectory}) {
    if (!folder->empty()) candidates.push_back(platform::JoinPath(*folder, kAacPluginFile));
  }
  return candidates;
}

}  // namespace playback
