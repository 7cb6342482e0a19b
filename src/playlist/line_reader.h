// Lines of a text file, read in bounded memory.
//
// A line ends at "\n", "\r\n" or a lone "\r", so lists written on Windows,
// Unix or old Macs read alike; the end itself isn't part of the line. A UTF-8
// byte-order mark at the start of the file is dropped. A line longer than
// kMaxLineBytes is reported as overlong, without its text: no file, however
// large or strange, makes a line grow beyond that.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

namespace playlist {

class LineReader {
 public:
  // Longest path Linux accepts, without its terminator.
  static constexpr std::size_t kMaxLineBytes = 4095;

  explicit LineReader(std::FILE* source) : file(source) {}

  // The next line; false at the end of the file (or on a read error).
  // `overlong` is set, and `line` empty, for a line above kMaxLineBytes.
  bool Next(std::string& line, bool& overlong);

 private:
  bool Fill();
  void Take(const char* begin, const char* end, std::string& line, bool& overlong) const;

  std::FILE* file;
  static constexpr std::size_t kBufferBytes = 16384;
  std::unique_ptr<char[]> buffer = std::make_unique_for_overwrite<char[]>(kBufferBytes);
  std::size_t position = 0;
  std::size_t filled = 0;
  bool skipLineFeed = false;  // the last line ended in "\r"
  bool atStart = true;
};

}  // namespace playlist
