#include "platform/device_volume.h"

#include <cstring>

#include "platform/registry.h"

namespace platform {
namespace {

std::uint32_t ReadKeptVolume(Registry& registry) {
  std::uint32_t type = 0;
  std::uint32_t value = 0;
  std::size_t size = sizeof(value);
  if (!registry.QueryValue(RegistryRoot::LocalMachine, kDeviceVolumeKey, kDeviceVolumeValue, &type,
                           &value, &size) ||
      type != static_cast<std::uint32_t>(RegistryType::Dword) || size != sizeof(value)) {
    return kFullVolume;
  }
  return value;
}

}  // namespace

DeviceVolume::DeviceVolume(Registry& keptIn) : registry(keptIn), volume(ReadKeptVolume(keptIn)) {}

bool DeviceVolume::Set(std::uint32_t packed) {
  const std::uint32_t previous = volume.exchange(packed, std::memory_order_relaxed);
  if (previous == packed && ReadKeptVolume(registry) == packed) return true;
  if (registry.CreateKey(RegistryRoot::LocalMachine, kDeviceVolumeKey) == KeyDisposition::Failed) {
    return false;
  }
  return registry.SetDword(RegistryRoot::LocalMachine, kDeviceVolumeKey, kDeviceVolumeValue, packed);
}

void DeviceVolume::Reload() { volume.store(ReadKeptVolume(registry), std::memory_order_relaxed); }

DeviceVolume& ProcessDeviceVolume() {
  static DeviceVolume processVolume(Registry::Process());
  return processVolume;
}

}  // namespace platform
