// The playlist file formats.
//
// m3u, read line by line:
//   "#EXTINF:<seconds>,<title>" (any case): the seconds (a negative number
//     counts as 0) and, behind the first comma, a title. The title waits,
//     over comment lines, for the next path line and goes to the last entry
//     of the list once that line is added. Without a comma only the seconds
//     change.
//   any other line beginning with "#": a comment ("#EXTM3U" among them).
//   an empty line: nothing.
//   anything else: a path or an address (see list_entry.h).
// m3u, as written: "#EXTM3U:" (the colon has always been there; readers
//   ignore the line), then per entry "#EXTINF:<seconds>,<title>" when the
//   entry has its information, and the path; lines end in "\r\n".
// pls: "File<n>=", "Title<n>=" and "Length<n>=" at the start of a line, in
//   any case, each with its own running number that goes up only when its key
//   matched. File numbers start at 1 and add an entry; Title numbers start at
//   1 and title the last entry; Length numbers start at 2 (so "Length1=" never
//   matches, and each length lands on whichever entry is last when it comes)
//   and set the last entry's duration, sign unchecked. Lists have always been
//   read with these numbers, and players' lists rely on them. Lines beginning
//   with "[" and all other keys are ignored.
// asx: per line, the first "<REF HREF" (any case, one blank between) and the
//   value between the next two double quotes. Other tags are ignored; the
//   reading never depends on the document being well-formed XML.
//
// A list is opened only if it is a regular file (a FIFO or a device would
// block or never end), and not while it is being read already further up the
// same chain: a list that names itself, directly or through others, adds its
// entries once. The chain is at most kMaxDepth lists deep and one top-level
// read opens at most kMaxListsPerRead lists, so no set of files makes a read
// run away.
#include "playlist/playlist_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <utility>
#include <vector>

#include "platform/durable_file.h"
#include "platform/text.h"
#include "playlist/line_reader.h"
#include "playlist/list_entry.h"
#include "playlist/playlist_view.h"

namespace playlist {
namespace {

constexpr std::size_t kMaxDepth = 32;
constexpr int kMaxListsPerRead = 10000;
constexpr std::size_t kEntryTitleUnits = 259;

// The lists open on this thread, outermost first. Readers run on the calling
// thread and nest by recursion, so the chain is the thread's own.
struct OpenLists {
  std::vector<std::pair<dev_t, ino_t>> chain;
  int opensLeft = 0;
};
thread_local OpenLists openLists;

// One list file open for reading, a link of the chain while it lives.
class ListFile {
 public:
  explicit ListFile(const std::string& path) {
    OpenLists& lists = openLists;
    if (lists.chain.empty()) lists.opensLeft = kMaxListsPerRead;
    if (lists.chain.size() >= kMaxDepth || lists.opensLeft <= 0) return;
    --lists.opensLeft;
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return;
    struct stat status {};
    if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode) || IsOpen({status.st_dev, status.st_ino}) ||
        ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK) != 0 ||
        (file = ::fdopen(fd, "rb")) == nullptr) {
      ::close(fd);
      return;
    }
    lists.chain.emplace_back(status.st_dev, status.st_ino);
    lines.emplace(file);
  }
  ~ListFile() {
    if (file == nullptr) return;
    std::fclose(file);
    openLists.chain.pop_back();
  }
  ListFile(const ListFile&) = delete;
  ListFile& operator=(const ListFile&) = delete;

  bool IsOpen() const { return file != nullptr; }
  // The next line that fits, cut at its first NUL byte; false at the end.
  bool NextLine(std::string& line) {
    bool overlong = false;
    while (lines->Next(line, overlong)) {
      if (overlong) continue;
      if (const std::size_t nul = line.find('\0'); nul != std::string::npos) line.resize(nul);
      return true;
    }
    return false;
  }

 private:
  static bool IsOpen(std::pair<dev_t, ino_t> identity) {
    const auto& chain = openLists.chain;
    return std::find(chain.begin(), chain.end(), identity) != chain.end();
  }

  std::FILE* file = nullptr;
  std::optional<LineReader> lines;
};

int LastIndex(const PlaylistView& view) { return view.ItemCount() - 1; }

// The key of a pls line, as "File3=", matched at the start in any case.
bool MatchesKey(std::string_view line, const char* name, int number) {
  const std::string key = std::string(name) + std::to_string(number) + "=";
  return platform::StartsWithIgnoreCase(line, key);
}

std::string_view ValueAfterEquals(std::string_view line) {
  const std::size_t equals = line.find('=');
  return equals == std::string_view::npos ? std::string_view() : line.substr(equals + 1);
}

std::string AsciiUpper(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return upper;
}

}  // namespace

void ReadM3u(PlaylistView& view, const std::string& listPath, bool nativeList) {
  ListFile file(listPath);
  if (!file.IsOpen()) return;
  const std::string directory = ListDirectory(listPath);
  const EntryRule rule = nativeList ? EntryRule::kNativeList : EntryRule::kM3u;
  std::string title;
  bool titlePending = false;
  int seconds = 0;
  std::string line;
  while (file.NextLine(line)) {
    if (platform::StartsWithIgnoreCase(line, "#EXTINF:")) {
      const std::string_view rest = std::string_view(line).substr(8);
      seconds = std::max(0, LeadingInteger(rest));
      if (const std::size_t comma = line.find(','); comma != std::string::npos) {
        title = EntryTitle(std::string_view(line).substr(comma + 1), kEntryTitleUnits);
        titlePending = true;
      }
      continue;
    }
    if (line.empty() || line.front() == '#') continue;
    const std::optional<std::string> path = EntryPath(line, directory, rule);
    if (!path) continue;
    view.AddEntry(*path);
    if (titlePending && view.ItemCount() > 0) {
      titlePending = false;
      view.SetTitle(LastIndex(view), title);
      view.SetDuration(LastIndex(view), static_cast<std::uint32_t>(seconds) * 1000u);
    }
  }
}

void ReadPls(PlaylistView& view, const std::string& listPath) {
  ListFile file(listPath);
  if (!file.IsOpen()) return;
  int fileNumber = 1;
  int titleNumber = 1;
  int lengthNumber = 2;
  std::string line;
  while (file.NextLine(line)) {
    if (line.starts_with('[')) continue;
    const std::string_view value = ValueAfterEquals(line);
    if (MatchesKey(line, "File", fileNumber)) {
      ++fileNumber;
      if (auto path = EntryPath(value, {}, EntryRule::kPls)) view.AddEntry(*path);
    } else if (MatchesKey(line, "Title", titleNumber)) {
      ++titleNumber;
      if (view.ItemCount() > 0) view.SetTitle(LastIndex(view), EntryTitle(value, kEntryTitleUnits));
    } else if (MatchesKey(line, "Length", lengthNumber)) {
      ++lengthNumber;
      const auto durationMs = static_cast<std::uint32_t>(LeadingInteger(value)) * 1000u;
      if (view.ItemCount() > 0) view.SetDuration(LastIndex(view), durationMs);
    }
  }
}

void ReadAsx(PlaylistView& view, const std::string& listPath) {
  ListFile file(listPath);
  if (!file.IsOpen()) return;
  const std::string directory = ListDirectory(listPath);
  std::string line;
  while (file.NextLine(line)) {
    const std::size_t reference = AsciiUpper(line).find("<REF HREF");
    if (reference == std::string::npos) continue;
    const std::size_t open = line.find('"', reference);
    if (open == std::string::npos) continue;
    const std::size_t close = line.find('"', open + 1);
    if (close == std::string::npos) continue;
    const std::string_view value = std::string_view(line).substr(open + 1, close - open - 1);
    if (auto path = EntryPath(value, directory, EntryRule::kAsx)) view.AddEntry(*path);
  }
}

std::string FormatM3u(const PlaylistView& view) {
  std::string out = "#EXTM3U:\r\n";
  for (int i = 0; i < view.ItemCount(); ++i) {
    const std::string& path = view.PathAt(i);
    // A name with a line break can't stand on a line of its own.
    if (path.find_first_of("\r\n") != std::string::npos) continue;
    if ((view.FlagsAt(i) & ITEM_HAS_INFO) != 0) {
      std::string title = view.TitleAt(i);
      std::replace_if(title.begin(), title.end(), [](char c) { return c == '\r' || c == '\n'; }, ' ');
      out += "#EXTINF:";
      out += std::to_string(static_cast<std::int32_t>(view.DurationAt(i)) / 1000);
      out += ',';
      out += title;
      out += "\r\n";
    }
    out += path;
    out += "\r\n";
  }
  return out;
}

bool WriteM3u(const PlaylistView& view, const std::string& path) {
  return platform::WriteFileDurably(path, FormatM3u(view));
}

}  // namespace playlist
