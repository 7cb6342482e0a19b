// Feeds arbitrary bytes to the m3u, pls and asx readers, as files named
// a.m3u, a.pls and a.asx in one folder, so that inputs can name each other
// and themselves. Checks what the readers promise: no entry is empty or holds
// a control character, and the list survives a round through the native
// list unchanged.
#include <stdlib.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "fuzz_checks.h"
#include "playback/format_registry.h"
#include "playlist/list_entry.h"
#include "playlist/playlist_files.h"
#include "playlist/playlist_view.h"

namespace {

struct Folder {
  Folder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tavrinsonic-fuzz-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) std::abort();
    path = pattern;
  }
  ~Folder() {
    std::error_code error;
    std::filesystem::remove_all(path, error);
  }
  std::string path;
};

playback::FormatRegistry& Registry() {
  static playback::FormatRegistry formats = [] {
    playback::FormatRegistry table;
    table.AddExtension(playback::kFormatM3u, "m3u");
    table.AddExtension(playback::kFormatPls, "pls");
    table.AddExtension(playback::kFormatAsx, "asx");
    table.AddExtension(playback::kFormatMp3, "mp3");
    for (int id : {playback::kFormatM3u, playback::kFormatPls, playback::kFormatAsx, playback::kFormatMp3}) {
      table.Enable(id, true);
    }
    return table;
  }();
  return formats;
}

// A plain write: the durable one flushes to the disk, which would make each
// input take milliseconds.
void WriteQuickly(const std::string& path, std::string_view bytes) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) std::abort();
  if (!bytes.empty() && std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size()) std::abort();
  std::fclose(file);
}

// Entries that read back as they were written: absolute paths and addresses.
// (Relative ones get the list's folder in front; a name ending in the native
// list's own extension is read as a list while the native list loads.)
bool ComesBackAsWritten(const std::string& path) {
  return (path.front() == '/' || playlist::IsAddress(path)) && !platform::EndsWithIgnoreCase(path, "tsl");
}

}  // namespace

using fuzz_checks::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Folder folder;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  playback::FormatRegistry& formats = Registry();
  playlist::PlaylistView view(formats);
  for (const char* name : {"a.m3u", "a.pls", "a.asx"}) {
    WriteQuickly(folder.path + "/" + name, bytes);
  }
  for (const char* name : {"a.m3u", "a.pls", "a.asx"}) view.AddEntry(folder.path + "/" + name);

  for (int i = 0; i < view.ItemCount(); ++i) {
    const std::string& path = view.PathAt(i);
    Require(!path.empty());
    for (char c : path) Require(static_cast<unsigned char>(c) >= 0x20 || c == '\t');
  }

  const std::string saved = folder.path + "/default.tsl";
  WriteQuickly(saved, playlist::FormatM3u(view));
  playlist::PlaylistView reloaded(formats);
  formats.Enable(playback::kFormatNativeList, true);
  reloaded.AddEntry(saved);
  formats.Enable(playback::kFormatNativeList, false);
  bool comparable = true;
  for (int i = 0; i < view.ItemCount() && comparable; ++i) comparable = ComesBackAsWritten(view.PathAt(i));
  if (!comparable) return 0;
  Require(reloaded.ItemCount() == view.ItemCount());
  for (int i = 0; i < view.ItemCount(); ++i) {
    Require(reloaded.PathAt(i) == view.PathAt(i));
    if (view.FlagsAt(i) & playlist::ITEM_HAS_INFO) Require(reloaded.TitleAt(i) == view.TitleAt(i));
  }
  return 0;
}
