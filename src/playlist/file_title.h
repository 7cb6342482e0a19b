// The short name of a path, as the list shows and sorts it.
#pragma once

#include <string>
#include <string_view>

namespace playlist {

// "http://" addresses (any case) come back whole. Otherwise the name is what
// stands behind the last '/', up to its last dot. When there is no dot inside
// the name, the last character is cut off instead: "abc" shows as "ab", and so
// does "/a.b/abc". The list has always shown names this way, and sorting by
// name follows from it. An empty path or one ending in '/' gives "".
std::string FileTitle(std::string_view path);

}  // namespace playlist
