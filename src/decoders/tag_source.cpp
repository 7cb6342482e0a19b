#include "decoders/tag_source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace decoders {

std::size_t MemoryTagSource::ReadAt(std::uint64_t offset, std::uint8_t* destination,
                                    std::size_t count) const {
  if (offset >= bytes.size()) return 0;
  const std::size_t available = bytes.size() - static_cast<std::size_t>(offset);
  const std::size_t got = count < available ? count : available;
  if (got != 0) std::memcpy(destination, bytes.data() + offset, got);
  return got;
}

FileTagSource::~FileTagSource() {
  if (descriptor >= 0) ::close(descriptor);
}

bool FileTagSource::Open(const std::string& path) {
  if (descriptor >= 0) return false;
  // O_NONBLOCK keeps open() itself from waiting for a writer on a pipe; the
  // type test below then refuses the pipe.
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (fd < 0) return false;
  struct stat status{};
  if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size < 0) {
    ::close(fd);
    return false;
  }
  descriptor = fd;
  size = static_cast<std::uint64_t>(status.st_size);
  return true;
}

std::size_t FileTagSource::ReadAt(std::uint64_t offset, std::uint8_t* destination,
                                  std::size_t count) const {
  if (descriptor < 0 || offset >= size) return 0;
  std::size_t got = 0;
  while (got < count) {
    const ssize_t n = ::pread(descriptor, destination + got, count - got,
                              static_cast<off_t>(offset + got));
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    got += static_cast<std::size_t>(n);
  }
  return got;
}

}  // namespace decoders
