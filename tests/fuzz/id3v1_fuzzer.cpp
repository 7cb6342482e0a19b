// Feeds arbitrary bytes to the ID3v1 reader as a whole file and checks the
// bounds of what it gives.
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "decoders/id3v1.h"
#include "fuzz_checks.h"

using fuzz_checks::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const decoders::MemoryTagSource source(std::span<const std::uint8_t>(data, size));
  decoders::Id3v1Info info;
  const bool found = decoders::ReadId3v1(source, info);
  Require(found || (info.genre == -1 && info.title.empty()));
  Require(!found || (info.genre >= 0 && info.genre <= 255 && info.track >= 0 && info.track <= 31));
  for (const std::string* text : {&info.title, &info.artist, &info.album, &info.comment}) {
    fuzz_checks::RequireText(*text, decoders::kId3v1TextUnits);
  }
  return 0;
}
