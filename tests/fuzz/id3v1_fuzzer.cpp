// Feeds arbitrary bytes to the ID3v1 reader as a whole file and checks the
// bounds of what it gives.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>

#include "decoders/id3v1.h"
#include "platform/text.h"

namespace {

void CheckText(const std::string& text) {
  if (!platform::IsValidUtf8(text) || platform::Utf16Length(text) > decoders::kId3v1TextUnits) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const decoders::MemoryTagSource source(std::span<const std::uint8_t>(data, size));
  decoders::Id3v1Info info;
  const bool found = decoders::ReadId3v1(source, info);
  if (!found && (info.genre != -1 || !info.title.empty())) std::abort();
  if (found && (info.genre < 0 || info.genre > 255 || info.track < 0 || info.track > 31)) std::abort();
  for (const std::string* text : {&info.title, &info.artist, &info.album, &info.comment}) CheckText(*text);
  return 0;
}
