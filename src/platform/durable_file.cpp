#include "platform/durable_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <sys/syscall.h>

namespace platform {
namespace {

bool WriteAll(int fd, std::string_view data) {
  while (!data.empty()) {
    const ssize_t done = ::write(fd, data.data(), data.size());
    if (done < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    data.remove_prefix(static_cast<std::size_t>(done));
  }
  return true;
}

std::string FolderOf(const std::string& path) {
  const auto slash = path.find_last_of('/');
  if (slash == std::string::npos) return ".";
  if (slash == 0) return "/";
  return path.substr(0, slash);
}

bool SyncFolder(const std::string& folder) {
  const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return false;
  const bool synced = ::fsync(fd) == 0;
  ::close(fd);
  return synced;
}

}  // namespace

bool WriteFileDurably(const std::string& path, std::string_view contents) {
  // The temporary name is unique per thread, so that two writers of one file
  // never share a temporary; the rename decides which of them lands last.
  const std::string temporary = path + ".tmp." + std::to_string(::getpid()) + "." +
                                std::to_string(static_cast<long>(::syscall(SYS_gettid)));
  const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) return false;
  bool ok = WriteAll(fd, contents) && ::fsync(fd) == 0;
  ok = (::close(fd) == 0) && ok;
  if (ok) ok = ::rename(temporary.c_str(), path.c_str()) == 0;
  if (!ok) {
    ::unlink(temporary.c_str());
    return false;
  }
  // The rename is in place; a failed folder flush only weakens durability.
  SyncFolder(FolderOf(path));
  return true;
}

std::optional<std::string> ReadWholeFile(const std::string& path, std::size_t maxBytes) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return std::nullopt;
  std::string contents;
  char chunk[16384];
  for (;;) {
    const ssize_t got = ::read(fd, chunk, sizeof chunk);
    if (got < 0) {
      if (errno == EINTR) continue;
      ::close(fd);
      return std::nullopt;
    }
    if (got == 0) break;
    if (contents.size() + static_cast<std::size_t>(got) > maxBytes) {
      ::close(fd);
      return std::nullopt;
    }
    contents.append(chunk, static_cast<std::size_t>(got));
  }
  ::close(fd);
  return contents;
}

bool MakeDirectories(const std::string& path, unsigned mode) {
  if (path.empty()) return false;
  std::string partial;
  std::size_t start = 0;
  while (start <= path.size()) {
    const auto slash = path.find('/', start);
    const auto end = slash == std::string::npos ? path.size() : slash;
    partial = path.substr(0, end);
    if (!partial.empty()) ::mkdir(partial.c_str(), mode);
    if (slash == std::string::npos) break;
    start = slash + 1;
  }
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

}  // namespace platform
