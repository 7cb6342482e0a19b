// One registry key, opened anew for each operation.
//
// The process has one RegistryKey bound to the settings key at start; dialogs
// use it to read and write single values at once. Each operation opens the
// key, acts and closes it, and returns whether the platform call succeeded.
// Threads: window thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/registry.h"

namespace shell {

// HKEY_LOCAL_MACHINE path of the settings.
inline constexpr std::string_view kSettingsKeyPath = "SOFTWARE\\Halvorkeep\\Tavrinsonic";
inline constexpr std::string_view kVendorKeyPath = "SOFTWARE\\Halvorkeep";

class RegistryKey {
 public:
  explicit RegistryKey(platform::Registry& registry = platform::Registry::Process());

  // 1.
  virtual bool DeleteValue(std::string_view name);
  // 2. Fails when the string needs more than 520 bytes as UTF-16 (259
  //    characters and the terminator), as the platform's read into that buffer would.
  virtual bool ReadString(std::string_view name, std::string& text);
  // 3. Reads up to 4 bytes into `target`; fails for a larger value.
  virtual bool ReadDword(std::string_view name, std::uint32_t& target);
  // 4. REG_SZ.
  virtual bool WriteString(std::string_view name, std::string_view text);
  // 5.
  virtual bool WriteDword(std::string_view name, std::uint32_t value);
  // 6. Stores root and path and creates the key; succeeds when it was made or existed.
  virtual bool Bind(platform::RegistryRoot root, std::string_view path);
  // 7.
  virtual bool WriteBinary(std::string_view name, const void* data, std::size_t size);
  // 8. `size` holds the buffer's size and receives the value's size.
  virtual bool ReadBinary(std::string_view name, void* buffer, std::size_t& size);
  // 9.
  virtual ~RegistryKey() = default;

  platform::Registry& Store() { return registry; }
  platform::RegistryRoot Root() const { return root; }
  const std::string& Path() const { return path; }

 private:
  platform::Registry& registry;
  platform::RegistryRoot root = platform::RegistryRoot::LocalMachine;
  std::string path;
};

}  // namespace shell
