// The platform registry: keys holding typed values, kept in one text file.
//
// The calls mirror those of the phone platform (create, open, query, set and
// delete) with its rules: values keep their exact type and byte size, a query
// into a buffer smaller than the value fails, names compare without regard to
// ASCII case, and creating a key creates its parents.
//
// Every call reads the file anew, so that two processes see each other's
// writes. Every write is durable before the call returns (see durable_file.h),
// and a lock file beside the registry serialises processes: readers share it,
// writers hold it alone from their read to their rename.
//
// Thread safety: all calls may be made from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry_text.h"

namespace platform {

enum class RegistryRoot { LocalMachine, ClassesRoot, CurrentUser };

enum class KeyDisposition { Failed, Created, Existed };

class Registry {
 public:
  // A registry kept in `filePath`. The file and its folder are made on the first write.
  explicit Registry(std::string filePath);

  // The registry of this user: $XDG_CONFIG_HOME/tavrinsonic/registry.reg. The
  // path is taken when this is first called.
  static Registry& Process();

  const std::string& FilePath() const { return filePath_; }

  // Creates the key and any missing parents. Failed when the file can't be written.
  KeyDisposition CreateKey(RegistryRoot root, std::string_view path);
  bool KeyExists(RegistryRoot root, std::string_view path);
  // Deletes the key with its subkeys and values.
  bool DeleteKey(RegistryRoot root, std::string_view path);

  // Stores a value in an existing key; false if the key doesn't exist.
  bool SetValue(RegistryRoot root, std::string_view path, std::string_view name,
                std::uint32_t type, const void* data, std::size_t size);
  bool SetString(RegistryRoot root, std::string_view path, std::string_view name,
                 std::string_view text);
  bool SetDword(RegistryRoot root, std::string_view path, std::string_view name,
                std::uint32_t number);

  // As the platform's query: fails when the key or value is missing, or when
  // *size is smaller than the value (then *size gets the size needed). On
  // success copies the bytes, and stores their count in *size and the type in
  // *type. `type` and `data` may be null.
  bool QueryValue(RegistryRoot root, std::string_view path, std::string_view name,
                  std::uint32_t* type, void* data, std::size_t* size);
  // The whole value, whatever its size.
  std::optional<RegistryValue> GetValue(RegistryRoot root, std::string_view path,
                                        std::string_view name);

  bool DeleteValue(RegistryRoot root, std::string_view path, std::string_view name);

  std::vector<std::string> SubKeyNames(RegistryRoot root, std::string_view path);
  std::vector<std::string> ValueNames(RegistryRoot root, std::string_view path);

 private:
  // Runs `read` on the tree as the file holds it now, under a shared lock.
  template <class Read>
  auto WithTree(Read read);
  // Runs `change` on the tree under an exclusive lock; when it returns true
  // the tree is written back. Returns false if `change` did or the write failed.
  template <class Change>
  bool ChangeTree(Change change);

  std::string filePath_;
  std::mutex mutex_;  // serialises the threads of this process
};

// The full key path for a root and a sub-key, with separators tidied:
// FullKeyPath(LocalMachine, "\\SOFTWARE\\X\\") is "HKEY_LOCAL_MACHINE\\SOFTWARE\\X".
std::string FullKeyPath(RegistryRoot root, std::string_view path);

}  // namespace platform
