#include "platform/wave_out.h"

#include <mutex>

namespace platform {
namespace {

std::mutex& DriverLock() {
  static std::mutex lock;
  return lock;
}

std::shared_ptr<WaveOutDriver>& DriverSlot() {
  static std::shared_ptr<WaveOutDriver> driver;
  return driver;
}

}  // namespace

std::shared_ptr<WaveOutDriver> CurrentWaveOutDriver() {
  std::lock_guard guard(DriverLock());
  std::shared_ptr<WaveOutDriver>& driver = DriverSlot();
  if (!driver) driver = MakeSdlWaveOutDriver();
  return driver;
}

void SetWaveOutDriver(std::shared_ptr<WaveOutDriver> driver) {
  std::lock_guard guard(DriverLock());
  DriverSlot() = std::move(driver);
}

}  // namespace platform
