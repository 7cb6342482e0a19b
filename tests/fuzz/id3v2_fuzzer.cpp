// Feeds arbitrary bytes to the ID3v2 reader as a whole file. Every text it
// gives must be valid UTF-8; the sanitizers watch the reads.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "decoders/id3v2.h"
#include "fuzz_checks.h"

using fuzz_checks::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span<const std::uint8_t> bytes(data, size);
  const decoders::MemoryTagSource source(bytes);
  decoders::Id3v2Info info;
  const bool found = decoders::ReadId3v2(source, info);
  for (const auto* field : {&info.title, &info.artist, &info.album, &info.comment, &info.year, &info.genre,
                            &info.encodedBy, &info.composer, &info.track}) {
    Require(found || !*field);
    Require(!*field || platform::IsValidUtf8(**field));
  }
  const std::uint32_t length = decoders::Id3v2TagLength(bytes);
  Require(length == 0 || (length >= 10 && length <= 10 + 0x0FFFFFFFu));
  return 0;
}
