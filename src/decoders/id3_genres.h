// The genre names of ID3 tags, by number.
//
// ID3v1 stores a genre as one byte, and ID3v2 genre texts may refer to the
// same numbers as "(nn)". The table has the 148 rows the player knows; the
// spellings are the player's own and stay as they are ("Psychadelic",
// "Bebob", "Acapella").
#pragma once

#include <cstddef>

namespace decoders {

inline constexpr int kGenreCount = 148;

// The name of genre `number`, or null when the number is outside 0 to 147.
const char* GenreName(int number);

}  // namespace decoders
