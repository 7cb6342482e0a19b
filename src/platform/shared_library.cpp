#include "platform/shared_library.h"

#include <dlfcn.h>

namespace platform {

SharedLibrary::~SharedLibrary() {
  Close();
}

bool SharedLibrary::Open(const std::string& path) {
  Close();
  if (path.find('/') == std::string::npos) return false;
  handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  return handle != nullptr;
}

void* SharedLibrary::Symbol(const char* name) const {
  return handle != nullptr && name != nullptr ? ::dlsym(handle, name) : nullptr;
}

void SharedLibrary::Close() {
  if (handle != nullptr) ::dlclose(handle);
  handle = nullptr;
}

}  // namespace platform
