// The bookmarks as the application uses them: the store of saved positions
// in "bookmarks.dat", with the last-played bookmark that carries a track
// across an exit.
//
// Threads: window thread only.
#pragma once

#include <cstdint>
#include <string>

namespace shell {

class BookmarkStore {
 public:
  virtual ~BookmarkStore() = default;

  // Overwrites the bookmark at `index` and saves.
  virtual void Replace(int index, const std::string& path, std::int32_t seconds,
                       const std::string& description) = 0;
  // Adds a bookmark at the end and saves.
  virtual void Add(const std::string& path, std::int32_t seconds, const std::string& description) = 0;
  // False for an index out of range; otherwise fills in what isn't null and
  // returns whether the file exists now.
  virtual bool Get(int index, std::string* path, std::string* description, std::int32_t* seconds) = 0;
  // Reads the file anew; the number of bookmarks.
  virtual int Load() = 0;
  // Stores the last-played bookmark as record 0 and saves.
  virtual void SetLastPlayed(const std::string& path, std::int32_t seconds, const std::string& title) = 0;
  // Takes the last-played bookmark out of the store; false when there is
  // none or its file is gone.
  virtual bool TakeLastPlayed(std::string& path, std::int32_t& seconds) = 0;
};

}  // namespace shell
