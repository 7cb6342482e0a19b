// The ICY metadata filter: blocks are removed wherever the reads cut them,
// the audio comes out in order, and titles come out as they complete.
#include "net/metadata_filter.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "icy_stream.h"

namespace net {
namespace {

using Bytes = std::vector<std::uint8_t>;
using net_testing::Interleave;

Bytes ToBytes(std::string_view text) {
  return Bytes(text.begin(), text.end());
}
Bytes Block(std::string_view text) {
  return ToBytes(net_testing::MetadataBlock(text));
}
Bytes TitleBlock(std::string_view title) {
  return ToBytes(net_testing::TitleBlock(title));
}

struct IcyStream {
  Bytes audio;
  Bytes wire;
};

IcyStream MakeStream(std::size_t audioBytes, std::uint32_t interval, const std::vector<std::string>& blocks,
                     std::uint32_t seed) {
  const std::string audio = net_testing::RandomBytes(audioBytes, seed);
  return {ToBytes(audio), ToBytes(Interleave(audio, interval, blocks))};
}

struct Filtered {
  Bytes audio;
  std::vector<std::string> titles;
};

// Feeds `wire` through the filter in pieces of the given sizes (cycled).
Filtered RunFilter(MetadataFilter& filter, Bytes wire, const std::vector<std::size_t>& pieces) {
  Filtered out;
  std::size_t offset = 0;
  for (std::size_t i = 0; offset < wire.size(); ++i) {
    const std::size_t count = std::min(pieces[i % pieces.size()], wire.size() - offset);
    const std::size_t metadata = filter.Filter(wire.data() + offset, count, &out.titles);
    EXPECT_LE(metadata, count);
    out.audio.insert(out.audio.end(), wire.begin() + static_cast<std::ptrdiff_t>(offset),
                     wire.begin() + static_cast<std::ptrdiff_t>(offset + count - metadata));
    offset += count;
  }
  return out;
}

// Reads of 1 to 5 bytes split every block and land exactly on every
// countdown; a title must come out only once its block is whole.
TEST(MetadataFilter, AnyCuttingOfTheStreamGivesTheSameAudioAndTitles) {
  const std::vector<std::string> blocks = {net_testing::TitleBlock("One"),
                                           std::string(1, '\0'),
                                           net_testing::TitleBlock("Two"),
                                           net_testing::MetadataBlock("garbage without a key"),
                                           net_testing::TitleBlock(std::string(200, 'x')),
                                           std::string(1, '\0'),
                                           net_testing::TitleBlock("Three")};
  const std::vector<std::string> expected = {"One", "Two", std::string(200, 'x'), "Three"};
  for (std::uint32_t interval : {1u, 2u, 7u, 16u, 100u, 1000u}) {
    const IcyStream stream = MakeStream(interval * 9 + 3, interval, blocks, interval);
    std::mt19937 random(interval);
    for (int trial = 0; trial < 30; ++trial) {
      std::vector<std::size_t> pieces;
      for (int i = 0; i < 17; ++i) pieces.push_back(1 + random() % (trial < 10 ? 5 : 600));
      MetadataFilter filter;
      filter.Start(interval);
      const Filtered out = RunFilter(filter, stream.wire, pieces);
      ASSERT_EQ(out.audio, stream.audio) << "interval " << interval << ", trial " << trial;
      ASSERT_EQ(out.titles, expected) << "interval " << interval << ", trial " << trial;
    }
  }
}

TEST(MetadataFilter, EmptyBlocksAndNewConnectionsKeepTheLastTitleUntilClear) {
  MetadataFilter filter;
  filter.Start(4);
  Bytes wire = ToBytes("abcd");
  const Bytes block = TitleBlock("Kept");
  wire.insert(wire.end(), block.begin(), block.end());
  for (const char* audio : {"efgh", "ijkl"}) {
    wire.insert(wire.end(), audio, audio + 4);
    wire.push_back(0);  // empty block: the title hasn't changed
  }
  filter.Filter(wire.data(), wire.size(), nullptr);
  std::string title;
  ASSERT_TRUE(filter.GetStreamTitle(title));
  EXPECT_EQ(title, "Kept");

  // A block in progress doesn't hide the last whole one.
  Bytes partial = ToBytes("mnop");
  const Bytes next = TitleBlock("Next");
  partial.insert(partial.end(), next.begin(), next.begin() + 10);
  filter.Filter(partial.data(), partial.size(), nullptr);
  ASSERT_TRUE(filter.GetStreamTitle(title));
  EXPECT_EQ(title, "Kept");

  filter.Start(4);  // a new connection
  ASSERT_TRUE(filter.GetStreamTitle(title));
  EXPECT_EQ(title, "Kept");
  EXPECT_EQ(filter.MetaCountdown(), 4);
  filter.Clear();
  EXPECT_FALSE(filter.GetStreamTitle(title));
  EXPECT_EQ(title, "");
}

TEST(MetadataFilter, LongestBlockOfGarbageIsSwallowedWhole) {
  MetadataFilter filter;
  filter.Start(3);
  Bytes wire = ToBytes("abc");
  wire.push_back(255);
  std::mt19937 random(7);
  for (int i = 0; i < 255 * 16; ++i)
    wire.push_back(static_cast<std::uint8_t>(random() | 1));  // no zero, no end
  const Bytes behind = ToBytes("def");
  wire.insert(wire.end(), behind.begin(), behind.end());
  const Bytes title = TitleBlock("After the garbage");
  wire.insert(wire.end(), title.begin(), title.end());
  const Filtered out = RunFilter(filter, wire, {1000, 77, 4000});
  EXPECT_EQ(std::string(out.audio.begin(), out.audio.end()), "abcdef");
  EXPECT_EQ(out.titles, std::vector<std::string>{"After the garbage"});
  EXPECT_EQ(filter.MetaCountdown(), 3);
}

std::string Repeated(const std::string& unit, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += unit;
  return text;
}

struct TitleCase {
  const char* name;
  std::string text;
  bool found;
  std::string title;
};

class StreamTitleExtraction : public testing::TestWithParam<TitleCase> {};

TEST_P(StreamTitleExtraction, ReadsTheTitleAsTheServerMeantIt) {
  const Bytes block = Block(GetParam().text);
  std::string title = "stale";
  EXPECT_EQ(ExtractStreamTitle(block.data(), block.size(), title), GetParam().found);
  EXPECT_EQ(title, GetParam().title);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, StreamTitleExtraction,
    testing::Values(TitleCase{"Plain", "StreamTitle='Artist - Song';StreamUrl='';", true, "Artist - Song"},
                    TitleCase{"EmptyBetweenTwoApostrophes", "StreamTitle='';", true, ""},
                    TitleCase{"ApostropheInsideCutsThere", "StreamTitle='Guns N' Roses - Patience';", true,
                              "Guns N"},
                    TitleCase{"LastFieldWithoutSemicolon", "StreamUrl='x';StreamTitle='Tail'", true, "Tail"},
                    TitleCase{"NoEnd", "StreamTitle='never ends", false, ""},
                    TitleCase{"NoKey", "StreamUrl='http://radio.example/';", false, ""},
                    TitleCase{"KeyAtTheVeryEnd", "StreamTitle=", false, ""},
                    TitleCase{"ZeroByteEndsTheText", std::string("StreamTitle='cut\0here';", 23), false, ""},
                    TitleCase{"Windows1252", "StreamTitle='Caf\xe9 \x93Noir\x94';", true,
                              "Caf\xc3\xa9 \xe2\x80\x9cNoir\xe2\x80\x9d"},
                    TitleCase{"Utf8", "StreamTitle='Bj\xc3\xb6rk - J\xc3\xb3ga';", true,
                              "Bj\xc3\xb6rk - J\xc3\xb3ga"},
                    TitleCase{"LongTitleCutAt259Bytes", "StreamTitle='" + std::string(300, 'a') + "';", true,
                              std::string(259, 'a')},
                    TitleCase{"LongUtf8TitleCutAtAWholeCharacter", "StreamTitle='a" + Repeated("\xc3\xa9", 150) + "';",
                              true, "a" + Repeated("\xc3\xa9", 129)}),
    [](const testing::TestParamInfo<TitleCase>& parameter) { return std::string(parameter.param.name); });

TEST(StreamTitleExtraction, PartialOrMismatchedBlocksHaveNoTitle) {
  Bytes block = TitleBlock("Whole");
  std::string title;
  EXPECT_FALSE(ExtractStreamTitle(block.data(), block.size() - 1, title));
  block[0] += 1;
  EXPECT_FALSE(ExtractStreamTitle(block.data(), block.size(), title));
  EXPECT_FALSE(ExtractStreamTitle(nullptr, 0, title));
}

}  // namespace
}  // namespace net
