#include "private_settings.h"

#include <stdlib.h>

#include <filesystem>
#include <system_error>

#include "platform/paths.h"
#include "platform/registry.h"

namespace render {
namespace {

namespace fs = std::filesystem;

constexpr const char* kInstallKey = "Security\\AppInstall\\Halvorkeep Tavrinsonic";

}  // namespace

PrivateSettings::PrivateSettings() {
  const std::string userRegistry = platform::ConfigDirectory() + "/registry.reg";
  std::string pattern = (fs::temp_directory_path() / "tavrinsonic-render-XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) return;
  folder = pattern;
  std::error_code error;
  for (const char* name : {"config", "data", "runtime"}) fs::create_directories(folder + "/" + name, error);
  ::setenv("XDG_CONFIG_HOME", (folder + "/config").c_str(), 1);
  ::setenv("XDG_DATA_HOME", (folder + "/data").c_str(), 1);
  ::setenv("XDG_RUNTIME_DIR", (folder + "/runtime").c_str(), 1);
  fs::create_directories(platform::ConfigDirectory(), error);
  if (fs::is_regular_file(userRegistry, error)) {
    fs::copy_file(userRegistry, RegistryFile(), error);
    platform::Registry copy(RegistryFile());
    copy.DeleteKey(platform::RegistryRoot::LocalMachine, kInstallKey);
  }
}

PrivateSettings::~PrivateSettings() {
  if (folder.empty()) return;
  std::error_code error;
  fs::remove_all(folder, error);
}

std::string PrivateSettings::RegistryFile() const {
  return platform::ConfigDirectory() + "/registry.reg";
}

}  // namespace render
