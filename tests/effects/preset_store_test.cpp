#include "effects/preset_store.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/test_environment.h"

namespace {

using effects::EqfFromSlider;
using effects::EqfValues;
using effects::PresetStore;
using effects::SliderFromEqf;
using testing_support::ReadFile;
using testing_support::TemporaryDirectory;
using testing_support::WriteFile;

const EqfValues kSomeValues = {0, 7, 13, 31, 40, 62, 63, 20, 31, 5, 31};

// The 31 bytes of a file with `name` in its head and kSomeValues.
std::string FileWith(const std::string& name, std::size_t nameBytes = 20) {
  std::string bytes = name;
  bytes.resize(nameBytes, '\0');
  bytes.append(kSomeValues.begin(), kSomeValues.end());
  return bytes;
}

class PresetFolderTest : public ::testing::Test {
 protected:
  void SetUp() override { std::filesystem::create_directories(Presets()); }
  std::string Presets() const { return folder.File("presets"); }
  void Put(const std::string& fileName, const std::string& contents) {
    WriteFile(Presets() + "/" + fileName, contents);
  }
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (int index = 0; index < store.Count(); ++index) names.push_back(store.NameAt(index));
    return names;
  }

  TemporaryDirectory folder;
  PresetStore store;
};

TEST(EqfConversionTest, FileValuesBecomeSliderPositions) {
  struct Case {
    int value;
    int position;
  };
  for (const Case& c : std::vector<Case>{{0, 0},  // strongest
                                         {2, 0},  // 54 / 62 truncates
                                         {3, 1},
                                         {30, 13},
                                         {31, 14},  // the centre, not 31 * 27 / 62 = 13
                                         {32, 13},  // 864 / 62 = 13.9
                                         {33, 14},
                                         {61, 26},
                                         {62, 27},  // the weakest end
                                         {63, 27},
                                         {200, 27},  // no slider writes these: held at the end
                                         {255, 27}}) {
    EXPECT_EQ(SliderFromEqf(static_cast<std::uint8_t>(c.value)), c.position) << "value " << c.value;
  }
}

TEST(EqfConversionTest, SliderPositionsBecomeValuesThatReadBackTheSame) {
  EXPECT_EQ(EqfFromSlider(0), 0);
  EXPECT_EQ(EqfFromSlider(14), 31);
  EXPECT_EQ(EqfFromSlider(27), 62);
  EXPECT_EQ(EqfFromSlider(13), 30);
  EXPECT_EQ(EqfFromSlider(-4), 0) << "below the top of the slider";
  EXPECT_EQ(EqfFromSlider(99), 62) << "below its bottom";
  for (int position = 0; position <= 27; ++position)
    EXPECT_EQ(SliderFromEqf(EqfFromSlider(position)), position) << "position " << position;
}

TEST(EqfFileTest, ANameIsCutToTwentyBytesOutsideAnyCharacter) {
  const auto shortName = effects::EqfFileBytes("Rock", kSomeValues);
  EXPECT_EQ(std::string(shortName.begin(), shortName.end()), FileWith("Rock"));
  const auto exact = effects::EqfFileBytes("ABCDEFGHIJKLMNOPQRST-more", kSomeValues);
  EXPECT_EQ(std::string(exact.begin(), exact.end()), FileWith("ABCDEFGHIJKLMNOPQRST")) << "no terminator";
  // 19 ASCII bytes and a two-byte character: the character doesn't fit.
  const auto wide = effects::EqfFileBytes("ABCDEFGHIJKLMNOPQRS\xC3\xA9", kSomeValues);
  EXPECT_EQ(std::string(wide.begin(), wide.end()), FileWith("ABCDEFGHIJKLMNOPQRS"));
}

TEST_F(PresetFolderTest, SavedPresetsReadBackByteForByte) {
  ASSERT_TRUE(PresetStore::Save("Mine", kSomeValues, folder.Path()));
  EXPECT_EQ(ReadFile(Presets() + "/Mine.eqf"), FileWith("Mine"));
  EXPECT_EQ(store.Scan(folder.Path()), 1);
  EqfValues loaded{};
  ASSERT_TRUE(store.Load(store.Find("mine"), loaded, folder.Path()));
  EXPECT_EQ(loaded, kSomeValues);

  // A file made elsewhere, saved again under its own name, is the same file.
  const std::string foreign = FileWith("Foreign name");
  Put("Other.eqf", foreign);
  store.Clear();
  store.Scan(folder.Path());
  ASSERT_TRUE(store.Load(store.Find("Other"), loaded, folder.Path()));
  ASSERT_TRUE(PresetStore::Save("Other", loaded, folder.Path()));
  EXPECT_EQ(ReadFile(Presets() + "/Other.eqf"), FileWith("Other"));
}

TEST_F(PresetFolderTest, SaveMakesAMissingFolderAndRefusesNamesThatLeaveIt) {
  std::filesystem::remove_all(Presets());
  EXPECT_TRUE(PresetStore::Save("First", kSomeValues, folder.Path()));
  EXPECT_TRUE(std::filesystem::exists(Presets() + "/First.eqf"));
  for (const char* name : {"", "../outside", "a/b", "a\\b", ".hidden", "tab\there"}) {
    EXPECT_FALSE(PresetStore::IsValidName(name)) << name;
    EXPECT_FALSE(PresetStore::Save(name, kSomeValues, folder.Path())) << name;
  }
  EXPECT_FALSE(std::filesystem::exists(folder.File("outside.eqf")));
  EXPECT_TRUE(PresetStore::IsValidName("Bass & more 2"));
}

TEST_F(PresetFolderTest, ScanListsPresetFilesByNameAndShowsThemCapitalisedUpToTheFirstDot) {
  Put("rock.eqf", FileWith("x"));
  Put("My.Set.eqf", FileWith("x"));
  Put("ROCK2.EQF", FileWith("x"));
  Put("notes.txt", "not a preset");
  Put("eqf", "no extension");
  std::filesystem::create_directories(Presets() + "/folder.eqf");
  EXPECT_EQ(store.Scan(folder.Path()), 3);
  EXPECT_EQ(Names(), (std::vector<std::string>{"My", "Rock", "ROCK2"}));
  EXPECT_EQ(store.NameAt(3), "") << "past the end";
  EXPECT_EQ(store.NameAt(-1), "");

  EXPECT_EQ(store.Find("rock"), 1);
  EXPECT_EQ(store.Find("Rock2"), 2) << "ROCK2.EQF matches without regard to case";
  EXPECT_EQ(store.Find("My"), -1) << "the whole file name counts";
  EXPECT_EQ(store.Find("My.Set"), 0);

  EXPECT_EQ(store.Scan(folder.Path()), 6) << "a scan adds to what is there";
  store.Clear();
  EXPECT_EQ(store.Count(), 0);
}

TEST_F(PresetFolderTest, AMissingPresetFolderGivesAnEmptyList) {
  std::filesystem::remove_all(Presets());
  EXPECT_EQ(store.Scan(folder.Path()), 0);
  EqfValues values{};
  EXPECT_FALSE(store.Load(0, values, folder.Path()));
}

TEST_F(PresetFolderTest, OddFilesLoadOnlyWhenTheirValuesAreThere) {
  struct Case {
    const char* file;
    std::string contents;
    bool loads;
  };
  std::string longer = FileWith("Long") + "trailing bytes that are ignored";
  std::string badHead = FileWith("\xFF\xFE garbage \x01\x02 without end!!!!", 20);
  std::string outOfRange = FileWith("x");
  outOfRange[20] = '\xFF';
  const std::vector<Case> cases = {
      {"a_empty.eqf", "", false},
      {"b_short.eqf", FileWith("Short").substr(0, 30), false},
      {"c_exact.eqf", FileWith("Exact"), true},
      {"d_longer.eqf", longer, true},
      {"e_badhead.eqf", badHead, true},
      {"f_range.eqf", outOfRange, true},
  };
  for (const Case& c : cases) Put(c.file, c.contents);
  ASSERT_EQ(store.Scan(folder.Path()), static_cast<int>(cases.size()));
  for (int index = 0; index < store.Count(); ++index) {
    const Case& c = cases[static_cast<std::size_t>(index)];
    EqfValues values{};
    EXPECT_EQ(store.Load(index, values, folder.Path()), c.loads) << c.file;
    if (c.loads) {
      EXPECT_EQ(values[1], kSomeValues[1]) << c.file << ": the values at offset 20";
    }
  }
  EqfValues values{};
  ASSERT_TRUE(store.Load(5, values, folder.Path()));
  EXPECT_EQ(SliderFromEqf(values[0]), 27) << "a byte of 255 still gives a slider position";

  std::filesystem::remove(Presets() + "/c_exact.eqf");
  EXPECT_FALSE(store.Load(2, values, folder.Path())) << "gone since the scan";
  EXPECT_FALSE(store.Load(6, values, folder.Path()));
}

// One row of res/presets_source/presets.txt: name, then steps from the
// centre for the preamp and the ten bands.
struct TableRow {
  std::string name;
  std::vector<int> steps;
};

std::vector<TableRow> ShippedTable() {
  std::ifstream table(std::string(TS_SOURCE_DIR) + "/res/presets_source/presets.txt");
  std::vector<TableRow> rows;
  std::string line;
  while (std::getline(table, line)) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream cells(line);
    TableRow row;
    std::getline(cells, row.name, '|');
    row.name.erase(row.name.find_last_not_of(' ') + 1);
    std::string cell;
    while (std::getline(cells, cell, '|')) row.steps.push_back(std::stoi(cell));
    rows.push_back(row);
  }
  return rows;
}

TEST(ShippedPresetsTest, EveryRowOfTheTableIsAFileThatGivesItsSliderPositions) {
  const std::vector<TableRow> rows = ShippedTable();
  ASSERT_GE(rows.size(), 10u);
  PresetStore store;
  const std::string res = std::string(TS_SOURCE_DIR) + "/res";
  ASSERT_EQ(store.Scan(res), static_cast<int>(rows.size())) << "one file per row, no others";
  for (const TableRow& row : rows) {
    SCOPED_TRACE(row.name);
    ASSERT_EQ(row.steps.size(), 11u);
    const int index = store.Find(row.name);
    ASSERT_GE(index, 0);
    EXPECT_EQ(store.NameAt(index), row.name);
    EqfValues values{};
    ASSERT_TRUE(store.Load(index, values, res));
    EXPECT_EQ(SliderFromEqf(values[10]), 14 - row.steps[0]) << "preamp";
    for (int band = 0; band < 10; ++band)
      EXPECT_EQ(SliderFromEqf(values[static_cast<std::size_t>(band)]),
                14 - row.steps[static_cast<std::size_t>(band) + 1])
          << "band " << band;
    EXPECT_EQ(ReadFile(res + "/presets/" + store.FileNameAt(index)).substr(0, row.name.size()), row.name);
  }
}

}  // namespace
