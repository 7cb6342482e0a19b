// A shared library loaded at run time: LoadLibraryW and GetProcAddressW of the
// phone platform, dlopen and dlsym here.
//
// The library stays loaded while the object lives; whatever came out of it
// (objects, functions) must be gone before. A library that can't be loaded
// is no error for the caller to report: Open returns false.
//
// Threads: the owner's thread.
#pragma once

#include <string>

namespace platform {

class SharedLibrary {
 public:
  SharedLibrary() = default;
  ~SharedLibrary();
  SharedLibrary(const SharedLibrary&) = delete;
  SharedLibrary& operator=(const SharedLibrary&) = delete;

  // Loads the library at `path` (a path with a slash: no search of the
  // system's library folders), resolving all its symbols now. Unloads any
  // library this object held.
  bool Open(const std::string& path);
  // The address of an exported symbol; null when there is none.
  void* Symbol(const char* name) const;
  void Close();
  bool IsOpen() const { return handle != nullptr; }

 private:
  void* handle = nullptr;
};

}  // namespace platform
