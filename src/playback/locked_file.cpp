#include "playback/locked_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace playback {

LockedFile::~LockedFile() {
  Close();
}

std::int64_t LockedFile::GetSize() {
  std::lock_guard guard(lock);
  struct stat status {};
  if (descriptor < 0 || ::fstat(descriptor, &status) != 0) return 0;
  return status.st_size;
}

std::int64_t LockedFile::Seek(std::int64_t offset, int origin) {
  std::lock_guard guard(lock);
  int whence = SEEK_SET;
  if (origin == kFromCurrent) {
    whence = SEEK_CUR;
  } else if (origin == kFromEnd) {
    whence = SEEK_END;
  } else if (origin != kFromBegin) {
    return kSeekFailed;
  }
  if (descriptor < 0) return kSeekFailed;
  const off_t position = ::lseek(descriptor, static_cast<off_t>(offset), whence);
  return position < 0 ? kSeekFailed : static_cast<std::int64_t>(position);
}

int LockedFile::Read(void* destination, std::uint32_t count, std::uint32_t* got) {
  std::lock_guard guard(lock);
  if (got != nullptr) *got = 0;
  if (descriptor < 0 || (destination == nullptr && count != 0)) return 0;
  std::uint32_t total = 0;
  auto* bytes = static_cast<unsigned char*>(destination);
  while (total < count) {
    const ssize_t now = ::read(descriptor, bytes + total, count - total);
    if (now < 0 && errno == EINTR) continue;
    if (now < 0) return 0;
    if (now == 0) break;  // the end of the file
    total += static_cast<std::uint32_t>(now);
  }
  if (got != nullptr) *got = total;
  return 1;
}

int LockedFile::Close() {
  std::lock_guard guard(lock);
  if (descriptor < 0) return 0;
  ::close(descriptor);
  descriptor = -1;
  isOpen.store(0, std::memory_order_relaxed);
  return 1;
}

int LockedFile::Open(const char* path) {
  std::lock_guard guard(lock);
  if (descriptor >= 0 || path == nullptr) return 0;
  // Non-blocking, so that opening a FIFO returns at once; it is then refused.
  const int opened = ::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (opened < 0) return 0;
  struct stat status {};
  if (::fstat(opened, &status) != 0 || !S_ISREG(status.st_mode)) {
    ::close(opened);
    return 0;
  }
  descriptor = opened;
  error.store(0, std::memory_order_relaxed);
  isOpen.store(1, std::memory_order_relaxed);
  return 1;
}

}  // namespace playback
