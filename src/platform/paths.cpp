#include "platform/paths.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "platform/durable_file.h"
#include "platform/registry.h"

namespace platform {
namespace {

constexpr const char* kInstallKey = "Security\\AppInstall\\Halvorkeep Tavrinsonic";
constexpr const char* kInstallValue = "InstallDir";

std::string FromEnvironment(const char* variable) {
  const char* value = std::getenv(variable);
  return (value != nullptr && value[0] == '/') ? std::string(value) : std::string();
}

// Copies `from` to `to` when `to` is missing; folders are walked and only
// their missing files copied.
void CopyMissing(const std::filesystem::path& from, const std::filesystem::path& to) {
  namespace fs = std::filesystem;
  std::error_code error;
  if (fs::is_directory(from, error)) {
    fs::create_directories(to, error);
    for (const auto& entry : fs::directory_iterator(from, error)) {
      CopyMissing(entry.path(), to / entry.path().filename());
    }
  } else if (fs::is_regular_file(from, error) && !fs::exists(to, error)) {
    fs::copy_file(from, to, error);
  }
}

}  // namespace

std::string HomeDirectory() {
  std::string home = FromEnvironment("HOME");
  if (!home.empty()) return home;
  if (const passwd* entry = ::getpwuid(::getuid()); entry != nullptr && entry->pw_dir != nullptr)
    return entry->pw_dir;
  return "/";
}

std::string ConfigHome() {
  std::string base = FromEnvironment("XDG_CONFIG_HOME");
  return base.empty() ? HomeDirectory() + "/.config" : base;
}

std::string DataHome() {
  std::string base = FromEnvironment("XDG_DATA_HOME");
  return base.empty() ? HomeDirectory() + "/.local/share" : base;
}

std::string ConfigDirectory() { return ConfigHome() + "/tavrinsonic"; }

std::string DefaultInstallDirectory() { return DataHome() + "/tavrinsonic"; }

std::string RuntimeDirectory() {
  std::string base = FromEnvironment("XDG_RUNTIME_DIR");
  std::string folder = base.empty() ? "/tmp/tavrinsonic-" + std::to_string(::getuid())
                                    : base + "/tavrinsonic";
  MakeDirectories(folder, 0700);
  return folder;
}

std::string ExecutableDirectory() {
  std::error_code error;
  const auto executable = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return ".";
  return executable.parent_path().string();
}

std::string ResourceDirectory() {
  std::error_code error;
  const auto folder =
      std::filesystem::weakly_canonical(std::filesystem::path(ExecutableDirectory()) / ".." /
                                            "share" / "tavrinsonic",
                                        error);
  return folder.string();
}

std::string ReadInstallDirectory(Registry& registry) {
  const auto value = registry.GetValue(RegistryRoot::LocalMachine, kInstallKey, kInstallValue);
  if (!value || value->type != static_cast<std::uint32_t>(RegistryType::String)) return {};
  std::string folder = value->data;
  if (const auto zero = folder.find('\0'); zero != std::string::npos) folder.resize(zero);
  return folder;
}

std::string EnsureInstalled(Registry& registry, const std::string& resourceDirectory) {
  std::string folder = ReadInstallDirectory(registry);
  if (folder.empty()) {
    folder = DefaultInstallDirectory();
    if (registry.CreateKey(RegistryRoot::LocalMachine, kInstallKey) == KeyDisposition::Failed ||
        !registry.SetString(RegistryRoot::LocalMachine, kInstallKey, kInstallValue, folder)) {
      return {};
    }
  }
  if (!MakeDirectories(folder)) return {};

  namespace fs = std::filesystem;
  std::error_code error;
  const fs::path from(resourceDirectory);
  for (const char* shipped : {"BaseSkin", "presets"}) CopyMissing(from / shipped, fs::path(folder) / shipped);
  for (const auto& entry : fs::directory_iterator(from, error)) {
    const std::string name = entry.path().filename().string();
    if (name.rfind("mui.", 0) == 0 && entry.path().extension() == ".qm")
      CopyMissing(entry.path(), fs::path(folder) / name);
  }
  return folder;
}

std::string JoinPath(const std::string& folder, const std::string& name) {
  if (folder.empty()) return name;
  if (folder.back() == '/') return folder + name;
  return folder + "/" + name;
}

}  // namespace platform
