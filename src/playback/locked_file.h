// The byte source of local files, shared by the window thread and a decode
// thread.
//
// The application holds one LockedFile for the whole run and hands it to
// every decoder. Open refuses while a file is open, so one decoder can't
// pull the file from under another. Only regular files open: a folder, a
// pipe or a device is refused at once (a FIFO that nobody writes would
// otherwise block the opening thread for ever).
//
// Threads: every operation may be called from any thread. Open, Close, Read,
// Seek and GetSize each hold `lock` for their whole length; the lock is
// re-entrant, so the ReadU* helpers (which call Read) may also run inside a
// caller's own locked stretch.
#pragma once

#include <mutex>

#include "playback/byte_source.h"

namespace playback {

class LockedFile final : public ByteSource {
 public:
  LockedFile() = default;
  ~LockedFile() override;

  std::int64_t GetSize() override;
  std::int64_t Seek(std::int64_t offset, int origin) override;
  int Read(void* destination, std::uint32_t count, std::uint32_t* got) override;
  int Close() override;
  // Refuses (0) while a file is open; the open file stays. Clears the sticky
  // error.
  int Open(const char* path) override;

 private:
  std::recursive_mutex lock;
  int descriptor = -1;  // guarded by `lock`
};

}  // namespace playback
