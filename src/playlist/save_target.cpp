#include "playlist/save_target.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

#include "platform/durable_file.h"

namespace playlist {

std::string SaveTargetPath(const std::string& folder, const std::string& name) {
  std::string path = folder;
  if (path.empty() || path.back() != '/') path += '/';
  return path + name + kSaveExtension;
}

bool MakeSaveFolder(const std::string& folder) {
  return platform::MakeDirectories(folder);
}

bool SaveTargetExists(const std::string& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0;
}

bool CanCreateFile(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) return false;
  std::string pattern = path + ".XXXXXX";
  std::vector<char> scratch(pattern.begin(), pattern.end());
  scratch.push_back('\0');
  const int descriptor = ::mkstemp(scratch.data());
  if (descriptor < 0) return false;
  ::close(descriptor);
  ::unlink(scratch.data());
  return true;
}

}  // namespace playlist
