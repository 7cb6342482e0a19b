#include "shell/registry_key.h"

#include "platform/text.h"

namespace shell {

using platform::RegistryType;

RegistryKey::RegistryKey(platform::Registry& store) : registry(store) {}

bool RegistryKey::DeleteValue(std::string_view name) {
  return registry.DeleteValue(root, path, name);
}

bool RegistryKey::ReadString(std::string_view name, std::string& text) {
  const auto value = registry.GetValue(root, path, name);
  if (!value) return false;
  std::string stored = value->data;
  if (const auto zero = stored.find('\0'); zero != std::string::npos) stored.resize(zero);
  if ((platform::Utf16Length(stored) + 1) * 2 > 520) return false;
  text = std::move(stored);
  return true;
}

bool RegistryKey::ReadDword(std::string_view name, std::uint32_t& target) {
  unsigned char bytes[4] = {static_cast<unsigned char>(target), static_cast<unsigned char>(target >> 8),
                            static_cast<unsigned char>(target >> 16), static_cast<unsigned char>(target >> 24)};
  std::size_t size = sizeof bytes;
  if (!registry.QueryValue(root, path, name, nullptr, bytes, &size)) return false;
  target = static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8 |
           static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
  return true;
}

bool RegistryKey::WriteString(std::string_view name, std::string_view text) {
  return registry.SetString(root, path, name, text);
}

bool RegistryKey::WriteDword(std::string_view name, std::uint32_t value) {
  return registry.SetDword(root, path, name, value);
}

bool RegistryKey::Bind(platform::RegistryRoot newRoot, std::string_view newPath) {
  root = newRoot;
  path = std::string(newPath);
  return registry.CreateKey(root, path) != platform::KeyDisposition::Failed;
}

bool RegistryKey::WriteBinary(std::string_view name, const void* data, std::size_t size) {
  return registry.SetValue(root, path, name, static_cast<std::uint32_t>(RegistryType::Binary),
                                    data, size);
}

bool RegistryKey::ReadBinary(std::string_view name, void* buffer, std::size_t& size) {
  return registry.QueryValue(root, path, name, nullptr, buffer, &size);
}

}  // namespace shell
