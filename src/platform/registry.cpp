#include "platform/registry.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "platform/durable_file.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace platform {
namespace {

constexpr std::size_t kMaxFileBytes = 16u << 20;

std::string_view RootName(RegistryRoot root) {
  switch (root) {
    case RegistryRoot::LocalMachine: return "HKEY_LOCAL_MACHINE";
    case RegistryRoot::ClassesRoot: return "HKEY_CLASSES_ROOT";
    case RegistryRoot::CurrentUser: return "HKEY_CURRENT_USER";
  }
  return "HKEY_LOCAL_MACHINE";
}

// Holds the registry's lock file locked for the life of the object.
class FileLock {
 public:
  FileLock(const std::string& registryPath, bool exclusive, bool createFolder) {
    const std::string lockPath = registryPath + ".lock";
    if (createFolder) {
      const auto slash = registryPath.find_last_of('/');
      if (slash != std::string::npos && slash > 0) MakeDirectories(registryPath.substr(0, slash), 0700);
    }
    fd_ = ::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd_ >= 0) {
      while (::flock(fd_, exclusive ? LOCK_EX : LOCK_SH) != 0 && errno == EINTR) {
      }
    }
  }
  ~FileLock() {
    if (fd_ >= 0) ::close(fd_);  // closing releases the lock
  }
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;
  // A missing folder means there is nothing to read yet: reads go on unlocked.
  bool Held() const { return fd_ >= 0; }

 private:
  int fd_ = -1;
};

RegistryTree LoadTree(const std::string& path) {
  const auto text = ReadWholeFile(path, kMaxFileBytes);
  if (!text) return {};
  return ParseRegistryText(*text);
}

RegistryKeyEntry* FindKey(RegistryTree& tree, std::string_view fullPath) {
  for (auto& key : tree.keys) {
    if (EqualsIgnoreCase(key.path, fullPath)) return &key;
  }
  return nullptr;
}

RegistryValue* FindValue(RegistryKeyEntry& key, std::string_view name) {
  for (auto& value : key.values) {
    if (EqualsIgnoreCase(value.name, name)) return &value;
  }
  return nullptr;
}

bool IsBelow(std::string_view candidate, std::string_view parent) {
  return candidate.size() > parent.size() + 1 && candidate[parent.size()] == '\\' &&
         EqualsIgnoreCase(candidate.substr(0, parent.size()), parent);
}

}  // namespace

std::string FullKeyPath(RegistryRoot root, std::string_view path) {
  std::string full(RootName(root));
  std::size_t i = 0;
  while (i < path.size()) {
    while (i < path.size() && (path[i] == '\\' || path[i] == '/')) ++i;
    std::size_t end = i;
    while (end < path.size() && path[end] != '\\' && path[end] != '/') ++end;
    if (end > i) {
      full.push_back('\\');
      full.append(path.substr(i, end - i));
    }
    i = end;
  }
  return full;
}

Registry::Registry(std::string filePath) : filePath_(std::move(filePath)) {}

Registry& Registry::Process() {
  static Registry registry(ConfigDirectory() + "/registry.reg");
  return registry;
}

template <class Read>
auto Registry::WithTree(Read read) {
  std::lock_guard guard(mutex_);
  FileLock lock(filePath_, false, false);
  RegistryTree tree = LoadTree(filePath_);
  return read(tree);
}

template <class Change>
bool Registry::ChangeTree(Change change) {
  std::lock_guard guard(mutex_);
  FileLock lock(filePath_, true, true);
  if (!lock.Held()) return false;
  RegistryTree tree = LoadTree(filePath_);
  if (!change(tree)) return false;
  return WriteFileDurably(filePath_, FormatRegistryText(tree));
}

KeyDisposition Registry::CreateKey(RegistryRoot root, std::string_view path) {
  const std::string full = FullKeyPath(root, path);
  if (KeyExists(root, path)) return KeyDisposition::Existed;
  bool existed = false;
  const bool ok = ChangeTree([&](RegistryTree& tree) {
    if (FindKey(tree, full) != nullptr) {
      existed = true;  // another process made it meanwhile
      return false;
    }
    // Make each missing ancestor below the root, then the key itself.
    for (std::size_t slash = full.find('\\'); slash != std::string::npos;
         slash = full.find('\\', slash + 1)) {
      const std::string ancestor = full.substr(0, slash);
      if (ancestor.find('\\') != std::string::npos && FindKey(tree, ancestor) == nullptr)
        tree.keys.push_back({ancestor, {}});
    }
    tree.keys.push_back({full, {}});
    return true;
  });
  if (existed) return KeyDisposition::Existed;
  return ok ? KeyDisposition::Created : KeyDisposition::Failed;
}

bool Registry::KeyExists(RegistryRoot root, std::string_view path) {
  const std::string full = FullKeyPath(root, path);
  if (full.find('\\') == std::string::npos) return true;  // the roots always exist
  return WithTree([&](RegistryTree& tree) { return FindKey(tree, full) != nullptr; });
}

bool Registry::DeleteKey(RegistryRoot root, std::string_view path) {
  const std::string full = FullKeyPath(root, path);
  if (full.find('\\') == std::string::npos) return false;
  return ChangeTree([&](RegistryTree& tree) {
    const auto before = tree.keys.size();
    std::erase_if(tree.keys, [&](const RegistryKeyEntry& key) {
      return EqualsIgnoreCase(key.path, full) || IsBelow(key.path, full);
    });
    return tree.keys.size() != before;
  });
}

bool Registry::SetValue(RegistryRoot root, std::string_view path, std::string_view name,
                        std::uint32_t type, const void* data, std::size_t size) {
  const std::string full = FullKeyPath(root, path);
  std::string bytes(size, '\0');
  if (size > 0) std::memcpy(bytes.data(), data, size);
  return ChangeTree([&](RegistryTree& tree) {
    RegistryKeyEntry* key = FindKey(tree, full);
    if (key == nullptr) return false;
    if (RegistryValue* value = FindValue(*key, name)) {
      value->type = type;
      value->data = bytes;
    } else {
      key->values.push_back({std::string(name), type, bytes});
    }
    return true;
  });
}

bool Registry::SetString(RegistryRoot root, std::string_view path, std::string_view name,
                         std::string_view text) {
  std::string data(text);
  data.push_back('\0');
  return SetValue(root, path, name, static_cast<std::uint32_t>(RegistryType::String), data.data(),
                  data.size());
}

bool Registry::SetDword(RegistryRoot root, std::string_view path, std::string_view name,
                        std::uint32_t number) {
  unsigned char bytes[4];
  for (int k = 0; k < 4; ++k) bytes[k] = static_cast<unsigned char>(number >> (8 * k));
  return SetValue(root, path, name, static_cast<std::uint32_t>(RegistryType::Dword), bytes, 4);
}

std::optional<RegistryValue> Registry::GetValue(RegistryRoot root, std::string_view path,
                                                std::string_view name) {
  const std::string full = FullKeyPath(root, path);
  return WithTree([&](RegistryTree& tree) -> std::optional<RegistryValue> {
    RegistryKeyEntry* key = FindKey(tree, full);
    if (key == nullptr) return std::nullopt;
    RegistryValue* value = FindValue(*key, name);
    if (value == nullptr) return std::nullopt;
    return *value;
  });
}

bool Registry::QueryValue(RegistryRoot root, std::string_view path, std::string_view name,
                          std::uint32_t* type, void* data, std::size_t* size) {
  const auto value = GetValue(root, path, name);
  if (!value) return false;
  if (type != nullptr) *type = value->type;
  if (size == nullptr) return data == nullptr;
  if (data != nullptr && *size < value->data.size()) {
    *size = value->data.size();
    return false;
  }
  if (data != nullptr && !value->data.empty()) std::memcpy(data, value->data.data(), value->data.size());
  *size = value->data.size();
  return true;
}

bool Registry::DeleteValue(RegistryRoot root, std::string_view path, std::string_view name) {
  const std::string full = FullKeyPath(root, path);
  return ChangeTree([&](RegistryTree& tree) {
    RegistryKeyEntry* key = FindKey(tree, full);
    if (key == nullptr) return false;
    const auto before = key->values.size();
    std::erase_if(key->values, [&](const RegistryValue& v) { return EqualsIgnoreCase(v.name, name); });
    return key->values.size() != before;
  });
}

std::vector<std::string> Registry::SubKeyNames(RegistryRoot root, std::string_view path) {
  const std::string full = FullKeyPath(root, path);
  return WithTree([&](RegistryTree& tree) {
    std::vector<std::string> names;
    for (const auto& key : tree.keys) {
      if (!IsBelow(key.path, full)) continue;
      const std::string_view tail = std::string_view(key.path).substr(full.size() + 1);
      if (tail.find('\\') == std::string_view::npos) names.emplace_back(tail);
    }
    return names;
  });
}

std::vector<std::string> Registry::ValueNames(RegistryRoot root, std::string_view path) {
  const std::string full = FullKeyPath(root, path);
  return WithTree([&](RegistryTree& tree) {
    std::vector<std::string> names;
    if (RegistryKeyEntry* key = FindKey(tree, full)) {
      for (const auto& value : key->values) names.push_back(value.name);
    }
    return names;
  });
}

}  // namespace platform
