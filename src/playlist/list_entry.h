// How the text of a list file's line becomes an entry's path or title.
//
// Lists come from everywhere: Windows players write "\" separators and
// Windows-1252 text, Linux players UTF-8 and sometimes file:// addresses.
// Narrow text is taken as UTF-8 when it is valid UTF-8, else as Windows-1252.
// A "\" in a local entry becomes "/". What each format does with an entry
// that isn't absolute differs, and is kept as each format always had it:
//  - m3u: a relative path is put behind the list's folder; addresses
//    ("scheme://...") stay as they are.
//  - pls: entries stay as they stand, relative or not.
//  - asx: everything that isn't an absolute path gets the list's folder in
//    front, addresses too (which makes them dead entries; asx lists have
//    always been read so).
//  - the native list: the bytes are the path, as the writer wrote them, with
//    the m3u rule for relative ones.
// Entries with control characters (binary junk) are dropped, as are blank
// ones and file:// addresses of another host.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace playlist {

enum class EntryRule { kM3u, kPls, kAsx, kNativeList };

// The list's folder: its path up to and including the last '/'; empty if none.
std::string ListDirectory(std::string_view listPath);

// The path of an entry, or nothing when the entry is dropped.
std::optional<std::string> EntryPath(std::string_view text, std::string_view directory, EntryRule rule);

// A title: decoded, control characters turned into blanks, blanks at the end
// removed (but never the first character), cut to `maxUnits` UTF-16 units.
std::string EntryTitle(std::string_view text, std::size_t maxUnits);

// The number at the start of `text` as atoi reads it (blanks, a sign, digits),
// held within the range of int.
int LeadingInteger(std::string_view text);

// "scheme://" at the start: an address rather than a path.
bool IsAddress(std::string_view text);

// The local path of a file:// address (host empty or "localhost", %XX decoded);
// nothing for another host or a decoded control character.
std::optional<std::string> FileAddressToPath(std::string_view address);

}  // namespace playlist
