// libmad driven the way its documentation asks, as the reference that the
// player's MP3 path must reproduce sample for sample: the whole file in one
// buffer followed by MAD_BUFFER_GUARD zero bytes, every frame decoded in
// turn (recoverable errors passed over), each sample rounded to 16 bits as
// libmad's own example player does.
#pragma once

#include <cstdint>
#include <vector>

#include "decoders/mpeg_test_files.h"

namespace decoders_test {

// Interleaved 16-bit samples with the channels of the file's frames.
std::vector<std::int16_t> BareLibmadDecode(const Bytes& file);

// Where the output queue ends a track played with every sound option off:
// at its last sample of magnitude 500 or more, which the end mark trims
// together with the quiet tail behind it (the threshold the end of the
// prefill arms stays armed).
std::size_t KeptEnd(const std::vector<std::int16_t>& decoded);

// What the output queue keeps of such a track, from its first sound: leading
// exact zeros are cut in whole frames, as the capture's first sound is found.
std::vector<std::int16_t> AsQueued(const std::vector<std::int16_t>& decoded, int channels);

}  // namespace decoders_test
