// Streams as an ICY server sends them, made by the tests.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace net_testing {

// `count` bytes of noise, the same for the same seed.
std::string RandomBytes(std::size_t count, std::uint32_t seed);

// One metadata block: the length byte, the text, zero padding to a multiple of 16.
std::string MetadataBlock(std::string_view text);
std::string TitleBlock(std::string_view title);

// `audio` with a block behind every `interval` bytes: the given blocks in
// order, then empty ones. No block follows a last, short stretch.
std::string Interleave(std::string_view audio, std::size_t interval, const std::vector<std::string>& blocks);

}  // namespace net_testing
