// Feeds arbitrary bytes to the preset reader, as a file's contents and (for
// every 256th input) as a file in a presets folder, and checks what it gives: a preset loads
// exactly when the file holds 31 bytes or more, its values are the bytes at
// offset 20, every value becomes a slider position, and a preset written
// from the values reads back the same.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "effects/preset_store.h"
#include "fuzz_checks.h"

using fuzz_checks::Require;

namespace {

// A program folder of this process's own, with a presets folder; removed
// when the run ends.
class ProgramFolder {
 public:
  ProgramFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "eqf_fuzz.XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) std::abort();
    path = pattern;
    std::filesystem::create_directories(path + "/presets");
  }
  ~ProgramFolder() {
    std::error_code error;
    std::filesystem::remove_all(path, error);
  }
  ProgramFolder(const ProgramFolder&) = delete;
  ProgramFolder& operator=(const ProgramFolder&) = delete;

  std::string path;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view contents(reinterpret_cast<const char*>(data), size);
  effects::EqfValues parsed{};
  const bool parses = effects::ParseEqf(contents, parsed);
  Require(parses == (size >= effects::kEqfFileBytes));
  if (parses) {
    for (std::size_t index = 0; index < parsed.size(); ++index) {
      Require(parsed[index] == data[effects::kEqfValueOffset + index]);
      const std::int32_t position = effects::SliderFromEqf(parsed[index]);
      Require(position >= 0 && position <= effects::kSliderMaximum);
      Require(effects::SliderFromEqf(effects::EqfFromSlider(position)) == position);
    }
    // The head as a name: cut to 20 bytes, and the values survive it.
    const auto bytes = effects::EqfFileBytes(contents.substr(0, effects::kEqfNameBytes), parsed);
    effects::EqfValues again{};
    Require(effects::ParseEqf(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()),
                              again));
    Require(again == parsed);
  }

  // The same bytes as a preset file on disk, through the store: one input in
  // 256, as the file system is a thousand times slower than the parse.
  static std::uint32_t executions = 0;
  if (executions++ % 256 != 0) return 0;
  static const ProgramFolder program;
  const std::string& folder = program.path;
  {
    std::ofstream file(folder + "/presets/input.eqf", std::ios::binary | std::ios::trunc);
    file.write(contents.data(), static_cast<std::streamsize>(contents.size()));
  }
  effects::PresetStore store;
  Require(store.Scan(folder) == 1);
  Require(store.NameAt(0) == "Input" && store.Find("INPUT") == 0);
  effects::EqfValues loaded{};
  Require(store.Load(0, loaded, folder) == parses);
  Require(!parses || loaded == parsed);
  return 0;
}
